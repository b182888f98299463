// An open result set: its columns and a way to the next row. Rows come from
// a CSV file as they are read (filtered, sorted, made distinct), or from
// memory for the catalog functions.
#ifndef ZUCSV_CURSOR_H
#define ZUCSV_CURSOR_H

#include <sql.h>
#include <sqlext.h>

#include <memory>
#include <string>
#include <vector>

#include "csv_reader.h"
#include "value.h"

namespace zucsv {

struct ResultColumn {
  std::string name;
  std::string table;
  ColumnType type = ColumnType::kText;
  SQLSMALLINT sqlType = SQL_VARCHAR;
  SQLULEN size = 255;
  SQLSMALLINT nullable = SQL_NULLABLE;
};

// The SQL type and size a table column is described with.
ResultColumn describeColumn(const std::string& table, const ColumnDef& column);

class Cursor {
 public:
  virtual ~Cursor() = default;
  // The next row into `values` (one per column): kRow, kEnd or kError.
  virtual CsvReader::Result fetch(std::vector<Value>* values) = 0;
  std::vector<ResultColumn> columns;
};

// Rows made up front.
class MemoryCursor : public Cursor {
 public:
  CsvReader::Result fetch(std::vector<Value>* values) override;
  std::vector<std::vector<Value>> rows;

 private:
  std::size_t next_ = 0;
};

}  // namespace zucsv

#endif

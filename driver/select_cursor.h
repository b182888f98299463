// The rows of a SELECT: read from the table's file, kept when the WHERE
// condition is true, in ORDER BY order when asked (through RowOrder), and
// each distinct set of values once when asked (through DistinctFilter).
#ifndef ZUCSV_SELECT_CURSOR_H
#define ZUCSV_SELECT_CURSOR_H

#include <memory>

#include "cursor.h"
#include "distinct_filter.h"
#include "row_order.h"
#include "sql_ast.h"
#include "table.h"

namespace zucsv {

class SelectCursor : public Cursor {
 public:
  // `statement` must outlive the cursor.
  SelectCursor(void* pageCache, unsigned char delimiter, const ParsedStatement& statement,
               std::vector<Value> parameters);
  // Opens the table, binds the statement's names and, for ORDER BY, sorts.
  bool open(const ConnectOptions& options, ParsedStatement* statement);
  CsvReader::Result fetch(std::vector<Value>* values) override;

 private:
  bool accept(const Row& row, bool* keep);
  CsvReader::Result nextRow(Row* row);

  CsvReader reader_;
  TableDef table_;
  const ParsedStatement& statement_;
  std::vector<Value> parameters_;
  std::vector<int> projection_;
  std::unique_ptr<RowOrder> order_;
  std::unique_ptr<DistinctFilter> distinct_;
  Row row_;
};

}  // namespace zucsv

#endif

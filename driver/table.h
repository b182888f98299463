// A table: one CSV file in the connection's directory, its columns named by
// schema.ini, else by its header row, else F1, F2, ...
#ifndef ZUCSV_TABLE_H
#define ZUCSV_TABLE_H

#include <string>
#include <vector>

#include "connect_options.h"
#include "csv_reader.h"
#include "value.h"

namespace zucsv {

struct TableDef {
  std::string name;      // as the statement named it
  std::string fileName;  // the file in the directory
  std::string path;      // its full DOS name
  std::vector<ColumnDef> columns;
  bool header = true;
  // The column of that name without regard to case, or -1.
  int findColumn(const std::string& column) const;
};

// A table name that stays inside the directory: no separator, drive or
// leading dot. false with 42S02 when the name tries to leave it.
bool tableFileName(const std::string& table, std::string* fileName);

// Opens the table's file in `reader` and reads its columns; the reader
// stands at the first data record. false with 42S02 for a table that is not
// there, or the reason the file could not be read.
bool openTable(const ConnectOptions& options, const std::string& table, TableDef* def, CsvReader* reader);

}  // namespace zucsv

#endif

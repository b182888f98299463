#include "cursor.h"

namespace zucsv {

// Texts are described at 255 bytes, the width clients lay out by default;
// longer values still come whole, in pieces through SQLGetData.
constexpr SQLULEN kTextSize = 255;
constexpr SQLULEN kDateSize = 10;
constexpr SQLULEN kIntegerSize = 19;
constexpr SQLULEN kDoubleSize = 15;

ResultColumn describeColumn(const std::string& table, const ColumnDef& column) {
  ResultColumn r;
  r.name = column.name;
  r.table = table;
  r.type = column.type;
  switch (column.type) {
    case ColumnType::kInteger:
      r.sqlType = SQL_BIGINT;
      r.size = kIntegerSize;
      break;
    case ColumnType::kDouble:
      r.sqlType = SQL_DOUBLE;
      r.size = kDoubleSize;
      break;
    case ColumnType::kDate:
      r.sqlType = SQL_TYPE_DATE;
      r.size = kDateSize;
      break;
    default:
      r.sqlType = SQL_VARCHAR;
      r.size = kTextSize;
      break;
  }
  return r;
}

CsvReader::Result MemoryCursor::fetch(std::vector<Value>* values) {
  if (next_ >= rows.size()) return CsvReader::kEnd;
  *values = rows[next_++];
  return CsvReader::kRow;
}

}  // namespace zucsv

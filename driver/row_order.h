// ORDER BY through the library's external sort: each row that passes the
// filter becomes one fixed-size record of its key images and its offset in
// the file, so a table of any size sorts (the sort spills its runs to a
// temporary file); rows are read again by offset as the sort delivers them.
//
// A key image is a flag byte (0 for NULL, so NULLs come first ascending and
// last descending) and the value: integers and doubles as 8 bytes whose
// byte order is their numeric order, texts and dates as their bytes padded
// with NULs to the longest value of the column among the rows, at most
// kMaxTextKey bytes. The offset closes every record, so equal keys keep the
// file's order.
#ifndef ZUCSV_ROW_ORDER_H
#define ZUCSV_ROW_ORDER_H

#include <zuutl.h>

#include <cstdint>
#include <functional>
#include <vector>

#include "csv_reader.h"
#include "sql_ast.h"
#include "table.h"

namespace zucsv {

class RowOrder {
 public:
  // Decides for one row whether it belongs to the result; false on a failure.
  using Filter = std::function<bool(const Row& row, bool* keep)>;

  RowOrder() = default;
  ~RowOrder();
  RowOrder(const RowOrder&) = delete;
  RowOrder& operator=(const RowOrder&) = delete;

  // Reads the table from the reader's position to its end.
  bool build(CsvReader* reader, const TableDef& table, const std::vector<ColumnRef>& keys, const Filter& filter);
  // The file offset of the next row in order: kRow, kEnd or kError.
  CsvReader::Result next(std::uint32_t* offset);

 private:
  struct KeyLayout {
    int column;
    ColumnType type;
    unsigned short offset;
    unsigned short length;  // of the value, without the flag byte
  };
  bool encode(const TableDef& table, const Row& row, unsigned char* record);

  ZuSort* sort_ = nullptr;
  std::vector<KeyLayout> layout_;
  unsigned short recordSize_ = 0;
};

}  // namespace zucsv

#endif

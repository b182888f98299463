// ORDER BY through the library's external sort: each row that passes the
// filter becomes one fixed-size record of its key images, the values of the
// columns the result shows, and its offset in the file, so a table of any
// size sorts (the sort spills its runs to a temporary file) and rows come
// out of the merge whole. Rows too wide to travel in a record leave their
// values behind and are read again by offset as the sort delivers them.
//
// A key image is a flag byte (0 for NULL, so NULLs come first ascending and
// last descending) and the value: integers and doubles as 8 bytes whose
// byte order is their numeric order, texts and dates as their bytes padded
// with NULs to the longest value of the column among the rows, at most
// kMaxTextKey bytes. A carried value is its length in 4 bytes (kNullLength
// for NULL) and its bytes, with room for the column's longest; a text key
// that holds a shown column whole lends it its bytes. The offset closes
// every record, so equal keys keep the file's order.
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

  // Reads the table from the reader's position to its end. `shown` are the
  // columns the caller reads from the rows next() gives.
  bool build(CsvReader* reader, const TableDef& table, const std::vector<ColumnRef>& keys,
             const std::vector<int>& shown, const Filter& filter);
  // The next row in order, with (at least) the shown columns: kRow, kEnd or
  // kError. `reader` is the one build read.
  CsvReader::Result next(CsvReader* reader, Row* row);

 private:
  struct KeyLayout {
    int column;
    ColumnType type;
    unsigned short offset;
    unsigned short length;  // of the value, without the flag byte
  };
  struct CarriedLayout {
    int column;
    unsigned short lengthAt;
    unsigned short bytesAt;  // in a key image when `inKey`
    unsigned short room;     // for the bytes
    bool inKey;
  };
  bool layOut(const TableDef& table, const std::vector<ColumnRef>& keys, const std::vector<int>& carried,
              const std::vector<std::uint32_t>& longest);
  bool encode(const TableDef& table, const Row& row, unsigned char* record);
  void decode(const unsigned char* record, Row* row) const;

  ZuSort* sort_ = nullptr;
  std::vector<KeyLayout> layout_;
  std::vector<CarriedLayout> carried_;  // empty when rows are read again
  std::size_t columnCount_ = 0;
  unsigned short recordSize_ = 0;
};

}  // namespace zucsv

#endif

#include "row_order.h"

#include <cstring>

#include "call_scope.h"
#include "expr.h"

namespace zucsv {
namespace {

// Room for the key images: well inside a sort block of 64 KiB.
constexpr std::size_t kMaxTextKey = 1024;
constexpr std::size_t kMaxRecord = 8192;
constexpr unsigned short kNumberBytes = 8;
constexpr unsigned short kOffsetBytes = 4;
constexpr unsigned short kLengthBytes = 4;
constexpr std::uint32_t kNullLength = 0xFFFFFFFF;

void putBigEndian(std::uint64_t v, unsigned char* out, int bytes) {
  for (int i = bytes - 1; i >= 0; --i) {
    out[i] = static_cast<unsigned char>(v & 0xFF);
    v >>= 8;
  }
}

std::uint32_t getBigEndian32(const unsigned char* in) {
  return (static_cast<std::uint32_t>(in[0]) << 24) | (static_cast<std::uint32_t>(in[1]) << 16) |
         (static_cast<std::uint32_t>(in[2]) << 8) | in[3];
}

std::uint64_t orderedBits(const Value& v) {
  constexpr std::uint64_t kSign = 1ull << 63;
  if (v.type == ColumnType::kInteger) return static_cast<std::uint64_t>(v.integer) ^ kSign;
  std::uint64_t bits;
  std::memcpy(&bits, &v.real, sizeof bits);
  return (bits & kSign) != 0 ? ~bits : bits | kSign;
}

bool isNumeric(ColumnType type) { return type == ColumnType::kInteger || type == ColumnType::kDouble; }

}  // namespace

RowOrder::~RowOrder() { delete sort_; }

bool RowOrder::layOut(const TableDef& table, const std::vector<ColumnRef>& keys, const std::vector<int>& carried,
                      const std::vector<std::uint32_t>& longest) {
  std::size_t size = 0;
  for (const ColumnRef& key : keys) {
    const auto column = static_cast<std::size_t>(key.column);
    const ColumnType type = table.columns[column].type;
    std::size_t length = isNumeric(type) ? kNumberBytes : longest[column];
    if (length > kMaxTextKey) length = kMaxTextKey;
    if (length == 0) length = 1;
    layout_.push_back({key.column, type, static_cast<unsigned short>(size), static_cast<unsigned short>(length)});
    size += 1 + length;
  }
  if (size + kOffsetBytes > kMaxRecord) {
    driverError("HY000", "ORDER BY: the sort keys together are longer than " + std::to_string(kMaxRecord) +
                             " bytes.");
    return false;
  }
  const std::size_t keysSize = size;
  for (int column : carried) {
    const std::uint32_t length = longest[static_cast<std::size_t>(column)];
    const KeyLayout* whole = nullptr;
    for (const KeyLayout& key : layout_) {
      if (key.column == column && !isNumeric(key.type) && key.length >= length) whole = &key;
    }
    const std::size_t own = whole != nullptr ? 0 : length;
    if (size + kLengthBytes + own + kOffsetBytes > kMaxRecord) {
      // Too wide to travel: every row is read again instead.
      carried_.clear();
      size = keysSize;
      break;
    }
    const auto lengthAt = static_cast<unsigned short>(size);
    const auto bytesAt = static_cast<unsigned short>(whole != nullptr ? whole->offset + 1 : size + kLengthBytes);
    carried_.push_back({column, lengthAt, bytesAt, static_cast<unsigned short>(length), whole != nullptr});
    size += kLengthBytes + own;
  }
  recordSize_ = static_cast<unsigned short>(size + kOffsetBytes);
  return true;
}

bool RowOrder::encode(const TableDef& table, const Row& row, unsigned char* record) {
  // The second pass must meet the rows the first one measured.
  bool fits = row.fields.size() == columnCount_;
  for (std::size_t i = 0; fits && i < carried_.size(); ++i) {
    fits = row.fields[static_cast<std::size_t>(carried_[i].column)].length <= carried_[i].room;
  }
  if (!fits) {
    driverError("HY000", "File '" + table.fileName + "' changed while it was read for ORDER BY.");
    return false;
  }
  std::memset(record, 0, recordSize_);
  for (const KeyLayout& key : layout_) {
    const Field& field = row.fields[static_cast<std::size_t>(key.column)];
    if (field.null) continue;  // flag byte 0 and no value
    unsigned char* at = record + key.offset;
    at[0] = 1;
    if (isNumeric(key.type)) {
      Value v;
      if (!columnValue(table, row, key.column, &v)) return false;
      putBigEndian(orderedBits(v), at + 1, kNumberBytes);
    } else {
      // Dates are checked as the value is shown; their bytes order them.
      if (key.type == ColumnType::kDate) {
        Value v;
        if (!columnValue(table, row, key.column, &v)) return false;
      }
      std::memcpy(at + 1, row.bytes.data() + field.start, field.length < key.length ? field.length : key.length);
    }
  }
  for (const CarriedLayout& value : carried_) {
    const Field& field = row.fields[static_cast<std::size_t>(value.column)];
    const std::uint32_t length = field.null ? kNullLength : field.length;
    std::memcpy(record + value.lengthAt, &length, kLengthBytes);
    if (!field.null && !value.inKey) std::memcpy(record + value.bytesAt, row.bytes.data() + field.start, field.length);
  }
  putBigEndian(row.offset, record + recordSize_ - kOffsetBytes, kOffsetBytes);
  return true;
}

void RowOrder::decode(const unsigned char* record, Row* row) const {
  row->bytes.clear();
  row->fields.assign(columnCount_, Field());
  for (const CarriedLayout& value : carried_) {
    std::uint32_t length = 0;
    std::memcpy(&length, record + value.lengthAt, kLengthBytes);
    Field& field = row->fields[static_cast<std::size_t>(value.column)];
    if (length == kNullLength) continue;
    field.null = false;
    field.start = static_cast<std::uint32_t>(row->bytes.size());
    field.length = length;
    row->bytes.append(reinterpret_cast<const char*>(record + value.bytesAt), length);
  }
  row->offset = getBigEndian32(record + recordSize_ - kOffsetBytes);
  row->line = 0;
}

bool RowOrder::build(CsvReader* reader, const TableDef& table, const std::vector<ColumnRef>& keys,
                     const std::vector<int>& shown, const Filter& filter) {
  columnCount_ = table.columns.size();
  // Each shown column travels once, however often it is named.
  std::vector<int> carried;
  std::vector<bool> taken(columnCount_, false);
  for (int column : shown) {
    if (!taken[static_cast<std::size_t>(column)]) carried.push_back(column);
    taken[static_cast<std::size_t>(column)] = true;
  }
  // First pass: the rows that belong, and the longest value of each column.
  std::vector<std::uint32_t> offsets;
  std::vector<std::uint32_t> longest(columnCount_, 0);
  Row row;
  for (;;) {
    const CsvReader::Result got = reader->next(&row);
    if (got == CsvReader::kError) return false;
    if (got == CsvReader::kEnd) break;
    bool keep = false;
    if (!filter(row, &keep)) return false;
    if (!keep) continue;
    offsets.push_back(row.offset);
    for (std::size_t c = 0; c < columnCount_; ++c) {
      if (row.fields[c].length > longest[c]) longest[c] = row.fields[c].length;
    }
  }
  if (!layOut(table, keys, carried, longest)) return false;
  sort_ = new ZuSort(recordSize_);
  if (sort_ == nullptr) return false;
  for (std::size_t k = 0; k < layout_.size(); ++k) {
    const unsigned short type = keys[k].descending ? ZU_SORTKEY_DESCENDING : 0;
    if (sort_->addKey(type, layout_[k].offset, static_cast<unsigned short>(layout_[k].length + 1)) != ZU_OK) {
      return false;
    }
  }
  if (sort_->addKey(0, static_cast<unsigned short>(recordSize_ - kOffsetBytes), kOffsetBytes) != ZU_OK) return false;
  // Second pass: the records, from the rows read again in file order.
  for (std::uint32_t offset : offsets) {
    std::uint32_t after = 0;
    if (reader->readAt(offset, &row, &after, true) != CsvReader::kRow) return false;
    void* slot = nullptr;
    if (sort_->nextSlot(&slot) != ZU_OK) return false;
    if (!encode(table, row, static_cast<unsigned char*>(slot))) return false;
  }
  return true;
}

CsvReader::Result RowOrder::next(CsvReader* reader, Row* row) {
  void* record = nullptr;
  if (sort_->getSorted(&record) != ZU_OK) return CsvReader::kError;
  if (record == nullptr) return CsvReader::kEnd;
  const auto* bytes = static_cast<const unsigned char*>(record);
  if (!carried_.empty()) {
    decode(bytes, row);
    return CsvReader::kRow;
  }
  std::uint32_t after = 0;
  return reader->readAt(getBigEndian32(bytes + recordSize_ - kOffsetBytes), row, &after, false);
}

}  // namespace zucsv

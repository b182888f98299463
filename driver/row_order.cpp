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

void putBigEndian(std::uint64_t v, unsigned char* out, int bytes) {
  for (int i = bytes - 1; i >= 0; --i) {
    out[i] = static_cast<unsigned char>(v & 0xFF);
    v >>= 8;
  }
}

std::uint64_t orderedBits(const Value& v) {
  constexpr std::uint64_t kSign = 1ull << 63;
  if (v.type == ColumnType::kInteger) return static_cast<std::uint64_t>(v.integer) ^ kSign;
  std::uint64_t bits;
  std::memcpy(&bits, &v.real, sizeof bits);
  return (bits & kSign) != 0 ? ~bits : bits | kSign;
}

}  // namespace

RowOrder::~RowOrder() { delete sort_; }

bool RowOrder::encode(const TableDef& table, const Row& row, unsigned char* record) {
  std::memset(record, 0, recordSize_);
  for (const KeyLayout& key : layout_) {
    Value v;
    if (!columnValue(table, row, key.column, &v)) return false;
    if (v.null) continue;  // flag byte 0 and no value
    unsigned char* at = record + key.offset;
    at[0] = 1;
    if (key.type == ColumnType::kInteger || key.type == ColumnType::kDouble) {
      putBigEndian(orderedBits(v), at + 1, kNumberBytes);
    } else {
      std::memcpy(at + 1, v.text.data(), v.text.size() < key.length ? v.text.size() : key.length);
    }
  }
  putBigEndian(row.offset, record + recordSize_ - kOffsetBytes, kOffsetBytes);
  return true;
}

bool RowOrder::build(CsvReader* reader, const TableDef& table, const std::vector<ColumnRef>& keys,
                     const Filter& filter) {
  // First pass: the rows that belong, and the longest text of each key.
  std::vector<std::uint32_t> offsets;
  std::vector<std::size_t> longest(keys.size(), 0);
  Row row;
  for (;;) {
    const CsvReader::Result got = reader->next(&row);
    if (got == CsvReader::kError) return false;
    if (got == CsvReader::kEnd) break;
    bool keep = false;
    if (!filter(row, &keep)) return false;
    if (!keep) continue;
    offsets.push_back(row.offset);
    for (std::size_t k = 0; k < keys.size(); ++k) {
      const Field& f = row.fields[static_cast<std::size_t>(keys[k].column)];
      if (f.length > longest[k]) longest[k] = f.length;
    }
  }
  std::size_t size = kOffsetBytes;
  for (std::size_t k = 0; k < keys.size(); ++k) {
    const ColumnType type = table.columns[static_cast<std::size_t>(keys[k].column)].type;
    std::size_t length = type == ColumnType::kInteger || type == ColumnType::kDouble ? kNumberBytes : longest[k];
    if (length > kMaxTextKey) length = kMaxTextKey;
    if (length == 0) length = 1;
    layout_.push_back({keys[k].column, type, static_cast<unsigned short>(size), static_cast<unsigned short>(length)});
    size += 1 + length;
  }
  if (size > kMaxRecord) {
    driverError("HY000", "ORDER BY: the sort keys together are longer than " + std::to_string(kMaxRecord) +
                             " bytes.");
    return false;
  }
  recordSize_ = static_cast<unsigned short>(size);
  sort_ = new ZuSort(recordSize_);
  if (sort_ == nullptr) return false;
  for (std::size_t k = 0; k < layout_.size(); ++k) {
    const unsigned short type = keys[k].descending ? ZU_SORTKEY_DESCENDING : 0;
    if (sort_->addKey(type, layout_[k].offset, static_cast<unsigned short>(layout_[k].length + 1)) != ZU_OK) {
      return false;
    }
  }
  if (sort_->addKey(0, static_cast<unsigned short>(recordSize_ - kOffsetBytes), kOffsetBytes) != ZU_OK) return false;
  // Second pass: the records, from the rows read again by offset.
  for (std::uint32_t offset : offsets) {
    std::uint32_t after = 0;
    if (reader->readAt(offset, &row, &after) != CsvReader::kRow) return false;
    void* slot = nullptr;
    if (sort_->nextSlot(&slot) != ZU_OK) return false;
    if (!encode(table, row, static_cast<unsigned char*>(slot))) return false;
  }
  return true;
}

CsvReader::Result RowOrder::next(std::uint32_t* offset) {
  void* record = nullptr;
  if (sort_->getSorted(&record) != ZU_OK) return CsvReader::kError;
  if (record == nullptr) return CsvReader::kEnd;
  const unsigned char* tail = static_cast<const unsigned char*>(record) + recordSize_ - kOffsetBytes;
  *offset = (static_cast<std::uint32_t>(tail[0]) << 24) | (static_cast<std::uint32_t>(tail[1]) << 16) |
            (static_cast<std::uint32_t>(tail[2]) << 8) | tail[3];
  return CsvReader::kRow;
}

}  // namespace zucsv

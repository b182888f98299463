// Column types and values. A CSV field is text; a column's type says how
// it compares, sorts and converts.
#ifndef ZUCSV_VALUE_H
#define ZUCSV_VALUE_H

#include <cstdint>
#include <string>

namespace zucsv {

enum class ColumnType { kText, kInteger, kDouble, kDate };

struct ColumnDef {
  std::string name;
  ColumnType type = ColumnType::kText;
};

// Invariants: a null value has no meaningful other field; `text` holds the
// value's text for every type (a field's bytes as they stood), `integer`
// or `real` its number for those types.
struct Value {
  bool null = true;
  ColumnType type = ColumnType::kText;
  std::int64_t integer = 0;
  double real = 0;
  std::string text;
};

// A field's text read as `type`; false when it is not one (the value is
// left null then).
bool typedValue(const unsigned char* bytes, std::size_t length, ColumnType type, Value* out);
// The SQL name of the type the column is described with (an integer column
// holds 64 bits: BIGINT).
const char* typeName(ColumnType type);

Value textValue(const std::string& text);
Value integerValue(std::int64_t v);
Value nullValue(ColumnType type = ColumnType::kText);

}  // namespace zucsv

#endif

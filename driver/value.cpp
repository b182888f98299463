#include "value.h"

#include <cerrno>
#include <cstdlib>

namespace zucsv {
namespace {

bool isDigit(unsigned char c) { return c >= '0' && c <= '9'; }

// YYYY-MM-DD with a month and day that can be.
bool isDate(const std::string& t) {
  if (t.size() != 10 || t[4] != '-' || t[7] != '-') return false;
  for (int i : {0, 1, 2, 3, 5, 6, 8, 9}) {
    if (!isDigit(static_cast<unsigned char>(t[static_cast<std::size_t>(i)]))) return false;
  }
  const int month = (t[5] - '0') * 10 + (t[6] - '0');
  const int day = (t[8] - '0') * 10 + (t[9] - '0');
  return month >= 1 && month <= 12 && day >= 1 && day <= 31;
}

// Plain decimal digits with an optional minus, short enough not to
// overflow: the common case, read without strtoll. Anything else (signs,
// blanks, long numbers) goes to strtoll, which decides.
bool plainInteger(const unsigned char* bytes, std::size_t length, std::int64_t* out) {
  constexpr std::size_t kSafeDigits = 18;
  const bool negative = length != 0 && bytes[0] == '-';
  const std::size_t first = negative ? 1 : 0;
  if (length == first || length - first > kSafeDigits) return false;
  std::int64_t v = 0;
  for (std::size_t i = first; i < length; ++i) {
    if (!isDigit(bytes[i])) return false;
    v = v * 10 + (bytes[i] - '0');
  }
  *out = negative ? -v : v;
  return true;
}

}  // namespace

bool typedValue(const unsigned char* bytes, std::size_t length, ColumnType type, Value* out) {
  out->type = type;
  out->text.assign(reinterpret_cast<const char*>(bytes), length);
  out->null = false;
  switch (type) {
    case ColumnType::kText:
      return true;
    case ColumnType::kDate:
      if (isDate(out->text)) return true;
      break;
    case ColumnType::kInteger: {
      std::int64_t plain = 0;
      if (plainInteger(bytes, length, &plain)) {
        out->integer = plain;
        out->real = static_cast<double>(plain);
        return true;
      }
      errno = 0;
      char* end = nullptr;
      const long long v = std::strtoll(out->text.c_str(), &end, 10);
      if (!out->text.empty() && errno == 0 && *end == '\0') {
        out->integer = v;
        out->real = static_cast<double>(v);
        return true;
      }
      break;
    }
    case ColumnType::kDouble: {
      errno = 0;
      char* end = nullptr;
      const double v = std::strtod(out->text.c_str(), &end);
      if (!out->text.empty() && errno == 0 && *end == '\0') {
        out->real = v;
        return true;
      }
      break;
    }
  }
  out->null = true;
  return false;
}

const char* typeName(ColumnType type) {
  switch (type) {
    case ColumnType::kInteger: return "BIGINT";
    case ColumnType::kDouble: return "DOUBLE";
    case ColumnType::kDate: return "DATE";
    default: return "VARCHAR";
  }
}

Value textValue(const std::string& text) {
  Value v;
  v.null = false;
  v.text = text;
  return v;
}

Value integerValue(std::int64_t n) {
  Value v;
  v.null = false;
  v.type = ColumnType::kInteger;
  v.integer = n;
  v.real = static_cast<double>(n);
  v.text = std::to_string(n);
  return v;
}

Value nullValue(ColumnType type) {
  Value v;
  v.type = type;
  return v;
}

}  // namespace zucsv

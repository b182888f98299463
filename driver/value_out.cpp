#include "value_out.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>

#include "call_scope.h"

namespace zucsv {
namespace {

// Room for a number's text: "%.17g" of a double, or a 64-bit integer.
constexpr std::size_t kNumberText = 40;

// The value's text: a number formatted into `scratch`, any other value's own
// bytes, without a copy.
std::string_view asText(const Value& v, char (&scratch)[kNumberText]) {
  if (v.type == ColumnType::kInteger) {
    const std::to_chars_result r = std::to_chars(scratch, scratch + sizeof scratch, v.integer);
    return std::string_view(scratch, static_cast<std::size_t>(r.ptr - scratch));
  }
  if (v.type == ColumnType::kDouble) {
    int n = std::snprintf(scratch, sizeof scratch, "%.15g", v.real);
    if (std::strtod(scratch, nullptr) != v.real) n = std::snprintf(scratch, sizeof scratch, "%.17g", v.real);
    return std::string_view(scratch, static_cast<std::size_t>(n));
  }
  return v.text;
}

bool asNumber(const Value& v, double* d, long long* i, bool* integral) {
  if (v.type == ColumnType::kInteger) {
    *i = v.integer;
    *d = static_cast<double>(v.integer);
    *integral = true;
    return true;
  }
  if (v.type == ColumnType::kDouble) {
    *d = v.real;
    *integral = false;
    return true;
  }
  Value n;
  const auto* bytes = reinterpret_cast<const unsigned char*>(v.text.data());
  if (typedValue(bytes, v.text.size(), ColumnType::kInteger, &n)) return asNumber(n, d, i, integral);
  if (typedValue(bytes, v.text.size(), ColumnType::kDouble, &n)) return asNumber(n, d, i, integral);
  driverError("22018", "Invalid character value for cast: '" + v.text + "' is not a number.");
  return false;
}

template <typename T>
SQLRETURN putInteger(double d, long long i, bool integral, SQLPOINTER buffer, SQLLEN* indicator) {
  const long long value = integral ? i : static_cast<long long>(std::trunc(d));
  if ((!integral && (d < static_cast<double>(std::numeric_limits<T>::min()) ||
                     d > static_cast<double>(std::numeric_limits<T>::max()))) ||
      value < static_cast<long long>(std::numeric_limits<T>::min()) ||
      (value > 0 && static_cast<unsigned long long>(value) > static_cast<unsigned long long>(std::numeric_limits<T>::max()))) {
    driverError("22003", "Numeric value out of range.");
    return SQL_ERROR;
  }
  if (buffer != nullptr) *static_cast<T*>(buffer) = static_cast<T>(value);
  if (indicator != nullptr) *indicator = sizeof(T);
  return SQL_SUCCESS;
}

SQLRETURN putPiece(std::string_view bytes, std::size_t unitBytes, std::size_t terminator, SQLPOINTER buffer,
                   SQLLEN size, SQLLEN* indicator, std::size_t* offset) {
  const std::size_t total = bytes.size() * unitBytes;
  const std::size_t from = *offset * unitBytes;
  const std::size_t remaining = total - from;
  if (indicator != nullptr) *indicator = static_cast<SQLLEN>(remaining);
  std::size_t room = size > 0 ? static_cast<std::size_t>(size) : 0;
  room = room >= terminator ? (room - terminator) / unitBytes * unitBytes : 0;
  const std::size_t n = remaining < room ? remaining : room;
  if (buffer != nullptr && size > 0) {
    auto* out = static_cast<unsigned char*>(buffer);
    if (unitBytes == 1) {
      std::memcpy(out, bytes.data() + *offset, n);
    } else {
      for (std::size_t u = 0; u < n / unitBytes; ++u) {
        const SQLWCHAR unit = static_cast<unsigned char>(bytes[*offset + u]);
        std::memcpy(out + u * unitBytes, &unit, unitBytes);
      }
    }
    if (terminator > 0 && static_cast<std::size_t>(size) >= terminator) std::memset(out + n, 0, terminator);
  }
  *offset += n / unitBytes;
  if (n < remaining) {
    driverWarning("01004", "String data, right truncated.");
    return SQL_SUCCESS_WITH_INFO;
  }
  return SQL_SUCCESS;
}

}  // namespace

SQLSMALLINT defaultCType(ColumnType type) {
  switch (type) {
    case ColumnType::kInteger: return SQL_C_SBIGINT;
    case ColumnType::kDouble: return SQL_C_DOUBLE;
    case ColumnType::kDate: return SQL_C_TYPE_DATE;
    default: return SQL_C_CHAR;
  }
}

SQLRETURN putValue(const Value& v, SQLSMALLINT target, SQLPOINTER buffer, SQLLEN size, SQLLEN* indicator,
                   std::size_t* offset) {
  if (v.null) {
    if (indicator == nullptr) {
      driverError("22002", "Indicator variable required but not supplied.");
      return SQL_ERROR;
    }
    *indicator = SQL_NULL_DATA;
    return SQL_SUCCESS;
  }
  if (target == SQL_C_DEFAULT) target = defaultCType(v.type);
  char scratch[kNumberText];
  double d = 0;
  long long i = 0;
  bool integral = false;
  switch (target) {
    case SQL_C_CHAR:
      return putPiece(asText(v, scratch), 1, 1, buffer, size, indicator, offset);
    case SQL_C_WCHAR:
      return putPiece(asText(v, scratch), sizeof(SQLWCHAR), sizeof(SQLWCHAR), buffer, size, indicator, offset);
    case SQL_C_BINARY:
      return putPiece(asText(v, scratch), 1, 0, buffer, size, indicator, offset);
    case SQL_C_SLONG:
    case SQL_C_LONG:
      if (!asNumber(v, &d, &i, &integral)) return SQL_ERROR;
      return putInteger<SQLINTEGER>(d, i, integral, buffer, indicator);
    case SQL_C_ULONG:
      if (!asNumber(v, &d, &i, &integral)) return SQL_ERROR;
      return putInteger<SQLUINTEGER>(d, i, integral, buffer, indicator);
    case SQL_C_SSHORT:
    case SQL_C_SHORT:
      if (!asNumber(v, &d, &i, &integral)) return SQL_ERROR;
      return putInteger<SQLSMALLINT>(d, i, integral, buffer, indicator);
    case SQL_C_SBIGINT:
      if (!asNumber(v, &d, &i, &integral)) return SQL_ERROR;
      return putInteger<SQLBIGINT>(d, i, integral, buffer, indicator);
    case SQL_C_BIT:
    case SQL_C_UTINYINT:
      if (!asNumber(v, &d, &i, &integral)) return SQL_ERROR;
      return putInteger<unsigned char>(d, i, integral, buffer, indicator);
    case SQL_C_DOUBLE:
      if (!asNumber(v, &d, &i, &integral)) return SQL_ERROR;
      if (buffer != nullptr) *static_cast<SQLDOUBLE*>(buffer) = d;
      if (indicator != nullptr) *indicator = sizeof(SQLDOUBLE);
      return SQL_SUCCESS;
    case SQL_C_FLOAT:
      if (!asNumber(v, &d, &i, &integral)) return SQL_ERROR;
      if (buffer != nullptr) *static_cast<SQLREAL*>(buffer) = static_cast<SQLREAL>(d);
      if (indicator != nullptr) *indicator = sizeof(SQLREAL);
      return SQL_SUCCESS;
    case SQL_C_TYPE_DATE:
    case SQL_C_DATE:
    case SQL_C_TYPE_TIMESTAMP:
    case SQL_C_TIMESTAMP: {
      Value date;
      if (!typedValue(reinterpret_cast<const unsigned char*>(v.text.data()), v.text.size(), ColumnType::kDate, &date)) {
        driverError("22018", "Invalid character value for cast: '" + v.text + "' is not a date.");
        return SQL_ERROR;
      }
      const auto year = static_cast<SQLSMALLINT>(std::atoi(v.text.substr(0, 4).c_str()));
      const auto month = static_cast<SQLUSMALLINT>(std::atoi(v.text.substr(5, 2).c_str()));
      const auto day = static_cast<SQLUSMALLINT>(std::atoi(v.text.substr(8, 2).c_str()));
      if (target == SQL_C_TYPE_DATE || target == SQL_C_DATE) {
        if (buffer != nullptr) *static_cast<SQL_DATE_STRUCT*>(buffer) = SQL_DATE_STRUCT{year, month, day};
        if (indicator != nullptr) *indicator = sizeof(SQL_DATE_STRUCT);
      } else {
        if (buffer != nullptr) *static_cast<SQL_TIMESTAMP_STRUCT*>(buffer) = SQL_TIMESTAMP_STRUCT{year, month, day, 0, 0, 0, 0};
        if (indicator != nullptr) *indicator = sizeof(SQL_TIMESTAMP_STRUCT);
      }
      return SQL_SUCCESS;
    }
    default:
      driverError("HYC00", "Optional feature not implemented: conversion to C type " + std::to_string(target) + ".");
      return SQL_ERROR;
  }
}

}  // namespace zucsv

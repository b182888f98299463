#include "parameters.h"

#include <cstdio>
#include <cstring>

#include "call_scope.h"

namespace zucsv {
namespace {

SQLSMALLINT defaultCType(SQLSMALLINT sqlType) {
  switch (sqlType) {
    case SQL_INTEGER:
    case SQL_SMALLINT:
    case SQL_TINYINT:
      return SQL_C_SLONG;
    case SQL_BIGINT:
      return SQL_C_SBIGINT;
    case SQL_DOUBLE:
    case SQL_FLOAT:
    case SQL_REAL:
      return SQL_C_DOUBLE;
    case SQL_TYPE_DATE:
      return SQL_C_TYPE_DATE;
    default:
      return SQL_C_CHAR;
  }
}

Value doubleValue(double d) {
  Value v;
  v.null = false;
  v.type = ColumnType::kDouble;
  v.real = d;
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.17g", d);
  v.text = buffer;
  return v;
}

bool convert(const ParameterBinding& b, Value* out) {
  if (b.atExecution) {
    *out = b.suppliedNull ? nullValue() : textValue(b.supplied_);
    return true;
  }
  const SQLLEN indicator = b.lengthOrIndicator != nullptr ? *b.lengthOrIndicator : SQL_NTS;
  if (indicator == SQL_NULL_DATA || b.value == nullptr) {
    *out = nullValue();
    return true;
  }
  if (indicator < 0 && indicator != SQL_NTS) {
    driverError("HY090", "Invalid string or buffer length: " + std::to_string(indicator) + ".");
    return false;
  }
  const SQLSMALLINT type = b.valueType == SQL_C_DEFAULT ? defaultCType(b.parameterType) : b.valueType;
  switch (type) {
    case SQL_C_CHAR: {
      const char* text = static_cast<const char*>(b.value);
      const std::size_t length = indicator == SQL_NTS ? std::strlen(text) : static_cast<std::size_t>(indicator);
      *out = textValue(std::string(text, length));
      return true;
    }
    case SQL_C_WCHAR: {
      // Code units below 256 become their byte; the driver's texts are bytes.
      const auto* text = static_cast<const SQLWCHAR*>(b.value);
      std::size_t units = 0;
      if (indicator == SQL_NTS) {
        while (text[units] != 0) ++units;
      } else {
        units = static_cast<std::size_t>(indicator) / sizeof(SQLWCHAR);
      }
      std::string bytes;
      for (std::size_t i = 0; i < units; ++i) bytes += static_cast<char>(text[i] < 256 ? text[i] : '?');
      *out = textValue(bytes);
      return true;
    }
    case SQL_C_SLONG:
    case SQL_C_LONG:
      *out = integerValue(*static_cast<const SQLINTEGER*>(b.value));
      return true;
    case SQL_C_ULONG:
      *out = integerValue(*static_cast<const SQLUINTEGER*>(b.value));
      return true;
    case SQL_C_SSHORT:
    case SQL_C_SHORT:
      *out = integerValue(*static_cast<const SQLSMALLINT*>(b.value));
      return true;
    case SQL_C_SBIGINT:
      *out = integerValue(*static_cast<const SQLBIGINT*>(b.value));
      return true;
    case SQL_C_BIT:
    case SQL_C_UTINYINT:
      *out = integerValue(*static_cast<const unsigned char*>(b.value));
      return true;
    case SQL_C_DOUBLE:
      *out = doubleValue(*static_cast<const SQLDOUBLE*>(b.value));
      return true;
    case SQL_C_FLOAT:
      *out = doubleValue(*static_cast<const SQLREAL*>(b.value));
      return true;
    case SQL_C_TYPE_DATE:
    case SQL_C_DATE: {
      const auto* d = static_cast<const SQL_DATE_STRUCT*>(b.value);
      char buffer[32];
      std::snprintf(buffer, sizeof buffer, "%04d-%02u-%02u", d->year, d->month, d->day);
      *out = textValue(buffer);
      out->type = ColumnType::kDate;
      return true;
    }
    default:
      driverError("HYC00", "Optional feature not implemented: parameters of C type " + std::to_string(type) + ".");
      return false;
  }
}

}  // namespace

bool isAtExecution(const ParameterBinding& b) {
  if (b.lengthOrIndicator == nullptr) return false;
  const SQLLEN n = *b.lengthOrIndicator;
  return n == SQL_DATA_AT_EXEC || n <= SQL_LEN_DATA_AT_EXEC_OFFSET;
}

bool parameterValues(const Statement& stmt, int count, std::vector<Value>* values) {
  values->clear();
  for (int i = 0; i < count; ++i) {
    const std::size_t index = static_cast<std::size_t>(i);
    if (index >= stmt.parameters.size() || !stmt.parameters[index].bound) {
      driverError("07002", "COUNT field incorrect: parameter " + std::to_string(i + 1) + " is not bound.");
      return false;
    }
    Value v;
    if (!convert(stmt.parameters[index], &v)) return false;
    values->push_back(v);
  }
  return true;
}

}  // namespace zucsv

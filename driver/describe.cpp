// SQLDescribeCol and SQLColAttribute over the open result's columns.
#include "call_scope.h"
#include "cursor.h"
#include "handles.h"
#include "odbc_out.h"

using namespace zucsv;

namespace {

const ResultColumn* columnOf(Statement* stmt, SQLUSMALLINT number) {
  if (!stmt->cursor) {
    driverError("07005", "The prepared statement returns no rows: no result set is open.");
    return nullptr;
  }
  if (number < 1 || number > stmt->cursor->columns.size()) {
    driverError("07009", "Invalid descriptor index: column " + std::to_string(number) + ".");
    return nullptr;
  }
  return &stmt->cursor->columns[number - 1u];
}

SQLSMALLINT decimalsOf(const ResultColumn& c) { return c.sqlType == SQL_DOUBLE ? 15 : 0; }

// The characters a value of the column needs at most, shown as text.
SQLLEN displaySizeOf(const ResultColumn& c) {
  switch (c.sqlType) {
    case SQL_BIGINT: return 20;
    case SQL_INTEGER: return 11;
    case SQL_SMALLINT: return 6;
    case SQL_DOUBLE: return 24;
    default: return static_cast<SQLLEN>(c.size);
  }
}

}  // namespace

ZUCSV_EXPORT SQLRETURN SQL_API SQLDescribeCol(SQLHSTMT h, SQLUSMALLINT number, SQLCHAR* name, SQLSMALLINT bufferLength,
                                            SQLSMALLINT* nameLength, SQLSMALLINT* dataType, SQLULEN* columnSize,
                                            SQLSMALLINT* decimalDigits, SQLSMALLINT* nullable) {
  Statement* stmt = asStatement(h);
  if (stmt == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(stmt, "SQLDescribeCol");
  const ResultColumn* c = columnOf(stmt, number);
  if (c == nullptr) return scope.finish(SQL_ERROR);
  SQLRETURN rc = putText(c->name, name, bufferLength, nameLength) ? SQL_SUCCESS : SQL_SUCCESS_WITH_INFO;
  if (dataType != nullptr) *dataType = c->sqlType;
  if (columnSize != nullptr) *columnSize = c->size;
  if (decimalDigits != nullptr) *decimalDigits = decimalsOf(*c);
  if (nullable != nullptr) *nullable = c->nullable;
  return scope.finish(rc);
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLColAttribute(SQLHSTMT h, SQLUSMALLINT number, SQLUSMALLINT field, SQLPOINTER text,
                                             SQLSMALLINT bufferLength, SQLSMALLINT* textLength, SQLLEN* numeric) {
  Statement* stmt = asStatement(h);
  if (stmt == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(stmt, "SQLColAttribute");
  if (field == SQL_DESC_COUNT) {
    if (numeric != nullptr) *numeric = stmt->cursor ? static_cast<SQLLEN>(stmt->cursor->columns.size()) : 0;
    return scope.finish(SQL_SUCCESS);
  }
  const ResultColumn* c = columnOf(stmt, number);
  if (c == nullptr) return scope.finish(SQL_ERROR);
  auto put = [&](const std::string& s) {
    return putText(s, text, bufferLength, textLength) ? SQL_SUCCESS : SQL_SUCCESS_WITH_INFO;
  };
  auto number_ = [&](SQLLEN v) {
    if (numeric != nullptr) *numeric = v;
    return SQL_SUCCESS;
  };
  SQLRETURN rc = SQL_SUCCESS;
  switch (field) {
    case SQL_DESC_NAME:
    case SQL_DESC_LABEL:
    case SQL_DESC_BASE_COLUMN_NAME:
      rc = put(c->name);
      break;
    case SQL_DESC_TABLE_NAME:
    case SQL_DESC_BASE_TABLE_NAME:
      rc = put(c->table);
      break;
    case SQL_DESC_CATALOG_NAME:
    case SQL_DESC_SCHEMA_NAME:
    case SQL_DESC_LITERAL_PREFIX:
    case SQL_DESC_LITERAL_SUFFIX:
      rc = put(c->sqlType == SQL_VARCHAR && (field == SQL_DESC_LITERAL_PREFIX || field == SQL_DESC_LITERAL_SUFFIX)
                   ? "'"
                   : "");
      break;
    case SQL_DESC_TYPE_NAME:
      rc = put(typeName(c->type));
      break;
    case SQL_DESC_LOCAL_TYPE_NAME:
      rc = put("");
      break;
    case SQL_DESC_TYPE:
    case SQL_DESC_CONCISE_TYPE:
      rc = number_(c->sqlType);
      break;
    case SQL_COLUMN_LENGTH:
    case SQL_DESC_LENGTH:
    case SQL_DESC_OCTET_LENGTH:
    case SQL_COLUMN_PRECISION:
    case SQL_DESC_PRECISION:
      rc = number_(static_cast<SQLLEN>(c->size));
      break;
    case SQL_DESC_DISPLAY_SIZE:
      rc = number_(displaySizeOf(*c));
      break;
    case SQL_COLUMN_SCALE:
    case SQL_DESC_SCALE:
      rc = number_(decimalsOf(*c));
      break;
    case SQL_DESC_NULLABLE:
    case SQL_COLUMN_NULLABLE:
      rc = number_(c->nullable);
      break;
    case SQL_DESC_UNSIGNED:
      rc = number_(c->sqlType == SQL_VARCHAR || c->sqlType == SQL_TYPE_DATE ? SQL_TRUE : SQL_FALSE);
      break;
    case SQL_DESC_NUM_PREC_RADIX:
      rc = number_(c->sqlType == SQL_BIGINT || c->sqlType == SQL_INTEGER ? 10 : c->sqlType == SQL_DOUBLE ? 2 : 0);
      break;
    case SQL_DESC_SEARCHABLE:
      rc = number_(SQL_PRED_SEARCHABLE);
      break;
    case SQL_DESC_UPDATABLE:
      rc = number_(SQL_ATTR_READONLY);
      break;
    case SQL_DESC_CASE_SENSITIVE:
      rc = number_(c->sqlType == SQL_VARCHAR ? SQL_TRUE : SQL_FALSE);
      break;
    case SQL_DESC_AUTO_UNIQUE_VALUE:
    case SQL_DESC_FIXED_PREC_SCALE:
    case SQL_DESC_UNNAMED:
      rc = number_(field == SQL_DESC_UNNAMED ? SQL_NAMED : SQL_FALSE);
      break;
    default:
      driverError("HY091", "Invalid descriptor field identifier " + std::to_string(field) + ".");
      return scope.finish(SQL_ERROR);
  }
  return scope.finish(rc);
}

// SQLGetInfo: what clients ask at connect and before they build queries.
#include "call_scope.h"
#include "handles.h"
#include "odbc_out.h"

using namespace zucsv;

namespace {

constexpr const char* kDriverName = "libzucsv.so";
constexpr const char* kDriverVersion = "04.00.0000";
constexpr const char* kOdbcVersion = "03.00";
constexpr const char* kDbmsName = "CSV";
constexpr SQLUSMALLINT kMaxNameLength = 128;

struct Answer {
  enum Kind { kText, kShort, kInteger } kind;
  std::string text;
  SQLUINTEGER number = 0;
};

Answer text(const std::string& s) { return {Answer::kText, s, 0}; }
Answer shortNumber(SQLUINTEGER n) { return {Answer::kShort, std::string(), n}; }
Answer integer(SQLUINTEGER n) { return {Answer::kInteger, std::string(), n}; }

bool answer(const Connection& dbc, SQLUSMALLINT type, Answer* out) {
  switch (type) {
    case SQL_DRIVER_NAME: *out = text(kDriverName); break;
    case SQL_DRIVER_VER: *out = text(kDriverVersion); break;
    case SQL_DRIVER_ODBC_VER: *out = text(kOdbcVersion); break;
    case SQL_DBMS_NAME: *out = text(kDbmsName); break;
    case SQL_DBMS_VER: *out = text(kDriverVersion); break;
    case SQL_DATA_SOURCE_NAME: *out = text(dbc.dataSourceName); break;
    case SQL_DATABASE_NAME: *out = text(dbc.options.directory); break;
    case SQL_SERVER_NAME:
    case SQL_USER_NAME:
    case SQL_CATALOG_TERM:
    case SQL_SCHEMA_TERM:
    case SQL_PROCEDURE_TERM:
    case SQL_CATALOG_NAME_SEPARATOR:
    case SQL_SPECIAL_CHARACTERS:
    case SQL_KEYWORDS:
      *out = text("");
      break;
    case SQL_TABLE_TERM: *out = text("table"); break;
    case SQL_IDENTIFIER_QUOTE_CHAR: *out = text("\""); break;
    case SQL_SEARCH_PATTERN_ESCAPE: *out = text("\\"); break;
    case SQL_DATA_SOURCE_READ_ONLY:
    case SQL_PROCEDURES:
    case SQL_MULT_RESULT_SETS:
    case SQL_MULTIPLE_ACTIVE_TXN:
    case SQL_DESCRIBE_PARAMETER:
    case SQL_COLUMN_ALIAS:
    case SQL_ORDER_BY_COLUMNS_IN_SELECT:
    case SQL_OUTER_JOINS:
    case SQL_ROW_UPDATES:
    case SQL_NEED_LONG_DATA_LEN:
    case SQL_EXPRESSIONS_IN_ORDERBY:
    case SQL_INTEGRITY:
    case SQL_CATALOG_NAME:
      *out = text("N");
      break;
    case SQL_ACCESSIBLE_TABLES:
    case SQL_ACCESSIBLE_PROCEDURES:
    case SQL_LIKE_ESCAPE_CLAUSE:
    case SQL_MAX_ROW_SIZE_INCLUDES_LONG:
      *out = text("Y");
      break;
    case SQL_MAX_DRIVER_CONNECTIONS:
    case SQL_MAX_CONCURRENT_ACTIVITIES:
    case SQL_MAX_SCHEMA_NAME_LEN:
    case SQL_MAX_CATALOG_NAME_LEN:
    case SQL_MAX_PROCEDURE_NAME_LEN:
    case SQL_MAX_CURSOR_NAME_LEN:
    case SQL_MAX_COLUMNS_IN_GROUP_BY:
    case SQL_MAX_COLUMNS_IN_INDEX:
    case SQL_MAX_COLUMNS_IN_SELECT:
    case SQL_MAX_COLUMNS_IN_TABLE:
    case SQL_MAX_TABLES_IN_SELECT:
    case SQL_MAX_USER_NAME_LEN:
      *out = shortNumber(type == SQL_MAX_TABLES_IN_SELECT ? 1 : 0);
      break;
    case SQL_MAX_COLUMN_NAME_LEN:
    case SQL_MAX_TABLE_NAME_LEN:
    case SQL_MAX_IDENTIFIER_LEN:
      *out = shortNumber(kMaxNameLength);
      break;
    case SQL_MAX_COLUMNS_IN_ORDER_BY:
      *out = shortNumber(63);
      break;
    case SQL_TXN_CAPABLE: *out = shortNumber(SQL_TC_NONE); break;
    case SQL_CURSOR_COMMIT_BEHAVIOR:
    case SQL_CURSOR_ROLLBACK_BEHAVIOR:
      *out = shortNumber(SQL_CB_PRESERVE);
      break;
    case SQL_IDENTIFIER_CASE: *out = shortNumber(SQL_IC_MIXED); break;
    case SQL_QUOTED_IDENTIFIER_CASE: *out = shortNumber(SQL_IC_SENSITIVE); break;
    case SQL_NULL_COLLATION: *out = shortNumber(SQL_NC_LOW); break;
    case SQL_NON_NULLABLE_COLUMNS: *out = shortNumber(SQL_NNC_NULL); break;
    case SQL_CONCAT_NULL_BEHAVIOR: *out = shortNumber(SQL_CB_NULL); break;
    case SQL_CORRELATION_NAME: *out = shortNumber(SQL_CN_NONE); break;
    case SQL_GROUP_BY: *out = shortNumber(SQL_GB_NOT_SUPPORTED); break;
    case SQL_FILE_USAGE: *out = shortNumber(SQL_FILE_TABLE); break;
    case SQL_ODBC_API_CONFORMANCE: *out = shortNumber(SQL_OAC_LEVEL1); break;
    case SQL_ODBC_SQL_CONFORMANCE: *out = shortNumber(SQL_OSC_MINIMUM); break;
    case SQL_GETDATA_EXTENSIONS: *out = integer(SQL_GD_ANY_COLUMN | SQL_GD_ANY_ORDER); break;
    case SQL_SCROLL_OPTIONS: *out = integer(SQL_SO_FORWARD_ONLY); break;
    case SQL_FORWARD_ONLY_CURSOR_ATTRIBUTES1: *out = integer(SQL_CA1_NEXT); break;
    case SQL_FORWARD_ONLY_CURSOR_ATTRIBUTES2: *out = integer(SQL_CA2_READ_ONLY_CONCURRENCY); break;
    case SQL_DEFAULT_TXN_ISOLATION:
    case SQL_TXN_ISOLATION_OPTION:
    case SQL_DYNAMIC_CURSOR_ATTRIBUTES1:
    case SQL_DYNAMIC_CURSOR_ATTRIBUTES2:
    case SQL_STATIC_CURSOR_ATTRIBUTES1:
    case SQL_STATIC_CURSOR_ATTRIBUTES2:
    case SQL_KEYSET_CURSOR_ATTRIBUTES1:
    case SQL_KEYSET_CURSOR_ATTRIBUTES2:
    case SQL_BATCH_SUPPORT:
    case SQL_BATCH_ROW_COUNT:
    case SQL_BOOKMARK_PERSISTENCE:
    case SQL_STATIC_SENSITIVITY:
    case SQL_LOCK_TYPES:
    case SQL_POS_OPERATIONS:
    case SQL_POSITIONED_STATEMENTS:
    case SQL_SCROLL_CONCURRENCY:
    case SQL_ALTER_TABLE:
    case SQL_CREATE_TABLE:
    case SQL_DROP_TABLE:
    case SQL_SUBQUERIES:
    case SQL_UNION:
    case SQL_NUMERIC_FUNCTIONS:
    case SQL_STRING_FUNCTIONS:
    case SQL_SYSTEM_FUNCTIONS:
    case SQL_TIMEDATE_FUNCTIONS:
    case SQL_CONVERT_FUNCTIONS:
    case SQL_SCHEMA_USAGE:
    case SQL_CATALOG_USAGE:
    case SQL_OJ_CAPABILITIES:
    case SQL_INFO_SCHEMA_VIEWS:
    case SQL_AGGREGATE_FUNCTIONS:
    case SQL_DATETIME_LITERALS:
    case SQL_TIMEDATE_ADD_INTERVALS:
    case SQL_TIMEDATE_DIFF_INTERVALS:
    case SQL_CONVERT_BIGINT:
    case SQL_CONVERT_CHAR:
    case SQL_CONVERT_DOUBLE:
    case SQL_CONVERT_VARCHAR:
    case SQL_CONVERT_DATE:
    case SQL_CONVERT_INTEGER:
    case SQL_MAX_ROW_SIZE:
    case SQL_MAX_STATEMENT_LEN:
    case SQL_MAX_CHAR_LITERAL_LEN:
    case SQL_MAX_BINARY_LITERAL_LEN:
    case SQL_MAX_INDEX_SIZE:
    case SQL_ASYNC_MODE:
    case SQL_MAX_ASYNC_CONCURRENT_STATEMENTS:
    case SQL_PARAM_ARRAY_SELECTS:
      *out = integer(0);
      break;
    case SQL_PARAM_ARRAY_ROW_COUNTS: *out = integer(SQL_PARC_NO_BATCH); break;
    case SQL_CURSOR_SENSITIVITY: *out = integer(SQL_INSENSITIVE); break;
    case SQL_SQL_CONFORMANCE: *out = integer(SQL_SC_SQL92_ENTRY); break;
    case SQL_ODBC_INTERFACE_CONFORMANCE: *out = integer(SQL_OIC_CORE); break;
    case SQL_DTC_TRANSITION_COST: *out = integer(0); break;
    case SQL_SQL92_PREDICATES:
      *out = integer(SQL_SP_COMPARISON | SQL_SP_LIKE | SQL_SP_ISNULL | SQL_SP_ISNOTNULL);
      break;
    case SQL_INSERT_STATEMENT: *out = integer(SQL_IS_INSERT_LITERALS); break;
    default:
      return false;
  }
  return true;
}

}  // namespace

ZUCSV_EXPORT SQLRETURN SQL_API SQLGetInfo(SQLHDBC h, SQLUSMALLINT type, SQLPOINTER value, SQLSMALLINT bufferLength,
                                        SQLSMALLINT* length) {
  Connection* dbc = asConnection(h);
  if (dbc == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(dbc, "SQLGetInfo");
  Answer a;
  if (!answer(*dbc, type, &a)) {
    driverError("HY096", "Information type out of range: " + std::to_string(type) + ".");
    return scope.finish(SQL_ERROR);
  }
  switch (a.kind) {
    case Answer::kText:
      return scope.finish(putText(a.text, value, bufferLength, length) ? SQL_SUCCESS : SQL_SUCCESS_WITH_INFO);
    case Answer::kShort:
      if (value != nullptr) *static_cast<SQLUSMALLINT*>(value) = static_cast<SQLUSMALLINT>(a.number);
      if (length != nullptr) *length = sizeof(SQLUSMALLINT);
      break;
    case Answer::kInteger:
      if (value != nullptr) *static_cast<SQLUINTEGER*>(value) = a.number;
      if (length != nullptr) *length = sizeof(SQLUINTEGER);
      break;
  }
  return scope.finish(SQL_SUCCESS);
}

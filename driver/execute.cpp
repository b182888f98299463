// SQLPrepare, SQLExecute, SQLExecDirect and what goes with them: markers,
// their bindings, the row count and the result's column count.
#include <cstring>

#include "call_scope.h"
#include "cursor.h"
#include "handles.h"
#include "insert.h"
#include "odbc_out.h"
#include "parameters.h"
#include "select_cursor.h"
#include "sql_ast.h"

using namespace zucsv;

namespace {

SQLRETURN prepare(Statement* stmt, const std::string& text) {
  stmt->closeCursor();
  stmt->prepared.reset();
  stmt->needData = false;
  stmt->rowCount = -1;
  auto parsed = std::make_unique<ParsedStatement>();
  if (!parseSql(text, parsed.get())) return SQL_ERROR;
  stmt->text = text;
  stmt->prepared = std::move(parsed);
  return SQL_SUCCESS;
}

SQLRETURN execute(Statement* stmt) {
  if (!stmt->prepared) {
    driverError("HY010", "Function sequence error: no statement is prepared.");
    return SQL_ERROR;
  }
  if (stmt->cursor) {
    driverError("24000", "Invalid cursor state: a cursor is open.");
    return SQL_ERROR;
  }
  ParsedStatement* s = stmt->prepared.get();
  Connection* dbc = stmt->connection;
  if (!stmt->needData) {
    // Values sent at execution are asked for first, through SQLParamData.
    bool any = false;
    for (int i = 0; i < s->parameterCount && static_cast<std::size_t>(i) < stmt->parameters.size(); ++i) {
      ParameterBinding& b = stmt->parameters[static_cast<std::size_t>(i)];
      b.atExecution = b.bound && isAtExecution(b);
      b.supplied = false;
      b.suppliedNull = false;
      b.supplied_.clear();
      any = any || b.atExecution;
    }
    if (any) {
      stmt->needData = true;
      stmt->dataParameter = -1;
      return SQL_NEED_DATA;
    }
  }
  stmt->needData = false;
  std::vector<Value> parameters;
  if (!parameterValues(*stmt, s->parameterCount, &parameters)) return SQL_ERROR;
  void* cache = dbc->environment->pageCache;
  if (s->kind == ParsedStatement::kInsert) {
    if (!executeInsert(cache, dbc->options, s, parameters)) return SQL_ERROR;
    stmt->rowCount = 1;
    return SQL_SUCCESS;
  }
  auto cursor = std::make_unique<SelectCursor>(cache, dbc->options.delimiter, *s, std::move(parameters));
  if (!cursor->open(dbc->options, s)) return SQL_ERROR;
  stmt->cursor = std::move(cursor);
  stmt->rowCount = -1;
  stmt->pieceColumn = 0;
  return SQL_SUCCESS;
}

}  // namespace

ZUCSV_EXPORT SQLRETURN SQL_API SQLPrepare(SQLHSTMT h, SQLCHAR* text, SQLINTEGER length) {
  Statement* stmt = asStatement(h);
  if (stmt == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(stmt, "SQLPrepare");
  return scope.finish(prepare(stmt, inText(text, length)));
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLExecute(SQLHSTMT h) {
  Statement* stmt = asStatement(h);
  if (stmt == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(stmt, "SQLExecute");
  return scope.finish(execute(stmt));
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLExecDirect(SQLHSTMT h, SQLCHAR* text, SQLINTEGER length) {
  Statement* stmt = asStatement(h);
  if (stmt == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(stmt, "SQLExecDirect");
  SQLRETURN rc = prepare(stmt, inText(text, length));
  if (rc == SQL_SUCCESS) rc = execute(stmt);
  return scope.finish(rc);
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLNumParams(SQLHSTMT h, SQLSMALLINT* count) {
  Statement* stmt = asStatement(h);
  if (stmt == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(stmt, "SQLNumParams");
  if (count != nullptr) *count = stmt->prepared ? static_cast<SQLSMALLINT>(stmt->prepared->parameterCount) : 0;
  return scope.finish(SQL_SUCCESS);
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLBindParameter(SQLHSTMT h, SQLUSMALLINT number, SQLSMALLINT ioType,
                                              SQLSMALLINT valueType, SQLSMALLINT parameterType, SQLULEN columnSize,
                                              SQLSMALLINT decimalDigits, SQLPOINTER value, SQLLEN bufferLength,
                                              SQLLEN* lengthOrIndicator) {
  Statement* stmt = asStatement(h);
  if (stmt == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(stmt, "SQLBindParameter");
  if (number < 1) {
    driverError("07009", "Invalid descriptor index: parameters count from 1.");
    return scope.finish(SQL_ERROR);
  }
  if (ioType != SQL_PARAM_INPUT) {
    driverError("HYC00", "Optional feature not implemented: only input parameters.");
    return scope.finish(SQL_ERROR);
  }
  if (stmt->parameters.size() < number) stmt->parameters.resize(number);
  ParameterBinding& b = stmt->parameters[number - 1u];
  b.bound = true;
  b.valueType = valueType;
  b.parameterType = parameterType;
  b.value = value;
  b.bufferLength = bufferLength;
  b.lengthOrIndicator = lengthOrIndicator;
  return scope.finish(SQL_SUCCESS);
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLRowCount(SQLHSTMT h, SQLLEN* count) {
  Statement* stmt = asStatement(h);
  if (stmt == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(stmt, "SQLRowCount");
  if (count != nullptr) *count = stmt->rowCount;
  return scope.finish(SQL_SUCCESS);
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLNumResultCols(SQLHSTMT h, SQLSMALLINT* count) {
  Statement* stmt = asStatement(h);
  if (stmt == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(stmt, "SQLNumResultCols");
  if (count != nullptr) *count = stmt->cursor ? static_cast<SQLSMALLINT>(stmt->cursor->columns.size()) : 0;
  return scope.finish(SQL_SUCCESS);
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLMoreResults(SQLHSTMT h) {
  Statement* stmt = asStatement(h);
  if (stmt == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(stmt, "SQLMoreResults");
  stmt->closeCursor();
  return scope.finish(SQL_NO_DATA);
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLCancel(SQLHSTMT h) {
  Statement* stmt = asStatement(h);
  if (stmt == nullptr) return SQL_INVALID_HANDLE;
  return SQL_SUCCESS;
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLParamData(SQLHSTMT h, SQLPOINTER* token) {
  Statement* stmt = asStatement(h);
  if (stmt == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(stmt, "SQLParamData");
  if (!stmt->needData || !stmt->prepared) {
    driverError("HY010", "Function sequence error: no value is asked for.");
    return scope.finish(SQL_ERROR);
  }
  for (std::size_t i = static_cast<std::size_t>(stmt->dataParameter + 1); i < stmt->parameters.size(); ++i) {
    if (stmt->parameters[i].atExecution) {
      stmt->dataParameter = static_cast<int>(i);
      if (token != nullptr) *token = stmt->parameters[i].value;
      return scope.finish(SQL_NEED_DATA);
    }
  }
  stmt->dataParameter = -1;
  return scope.finish(execute(stmt));
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLPutData(SQLHSTMT h, SQLPOINTER data, SQLLEN length) {
  Statement* stmt = asStatement(h);
  if (stmt == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(stmt, "SQLPutData");
  if (!stmt->needData || stmt->dataParameter < 0) {
    driverError("HY010", "Function sequence error: SQLParamData names no marker yet.");
    return scope.finish(SQL_ERROR);
  }
  ParameterBinding& b = stmt->parameters[static_cast<std::size_t>(stmt->dataParameter)];
  if (length == SQL_NULL_DATA) {
    b.suppliedNull = true;
    return scope.finish(SQL_SUCCESS);
  }
  if (b.valueType == SQL_C_WCHAR) {
    const auto* units = static_cast<const SQLWCHAR*>(data);
    const std::size_t count = length == SQL_NTS ? std::char_traits<SQLWCHAR>::length(units)
                                                : static_cast<std::size_t>(length) / sizeof(SQLWCHAR);
    for (std::size_t i = 0; i < count; ++i) b.supplied_ += static_cast<char>(units[i] < 256 ? units[i] : '?');
  } else {
    const char* bytes = static_cast<const char*>(data);
    b.supplied_.append(bytes, length == SQL_NTS ? std::strlen(bytes) : static_cast<std::size_t>(length));
  }
  b.supplied = true;
  return scope.finish(SQL_SUCCESS);
}

// Environment, connection and statement attributes: the usual ones are
// accepted and kept, and read back as kept. The driver has no transactions:
// every statement takes effect at once, so SQLEndTran has nothing to do.
#include "call_scope.h"
#include "handles.h"
#include "odbc_out.h"

using namespace zucsv;

namespace {

SQLULEN asNumber(SQLPOINTER value) { return static_cast<SQLULEN>(reinterpret_cast<std::uintptr_t>(value)); }

template <typename T>
void put(SQLPOINTER out, T value, SQLINTEGER* length) {
  if (out != nullptr) *static_cast<T*>(out) = value;
  if (length != nullptr) *length = sizeof(T);
}

SQLRETURN unknown(SQLINTEGER attribute) {
  driverError("HY092", "Invalid attribute/option identifier " + std::to_string(attribute) + ".");
  return SQL_ERROR;
}

}  // namespace

ZUCSV_EXPORT SQLRETURN SQL_API SQLSetEnvAttr(SQLHENV h, SQLINTEGER attribute, SQLPOINTER value, SQLINTEGER length) {
  Environment* env = asEnvironment(h);
  if (env == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(env, "SQLSetEnvAttr");
  switch (attribute) {
    case SQL_ATTR_ODBC_VERSION:
      env->odbcVersion = static_cast<SQLINTEGER>(asNumber(value));
      return scope.finish(SQL_SUCCESS);
    case SQL_ATTR_OUTPUT_NTS:
    case SQL_ATTR_CONNECTION_POOLING:
    case SQL_ATTR_CP_MATCH:
      return scope.finish(SQL_SUCCESS);
    default:
      return scope.finish(unknown(attribute));
  }
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLGetEnvAttr(SQLHENV h, SQLINTEGER attribute, SQLPOINTER value, SQLINTEGER bufferLength,
                                           SQLINTEGER* length) {
  Environment* env = asEnvironment(h);
  if (env == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(env, "SQLGetEnvAttr");
  switch (attribute) {
    case SQL_ATTR_ODBC_VERSION: put<SQLINTEGER>(value, env->odbcVersion, length); break;
    case SQL_ATTR_OUTPUT_NTS: put<SQLINTEGER>(value, SQL_TRUE, length); break;
    case SQL_ATTR_CONNECTION_POOLING: put<SQLUINTEGER>(value, SQL_CP_OFF, length); break;
    default: return scope.finish(unknown(attribute));
  }
  return scope.finish(SQL_SUCCESS);
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLSetConnectAttr(SQLHDBC h, SQLINTEGER attribute, SQLPOINTER value, SQLINTEGER length) {
  Connection* dbc = asConnection(h);
  if (dbc == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(dbc, "SQLSetConnectAttr");
  const SQLUINTEGER n = static_cast<SQLUINTEGER>(asNumber(value));
  switch (attribute) {
    case SQL_ATTR_AUTOCOMMIT: dbc->autocommit = n; break;
    case SQL_ATTR_LOGIN_TIMEOUT: dbc->loginTimeout = n; break;
    case SQL_ATTR_ACCESS_MODE: dbc->accessMode = n; break;
    case SQL_ATTR_TXN_ISOLATION: dbc->txnIsolation = n; break;
    case SQL_ATTR_CONNECTION_TIMEOUT:
    case SQL_ATTR_QUIET_MODE:
    case SQL_ATTR_PACKET_SIZE:
    case SQL_ATTR_CURRENT_CATALOG:
    case SQL_ATTR_ODBC_CURSORS:
    case SQL_ATTR_TRACE:
    case SQL_ATTR_TRACEFILE:
    case SQL_ATTR_ANSI_APP:
      break;
    default:
      return scope.finish(unknown(attribute));
  }
  return scope.finish(SQL_SUCCESS);
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLGetConnectAttr(SQLHDBC h, SQLINTEGER attribute, SQLPOINTER value,
                                               SQLINTEGER bufferLength, SQLINTEGER* length) {
  Connection* dbc = asConnection(h);
  if (dbc == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(dbc, "SQLGetConnectAttr");
  switch (attribute) {
    case SQL_ATTR_AUTOCOMMIT: put<SQLUINTEGER>(value, dbc->autocommit, length); break;
    case SQL_ATTR_LOGIN_TIMEOUT: put<SQLUINTEGER>(value, dbc->loginTimeout, length); break;
    case SQL_ATTR_ACCESS_MODE: put<SQLUINTEGER>(value, dbc->accessMode, length); break;
    case SQL_ATTR_TXN_ISOLATION: put<SQLUINTEGER>(value, dbc->txnIsolation, length); break;
    case SQL_ATTR_CONNECTION_DEAD:
      put<SQLUINTEGER>(value, dbc->connected ? SQL_CD_FALSE : SQL_CD_TRUE, length);
      break;
    case SQL_ATTR_CURRENT_CATALOG: {
      SQLSMALLINT shortLength = 0;
      const SQLRETURN rc = putText("", value, bufferLength, &shortLength) ? SQL_SUCCESS : SQL_SUCCESS_WITH_INFO;
      if (length != nullptr) *length = shortLength;
      return scope.finish(rc);
    }
    default:
      return scope.finish(unknown(attribute));
  }
  return scope.finish(SQL_SUCCESS);
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLSetStmtAttr(SQLHSTMT h, SQLINTEGER attribute, SQLPOINTER value, SQLINTEGER length) {
  Statement* stmt = asStatement(h);
  if (stmt == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(stmt, "SQLSetStmtAttr");
  const SQLULEN n = asNumber(value);
  switch (attribute) {
    case SQL_ATTR_ROW_ARRAY_SIZE:
      if (n != 1) {
        driverError("01S02", "Option value changed: rows are fetched one at a time.");
        stmt->rowArraySize = 1;
        return scope.finish(SQL_SUCCESS_WITH_INFO);
      }
      stmt->rowArraySize = n;
      break;
    case SQL_ATTR_ROWS_FETCHED_PTR: stmt->rowsFetched = static_cast<SQLULEN*>(value); break;
    case SQL_ATTR_ROW_STATUS_PTR: stmt->rowStatus = static_cast<SQLUSMALLINT*>(value); break;
    case SQL_ATTR_MAX_ROWS: stmt->maxRows = n; break;
    case SQL_ATTR_QUERY_TIMEOUT: stmt->queryTimeout = n; break;
    case SQL_ATTR_CURSOR_TYPE: stmt->cursorType = n; break;
    case SQL_ATTR_CONCURRENCY: stmt->concurrency = n; break;
    case SQL_ATTR_NOSCAN: stmt->noScan = n; break;
    case SQL_ATTR_ROW_BIND_TYPE: stmt->bindType = n; break;
    case SQL_ATTR_PARAMSET_SIZE: stmt->paramsetSize = n; break;
    case SQL_ATTR_MAX_LENGTH:
    case SQL_ATTR_RETRIEVE_DATA:
    case SQL_ATTR_USE_BOOKMARKS:
    case SQL_ATTR_CURSOR_SCROLLABLE:
    case SQL_ATTR_CURSOR_SENSITIVITY:
    case SQL_ATTR_PARAM_BIND_TYPE:
    case SQL_ATTR_PARAMS_PROCESSED_PTR:
    case SQL_ATTR_PARAM_STATUS_PTR:
    case SQL_ATTR_ROW_BIND_OFFSET_PTR:
    case SQL_ATTR_PARAM_BIND_OFFSET_PTR:
      break;
    default:
      return scope.finish(unknown(attribute));
  }
  return scope.finish(SQL_SUCCESS);
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLGetStmtAttr(SQLHSTMT h, SQLINTEGER attribute, SQLPOINTER value,
                                            SQLINTEGER bufferLength, SQLINTEGER* length) {
  Statement* stmt = asStatement(h);
  if (stmt == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(stmt, "SQLGetStmtAttr");
  switch (attribute) {
    case SQL_ATTR_APP_ROW_DESC:
    case SQL_ATTR_APP_PARAM_DESC:
    case SQL_ATTR_IMP_ROW_DESC:
    case SQL_ATTR_IMP_PARAM_DESC:
      put<SQLPOINTER>(value, stmt, length);
      break;
    case SQL_ATTR_ROW_ARRAY_SIZE: put<SQLULEN>(value, stmt->rowArraySize, length); break;
    case SQL_ATTR_ROWS_FETCHED_PTR: put<SQLULEN*>(value, stmt->rowsFetched, length); break;
    case SQL_ATTR_ROW_STATUS_PTR: put<SQLUSMALLINT*>(value, stmt->rowStatus, length); break;
    case SQL_ATTR_MAX_ROWS: put<SQLULEN>(value, stmt->maxRows, length); break;
    case SQL_ATTR_QUERY_TIMEOUT: put<SQLULEN>(value, stmt->queryTimeout, length); break;
    case SQL_ATTR_CURSOR_TYPE: put<SQLULEN>(value, stmt->cursorType, length); break;
    case SQL_ATTR_CONCURRENCY: put<SQLULEN>(value, stmt->concurrency, length); break;
    case SQL_ATTR_NOSCAN: put<SQLULEN>(value, stmt->noScan, length); break;
    case SQL_ATTR_ROW_BIND_TYPE: put<SQLULEN>(value, stmt->bindType, length); break;
    case SQL_ATTR_PARAMSET_SIZE: put<SQLULEN>(value, stmt->paramsetSize, length); break;
    case SQL_ATTR_CURSOR_SCROLLABLE: put<SQLULEN>(value, SQL_NONSCROLLABLE, length); break;
    case SQL_ATTR_CURSOR_SENSITIVITY: put<SQLULEN>(value, SQL_INSENSITIVE, length); break;
    case SQL_ATTR_USE_BOOKMARKS: put<SQLULEN>(value, SQL_UB_OFF, length); break;
    case SQL_ATTR_RETRIEVE_DATA: put<SQLULEN>(value, SQL_RD_ON, length); break;
    case SQL_ATTR_MAX_LENGTH: put<SQLULEN>(value, 0, length); break;
    case SQL_ATTR_ROW_NUMBER: put<SQLULEN>(value, stmt->onRow ? stmt->rowsSoFar : 0, length); break;
    default:
      return scope.finish(unknown(attribute));
  }
  return scope.finish(SQL_SUCCESS);
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLEndTran(SQLSMALLINT type, SQLHANDLE h, SQLSMALLINT completion) {
  Handle* handle = asHandle(type, h);
  if (handle == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(handle, "SQLEndTran");
  return scope.finish(SQL_SUCCESS);
}

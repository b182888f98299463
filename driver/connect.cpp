// SQLConnect, SQLDriverConnect and SQLDisconnect. A connection is a
// directory that exists; nothing in it is opened before a statement asks.
#include "call_scope.h"
#include "connect_options.h"
#include "error_mark.h"
#include "handles.h"
#include "cursor.h"
#include "sql_ast.h"
#include "odbc_out.h"

using namespace zucsv;

namespace {

// Where TRACE=1 writes when no TRACEFILE is given.
constexpr const char* kDefaultTraceFile = "C:\\TMP\\ZUCSV.LOG";

const unsigned char* bytes(const std::string& s) { return reinterpret_cast<const unsigned char*>(s.c_str()); }

SQLRETURN connect(Connection* dbc, CallScope& scope, const std::string& connectString) {
  scope.setDefaultState("08001");
  if (dbc->connected) {
    driverError("08002", "Connection name in use: the connection is already open.");
    return SQL_ERROR;
  }
  ConnectOptions options;
  std::string dsn;
  if (!readConnectOptions(connectString, &options, &dsn)) return SQL_ERROR;
  ErrorMark mark;
  if ((bosfattr(bytes(options.directory)) & ZU_ATTR_DIRECTORY) == 0) {
    const std::string why = mark.take();
    driverError("08001", "Directory '" + options.directory + "' (DBQ) was not found." +
                             (why.empty() ? std::string() : " " + why));
    return SQL_ERROR;
  }
  if (options.trace) {
    auto* trace = new ZuTrace;
    const std::string file = options.traceFile.empty() ? kDefaultTraceFile : options.traceFile;
    if (trace == nullptr || trace->initialize(nullptr, 0, bytes(file)) != ZU_OK) {
      delete trace;
      return SQL_ERROR;
    }
    delete dbc->trace;
    dbc->trace = trace;
  }
  dbc->options = options;
  dbc->dataSourceName = dsn;
  dbc->connected = true;
  return SQL_SUCCESS;
}

}  // namespace

ZUCSV_EXPORT SQLRETURN SQL_API SQLConnect(SQLHDBC h, SQLCHAR* server, SQLSMALLINT serverLength, SQLCHAR* user,
                                        SQLSMALLINT userLength, SQLCHAR* password, SQLSMALLINT passwordLength) {
  Connection* dbc = asConnection(h);
  if (dbc == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(dbc, "SQLConnect");
  const std::string dsn = inText(server, serverLength);
  // The data source's name goes through the same parser, quoted if need be.
  std::string quoted = "'";
  for (char c : dsn) quoted += c == '\'' ? std::string("''") : std::string(1, c);
  quoted += "'";
  return scope.finish(connect(dbc, scope, "DSN=" + quoted));
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLDriverConnect(SQLHDBC h, SQLHWND window, SQLCHAR* in, SQLSMALLINT inLength,
                                              SQLCHAR* out, SQLSMALLINT outSize, SQLSMALLINT* outLength,
                                              SQLUSMALLINT completion) {
  Connection* dbc = asConnection(h);
  if (dbc == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(dbc, "SQLDriverConnect");
  const std::string text = inText(in, inLength);
  SQLRETURN rc = connect(dbc, scope, text);
  if (rc == SQL_SUCCESS && (out != nullptr || outLength != nullptr)) {
    if (!putText(text, out, outSize, outLength)) rc = SQL_SUCCESS_WITH_INFO;
  }
  return scope.finish(rc);
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLDisconnect(SQLHDBC h) {
  Connection* dbc = asConnection(h);
  if (dbc == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(dbc, "SQLDisconnect");
  if (!dbc->connected) {
    driverError("08003", "Connection not open.");
    return scope.finish(SQL_ERROR);
  }
  // Statements still allocated go with the connection.
  while (!dbc->statements.empty()) delete dbc->statements.back();
  dbc->connected = false;
  SQLRETURN rc = scope.finish(SQL_SUCCESS);
  delete dbc->trace;
  dbc->trace = nullptr;
  return rc;
}

// The three ODBC handles. Each carries the diagnostics of its last call and
// the error list that is current on the calling thread while a call on it
// runs. A connection holds its options and its trace; a statement its
// prepared text, parameters, bindings and open cursor.
#ifndef ZUCSV_HANDLES_H
#define ZUCSV_HANDLES_H

#include <sql.h>
#include <sqlext.h>
#include <zuutl.h>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "connect_options.h"
#include "value.h"

// The ODBC entry points: the only names the driver exports.
#define ZUCSV_EXPORT extern "C" __attribute__((visibility("default")))

namespace zucsv {

struct DiagRecord {
  std::string state;
  SQLINTEGER native = 0;
  std::string text;
};

// Invariants: `magic` names the kind while the handle lives and is wiped
// when it is freed, so a stale handle is refused instead of used.
// `callLock`, where there is one, is held through every call on the handle:
// an environment and a connection are shared by threads (every connection
// of a process is allocated on one environment), and only one call at a
// time may have the handle's error list current.
struct Handle {
  explicit Handle(SQLSMALLINT kind);
  virtual ~Handle();
  SQLSMALLINT kind;
  unsigned magic;
  ZuErrorList errors;
  std::vector<DiagRecord> diagnostics;
  ZuSemaphore* callLock = nullptr;
};

// Holds a handle's call lock, if it has one, for a scope.
class CallLockHold {
 public:
  explicit CallLockHold(Handle* handle) : lock_(handle != nullptr ? handle->callLock : nullptr) {
    if (lock_ != nullptr) lock_->lock();
  }
  ~CallLockHold() {
    if (lock_ != nullptr) lock_->unlock();
  }
  CallLockHold(const CallLockHold&) = delete;
  CallLockHold& operator=(const CallLockHold&) = delete;

 private:
  ZuSemaphore* lock_;
};

struct Connection;

struct Environment : Handle {
  Environment();
  SQLINTEGER odbcVersion = SQL_OV_ODBC3;
  void* pageCache = nullptr;  // the task's bvm cache, one use of it
  std::atomic<int> connections{0};  // allocated on it; the driver manager may do so from many threads
  ZuSemaphore calls;
};

struct Connection : Handle {
  explicit Connection(Environment* env);
  ~Connection() override;
  Environment* environment;
  bool connected = false;
  ConnectOptions options;
  std::string dataSourceName;
  ZuTrace* trace = nullptr;
  SQLUINTEGER autocommit = SQL_AUTOCOMMIT_ON;
  SQLUINTEGER loginTimeout = 0;
  SQLUINTEGER accessMode = SQL_MODE_READ_WRITE;
  SQLUINTEGER txnIsolation = 0;
  std::vector<struct Statement*> statements;  // allocated on it, freed with a disconnect
  ZuSemaphore calls;
};

class Cursor;
struct ParsedStatement;

// What SQLBindParameter gave for one marker.
struct ParameterBinding {
  bool bound = false;
  SQLSMALLINT valueType = SQL_C_DEFAULT;
  SQLSMALLINT parameterType = SQL_VARCHAR;
  SQLPOINTER value = nullptr;
  SQLLEN bufferLength = 0;
  SQLLEN* lengthOrIndicator = nullptr;
  // A value sent at execution through SQLPutData.
  bool atExecution = false;
  bool supplied = false;
  bool suppliedNull = false;
  std::string supplied_;
};

// What SQLBindCol gave for one result column.
struct ColumnBinding {
  bool bound = false;
  SQLSMALLINT targetType = SQL_C_DEFAULT;
  SQLPOINTER value = nullptr;
  SQLLEN bufferLength = 0;
  SQLLEN* lengthOrIndicator = nullptr;
};

struct Statement : Handle {
  explicit Statement(Connection* dbc);
  ~Statement() override;
  void closeCursor();
  Connection* connection;
  std::string text;
  std::unique_ptr<ParsedStatement> prepared;
  std::unique_ptr<Cursor> cursor;
  SQLLEN rowCount = -1;
  // While SQLParamData asks for values: the marker being sent, else -1.
  bool needData = false;
  int dataParameter = -1;
  std::vector<Value> row;  // the row the cursor stands on
  bool onRow = false;
  SQLULEN rowsSoFar = 0;
  std::vector<ParameterBinding> parameters;
  std::vector<ColumnBinding> columns;
  // SQLGetData in pieces: the column last read and how far.
  SQLUSMALLINT pieceColumn = 0;
  std::size_t pieceOffset = 0;
  // Statement attributes, stored as given.
  SQLULEN rowArraySize = 1;
  SQLULEN* rowsFetched = nullptr;
  SQLUSMALLINT* rowStatus = nullptr;
  SQLULEN maxRows = 0;
  SQLULEN queryTimeout = 0;
  SQLULEN cursorType = SQL_CURSOR_FORWARD_ONLY;
  SQLULEN concurrency = SQL_CONCUR_READ_ONLY;
  SQLULEN noScan = SQL_NOSCAN_OFF;
  SQLULEN bindType = SQL_BIND_BY_COLUMN;
  SQLULEN paramsetSize = 1;
  // The four implicit descriptors are not kept apart; their handles are the
  // statement itself, which is all clients ask of them here.
};

Environment* asEnvironment(SQLHANDLE h);
Connection* asConnection(SQLHANDLE h);
Statement* asStatement(SQLHANDLE h);
Handle* asHandle(SQLSMALLINT kind, SQLHANDLE h);

}  // namespace zucsv

#endif

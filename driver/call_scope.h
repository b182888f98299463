// Every ODBC call runs inside a CallScope: the handle's call lock, if it has
// one, is held until the scope ends; the calling thread is known to
// the library (from its first call until it ends), and the handle's own error list
// is current on it, so whatever the driver or the library records lands
// there. finish() moves the records into the handle's diagnostics, gives
// each record without a state the call's default state, and writes the
// connection's trace line.
#ifndef ZUCSV_CALL_SCOPE_H
#define ZUCSV_CALL_SCOPE_H

#include <sql.h>

#include "handles.h"

namespace zucsv {

class CallScope {
 public:
  // `handle` may be null (an invalid handle); diagnostics are cleared first
  // unless `keepDiagnostics`.
  CallScope(Handle* handle, const char* function, bool keepDiagnostics = false);
  ~CallScope();
  CallScope(const CallScope&) = delete;
  CallScope& operator=(const CallScope&) = delete;

  // The state of records the library made without one (default "HY000").
  void setDefaultState(const char* state) { defaultState_ = state; }
  SQLRETURN finish(SQLRETURN rc);

 private:
  Handle* handle_;
  CallLockHold hold_;  // released after the destructor has finished the call
  const char* function_;
  const char* defaultState_ = "HY000";
  void** errorSlot_ = nullptr;  // the thread's current-list slot, or null
  bool finished_ = false;
};

// A driver error with its SQLSTATE on the current list.
void driverError(const char* state, const std::string& text);
// A warning, such as 01004 for data cut short.
void driverWarning(const char* state, const std::string& text);

// The connection a handle belongs to, or null.
Connection* connectionOf(Handle* handle);

}  // namespace zucsv

#endif

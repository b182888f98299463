#include "call_scope.h"

#include <cstring>

namespace zucsv {
namespace {

// Driver records carry this number; the library's carry their catalogue ids.
constexpr unsigned short kDriverErrorNumber = 1;
constexpr const char* kPrefix = "[zucsv] ";
constexpr const char* kOutOfMemoryState = "HY001";
constexpr const char* kOutOfMemoryText = "Memory allocation error.";

void record(const char* state, const std::string& text, ErrorType type) {
  ZuError& error = addDatabaseError(kDriverErrorNumber, 0, reinterpret_cast<const unsigned char*>(text.c_str()), type);
  if (error.isStatic() == 0) {
    std::strncpy(error.stateText, state, ZuError::kStateTextSize - 1);
    error.stateText[ZuError::kStateTextSize - 1] = '\0';
  }
}

const char* name(SQLRETURN rc) {
  switch (rc) {
    case SQL_SUCCESS: return "SQL_SUCCESS";
    case SQL_SUCCESS_WITH_INFO: return "SQL_SUCCESS_WITH_INFO";
    case SQL_NO_DATA: return "SQL_NO_DATA";
    case SQL_INVALID_HANDLE: return "SQL_INVALID_HANDLE";
    case SQL_NEED_DATA: return "SQL_NEED_DATA";
    default: return "SQL_ERROR";
  }
}

// The calling thread's record with the library is made at its first call
// into the driver and kept until the thread ends, so that a call costs no
// record of its own. (Ending the task frees no thread record.) Since the
// record stays, so does the address of its error-list slot: a call makes
// its handle's list current through that address, without the lookup under
// the library's thread-list semaphore that the keeper makes each time.
struct ThreadRecord {
  ThreadRecord() {
    if (mdsPerThreadInit() != 0) errorSlot = mdsGetPerThreadDataAddress(THREAD_DATA_ERROR_LIST);
  }
  ~ThreadRecord() {
    if (errorSlot != nullptr) mdsPerThreadTerm();
  }
  ThreadRecord(const ThreadRecord&) = delete;
  ThreadRecord& operator=(const ThreadRecord&) = delete;
  void** errorSlot = nullptr;  // null when the record could not be made
};

// Pushes `list` on the thread's stack of current lists, as
// ZuErrorKeeper::setErrorList does.
void makeCurrent(void** slot, ZuErrorList* list) {
  if (slot == nullptr) {
    ZuErrorKeeper::setErrorList(list);
    return;
  }
  list->previous = static_cast<ZuErrorList*>(*slot);
  *slot = list;
}

// Pops it again, as ZuErrorKeeper::giveUpErrorList does.
void giveUp(void** slot, ZuErrorList* list) {
  if (slot == nullptr) {
    ZuErrorKeeper::giveUpErrorList();
    return;
  }
  *slot = list->previous;
  list->previous = nullptr;
}

}  // namespace

void driverError(const char* state, const std::string& text) { record(state, text, ZU_ERROR_TYPE_ERROR); }
void driverWarning(const char* state, const std::string& text) { record(state, text, ZU_ERROR_TYPE_WARNING); }

Connection* connectionOf(Handle* handle) {
  if (handle == nullptr) return nullptr;
  if (handle->kind == SQL_HANDLE_DBC) return static_cast<Connection*>(handle);
  if (handle->kind == SQL_HANDLE_STMT) return static_cast<Statement*>(handle)->connection;
  return nullptr;
}

CallScope::CallScope(Handle* handle, const char* function, bool keepDiagnostics)
    : handle_(handle), hold_(handle), function_(function) {
  static thread_local ThreadRecord thread;
  errorSlot_ = thread.errorSlot;
  if (handle_ == nullptr) return;
  if (!keepDiagnostics) handle_->diagnostics.clear();
  makeCurrent(errorSlot_, &handle_->errors);
}

CallScope::~CallScope() {
  if (!finished_) finish(SQL_ERROR);
}

SQLRETURN CallScope::finish(SQLRETURN rc) {
  if (finished_) return rc;
  finished_ = true;
  if (handle_ == nullptr) return rc;
  ZuErrorList& list = handle_->errors;
  giveUp(errorSlot_, &list);
  const bool outOfMemory = list.isMemoryPending() != 0;
  bool anyError = outOfMemory;
  while (ZuError* error = list.removeFirstError()) {
    if (error->isStatic() != 0) continue;
    DiagRecord diag;
    diag.state = error->stateText[0] != '\0' ? error->stateText : defaultState_;
    diag.native = error->getNativeCode() != 0 ? error->getNativeCode() : error->getNumber();
    diag.text = std::string(kPrefix) + reinterpret_cast<const char*>(error->getText().getCString());
    if (error->isWarning() == 0) anyError = true;
    handle_->diagnostics.push_back(std::move(diag));
    delete error;
  }
  list.flags &= ~ZuErrorList::kMemoryPending;
  if (outOfMemory) handle_->diagnostics.push_back({kOutOfMemoryState, 0, std::string(kPrefix) + kOutOfMemoryText});
  if (anyError && rc != SQL_ERROR && rc != SQL_INVALID_HANDLE) rc = SQL_ERROR;
  if (rc == SQL_SUCCESS && !handle_->diagnostics.empty()) rc = SQL_SUCCESS_WITH_INFO;
  Connection* connection = connectionOf(handle_);
  if (connection != nullptr && connection->trace != nullptr) {
    char line[160];
    std::snprintf(line, sizeof line, "%s %p -> %s", function_, static_cast<void*>(handle_), name(rc));
    connection->trace->writeLine(reinterpret_cast<const unsigned char*>(line));
    for (const DiagRecord& diag : handle_->diagnostics) {
      const std::string detail = "  " + diag.state + " " + diag.text;
      connection->trace->writeLine(reinterpret_cast<const unsigned char*>(detail.c_str()));
    }
  }
  return rc;
}

}  // namespace zucsv

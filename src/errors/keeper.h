// ZuErrorKeeper: the static front to the calling thread's current error
// list, so code anywhere can add and read errors without being handed a
// list. A thread's lists form a stack through `previous`.
//
// Adding always hands back a record that can be fed parameters: the new
// record, or a shared one that ignores them when there is nothing to add to.
// Adding may free a record, so no heap lock may be held by the caller.
#ifndef ZUUTL_ERRORS_KEEPER_H
#define ZUUTL_ERRORS_KEEPER_H

#include <cstdint>

#include "errors/error.h"
#include "errors/error_list.h"
#include "frame/api.h"

// Invariants: no state of its own. The calling thread's
// THREAD_DATA_ERROR_LIST slot holds the current list or null; giving a list
// up makes its `previous` current again and clears that link.
class ZU_API ZuErrorKeeper {
 public:
  ZuErrorKeeper() = delete;

  // Takes ownership of `record` (which may be null).
  static ZuError& addError(ZuError* record);
  // Null, and 0, when there is no current list or nothing on it.
  static ZuError* getLastError();
  static unsigned short getLastErrorNumber();
  // Appends to the last error and restarts its parameter count, so the
  // appended markers number from 1.
  static ZuError& appendTextToLastError(const unsigned char* more);
  static void clearLastError();
  // Records that memory ran out. Allocates nothing.
  static void addMemoryError();
  static void setErrorList(ZuErrorList* list);
  // The current list, which stops being current; null when there is none.
  static ZuErrorList* giveUpErrorList();
  static void* getOwnerOfList();
};

// A client's error with its own number and text; `auxCode` 0.
ZU_API ZuError& addDatabaseError(unsigned short number, std::int32_t nativeCode,
                                 const unsigned char* text, ErrorType type);

#endif

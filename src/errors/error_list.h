// ZuErrorList: the records of one context, oldest first. A client makes a
// list, makes it current on its thread with ZuErrorKeeper::setErrorList, and
// owns and deletes it. A list is used from one thread only and takes no lock.
//
// With `keepAll` clear the first error closes the list to further records.
// `memoryPending` stands for the shared out-of-memory record as the last
// one, without it being on the list: setting it needs no memory.
#ifndef ZUUTL_ERRORS_ERROR_LIST_H
#define ZUUTL_ERRORS_ERROR_LIST_H

#include <cstdint>

#include "containers/list.h"
#include "errors/error.h"
#include "frame/api.h"
#include "frame/status.h"
#include "strings/string.h"

// Invariants: the nodes are ZuError records the list owns and deletes with
// itself; the keeper puts no shared record on it, and one found there is
// never deleted. kMemoryPending set means zu::memoryError follows the last
// node. Without kKeepAll the keeper adds nothing once an error is on the
// list. previous is set when the list is made current and cleared when it
// is given up.
class ZU_API ZuErrorList : public ZuList {
 public:
  // Bits of `flags`.
  static constexpr std::uint32_t kKeepAll = 1u << 0;
  static constexpr std::uint32_t kMemoryPending = 1u << 1;

  // Keeps every record.
  ZuErrorList();
  // `keepAll` is read from its bit 0.
  ZuErrorList(void* owner, unsigned int keepAll);
  // Deletes every record on the list.
  ~ZuErrorList() override;

  // The out-of-memory record while it is pending, else the last record, else null.
  ZuError* getLastError();
  // The removed record is the caller's, to delete unless isStatic().
  ZuError* removeLastError();
  ZuError* removeFirstError();
  // What the records on the list are; a pending memory error does not count.
  ErrorsMix getErrorsMix();
  // Appends every record's text to `out`, the low byte of `separator`
  // between two; a pending memory error is left out. A failure keeps what
  // was appended.
  ZuStatus concatErrors(ZuString* out, unsigned short separator);

  void* getOwner() const { return owner; }
  int isKeepAll() const { return (flags & kKeepAll) != 0 ? 1 : 0; }
  int isMemoryPending() const { return (flags & kMemoryPending) != 0 ? 1 : 0; }
  ZuErrorList* getPrevious() const { return previous; }

  void* owner;
  std::uint32_t flags;
  // The list that was current before this one on the same thread.
  ZuErrorList* previous;
  // The making thread's error-list slot, null if it had no record. Kept, never read.
  void** slotAddress;
};

#endif

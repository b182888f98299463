// Per-thread data: one record per thread of the task, found by thread id in
// the table that per-task slot TASK_DATA_THREADS holds. No thread-local
// storage; every access takes threadListSemaphore and searches the table.
#ifndef ZUUTL_FRAME_THREAD_H
#define ZUUTL_FRAME_THREAD_H

#include <cstdint>

#include "containers/list.h"
#include "frame/api.h"

enum PerThreadData : std::uint32_t {
  THREAD_DATA_ERROR_LIST = 0,
  THREAD_DATA_SPARE = 1,
};

// The table is the ZuList part of its first entry, which the slot points to.
// Records sit on the table through `link`, never through their own list part,
// so that when the first entry goes the table can move to the next record.
// Invariants, under threadListSemaphore: at most one record per threadId,
// and the table holds the `link` of every record; a record's own list part
// is empty unless it holds the table. useCount is its thread's inits less
// its terms, and the record is unlinked and deleted when it reaches 0.
class ZU_API ZuThreadInfo : public ZuList {
 public:
  static constexpr int kSlotCount = 2;

  struct Link : ZuNode {
    explicit Link(ZuThreadInfo* owner) : record(owner) {}
    ZuThreadInfo* record;
  };

  explicit ZuThreadInfo(std::uint32_t threadId);  // useCount 1, slots null
  ~ZuThreadInfo() override;  // frees nothing a slot points to

  std::uint32_t threadId;
  std::uint32_t useCount;
  void* slots[kSlotCount];
  Link link;
};

ZU_API unsigned short mdsPerThreadInit();
ZU_API void mdsPerThreadTerm();
ZU_API void* mdsGetPerThreadData(PerThreadData slot);
ZU_API void** mdsGetPerThreadDataAddress(PerThreadData slot);
ZU_API void mdsSetPerThreadData(PerThreadData slot, const void* value);
ZU_API unsigned int mdsIsThreadInit();

#endif

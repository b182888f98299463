// The task record and its slots, and the per-task and identity operations.
// The record belongs to the provider library (zumds04); this library reaches
// it through mdsGetTaskInfo on every access and never caches it.
#ifndef ZUUTL_FRAME_TASK_H
#define ZUUTL_FRAME_TASK_H

#include <cstdint>

#include "frame/api.h"

enum PerTaskData : std::uint32_t {
  TASK_DATA_RAM_HEAP = 0,
  TASK_DATA_INIT_COUNT = 1,
  TASK_DATA_BVM_CACHE = 4,
  TASK_DATA_THREADS = 10,
};

// Plain record: no virtual operations. The first word is the provider's own.
// Invariants: initCount is 1 plus the mdsPerTaskInit calls less the
// mdsPerTaskTerm calls; the task counts as initialized while it is not 0.
// slots are indexed by PerTaskData, and nothing here frees what they hold.
// No lock: the slots' users guard them.
struct ZU_API ZuTaskInfo {
  static constexpr int kSlotCount = 11;

  std::uint32_t providerWord;
  std::uint32_t initCount;
  void* slots[kSlotCount];

  ZuTaskInfo();   // initCount 1, every slot null, providerWord untouched
  ~ZuTaskInfo();  // frees nothing
};

// From the provider library: the process's record, never null.
ZU_API ZuTaskInfo* mdsGetTaskInfo();

ZU_API unsigned short mdsPerTaskInit();
ZU_API void mdsPerTaskTerm();
ZU_API unsigned int mdsIsTaskInit();
ZU_API void* mdsGetPerTaskData(PerTaskData slot);
ZU_API void** mdsGetPerTaskDataAddress(PerTaskData slot);
ZU_API void mdsSetPerTaskData(PerTaskData slot, const void* value);

ZU_API std::uint32_t bosGetProcessID();
ZU_API std::uint32_t bosGetThreadID();
ZU_API void bostskid(std::uint32_t* id);

#endif

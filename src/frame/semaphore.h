// The library's one lock: a system semaphore or a spin lock with a yield,
// chosen at construction by the process-wide pool. Not re-entrant in either
// form. An all-zero ZuSemaphore is a free spin lock and needs no constructor.
#ifndef ZUUTL_FRAME_SEMAPHORE_H
#define ZUUTL_FRAME_SEMAPHORE_H

#include <cstdint>

#include "frame/api.h"

// Settings and accounting of all semaphores. Zero-filled static storage is
// the unconfigured state; the first semaphore made configures it.
struct ZU_API ZuSemaphoreInfo {
  std::uint32_t yieldTime;    // ms to sleep between spin passes
  std::uint32_t spinCount;    // tries per pass; 0 means 1
  std::uint32_t remaining;    // system semaphores still allowed under the limit
  std::uint32_t control;      // ZU_SEMCONTROL
  std::uint32_t initialised;  // 1 once configured

  ZuSemaphoreInfo();
  ~ZuSemaphoreInfo();
};

// Invariants: allocatedType is 1 exactly when handle is a live system
// semaphore; a spin lock has a null handle and uses spinWord alone.
struct ZU_API ZuSemaphore {
  std::uint32_t owner;          // holder's thread id, 0 when free; never read
  std::uint32_t allocatedType;  // 1 system semaphore, 0 spin lock
  void* handle;                 // the system semaphore, or null
  std::uint32_t spinWord;       // 0 free, 1 held

  ZuSemaphore();
  ~ZuSemaphore();

  void bosSemaphoreAlloc();
  void bosSemaphoreFree();
  void bosSpinLock();

  void lock();
  void unlock();
};

ZU_API void bosMemUnLock(std::uint32_t* word);
ZU_API unsigned char* bosGetEnv(const unsigned char* name);

// Reports of the pool go to standard error unless a client sets its own hook.
typedef void (*ZuReportHook)(const unsigned char* caption, const unsigned char* text);
ZU_API void zuSetReportHook(ZuReportHook hook);

#endif

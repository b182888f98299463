// ramSemaphore as the heap takes it: without a system call while no other
// thread holds it. The semaphore's lock word is the lock itself, in both of
// its forms. A system semaphore only queues the threads that found the word
// taken, so that one of them at a time waits on the word, yielding as the
// spin form does; the others sleep in the system.
#ifndef ZUUTL_MEMORY_HEAP_LOCK_H
#define ZUUTL_MEMORY_HEAP_LOCK_H

#include <atomic>
#include <cstdint>

#include "frame/statics.h"
#include "frame/task.h"
#include "platform/platform.h"

namespace zu::heap {

// Invariants: spinWord is 1 exactly while a scope holds the heap; queued_
// says whether this scope also holds the system semaphore.
class HeapLock {
 public:
  HeapLock() {
    if (!takeWord()) {
      if (ramSemaphore.allocatedType == kSystemForm) {
        platform::sys.semWait(ramSemaphore.handle);
        queued_ = true;
      }
      while (!takeWord()) platform::sys.sleepMs(semaphorePool.yieldTime);
    }
    ramSemaphore.owner = bosGetThreadID();
  }
  ~HeapLock() {
    ramSemaphore.owner = 0;
    std::atomic_ref<std::uint32_t>(ramSemaphore.spinWord).store(0, std::memory_order_release);
    if (queued_) platform::sys.semPost(ramSemaphore.handle);
  }
  HeapLock(const HeapLock&) = delete;
  HeapLock& operator=(const HeapLock&) = delete;

 private:
  static constexpr std::uint32_t kSystemForm = 1;

  static bool takeWord() {
    std::uint32_t free = 0;
    return std::atomic_ref<std::uint32_t>(ramSemaphore.spinWord)
        .compare_exchange_strong(free, 1, std::memory_order_acquire, std::memory_order_relaxed);
  }

  bool queued_ = false;
};

}  // namespace zu::heap

#endif

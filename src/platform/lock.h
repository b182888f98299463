// The one scoped lock of the library, and the platform's own mutex.
#ifndef ZUUTL_PLATFORM_LOCK_H
#define ZUUTL_PLATFORM_LOCK_H

#include "platform/host.h"

namespace zu::platform {

// Holds anything with lock() and unlock() for the life of a scope. None of
// the library's locks is re-entrant: a scope must never take one it holds.
template <typename Lockable>
class ScopedLock {
 public:
  explicit ScopedLock(Lockable& lockable) : lockable_(lockable) { lockable_.lock(); }
  ~ScopedLock() { lockable_.unlock(); }
  ScopedLock(const ScopedLock&) = delete;
  ScopedLock& operator=(const ScopedLock&) = delete;

 private:
  Lockable& lockable_;
};

// Guards the platform's own tables (the DOS view, the handles). Constant-
// initialised, so a static one is usable before any constructor runs.
class Mutex {
 public:
  constexpr Mutex() = default;
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;

  void lock() { host.pthread_mutex_lock(&mutex_); }
  void unlock() { host.pthread_mutex_unlock(&mutex_); }

 private:
  pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
};

}  // namespace zu::platform

#endif

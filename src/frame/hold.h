// Holds a semaphore for the life of a scope. Internal: the semaphores are
// not re-entrant, so a scope must never hold the one it already holds.
#ifndef ZUUTL_FRAME_HOLD_H
#define ZUUTL_FRAME_HOLD_H

#include "frame/semaphore.h"

namespace zu {

class Hold {
 public:
  explicit Hold(ZuSemaphore& semaphore) : semaphore_(semaphore) { semaphore_.lock(); }
  ~Hold() { semaphore_.unlock(); }
  Hold(const Hold&) = delete;
  Hold& operator=(const Hold&) = delete;

 private:
  ZuSemaphore& semaphore_;
};

}  // namespace zu

#endif

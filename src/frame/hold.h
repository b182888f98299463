// Holds a semaphore for the life of a scope. Internal: the semaphores are
// not re-entrant, so a scope must never hold the one it already holds.
#ifndef ZUUTL_FRAME_HOLD_H
#define ZUUTL_FRAME_HOLD_H

#include "frame/semaphore.h"
#include "platform/lock.h"

namespace zu {

using Hold = platform::ScopedLock<ZuSemaphore>;

}  // namespace zu

#endif

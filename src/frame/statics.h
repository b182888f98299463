// The frame's static objects. All of the library's static objects are
// defined in library.cpp, in the one order that construction at load must
// follow (and destruction reverses).
#ifndef ZUUTL_FRAME_STATICS_H
#define ZUUTL_FRAME_STATICS_H

#include "frame/semaphore.h"

extern ZuSemaphoreInfo semaphorePool;
extern ZuSemaphore threadListSemaphore;
extern ZuSemaphore bvmSemaphore;
extern ZuSemaphore ramSemaphore;

// The module's own instance handle; set once by the entry point.
extern void* moduleHandle;

namespace zu {
// The loader's entry point: notes the instance on its first call, keeps it
// after that, and returns true for every reason.
bool libraryEntry(void* instance, std::uint32_t reason, void* reserved);
}  // namespace zu

#endif

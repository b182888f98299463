// The system services the frame and the heap use: system blocks,
// semaphores, sleep, identity and reports. Written against the host table
// (host.h); tests replace an entry here to change a service as a whole.
#ifndef ZUUTL_PLATFORM_PLATFORM_H
#define ZUUTL_PLATFORM_PLATFORM_H

#include <cstddef>
#include <cstdint>

namespace zu::platform {

struct Calls {
  // Memory: a block that stays at its address while held; null when refused.
  void* (*blockAlloc)(std::size_t bytes);
  void (*blockFree)(void* block);
  // What a large request could still expect to get, in bytes.
  std::uint64_t (*memoryAvailable)();

  // System semaphore with count 1 at creation; null when refused.
  void* (*semCreate)();
  void (*semWait)(void* sem);
  void (*semPost)(void* sem);
  void (*semClose)(void* sem);

  void (*sleepMs)(std::uint32_t ms);  // 0 gives up the rest of the slice
  std::uint32_t (*processId)();
  std::uint32_t (*threadId)();

  // Reports to a person; standard error by default.
  void (*report)(const unsigned char* caption, const unsigned char* text);
};

extern Calls sys;
extern const Calls kDefaultCalls;

// Atomic 32-bit exchange with full ordering.
std::uint32_t atomicExchange(std::uint32_t* word, std::uint32_t value);

// The module's own handle: the base address at which it is loaded.
void* moduleSelf();

}  // namespace zu::platform

#endif

// Fault injection for tests: arm a kind and the Nth call of that kind from
// now is refused (and, if persistent, every later one too). Off by default;
// the disarmed path costs one relaxed load.
#ifndef ZUUTL_PLATFORM_FAULT_H
#define ZUUTL_PLATFORM_FAULT_H

#include <cstdint>

namespace zu::platform {

enum class Fault : unsigned {
  Block,      // a system block (heap segment, 64K or huge block)
  Semaphore,  // a system semaphore
  Open,
  Read,
  Write,
  Lock,
  kCount
};

void faultArm(Fault kind, std::uint32_t nth, bool persistent = false);
void faultDisarm(Fault kind);
void faultDisarmAll();
// Counts one call of `kind`; true when that call must fail.
bool faultHit(Fault kind);
// Calls of `kind` counted since it was last armed.
std::uint32_t faultCalls(Fault kind);

}  // namespace zu::platform

#endif

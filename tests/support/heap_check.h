// Test helpers around the heap: the full checker as a gtest assertion, and a
// guard that puts the host table back whatever way a test ends.
#ifndef ZU_TESTS_SUPPORT_HEAP_CHECK_H
#define ZU_TESTS_SUPPORT_HEAP_CHECK_H

#include <gtest/gtest.h>

#include "memory/heap.h"
#include "platform/host.h"

namespace zutest {

inline ::testing::AssertionResult heapIsSound() {
  const char* problem = zu::heap::check();
  if (problem == nullptr) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << problem;
}

struct FaultGuard {
  FaultGuard() = default;
  ~FaultGuard() { zu::platform::hostRestoreAll(); }
  FaultGuard(const FaultGuard&) = delete;
  FaultGuard& operator=(const FaultGuard&) = delete;
};

// Segments in the chain.
std::uint32_t segmentCount();

}  // namespace zutest

#endif

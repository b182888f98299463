// Out-of-memory sweep: the host sweep of one slot, malloc, with the Nth
// system block refused, N = 1, 2, 3, ..., until a run completes without
// reaching the refusal. A run that failed must show the memory error
// (30190); after every run the heap must be sound and hold exactly the
// blocks it held before, and no handle or descriptor may be left open.
// Leaks of system blocks are the sanitizer's to find.
//
// The operation returns true on success and must free whatever it made
// before it returns, success or not.
#ifndef ZU_TESTS_SUPPORT_OOM_SWEEP_H
#define ZU_TESTS_SUPPORT_OOM_SWEEP_H

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>

namespace zutest {

struct SweepReport {
  std::uint32_t runs = 0;      // the last one ran clean
  std::uint32_t failures = 0;  // runs the operation reported as failed
};

// Stops with a failure after `maxRuns` runs that all reached the refusal.
::testing::AssertionResult sweepOutOfMemory(const std::function<bool()>& operation,
                                            SweepReport* report = nullptr,
                                            std::uint32_t maxRuns = 2000);

// Blocks in use in the task's heap.
std::uint32_t blocksInUse();

}  // namespace zutest

#endif

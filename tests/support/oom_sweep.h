// Out-of-memory sweep: runs an operation again and again with the Nth system
// block refused, N = 1, 2, 3, ..., until a run completes without reaching
// the refusal. Each run gets a fresh error list of its own, keeping every
// record. After a run that failed, the list must show the memory error
// (30190); after every run the heap must be sound and hold exactly the
// blocks it held before. Leaks of system blocks are the sanitizer's to find.
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

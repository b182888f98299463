// Host fault sweep: learns which slots of the host table an operation
// reaches, then fails each one's Nth call, N = 1, 2, ... until a run
// reaches no failure, once for each errno that slot is swept with. Every
// run has an error list of its own. After each run:
//   - a run the operation reports as failed must show, as its last error,
//     one of the rows the operation may give;
//   - the heap must be sound and hold the blocks it held before;
//   - no file handle and no descriptor may be left open.
// A crash is a failure too. The operation must undo what it made before it
// returns, success or not.
#ifndef ZU_TESTS_SUPPORT_FAULT_SWEEP_H
#define ZU_TESTS_SUPPORT_FAULT_SWEEP_H

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <set>
#include <vector>

#include "frame/status.h"
#include "platform/host.h"

static_assert(zu::platform::kHostCallCount <= 64, "a bit for each slot");

namespace zutest {

struct HostSweepTally {
  std::uint32_t operations = 0;
  std::uint32_t slots = 0;  // slot and errno pairs failed
  std::uint64_t slotsSeen = 0;  // a bit for each slot failed at least once
  std::uint32_t runs = 0;
  std::uint32_t failures = 0;  // runs the operation reported as failed
};

// One slot's sweep: its Nth call failed with `error`, N = 1, 2, ..., with
// the checks above after each run.
::testing::AssertionResult sweepCall(zu::platform::HostCall call, int error,
                                     const std::function<ZuStatus()>& operation,
                                     const std::set<unsigned short>& rows, HostSweepTally& tally,
                                     std::uint32_t maxRuns);

::testing::AssertionResult sweepHostFaults(const std::function<ZuStatus()>& operation,
                                           std::initializer_list<unsigned short> rows,
                                           HostSweepTally* tally = nullptr,
                                           std::uint32_t maxRuns = 400);

}  // namespace zutest

#endif

#include "support/oom_sweep.h"

#include <cerrno>

#include "frame/thread.h"
#include "memory/heap.h"
#include "platform/host.h"
#include "support/fault_sweep.h"

namespace zutest {

namespace {

constexpr unsigned short kOutOfMemory = 30190;

// The thread's record lives on the heap; it is made before the first count
// so that it is no part of any run.
struct ThreadRecord {
  ThreadRecord() { mdsPerThreadInit(); }
  ~ThreadRecord() { mdsPerThreadTerm(); }
};

}  // namespace

std::uint32_t blocksInUse() {
  std::uint32_t n = 0;
  for (zu::heap::RamSegment* s = zu::heap::head(); s != nullptr; s = s->nextSegment) {
    n += s->blocksInUse;
  }
  return n;
}

::testing::AssertionResult sweepOutOfMemory(const std::function<bool()>& operation,
                                            SweepReport* report, std::uint32_t maxRuns) {
  using zu::platform::HostCall;
  ThreadRecord record;
  HostSweepTally tally;
  bool unrefused = false;  // a run failed that reached no refusal
  const ::testing::AssertionResult result = sweepCall(
      HostCall::malloc, ENOMEM,
      [&] {
        const bool ok = operation();
        unrefused = unrefused || (!ok && !zu::platform::hostFailed(HostCall::malloc));
        return ok ? ZU_OK : ZU_ERROR;
      },
      {kOutOfMemory}, tally, maxRuns);
  if (report != nullptr) *report = {tally.runs, tally.failures};
  if (result && unrefused) return ::testing::AssertionFailure() << "run " << tally.runs << " failed without a refusal";
  return result;
}

}  // namespace zutest

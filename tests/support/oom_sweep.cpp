#include "support/oom_sweep.h"

#include "errors/keeper.h"
#include "frame/thread.h"
#include "memory/heap.h"
#include "platform/host.h"
#include "support/heap_check.h"

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
  ThreadRecord record;
  FaultGuard disarm;
  SweepReport local;
  SweepReport& r = report != nullptr ? *report : local;
  r = SweepReport{};
  for (std::uint32_t nth = 1; nth <= maxRuns; ++nth) {
    const std::uint32_t before = blocksInUse();
    bool ok = false;
    bool refused = false;
    unsigned short lastNumber = 0;
    {
      ZuErrorList list;
      ZuErrorKeeper::setErrorList(&list);
      zu::platform::hostFail(zu::platform::HostCall::malloc, nth, ENOMEM);
      ok = operation();
      refused = zu::platform::hostFailed(zu::platform::HostCall::malloc);
      zu::platform::hostRestore(zu::platform::HostCall::malloc);
      lastNumber = ZuErrorKeeper::getLastErrorNumber();
      ZuErrorKeeper::giveUpErrorList();
    }
    ++r.runs;
    if (!ok) ++r.failures;
    if (!ok && !refused) {
      return ::testing::AssertionFailure() << "run " << nth << " failed without a refusal";
    }
    if (!ok && lastNumber != kOutOfMemory) {
      return ::testing::AssertionFailure()
             << "run " << nth << " failed with last error " << lastNumber << ", not 30190";
    }
    if (auto sound = heapIsSound(); !sound) {
      return ::testing::AssertionFailure() << "run " << nth << ": " << sound.message();
    }
    if (blocksInUse() != before) {
      return ::testing::AssertionFailure() << "run " << nth << " left " << blocksInUse() - before
                                           << " blocks behind";
    }
    if (ok && !refused) return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure() << "still refused after " << maxRuns << " runs";
}

}  // namespace zutest

#include "support/fault_sweep.h"

#include <cerrno>
#include <set>
#include <string>

#include "errors/keeper.h"
#include "platform/dos_impl.h"
#include "platform/host.h"
#include "support/dos_world.h"
#include "support/heap_check.h"
#include "support/oom_sweep.h"

namespace zutest {
namespace {

using zu::platform::HostCall;

// The errnos a slot is failed with: the ones its callers tell apart, else
// a plain I/O error.
std::vector<int> errnosFor(HostCall call) {
  switch (call) {
    case HostCall::malloc:
    case HostCall::realloc:
      return {ENOMEM};
    case HostCall::open:
      return {ENOENT, EACCES, EMFILE};
    case HostCall::write:
    case HostCall::pwrite:
      return {ENOSPC, EIO};
    case HostCall::fcntl:
      return {EAGAIN, EIO};
    case HostCall::stat:
    case HostCall::lstat:
      return {ENOENT, EACCES};
    default:
      return {EIO};
  }
}

// The slots the operation reaches when nothing fails.
std::vector<HostCall> reachedSlots(const std::function<ZuStatus()>& operation) {
  for (unsigned c = 0; c < zu::platform::kHostCallCount; ++c) {
    zu::platform::hostFail(static_cast<HostCall>(c), 0, 0);
  }
  {
    ZuErrorList list;
    ZuErrorKeeper::setErrorList(&list);
    operation();
    ZuErrorKeeper::giveUpErrorList();
  }
  std::vector<HostCall> reached;
  for (unsigned c = 0; c < zu::platform::kHostCallCount; ++c) {
    const auto call = static_cast<HostCall>(c);
    if (zu::platform::hostCalls(call) != 0 && zu::platform::hostFailsAs(call) != zu::platform::FailsAs::kNever) {
      reached.push_back(call);
    }
  }
  zu::platform::hostRestoreAll();
  return reached;
}

}  // namespace

::testing::AssertionResult sweepCall(HostCall call, int error, const std::function<ZuStatus()>& operation,
                                     const std::set<unsigned short>& rows, HostSweepTally& t,
                                     std::uint32_t maxRuns) {
  const std::string what = std::string(zu::platform::hostCallName(call)) + " with errno " + std::to_string(error);
  ++t.slots;
  t.slotsSeen |= std::uint64_t{1} << static_cast<unsigned>(call);
  for (std::uint32_t nth = 1;; ++nth) {
    if (nth > maxRuns) {
      return ::testing::AssertionFailure() << what << ": still failing after " << maxRuns << " runs";
    }
    const std::uint32_t blocks = blocksInUse();
    const int descriptors = openDescriptors();
    ZuStatus status;
    unsigned short last = 0;
    bool delivered = false;
    {
      ZuErrorList list;
      ZuErrorKeeper::setErrorList(&list);
      zu::platform::hostFail(call, nth, error);
      status = operation();
      delivered = zu::platform::hostFailed(call);
      zu::platform::hostRestoreAll();
      last = ZuErrorKeeper::getLastErrorNumber();
      ZuErrorKeeper::giveUpErrorList();
    }
    ++t.runs;
    const std::string run = what + ", call " + std::to_string(nth);
    if (status != ZU_OK) {
      ++t.failures;
      if (rows.count(last) == 0) return ::testing::AssertionFailure() << run << ": failed with row " << last;
    }
    if (auto sound = heapIsSound(); !sound) {
      return ::testing::AssertionFailure() << run << ": " << sound.message();
    }
    if (blocksInUse() != blocks) {
      return ::testing::AssertionFailure() << run << ": heap blocks " << blocks << " -> " << blocksInUse();
    }
    if (zu::platform::files::openHandleCount() != 0) {
      return ::testing::AssertionFailure() << run << ": a handle was left open";
    }
    if (openDescriptors() != descriptors) {
      return ::testing::AssertionFailure() << run << ": descriptors " << descriptors << " -> "
                                           << openDescriptors();
    }
    if (!delivered) return ::testing::AssertionSuccess();
  }
}

::testing::AssertionResult sweepHostFaults(const std::function<ZuStatus()>& operation,
                                           std::initializer_list<unsigned short> rows,
                                           HostSweepTally* tally, std::uint32_t maxRuns) {
  HostSweepTally local;
  HostSweepTally& t = tally != nullptr ? *tally : local;
  ++t.operations;
  const std::set<unsigned short> allowed(rows);
  for (HostCall call : reachedSlots(operation)) {
    for (int error : errnosFor(call)) {
      if (auto swept = sweepCall(call, error, operation, allowed, t, maxRuns); !swept) return swept;
    }
  }
  return ::testing::AssertionSuccess();
}

}  // namespace zutest

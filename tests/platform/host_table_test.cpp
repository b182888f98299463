// The host table: every slot can be failed in its own form and put back,
// the Nth-call counting is exact, and each errno the file layer can meet
// lands in its class and so in its catalogue row.
#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <type_traits>

#include "errors/keeper.h"
#include "os/file_errors.h"
#include "platform/dos.h"
#include "platform/host.h"
#include "support/error_fixture.h"

using zu::platform::FailsAs;
using zu::platform::host;
using zu::platform::HostCall;
using zu::platform::HostCalls;
using zu::platform::kDefaultHost;

namespace {

constexpr int kInjected = EXDEV;  // an errno no slot produces here by itself

// Calls a slot with value-initialised arguments; an armed first call fails
// before it reaches the host, so the arguments are never looked at.
template <typename R, typename... A>
R callWithNothing(R (*slot)(A...)) {
  return slot(A{}...);
}

template <typename R>
bool failedInForm(R result, FailsAs form) {
  if constexpr (std::is_pointer_v<R>) {
    return form == FailsAs::kNull && result == nullptr && errno == kInjected;
  } else {
    switch (form) {
      case FailsAs::kMinusOne:
        return result == static_cast<R>(-1) && errno == kInjected;
      case FailsAs::kZero:
        return result == static_cast<R>(0) && errno == kInjected;
      case FailsAs::kErrorValue:
        return result == static_cast<R>(kInjected);
      default:
        return false;
    }
  }
}

template <auto Slot>
void checkSlot(HostCall call) {
  SCOPED_TRACE(zu::platform::hostCallName(call));
  auto& slot = host.*Slot;
  ASSERT_EQ(slot, kDefaultHost.*Slot);
  zu::platform::hostFail(call, 1, kInjected);
  EXPECT_NE(slot, kDefaultHost.*Slot);
  const FailsAs form = zu::platform::hostFailsAs(call);
  using R = decltype(callWithNothing(slot));
  if constexpr (!std::is_void_v<R>) {
    // Slots that cannot fail, or that act before failing, would reach the
    // host with these arguments; their failures are met in the sweeps.
    if (form != FailsAs::kNever && form != FailsAs::kAfterActing) {
      errno = 0;
      const R result = callWithNothing(slot);
      EXPECT_TRUE(failedInForm(result, form));
      EXPECT_TRUE(zu::platform::hostFailed(call));
      EXPECT_EQ(zu::platform::hostCalls(call), 1u);
    }
  }
  zu::platform::hostRestore(call);
  EXPECT_EQ(slot, kDefaultHost.*Slot);
}

struct HostTable : zutest::ErrorFixture {
  void TearDown() override {
    zu::platform::hostRestoreAll();
    ErrorFixture::TearDown();
  }
};

}  // namespace

TEST_F(HostTable, EverySlotFailsInItsOwnFormAndIsPutBack) {
#define ZU_CHECK_SLOT(name, result, parameters, body, failsAs) \
  checkSlot<&HostCalls::name>(HostCall::name);
  ZU_HOST_CALLS(ZU_CHECK_SLOT)
#undef ZU_CHECK_SLOT
  // A slot the test replaced itself is what an armed slot falls back to.
  host.getpid = [] { return static_cast<pid_t>(4242); };
  zu::platform::hostFail(HostCall::getpid, 5, kInjected);
  EXPECT_EQ(host.getpid(), 4242);
  zu::platform::hostRestore(HostCall::getpid);
  EXPECT_EQ(host.getpid(), 4242);
  zu::platform::hostRestoreAll();
  EXPECT_EQ(host.getpid, kDefaultHost.getpid);
}

TEST_F(HostTable, TheNthCallFailsOnceOrFromThenOnAndCountsGoOn) {
  int fds[2];
  ASSERT_EQ(pipe(fds), 0);
  const char byte = 'x';
  auto writes = [&] { return host.write(fds[1], &byte, 1); };
  zu::platform::hostFail(HostCall::write, 3, ENOSPC);
  EXPECT_EQ(writes(), 1);
  EXPECT_EQ(writes(), 1);
  EXPECT_FALSE(zu::platform::hostFailed(HostCall::write));
  EXPECT_EQ(writes(), -1);
  EXPECT_EQ(errno, ENOSPC);
  EXPECT_EQ(writes(), 1) << "once only";
  EXPECT_EQ(zu::platform::hostCalls(HostCall::write), 4u);

  zu::platform::hostFail(HostCall::write, 2, EIO, true);
  EXPECT_EQ(writes(), 1);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(writes(), -1) << "persistent";
  zu::platform::hostFail(HostCall::write, 0, EIO);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(writes(), 1) << "0 only counts";
  EXPECT_EQ(zu::platform::hostCalls(HostCall::write), 3u);

  // A close that fails still lets the descriptor go, as the host's does.
  zu::platform::hostFail(HostCall::close, 1, EIO);
  EXPECT_EQ(host.close(fds[1]), -1);
  EXPECT_EQ(::close(fds[1]), -1) << "already closed";
  zu::platform::hostRestoreAll();
  EXPECT_EQ(host.close(fds[0]), 0);
}

TEST_F(HostTable, EachErrnoLandsInItsClassAndRow) {
  using namespace zu::platform;
  struct Case {
    int error;
    ErrorClass failure;
    unsigned short row;
  };
  static constexpr Case kCases[] = {
      {0, kNoFailure, 0},           {ENOENT, kNoEntry, 1509},     {ENOTDIR, kNoEntry, 1509},
      {ENAMETOOLONG, kNoEntry, 1509}, {ELOOP, kNoEntry, 1509},    {EBADF, kBadHandle, 1507},
      {ENOMEM, kNoMemory, 1503},    {EACCES, kAccessDenied, 1508}, {EPERM, kAccessDenied, 1508},
      {EROFS, kAccessDenied, 1508}, {ETXTBSY, kAccessDenied, 1508}, {EISDIR, kAccessDenied, 1508},
      {EBUSY, kAccessDenied, 1508}, {EAGAIN, kAccessDenied, 1508}, {EMFILE, kTooManyFiles, 30045},
      {ENFILE, kTooManyFiles, 30045}, {ENOSPC, kNoSpace, 30041},  {EDQUOT, kNoSpace, 30041},
      {EDEADLK, kDeadlock, 1512},   {EIO, kIoFailure, 30041},     {EINVAL, kIoFailure, 30041},
      {EXDEV, kIoFailure, 30041},   {EEXIST, kIoFailure, 30041},  {EFBIG, kIoFailure, 30041},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.error);
    EXPECT_EQ(classifyHostError(c.error), c.failure);
    if (c.failure == kNoFailure) continue;
    zu::os::reportFileError(c.failure, reinterpret_cast<const unsigned char*>("F.DAT"));
    EXPECT_EQ(lastError(), c.row);
  }
}

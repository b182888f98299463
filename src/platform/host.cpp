// The host table's defaults, and the failing stand-ins that hostFail puts in
// a slot: each counts its calls, fails the armed one in the slot's own form,
// and hands every other call to what the slot held before.
#include "platform/host.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <type_traits>

namespace zu::platform {
namespace {

#define ZU_HOST_DEFAULT(name, result, parameters, body, failsAs) \
  result default_##name parameters { return body; }
ZU_HOST_CALLS(ZU_HOST_DEFAULT)
#undef ZU_HOST_DEFAULT

#define ZU_HOST_NAME(name, result, parameters, body, failsAs) #name,
constexpr const char* kNames[] = {ZU_HOST_CALLS(ZU_HOST_NAME)};
#undef ZU_HOST_NAME

#define ZU_HOST_FORM(name, result, parameters, body, failsAs) FailsAs::failsAs,
constexpr FailsAs kForms[] = {ZU_HOST_CALLS(ZU_HOST_FORM)};
#undef ZU_HOST_FORM

struct Armed {
  std::atomic<bool> active{false};
  std::atomic<bool> persistent{false};
  std::atomic<bool> delivered{false};
  std::atomic<std::uint32_t> nth{0};
  std::atomic<std::uint32_t> calls{0};
  std::atomic<int> error{0};
};

Armed armed[kHostCallCount];
// What an armed slot held before: the calls that do not fail go there.
HostCalls underneath;

Armed& at(HostCall call) { return armed[static_cast<unsigned>(call)]; }

// Counts one call; true when this one must fail.
bool strike(HostCall call) {
  Armed& a = at(call);
  const std::uint32_t count = a.calls.fetch_add(1) + 1;
  const std::uint32_t nth = a.nth.load();
  if (nth == 0 || kForms[static_cast<unsigned>(call)] == FailsAs::kNever) return false;
  if (a.persistent.load() ? count < nth : count != nth) return false;
  a.delivered.store(true);
  return true;
}

template <typename R>
R failure(HostCall call) {
  const int error = at(call).error.load();
  if constexpr (std::is_pointer_v<R>) {
    errno = error;
    return nullptr;
  } else {
    switch (kForms[static_cast<unsigned>(call)]) {
      case FailsAs::kErrorValue:
        return static_cast<R>(error);
      case FailsAs::kZero:
        errno = error;
        return static_cast<R>(0);
      default:
        errno = error;
        return static_cast<R>(-1);
    }
  }
}

template <HostCall Call, auto Slot, typename Function>
struct Failing;

template <HostCall Call, auto Slot, typename R, typename... A>
struct Failing<Call, Slot, R (*)(A...)> {
  static R invoke(A... args) {
    if constexpr (std::is_void_v<R>) {
      strike(Call);
    } else if (strike(Call)) {
      if (kForms[static_cast<unsigned>(Call)] == FailsAs::kAfterActing) (underneath.*Slot)(args...);
      return failure<R>(Call);
    }
    return (underneath.*Slot)(args...);
  }
};

#define ZU_HOST_FAILING(name, result, parameters, body, failsAs) \
  .name = &Failing<HostCall::name, &HostCalls::name, decltype(HostCalls::name)>::invoke,
constexpr HostCalls kFailing = {ZU_HOST_CALLS(ZU_HOST_FAILING)};
#undef ZU_HOST_FAILING

// Puts the failing stand-in into the slot, keeping what it held, or puts
// back what it held.
void place(HostCall call, bool failing) {
  switch (call) {
#define ZU_HOST_PLACE(name, result, parameters, body, failsAs) \
  case HostCall::name:                                          \
    if (failing) underneath.name = host.name;                   \
    host.name = failing ? kFailing.name : underneath.name;      \
    break;
    ZU_HOST_CALLS(ZU_HOST_PLACE)
#undef ZU_HOST_PLACE
    case HostCall::kCount:
      break;
  }
}

}  // namespace

#define ZU_HOST_SET_DEFAULT(name, result, parameters, body, failsAs) .name = default_##name,
constexpr HostCalls kDefaultHost = {ZU_HOST_CALLS(ZU_HOST_SET_DEFAULT)};
#undef ZU_HOST_SET_DEFAULT

// Constant-initialised, so it is in place before any static constructor runs.
constinit HostCalls host = kDefaultHost;

const char* hostCallName(HostCall call) {
  return call < HostCall::kCount ? kNames[static_cast<unsigned>(call)] : "";
}

FailsAs hostFailsAs(HostCall call) {
  return call < HostCall::kCount ? kForms[static_cast<unsigned>(call)] : FailsAs::kNever;
}

void hostFail(HostCall call, std::uint32_t nth, int error, bool persistent) {
  if (call >= HostCall::kCount) return;
  Armed& a = at(call);
  a.nth.store(0);
  a.calls.store(0);
  a.error.store(error);
  a.persistent.store(persistent);
  a.delivered.store(false);
  a.nth.store(nth);
  if (!a.active.exchange(true)) place(call, true);
}

std::uint32_t hostCalls(HostCall call) { return call < HostCall::kCount ? at(call).calls.load() : 0; }

bool hostFailed(HostCall call) { return call < HostCall::kCount && at(call).delivered.load(); }

void hostRestore(HostCall call) {
  if (call >= HostCall::kCount) return;
  Armed& a = at(call);
  if (a.active.exchange(false)) place(call, false);
  a.nth.store(0);
}

void hostRestoreAll() {
  for (unsigned c = 0; c < kHostCallCount; ++c) {
    armed[c].active.store(false);
    armed[c].nth.store(0);
  }
  host = kDefaultHost;
}

}  // namespace zu::platform

#include "platform/fault.h"

#include <atomic>

namespace zu::platform {
namespace {

struct Switch {
  std::atomic<std::uint32_t> armedAt{0};  // 0: off
  std::atomic<std::uint32_t> calls{0};
  std::atomic<bool> persistent{false};
};

Switch switches[static_cast<unsigned>(Fault::kCount)];
std::atomic<bool> anyArmed{false};

Switch& at(Fault kind) { return switches[static_cast<unsigned>(kind)]; }

}  // namespace

void faultArm(Fault kind, std::uint32_t nth, bool persistent) {
  Switch& s = at(kind);
  s.calls.store(0);
  s.persistent.store(persistent);
  s.armedAt.store(nth);
  anyArmed.store(true);
}

void faultDisarm(Fault kind) { at(kind).armedAt.store(0); }

void faultDisarmAll() {
  for (Switch& s : switches) s.armedAt.store(0);
  anyArmed.store(false);
}

bool faultHit(Fault kind) {
  if (!anyArmed.load(std::memory_order_relaxed)) return false;
  Switch& s = at(kind);
  std::uint32_t armed = s.armedAt.load();
  std::uint32_t call = s.calls.fetch_add(1) + 1;
  if (armed == 0) return false;
  return s.persistent.load() ? call >= armed : call == armed;
}

std::uint32_t faultCalls(Fault kind) { return at(kind).calls.load(); }

}  // namespace zu::platform

// Runs one case of the pool's configuration, named by ZU_TEST_CASE: the pool
// reads its environment once, when the first static semaphore is built, so
// every case needs a process of its own (ctest sets each one's variables).
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "frame/statics.h"
#include "platform/platform.h"

namespace {

int failures = 0;

void expect(bool ok, const char* what) {
  if (!ok) {
    std::fprintf(stderr, "FAILED: %s\n", what);
    ++failures;
  }
}

std::vector<std::string> reports;
void captureReport(const unsigned char* caption, const unsigned char* text) {
  reports.push_back(std::string(reinterpret_cast<const char*>(caption)) + "|" +
                    reinterpret_cast<const char*>(text));
}

bool isSystem(const ZuSemaphore& s) { return s.allocatedType == 1 && s.handle != nullptr; }

void lockBoth(ZuSemaphore& s) {
  s.lock();
  s.unlock();
}

}  // namespace

int main() {
  const char* which = std::getenv("ZU_TEST_CASE");
  if (which == nullptr) {
    std::fprintf(stderr, "ZU_TEST_CASE not set\n");
    return 2;
  }
  std::string c = which;
  const ZuSemaphoreInfo& pool = semaphorePool;
  expect(pool.initialised == 1, "pool configured at load");

  if (c == "defaults" || c == "prefix") {
    // The prefix case sets only ZU_SEMCONTROLX1 (empty); the prefix match
    // reads that entry as ZU_SEMCONTROL, skipping the X as if it were "=", so "1".
    if (c == "defaults") {
      expect(pool.control == 0 && pool.remaining == 0, "no limit");
      expect(isSystem(threadListSemaphore) && isSystem(bvmSemaphore) && isSystem(ramSemaphore),
             "every static semaphore is a system semaphore");
    } else {
      expect(pool.control == 1, "ZU_SEMCONTROLX1= is read as ZU_SEMCONTROL 1");
      expect(isSystem(threadListSemaphore) && !isSystem(bvmSemaphore), "limit of one");
    }
    expect(pool.spinCount == 25 && pool.yieldTime == 0, "spin defaults");
    ZuSemaphore extra;
    expect(c == "prefix" || isSystem(extra), "later semaphores stay system semaphores");
    expect(pool.remaining == 0, "remaining stays 0");
    lockBoth(extra);
  } else if (c == "control2") {
    expect(isSystem(threadListSemaphore), "first is a system semaphore");
    expect(isSystem(bvmSemaphore), "second is a system semaphore");
    expect(!isSystem(ramSemaphore) && ramSemaphore.allocatedType == 0, "third is a spin lock");
    expect(pool.remaining == 0, "limit used up");
    {
      ZuSemaphore fourth;
      expect(!isSystem(fourth), "fourth is a spin lock");
      lockBoth(fourth);
    }
    bvmSemaphore.bosSemaphoreFree();
    expect(pool.remaining == 1, "a release gives one back");
    ZuSemaphore again;
    expect(isSystem(again), "after a release the next is a system semaphore again");
    expect(pool.remaining == 0, "and takes it");
    ZuSemaphore beyond;
    expect(!isSystem(beyond), "then spin locks again");
    lockBoth(again);
    lockBoth(beyond);
    bvmSemaphore.bosSemaphoreAlloc();  // back to its form for the unload
  } else if (c == "control256") {
    expect((pool.control & 0xFF) == 0 && pool.remaining == 0, "256 has OS limit 0");
    ZuSemaphore a, b, d;
    expect(isSystem(a) && isSystem(b) && isSystem(d) && isSystem(ramSemaphore), "no limit");
  } else if (c == "reports" || c == "reports_spin" || c == "spin0") {
    // The load-time reports went to standard error; from here on the hook
    // catches them for inspection.
    zu::platform::sys.report = captureReport;
    {
      ZuSemaphore s;
      lockBoth(s);
    }
    expect(reports.size() == 2, "one report at allocation, one at release");
    if (reports.size() == 2) {
      expect(reports[0] ==
                 "Per Semaphore Allocation Information|Semaphore Allocated Type: Real System Semaphore\r\n",
             "allocation report");
      expect(reports[1] ==
                 "Per Semaphore Deallocation Information|Semaphore Allocated Type: Real System Semaphore\n",
             "release report ends with a line feed only");
    }
    // Reconfiguring is the way to see the pool report again in this process.
    reports.clear();
    semaphorePool.initialised = 0;
    ZuSemaphore t;
    expect(reports.size() == 2, "pool report then allocation report");
    if (!reports.empty()) {
      std::string request = c == "reports_spin" ? "Spin Lock Semaphore" : "Real System Semaphore";
      std::string spins = c == "spin0" ? "1" : "25";
      expect(reports[0] == "Semaphore Pool Allocation Information|Semaphore Request Type: " + request +
                               "\r\nSemaphore OS Limit: 0\r\nSemaphore Spin Count: " + spins +
                               "\r\nSemaphore Thread yield time: 0\r\n",
             "pool report");
    }
    if (c == "reports_spin") expect(isSystem(t), "bit 19 does not change the allocation");
    if (c == "spin0") {
      expect(pool.spinCount == 0, "a spin count of 0 is stored as 0");
      alignas(ZuSemaphore) unsigned char storage[sizeof(ZuSemaphore)] = {};
      lockBoth(*reinterpret_cast<ZuSemaphore*>(storage));  // one try per pass still acquires
    }
    zu::platform::sys.report = zu::platform::kDefaultCalls.report;
  } else if (c == "spin_sleep") {
    expect(pool.spinCount == static_cast<std::uint32_t>(-3), "a signed value wraps into the field");
    expect(pool.yieldTime == 7, "an explicit plus sign");
  } else if (c == "not_a_number") {
    expect(pool.spinCount == 25 && pool.yieldTime == 0 && pool.control == 0,
           "values that hold no number leave the defaults");
  } else {
    std::fprintf(stderr, "unknown case %s\n", which);
    return 2;
  }
  std::printf("%s: %s\n", which, failures == 0 ? "passed" : "FAILED");
  return failures == 0 ? 0 : 1;
}

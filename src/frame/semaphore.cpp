#include "frame/semaphore.h"

#include <atomic>
#include <cstdio>

#include "frame/from_above.h"
#include "frame/statics.h"
#include "frame/task.h"
#include "platform/platform.h"

namespace {

using zu::platform::sys;

constexpr std::uint32_t kDefaultSpinCount = 25;
constexpr std::uint32_t kDefaultYieldTime = 0;
constexpr std::uint32_t kDefaultControl = 0;
constexpr std::uint32_t kOsLimitMask = 0xFF;
constexpr std::uint32_t kControlShowReports = 0x10000;
constexpr std::uint32_t kControlRequestSpin = 0x80000;
constexpr std::uint32_t kTypeSystem = 1;
constexpr std::uint32_t kTypeSpin = 0;

// Catalogue rows of the reports.
constexpr std::uint16_t kRowPoolCaption = 1524;
constexpr std::uint16_t kRowAllocCaption = 1525;
constexpr std::uint16_t kRowRequestType = 1526;
constexpr std::uint16_t kRowAllocatedType = 1527;
constexpr std::uint16_t kRowSystemType = 1528;
constexpr std::uint16_t kRowSpinType = 1529;
constexpr std::uint16_t kRowOsLimit = 1530;
constexpr std::uint16_t kRowSpinCount = 1531;
constexpr std::uint16_t kRowYieldTime = 1532;
constexpr std::uint16_t kRowFreeCaption = 1537;

constexpr int kReportSize = 512;
constexpr int kCaptionSize = 80;
constexpr int kLabelSize = 40;
// A loaded label never holds more; the pool report's format says so, which
// also lets the compiler see that the four lines fit the body.
constexpr int kLabelText = kLabelSize - 1;

// Labels, loaded once per process on the first report.
struct ReportLabels {
  bool loaded;
  unsigned char poolCaption[kCaptionSize], allocCaption[kCaptionSize], freeCaption[kCaptionSize];
  unsigned char requestType[kLabelSize], allocatedType[kLabelSize], systemType[kLabelSize],
      spinType[kLabelSize], osLimit[kLabelSize], spinCount[kLabelSize], yieldTime[kLabelSize];
};
ReportLabels labels;

const ReportLabels& reportLabels() {
  if (!labels.loaded) {
    zu::catalogueLoad(kRowPoolCaption, labels.poolCaption, kCaptionSize);
    zu::catalogueLoad(kRowAllocCaption, labels.allocCaption, kCaptionSize);
    zu::catalogueLoad(kRowFreeCaption, labels.freeCaption, kCaptionSize);
    zu::catalogueLoad(kRowRequestType, labels.requestType, kLabelSize);
    zu::catalogueLoad(kRowAllocatedType, labels.allocatedType, kLabelSize);
    zu::catalogueLoad(kRowSystemType, labels.systemType, kLabelSize);
    zu::catalogueLoad(kRowSpinType, labels.spinType, kLabelSize);
    zu::catalogueLoad(kRowOsLimit, labels.osLimit, kLabelSize);
    zu::catalogueLoad(kRowSpinCount, labels.spinCount, kLabelSize);
    zu::catalogueLoad(kRowYieldTime, labels.yieldTime, kLabelSize);
    labels.loaded = true;
  }
  return labels;
}

const char* text(const unsigned char* bytes) { return reinterpret_cast<const char*>(bytes); }

std::uint32_t osLimit() { return semaphorePool.control & kOsLimitMask; }
bool reportsOn() { return (semaphorePool.control & kControlShowReports) != 0; }

std::uint32_t effectiveSpinCount() {
  return semaphorePool.spinCount != 0 ? semaphorePool.spinCount : 1;
}

void reportPool() {
  const ReportLabels& l = reportLabels();
  char body[kReportSize];
  const unsigned char* request =
      (semaphorePool.control & kControlRequestSpin) != 0 ? l.spinType : l.systemType;
  std::snprintf(body, sizeof body, "%.*s: %.*s\r\n%.*s: %d\r\n%.*s: %d\r\n%.*s: %d\r\n",
                kLabelText, text(l.requestType), kLabelText, text(request), kLabelText,
                text(l.osLimit), static_cast<int>(osLimit()), kLabelText, text(l.spinCount),
                static_cast<int>(effectiveSpinCount()), kLabelText, text(l.yieldTime),
                static_cast<int>(semaphorePool.yieldTime));
  sys.report(l.poolCaption, reinterpret_cast<const unsigned char*>(body));
}

void reportSemaphore(const unsigned char* caption, const char* format, bool system) {
  const ReportLabels& l = reportLabels();
  char body[kReportSize];
  std::snprintf(body, sizeof body, format, text(l.allocatedType),
                text(system ? l.systemType : l.spinType));
  sys.report(caption, reinterpret_cast<const unsigned char*>(body));
}

void configurePool() {
  semaphorePool.spinCount = zu::environmentNumber("ZU_SPIN_COUNT", kDefaultSpinCount);
  semaphorePool.yieldTime = zu::environmentNumber("ZU_SPIN_SLEEP", kDefaultYieldTime);
  semaphorePool.control = zu::environmentNumber("ZU_SEMCONTROL", kDefaultControl);
  std::atomic_ref<std::uint32_t>(semaphorePool.remaining).store(osLimit());
  semaphorePool.initialised = 1;
  if (reportsOn()) reportPool();
}

// Takes one off `remaining` if it is above 0; atomic with its test.
bool takeFromLimit() {
  std::atomic_ref<std::uint32_t> remaining(semaphorePool.remaining);
  std::uint32_t seen = remaining.load();
  while (seen > 0) {
    if (remaining.compare_exchange_weak(seen, seen - 1)) return true;
  }
  return false;
}

}  // namespace

ZuSemaphoreInfo::ZuSemaphoreInfo() {}
ZuSemaphoreInfo::~ZuSemaphoreInfo() {}

ZuSemaphore::ZuSemaphore() : owner(0) { bosSemaphoreAlloc(); }

ZuSemaphore::~ZuSemaphore() { bosSemaphoreFree(); }

void ZuSemaphore::bosSemaphoreAlloc() {
  if (semaphorePool.initialised == 0) configurePool();
  void* made = nullptr;
  if (osLimit() == 0 || takeFromLimit()) made = sys.semCreate();
  if (reportsOn()) reportSemaphore(reportLabels().allocCaption, "%s: %s\r\n", made != nullptr);
  handle = made;
  if (made != nullptr) {
    allocatedType = kTypeSystem;
  } else {
    allocatedType = kTypeSpin;
    spinWord = 0;
  }
}

void ZuSemaphore::bosSemaphoreFree() {
  if (reportsOn()) {
    reportSemaphore(reportLabels().freeCaption, "%s: %s\n", allocatedType == kTypeSystem);
  }
  if (allocatedType == kTypeSystem) {
    sys.semClose(handle);
    if (osLimit() != 0) std::atomic_ref<std::uint32_t>(semaphorePool.remaining).fetch_add(1);
    // Left behind as a free spin lock rather than a dangling handle: a second
    // release, or a late user during unload, then does no harm.
    handle = nullptr;
    allocatedType = kTypeSpin;
    spinWord = 0;
  }
}

void ZuSemaphore::bosSpinLock() {
  for (;;) {
    std::uint32_t tries = effectiveSpinCount();
    for (std::uint32_t i = 0; i < tries; ++i) {
      if (zu::platform::atomicExchange(&spinWord, 1) == 0) {
        owner = bosGetThreadID();
        return;
      }
    }
    sys.sleepMs(semaphorePool.yieldTime);
  }
}

void ZuSemaphore::lock() {
  if (allocatedType == kTypeSystem) {
    sys.semWait(handle);
    owner = bosGetThreadID();
  } else {
    bosSpinLock();
  }
}

void ZuSemaphore::unlock() {
  owner = 0;
  if (allocatedType == kTypeSystem) {
    sys.semPost(handle);
  } else {
    bosMemUnLock(&spinWord);
  }
}

void bosMemUnLock(std::uint32_t* word) { zu::platform::atomicExchange(word, 0); }

void zuSetReportHook(ZuReportHook hook) {
  sys.report = hook != nullptr ? hook : zu::platform::kDefaultCalls.report;
}

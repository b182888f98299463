// The trace's time stamp, and the count of the task's initialisations.
#include <cstdint>

#include "desktop/helpers.h"
#include "frame/task.h"
#include "os/system.h"

namespace {

constexpr unsigned short kStampLength = 11;  // HH:MM:SS.cc
constexpr unsigned short kMsPerHundredth = 10;

unsigned char* twoDigits(unsigned char* at, unsigned value) {
  at[0] = static_cast<unsigned char>('0' + value / 10 % 10);
  at[1] = static_cast<unsigned char>('0' + value % 10);
  return at + 2;
}

}  // namespace

unsigned short ZuTime::getCurrentTimeStamp(unsigned char* buffer) {
  os_time now;
  bosdate(&now);
  unsigned char* at = twoDigits(buffer, now.hour);
  *at++ = ':';
  at = twoDigits(at, now.minute);
  *at++ = ':';
  at = twoDigits(at, now.second);
  *at++ = '.';
  twoDigits(at, now.millisecond / kMsPerHundredth);
  return kStampLength;
}

// The count lives in the task's slot as a number, not as a pointer to one.
unsigned short countZuInits(unsigned short increment) {
  const auto count =
      static_cast<unsigned short>(reinterpret_cast<std::uintptr_t>(mdsGetPerTaskData(TASK_DATA_INIT_COUNT)));
  const auto after = static_cast<unsigned short>(increment != 0 ? count + 1 : count - 1);
  mdsSetPerTaskData(TASK_DATA_INIT_COUNT, reinterpret_cast<const void*>(static_cast<std::uintptr_t>(after)));
  return increment != 0 ? count : after;
}

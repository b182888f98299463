#include "os/system.h"

#include <cstdint>
#include <cstring>

#include "memory/ram.h"
#include "os/names.h"
#include "platform/dos.h"

using zu::platform::dos;

namespace {

constexpr int kDriveCount = 26;
constexpr unsigned char kFirstDriveLetter = 'a';
constexpr unsigned char kGenerationSuffix[] = "04";
constexpr unsigned kEscape = 27;
constexpr unsigned kArrowUp = 38;
constexpr unsigned kArrowDown = 40;

// A file walk: the system's search and the last name it found.
struct FindContext {
  void* search;
  unsigned char fileName[zu::os::kNameBufferSize];
};

struct DriveContext {
  unsigned short index;  // the next drive to look at, 0 being a
  std::uint32_t drives;
};

}  // namespace

ZuStatus bosFindFiles(unsigned char** context, unsigned char* name) {
  FindContext* walk = reinterpret_cast<FindContext*>(*context);
  if (walk == nullptr) {
    walk = static_cast<FindContext*>(ramAllocZ(sizeof(FindContext)));
    if (walk == nullptr) return ZU_ERROR;
    walk->search = dos.findFirst(name, walk->fileName);
    if (walk->search == nullptr) {
      ramFree(walk);
      *context = nullptr;
      return ZU_OK;  // no match is no error
    }
    *context = reinterpret_cast<unsigned char*>(walk);
  } else if (!dos.findNext(walk->search, walk->fileName)) {
    dos.findClose(walk->search);
    ramFree(walk);
    *context = nullptr;
    return ZU_OK;
  }
  std::memcpy(name, walk->fileName, std::strlen(reinterpret_cast<char*>(walk->fileName)) + 1);
  return ZU_OK;
}

ZuStatus bosGetDirectoryNames(void**, unsigned char*) { return ZU_OK; }

ZuStatus bosGetFileSystems(void** context, unsigned char* name) {
  DriveContext* walk = static_cast<DriveContext*>(*context);
  if (walk == nullptr) {
    walk = static_cast<DriveContext*>(ramAllocZ(sizeof(DriveContext)));
    if (walk == nullptr) {
      name[0] = '\0';
      return ZU_ERROR;
    }
    walk->drives = dos.logicalDrives();
    *context = walk;
  }
  while (walk->index < kDriveCount) {
    const unsigned short drive = walk->index++;
    if ((walk->drives & (1u << drive)) != 0) {
      name[0] = static_cast<unsigned char>(kFirstDriveLetter + drive);
      name[1] = '\0';
      return ZU_OK;
    }
  }
  ramFree(walk);
  *context = nullptr;
  name[0] = '\0';
  return ZU_OK;
}

HINSTANCE bosLoadLibrary(const unsigned char* name) {
  unsigned char stem[zu::os::kNameBufferSize];
  const std::size_t length = std::strlen(reinterpret_cast<const char*>(name));
  if (length + sizeof kGenerationSuffix > sizeof stem) return nullptr;
  std::memcpy(stem, name, length + 1);
  bosdllname(stem);
  return static_cast<HINSTANCE>(dos.loadBeside(stem));
}

void bosdllname(unsigned char* name) {
  std::strcat(reinterpret_cast<char*>(name), reinterpret_cast<const char*>(kGenerationSuffix));
}

void bosdate(os_time* time) {
  zu::platform::UtcTime now;
  dos.utcNow(&now);
  time->day = now.day;
  time->month = now.month;
  time->year = now.year;
  time->hour = now.hour;
  time->minute = now.minute;
  time->second = now.second;
  time->millisecond = now.millisecond;
}

unsigned short bosabort() {
  unsigned message = 0;
  unsigned key = 0;
  while (dos.nextKey(&message, &key)) {
    if (message != zu::platform::kKeyDown) continue;
    if (key == kEscape) return 1;
    if (key != kArrowUp && key != kArrowDown) dos.beep();
  }
  return 0;
}

void bossleep(unsigned short milliseconds) {
  const std::uint32_t start = dos.tickMs();
  const std::uint32_t end = start + milliseconds;  // wraps as the counter does
  for (;;) {
    const std::uint32_t now = dos.tickMs();
    if (now < start || now > end) return;
  }
}

#include "platform/dos_names.h"

#include <cstring>

#include "platform/charset.h"

namespace zu::platform {
namespace {

// Exactly these eleven; NUL is not among them.
constexpr const char* kReservedDeviceNames[] = {"CON",  "AUX",  "COM1", "COM2", "COM3", "COM4",
                                                "PRN",  "LPT1", "LPT2", "LPT3", "LPT4"};

bool endsRun(unsigned char c) {
  return c == kExtensionDot || c == kDosSeparator || c == kDriveColon;
}

}  // namespace

int driveIndex(unsigned char letter) {
  const unsigned char upper = upperCase(letter);
  return upper >= 'A' && upper <= 'Z' ? upper - 'A' : -1;
}

bool sameName(const unsigned char* a, const unsigned char* b, std::size_t length) {
  for (std::size_t i = 0; i < length; ++i) {
    if (upperCase(a[i]) != upperCase(b[i])) return false;
  }
  return true;
}

std::size_t filePartStart(const unsigned char* path, bool hostSlash) {
  std::size_t start = 0;
  for (std::size_t i = 0; path[i] != '\0'; ++i) {
    if (path[i] == kDosSeparator || (hostSlash && path[i] == kHostSeparator)) start = i + 1;
  }
  if (start == 0 && hasDrive(path)) start = kDriveLength;
  return start;
}

std::size_t parentStart(const unsigned char* path, std::size_t end) {
  while (end > 0) {
    if (path[--end] == kDosSeparator) return end;
  }
  return kNoParent;
}

void foldParentSteps(unsigned char* path) {
  static constexpr char kParentStep[] = "\\..\\";
  static constexpr std::size_t kStepLength = sizeof kParentStep - 1;
  for (;;) {
    char* step = std::strstr(reinterpret_cast<char*>(path), kParentStep);
    if (step == nullptr) return;
    const std::size_t at = static_cast<std::size_t>(reinterpret_cast<unsigned char*>(step) - path);
    const std::size_t previous = parentStart(path, at);
    if (previous == kNoParent) return;
    // Keeps the backslash that ends the step.
    const std::size_t rest = at + kStepLength - 1;
    std::memmove(path + previous, path + rest, std::strlen(reinterpret_cast<char*>(path + rest)) + 1);
  }
}

bool isReservedDeviceName(const unsigned char* name, std::size_t length) {
  for (const char* reserved : kReservedDeviceNames) {
    if (std::strlen(reserved) == length && std::memcmp(reserved, name, length) == 0) return true;
  }
  return false;
}

// Walks from the last byte to the first, so that the first base name met is
// the file's own and a run's length is known when its first byte is reached.
NameCheck checkDosName(const unsigned char* upperName) {
  const std::size_t length = std::strlen(reinterpret_cast<const char*>(upperName));
  std::size_t run = 0;
  bool fileNameSeen = false;
  for (std::size_t i = length; i-- > 0;) {
    const unsigned char c = upperName[i];
    if (isDosSpace(c)) return NameCheck::kRefused;
    if (endsRun(c)) {
      run = 0;
      continue;
    }
    ++run;
    const bool baseStart = i == 0 || upperName[i - 1] == kDosSeparator || upperName[i - 1] == kDriveColon;
    if (baseStart) {
      if (run > kBaseNameMax) return NameCheck::kRefused;
      if (!fileNameSeen) {
        fileNameSeen = true;
        if (isReservedDeviceName(upperName + i, run)) return NameCheck::kReserved;
      }
    } else if (upperName[i - 1] == kExtensionDot && run > kExtensionMax) {
      return NameCheck::kRefused;
    }
  }
  return NameCheck::kValid;
}

}  // namespace zu::platform

#include "platform/dos_names.h"

#include <cstring>

namespace zu::platform {
namespace {

// Exactly these eleven; NUL is not among them.
constexpr const char* kReservedDeviceNames[] = {"CON",  "AUX",  "COM1", "COM2", "COM3", "COM4",
                                                "PRN",  "LPT1", "LPT2", "LPT3", "LPT4"};

bool endsRun(unsigned char c) {
  return c == kExtensionDot || c == kDosSeparator || c == kDriveColon;
}

}  // namespace

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

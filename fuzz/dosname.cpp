// The DOS name rules on arbitrary names, through bosFileOpen over a stub
// system that finds nothing: a name the check refuses must never reach the
// system, a reserved one must be reported as such, and every other name must
// reach it upper-cased. The caller's buffer is exactly 256 bytes.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "errors/error_list.h"
#include "errors/keeper.h"
#include "os/file.h"
#include "platform/charset.h"
#include "platform/dos.h"
#include "platform/dos_names.h"

namespace {

constexpr std::size_t kNameBuffer = 256;
constexpr unsigned short kReservedRow = 30047;

unsigned char reached[kNameBuffer];
int reaches = 0;

zu::platform::ErrorClass stubOpen(const unsigned char* name, unsigned, int*) {
  ++reaches;
  std::strcpy(reinterpret_cast<char*>(reached), reinterpret_cast<const char*>(name));
  return zu::platform::kNoEntry;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const std::uint32_t flags = data[0] & ~(ZU_OPEN_TEMP | ZU_OPEN_TEMP_OTHER_DRIVE | ZU_OPEN_SEARCH_PATH);
  ++data, --size;
  if (size >= kNameBuffer) size = kNameBuffer - 1;
  auto* name = static_cast<unsigned char*>(std::malloc(kNameBuffer));
  std::memcpy(name, data, size);
  name[size] = '\0';
  const std::size_t length = std::strlen(reinterpret_cast<char*>(name));

  zu::platform::dos.open = stubOpen;
  ZuErrorList list;
  ZuErrorKeeper::setErrorList(&list);
  reaches = 0;
  int handle = 0;
  if (bosFileOpen(name, flags, &handle) != ZU_ERROR) std::abort();
  const unsigned short row = ZuErrorKeeper::getLastErrorNumber();
  ZuErrorKeeper::giveUpErrorList();

  unsigned char upper[kNameBuffer];
  for (std::size_t i = 0; i <= length; ++i) upper[i] = zu::platform::upperCase(name[i]);
  const zu::platform::NameCheck check = zu::platform::checkDosName(upper);
  if ((check == zu::platform::NameCheck::kReserved) != (row == kReservedRow)) std::abort();
  if (check != zu::platform::NameCheck::kValid) {
    if (reaches != 0 || handle != 0) std::abort();
  } else {
    if (reaches != 1 || handle != -1 || std::memcmp(reached, upper, length + 1) != 0) std::abort();
    // A valid name has no white space and no component over 8.3.
    for (std::size_t i = 0; i < length; ++i) {
      if (zu::platform::isDosSpace(upper[i])) std::abort();
    }
  }
  std::free(name);
  return 0;
}

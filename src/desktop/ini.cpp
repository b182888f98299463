#include "desktop/ini.h"

#include "errors/message.h"
#include "memory/ram.h"
#include "platform/profile.h"

namespace {

// "Initialization file is not open."
constexpr unsigned short kIniNotOpen = 2717;

}  // namespace

ZuIni::~ZuIni() { ZuIni::close(); }

ZuStatus ZuIni::open(unsigned char const* name) {
  // Copied before the close, so that the object's own name may be passed.
  unsigned char* copy = name != nullptr ? ramAllocStr(name) : nullptr;
  if (fileName != nullptr && close() != ZU_OK) {
    ramFree(copy);
    return ZU_ERROR;
  }
  fileName = copy;
  if (name == nullptr) return validState();  // no name: stays closed
  return copy != nullptr ? ZU_OK : ZU_ERROR;
}

ZuStatus ZuIni::close() {
  ramFree(fileName);
  fileName = nullptr;
  return ZU_OK;
}

ZuStatus ZuIni::validState() {
  if (fileName != nullptr) return ZU_OK;
  addMessageError(kIniNotOpen);
  return ZU_ERROR;
}

ZuStatus ZuIni::getEntry(unsigned char const* section, unsigned char const* entry, unsigned char* buffer,
                         unsigned short bufferSize, unsigned char const* defaultValue) {
  if (validState() != ZU_OK) return ZU_ERROR;
  zu::platform::profileGetString(section, entry, defaultValue, buffer, bufferSize, fileName);
  return ZU_OK;
}

ZuStatus ZuIni::getEntry(unsigned char const* section, unsigned char const* entry, short* value,
                         short defaultValue) {
  if (validState() != ZU_OK) return ZU_ERROR;
  *value = static_cast<short>(zu::platform::profileGetInt(section, entry, defaultValue, fileName));
  return ZU_OK;
}

ZuStatus ZuIni::writeEntry(unsigned char const* section, unsigned char const* entry,
                           unsigned char const* value) {
  if (validState() != ZU_OK) return ZU_ERROR;
  zu::platform::profileWriteString(section, entry, value, fileName);
  return ZU_OK;
}

ZuStatus ZuIni::deleteEntry(unsigned char const* section, unsigned char const* entry) {
  if (validState() != ZU_OK) return ZU_ERROR;
  zu::platform::profileWriteString(section, entry, nullptr, fileName);
  return ZU_OK;
}

ZuStatus ZuIni::deleteSection(unsigned char const* section) { return deleteEntry(section, nullptr); }

#include "os/file_errors.h"

#include "errors/message.h"
#include "os/os_messages.h"

namespace zu::os {
namespace {

struct Mapping {
  platform::ErrorClass failure;
  unsigned short row;
  bool namesFile;
};

constexpr Mapping kMappings[] = {
    {platform::kNoEntry, msg::kFileNotFound, true},
    {platform::kBadHandle, msg::kInvalidFileHandle, false},
    {platform::kNoMemory, msg::kNoMemoryForCommand, false},
    {platform::kAccessDenied, msg::kFileAccessDenied, true},
    {platform::kTooManyFiles, msg::kTooManyOpenFiles, false},
    {platform::kDeadlock, msg::kRegionLocked, false},
};

constexpr unsigned char kEmpty[] = "";

}  // namespace

void reportFileError(platform::ErrorClass failure, const unsigned char* name) {
  for (const Mapping& m : kMappings) {
    if (m.failure != failure) continue;
    ZuError& error = addMessageError(m.row);
    if (m.namesFile) error << (name != nullptr ? name : kEmpty);
    return;
  }
  addMessageError(msg::kFileIoError);
}

}  // namespace zu::os

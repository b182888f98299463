#include "sort/run_file.h"

#include "errors/message.h"
#include "os/file.h"
#include "os/os_messages.h"

namespace zu::sorting {
namespace {

constexpr unsigned short kFromStart = 0;
constexpr std::int32_t kHere = -1;

ZuStatus seekTo(int handle, std::int64_t at) {
  if (bosFileSeek(handle, static_cast<std::int32_t>(at), kFromStart) == static_cast<std::uint32_t>(at)) {
    return ZU_OK;
  }
  addMessageError(msg::kFileIoError);
  return ZU_ERROR;
}

}  // namespace

ZuStatus readAt(int handle, std::int64_t at, void* buffer, std::uint32_t size) {
  if (seekTo(handle, at) != ZU_OK) return ZU_ERROR;
  std::uint32_t done = 0;
  if (bosFileRead(handle, kHere, buffer, size, &done) != ZU_OK) return ZU_ERROR;
  if (done == size) return ZU_OK;
  addMessageError(msg::kFileIoError);
  return ZU_ERROR;
}

ZuStatus writeAt(int handle, std::int64_t at, const void* buffer, std::uint32_t size) {
  if (seekTo(handle, at) != ZU_OK) return ZU_ERROR;
  return bosFileWrite(handle, kHere, buffer, size);
}

}  // namespace zu::sorting

#include "sort/run_file.h"

#include "errors/message.h"
#include "os/file.h"
#include "os/os_messages.h"

namespace zu::sorting {

ZuStatus readAt(int handle, std::int64_t at, void* buffer, std::uint32_t size) {
  std::uint32_t done = 0;
  if (bosFileRead(handle, static_cast<std::int32_t>(at), buffer, size, &done) != ZU_OK) return ZU_ERROR;
  if (done == size) return ZU_OK;
  addMessageError(msg::kFileIoError);
  return ZU_ERROR;
}

ZuStatus writeAt(int handle, std::int64_t at, const void* buffer, std::uint32_t size) {
  return bosFileWrite(handle, static_cast<std::int32_t>(at), buffer, size);
}

}  // namespace zu::sorting

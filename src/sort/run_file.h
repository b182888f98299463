// Transfers at a place in a sort's run file. The run file is private and
// written whole, so a short read is a failure too. Each failure is on the
// thread's list when these return ZU_ERROR.
#ifndef ZUUTL_SORT_RUN_FILE_H
#define ZUUTL_SORT_RUN_FILE_H

#include <cstdint>

#include "frame/status.h"

namespace zu::sorting {

ZuStatus readAt(int handle, std::int64_t at, void* buffer, std::uint32_t size);
ZuStatus writeAt(int handle, std::int64_t at, const void* buffer, std::uint32_t size);

}  // namespace zu::sorting

#endif

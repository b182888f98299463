// The result of every operation that can fail. A failure has already been
// recorded on the calling thread's error list; callers test for non-zero.
#ifndef ZUUTL_FRAME_STATUS_H
#define ZUUTL_FRAME_STATUS_H

#include <cstdint>

enum ZuStatus : std::uint32_t {
  ZU_OK = 0,
  ZU_ERROR = 1,
};

#endif

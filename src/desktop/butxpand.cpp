// A growing output buffer in steps of 512 bytes, with a 16-bit size.
#include "desktop/helpers.h"
#include "memory/ram.h"

namespace {
constexpr unsigned short kStepBits = 0x1FF;
constexpr unsigned short kStep = 512;
}  // namespace

ZuStatus butxpand(unsigned char** base, unsigned char** cursor, unsigned short* size,
                  unsigned short needed) {
  const auto grow = static_cast<unsigned short>((needed & ~kStepBits) + kStep);
  if (*base == nullptr) {
    *size = grow;
    *base = static_cast<unsigned char*>(ramAlloc(*size));
    if (*base == nullptr) return ZU_ERROR;
    *cursor = *base;
    return ZU_OK;
  }
  const auto used = static_cast<unsigned short>(*cursor - *base);
  if (static_cast<int>(*size) - static_cast<int>(used) >= static_cast<int>(needed)) return ZU_OK;
  *size = static_cast<unsigned short>(*size + grow);
  void* block = *base;
  if (ramResize(&block, *size) != ZU_OK) return ZU_ERROR;
  *base = static_cast<unsigned char*>(block);
  *cursor = *base + used;
  return ZU_OK;
}

// Overlapping copies that repeat a pattern, laid down by doubling: each
// block copied comes from bytes already in place, so no two ranges of one
// memcpy overlap.
#include "strings/directed_copy.h"

namespace zu::bytes {

void repeatAscending(unsigned char* dst, const unsigned char* src, std::size_t period,
                     std::size_t count) {
  std::memcpy(dst, src, period);
  std::size_t done = period;
  while (done < count) {
    const std::size_t chunk = done < count - done ? done : count - done;
    std::memcpy(dst + done, dst, chunk);
    done += chunk;
  }
}

void repeatDescending(unsigned char* dst, const unsigned char* src, std::size_t period,
                      std::size_t count) {
  unsigned char* const end = dst + count;
  std::memcpy(end - period, src + count - period, period);
  std::size_t done = period;
  while (done < count) {
    const std::size_t chunk = done < count - done ? done : count - done;
    std::memcpy(end - done - chunk, end - chunk, chunk);
    done += chunk;
  }
}

}  // namespace zu::bytes

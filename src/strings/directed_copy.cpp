// A byte loop that runs into its own output repeats what it has written: an
// ascending copy to `src + d` makes the first d source bytes recur with
// period d, and a descending copy to `src - d` the last d. Such a pattern is
// laid down by doubling; every other case is exactly what memmove does.
#include "strings/directed_copy.h"

#include <cstdint>
#include <cstring>

namespace zu::bytes {
namespace {

std::size_t distance(const unsigned char* from, const unsigned char* to) {
  return reinterpret_cast<std::uintptr_t>(to) - reinterpret_cast<std::uintptr_t>(from);
}

}  // namespace

void copyAscending(unsigned char* dst, const unsigned char* src, std::size_t count) {
  const std::size_t period = distance(src, dst);  // wraps to a huge value below src
  if (count == 0) return;
  if (period == 0 || period >= count) {
    std::memmove(dst, src, count);
    return;
  }
  std::memcpy(dst, src, period);
  std::size_t done = period;
  while (done < count) {
    const std::size_t chunk = done < count - done ? done : count - done;
    std::memcpy(dst + done, dst, chunk);
    done += chunk;
  }
}

void copyDescending(unsigned char* dst, const unsigned char* src, std::size_t count) {
  const std::size_t period = distance(dst, src);
  if (count == 0) return;
  if (period == 0 || period >= count) {
    std::memmove(dst, src, count);
    return;
  }
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

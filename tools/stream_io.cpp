#include "stream_io.h"

#include <unistd.h>

#include <cerrno>

namespace zutool {
namespace {

// A linear congruential generator with fixed constants.
constexpr std::uint32_t kMultiplier = 1103515245;
constexpr std::uint32_t kIncrement = 12345;
constexpr unsigned kRandomShift = 16;
constexpr char kFirstLetter = 'a';
constexpr unsigned kLetters = 26;

}  // namespace

bool writeAll(int fd, const char* bytes, std::size_t count) {
  while (count > 0) {
    const ssize_t done = ::write(fd, bytes, count);
    if (done < 0 && errno == EINTR) continue;
    if (done <= 0) return false;
    bytes += done;
    count -= static_cast<std::size_t>(done);
  }
  return true;
}

long readSome(int fd, char* into, std::size_t room) {
  for (;;) {
    const ssize_t got = ::read(fd, into, room);
    if (got >= 0 || errno != EINTR) return static_cast<long>(got);
  }
}

std::string demoWords(unsigned count, unsigned length, std::uint32_t seed) {
  std::string text;
  std::uint32_t state = seed;
  for (unsigned i = 0; i < count; ++i) {
    for (unsigned j = 0; j < length; ++j) {
      state = state * kMultiplier + kIncrement;
      text += static_cast<char>(kFirstLetter + (state >> kRandomShift) % kLetters);
    }
    text += '\n';
  }
  return text;
}

}  // namespace zutool

// Byte streams of the commands that read files or standard input and write
// files or standard output, and the tour's reproducible sample words.
#ifndef ZU_TOOL_STREAM_IO_H
#define ZU_TOOL_STREAM_IO_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace zutool {

// Writes all `count` bytes, going on after an interruption.
bool writeAll(int fd, const char* bytes, std::size_t count);
// One read; an interruption is tried again. -1 on failure, 0 at the end.
long readSome(int fd, char* into, std::size_t room);
// `count` words of `length` lowercase letters, one a line, from a fixed
// generator seeded with `seed`, so the tour prints the same every time.
std::string demoWords(unsigned count, unsigned length, std::uint32_t seed);

}  // namespace zutool

#endif

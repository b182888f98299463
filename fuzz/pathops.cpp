// The path operations on arbitrary paths, each in a heap buffer of exactly
// the size the callers give (256 bytes for a path, 9 for a base name, 4 for
// an extension, maxLength + 1 for a line), so that the sanitizer reports any
// byte written past them. The current directory is one the input chooses,
// as long as the platform can give (254 characters, drive and root).
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "os/path.h"
#include "platform/charset.h"
#include "platform/dos.h"

namespace {

constexpr std::size_t kPathBuffer = 256;
constexpr std::size_t kPathMax = kPathBuffer - 1;
constexpr std::size_t kCurrentMax = 254;
constexpr std::size_t kNameBuffer = 9;
constexpr std::size_t kExtensionBuffer = 4;

unsigned char current[kPathBuffer];

// The platform's promise: at most kCurrentMax characters, and a buffer of
// the caller's 256 bytes.
void stubCurrent(unsigned char* buffer, std::size_t size) {
  if (size < kPathBuffer) std::abort();
  std::memcpy(buffer, current, std::strlen(reinterpret_cast<char*>(current)) + 1);
}

// Splits the input at 0xFF bytes into at most `count` texts.
struct Fields {
  const uint8_t* at;
  size_t left;
  // The next field, cut to `limit`, NUL-terminated in a buffer of `room`.
  unsigned char* next(size_t room, size_t limit) {
    size_t n = 0;
    while (n < left && at[n] != 0xFF) ++n;
    auto* text = static_cast<unsigned char*>(std::malloc(room));
    const size_t copied = n < limit ? n : limit;
    std::memcpy(text, at, copied);
    text[copied] = '\0';
    at += n < left ? n + 1 : n;
    left -= n < left ? n + 1 : n;
    return text;
  }
};

bool isUpper(const unsigned char* text) {
  for (; *text != '\0'; ++text) {
    if (zu::platform::upperCase(*text) != *text) return false;
  }
  return true;
}

size_t length(const unsigned char* text) { return std::strlen(reinterpret_cast<const char*>(text)); }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Fields fields{data, size};
  unsigned char* directory = fields.next(kPathBuffer, kCurrentMax - 3);
  current[0] = 'C';
  current[1] = ':';
  current[2] = '\\';
  std::memcpy(current + 3, directory, length(directory) + 1);
  std::free(directory);
  zu::platform::dos.currentDirectory = stubCurrent;

  unsigned char* path = fields.next(kPathBuffer, kPathMax);
  unsigned char* name = static_cast<unsigned char*>(std::malloc(kNameBuffer));
  unsigned char* extension = static_cast<unsigned char*>(std::malloc(kExtensionBuffer));
  unsigned char* split = static_cast<unsigned char*>(std::malloc(kPathBuffer));
  std::memcpy(split, path, length(path) + 1);
  bospname(split, name, extension);
  if (length(name) > 8 || length(extension) > 3 || length(split) > length(path)) std::abort();

  unsigned char* full = static_cast<unsigned char*>(std::malloc(kPathBuffer));
  std::memcpy(full, path, length(path) + 1);
  bosfpath(full);
  if (!isUpper(full) || length(full) > kPathMax) std::abort();
  const size_t before = length(full);
  bosmpath(full);
  if (length(full) > before) std::abort();

  unsigned char* defaultDirectory = fields.next(kPathBuffer, kPathMax);
  unsigned char* defaultExtension = fields.next(kPathBuffer, kPathMax);
  unsigned char* result = static_cast<unsigned char*>(std::malloc(kPathBuffer));
  bospath(result, data[0] & 1 ? defaultDirectory : nullptr, path, data[0] & 2 ? defaultExtension : nullptr);
  if (!isUpper(result) || length(result) > kPathMax) std::abort();

  // A text of lines from the rest, and a line buffer of exactly maxLength + 1.
  const unsigned short maxLength = size > 0 ? data[size - 1] : 0;
  unsigned char* text = fields.next(fields.left + 1, fields.left);
  unsigned char* line = static_cast<unsigned char*>(std::malloc(maxLength + 1u));
  unsigned short offset = 0;
  for (short got = 0; got >= 0;) {
    const unsigned short was = offset;
    bosgetbl(text, &offset, line, maxLength, &got);
    if (got >= 0 && (offset <= was || got > maxLength || length(line) != static_cast<size_t>(got))) std::abort();
  }
  for (unsigned char* block : {path, name, extension, split, full, defaultDirectory, defaultExtension, result, text, line}) {
    std::free(block);
  }
  return 0;
}

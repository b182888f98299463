#include "os/path.h"

#include <cstddef>
#include <cstring>

#include "os/names.h"
#include "platform/dos.h"
#include "platform/dos_names.h"

using zu::platform::filePartStart;
using zu::platform::kDosSeparator;
using zu::platform::kDriveColon;
using zu::platform::kDriveLength;
using zu::platform::kExtensionDot;

namespace {

// bosfpath holds a joined path to this many characters.
constexpr std::size_t kFullPathMax = 254;
constexpr unsigned char kCommentStart = ';';
constexpr unsigned char kLineFeed = '\n';
constexpr unsigned char kCarriageReturn = '\r';
constexpr unsigned char kEndOfFile = 26;  // Ctrl-Z
constexpr short kEndOfText = -1;
constexpr short kLineTooLong = -2;

std::size_t length(const unsigned char* text) { return std::strlen(reinterpret_cast<const char*>(text)); }

// Copies at most `limit` bytes of `source` and a NUL.
void copyCut(unsigned char* target, const unsigned char* source, std::size_t limit) {
  std::size_t n = 0;
  while (n < limit && source[n] != '\0') ++n;
  std::memmove(target, source, n);
  target[n] = '\0';
}

// Appends `tail` to `path` so that the whole holds at most `limit` bytes.
void appendCut(unsigned char* path, const unsigned char* tail, std::size_t limit) {
  const std::size_t have = length(path);
  if (have >= limit) return;
  copyCut(path + have, tail, limit - have);
}

}  // namespace

void bospname(unsigned char* path, unsigned char* name, unsigned char* extension) {
  extension[0] = '\0';
  const std::size_t start = filePartStart(path);
  const unsigned char* base = path + start;
  const unsigned char* dot = reinterpret_cast<const unsigned char*>(
      std::strchr(reinterpret_cast<const char*>(base), kExtensionDot));
  if (dot != nullptr) copyCut(extension, dot + 1, zu::platform::kExtensionMax);
  const std::size_t baseLength = dot != nullptr ? static_cast<std::size_t>(dot - base) : length(base);
  copyCut(name, base, baseLength < zu::platform::kBaseNameMax ? baseLength : zu::platform::kBaseNameMax);
  path[start] = '\0';
}

void bospath(unsigned char* result, const unsigned char* defaultDirectory, const unsigned char* name,
             const unsigned char* defaultExtension) {
  unsigned char text[zu::os::kNameBufferSize];
  copyCut(text, name, zu::os::kNameMax);
  std::size_t n = length(text);
  while (n > 0 && zu::platform::isDosSpace(text[n - 1])) text[--n] = '\0';
  if (n > 0 && text[n - 1] == kExtensionDot && !(n >= 2 && text[n - 2] == kExtensionDot)) text[--n] = '\0';
  const std::size_t start = filePartStart(text);
  if (start == 0 && defaultDirectory != nullptr) {
    copyCut(result, defaultDirectory, zu::os::kNameMax);
    const std::size_t d = length(result);
    if (d == 0 || result[d - 1] != kDosSeparator) {
      const unsigned char separator[] = {kDosSeparator, '\0'};
      appendCut(result, separator, zu::os::kNameMax);
    }
    appendCut(result, text, zu::os::kNameMax);
  } else {
    copyCut(result, text, zu::os::kNameMax);
  }
  if (defaultExtension != nullptr &&
      std::strchr(reinterpret_cast<const char*>(result + filePartStart(result)), kExtensionDot) == nullptr) {
    const unsigned char dot[] = {kExtensionDot, '\0'};
    appendCut(result, dot, zu::os::kNameMax);
    appendCut(result, defaultExtension, zu::os::kNameMax);
  }
  bosfpath(result);
}

void bosfpath(unsigned char* path) {
  const bool network = path[0] == kDosSeparator && path[1] == kDosSeparator;
  const unsigned char* colon = reinterpret_cast<const unsigned char*>(
      std::strchr(reinterpret_cast<const char*>(path), kDriveColon));
  const bool untouchable = network || (colon != nullptr && colon != path + 1);
  if (!untouchable && !(colon != nullptr && path[kDriveLength] == kDosSeparator)) {
    // Relative: the one current directory of the process stands in front,
    // whatever drive the name gave.
    unsigned char tail[zu::os::kNameBufferSize];
    copyCut(tail, colon != nullptr ? colon + 1 : path, zu::os::kNameMax);
    zu::platform::dos.currentDirectory(path, zu::os::kNameBufferSize);
    if (tail[0] == kDosSeparator) {
      if (length(path) > kDriveLength) path[kDriveLength] = '\0';
    } else {
      const std::size_t n = length(path);
      if ((n == 0 || path[n - 1] != kDosSeparator) && n < kFullPathMax) {
        path[n] = kDosSeparator;
        path[n + 1] = '\0';
      }
    }
    appendCut(path, tail, kFullPathMax);
  }
  if (!untouchable) zu::platform::foldParentSteps(path);
  zu::os::upperInPlace(path);
}

void bosmpath(unsigned char* path) {
  unsigned char directory[zu::os::kNameBufferSize];
  bosgtcwd(directory, 1);
  std::size_t keep = 0;
  for (std::size_t i = 0; path[i] != '\0' && directory[i] != '\0' && path[i] == directory[i]; ++i) {
    // The backslash of a drive's root stays with what is cut off.
    if (path[i] == kDriveColon || (path[i] == kDosSeparator && i != kDriveLength)) keep = i + 1;
  }
  std::memmove(path, path + keep, length(path + keep) + 1);
}

void bosgtcwd(unsigned char* buffer, unsigned short addBackslash) {
  zu::platform::dos.currentDirectory(buffer, zu::os::kNameBufferSize);
  const std::size_t n = length(buffer);
  if (addBackslash != 0 && (n == 0 || buffer[n - 1] != kDosSeparator) && n < zu::os::kNameMax) {
    buffer[n] = kDosSeparator;
    buffer[n + 1] = '\0';
  }
}

ZuStatus bosstcwd(const unsigned char* path, unsigned short) {
  if (path[0] != '\0') zu::platform::dos.setCurrentDirectory(path);
  return ZU_OK;
}

void bosgetbl(const unsigned char* text, unsigned short* offset, unsigned char* line,
              unsigned short maxLength, short* result) {
  auto endsText = [](unsigned char c) { return c == '\0' || c == kEndOfFile; };
  auto isQuote = [](unsigned char c) { return c == '"' || c == '\''; };
  unsigned short at = *offset;
  if (endsText(text[at])) {
    *result = kEndOfText;
    return;
  }
  std::size_t i = 0;
  unsigned char outer = 0;
  unsigned char inner = 0;
  while (!endsText(text[at])) {
    const unsigned char c = text[at++];
    if (i == 1 && line[0] == kCommentStart && c != kLineFeed) continue;
    if (inner != 0) {
      if (c == inner) inner = 0;
    } else if (outer != 0) {
      if (c == outer) {
        outer = 0;
      } else if (isQuote(c)) {
        inner = c;
      }
    } else if (isQuote(c)) {
      outer = c;
    }
    line[i] = c;
    if (outer == 0 && inner == 0 && c == kLineFeed) {
      if (i > 0 && line[i - 1] == kCarriageReturn) --i;
      break;
    }
    if (++i > maxLength) {
      line[i - 1] = '\0';
      *result = kLineTooLong;
      return;
    }
  }
  line[i] = '\0';
  *offset = at;
  *result = static_cast<short>(i);
}

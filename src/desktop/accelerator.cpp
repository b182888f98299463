// Keyboard accelerators for dialog labels: which keys a dialog has given
// out, and where a new label's '&' goes.
#include <cstdint>
#include <cstring>

#include "desktop/helpers.h"
#include "platform/charset.h"
#include "strings/text_rules.h"

namespace {

constexpr std::size_t kTextSize = 256;  // a label's 255 characters and its NUL
constexpr unsigned char kMarker = '&';
constexpr unsigned kBitsPerByte = 8;

bool isTaken(const unsigned char* usedKeys, unsigned char c) {
  const unsigned char key = zu::platform::lowerCase(c);
  return (usedKeys[key / kBitsPerByte] & (1u << (key % kBitsPerByte))) != 0;
}

// The text with `argument` in place of its first %s conversion. Later
// conversions have no argument and stand for nothing; %% is a '%'; any
// other '%' is kept as written. Width, '-' and precision apply as printf's.
void format(unsigned char* out, const unsigned char* text, const unsigned char* argument) {
  std::size_t n = 0;
  auto put = [&](unsigned char c) {
    if (n + 1 < kTextSize) out[n++] = c;
  };
  bool argumentUsed = false;
  while (*text != 0) {
    if (*text != '%') {
      put(*text++);
      continue;
    }
    const unsigned char* conversion = text + 1;
    if (*conversion == '%') {
      put('%');
      text = conversion + 1;
      continue;
    }
    const bool left = *conversion == '-';
    if (left) ++conversion;
    std::size_t width = 0, precision = SIZE_MAX;
    while (zu::bytes::isDigit(*conversion)) width = width * 10 + (*conversion++ - '0');
    if (*conversion == '.') {
      precision = 0;
      ++conversion;
      while (zu::bytes::isDigit(*conversion)) precision = precision * 10 + (*conversion++ - '0');
    }
    if (*conversion != 's' && *conversion != 'S') {
      put(*text++);
      continue;
    }
    const unsigned char* value = argumentUsed ? reinterpret_cast<const unsigned char*>("") : argument;
    argumentUsed = true;
    std::size_t length = std::strlen(reinterpret_cast<const char*>(value));
    if (length > precision) length = precision;
    for (std::size_t pad = length; !left && pad < width; ++pad) put(' ');
    for (std::size_t i = 0; i < length; ++i) put(value[i]);
    for (std::size_t pad = length; left && pad < width; ++pad) put(' ');
    text = conversion + 1;
  }
  out[n] = 0;
}

}  // namespace

void setAcceleratorKey(unsigned char* usedKeys, unsigned char const* text) {
  const unsigned char* marker =
      reinterpret_cast<const unsigned char*>(std::strchr(reinterpret_cast<const char*>(text), kMarker));
  if (marker == nullptr) return;
  const unsigned char key = zu::platform::lowerCase(marker[1]);
  usedKeys[key / kBitsPerByte] |= static_cast<unsigned char>(1u << (key % kBitsPerByte));
}

void makeDialogText(unsigned char* usedKeys, unsigned char* text, unsigned char const* argument) {
  unsigned char built[kTextSize];
  if (argument == nullptr) {
    std::size_t n = 0;
    for (; n + 1 < kTextSize && text[n] != 0; ++n) built[n] = text[n];
    built[n] = 0;
  } else {
    format(built, text, argument);
  }
  const std::size_t length = std::strlen(reinterpret_cast<const char*>(built));
  if (std::memchr(built, kMarker, length) != nullptr) {
    std::memcpy(text, built, length + 1);
  } else {
    std::size_t place = 0;
    while (place < length && (zu::bytes::isWhiteSpace(built[place]) || isTaken(usedKeys, built[place]))) {
      ++place;
    }
    if (place == length) place = 0;
    std::memcpy(text, built, place);
    text[place] = kMarker;
    std::memcpy(text + place + 1, built + place, length - place + 1);
  }
  setAcceleratorKey(usedKeys, text);
}

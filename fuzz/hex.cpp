// Hexadecimal digits on arbitrary bytes: hexify and dehexify, forward and
// in place, into heap buffers of exactly the size each needs, so that the
// sanitizer reports any byte read or written past them. Decoding must
// refuse exactly the texts that hold a byte other than a hex digit, and
// undo encoding otherwise.
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "strings/hex.h"

namespace {

unsigned char* exactCopy(const uint8_t* from, size_t size, size_t room) {
  auto* copy = static_cast<unsigned char*>(std::malloc(room));
  if (size != 0) std::memcpy(copy, from, size);
  return copy;
}

int nibble(unsigned char c) {
  return std::isdigit(c) ? c - '0' : std::toupper(c) - 'A' + 10;
}

void checkDecoding(const uint8_t* data, size_t size) {
  const size_t half = (size + 1) / 2;
  unsigned char* text = exactCopy(data, size, size);
  unsigned char* bytes = static_cast<unsigned char*>(std::malloc(half));
  bool allHex = true;
  for (size_t i = 0; i < size; ++i) allHex = allHex && std::isxdigit(data[i]);
  const auto count = static_cast<std::uint32_t>(size);
  if (isHexString(text, count) != (allHex ? 1 : 0)) std::abort();
  if ((dehexify(bytes, text, count) == ZU_OK) != allHex) std::abort();
  if (allHex) {
    for (size_t i = 0; i < size; ++i) {
      const int got = i % 2 == 0 ? bytes[i / 2] >> 4 : bytes[i / 2] & 0xF;
      if (got != nibble(data[i])) std::abort();
    }
    if (size % 2 == 1 && (bytes[half - 1] & 0xF) != 0) std::abort();
    // In place, the digits turn into the same bytes.
    if (dehexifyHuge(text, text, count) != ZU_OK || std::memcmp(text, bytes, half) != 0) std::abort();
  }
  std::free(bytes);
  std::free(text);
}

void checkEncoding(const uint8_t* data, size_t size) {
  const auto count = static_cast<std::uint32_t>(size);
  unsigned char* src = exactCopy(data, size, size);
  unsigned char* digits = static_cast<unsigned char*>(std::malloc(2 * size));
  if (hexify(digits, src, count) != 2 * count) std::abort();
  for (size_t i = 0; i < 2 * size; ++i) {
    if (!std::isxdigit(digits[i]) || std::islower(digits[i])) std::abort();
  }
  unsigned char* inPlace = exactCopy(data, size, 2 * size);
  if (hexifyHuge(inPlace, inPlace, count) != 2 * count || std::memcmp(inPlace, digits, 2 * size) != 0) {
    std::abort();
  }
  unsigned char* back = static_cast<unsigned char*>(std::malloc(size));
  if (dehexify(back, digits, 2 * count) != ZU_OK || std::memcmp(back, data, size) != 0) std::abort();
  std::free(back);
  std::free(inPlace);
  std::free(digits);
  std::free(src);
}

void checkNumber(const uint8_t* data, size_t size) {
  if (size < 6) return;
  std::uint32_t value;
  std::memcpy(&value, data, sizeof value);
  const unsigned short width = static_cast<unsigned short>(data[4] | (data[5] & 0x3) << 8);
  unsigned significant = 0;
  for (std::uint32_t rest = value; rest != 0; rest >>= 4) ++significant;
  const unsigned want = significant > width ? significant : (width != 0 ? width : 1);
  auto* out = static_cast<unsigned char*>(std::malloc(want + 1));
  if (hexify(out, value, width) != want || out[want] != 0) std::abort();
  std::uint32_t back = 0;
  for (unsigned i = 0; i < want; ++i) back = back << 4 | static_cast<std::uint32_t>(nibble(out[i]));
  if (back != value) std::abort();
  std::free(out);
}

void checkTruth(const uint8_t* data, size_t size) {
  unsigned char* text = exactCopy(data, size, size + 1);
  text[size] = 0;
  const unsigned char a = text[0];
  const bool want = a == '1' || a == 'T' || a == 't' ||
                    ((a == 'O' || a == 'o') && (text[1] == 'N' || text[1] == 'n'));
  if (isTrueStr(text) != (want ? 1 : 0)) std::abort();
  std::free(text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1) return 0;
  const uint8_t mode = data[0] % 4;
  ++data;
  --size;
  switch (mode) {
    case 0: checkDecoding(data, size); break;
    case 1: checkEncoding(data, size); break;
    case 2: checkNumber(data, size); break;
    default: checkTruth(data, size); break;
  }
  return 0;
}

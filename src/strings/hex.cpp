// Hexadecimal digits of numbers and bytes, and their decoding.
#include "strings/hex.h"

#include "frame/from_above.h"
#include "strings/string_messages.h"

namespace {

constexpr unsigned char kDigits[] = "0123456789ABCDEF";
constexpr unsigned kNibbleBits = 4;
constexpr unsigned kNibbleMask = 0xF;
constexpr unsigned kDigitsPerByte = 2;
constexpr int kDecimalDigits = 10;

// The value of a hex digit of either case, or -1.
int nibbleOf(unsigned char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + kDecimalDigits;
  if (c >= 'a' && c <= 'f') return c - 'a' + kDecimalDigits;
  return -1;
}

void hexifyByte(unsigned char* dst, unsigned char byte) {
  dst[0] = kDigits[byte >> kNibbleBits];
  dst[1] = kDigits[byte & kNibbleMask];
}

}  // namespace

std::uint32_t hexify(unsigned char* dst, std::uint32_t value, unsigned short width) {
  // Count first, then write from the low end straight into place: a wide
  // field needs no scratch buffer of a fixed size.
  std::uint32_t count = 0;
  for (std::uint32_t rest = value; rest != 0; rest >>= kNibbleBits) ++count;
  if (count < width) count = width;
  if (count == 0) count = 1;
  dst[count] = 0;
  for (std::uint32_t i = count; i != 0; --i) {
    dst[i - 1] = kDigits[value & kNibbleMask];
    value >>= kNibbleBits;
  }
  return count;
}

std::uint32_t hexify(unsigned char* dst, const unsigned char* src, std::uint32_t count) {
  if (dst == src) {
    // In place: from the last byte, so each byte is read before the digits
    // of later bytes reach it.
    for (std::uint32_t i = count; i != 0; --i) hexifyByte(dst + kDigitsPerByte * (i - 1), src[i - 1]);
  } else {
    for (std::uint32_t i = 0; i < count; ++i) hexifyByte(dst + kDigitsPerByte * i, src[i]);
  }
  return kDigitsPerByte * count;
}

std::uint32_t hexifyHuge(unsigned char* dst, const unsigned char* src, std::uint32_t count) {
  return hexify(dst, src, count);
}

ZuStatus dehexify(unsigned char* dst, const unsigned char* src, std::uint32_t count) {
  bool high = true;
  for (std::uint32_t i = 0; i < count; ++i) {
    const int nibble = nibbleOf(src[i]);
    if (nibble < 0) {
      zu::recordFailure(zu::msg::kHexInvalid);
      return ZU_ERROR;
    }
    if (high) {
      *dst = static_cast<unsigned char>(nibble << kNibbleBits);
    } else {
      *dst = static_cast<unsigned char>(*dst + nibble);
      ++dst;
    }
    high = !high;
  }
  return ZU_OK;
}

ZuStatus dehexifyHuge(unsigned char* dst, const unsigned char* src, std::uint32_t count) {
  return dehexify(dst, src, count);
}

unsigned short isHexString(const unsigned char* text, std::uint32_t count) {
  for (std::uint32_t i = 0; i < count; ++i) {
    if (nibbleOf(text[i]) < 0) return 0;
  }
  return 1;
}

unsigned short isTrueStr(const unsigned char* text) {
  if (text == nullptr) return 0;
  const unsigned char first = text[0];
  if (first == '1' || first == 'T' || first == 't') return 1;
  // The second byte is read only behind a first byte that is not the NUL.
  if (first == 'O' || first == 'o') return text[1] == 'N' || text[1] == 'n';
  return 0;
}

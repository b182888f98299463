// Decimal conversion. Text to number runs on one reader over an optionally
// counted text, so the counted form needs no scratch copy and never reads
// past its count.
#include <cstdint>

#include "frame/from_above.h"
#include "strings/convert.h"
#include "strings/substring.h"
#include "strings/string_messages.h"
#include "strings/text_rules.h"

namespace {

using zu::bytes::isDigit;
using zu::bytes::isWhiteSpace;
using zu::bytes::kBlank;

// The most digits a 32-bit value has, and the most bytes a signed one takes.
constexpr int kMaxDigits = 10;
constexpr int kDecimalBase = 10;

// Above this, one more digit passes 4294967295; at it, only digits 0 to 5.
constexpr std::uint32_t kLastSafeAccumulator = 429496729;
constexpr unsigned char kLargestLastDigit = '5';

constexpr std::uint32_t kSignBit = 0x80000000u;
// The magnitude of the lowest i32, the one value whose top bit is allowed.
constexpr std::uint32_t kLowestMagnitude = 0x80000000u;

constexpr std::uint32_t kU16Max = 65535;
constexpr std::uint32_t kU8Max = 255;
constexpr std::int32_t kI16Min = -32768;
constexpr std::int32_t kI16Max = 32767;
constexpr std::int32_t kCharMin = -128;
constexpr std::int32_t kCharMax = 127;

// Quotients of the fixed-width field are 16 bits wide.
using FieldQuotient = std::uint16_t;
constexpr unsigned char kOverflowMark = '*';


// A text that ends at its NUL, or at `end` when that is not null.
struct Reader {
  const unsigned char* at;
  const unsigned char* end;

  bool done() const { return at == end || *at == 0; }
  unsigned char peek() const { return done() ? 0 : *at; }
  // The text from `from` to its end, for a message.
  ZuSubString restFrom(const unsigned char* from) const {
    const unsigned char* stop = from;
    while (stop != end && *stop != 0) ++stop;
    return ZuSubString(from, static_cast<std::uint32_t>(stop - from));
  }
};

ZuStatus refuse(unsigned short id, const ZuSubString& quoted) {
  zu::recordFailure(id, quoted.getBytes(), quoted.getLength());
  return ZU_ERROR;
}

// The u32 form on a reader; everything else is built on it.
ZuStatus readUnsigned(Reader text, std::uint32_t* value) {
  while (!text.done() && (isWhiteSpace(*text.at) || *text.at == '+')) ++text.at;
  // What a refusal quotes: from here to the end of the text.
  const unsigned char* quoted = text.at;
  std::uint32_t accumulator = 0;
  while (!text.done() && isDigit(*text.at)) {
    const unsigned char digit = *text.at;
    if (accumulator > kLastSafeAccumulator ||
        (accumulator == kLastSafeAccumulator && digit > kLargestLastDigit)) {
      return refuse(zu::msg::kNumberTooLarge, text.restFrom(quoted));
    }
    accumulator = accumulator * kDecimalBase + static_cast<std::uint32_t>(digit - '0');
    ++text.at;
  }
  while (!text.done() && isWhiteSpace(*text.at)) ++text.at;
  if (!text.done()) return refuse(zu::msg::kNumberInvalid, text.restFrom(quoted));
  *value = accumulator;
  return ZU_OK;
}

ZuStatus readSigned(Reader text, std::int32_t* value) {
  while (!text.done() && isWhiteSpace(*text.at)) ++text.at;
  const bool negative = text.peek() == '-';
  if (negative) ++text.at;
  const unsigned char* afterSign = text.at;
  std::uint32_t magnitude = 0;
  if (readUnsigned(text, &magnitude) != ZU_OK) return ZU_ERROR;
  if ((magnitude & kSignBit) != 0 && !(negative && magnitude == kLowestMagnitude)) {
    return refuse(zu::msg::kNumberTooLarge, text.restFrom(afterSign));
  }
  // Negation modulo 2^32 gives the lowest value its own bits.
  *value = static_cast<std::int32_t>(negative ? 0u - magnitude : magnitude);
  return ZU_OK;
}

template <typename Narrow>
ZuStatus readNarrowUnsigned(Reader text, Narrow* value, std::uint32_t largest) {
  std::uint32_t wide = 0;
  if (readUnsigned(text, &wide) != ZU_OK) return ZU_ERROR;
  if (wide > largest) return refuse(zu::msg::kNumberTooLarge, text.restFrom(text.at));
  *value = static_cast<Narrow>(wide);
  return ZU_OK;
}

template <typename Narrow>
ZuStatus readNarrowSigned(Reader text, Narrow* value, std::int32_t lowest, std::int32_t highest) {
  std::int32_t wide = 0;
  if (readSigned(text, &wide) != ZU_OK) return ZU_ERROR;
  if (wide < lowest || wide > highest) {
    return refuse(zu::msg::kNumberTooLarge, text.restFrom(text.at));
  }
  *value = static_cast<Narrow>(wide);
  return ZU_OK;
}

Reader untilNul(const unsigned char* text) { return Reader{text, nullptr}; }

}  // namespace

unsigned short convert(unsigned char* dst, std::uint32_t value) {
  unsigned char reversed[kMaxDigits];
  int count = 0;
  do {
    reversed[count++] = static_cast<unsigned char>('0' + value % kDecimalBase);
    value /= kDecimalBase;
  } while (value != 0);
  for (int i = 0; i < count; ++i) dst[i] = reversed[count - 1 - i];
  dst[count] = 0;
  return static_cast<unsigned short>(count);
}

unsigned short convert(unsigned char* dst, std::int32_t value) {
  if (value >= 0) return convert(dst, static_cast<std::uint32_t>(value));
  *dst = '-';
  return static_cast<unsigned short>(1 + convert(dst + 1, 0u - static_cast<std::uint32_t>(value)));
}

unsigned short convert(unsigned char* dst, unsigned short width, std::uint32_t value,
                       unsigned short leftAlign) {
  for (unsigned short i = 0; i < width; ++i) dst[i] = kBlank;
  dst[width] = 0;
  unsigned char* at = dst;
  int positions = width;
  if (width > kMaxDigits) {
    if (leftAlign == 0) at += width - kMaxDigits;
    positions = kMaxDigits;
  }
  // The power of ten of the highest position; none at all for width 0.
  std::uint32_t power = positions != 0 ? 1 : 0;
  for (int i = 1; i < positions; ++i) power *= kDecimalBase;
  unsigned short written = 0;
  for (; power != 0; power /= kDecimalBase) {
    const auto quotient = static_cast<FieldQuotient>(value / power);
    if (written == 0 && quotient == 0) {
      if (leftAlign == 0) ++at;
      continue;
    }
    if (quotient >= kDecimalBase) {
      for (unsigned char* last = dst + width - 1; at < last; ++at) *at = kOverflowMark;
      return 0;
    }
    *at++ = static_cast<unsigned char>('0' + quotient);
    ++written;
    value %= power;
  }
  return written;
}

ZuStatus convert(const unsigned char* text, std::uint32_t* value) {
  return readUnsigned(untilNul(text), value);
}

ZuStatus convert(const unsigned char* text, std::int32_t* value) {
  return readSigned(untilNul(text), value);
}

ZuStatus convert(const unsigned char* text, unsigned short* value) {
  return readNarrowUnsigned(untilNul(text), value, kU16Max);
}

ZuStatus convert(const unsigned char* text, short* value) {
  return readNarrowSigned(untilNul(text), value, kI16Min, kI16Max);
}

ZuStatus convert(const unsigned char* text, unsigned char* value) {
  return readNarrowUnsigned(untilNul(text), value, kU8Max);
}

ZuStatus convert(const unsigned char* text, char* value) {
  return readNarrowSigned(untilNul(text), value, kCharMin, kCharMax);
}

ZuStatus convert(const unsigned char* text, unsigned short length, unsigned short* value) {
  return readNarrowUnsigned(Reader{text, text + length}, value, kU16Max);
}

// Decimal conversion on arbitrary bytes. Every text goes into a heap buffer
// of exactly its size (with its NUL, or without one for the counted form),
// so the sanitizer reports any read past it; every answer is checked
// against a reading of the rules written here from scratch.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "strings/convert.h"

namespace {

enum Target : uint8_t { kU32, kI32, kU16, kI16, kU8, kChar, kCounted, kToText, kTargets };

constexpr long long kTooLarge = 1LL << 40;  // any magnitude past every range
constexpr unsigned kMaxDigits = 10;

bool isWhite(unsigned char c) { return c == ' ' || (c >= 9 && c <= 13); }

// The u32 rules: blanks and '+' signs, digits, blanks, the end. Returns
// false for a refusal; the magnitude saturates so that overflow shows.
bool readUnsigned(const std::string& text, size_t at, long long* value) {
  while (at < text.size() && (isWhite(text[at]) || text[at] == '+')) ++at;
  long long v = 0;
  for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
    v = v * 10 + (text[at] - '0');
    if (v > 4294967295LL) v = kTooLarge;
  }
  while (at < text.size() && isWhite(text[at])) ++at;
  *value = v;
  return at == text.size() && v <= 4294967295LL;
}

bool readSigned(const std::string& text, long long* value) {
  size_t at = 0;
  while (at < text.size() && isWhite(text[at])) ++at;
  const bool negative = at < text.size() && text[at] == '-';
  long long magnitude = 0;
  if (!readUnsigned(text, at + (negative ? 1 : 0), &magnitude)) return false;
  *value = negative ? -magnitude : magnitude;
  return *value >= -2147483648LL && *value <= 2147483647LL;
}

unsigned char* exactCopy(const uint8_t* from, size_t size, bool terminate) {
  auto* copy = static_cast<unsigned char*>(std::malloc(size + (terminate ? 1 : 0)));
  if (size != 0) std::memcpy(copy, from, size);
  if (terminate) copy[size] = 0;
  return copy;
}

template <typename T>
void checkText(const unsigned char* text, const std::string& reading, bool isSigned, long long lowest,
               long long highest) {
  const T sentinel = static_cast<T>(0x5A);
  T target = sentinel;
  const ZuStatus status = convert(text, &target);
  long long want = 0;
  const bool ok = (isSigned ? readSigned(reading, &want) : readUnsigned(reading, 0, &want)) &&
                  want >= lowest && want <= highest;
  if ((status == ZU_OK) != ok) std::abort();
  if (ok ? static_cast<long long>(target) != want : target != sentinel) std::abort();
}

// The fixed-width field, independently: blanks, then the digits at the
// right (or left) when they fit in at most ten positions, else '*' in all
// bytes but the last. Values whose top quotient passes 16 bits wrap and are
// not judged here.
void checkField(std::uint32_t value, unsigned short width, unsigned short left) {
  auto* field = static_cast<unsigned char*>(std::malloc(width + 1u));
  const unsigned short digits = convert(field, width, value, left);
  const unsigned positions = width < kMaxDigits ? width : kMaxDigits;
  std::uint64_t top = 1;
  for (unsigned i = 1; i < positions; ++i) top *= 10;
  if (field[width] != 0) std::abort();
  if (positions != 0 && value / top <= 0xFFFF) {
    std::string want(width, ' ');
    const std::string text = std::to_string(value);
    if (value == 0) {
      // no digit at all: the field stays blank
    } else if (text.size() > positions) {
      want.replace(0, width - 1, width - 1, '*');
    } else {
      want.replace(left != 0 ? 0 : width - text.size(), text.size(), text);
    }
    const unsigned wantDigits = value != 0 && text.size() <= positions ? text.size() : 0;
    if (want != std::string(reinterpret_cast<char*>(field), width) || digits != wantDigits) std::abort();
  }
  std::free(field);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1) return 0;
  const uint8_t target = data[0] % kTargets;
  ++data;
  --size;
  if (target == kToText) {
    if (size < 7) return 0;
    std::uint32_t value;
    std::memcpy(&value, data, sizeof value);
    unsigned char out[12];
    char want[16];
    std::snprintf(want, sizeof want, "%u", static_cast<unsigned>(value));
    if (convert(out, value) != std::strlen(want) || std::strcmp(reinterpret_cast<char*>(out), want) != 0) {
      std::abort();
    }
    std::snprintf(want, sizeof want, "%d", static_cast<int>(static_cast<std::int32_t>(value)));
    if (convert(out, static_cast<std::int32_t>(value)) != std::strlen(want) ||
        std::strcmp(reinterpret_cast<char*>(out), want) != 0) {
      std::abort();
    }
    std::int32_t back = 0;
    if (convert(out, &back) != ZU_OK || back != static_cast<std::int32_t>(value)) std::abort();
    const unsigned short width = static_cast<unsigned short>(data[4] % 24);
    checkField(value, width, data[5] & 1);
    return 0;
  }
  if (target == kCounted) {
    if (size < 1) return 0;
    const unsigned short length = static_cast<unsigned short>(data[0] <= size - 1 ? data[0] : size - 1);
    unsigned char* text = exactCopy(data + 1, length, false);
    std::string reading(reinterpret_cast<const char*>(text), length);
    reading = reading.substr(0, reading.find('\0'));
    unsigned short value = 0x5A;
    long long want = 0;
    const bool ok = readUnsigned(reading, 0, &want) && want <= 65535;
    const ZuStatus status = convert(text, length, &value);
    if ((status == ZU_OK) != ok || (ok ? value != want : value != 0x5A)) std::abort();
    std::free(text);
    return 0;
  }
  unsigned char* text = exactCopy(data, size, true);
  const std::string reading(reinterpret_cast<const char*>(text));
  switch (target) {
    case kU32: checkText<std::uint32_t>(text, reading, false, 0, 4294967295LL); break;
    case kI32: checkText<std::int32_t>(text, reading, true, -2147483648LL, 2147483647LL); break;
    case kU16: checkText<unsigned short>(text, reading, false, 0, 65535); break;
    case kI16: checkText<short>(text, reading, true, -32768, 32767); break;
    case kU8: checkText<unsigned char>(text, reading, false, 0, 255); break;
    case kChar: checkText<char>(text, reading, true, -128, 127); break;
    default: break;
  }
  std::free(text);
  return 0;
}

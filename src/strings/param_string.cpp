// Template filling. Each value is one replaceSubString over the whole text,
// so a value that itself holds a later marker is filled in turn.
#include "strings/param_string.h"

#include <cstdint>

#include "memory/ram.h"
#include "strings/bytes.h"
#include "strings/convert.h"

namespace {

constexpr unsigned char kMarkerStart = '%';
constexpr unsigned char kTextKind = 's';
constexpr unsigned char kNumberKind = 'n';
// From this number on the marker carries an 'x' before its digits.
constexpr std::uint16_t kFirstLongMarker = 10;
constexpr unsigned char kLongMarkerSign = 'x';
// '%', kind, 'x', five digits of a 16-bit count, NUL.
constexpr int kMarkerRoom = 9;
// Ten digits, a sign and a NUL.
constexpr int kNumberRoom = 12;

std::uint32_t formMarker(unsigned char* marker, unsigned char kind, std::uint16_t number) {
  unsigned char* at = marker;
  *at++ = kMarkerStart;
  *at++ = kind;
  if (number >= kFirstLongMarker) *at++ = kLongMarkerSign;
  at += convert(at, std::uint32_t{number});
  return static_cast<std::uint32_t>(at - marker);
}

void dropText(ZuParamString& s) {
  if (s.ownsBuffer != 0) ramFree(s.bytes);
  s.bytes = nullptr;
  s.length = 0;
  s.paramCount = 0;
}

// Counts the value, then puts `value` (`n` bytes) in place of its marker.
ZuStatus substitute(ZuParamString& s, unsigned char kind, const unsigned char* value,
                    std::uint32_t n) {
  unsigned char marker[kMarkerRoom];
  const std::uint32_t markerLength = formMarker(marker, kind, ++s.paramCount);
  // A null replacement of length 0 deletes: an empty value is no NUL-measured text.
  if (s.replaceSubString(marker, markerLength, n != 0 ? value : nullptr, n) != ZU_OK) {
    s.failed = 1;
    return ZU_ERROR;
  }
  return ZU_OK;
}

}  // namespace

ZuParamString::~ZuParamString() = default;

ZuStatus ZuParamString::initialize(const unsigned char* text) {
  dropText(*this);
  // No text is an empty template.
  static constexpr unsigned char kEmpty[] = "";
  const ZuStatus status = ZuString::initialize(text != nullptr ? text : kEmpty);
  if (status != ZU_OK) length = 0;
  failed = status != ZU_OK;
  return status;
}

ZuStatus ZuParamString::initialize(const unsigned char* text, std::uint32_t n) {
  dropText(*this);
  const ZuStatus status = ZuString::initialize(text, n);
  if (status != ZU_OK) length = 0;
  failed = status != ZU_OK;
  return status;
}

ZuStatus ZuParamString::initialize(std::uint32_t n) {
  dropText(*this);
  const ZuStatus status = ZuString::initialize(n);
  failed = status != ZU_OK;
  return status;
}

ZuStatus ZuParamString::setParam(const unsigned char* text) {
  return substitute(*this, kTextKind, text, text != nullptr ? BUTSTLEN(text) : 0);
}

ZuStatus ZuParamString::setParam(const ZuSubString& text) {
  return substitute(*this, kTextKind, text.bytes, text.length);
}

ZuStatus ZuParamString::setParam(std::uint32_t value) {
  unsigned char digits[kNumberRoom];
  return substitute(*this, kNumberKind, digits, convert(digits, value));
}

ZuStatus ZuParamString::setParam(std::int32_t value) {
  unsigned char digits[kNumberRoom];
  return substitute(*this, kNumberKind, digits, convert(digits, value));
}

ZuStatus ZuParamString::setQuotedParam(const unsigned char* text, unsigned char quote) {
  ZuString quoted;
  if (quoted.initialize(text) != ZU_OK || quoted.addQuotes(quote) != ZU_OK) {
    failed = 1;
    return ZU_ERROR;
  }
  return setParam(static_cast<const ZuSubString&>(quoted));
}

ZuParamString& ZuParamString::operator<<(const unsigned char* text) {
  if (failed == 0) setParam(text);
  return *this;
}

ZuParamString& ZuParamString::operator<<(std::uint32_t value) {
  if (failed == 0) setParam(value);
  return *this;
}

ZuParamString& ZuParamString::operator<<(std::int32_t value) {
  if (failed == 0) setParam(value);
  return *this;
}

ZuParamString& ZuParamString::operator<<(const ZuSubString& text) {
  if (failed == 0) setParam(text);
  return *this;
}

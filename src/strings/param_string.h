// ZuParamString: a template text whose numbered markers take values in the
// order they are set. The k-th value replaces every "%s<k>" (a text) or
// "%n<k>" (a number); from the tenth on the marker is "%sx<k>" / "%nx<k>",
// so "%s1" never matches inside a tenth marker. Values count across both
// kinds, and a marker absent from the text still takes its number.
//
// `failed` turns the chaining operator<< into a no-op after the first
// failure, so a whole chain can run on after memory ran out. The direct
// setParam calls do not look at it.
#ifndef ZUUTL_STRINGS_PARAM_STRING_H
#define ZUUTL_STRINGS_PARAM_STRING_H

#include <cstdint>

#include "frame/api.h"
#include "frame/status.h"
#include "strings/string.h"

// Invariants: paramCount is the marker number of the last value set, 0
// after initialize or resetParams. failed, once set, stays set until the
// next initialize.
class ZU_API ZuParamString : public ZuString {
 public:
  ZuParamString() = default;
  ~ZuParamString() override;

  // Unlike ZuString's, these drop the text held first and restart the count.
  // A failure leaves an empty text without a buffer and sets `failed`.
  ZuStatus initialize(const unsigned char* text);
  ZuStatus initialize(const unsigned char* text, std::uint32_t n);
  ZuStatus initialize(std::uint32_t n);

  ZuStatus setParam(const unsigned char* text);
  // An empty view replaces the marker by nothing.
  ZuStatus setParam(const ZuSubString& text);
  ZuStatus setParam(std::uint32_t value);
  ZuStatus setParam(std::int32_t value);
  // The value quoted with `quote`, its quote bytes doubled.
  ZuStatus setQuotedParam(const unsigned char* text, unsigned char quote);

  ZuParamString& operator<<(const unsigned char* text);
  ZuParamString& operator<<(std::uint32_t value);
  ZuParamString& operator<<(std::int32_t value);
  ZuParamString& operator<<(const ZuSubString& text);

  // The next value is number 1 again: an appended template numbers its own
  // markers.
  void resetParams() { paramCount = 0; }

  std::uint16_t paramCount = 0;
  std::uint32_t failed : 1 = 0;
};

#endif

// ZuError: one detail of a failure, kept on an error list. A number (for the
// library's own errors the id of a catalogue row), a text with parameter
// markers, and codes a client may set.
//
// Two shared static records stand in when no real record can be had: one
// for "out of memory" (number 30190) and one that swallows parameters. They
// are never deleted and never changed: operator<< and appendText leave them
// as they are, so they need no lock and no memory.
#ifndef ZUUTL_ERRORS_ERROR_H
#define ZUUTL_ERRORS_ERROR_H

#include <cstdint>

#include "containers/list.h"
#include "frame/api.h"
#include "strings/param_string.h"
#include "strings/substring.h"

enum ErrorType : std::uint32_t {
  ZU_ERROR_TYPE_ERROR = 0,  // so is any value other than a warning
  ZU_ERROR_TYPE_WARNING = 1,
};

enum ErrorsMix : std::uint32_t {
  ZU_MIX_NONE = 0,
  ZU_MIX_BOTH = 1,
  ZU_MIX_ERRORS = 2,
  ZU_MIX_WARNINGS = 3,
};

// Invariants: kStatic is set only on the two shared records, with
// kMemoryError or kNullError beside it; their text stays empty, in a byte of
// their own. Any other record owns its text's buffer, and whoever holds the
// record (its list, once added) deletes it.
class ZU_API ZuError : public ZuNode {
 public:
  // Bits of `flags`.
  static constexpr std::uint32_t kWarning = 1u << 0;
  static constexpr std::uint32_t kStatic = 1u << 1;
  static constexpr std::uint32_t kMemoryError = 1u << 2;
  static constexpr std::uint32_t kNullError = 1u << 3;
  // Room for a five-character state code and its NUL.
  static constexpr int kStateTextSize = 6;

  // A text that cannot be copied leaves the record with an empty text; the
  // allocator has recorded why.
  ZuError(unsigned short number, const unsigned char* text, ErrorType type,
          unsigned short auxCode, std::int32_t nativeCode);
  ~ZuError() override;

  void appendText(const unsigned char* more);

  // Sets the next parameter of the text. A failure hands back the record
  // that swallows parameters, so the rest of a chain goes nowhere.
  ZuError& operator<<(const unsigned char* text);
  ZuError& operator<<(std::uint32_t value);
  ZuError& operator<<(std::int32_t value);
  ZuError& operator<<(const ZuSubString& text);

  unsigned short getNumber() const { return number; }
  ZuParamString& getText() { return text; }
  std::int32_t getNativeCode() const { return nativeCode; }
  unsigned short getAuxCode() const { return auxCode; }
  const char* getStateText() const { return stateText; }
  int isWarning() const { return (flags & kWarning) != 0 ? 1 : 0; }
  int isStatic() const { return (flags & kStatic) != 0 ? 1 : 0; }
  int isMemoryError() const { return (flags & kMemoryError) != 0 ? 1 : 0; }
  int isNullError() const { return (flags & kNullError) != 0 ? 1 : 0; }

  unsigned short number;
  ZuParamString text;
  std::uint32_t flags;
  std::int32_t nativeCode;
  unsigned short auxCode;
  char stateText[kStateTextSize];
  // Bit 0 is cleared by the constructor; the rest belongs to clients.
  std::uint32_t clientFlags;
};

#endif

// ZuString: a view that holds its own buffer (or a borrowed one) and grows
// it on demand, exactly to fit, up to a buffer of 65487 bytes. The text is
// NUL-terminated only after the operations that say so; a reader who needs
// a terminator asks getCString.
//
// Growth may move the buffer, so views into a string go stale when it grows.
// A string belongs to one thread at a time.
//
// The number forms of concat take 32-bit values; a char argument promotes to
// the signed form and appends digits, so pass a byte as unsigned char.
#ifndef ZUUTL_STRINGS_STRING_H
#define ZUUTL_STRINGS_STRING_H

#include <cstdint>

#include "frame/api.h"
#include "frame/status.h"
#include "strings/substring.h"

// Invariants: while bytes is non-null, length < capacity, so the NUL always
// fits; without a buffer capacity means nothing. ownsBuffer decides whether
// the destructor and unInitialize free bytes; a borrowed buffer never grows.
// Growth never makes a buffer larger than kMaxBuffer (string.cpp).
class ZU_API ZuString : public ZuSubString {
 public:
  ZuString() = default;
  ~ZuString() override;
  // One owner per buffer.
  ZuString(const ZuString&) = delete;
  ZuString& operator=(const ZuString&) = delete;

  // For a string without a buffer (see unInitialize). None of them tests the
  // growth limit, and each sets the length before it allocates: after a
  // failure the buffer is null and the length is the one asked for.
  // A copy of the NUL-terminated `text`, NUL-terminated.
  ZuStatus initialize(const unsigned char* text);
  // A copy of `n` bytes, not NUL-terminated.
  ZuStatus initialize(const unsigned char* text, std::uint32_t n);
  ZuStatus initialize(const ZuSubString& other);
  // Empty, with room for `n` bytes of text.
  ZuStatus initialize(std::uint32_t n);
  // Uses `buffer` of `capacity` bytes (the terminator's byte counted), holding
  // `length` bytes of text, without copying. It never grows.
  void initializeWithBuffer(unsigned char* buffer, std::uint32_t capacity, std::uint32_t length);
  // Frees an owned buffer and forgets the text. Whether the string owns its
  // next buffer is left as it was.
  void unInitialize();
  void clear() { length = 0; }

  // 1 when `n` more bytes and a NUL fit in the buffer.
  int hasRoom(std::uint32_t n) const;
  // Grows the buffer to exactly the length, `n` and a NUL, if they do not fit.
  ZuStatus ensureRoom(std::uint32_t n);
  // Writes a NUL behind the text and returns `bytes + offset`. A string
  // without a buffer gets an empty one; null if that is refused.
  unsigned char* getCString(std::uint32_t offset = 0);

  ZuStatus concat(unsigned char byte);
  ZuStatus concat(const unsigned char* text);
  ZuStatus concat(const unsigned char* src, std::uint32_t n);
  ZuStatus concat(const ZuSubString& other);
  // Decimal digits; asks room for 15 bytes whatever the value.
  ZuStatus concat(std::uint32_t value);
  ZuStatus concat(std::int32_t value);

  // Replaces `oldLength` bytes at `offset` by `newLength` new ones and writes
  // a NUL behind the text. A zero `newLength` with non-null `newBytes` means
  // the NUL-terminated `newBytes`; null `newBytes` with a non-zero length
  // opens a gap; null with 0 deletes.
  ZuStatus changeBytes(std::uint32_t offset, std::uint32_t oldLength,
                       const unsigned char* newBytes, std::uint32_t newLength);
  // Replaces every occurrence of `old`, left to right; replacement text is
  // not searched again. A failure midway keeps the replacements made.
  ZuStatus replaceSubString(const unsigned char* old, std::uint32_t oldLength,
                            const unsigned char* replacement, std::uint32_t newLength);
  // The same with measured texts; a null `replacement` deletes.
  ZuStatus replaceSubString(const unsigned char* old, const unsigned char* replacement);
  // `part` is a view into this string.
  ZuStatus replaceSubString(const ZuSubString* part, const unsigned char* replacement,
                            unsigned short newLength);

  // Quotes the text in place, doubling each `quote` byte; NUL-terminated.
  ZuStatus addQuotes(unsigned short quote);
  // Undoes a quoting in place; NUL-terminated.
  void removeQuotes();
  // Appends `src` quoted; NUL-terminated.
  ZuStatus addQuotedBytes(const ZuSubString& src, unsigned short quote);

  // Appends CR LF until the text ends in at least `count` of them.
  ZuStatus forceEol(int count);
  // Folds a text longer than `width` at blanks outside quotes, each such
  // blank becoming CR LF. `width` is a target: a line with no blank runs on.
  // Quote bytes are tracked only when `quote1` is not 0.
  ZuStatus insertLineBreaks(std::uint32_t width, unsigned char quote1, unsigned char quote2,
                            unsigned char quote3);
  // Each run of CR LF outside quotes becomes one blank, or nothing at the
  // end of the text.
  ZuStatus removeLineBreaks(unsigned char quote1, unsigned char quote2, unsigned char quote3);

  std::uint32_t capacity = 0;
  std::uint32_t ownsBuffer = 1;

 private:
  ZuStatus resize(std::uint32_t size);
};

#endif

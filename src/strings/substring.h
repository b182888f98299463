// ZuSubString: a view of bytes, a pointer and a 32-bit length, owning
// nothing. The bytes need not end in a NUL and may hold NULs; the length
// decides. Whoever made the bytes keeps them alive while the view is used.
#ifndef ZUUTL_STRINGS_SUBSTRING_H
#define ZUUTL_STRINGS_SUBSTRING_H

#include <cstdint>

#include "frame/api.h"
#include "frame/object.h"
#include "frame/status.h"

class ZuString;

// Invariants: the view is the `length` bytes at `bytes`; it owns and frees
// nothing, so copies share the same bytes.
class ZU_API ZuSubString : public ZuObject {
 public:
  ZuSubString() = default;
  // A view never writes through its pointer; it takes read-only bytes too.
  ZuSubString(const unsigned char* bytes, std::uint32_t length)
      : length(length), bytes(const_cast<unsigned char*>(bytes)) {}
  // A NUL-terminated text, measured in 16 bits as the byte layer measures.
  explicit ZuSubString(const unsigned char* text);
  ZuSubString(const ZuSubString& other) = default;
  ZuSubString& operator=(const ZuSubString& other) = default;
  ~ZuSubString() override;

  std::uint32_t getLength() const { return length; }
  unsigned char* getBytes(std::uint32_t offset = 0) const { return bytes + offset; }
  void setBytes(unsigned char* newBytes, std::uint32_t newLength) {
    bytes = newBytes;
    length = newLength;
  }

  // Case-insensitive order of two views; `other` must be a ZuSubString.
  short compare(const ZuObject* other) const override;

  // Offset of the first `ch` at or after `start`, else the length.
  std::uint32_t findChar(unsigned short ch, std::uint32_t start = 0) const;
  // Offset of the first whole occurrence of the NUL-terminated `pattern` at
  // or after `start`, byte-exact, else the length. An empty pattern is
  // never found.
  std::uint32_t findSubString(const unsigned char* pattern, std::uint32_t start = 0) const;
  // How many bytes equal `ch`; the count runs in 16 bits.
  std::uint32_t countChar(unsigned short ch) const;
  // The sum of the first five bytes, a to z taken as upper case: the same
  // for any key, and weak by design.
  std::uint32_t hash() const;
  // Index of the first member of `set` equal to the view, else `count`.
  unsigned short indexInSet(const unsigned char** set, unsigned short count) const;
  unsigned short indexInSetCi(const unsigned char** set, unsigned short count) const;
  // Drops trailing white space from the view; the bytes stay.
  void rightBlankTrim();

  // The view holds a quoted text; its content is appended to `target`.
  ZuStatus copyQuotedStr(ZuString* target) const;
  // The content of the quoted text in the view, and a NUL; returns `dst`.
  unsigned char* getCopyUnquoted(unsigned char* dst) const;
  // The view quoted with ' whatever `quote` says, and a NUL; returns `dst`.
  unsigned char* getCopyQuoted(unsigned char* dst, unsigned short quote) const;

  std::uint32_t length = 0;
  unsigned char* bytes = nullptr;
};

#endif

// ZuReplaceString: a cursor that rewrites a ZuString in one pass, inside its
// own buffer. Output is written at the front of the buffer, input is read
// from behind it; between them lies a gap of free bytes that widens (by the
// needed bytes and a slack) only when output would catch up with input.
//
// Invariants: `bytes` = target's bytes + readOffset, `length` = unread
// bytes, writeOffset <= readOffset. While the rewrite runs the target's own
// length is stale; the destructor makes the target whole again, and until
// then nobody else may use it.
#ifndef ZUUTL_STRINGS_REPLACE_STRING_H
#define ZUUTL_STRINGS_REPLACE_STRING_H

#include <cstdint>
#include <cstring>

#include "frame/api.h"
#include "frame/status.h"
#include "strings/string.h"
#include "strings/substring.h"

class ZU_API ZuReplaceString : public ZuSubString {
 public:
  // A null target makes a cursor that does nothing when it ends.
  explicit ZuReplaceString(ZuString* target)
      : ZuSubString(target != nullptr ? target->bytes : nullptr,
                    target != nullptr ? target->length : 0),
        target(target) {}
  ZuReplaceString(const ZuReplaceString&) = delete;
  ZuReplaceString& operator=(const ZuReplaceString&) = delete;
  // Ends the rewrite: closes the gap and fits the buffer to the text.
  ~ZuReplaceString() override;

  // Appends `n` bytes to the output; `src` may lie anywhere in the target.
  // A failure changes nothing.
  ZuStatus addBytes(const unsigned char* src, std::uint32_t n);
  ZuStatus addByte(unsigned char byte) { return addBytes(&byte, 1); }
  // Appends `n` bytes quoted with `quote`, its quote bytes doubled.
  ZuStatus addQuotedBytes(const unsigned char* src, std::uint32_t n, unsigned char quote);

  // Moves `n` input bytes (at most `length`) to the output unchanged; free
  // of copying while no gap is open.
  void passBytes(std::uint32_t n) {
    if (readOffset != writeOffset) std::memmove(target->bytes + writeOffset, bytes, n);
    consume(n);
    writeOffset += n;
  }
  // Drops `n` input bytes (at most `length`), widening the gap.
  void skipBytes(std::uint32_t n) { consume(n); }
  // Turns the output written since writeOffset was `mark` back into input.
  void unreadOutput(std::uint32_t mark) {
    const std::uint16_t k = static_cast<std::uint16_t>(writeOffset - mark);
    if (readOffset != writeOffset) std::memmove(bytes - k, target->bytes + mark, k);
    writeOffset = mark;
    readOffset -= k;
    bytes -= k;
    length += k;
  }

  ZuString* target;
  std::uint32_t writeOffset = 0;
  std::uint32_t readOffset = 0;

 private:
  void consume(std::uint32_t n) {
    readOffset += n;
    bytes += n;
    length -= n;
  }
};

#endif

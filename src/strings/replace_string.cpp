// One-pass rewriting. Widening moves the unread input up once by the bytes
// needed plus a slack, so a run of small insertions shifts the tail rarely.
#include "strings/replace_string.h"

#include <cstdint>

#include "memory/ram.h"
#include "strings/mem_words.h"

namespace {

// Added at each widening over what the present call needs.
constexpr std::uint32_t kGapSlack = 512;
constexpr std::uint32_t kU32Max = 0xFFFFFFFFu;

}  // namespace

ZuStatus ZuReplaceString::addBytes(const unsigned char* src, std::uint32_t n) {
  if (readOffset - writeOffset < n) {
    ZuString& t = *target;
    t.length = readOffset + length;
    // Where `src` lies decides how it is found again if the buffer moves.
    enum class Home { Foreign, Input, Output } home = Home::Foreign;
    std::uint32_t distance = 0;
    if (bytes != nullptr && src >= bytes && src <= bytes + length) {
      home = Home::Input;
      distance = static_cast<std::uint32_t>(src - bytes);
    } else if (t.bytes != nullptr && src >= t.bytes && src <= t.bytes + writeOffset) {
      home = Home::Output;
      distance = static_cast<std::uint32_t>(src - t.bytes);
    }
    // A request too large to widen for is refused by ensureRoom's limit.
    const std::uint32_t grow = n > kU32Max - kGapSlack ? kU32Max : n + kGapSlack;
    if (t.ensureRoom(grow) != ZU_OK) return ZU_ERROR;
    bytes = t.bytes + readOffset;
    std::memmove(bytes + grow, bytes, length);
    readOffset += grow;
    bytes += grow;
    if (home == Home::Input) src = bytes + distance;
    if (home == Home::Output) src = t.bytes + distance;
  }
  zu::memCopy(target->bytes + writeOffset, src, n);
  writeOffset += n;
  return ZU_OK;
}

ZuStatus ZuReplaceString::addQuotedBytes(const unsigned char* src, std::uint32_t n,
                                         unsigned char quote) {
  // The text goes through the output and back to the input first, so it is
  // safe wherever it lay, even in the part a widening moves.
  const std::uint32_t mark = writeOffset;
  if (addBytes(src, n) != ZU_OK) return ZU_ERROR;
  unreadOutput(mark);
  if (addByte(quote) != ZU_OK) return ZU_ERROR;
  for (std::uint32_t i = 0; i < n; ++i) {
    if (*bytes == quote && addByte(quote) != ZU_OK) return ZU_ERROR;
    passBytes(1);
  }
  return addByte(quote);
}

ZuReplaceString::~ZuReplaceString() {
  if (target == nullptr) return;
  ZuString& t = *target;
  t.length = writeOffset + length;
  if (writeOffset == readOffset) return;
  std::memmove(t.bytes + writeOffset, bytes, length);
  // A borrowed buffer is the lender's to size.
  if (t.ownsBuffer == 0) return;
  void* block = t.bytes;
  if (ramResize(&block, t.length + 1) == ZU_OK) {
    t.bytes = static_cast<unsigned char*>(block);
    t.capacity = t.length + 1;
  }
}

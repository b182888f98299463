// Growing strings. Every buffer comes from the task's heap and grows exactly
// to fit: callers that build long texts reserve once rather than paying a
// reallocation per append.
#include <cstdint>

#include "frame/from_above.h"
#include "memory/ram.h"
#include "strings/bytes.h"
#include "strings/convert.h"
#include "strings/mem_words.h"
#include "strings/string.h"
#include "strings/string_messages.h"

namespace {

// Growth stops here; the message of the refusal rounds it to 65500.
constexpr std::uint32_t kMaxBuffer = 65487;
// Room asked by the number forms of concat, whatever the value.
constexpr std::uint32_t kNumberRoom = 15;
// Slack reserved beyond the text when folding adds line breaks.
constexpr std::uint32_t kFoldSlack = 100;

constexpr unsigned char kBlank = ' ';
constexpr unsigned char kCarriageReturn = '\r';
constexpr unsigned char kLineFeed = '\n';
constexpr unsigned char kLineEnd[] = {kCarriageReturn, kLineFeed};
constexpr std::uint32_t kLineEndLength = sizeof kLineEnd;
// Opening and closing quote.
constexpr std::uint32_t kQuotePair = 2;

// Follows the current quote byte through a text: the same byte closes it,
// any of the three opens one, even inside another.
struct QuoteTracker {
  unsigned char quote1, quote2, quote3;
  unsigned char open = 0;

  QuoteTracker(unsigned char q1, unsigned char q2, unsigned char q3)
      : quote1(q1), quote2(q2), quote3(q3) {}
  void see(unsigned char c) {
    if (quote1 == 0) return;
    if (open != 0 && open == c) {
      open = 0;
    } else if (c == quote1 || c == quote2 || c == quote3) {
      open = c;
    }
  }
  bool inside() const { return open != 0; }
};

bool isLineEnd(const unsigned char* at) { return at[0] == kCarriageReturn && at[1] == kLineFeed; }

}  // namespace

ZuString::~ZuString() {
  if (ownsBuffer != 0) ramFree(bytes);
}

ZuStatus ZuString::initialize(const unsigned char* text) {
  length = BUTSTLEN(text);
  void* buffer = ramAllocZ(length + 1);
  if (buffer == nullptr) return ZU_ERROR;
  bytes = static_cast<unsigned char*>(buffer);
  capacity = length + 1;
  ownsBuffer = 1;
  BUTMEMCP(bytes, text, static_cast<unsigned short>(length));
  return ZU_OK;
}

ZuStatus ZuString::initialize(const unsigned char* text, std::uint32_t n) {
  length = n;
  void* buffer = ramAlloc(n + 1);
  if (buffer == nullptr) return ZU_ERROR;
  bytes = static_cast<unsigned char*>(buffer);
  capacity = n + 1;
  ownsBuffer = 1;
  // The byte layer's 16-bit count: texts of this library stay below 64 KiB.
  BUTMEMCP(bytes, text, static_cast<unsigned short>(n));
  return ZU_OK;
}

ZuStatus ZuString::initialize(const ZuSubString& other) {
  return initialize(other.bytes, other.length);
}

ZuStatus ZuString::initialize(std::uint32_t n) {
  length = 0;
  void* buffer = ramAlloc(n + 1);
  if (buffer == nullptr) return ZU_ERROR;
  bytes = static_cast<unsigned char*>(buffer);
  capacity = n + 1;
  ownsBuffer = 1;
  return ZU_OK;
}

void ZuString::initializeWithBuffer(unsigned char* buffer, std::uint32_t newCapacity,
                                    std::uint32_t newLength) {
  ownsBuffer = 0;
  bytes = buffer;
  capacity = newCapacity;
  length = newLength;
}

void ZuString::unInitialize() {
  if (ownsBuffer != 0) ramFree(bytes);
  bytes = nullptr;
  length = 0;
}

int ZuString::hasRoom(std::uint32_t n) const {
  // Summed in 64 bits, so a huge `n` cannot wrap into "fits".
  return bytes != nullptr &&
         std::uint64_t{length} + n + 1 <= std::uint64_t{capacity};
}

ZuStatus ZuString::ensureRoom(std::uint32_t n) {
  if (hasRoom(n)) return ZU_OK;
  const std::uint64_t need = std::uint64_t{length} + n + 1;
  return resize(need > kMaxBuffer ? kMaxBuffer + 1 : static_cast<std::uint32_t>(need));
}

ZuStatus ZuString::resize(std::uint32_t size) {
  if (size > kMaxBuffer || ownsBuffer == 0) {
    zu::recordFailure(zu::msg::kStringTooLarge);
    return ZU_ERROR;
  }
  if (bytes == nullptr) {
    void* buffer = ramAlloc(size);
    if (buffer == nullptr) return ZU_ERROR;
    bytes = static_cast<unsigned char*>(buffer);
  } else {
    void* buffer = bytes;
    if (ramResize(&buffer, size) != ZU_OK) return ZU_ERROR;
    bytes = static_cast<unsigned char*>(buffer);
  }
  capacity = size;
  return ZU_OK;
}

unsigned char* ZuString::getCString(std::uint32_t offset) {
  if (bytes == nullptr) {
    // No buffer means no text, whatever a failed initialize left in length.
    length = 0;
    if (ensureRoom(0) != ZU_OK) return nullptr;
  }
  // Written only when missing, so a shared empty text is never written to.
  if (bytes[length] != 0) bytes[length] = 0;
  return bytes + offset;
}

ZuStatus ZuString::concat(unsigned char byte) {
  if (ensureRoom(1) != ZU_OK) return ZU_ERROR;
  bytes[length++] = byte;
  return ZU_OK;
}

ZuStatus ZuString::concat(const unsigned char* text) {
  return concat(text, text != nullptr ? BUTSTLEN(text) : 0);
}

ZuStatus ZuString::concat(const unsigned char* src, std::uint32_t n) {
  // Appending part of the string to itself: growth may move the buffer, so
  // the source is found again by its offset.
  const bool own = bytes != nullptr && src >= bytes && src < bytes + capacity;
  const std::uint32_t offset = own ? static_cast<std::uint32_t>(src - bytes) : 0;
  if (ensureRoom(n) != ZU_OK) return ZU_ERROR;
  if (own) src = bytes + offset;
  BUTMEMCP(bytes + length, src, static_cast<unsigned short>(n));
  length += n;
  return ZU_OK;
}

ZuStatus ZuString::concat(const ZuSubString& other) { return concat(other.bytes, other.length); }

ZuStatus ZuString::concat(std::uint32_t value) {
  if (ensureRoom(kNumberRoom) != ZU_OK) return ZU_ERROR;
  length += convert(bytes + length, value);
  return ZU_OK;
}

ZuStatus ZuString::concat(std::int32_t value) {
  if (ensureRoom(kNumberRoom) != ZU_OK) return ZU_ERROR;
  length += convert(bytes + length, value);
  return ZU_OK;
}

ZuStatus ZuString::changeBytes(std::uint32_t offset, std::uint32_t oldLength,
                               const unsigned char* newBytes, std::uint32_t newLength) {
  if (newBytes != nullptr && newLength == 0) newLength = BUTSTLEN(newBytes);
  // A string without a buffer gets one, for the NUL at least.
  if (newLength > oldLength || bytes == nullptr) {
    if (ensureRoom(newLength > oldLength ? newLength - oldLength : 0) != ZU_OK) return ZU_ERROR;
  }
  if (newLength != oldLength && offset + oldLength < length) {
    const auto tail = static_cast<unsigned short>(length - offset - oldLength);
    unsigned char* from = bytes + offset + oldLength;
    unsigned char* to = bytes + offset + newLength;
    if (newLength < oldLength) {
      BUTMEMCP(to, from, tail);
    } else {
      BUTMMCPD(to, from, tail);
    }
  }
  if (newBytes != nullptr && newLength != 0) zu::memCopy(bytes + offset, newBytes, newLength);
  length += newLength - oldLength;
  bytes[length] = 0;
  return ZU_OK;
}

ZuStatus ZuString::replaceSubString(const unsigned char* old, std::uint32_t oldLength,
                                    const unsigned char* replacement, std::uint32_t newLength) {
  // As changeBytes reads it, so that the search resumes behind the text
  // actually put in.
  if (replacement != nullptr && newLength == 0) newLength = BUTSTLEN(replacement);
  std::uint32_t position = 0;
  while (position < length) {
    const std::uint32_t found = findSubString(old, position);
    if (found == length) return ZU_OK;
    if (changeBytes(found, oldLength, replacement, newLength) != ZU_OK) return ZU_ERROR;
    position = found + newLength;
  }
  return ZU_OK;
}

ZuStatus ZuString::replaceSubString(const unsigned char* old, const unsigned char* replacement) {
  return replaceSubString(old, BUTSTLEN(old), replacement,
                          replacement != nullptr ? BUTSTLEN(replacement) : 0);
}

ZuStatus ZuString::replaceSubString(const ZuSubString* part, const unsigned char* replacement,
                                    unsigned short newLength) {
  return changeBytes(static_cast<std::uint32_t>(part->bytes - bytes), part->length, replacement,
                     newLength);
}

ZuStatus ZuString::addQuotes(unsigned short quote) {
  // The quoted text is written over the original, so it is read from a copy.
  ZuString original;
  if (original.initialize(bytes, length) != ZU_OK) return ZU_ERROR;
  if (ensureRoom(countChar(quote) + kQuotePair) != ZU_OK) return ZU_ERROR;
  unsigned char* end = strCopyQuoted(bytes, original.bytes, original.length, quote);
  length = static_cast<std::uint32_t>(end - bytes);
  return ZU_OK;
}

void ZuString::removeQuotes() {
  if (bytes == nullptr) return;
  unsigned char* end = strCopyUnquoted(bytes, bytes, length);
  length = static_cast<std::uint32_t>(end - bytes);
}

ZuStatus ZuString::addQuotedBytes(const ZuSubString& src, unsigned short quote) {
  if (ensureRoom(src.length + src.countChar(quote) + kQuotePair) != ZU_OK) return ZU_ERROR;
  unsigned char* end = strCopyQuoted(bytes + length, src.bytes, src.length, quote);
  length = static_cast<std::uint32_t>(end - bytes);
  return ZU_OK;
}

ZuStatus ZuString::forceEol(int count) {
  int present = 0;
  for (std::uint32_t end = bytes != nullptr ? length : 0;
       end >= kLineEndLength && isLineEnd(bytes + end - kLineEndLength); end -= kLineEndLength) {
    ++present;
  }
  for (; present < count; ++present) {
    if (concat(kLineEnd, kLineEndLength) != ZU_OK) return ZU_ERROR;
  }
  return ZU_OK;
}

ZuStatus ZuString::insertLineBreaks(std::uint32_t width, unsigned char quote1,
                                    unsigned char quote2, unsigned char quote3) {
  if (length <= width || bytes == nullptr) return ZU_OK;
  ZuString folded;
  if (folded.ensureRoom(length + kFoldSlack) != ZU_OK) return ZU_ERROR;
  bytes[length] = 0;
  QuoteTracker quotes(quote1, quote2, quote3);
  // Offsets: where the present line starts, and its last blank outside
  // quotes. A blank at the very start of a line is no break point.
  std::uint32_t lineStart = 0;
  std::uint32_t lastBreak = 0;
  std::uint32_t lineLength = 0;
  std::uint32_t at = 0;
  for (; bytes[at] != 0; ++at) {
    const unsigned char c = bytes[at];
    ++lineLength;
    quotes.see(c);
    if (!quotes.inside() && c == kBlank) lastBreak = at;
    if (lineLength > width && lastBreak > lineStart) {
      if (folded.concat(bytes + lineStart, lastBreak - lineStart) != ZU_OK ||
          folded.concat(kLineEnd, kLineEndLength) != ZU_OK) {
        return ZU_ERROR;
      }
      lineStart = lastBreak + 1;
      lineLength = at + 1 - lineStart;
    }
  }
  if (folded.concat(bytes + lineStart, at - lineStart) != ZU_OK) return ZU_ERROR;
  clear();
  return concat(folded);
}

ZuStatus ZuString::removeLineBreaks(unsigned char quote1, unsigned char quote2,
                                    unsigned char quote3) {
  if (bytes == nullptr) return ZU_OK;
  ZuString joined;
  if (joined.ensureRoom(length) != ZU_OK) return ZU_ERROR;
  bytes[length] = 0;
  QuoteTracker quotes(quote1, quote2, quote3);
  std::uint32_t segmentStart = 0;
  bool changed = false;
  std::uint32_t at = 0;
  while (bytes[at] != 0) {
    quotes.see(bytes[at]);
    if (quotes.inside() || !isLineEnd(bytes + at)) {
      ++at;
      continue;
    }
    changed = true;
    if (joined.concat(bytes + segmentStart, at - segmentStart) != ZU_OK) return ZU_ERROR;
    at += kLineEndLength;
    segmentStart = at;
    // One blank stands for a whole run of line ends, and none ends the text.
    if (bytes[at] != 0 && !isLineEnd(bytes + at)) {
      if (joined.concat(kBlank) != ZU_OK) return ZU_ERROR;
    }
  }
  if (!changed) return ZU_OK;
  if (joined.concat(bytes + segmentStart) != ZU_OK) return ZU_ERROR;
  clear();
  return concat(joined);
}

// The older tokenizer on arbitrary bytes. Two bytes of flags (the mode
// folded to 0-7, so that 7 stands for every mode beyond the six), then the
// text up to its first NUL, in a heap buffer of exactly that size. The
// token buffer is exactly what the mode allows: 80 bytes, or the text's
// size in the unlimited modes 4 and 6; so the sanitizer sees any read past
// the NUL or write past the buffer. Each call must succeed with a token no
// longer than the bytes it consumed and within its limit, or fail with the
// cursor unchanged; the text is cut to its end, and the heap holds no more
// blocks afterwards than before.
#include "parsing/buttoken.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "errors/keeper.h"
#include "frame/thread.h"
#include "memory/heap.h"
#include "memory/ram.h"

namespace {

constexpr size_t kFlagBytes = 2;
constexpr unsigned kModeBits = 0x0FFF;
constexpr unsigned kModes = 8;
constexpr size_t kTokenSize = 80;
constexpr size_t kLimit = 79;
constexpr size_t kAddressAt = 2;

void check(bool holds) {
  if (!holds) std::abort();
}

std::uint32_t blocksInUse() {
  std::uint32_t n = 0;
  for (zu::heap::RamSegment* s = zu::heap::head(); s != nullptr; s = s->nextSegment) {
    n += s->blocksInUse;
  }
  return n;
}

void cutAll(const unsigned char* text, size_t textSize, unsigned short flags) {
  const unsigned mode = flags & kModeBits;
  const bool unlimited = mode == 4 || mode == 6;
  const size_t tokenSize = unlimited ? textSize + 1 : kTokenSize;
  auto* token = static_cast<unsigned char*>(std::malloc(tokenSize));
  const unsigned char* cursor = text;
  for (;;) {
    std::memset(token, 0, tokenSize);
    const unsigned char* before = cursor;
    if (buttoken(token, &cursor, flags) != ZU_OK) {
      check(cursor == before);
      check(ZuErrorKeeper::getLastError() != nullptr);
      break;
    }
    check(cursor >= before && cursor <= text + textSize);
    const size_t consumed = static_cast<size_t>(cursor - before);
    unsigned char* block = nullptr;
    if (!unlimited) std::memcpy(&block, token + kAddressAt, sizeof block);
    if (!unlimited && token[1] == 0 && block != nullptr) {
      check((flags & BUT_TOKEN_ALLOCATE) != 0);
      const size_t length = std::strlen(reinterpret_cast<const char*>(block));
      check(length >= kLimit && length <= consumed && length < ramSize(block));
      ramFree(block);
      continue;
    }
    const size_t length = std::strlen(reinterpret_cast<const char*>(token));
    check(length < tokenSize && length <= consumed);
    check(unlimited || length <= kLimit);
    if (length == 0) {
      check(*cursor == 0);
      break;
    }
    check(consumed > 0);
  }
  std::free(token);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < kFlagBytes) return 0;
  static const bool threadReady = mdsPerThreadInit() == 1;
  check(threadReady);
  const unsigned raw = static_cast<unsigned>(data[0]) << 8 | data[1];
  const auto flags = static_cast<unsigned short>((raw & ~kModeBits) | (raw & kModeBits) % kModes);
  const auto* body = data + kFlagBytes;
  const size_t textSize = strnlen(reinterpret_cast<const char*>(body), size - kFlagBytes);
  auto* text = static_cast<unsigned char*>(std::malloc(textSize + 1));
  std::memcpy(text, body, textSize);
  text[textSize] = 0;
  const std::uint32_t blocksBefore = blocksInUse();
  {
    ZuErrorList errors;
    ZuErrorKeeper::setErrorList(&errors);
    cutAll(text, textSize, flags);
    ZuErrorKeeper::giveUpErrorList();
  }
  check(blocksInUse() == blocksBefore);
  std::free(text);
  return 0;
}

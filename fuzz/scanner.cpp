// The scanner on arbitrary bytes. A header picks the options, the character
// sets and a phrase; the rest is the text, in a heap buffer of exactly its
// size so that the sanitizer reports any read past it. Every token must lie
// inside the text, in order, and read the same again after unGetToken;
// phrase matching and rewriting through an owner must keep the same rules,
// and the heap must hold no more blocks afterwards than before.
#include "parsing/scanner.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "memory/heap.h"

namespace {

// Header: flags, modes, block pair, three set lengths, phrase length.
constexpr size_t kHeader = 8;
enum Flag : uint8_t {
  kParens = 1,
  kBraces = 2,
  kComments = 4,
  kBlock = 8,
  kNoQuote1 = 16,
  kRewrite = 32,
  kDelimited = 64,
  kMatchCi = 128,
};
constexpr unsigned kSearchTypes = 3;
constexpr uint8_t kSetMask = 3;  // sets of at most three bytes keep texts readable
constexpr uint8_t kPhraseMask = 15;
constexpr unsigned kEveryNth = 7;  // how often a token is rewritten

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

// A token is a view of the scan text at its offset, ending at or before
// the position.
void checkToken(const ZuScanner& s, const ZuToken& t) {
  check(t.offset <= s.scanLength && t.length <= s.scanLength - t.offset);
  check(t.offset + t.length <= s.position && s.position <= s.scanLength);
  check(t.length == 0 || t.bytes == s.scanBytes + t.offset);
  check(t.type != ZU_TOKEN_END || (t.length == 0 && t.offset == s.scanLength));
  check(t.type == ZU_TOKEN_END || t.type == ZU_TOKEN_NONE || t.length != 0);
}

struct Input {
  uint8_t flags, modes, open, close;
  const uint8_t* sets[3];
  size_t setSizes[3];
  const uint8_t* phrase;
  size_t phraseSize;
  const uint8_t* text;
  size_t textSize;
};

bool split(const uint8_t* data, size_t size, Input* in) {
  if (size < kHeader) return false;
  in->flags = data[0];
  in->modes = data[1];
  in->open = data[2];
  in->close = data[3];
  size_t at = kHeader;
  for (int i = 0; i < 3; ++i) {
    in->setSizes[i] = data[4 + i] & kSetMask;
    if (in->setSizes[i] > size - at) return false;
    in->sets[i] = data + at;
    at += in->setSizes[i];
  }
  in->phraseSize = data[7] & kPhraseMask;
  if (in->phraseSize > size - at) return false;
  in->phrase = data + at;
  at += in->phraseSize;
  in->text = data + at;
  in->textSize = size - at;
  return true;
}

void configure(ZuScanner& s, const Input& in) {
  s.parenBlocks = (in.flags & kParens) != 0;
  s.braceBlocks = (in.flags & kBraces) != 0;
  s.comments = (in.flags & kComments) != 0;
  if ((in.flags & kBlock) != 0) {
    s.blockOpen = in.open;
    s.blockClose = in.close;
  }
  if ((in.flags & kNoQuote1) != 0) s.quote1 = 0;
  s.wordStartChars.concat(in.sets[0], static_cast<std::uint32_t>(in.setSizes[0]));
  s.wordPartChars.concat(in.sets[1], static_cast<std::uint32_t>(in.setSizes[1]));
  s.delimiterChars.concat(in.sets[2], static_cast<std::uint32_t>(in.setSizes[2]));
}

// Reads to the end, the search type of each read drawn from `modes`, and
// with kDelimited every other read a delimited field at the `open` byte.
// Each token is read twice, and each is matched against the phrase.
void readAll(ZuScanner& s, const Input& in, const unsigned char* phrase) {
  ZuToken t, again;
  unsigned modes = in.modes;
  for (std::uint32_t n = 0;; ++n) {
    const auto type = static_cast<SearchType>(modes % kSearchTypes);
    modes = modes / kSearchTypes + n;
    const bool delimited = (in.flags & kDelimited) != 0 && n % 2 == 1;
    const auto read = [&](ZuToken& into) {
      if (delimited) {
        s.getDelimitedToken(into, in.open);
      } else {
        s.getToken(into, type);
      }
    };
    const std::uint32_t before = s.position;
    read(t);
    checkToken(s, t);
    const std::uint32_t after = s.position;
    check(t.type == ZU_TOKEN_END || t.type == ZU_TOKEN_NONE || after > before);
    s.unGetToken(t);
    read(again);
    check(again.type == t.type && again.offset == t.offset && again.length == t.length);
    check(s.position == after);
    if (t.type == ZU_TOKEN_END) return;
    if (t.type == ZU_TOKEN_NONE) {
      // An empty field leaves its delimiter to be read.
      check(delimited && after == t.offset && t.offset < s.scanLength);
      s.getToken(t, type);
      checkToken(s, t);
      continue;
    }
    const unsigned match =
        (in.flags & kMatchCi) != 0 ? s.isEqualCi(t, phrase) : s.isEqual(t, phrase);
    check(match <= 1);
    check(match == 1 ? s.position >= after : s.position == after);
    checkToken(s, t);
  }
}

// Rewrites every few tokens through the owner and reads on; the text
// must stay consistent with the owner and the position with the text.
void rewriteAll(ZuScanner& s, const Input& in) {
  ZuString owner;
  if (owner.initialize(in.text, static_cast<std::uint32_t>(in.textSize)) != ZU_OK) return;
  s.setScanString(&owner);
  const ZuSubString replacement(in.phrase, static_cast<std::uint32_t>(in.phraseSize));
  ZuToken t;
  for (unsigned n = 0; s.getToken(t), t.type != ZU_TOKEN_END; ++n) {
    if (n % kEveryNth == 1) {
      const std::uint32_t oldLength = owner.length;
      if (s.changeToken(&t, replacement) == ZU_OK) {
        check(owner.length == oldLength - t.length + replacement.length);
      }
    } else if (n % kEveryNth == 3) {
      const ZuToken before = t;
      if (s.insertToken(&t, replacement) == ZU_OK) {
        check(t.offset == before.offset + replacement.length && t.length == before.length);
        check(t.bytes == owner.bytes + t.offset);
      }
    }
    check(s.scanBytes == owner.bytes && s.scanLength == owner.length);
    check(s.position <= s.scanLength);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input in;
  if (!split(data, size, &in)) return 0;
  const std::uint32_t blocksBefore = blocksInUse();
  auto* text = static_cast<unsigned char*>(std::malloc(in.textSize));
  if (in.textSize != 0) std::memcpy(text, in.text, in.textSize);
  // Phrases are NUL-terminated; a NUL inside one just ends it early.
  auto* phrase = static_cast<unsigned char*>(std::malloc(in.phraseSize + 1));
  if (in.phraseSize != 0) std::memcpy(phrase, in.phrase, in.phraseSize);
  phrase[in.phraseSize] = 0;
  {
    ZuScanner s(text, static_cast<std::uint32_t>(in.textSize));
    configure(s, in);
    readAll(s, in, phrase);
    s.setScanString(text, static_cast<std::uint32_t>(in.textSize));
    const unsigned found =
        (in.flags & kMatchCi) != 0 ? s.isTokenWithinCi(phrase) : s.isTokenWithin(phrase);
    check(found == 1 ? s.position <= s.scanLength : found == 0 && s.position == s.scanLength);
    if ((in.flags & kRewrite) != 0) rewriteAll(s, in);
  }
  check(blocksInUse() == blocksBefore);
  std::free(phrase);
  std::free(text);
  return 0;
}

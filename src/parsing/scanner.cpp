// Reading tokens: one pass over the text with one byte of lookahead. Every
// read is bounded by the text's length, so no input reads past it.
#include "parsing/scanner.h"

#include <cstring>

#include "parsing/scan_rules.h"
#include "strings/bytes.h"

namespace {

using namespace zu::scan;

// A rewrite may move the owner's buffer.
void refreshFromOwner(ZuScanner& scanner) {
  scanner.scanBytes = scanner.owner != nullptr ? scanner.owner->bytes : nullptr;
  scanner.scanLength = scanner.owner != nullptr ? scanner.owner->length : 0;
}

// A cursor over the scan text.
struct Reader {
  const unsigned char* text;
  std::uint32_t length;
  std::uint32_t pos;

  bool atEnd() const { return pos >= length; }
  // The next byte, not read; kEndOfText at the end.
  unsigned peek() const { return pos < length ? text[pos] : kEndOfText; }
};

bool inSet(const ZuString& set, unsigned b) {
  return set.length != 0 && b < kEndOfText &&
         std::memchr(set.bytes, static_cast<int>(b), set.length) != nullptr;
}

bool isQuote(const ZuScanner& s, unsigned b) {
  return b == s.quote1 || b == s.quote2 || b == s.quote3;
}

// The view of `length` bytes at `offset`; a scanner without text gives null.
void place(ZuToken& token, const unsigned char* text, std::uint32_t offset, std::uint32_t length,
           std::uint32_t type) {
  token.setBytes(text != nullptr ? const_cast<unsigned char*>(text) + offset : nullptr, length);
  token.offset = offset;
  token.type = type;
}

// After an opening quote: up to the closing one, a doubled quote staying
// inside. False when the text ends first.
bool scanQuoted(Reader& r, unsigned quote) {
  while (quote < kEndOfText && r.pos < r.length) {
    const void* hit = std::memchr(r.text + r.pos, static_cast<int>(quote), r.length - r.pos);
    if (hit == nullptr) break;
    r.pos = static_cast<std::uint32_t>(static_cast<const unsigned char*>(hit) - r.text) + 1;
    if (r.peek() != quote) return true;
    ++r.pos;
  }
  r.pos = r.length;
  return false;
}

// After an opening bracket: up to the bracket that closes it. Only this
// pair counts, and quoted texts inside are skipped whole, brackets and all.
bool scanBlock(const ZuScanner& s, Reader& r, unsigned open, unsigned close) {
  std::uint32_t depth = 1;
  while (depth != 0) {
    if (r.atEnd()) return false;
    const unsigned b = r.text[r.pos++];
    if (isQuote(s, b) && !scanQuoted(r, b)) return false;
    if (b == open) {
      ++depth;
    } else if (b == close) {
      --depth;
    }
  }
  return true;
}

// After `--`: up to a line feed, which is read but left outside. Returns
// where the comment ends.
std::uint32_t scanLineComment(Reader& r) {
  const void* hit = std::memchr(r.text + r.pos, kLineFeed, r.length - r.pos);
  if (hit == nullptr) {
    r.pos = r.length;
    return r.length;
  }
  const auto end = static_cast<std::uint32_t>(static_cast<const unsigned char*>(hit) - r.text);
  r.pos = end + 1;
  return end;
}

// After `/*`: up to a `*/` whose star is not the opening one; no nesting.
void scanBlockComment(Reader& r) {
  bool afterStar = false;
  while (r.pos < r.length) {
    const unsigned char b = r.text[r.pos++];
    if (b == kSlash && afterStar) return;
    afterStar = b == kStar;
  }
}

// The kind that a first byte starts, for the kinds that run on; NONE when
// the byte is left to the operator table.
std::uint32_t startKind(const ZuScanner& s, unsigned c, unsigned c2, SearchType searchType) {
  if (searchType == ZU_SEARCH_BARE && !hasClass(c, kInBareSet)) return ZU_TOKEN_BARE;
  if (searchType == ZU_SEARCH_HASH_NAME && (hasClass(c, kWordStart) || c == kHashSign)) {
    return ZU_TOKEN_HASH_NAME;
  }
  if (s.delimiterChars.length != 0 && !inSet(s.delimiterChars, c)) return ZU_TOKEN_WORD;
  if (hasClass(c, kWordStart) || inSet(s.wordStartChars, c)) return ZU_TOKEN_WORD;
  if (hasClass(c, kDigit)) return ZU_TOKEN_NUMBER;
  if (c == kPoint && hasClass(c2, kDigit)) return ZU_TOKEN_REAL;
  return ZU_TOKEN_NONE;
}

bool wordTakes(const ZuScanner& s, unsigned b) {
  if (s.delimiterChars.length != 0) return !inSet(s.delimiterChars, b) || hasClass(b, kWhite);
  return hasClass(b, kWordPart) || inSet(s.wordPartChars, b);
}

// Extends a token while its kind takes the next byte. A number that meets a
// point becomes real, and a real that stops before the end becomes a number
// again: only a real at the very end of the text keeps its kind.
void continueToken(const ZuScanner& s, Reader& r, std::uint32_t& kind) {
  if (kind == ZU_TOKEN_WORD && s.delimiterChars.length == 0 && s.wordPartChars.length == 0) {
    while (r.pos < r.length && hasClass(r.text[r.pos], kWordPart)) ++r.pos;
    return;
  }
  for (; r.pos < r.length; ++r.pos) {
    const unsigned b = r.text[r.pos];
    bool takes = false;
    switch (kind) {
      case ZU_TOKEN_WORD:
        takes = wordTakes(s, b);
        break;
      case ZU_TOKEN_NUMBER:
        if (b == kPoint) kind = ZU_TOKEN_REAL;
        takes = b == kPoint || hasClass(b, kDigit);
        break;
      case ZU_TOKEN_REAL:
        takes = hasClass(b, kDigit);
        if (!takes) kind = ZU_TOKEN_NUMBER;
        break;
      case ZU_TOKEN_BARE:
        takes = !hasClass(b, kBareStop);
        break;
      default:  // ZU_TOKEN_HASH_NAME
        takes = hasClass(b, kWordPart) || b == kHashSign || b == kDollarSign || wordTakes(s, b);
        break;
    }
    if (!takes) return;
  }
}

// The first entry for `c`, then its pairs in table order.
std::uint32_t readOperator(Reader& r, unsigned c, unsigned c2) {
  unsigned entry = kOperatorIndex[c];
  if (entry == kOperatorCount) return ZU_TOKEN_OTHER;
  for (++entry; kOperators[entry].first == c && kOperators[entry].second != 0; ++entry) {
    if (kOperators[entry].second == c2) {
      ++r.pos;
      return pairCode(c, c2);
    }
  }
  return c;
}

}  // namespace

ZuToken::~ZuToken() = default;

ZuScanner::ZuScanner() = default;

ZuScanner::ZuScanner(const unsigned char* text, std::uint32_t length)
    : scanBytes(text), scanLength(length) {}

ZuScanner::ZuScanner(const unsigned char* text)
    : scanBytes(text), scanLength(text != nullptr ? BUTSTLEN(text) : 0) {}

ZuScanner::ZuScanner(const ZuSubString* text)
    : scanBytes(text != nullptr ? text->bytes : nullptr),
      scanLength(text != nullptr ? text->length : 0) {}

ZuScanner::ZuScanner(ZuSubString& text) : scanBytes(text.bytes), scanLength(text.length) {}

ZuScanner::ZuScanner(ZuString* text) { setScanString(text); }

ZuScanner::~ZuScanner() = default;

void ZuScanner::setScanString(const unsigned char* text, std::uint32_t length) {
  scanBytes = text;
  scanLength = length;
  position = 0;
  owner = nullptr;
}

void ZuScanner::setScanString(ZuString* text) {
  owner = text;
  position = 0;
  refreshFromOwner(*this);
}


void ZuScanner::getToken(ZuToken& token, std::uint32_t offset, std::uint32_t length) {
  place(token, scanBytes, offset, length, ZU_TOKEN_NONE);
}

void ZuScanner::unGetToken(ZuToken& token) { position = token.offset; }

void ZuScanner::getToken(ZuToken& token, SearchType searchType) {
  Reader r{scanBytes, scanLength, position};
  if (wordStartChars.length == 0) {
    while (r.pos < r.length && hasClass(r.text[r.pos], kWhite)) ++r.pos;
  } else {
    while (r.pos < r.length && hasClass(r.text[r.pos], kWhite) &&
           !inSet(wordStartChars, r.text[r.pos])) {
      ++r.pos;
    }
  }
  position = r.pos;
  if (r.atEnd()) {
    place(token, scanBytes, r.pos, 0, ZU_TOKEN_END);
    return;
  }

  const std::uint32_t start = r.pos;
  const unsigned c = r.text[r.pos++];
  const unsigned c2 = r.peek();
  std::uint32_t kind = ZU_TOKEN_NONE;
  const auto closedIf = [](bool closed) {
    return closed ? ZU_TOKEN_QUOTED : ZU_TOKEN_UNTERMINATED;
  };
  if (isQuote(*this, c)) {
    kind = closedIf(scanQuoted(r, c));
  } else if (c == kParenOpen && parenBlocks) {
    kind = closedIf(scanBlock(*this, r, kParenOpen, kParenClose));
  } else if (c == kBraceOpen && braceBlocks) {
    kind = closedIf(scanBlock(*this, r, kBraceOpen, kBraceClose));
  } else if (blockOpen != 0 && c == blockOpen) {
    kind = closedIf(scanBlock(*this, r, blockOpen, blockClose));
  } else if (comments && c == kDash && c2 == kDash) {
    ++r.pos;
    const std::uint32_t end = scanLineComment(r);
    place(token, scanBytes, start, end - start, ZU_TOKEN_COMMENT);
    position = r.pos;
    return;
  } else if (comments && c == kSlash && c2 == kStar) {
    ++r.pos;
    scanBlockComment(r);
    kind = ZU_TOKEN_COMMENT;
  } else if ((kind = startKind(*this, c, c2, searchType)) != ZU_TOKEN_NONE) {
    continueToken(*this, r, kind);
  } else {
    kind = readOperator(r, c, c2);
  }
  place(token, scanBytes, start, r.pos - start, kind);
  position = r.pos;
}

void ZuScanner::getDelimitedToken(ZuToken& token, unsigned short delimiter) {
  Reader r{scanBytes, scanLength, position};
  while (r.pos < r.length && hasClass(r.text[r.pos], kWhite)) ++r.pos;
  position = r.pos;
  if (r.atEnd()) {
    place(token, scanBytes, r.pos, 0, ZU_TOKEN_END);
    return;
  }
  const std::uint32_t start = r.pos;
  const unsigned c = r.text[r.pos];
  if (c == delimiter) {
    place(token, scanBytes, start, 0, ZU_TOKEN_NONE);
    return;
  }
  // A quote byte closes only its own quote; any other quote byte opens a
  // new one, inside a quote or not.
  unsigned quote = isQuote(*this, c) ? c : 0;
  for (++r.pos; r.pos < r.length; ++r.pos) {
    const unsigned b = r.text[r.pos];
    if (quote != 0 && b == quote) {
      quote = 0;
    } else if (isQuote(*this, b)) {
      quote = b;
    } else if (quote == 0 && b == delimiter) {
      break;
    }
  }
  place(token, scanBytes, start, r.pos - start, ZU_TOKEN_DELIMITED);
  token.rightBlankTrim();
  position = r.pos;
}

ZuStatus ZuScanner::changeToken(const ZuToken* token, const ZuSubString& text) {
  if (owner == nullptr) return ZU_ERROR;
  const unsigned char* replacement = text.length != 0 ? text.bytes : nullptr;
  if (owner->changeBytes(token->offset, token->length, replacement, text.length) != ZU_OK) {
    return ZU_ERROR;
  }
  refreshFromOwner(*this);
  position += text.length - token->length;
  return ZU_OK;
}

ZuStatus ZuScanner::insertToken(ZuToken* token, const ZuSubString& text) {
  if (text.length == 0) return ZU_OK;
  if (owner == nullptr) return ZU_ERROR;
  if (owner->changeBytes(token->offset, 0, text.bytes, text.length) != ZU_OK) return ZU_ERROR;
  refreshFromOwner(*this);
  position += text.length;
  token->offset += text.length;
  token->bytes = owner->bytes + token->offset;
  return ZU_OK;
}

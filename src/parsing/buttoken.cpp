// The older tokenizer. The scan keeps a state: 0 to 6 are the modes, the
// others the kinds of token that every mode knows (State below).
#include "parsing/buttoken.h"

#include <cstring>

#include "errors/message.h"
#include "memory/ram.h"
#include "parsing/parsing_messages.h"
#include "platform/charset.h"
#include "strings/text_rules.h"

namespace {

using zu::bytes::isDigit;
using zu::bytes::isWhiteSpace;
using zu::bytes::isWordPart;
using zu::bytes::isWordStart;

constexpr unsigned kModeBits = 0x0FFF;
// A token of a limited mode has at most this many bytes; its NUL goes there.
constexpr std::size_t kLimit = 79;
constexpr std::size_t kBlockSlack = 100;
constexpr std::size_t kAddressAt = 2;
constexpr unsigned char kHighestControl = 32;
constexpr unsigned char kBackquote = '`';
constexpr std::size_t kPairLength = 2;
constexpr std::size_t kOuterJoinLength = 3;

enum State : unsigned {
  kWords = 0,
  kBare = 1,
  kHashNames = 2,
  kDotted = 3,
  kTimes = 4,
  kRest = 5,
  kHashNamesUnlimited = 6,
  kInteger = 7,
  kFraction = 8,
  kPair = 9,
  kOuterJoin = 10,
  kQuoted = 11,
  kBraced = 12,
  kMarker = 13,
};

bool isStop(unsigned char c) { return c == ',' || c == '/' || c == '(' || c == ')' || c == '|'; }
bool isQuote(unsigned char c) { return c == '\'' || c == '"' || c == kBackquote; }
bool isLetter(unsigned char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }
bool isLatinLetter(unsigned char c) { return isWordStart(c) && c != '_' && !isLetter(c); }
bool isEscapable(unsigned char c) { return c == '-' || c == '+' || c == '*' || c == '/'; }

bool isPair(unsigned char c, unsigned char n) {
  static constexpr char kPairs[][kPairLength + 1] = {"||", "<>", "<=", ">=", "!=",
                                                     "!<", "!>", "**", "*=", "=*"};
  for (const char* pair : kPairs) {
    if (c == static_cast<unsigned char>(pair[0]) && n == static_cast<unsigned char>(pair[1])) return true;
  }
  return false;
}

// The token being built: in the caller's buffer, or, once moved, in a block
// of its own. `put` applies the size limit.
class Token {
 public:
  Token(unsigned char* token, const unsigned char* text, unsigned short flags, bool limited)
      : token_(token), out_(token), text_(text), flags_(flags), limited_(limited) {}

  bool put(unsigned char b) {
    if (limited_ && !moved() && length_ == kLimit && !makeRoom()) return false;
    out_[length_++] = b;
    return true;
  }
  void dropLast() { --length_; }
  std::size_t length() const { return length_; }
  unsigned char first() const { return out_[0]; }
  unsigned char last() const { return out_[length_ - 1]; }
  bool moved() const { return out_ != token_; }
  unsigned char* finish() {
    out_[length_] = 0;
    return out_;
  }
  // After a failure: the caller holds no block.
  void giveUpBlock() {
    if (!moved()) return;
    ramFree(out_);
    out_ = token_;
    std::memset(token_ + kAddressAt, 0, sizeof(void*));
  }

 private:
  bool makeRoom() {
    token_[kLimit] = 0;
    if ((flags_ & BUT_TOKEN_ALLOCATE) != 0) {
      const std::size_t size = std::strlen(reinterpret_cast<const char*>(text_)) + kBlockSlack;
      auto* block = static_cast<unsigned char*>(ramAlloc(static_cast<std::uint32_t>(size)));
      if (block == nullptr) return false;
      std::memcpy(block, token_, kLimit);
      token_[1] = 0;
      std::memcpy(token_ + kAddressAt, &block, sizeof block);
      out_ = block;
      return true;
    }
    if ((flags_ & BUT_TOKEN_TRUNCATE) != 0) {
      --length_;  // the newest byte takes the last place
      return true;
    }
    addMessageError(zu::msg::kTokenTooBig) << token_;
    return false;
  }

  unsigned char* token_;
  unsigned char* out_;
  const unsigned char* text_;
  unsigned short flags_;
  bool limited_;
  std::size_t length_ = 0;
};

// The state that the first byte `c` (followed by `n`, then `after`) opens;
// `single` when the token is that byte alone.
unsigned openingState(unsigned mode, unsigned char c, unsigned char n, const unsigned char* afterN,
                      bool* single) {
  *single = false;
  if (mode == kBare && !isStop(c)) return kBare;
  if (isQuote(c)) return kQuoted;
  if (isDigit(c)) return mode == kTimes ? kTimes : kInteger;
  if (c == '.' && isDigit(n)) return kFraction;
  if (isWordStart(c)) return mode;
  if (c == '#' && (mode == kHashNames || mode == kHashNamesUnlimited)) return mode;
  if (c == '.' && mode == kDotted) return kDotted;
  if (c == '{') return kBraced;
  if (c == ':' && mode == kTimes) return kTimes;
  if (isPair(c, n)) return kPair;
  if (c == '(' && n == '+' && *afterN == ')') return kOuterJoin;
  if (c == '?') return kMarker;
  *single = true;
  return mode;
}

}  // namespace

ZuStatus buttoken(unsigned char* token, const unsigned char** cursor, unsigned short flags) {
  unsigned mode = flags & kModeBits;
  if (mode > kHashNamesUnlimited) mode = kWords;
  const unsigned char* p = *cursor;
  while (isWhiteSpace(*p)) ++p;
  if (*p == 0) {
    token[0] = 0;
    *cursor = p;
    return ZU_OK;
  }
  Token t(token, *cursor, flags, mode != kTimes && mode != kHashNamesUnlimited);
  const unsigned char c = *p++;
  t.put(c);
  bool single = false;
  // The byte after `n` is read only when `n` is '+', so never past the NUL.
  unsigned state = openingState(mode, c, *p, *p != 0 ? p + 1 : p, &single);
  bool backquoted = state == kBare && c == kBackquote;
  bool quotePending = false;

  while (!single) {
    const unsigned char b = *p;
    if (b == 0) {
      const bool open = (state == kQuoted && (t.length() < 2 || t.last() != t.first())) ||
                        (state == kBraced && t.last() != '}');
      if (open) {
        addMessageError(zu::msg::kUnmatchedQuote) << t.finish();
        t.giveUpBlock();
        return ZU_ERROR;
      }
      break;
    }
    bool take = false;
    switch (state) {
      case kBare:
        if (b == kBackquote) backquoted = !backquoted;
        take = b == kBackquote || backquoted || (b > kHighestControl && !isStop(b));
        break;
      case kHashNames:
      case kHashNamesUnlimited:
        if (b == '\\' && isEscapable(p[1])) {
          if (!t.put(b) || !t.put(p[1])) {
            t.giveUpBlock();
            return ZU_ERROR;
          }
          p += 2;
          continue;
        }
        take = b == '#' || b == '$' || isWordPart(b);
        break;
      case kDotted:
        if (t.first() != '.') {
          take = isWordPart(b);
        } else {
          take = !(t.length() >= 2 && t.last() == '.') && (b == '.' || isWordPart(b));
        }
        break;
      case kTimes:
        take = b == ':' || b == '.' || isWordPart(b);
        break;
      case kRest:
        take = true;
        break;
      case kInteger:
        if (b == '.') state = kFraction;
        take = b == '.' || isDigit(b);
        break;
      case kFraction:
        take = isDigit(b);
        if (!take && mode == kDotted && t.length() >= 2 && t.last() == '.' && isLetter(b)) {
          t.dropLast();  // "12.abc": the dot starts the next token
          --p;
        }
        break;
      case kPair:
        take = t.length() < kPairLength;
        break;
      case kOuterJoin:
        take = t.length() < kOuterJoinLength;
        break;
      case kQuoted:
        if (b == c) {
          if (quotePending) t.dropLast();  // a doubled quote is stored once
          quotePending = !quotePending;
          take = true;
        } else {
          take = !quotePending;
        }
        break;
      case kBraced:
        take = t.last() != '}';
        break;
      case kMarker:
        take = t.length() == 1 ? isLetter(b) || isLatinLetter(b) : isWordPart(b);
        break;
      default:  // kWords
        take = isWordPart(b);
        break;
    }
    if (!take) break;
    if (!t.put(b)) {
      t.giveUpBlock();
      return ZU_ERROR;
    }
    ++p;
  }

  unsigned char* out = t.finish();
  if (state < kInteger && (flags & BUT_TOKEN_KEEP_CASE) == 0) {
    for (; *out != 0; ++out) *out = zu::platform::upperCase(*out);
  }
  *cursor = p;
  return ZU_OK;
}

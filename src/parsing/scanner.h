// ZuScanner cuts a byte text into tokens: words, numbers, quoted texts,
// bracketed blocks, comments and one- and two-byte operators. A ZuToken is a
// view into the scanned text with a kind and an offset; the scanner copies
// nothing and keeps nothing between calls but its position, so tokens stay
// valid as long as the text does.
//
// Scanning never fails: an unclosed quote or block comes back as
// ZU_TOKEN_UNTERMINATED, a byte nothing accepts as ZU_TOKEN_OTHER. When the
// text is a ZuString given as the owner, changeToken and insertToken rewrite
// it in place; a rewrite that moves the buffer leaves other tokens stale.
//
// The options are public fields, set to their defaults by every constructor;
// a change acts from the next read on. A scanner and its tokens belong to
// one thread at a time.
#ifndef ZUUTL_PARSING_SCANNER_H
#define ZUUTL_PARSING_SCANNER_H

#include <cstdint>

#include "frame/api.h"
#include "frame/object.h"
#include "frame/status.h"
#include "strings/string.h"
#include "strings/substring.h"

// A token's kind. An operator token carries its operator code instead: the
// byte's own value, or first byte * 256 + second byte for a pair; both are
// 33 or more, so they never meet these.
enum ZuTokenType : std::uint32_t {
  ZU_TOKEN_NONE = 0,  // made by hand, or an empty delimited field
  ZU_TOKEN_END = 1,   // end of the text: empty, offset = text length
  ZU_TOKEN_WORD = 2,
  ZU_TOKEN_QUOTED = 3,        // closed quoted text or closed block
  ZU_TOKEN_UNTERMINATED = 4,  // quoted text or block that ran to the end
  ZU_TOKEN_NUMBER = 5,        // also a number with a point that a byte follows
  ZU_TOKEN_BARE = 6,
  ZU_TOKEN_HASH_NAME = 7,
  ZU_TOKEN_DELIMITED = 8,  // non-empty delimited field
  ZU_TOKEN_REAL = 9,       // number with a point that ran to the end
  ZU_TOKEN_OTHER = 10,     // one byte that nothing else accepts
  ZU_TOKEN_COMMENT = 11,
};

// How one getToken call reads.
enum SearchType : std::uint32_t {
  ZU_SEARCH_NORMAL = 0,
  ZU_SEARCH_BARE = 1,       // a run of non-blank bytes up to one of ,/()|
  ZU_SEARCH_HASH_NAME = 2,  // a name that may start with # and hold # and $
};

// A view of the scan text, quotes and brackets included, with its kind and
// the offset of its first byte in the scan text.
// Invariants: a token the scanner made views the scan text at `offset`
// (null bytes when there is no text) and owns nothing; ZU_TOKEN_END is
// empty. A rewrite that moves the owner's buffer leaves it stale.
class ZU_API ZuToken : public ZuSubString {
 public:
  ZuToken() = default;
  ZuToken(const ZuToken& other) = default;
  ZuToken& operator=(const ZuToken& other) = default;
  ~ZuToken() override;

  std::uint32_t getType() const { return type; }
  std::uint32_t getOffset() const { return offset; }

  std::uint32_t type = ZU_TOKEN_NONE;
  std::uint32_t offset = 0;
};

// Invariants: with an owner, scanBytes and scanLength are the owner's bytes
// and length, taken again after each rewrite made through the scanner (not
// after changes made elsewhere). No read goes past scanLength. The scanner
// owns none of the text, only its three option strings.
class ZU_API ZuScanner : public ZuObject {
 public:
  // The text is not copied and must outlive the scanner's use of it.
  ZuScanner();
  ZuScanner(const unsigned char* text, std::uint32_t length);
  // A NUL-terminated text, measured in 16 bits as the byte layer measures.
  ZuScanner(const unsigned char* text);
  ZuScanner(const ZuSubString* text);
  ZuScanner(ZuSubString& text);
  // The string becomes the owner: the tokens can rewrite it.
  ZuScanner(ZuString* text);
  ~ZuScanner() override;
  ZuScanner(const ZuScanner&) = delete;
  ZuScanner& operator=(const ZuScanner&) = delete;

  // A new text read from its start; the options stay.
  void setScanString(const unsigned char* text, std::uint32_t length);
  void setScanString(ZuString* text);

  // Reads the next token. At the end of the text every call gives
  // ZU_TOKEN_END.
  void getToken(ZuToken& token, SearchType type = ZU_SEARCH_NORMAL);
  // Makes `token` a view of `length` bytes at `offset`, of kind
  // ZU_TOKEN_NONE, without moving the position.
  void getToken(ZuToken& token, std::uint32_t offset, std::uint32_t length);
  // Reads one field up to `delimiter` outside quotes, white space trimmed
  // from both ends. An empty field is a ZU_TOKEN_NONE token at the
  // delimiter, which stays to be read.
  void getDelimitedToken(ZuToken& token, unsigned short delimiter);
  // The next read starts at `token` again; any earlier token will do.
  void unGetToken(ZuToken& token);

  // Both rewrite the owner and fail as ZuString::changeBytes does, leaving
  // scanner and token as they were; without an owner they refuse with
  // ZU_ERROR and record nothing. The token must lie before the position,
  // as a token just read does.
  // Replaces the token's bytes by `text`; the token itself is not updated.
  ZuStatus changeToken(const ZuToken* token, const ZuSubString& text);
  // Inserts `text` before the token, which moves along to stay on its bytes.
  ZuStatus insertToken(ZuToken* token, const ZuSubString& text);

  // 1 when the words of the phrase, separated by single blanks in `words`,
  // match `token` (the token read last) and the tokens after it. A match
  // extends `token` over the whole phrase and leaves the position after it;
  // a miss restores the position and leaves `token` alone.
  unsigned int isEqual(ZuToken& token, const unsigned char* words);
  unsigned int isEqualCi(ZuToken& token, const unsigned char* words);
  // `set` holds NUL-terminated phrases, closed by an empty one; the first
  // that matches gives 1, as isEqual does.
  unsigned int isInSet(ZuToken& token, const unsigned char* set);
  unsigned int isInSetCi(ZuToken& token, const unsigned char* set);
  // Reads on until a token starts the phrase (1, position after it) or the
  // text ends (0, position at the end).
  unsigned int isTokenWithin(const unsigned char* words);
  unsigned int isTokenWithinCi(const unsigned char* words);

  const unsigned char* scanBytes = nullptr;
  std::uint32_t scanLength = 0;
  unsigned short quote1 = '\'';
  unsigned short quote2 = '"';
  unsigned short quote3 = '`';
  std::uint32_t position = 0;
  // {...} and (...) are read as single tokens.
  std::uint32_t braceBlocks : 1 = 0;
  std::uint32_t parenBlocks : 1 = 0;
  ZuString* owner = nullptr;
  // Further bytes that start a word (white space listed here is not
  // skipped), and further bytes that continue one.
  ZuString wordStartChars;
  ZuString wordPartChars;
  // When not empty, a word runs up to one of these bytes, blanks included.
  ZuString delimiterChars;
  // A further bracket pair; 0 for none.
  unsigned short blockOpen = 0;
  unsigned short blockClose = 0;
  // -- up to the line end and /* ... */ are read as comment tokens.
  std::uint32_t comments = 0;
};

#endif

// ZuValueParser reads an attribute string, keyword=value pairs between
// separator bytes such as an ODBC connect string, into an ordered table
// whose keys match without regard to case, and serves it: values by
// keyword or by one of two alternative keywords, the attributes nobody
// asked for, and the string written back after changes.
//
// Parsed keys and values are views of the text, which must outlive the
// parser; values keep their quotes. Added ones hold their own bytes. The
// separator must be a byte the scanner reads as a token of its own (';' and
// ',' are). Calling order: constructor, initialize, then the queries.
//
// Which attributes were asked for is kept in one bit per index. Without a
// successful initialize there are no bits: nothing is marked and every
// attribute counts as unused. Attributes added after initialize get bits of
// their own, clear. Removing an attribute moves later ones down one index;
// the bits stay where they are. No lock: one thread at a time.
#ifndef ZUUTL_PARSING_VALUE_PARSER_H
#define ZUUTL_PARSING_VALUE_PARSER_H

#include <cstdint>

#include "containers/bit_array.h"
#include "containers/dictionary.h"
#include "frame/api.h"
#include "frame/object.h"
#include "frame/status.h"
#include "parsing/scanner.h"
#include "strings/string.h"
#include "strings/substring.h"

// Invariants: every key and value in `attributes` is the parser's, deleted
// with it, and no two keys match without regard to case. pendingKey is null
// except after a failed parse, and is then owned but not in the table.
// usedBits has no storage until initialize succeeds; from then on every
// index below attributes.count has a bit.
class ZU_API ZuValueParser : public ZuObject {
 public:
  // Parses nothing; `text` and `sourceName` (the string's name in
  // messages, or null) are held, not copied.
  ZuValueParser(const ZuSubString* text, unsigned char separator, const unsigned char* sourceName);
  // Deletes every key and value, and a key a failed parse left pending.
  ~ZuValueParser() override;
  ZuValueParser(const ZuValueParser&) = delete;
  ZuValueParser& operator=(const ZuValueParser&) = delete;

  // Parses the whole string. The first fault ends it with ZU_ERROR and an
  // error naming its offset; what was read before it stays in the table.
  ZuStatus initialize();

  // The value, or null when the key is absent; marks the attribute used.
  const ZuSubString* getAttributeValue(const ZuSubString* key);
  const ZuSubString* getAttributeValue(const unsigned char* key);
  // For a keyword with two names, of which the table may hold one: `value`
  // is its value or null, with ZU_OK. Both present is an error, and leaves
  // `value` alone. What is found is marked used.
  ZuStatus getAttributeValue(const unsigned char* key1, const unsigned char* key2,
                             const ZuSubString*& value);
  // 1 when the key is present; marks nothing.
  unsigned int isAttributeValue(const ZuSubString* key);
  unsigned int isAttributeValue(const unsigned char* key);

  // Attributes not marked used.
  unsigned short getUnusedCount();
  // The key of the next unused attribute, or null at the end of the table.
  // One walk per parser: nothing moves the cursor back.
  const ZuSubString* getUnusedAttribute();
  // The key at `index`; null at or past the count.
  const ZuSubString* getAttributeKey(unsigned short index);

  // Replaces the value of `key`, or else of `alias` (may be null), in its
  // place; else appends the pair. A value holding ', " or the separator is
  // stored quoted with '.
  ZuStatus addAttribute(const unsigned char* key, const unsigned char* value,
                        const unsigned char* alias);
  // Deletes the pair if present.
  void removeAttribute(const unsigned char* key);
  // The table as an attribute string, in its order, replacing what
  // `target` held: no blanks, no separator at the end, values as stored.
  ZuStatus buildString(ZuString* target);

  unsigned char separator;
  const unsigned char* sourceName;
  ZuScanner scanner;
  ZuSeqDictionary attributes;  // ZuSubString key -> ZuSubString value, owned
  ZuToken token;               // the token read last; errors name its offset
  ZuSubString* pendingKey;     // read, not yet in the table
  ZuBitArray usedBits;
  unsigned short unusedCursor;
};

#endif

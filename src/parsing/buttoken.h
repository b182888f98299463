// buttoken: the older tokenizer. Cuts the next token off a NUL-terminated
// text and copies it, NUL-terminated, into the caller's buffer; words and
// single bytes come upper-cased unless BUT_TOKEN_KEEP_CASE is given. It
// hands out no kind: the caller tells from the text what it got.
//
// The low 12 bits of `flags` are the mode, which says what a word may hold:
//   0 word parts (letters, digits, '_', the Latin-1 letters)
//   1 bare text: any bytes above 32 but , / ( ) |; between backquotes any
//   2 word parts, '#', '$', and '\' with - + * or / behind it
//   3 word parts with dots: a token that starts with '.' runs up to the
//     second dot of a pair (".A." or "..")
//   4 word parts, ':', '.', from a digit or ':' on; no size limit
//   5 the rest of the text, once a word starts
//   6 as mode 2, with no size limit
// (a higher mode counts as mode 0). Numbers, two-byte operators, "(+)",
// quoted texts with their doubled quotes stored once, "{...}" and "?name"
// are tokens in every mode and keep their case.
//
// `token` holds 80 bytes, or the longest token in modes 4 and 6. A token
// over 79 bytes is refused with 2700, cut to its first 78 bytes and its
// last with BUT_TOKEN_TRUNCATE, or moved with BUT_TOKEN_ALLOCATE (which
// wins over truncation) to a block of the heap that then belongs to the
// caller: token[1] is then 0 and the block's address stands in the bytes
// from token[2] on. An open quote or brace at the end of the text gives
// 2703. On ZU_ERROR *cursor is unchanged and no block is held; on success
// it stands on the first byte not consumed.
#ifndef ZUUTL_PARSING_BUTTOKEN_H
#define ZUUTL_PARSING_BUTTOKEN_H

#include <cstdint>

#include "frame/api.h"
#include "frame/status.h"

enum ButTokenOption : std::uint32_t {
  BUT_TOKEN_TRUNCATE = 0x8000,
  BUT_TOKEN_ALLOCATE = 0x4000,
  BUT_TOKEN_KEEP_CASE = 0x2000,
};

ZU_API ZuStatus buttoken(unsigned char* token, const unsigned char** cursor, unsigned short flags);

#endif

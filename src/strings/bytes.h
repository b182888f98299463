// Copies, fills, comparisons and searches on byte ranges and NUL-terminated
// texts: the layer every text operation stands on. None allocates, reports
// or checks a pointer.
//
// The BUT functions count in 16 bits, which is where the library's 64 KiB
// limits come from; the Huge functions are the same with a 32-bit count.
// Copies that write a NUL return the position of that NUL, so they chain.
#ifndef ZUUTL_STRINGS_BYTES_H
#define ZUUTL_STRINGS_BYTES_H

#include <cstdint>

#include "frame/api.h"

// Ascending copy: where the ranges overlap, bytes already copied are copied
// again, exactly as a byte-at-a-time loop from the first byte would.
ZU_API void BUTMEMCP(unsigned char* dst, const unsigned char* src, unsigned short count);
// Descending copy, from the last byte: moves a range upward within a buffer.
ZU_API void BUTMMCPD(unsigned char* dst, const unsigned char* src, unsigned short count);
// Unsigned byte comparison: -1, 0 or 1.
ZU_API short BUTMMCMP(const unsigned char* a, const unsigned char* b, unsigned short count);
// Exchanges two ranges that do not overlap.
ZU_API void BUTMMSWP(unsigned char* a, unsigned char* b, unsigned short count);
// Appends `src`; returns the NUL that ends the result.
ZU_API unsigned char* BUTSTCAT(unsigned char* dst, const unsigned char* src);
// First `ch` in the text; null if none, and always null for 0.
ZU_API unsigned char* BUTSTCHR(const unsigned char* text, unsigned char ch);
ZU_API short BUTSTCMP(const unsigned char* a, const unsigned char* b);
// Copies the text and its NUL; returns the NUL in `dst`.
ZU_API unsigned char* BUTSTCPY(unsigned char* dst, const unsigned char* src);
// Bytes before the NUL, modulo 65536.
ZU_API unsigned short BUTSTLEN(const unsigned char* text);
ZU_API void BUTU8FIL(unsigned char* dst, unsigned char value, unsigned short count);

ZU_API short memCompareHuge(const void* a, const void* b, std::uint32_t count);
ZU_API void memCopyHuge(void* dst, const void* src, std::uint32_t count);
ZU_API void memFillHuge(void* dst, unsigned char value, std::uint32_t count);

// Bounded copy into `size` bytes (at least 1), always NUL-terminated.
ZU_API void strCopy(unsigned char* dst, std::uint32_t size, const unsigned char* src);
// Copies exactly `count` bytes and a NUL; returns dst + count.
ZU_API unsigned char* strCopy(unsigned char* dst, const unsigned char* src, std::uint32_t count);

// A quoted text is the quote byte, the content with each quote byte doubled,
// and the quote byte again; the writers add a NUL and return it. The quote
// comes as a 16-bit value and is written as a byte.
ZU_API unsigned char* strCopyQuoted(unsigned char* dst, const unsigned char* src,
                                    std::uint32_t count, unsigned short quote);
ZU_API unsigned char* strCopyQuoted(unsigned char* dst, const unsigned char* src,
                                    unsigned short quote);
ZU_API unsigned char* strCatQuoted(unsigned char* dst, const unsigned char* src,
                                   unsigned short quote);
// Reads a quoted text of `count` bytes whose first byte is the quote and
// writes its content. `dst` may be `src`.
ZU_API unsigned char* strCopyUnquoted(unsigned char* dst, const unsigned char* src,
                                      std::uint32_t count);
ZU_API unsigned char* strCopyUnquoted(unsigned char* dst, const unsigned char* src);

// First occurrence of `pattern`; an empty pattern gives `text`.
ZU_API unsigned char* strFind(const unsigned char* text, const unsigned char* pattern);
// Last `ch` in the text, or null.
ZU_API unsigned char* strFindReverse(const unsigned char* text, unsigned char ch);
// First `ch` outside quotes, where each of the three quote bytes (0 for
// none) opens a quote that only the same byte closes.
ZU_API unsigned char* strFind(const unsigned char* text, unsigned char ch, unsigned char quote1,
                              unsigned char quote2, unsigned char quote3);

#endif

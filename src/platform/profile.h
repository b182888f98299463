// The private-profile services: reading and writing INI files, the format
// the ODBC driver manager keeps its data sources in.
//
// A file is lines of "[section]" headings and "entry=value" entries; lines
// whose first byte after leading blanks is ';' or '#' are comments. Section
// and entry names compare without regard to case (Windows-1252 folding);
// names and values are trimmed of blanks (bytes 9 to 13 and 32). Lines end
// in LF or CR LF; the last one may lack its end. A section may have several
// headings: a lookup takes the first matching entry under any of them.
//
// A write changes only the lines it touches and keeps every other byte. The
// new text goes to a file beside the old one, which is then renamed over
// it, so a failure at any point leaves the old file whole. Writers hold an
// open-file-description lock on the file for the whole read-modify-write,
// so writes from many processes at once lose nothing. Readers take no lock:
// they always see a whole file, old or new.
//
// Names are DOS names as the DOS view resolves them (a host path works:
// "C:" is "/" and "/" separates too); a relative one is taken from the
// current directory. A missing file reads as empty; the first write creates
// it. Refusals of the host are not reported: a read gives the default, a
// write returns false.
#ifndef ZUUTL_PLATFORM_PROFILE_H
#define ZUUTL_PLATFORM_PROFILE_H

#include <cstdint>

namespace zu::platform {

// Copies the value of `entry` in `section` into `buffer` of `size` bytes,
// cut to size - 1 and NUL-terminated, or `defaultValue` (null reads as "")
// when there is no such entry. With `entry` null it lists the section's
// entry names instead, with `section` null the section names: each name
// ends in a NUL and the list in one more; a list cut short ends in two NULs
// and gives size - 2. Returns the bytes copied, without the final NUL.
std::uint32_t profileGetString(const unsigned char* section, const unsigned char* entry,
                               const unsigned char* defaultValue, unsigned char* buffer, std::uint32_t size,
                               const unsigned char* fileName);

// The leading decimal number of the entry's value (a sign may lead it),
// wrapping at 32 bits; `defaultValue` when the entry is missing or its
// value does not begin with a digit.
std::int32_t profileGetInt(const unsigned char* section, const unsigned char* entry,
                           std::int32_t defaultValue, const unsigned char* fileName);

// Sets `entry` in `section` to `value`: the first such entry is replaced in
// place, else the entry goes after the last entry of the section's first
// heading, else a new section goes at the end. With `value` null every
// such entry is removed; with `entry` null, every heading of the section
// with all its lines, whatever `value` is. False when refused: a name that is empty or
// would not read back (a line break, '=' in an entry, ']' in a section),
// or a failure of the host; the file is then as it was.
bool profileWriteString(const unsigned char* section, const unsigned char* entry, const unsigned char* value,
                        const unsigned char* fileName);

}  // namespace zu::platform

#endif

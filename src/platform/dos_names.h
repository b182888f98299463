// DOS name rules as pure text logic, shared by the DOS view (which keeps its
// temporary directory valid under them) and the file layer (which holds every
// name it opens to them).
#ifndef ZUUTL_PLATFORM_DOS_NAMES_H
#define ZUUTL_PLATFORM_DOS_NAMES_H

#include <cstddef>

namespace zu::platform {

constexpr unsigned char kDosSeparator = '\\';
constexpr unsigned char kDriveColon = ':';
constexpr unsigned char kExtensionDot = '.';
// The longest base name and extension of an 8.3 name.
constexpr int kBaseNameMax = 8;
constexpr int kExtensionMax = 3;

// White space of names: bytes 9 to 13 and the blank.
inline bool isDosSpace(unsigned char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

enum class NameCheck { kValid, kRefused, kReserved };

// Holds an upper-cased name to the 8.3 rules: no white space anywhere, at
// most 8 bytes in each base name and 3 in each extension, and a file part
// (the last base name) that is not a reserved device name.
NameCheck checkDosName(const unsigned char* upperName);

// The reserved device name that `name` (of `length` bytes) is, if any.
bool isReservedDeviceName(const unsigned char* name, std::size_t length);

}  // namespace zu::platform

#endif

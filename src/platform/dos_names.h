// DOS name rules as pure text logic, the one home of each: drives,
// separators, parent steps, case and the 8.3 form. The DOS view reads names
// by them and keeps its temporary directory valid under them; the file and
// path functions hold every name they take to them.
#ifndef ZUUTL_PLATFORM_DOS_NAMES_H
#define ZUUTL_PLATFORM_DOS_NAMES_H

#include <cstddef>

namespace zu::platform {

constexpr unsigned char kDosSeparator = '\\';
// The host's separator, which the DOS view also reads as one.
constexpr unsigned char kHostSeparator = '/';
constexpr unsigned char kDriveColon = ':';
constexpr unsigned char kExtensionDot = '.';
constexpr std::size_t kDriveLength = 2;  // "C:"
// The longest base name and extension of an 8.3 name.
constexpr int kBaseNameMax = 8;
constexpr int kExtensionMax = 3;

// White space of names: bytes 9 to 13 and the blank.
inline bool isDosSpace(unsigned char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// A separator as the DOS view reads names: either slash.
inline bool isNameSeparator(unsigned char c) { return c == kDosSeparator || c == kHostSeparator; }

// The drive of a letter without regard to case, 0 being A; -1 for no letter.
int driveIndex(unsigned char letter);

// Whether the `length` bytes of two names are the same without regard to
// case, as DOS names compare.
bool sameName(const unsigned char* a, const unsigned char* b, std::size_t length);

// Whether `name` starts with a drive: a byte and a colon. The byte is not
// checked to be a letter; driveIndex says whether it is one.
inline bool hasDrive(const unsigned char* name) { return name[0] != '\0' && name[1] == kDriveColon; }

// Where the file part of `path` starts: after its last backslash (or either
// slash, with `hostSlash`), else after a drive's colon, else at 0.
std::size_t filePartStart(const unsigned char* path, bool hostSlash = false);

// Where the component that ends at `end` starts: the index of the last
// backslash before `end`, or kNoParent when there is none.
constexpr std::size_t kNoParent = static_cast<std::size_t>(-1);
std::size_t parentStart(const unsigned char* path, std::size_t end);

// Folds parent steps in place: while `path` holds "\..\", the component
// before it goes with it ("C:\A\B\..\C" becomes "C:\A\C"). A step with
// no backslash before it stops the folding ("C:\..\X" stays); "." and a
// final "\.." are not touched.
void foldParentSteps(unsigned char* path);

enum class NameCheck { kValid, kRefused, kReserved };

// Holds an upper-cased name to the 8.3 rules: no white space anywhere, at
// most 8 bytes in each base name and 3 in each extension, and a file part
// (the last base name) that is not a reserved device name.
NameCheck checkDosName(const unsigned char* upperName);

// The reserved device name that `name` (of `length` bytes) is, if any.
bool isReservedDeviceName(const unsigned char* name, std::size_t length);

}  // namespace zu::platform

#endif

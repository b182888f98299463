// The DOS view's state and name resolution, beneath the DOS calls.
//
// The view holds, for the whole process: the host directory of each drive
// letter and the temporary directory. The current directory is the
// process's own, read from the host at every call that needs it, so a
// change made by anyone (bosstcwd, or the client's own chdir) is seen at
// once. The drive
// map comes from the environment variable ZU_DRIVES, a list such as
// "D=/srv/data;E=/mnt/e" (a letter, '=', an absolute host directory; an
// empty directory unmaps the letter); C: is "/" unless the list says
// otherwise. The temporary directory is TMPDIR's (else /tmp); when its DOS
// form is not a valid 8.3 path, the view maps it as a drive of its own, the
// highest free letter, so the temporary directory always has one.
//
// Everything is read at first use and again after reset(); all of it is
// guarded by one lock.
#ifndef ZUUTL_PLATFORM_DOS_VIEW_H
#define ZUUTL_PLATFORM_DOS_VIEW_H

#include <cstddef>
#include <cstdint>

#include "platform/dos.h"

namespace zu::platform::view {

constexpr int kDriveCount = 26;
// Host paths the view builds, in bytes with the NUL.
constexpr std::size_t kHostPathSize = 4096;
constexpr const char* kDriveVariable = "ZU_DRIVES";
constexpr const char* kTempVariable = "TMPDIR";

// Reads the environment again at the next call.
void reset();

// The host directory behind drive `index` (0 is A), null when unmapped.
// Copied into `buffer`; false when unmapped.
bool driveRoot(int index, char* buffer, std::size_t size);
// The drive the view added for the temporary directory, or -1.
int tempDrive();

enum class Want {
  kExisting,   // every component must exist
  kCreatable,  // all but the last must; a missing last one is taken as given
};

// Maps a DOS name to a host path. The separators are '\' and '/'; "." and
// ".." fold as the name is walked, never above the drive's root.
ErrorClass resolve(const unsigned char* name, Want want, char* host, std::size_t size);

// Whether `name` matches the wildcard `pattern` (* and ?), without regard to
// case; "*.*" also matches names without an extension, and "X." names
// without one.
bool wildcardMatch(const unsigned char* pattern, const unsigned char* name);

void currentDirectory(unsigned char* buffer, std::size_t size);
ErrorClass setCurrentDirectory(const unsigned char* path);
void tempDirectory(unsigned char* buffer, std::size_t size);
unsigned driveType(const unsigned char* root);
std::uint32_t logicalDrives();

}  // namespace zu::platform::view

#endif

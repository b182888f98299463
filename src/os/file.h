// Files: the library's only doors to them. Names are held to DOS rules
// before the system sees them (8.3 components, no white space, no reserved
// device name) and reach it upper-cased; handles are small numbers, 0 being
// no file. Every failure is recorded on the calling thread's error list.
#ifndef ZUUTL_OS_FILE_H
#define ZUUTL_OS_FILE_H

#include <cstdint>

#include "frame/api.h"
#include "frame/status.h"

// Flags of bosFileOpen; other bits have no effect.
inline constexpr std::uint32_t ZU_OPEN_CREATE = 0x01;     // create or replace; read and write
inline constexpr std::uint32_t ZU_OPEN_WRITE = 0x02;      // read and write, else read only
inline constexpr std::uint32_t ZU_OPEN_SEARCH_PATH = 0x10;  // on failure, try each PATH directory
inline constexpr std::uint32_t ZU_OPEN_EXCLUSIVE = 0x20;  // share with nobody (not with CREATE)
inline constexpr std::uint32_t ZU_OPEN_TEMP = 0x40;       // make a temporary name into `name` first
inline constexpr std::uint32_t ZU_OPEN_TEMP_OTHER_DRIVE = 0x80;  // the same, on another fixed drive

// Attribute bits of bosfattr.
inline constexpr unsigned short ZU_ATTR_FILE = 1;
inline constexpr unsigned short ZU_ATTR_DIRECTORY = 2;  // never with the others
inline constexpr unsigned short ZU_ATTR_READONLY = 4;   // comes with ZU_ATTR_FILE

// With a temporary flag, `name` receives the full path and must have room
// for 256 bytes. A failed open stores -1 in *handle.
ZU_API ZuStatus bosFileOpen(unsigned char* name, std::uint32_t flags, int* handle);
// `offset` is absolute, or -1 for where the file stands. One read; fewer
// bytes than asked, 0 at the end, is a success.
ZU_API ZuStatus bosFileRead(int handle, std::int32_t offset, void* buffer, std::uint32_t size,
                            std::uint32_t* bytesRead);
// Writes all or fails, in chunks of at most 65534 bytes.
ZU_API ZuStatus bosFileWrite(int handle, std::int32_t offset, const void* buffer, std::uint32_t size);
ZU_API ZuStatus bosFileClose(int handle);
// A name with no file behind it counts as deleted.
ZU_API ZuStatus bosFileDelete(const unsigned char* name);
ZU_API ZuStatus bosrname(const unsigned char* oldName, const unsigned char* newName);
// The new position, 0xFFFFFFFF on failure, with no error recorded. `origin`
// 0 start of file, 1 current position, 2 end of file.
ZU_API std::uint32_t bosFileSeek(int handle, std::int32_t offset, unsigned short origin);
// `unlock` 0 locks `length` bytes at `offset`, any other value unlocks
// exactly such a region. One attempt, no wait. The file stays at `offset`.
ZU_API ZuStatus bosRegionLock(int handle, unsigned short unlock, std::uint32_t offset,
                              std::uint32_t length);
ZU_API void bosflush();
// Commits the file's buffers to disk; the outcome is not reported.
ZU_API void bosupdir(int handle);
ZU_API unsigned short bosfattr(const unsigned char* name);
ZU_API unsigned short bosexist(const unsigned char* name);
ZU_API unsigned short bosftest(const unsigned char* name);

#endif

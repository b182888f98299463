// The DOS view of the host: files, names, directories, drives, libraries,
// time and keys, as the OS layer above asks for them. Every call takes DOS
// names ("C:\DIR\FILE.TXT"), which the view maps to host paths: each drive
// letter stands for a host directory, and each component is matched to a
// host name without regard to case (a new name is created as given).
//
// Failures come back as an error class, never as errno: the mapping from the
// host's errors lives in one place (classifyHostError). Like `sys`, the table
// is what tests replace or, through the fault switch, make fail.
#ifndef ZUUTL_PLATFORM_DOS_H
#define ZUUTL_PLATFORM_DOS_H

#include <cstddef>
#include <cstdint>

namespace zu::platform {

// The classes under which a failed call is reported, with the numbers the
// OS layer's error mapping is keyed by.
enum ErrorClass : int {
  kNoFailure = 0,
  kNoEntry = 2,        // file or path not found
  kIoFailure = 5,      // any failure without a class of its own
  kBadHandle = 9,      // not an open handle, or the handle lacks the access
  kNoMemory = 12,
  kAccessDenied = 13,  // permission, sharing or a region locked by another handle
  kTooManyFiles = 24,  // the handle table or the process is full
  kNoSpace = 28,       // the disk is full
  kDeadlock = 36,      // a region lock refused
};

// Bits of the mode of `open`.
constexpr unsigned kOpenWrite = 1;      // read and write, else read only
constexpr unsigned kOpenExclusive = 2;  // share with nobody, else with all
constexpr unsigned kOpenCreate = 4;     // create or truncate; always shared

// What `attributes` finds under a name.
constexpr unsigned kAttrFile = 1;
constexpr unsigned kAttrDirectory = 2;
constexpr unsigned kAttrReadOnly = 4;

// Drive types, as a drive walk reports them.
constexpr unsigned kDriveNoRoot = 1;
constexpr unsigned kDriveFixed = 3;

// The handle table: handles run from 1 to kHandleLimit - 1; 0 is no file.
constexpr int kHandleLimit = 256;

// Longest DOS path the view gives out (current or temporary directory),
// leaving room for a final backslash and the NUL in a 256-byte buffer.
constexpr std::size_t kDosPathMax = 254;

// Key messages of the (headless) key queue.
constexpr unsigned kKeyDown = 256;
constexpr unsigned kKeyUp = 257;

struct UtcTime {
  unsigned short day, month, year, hour, minute, second, millisecond;
};

struct DosCalls {
  ErrorClass (*open)(const unsigned char* name, unsigned mode, int* handle);
  // One read at the handle's position; fewer bytes than asked is no failure.
  ErrorClass (*read)(int handle, void* buffer, std::uint32_t size, std::uint32_t* done);
  // The same at `position`, which the handle takes: a seek and a read in one.
  ErrorClass (*readAt)(int handle, std::uint32_t position, void* buffer, std::uint32_t size,
                       std::uint32_t* done);
  // Writes all it can; a short `done` with kNoFailure means the disk filled.
  ErrorClass (*write)(int handle, const void* buffer, std::uint32_t size, std::uint32_t* done);
  // `origin` 0 start, 1 current position, 2 end; positions are 32-bit.
  ErrorClass (*seek)(int handle, std::int32_t offset, unsigned short origin,
                     std::uint32_t* position);
  ErrorClass (*close)(int handle);
  // One attempt, no wait, on `length` bytes at the handle's position. An
  // unlock names exactly a region this handle locked.
  ErrorClass (*lockRegion)(int handle, bool unlock, std::uint32_t length);
  ErrorClass (*commit)(int handle);
  ErrorClass (*remove)(const unsigned char* name);
  ErrorClass (*rename)(const unsigned char* from, const unsigned char* to);
  // kAttr* bits; a failure when nothing is under the name.
  ErrorClass (*attributes)(const unsigned char* name, unsigned* bits);

  // The temporary directory in DOS form with a final backslash; always a
  // valid 8.3 path. `size` is the buffer's.
  void (*tempDirectory)(unsigned char* buffer, std::size_t size);
  // Makes an empty file "<directory>zuXXXX.TMP" under a fresh number and
  // writes its DOS name into `name` (256 bytes).
  ErrorClass (*tempFile)(const unsigned char* directory, const char* prefix, unsigned char* name);
  unsigned (*driveType)(const unsigned char* root);
  std::uint32_t (*logicalDrives)();  // bit 0 is A
  // The DOS current directory, without a final backslash unless a root.
  void (*currentDirectory)(unsigned char* buffer, std::size_t size);
  ErrorClass (*setCurrentDirectory)(const unsigned char* path);

  // A directory walk over a pattern with * and ?; null when nothing
  // matches. Each call hands out one name (at most 255 bytes and a NUL).
  void* (*findFirst)(const unsigned char* pattern, unsigned char* name);
  bool (*findNext)(void* search, unsigned char* name);
  void (*findClose)(void* search);

  // The host path of this library's own file; false when unknown.
  bool (*moduleFile)(char* path, std::size_t size);
  // Loads the shared library for a stem such as "ZUMDS04" from the
  // directory of this library; null, with no load tried, when no such file.
  void* (*loadBeside)(const unsigned char* stem);

  void (*utcNow)(UtcTime* time);
  std::uint32_t (*tickMs)();  // a millisecond count that wraps at 32 bits
  // The next key message of the calling thread, removed; false when none.
  bool (*nextKey)(unsigned* message, unsigned* key);
  void (*beep)();
};

extern DosCalls dos;
extern const DosCalls kDefaultDosCalls;

// Maps a host errno to its class; the one place where that is decided.
ErrorClass classifyHostError(int hostError);

}  // namespace zu::platform

#endif

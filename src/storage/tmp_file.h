// ZuTmpFile: a private scratch store. A flat space of 32-bit byte offsets
// (0 is never handed out, so callers may use it as null), an allocator for
// that space, and a small two-way set-associative cache of 2048-byte pages
// in front of it. A temporary file is made only when a modified page must
// make room for another; pages still cached when the store ends are never
// written, and the files are deleted at truncation or destruction.
//
// Pointer rule: a pointer from tmpPointer stays good until two other pages
// of its set have been touched since its own last touch, so a caller may
// hold pointers into two pages at once if it touches no third between them.
//
// Every public operation holds `lock` for its length; read, readHuge and
// writeHuge rely on what they call. Pointers are used outside the lock, so
// whoever uses them keeps other threads off the store.
#ifndef ZUUTL_STORAGE_TMP_FILE_H
#define ZUUTL_STORAGE_TMP_FILE_H

#include <cstdint>

#include "containers/sorted_array.h"
#include "frame/api.h"
#include "frame/object.h"
#include "frame/semaphore.h"
#include "frame/status.h"
#include "storage/tmp_pages.h"

class ZuString;

inline constexpr std::uint32_t ZU_TMP_DIRTY_A = 1;  // way A changed since it was loaded
inline constexpr std::uint32_t ZU_TMP_DIRTY_B = 2;  // way B changed since it was loaded
inline constexpr std::uint32_t ZU_TMP_LAST_B = 4;   // way B used last; clear: way A

// One free extent of the space; ordered by start alone.
class ZU_API TmpSpace : public ZuObject {
 public:
  TmpSpace() : start(0), size(0) {}
  TmpSpace(std::uint32_t start, std::uint32_t size) : start(start), size(size) {}
  ~TmpSpace() override;
  short compare(const ZuObject* other) const override;

  std::uint32_t start;
  std::uint32_t size;
};

// One set of the cache: the pages held by its two ways, and their state.
struct TmpSet {
  unsigned short pageA;
  unsigned short pageB;
  std::uint32_t flags;
};

class ZU_API ZuTmpFile : public ZuObject {
 public:
  // `cacheSize` a power of two, at least 4096. Allocates nothing.
  explicit ZuTmpFile(unsigned short cacheSize = zu::storage::kDefaultCacheSize);
  ~ZuTmpFile() override;
  ZuTmpFile(const ZuTmpFile&) = delete;
  ZuTmpFile& operator=(const ZuTmpFile&) = delete;

  // Back to the state after construction; files closed and deleted,
  // modified pages dropped.
  void tmpTruncate();
  // `size` bytes by first fit from the free list, else from the top; size
  // 0xFFFFFFFF claims everything from the top up.
  ZuStatus tmpFindSpace(std::uint32_t size, std::uint32_t* offset);
  // Never fails; an extent it cannot keep is lost until truncation.
  void tmpFreeSpace(std::uint32_t offset, std::uint32_t size);
  // From the top only: aligned to 4, and inside one page when it fits one.
  std::uint32_t getContiguousSpace(std::uint32_t size);
  ZuStatus tmpWrite(std::uint32_t offset, const void* source, std::uint32_t count);
  // The cache must exist: the store has been written, pointed into or
  // allocated from since construction or truncation.
  ZuStatus tmpRead(std::uint32_t offset, void* destination, std::uint32_t count);
  // `count` bytes into the head of the string's buffer, its length set to
  // count, with no terminator.
  ZuStatus read(std::uint32_t offset, ZuString* target, std::uint32_t count);
  ZuStatus readHuge(std::uint32_t offset, void* destination, std::uint32_t count);
  ZuStatus writeHuge(std::uint32_t offset, const void* source, std::uint32_t count);
  // The page of `offset` made resident; *pointer at the offset in it and
  // *available the bytes from there to the end of the page. A nonzero
  // `forWrite` marks the page modified.
  ZuStatus tmpPointer(std::uint32_t offset, void** pointer, unsigned short* available,
                      unsigned short forWrite);
  // The same for the pointer types callers hold.
  ZuStatus tmpPointer(std::uint32_t offset, unsigned char** pointer, unsigned short* available,
                      unsigned short forWrite) {
    void* at = nullptr;
    const ZuStatus status = tmpPointer(offset, &at, available, forWrite);
    if (status == ZU_OK) *pointer = static_cast<unsigned char*>(at);
    return status;
  }
  ZuStatus tmpPointer(std::uint32_t offset, char** pointer, unsigned short* available,
                      unsigned short forWrite) {
    void* at = nullptr;
    const ZuStatus status = tmpPointer(offset, &at, available, forWrite);
    if (status == ZU_OK) *pointer = static_cast<char*>(at);
    return status;
  }
  // Closes both files; the names, the cache and its modified pages stay, and
  // the next transfer reopens what it needs.
  void tmpLoseFocus();

  unsigned short cacheSize;
  unsigned short highPage;      // highest page ever written out
  std::uint32_t nextOffset;     // top of the allocated space
  std::int32_t firstFile;       // 0 while closed
  unsigned char* firstName;     // null until the file is created
  unsigned short firstPages;    // pages that live in the first file
  std::int32_t secondFile;
  unsigned char* secondName;
  TmpSet* sets;                 // null until the cache is allocated
  unsigned char* cache;
  ZuSortedArray freeList;       // TmpSpace extents by start, owned
  ZuSemaphore lock;
};

#endif

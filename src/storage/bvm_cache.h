// The structure behind a bvm handle. Internal.
#ifndef ZUUTL_STORAGE_BVM_CACHE_H
#define ZUUTL_STORAGE_BVM_CACHE_H

#include <cstdint>

#include "frame/semaphore.h"

namespace zu::bvm {

inline constexpr std::uint32_t kPageBytes = 8192;
inline constexpr unsigned kPageShift = 13;
inline constexpr std::uint32_t kPageMask = kPageBytes - 1;
inline constexpr std::uint32_t kFramesPerBlock = 8;  // a 64 KiB block
inline constexpr unsigned kBuckets = 97;
inline constexpr unsigned short kEnd = 0xFFFF;
// The use clock: from this value on a replacement halves the stamps it
// scans; at the wrap every stamp and the clock are halved.
inline constexpr unsigned short kAgeingThreshold = 40000;
inline constexpr unsigned short kClockWrap = 0xFFFF;
// Slot numbers are 16 bits with kEnd reserved.
inline constexpr unsigned short kMaxBlocks = 8191;
// Pages are 16-bit numbers: the cache covers the first 512 MiB of a file.
inline constexpr std::uint32_t kPageLimit = 65536;

// One frame's description. file 0: the slot is free.
struct BvmPage {
  std::int32_t file;
  unsigned short page;
  unsigned short validBytes;  // bytes at the head of the frame that hold the file's
  unsigned short stamp;       // the clock at the last use
  unsigned short next;        // in the bucket's chain, or in the free list
};

// Invariants, under lock: every slot below pageCount is on exactly one list,
// its bucket's chain or the free list; pageCount is a multiple of 8 and at
// most maxPages; the frame of slot s lies in block s / 8 at 8192 * (s % 8),
// so it never moves while the cache lives. The blocks' table follows the
// structure, one entry for each block the first bvmInit allowed.
struct BvmCache {
  unsigned short clock;
  ZuSemaphore lock;  // all-zero, so a spin lock outside the pool
  unsigned short refCount;
  unsigned short maxPages;
  unsigned short pageCount;
  unsigned short freeHead;
  BvmPage* pages;
  unsigned short buckets[kBuckets];

  void** blocks() { return reinterpret_cast<void**>(this + 1); }
  unsigned char* frame(unsigned short slot) {
    return static_cast<unsigned char*>(blocks()[slot / kFramesPerBlock]) + kPageBytes * (slot % kFramesPerBlock);
  }
};

static_assert(sizeof(BvmCache) % alignof(void*) == 0);

}  // namespace zu::bvm

#endif

// A full walk of the heap for tests: every segment, every block, both free
// lists directions and the index beside the chain.
#include <cstdio>

#include "memory/heap.h"
#include "memory/heap_lock.h"

namespace zu::heap {
namespace {

char problem[256];

const char* fail(const char* what, const RamSegment* s, std::uint32_t off) {
  std::snprintf(problem, sizeof problem, "%s (segment %p, offset %u)", what,
                static_cast<const void*>(s), static_cast<unsigned>(off));
  return problem;
}

const char* checkSegment(RamSegment* s) {
  if (s->size < kSegmentHeader + kMinPayload) return fail("segment too small", s, 0);
  std::uint32_t used = 0, freeBlocks = 0, off = kSegmentHeader;
  while (off < s->size) {
    std::uint32_t size = blockSize(s, off);
    if (size < kMinBlock || size % kAlign != 0) return fail("bad block size", s, off);
    if (inUse(s, off)) {
      ++used;
      std::uint32_t slack = (word(s, off) & ~kInUse) >> kSlackShift;
      if (slack < kWord || slack > size) return fail("bad slack", s, off);
    } else {
      ++freeBlocks;
      if ((word(s, off) & ~kSizeMask) != 0) return fail("free block with slack bits", s, off);
    }
    off += size;
  }
  if (off != s->size) return fail("blocks do not fill the segment", s, off);
  if (used != s->blocksInUse) return fail("blocksInUse disagrees with the blocks", s, used);
  if (used == 0) return fail("segment with no block in use was kept", s, 0);

  std::uint32_t listed = 0, prev = kNullOffset;
  bool roverSeen = s->rover == kNullOffset;
  for (std::uint32_t b = s->freeHead; b != kNullOffset; b = nextFree(s, b)) {
    if (b < kSegmentHeader || b >= s->size || inUse(s, b)) {
      return fail("free list holds a block not free", s, b);
    }
    if (prevFree(s, b) != prev) return fail("free list back link broken", s, b);
    if (b == s->rover) roverSeen = true;
    prev = b;
    if (++listed > freeBlocks) return fail("free list longer than free blocks (cycle?)", s, b);
  }
  if (listed != freeBlocks) return fail("a free block is missing from the free list", s, listed);
  if (!roverSeen) return fail("rover is not on the free list", s, s->rover);
  return nullptr;
}

}  // namespace

const char* check() {
  const char* result = nullptr;
  HeapLock lock;
  std::uint32_t segments = 0;
  std::uint32_t granules = 0;
  RamSegment* prev = nullptr;
  for (RamSegment* s = head(); s != nullptr && result == nullptr; s = s->nextSegment) {
    if (s->prevSegment != prev) result = fail("chain back link broken", s, 0);
    if (result == nullptr) result = checkSegment(s);
    if (result == nullptr && indexEnabled()) {
      IndexNode* n = nodeOf(s);
      if ((prev != nullptr && nodeOf(prev)->slot >= n->slot) || index().inSlot(n->slot) != n) {
        result = fail("index order differs from the chain", s, 0);
      } else if (segmentMap().find(s) != s || segmentMap().find(base(s) + s->size - 1) != s) {
        result = fail("index cannot find the segment by address", s, 0);
      } else if (n->clean && s->rover != kNullOffset) {
        for (std::uint32_t b = s->freeHead; b != kNullOffset; b = nextFree(s, b)) {
          std::uint32_t q = b + blockSize(s, b);
          if (blockSize(s, b) > n->largest) result = fail("index bound below a free block", s, b);
          if (q < s->size && !inUse(s, q)) result = fail("clean segment has adjacent free blocks", s, b);
        }
      }
    }
    granules += static_cast<std::uint32_t>(
        ((reinterpret_cast<std::uintptr_t>(s) + s->size - 1) >> SegmentMap::kGranuleBits) -
        (reinterpret_cast<std::uintptr_t>(s) >> SegmentMap::kGranuleBits) + 1);
    prev = s;
    ++segments;
  }
  if (result == nullptr && prev != tail()) result = fail("chain tail is stale", prev, 0);
  if (result == nullptr && indexEnabled() &&
      (index().count() != segments ||
       segmentMap().entries() != granules ||
       !index().summariesHold())) {
    result = fail("index size differs from the chain, or a summary is stale", nullptr, segments);
  }
  return result;
}

}  // namespace zu::heap

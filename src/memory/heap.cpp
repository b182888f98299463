// The sub-allocating heap: first fit from a rover, deferred forward merging
// in the search only, push-on-free, a segment released at its last free.
// Every decision follows the chain; the index only skips segments whose
// search would fail without changing anything.
#include "memory/heap.h"

#include <cassert>
#include <cstring>

#include "frame/from_above.h"
#include "memory/heap_lock.h"
#include "frame/statics.h"
#include "frame/task.h"
#include "memory/ram.h"
#include "platform/platform.h"

namespace zu::heap {
namespace {

using platform::sys;

// What a segment that may hold adjacent free blocks could serve after merging.
constexpr std::uint32_t kFitUnknown = 0xFFFFFFFFu;

// One task per process, so the index and the chain's tail sit beside the
// per-task slot that holds the chain's head. Guarded by ramSemaphore.
SegmentIndex segmentIndex;
SegmentMap addressMap;
RamSegment* chainTail = nullptr;
bool useIndex = true;

RamSegment*& chainHead() {
  return *reinterpret_cast<RamSegment**>(mdsGetPerTaskDataAddress(TASK_DATA_RAM_HEAP));
}

void refreshFit(RamSegment* s) {
  if (!useIndex) return;
  IndexNode* n = nodeOf(s);
  segmentIndex.setFit(n, s->rover == kNullOffset ? 0 : n->clean ? n->largest : kFitUnknown);
}

// Segments above this size are not walked to find a block's predecessor;
// a free there just makes the segment's bound unknown.
constexpr std::uint32_t kWalkLimit = 2048;

// A small segment's lines are asked for at once, so that a walk through its
// blocks waits for memory once rather than at every block.
constexpr std::uint32_t kLine = 64;

void prefetchBlocks(RamSegment* s, std::uint32_t to) {
  for (std::uint32_t at = kSegmentHeader + kLine; at < to; at += kLine) __builtin_prefetch(base(s) + at);
}

bool freeBefore(RamSegment* s, std::uint32_t b) {
  if (b == kSegmentHeader) return false;
  if (s->size > kWalkLimit) return true;
  prefetchBlocks(s, b);
  std::uint32_t off = kSegmentHeader;
  for (std::uint32_t next = off + blockSize(s, off); next != b; next += blockSize(s, next)) off = next;
  return !inUse(s, off);
}

bool freeAfter(RamSegment* s, std::uint32_t b) {
  std::uint32_t q = b + blockSize(s, b);
  return q < s->size && !inUse(s, q);
}

// Free lists are short in the small segments that most blocks live in:
// up to this many entries, a block's free neighbours are found on the list
// rather than by reading the blocks around it.
constexpr std::uint32_t kListLimit = 8;

// Whether free block b, just pushed, touches another free block: 1 or 0,
// or 2 when the list is too long to tell.
std::uint32_t touchesOnList(RamSegment* s, std::uint32_t b) {
  const std::uint32_t end = b + blockSize(s, b);
  std::uint32_t f = nextFree(s, b);
  for (std::uint32_t k = 0; k < kListLimit; ++k) {
    if (f == kNullOffset) return 0;
    if (f == end || f + blockSize(s, f) == b) return 1;
    f = nextFree(s, f);
  }
  return f == kNullOffset ? 0 : 2;
}

// A block has just become free and sits at the head of the free list: a
// clean segment stays clean unless the block touches another free block,
// which only a search may merge.
void noteFreed(RamSegment* s, std::uint32_t b, bool predecessorInUse) {
  if (!useIndex) return;
  IndexNode* n = nodeOf(s);
  if (!n->clean) return;
  std::uint32_t touches = touchesOnList(s, b);
  if (touches == 2) touches = (freeAfter(s, b) || (!predecessorInUse && freeBefore(s, b))) ? 1 : 0;
  if (touches != 0) {
    n->clean = false;
  } else if (blockSize(s, b) > n->largest) {
    n->largest = blockSize(s, b);
  }
}

// After a search that failed, no two free blocks are adjacent: record the
// exact largest, so later requests above it pass the segment by.
void markCoalesced(RamSegment* s) {
  std::uint32_t largest = 0;
  for (std::uint32_t b = s->freeHead; b != kNullOffset; b = nextFree(s, b)) {
    if (blockSize(s, b) > largest) largest = blockSize(s, b);
  }
  IndexNode* n = nodeOf(s);
  n->clean = true;
  n->largest = largest;
  refreshFit(s);
}

void unlinkFree(RamSegment* s, std::uint32_t b) {
  std::uint32_t next = nextFree(s, b);
  std::uint32_t prev = prevFree(s, b);
  if (prev != kNullOffset) {
    nextFree(s, prev) = next;
  } else {
    s->freeHead = next;
  }
  if (next != kNullOffset) prevFree(s, next) = prev;
}

void pushFree(RamSegment* s, std::uint32_t b) {
  nextFree(s, b) = s->freeHead;
  prevFree(s, b) = kNullOffset;
  if (s->freeHead != kNullOffset) prevFree(s, s->freeHead) = b;
  s->freeHead = b;
  s->rover = b;
}

RamSegment* makeSegment(std::uint32_t need) {
  std::uint32_t payload = need < kMinPayload ? kMinPayload : need;
  std::uint32_t bytes = kSegmentHeader + payload;
  void* block = sys.blockAlloc(kIndexPrefix + static_cast<std::size_t>(bytes));
  if (block == nullptr) return nullptr;
  RamSegment* s = reinterpret_cast<RamSegment*>(static_cast<unsigned char*>(block) + kIndexPrefix);
  s->size = bytes;
  s->nextSegment = s->prevSegment = nullptr;
  s->blocksInUse = 0;
  word(s, kSegmentHeader) = payload;
  nextFree(s, kSegmentHeader) = prevFree(s, kSegmentHeader) = kNullOffset;
  s->freeHead = s->rover = kSegmentHeader;
  IndexNode* n = nodeOf(s);
  n->clean = true;
  n->largest = payload;
  n->fit = payload;
  return s;
}

// False when the index could not take the segment; nothing is linked then.
bool appendSegment(RamSegment* s) {
  if (useIndex) {
    if (!addressMap.add(s)) return false;
    if (!segmentIndex.append(nodeOf(s))) {
      addressMap.drop(s);
      return false;
    }
  }
  if (chainTail == nullptr) {
    chainHead() = s;
  } else {
    chainTail->nextSegment = s;
    s->prevSegment = chainTail;
  }
  chainTail = s;
  return true;
}

void releaseSegment(RamSegment* s) {
  if (s->prevSegment != nullptr) {
    s->prevSegment->nextSegment = s->nextSegment;
  } else {
    chainHead() = s->nextSegment;
  }
  if (s->nextSegment != nullptr) {
    s->nextSegment->prevSegment = s->prevSegment;
  } else {
    chainTail = s->prevSegment;
  }
  if (useIndex) {
    segmentIndex.remove(nodeOf(s));
    addressMap.drop(s);
  }
  sys.blockFree(nodeOf(s));
}

// Walks the free list from the rover with wrap-around, merging each too
// small block with the free blocks that follow it. Returns the block found,
// or 0 when the walk went full circle.
std::uint32_t searchSegment(RamSegment* s, std::uint32_t need) {
  std::uint32_t p = s->rover;
  std::uint32_t start = p;
  for (;;) {
    std::uint32_t size = blockSize(s, p);
    if (size >= need) return p;
    std::uint32_t q = p + size;
    if (q < s->size && !inUse(s, q)) {
      if (start == q) start = nextFree(s, q) != kNullOffset ? nextFree(s, q) : s->freeHead;
      word(s, p) = size + blockSize(s, q);
      unlinkFree(s, q);
      if (s->rover == q) s->rover = s->freeHead;
      continue;
    }
    p = nextFree(s, p) != kNullOffset ? nextFree(s, p) : s->freeHead;
    if (p == start) return blockSize(s, p) >= need ? p : kNullOffset;
  }
}

void cutBlock(RamSegment* s, std::uint32_t p, std::uint32_t need) {
  std::uint32_t size = blockSize(s, p);
  if (size > need + kSplitAbove) {
    // The tail takes p's place in the free list.
    std::uint32_t t = p + need;
    word(s, t) = size - need;
    std::uint32_t next = nextFree(s, p);
    std::uint32_t prev = prevFree(s, p);
    nextFree(s, t) = next;
    prevFree(s, t) = prev;
    if (prev != kNullOffset) {
      nextFree(s, prev) = t;
    } else {
      s->freeHead = t;
    }
    if (next != kNullOffset) prevFree(s, next) = t;
    s->rover = t;
    word(s, p) = need;
  } else {
    std::uint32_t next = nextFree(s, p);
    unlinkFree(s, p);
    s->rover = next;
  }
}

// The segment holding `p`: the first in the chain whose bytes contain it.
RamSegment* findSegment(const void* p) {
  auto at = reinterpret_cast<std::uintptr_t>(p);
  if (useIndex) return addressMap.find(p);
  for (RamSegment* s = chainHead(); s != nullptr; s = s->nextSegment) {
    auto from = reinterpret_cast<std::uintptr_t>(s);
    if (at >= from && at < from + s->size) return s;
  }
  return nullptr;
}

void setInUse(RamSegment* s, std::uint32_t b, std::uint32_t size, std::uint32_t asked) {
  word(s, b) = size | ((size - asked) << kSlackShift) | kInUse;
}

void* pointerOf(RamSegment* s, std::uint32_t b) { return base(s) + b + kWord; }

void* allocate(std::uint32_t n) {
  if (n > kMaxRequest) return nullptr;
  std::uint32_t need = blockNeed(n);
  HeapLock lock;
  RamSegment* found = nullptr;
  std::uint32_t block = kNullOffset;
  if (useIndex) {
    while (IndexNode* node = segmentIndex.firstFit(need)) {
      // No prefetch of the segment's lines here: the search mostly takes
      // the rover's block, and asking for every line cost more than it saved.
      RamSegment* s = segmentOf(node);
      block = searchSegment(s, need);
      if (block != kNullOffset) {
        found = s;
        break;
      }
      markCoalesced(s);
    }
  } else {
    for (RamSegment* s = chainHead(); s != nullptr; s = s->nextSegment) {
      if (s->rover == kNullOffset) continue;
      block = searchSegment(s, need);
      if (block != kNullOffset) {
        found = s;
        break;
      }
    }
  }
  if (found == nullptr) {
    found = makeSegment(need);
    if (found == nullptr) return nullptr;
    if (!appendSegment(found)) {
      sys.blockFree(nodeOf(found));
      return nullptr;
    }
    block = searchSegment(found, need);
  }
  const std::uint32_t cut = blockSize(found, block);
  cutBlock(found, block, need);
  // The bound of a small clean segment is kept exact, so that the index
  // sends a request only where it fits; only cutting the largest block
  // can lower it.
  if (useIndex && nodeOf(found)->clean && found->size <= kWalkLimit &&
      cut == nodeOf(found)->largest) {
    markCoalesced(found);
  }
  ++found->blocksInUse;
  setInUse(found, block, blockSize(found, block), n);
  refreshFit(found);
  return pointerOf(found, block);
}

}  // namespace

RamSegment* head() { return chainHead(); }
RamSegment* tail() { return chainTail; }
const SegmentIndex& index() { return segmentIndex; }
const SegmentMap& segmentMap() { return addressMap; }
bool indexEnabled() { return useIndex; }

bool setIndexEnabled(bool on) {
  HeapLock lock;
  if (chainHead() != nullptr) return on == useIndex;
  useIndex = on;
  return true;
}

}  // namespace zu::heap

using namespace zu::heap;

void* ramAlloc(std::uint32_t size) {
  void* p = allocate(size);
  if (p == nullptr) zu::recordFailure(zu::kOutOfMemory);  // with no lock held
  return p;
}

void* ramAllocZ(std::uint32_t size) {
  void* p = ramAlloc(size);
  if (p != nullptr) std::memset(p, 0, size);
  return p;
}

unsigned char* ramAllocStr(const unsigned char* text) {
  // Measured with a 16-bit count: texts of the library stay below 65536 bytes.
  std::uint16_t length = 0;
  for (const unsigned char* c = text; *c != 0; ++c) ++length;
  return ramAllocStr(text, length);
}

unsigned char* ramAllocStr(const unsigned char* text, std::uint32_t length) {
  auto* copy = static_cast<unsigned char*>(ramAlloc(length + 1));
  if (copy == nullptr) return nullptr;
  std::memcpy(copy, text, length);
  copy[length] = 0;
  return copy;
}

void ramFree(const void* block) {
  if (block == nullptr) return;
  // The block's own header is read while the segment is being found.
  __builtin_prefetch(static_cast<const unsigned char*>(block) - kWord, 1);
  HeapLock lock;
  RamSegment* s = findSegment(block);
  assert(s != nullptr && "ramFree: pointer in no segment");
  std::uint32_t b = offsetOf(s, block);
  assert(inUse(s, b) && "ramFree: block is not in use (double free?)");
  if (--s->blocksInUse == 0) {
    releaseSegment(s);
    return;
  }
  word(s, b) &= kSizeMask;
  pushFree(s, b);
  noteFreed(s, b, false);
  refreshFit(s);
}

std::uint32_t ramSize(const void* block) {
  std::uint32_t header = *reinterpret_cast<const std::uint32_t*>(
      static_cast<const unsigned char*>(block) - kWord);
  return (header & kSizeMask) - ((header & ~kInUse) >> kSlackShift);
}

ZuStatus ramResize(void** block, std::uint32_t size) {
  if (size > kMaxRequest) {
    zu::recordFailure(zu::kOutOfMemory);
    return ZU_ERROR;
  }
  std::uint32_t need = blockNeed(size);
  std::uint32_t old;
  {
    HeapLock lock;
    RamSegment* s = findSegment(*block);
    assert(s != nullptr && "ramResize: pointer in no segment");
    std::uint32_t b = offsetOf(s, *block);
    assert(inUse(s, b) && "ramResize: block is not in use");
    std::uint32_t have = blockSize(s, b);
    old = have - ((word(s, b) & ~kInUse) >> kSlackShift);
    bool fits = have >= need;
    if (!fits) {
      // Grow into the one free block that follows, if together they suffice.
      std::uint32_t q = b + have;
      if (q < s->size && !inUse(s, q) && have + blockSize(s, q) >= need) {
        have += blockSize(s, q);
        unlinkFree(s, q);
        if (s->rover == q) s->rover = s->freeHead;  // one free block fewer: no new neighbours
        fits = true;
      }
    }
    if (fits) {
      if (have - need > kSplitAbove) {
        std::uint32_t t = b + need;
        word(s, t) = have - need;
        pushFree(s, t);
        noteFreed(s, t, true);
        have = need;
      }
      setInUse(s, b, have, size);
      refreshFit(s);
      return ZU_OK;
    }
  }
  void* moved = ramAlloc(size);
  if (moved == nullptr) return ZU_ERROR;
  std::memcpy(moved, *block, old < size ? old : size);
  ramFree(*block);
  *block = moved;
  return ZU_OK;
}

ZuStatus ramResizeZ(void** block, std::uint32_t size) {
  std::uint32_t old = ramSize(*block);
  if (ramResize(block, size) != ZU_OK) return ZU_ERROR;
  if (size > old) std::memset(static_cast<unsigned char*>(*block) + old, 0, size - old);
  return ZU_OK;
}

namespace {
constexpr std::size_t k64K = 65536;
constexpr std::uint64_t kAllocOkAbove = 400000;
}  // namespace

void* ramAlloc64K() {
  void* p = sys.blockAlloc(k64K);
  if (p == nullptr) zu::recordFailure(zu::kOutOfMemory);
  return p;
}

void ramFree64K(const void* block) {
  if (block != nullptr) sys.blockFree(const_cast<void*>(block));
}

void* ramAllocHuge(std::uint32_t size) {
  void* p = sys.blockAlloc(size);
  if (p == nullptr) zu::recordFailure(zu::kOutOfMemory);
  return p;
}

void ramFreeHuge(const void* block) { ramFree64K(block); }

unsigned short ramIsAllocOK() { return sys.memoryAvailable() > kAllocOkAbove ? 1 : 0; }

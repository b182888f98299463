// Layout of the heap: segments (system blocks) carved into blocks.
//
// A block starts with one 32-bit header word: bits 0-23 its size (header
// included), bits 24-30 the slack (size minus what was asked), bit 31 in use.
// The caller's pointer is the block + 4. A free block keeps its free-list
// links in the next two words, as 32-bit offsets from its segment (0 is
// null: offset 0 is the segment header, never a block).
//
// Blocks fill a segment's payload exactly, so a block's physical successor
// is at its own offset plus its size while that lies inside the segment.
// On 64-bit builds sizes round to 8 and the header is padded so that every
// caller's pointer is 8-aligned; on 32-bit builds the figures are 4, 12, 24.
#ifndef ZUUTL_MEMORY_HEAP_LAYOUT_H
#define ZUUTL_MEMORY_HEAP_LAYOUT_H

#include <cstddef>
#include <cstdint>

namespace zu::heap {

constexpr std::uint32_t alignUp(std::uint32_t value, std::uint32_t to) {
  return (value + to - 1) & ~(to - 1);
}

constexpr std::uint32_t kWord = 4;                            // header word of a block
constexpr std::uint32_t kAlign = sizeof(void*) == 8 ? 8 : 4;  // granule of block sizes
constexpr std::uint32_t kMinBlock = alignUp(3 * kWord, kAlign);  // header + two links
// A remainder is split off only when it is larger than the smallest block.
constexpr std::uint32_t kSplitAbove = kMinBlock;
constexpr std::uint32_t kSizeMask = 0x00FFFFFF;
constexpr std::uint32_t kSlackShift = 24;
constexpr std::uint32_t kInUse = 0x80000000u;
constexpr std::uint32_t kMaxBlock = kSizeMask & ~(kAlign - 1);  // 16,777,212 on 32-bit
constexpr std::uint32_t kMinPayload = 472;
constexpr std::uint32_t kNullOffset = 0;

// Invariants, under ramSemaphore: blocks tile [kSegmentHeader, size)
// exactly; blocksInUse counts the blocks in use and is never 0 between calls
// (the last free hands the segment back). freeHead starts a doubly linked
// list of exactly the free blocks, and rover is kNullOffset or on that list.
struct RamSegment {
  std::uint32_t size;      // whole system block of the segment, header included
  std::uint32_t freeHead;  // offset of the first free block, or 0
  std::uint32_t rover;     // offset where the next search starts, or 0
  std::uint32_t blocksInUse;
  RamSegment* nextSegment;
  RamSegment* prevSegment;
};

// Header bytes before the first block: the caller's pointer (block + 4) must
// land on a kAlign boundary.
constexpr std::uint32_t kSegmentHeader =
    alignUp(static_cast<std::uint32_t>(sizeof(RamSegment)) + kWord, kAlign) - kWord;
static_assert(sizeof(void*) == 8 || kSegmentHeader == 24, "32-bit segment header is 24 bytes");
static_assert(sizeof(void*) == 8 || kMinBlock == 12, "32-bit smallest block is 12 bytes");
static_assert(sizeof(void*) == 8 || kMaxBlock == 16777212, "32-bit largest block");
static_assert(kMinPayload % kAlign == 0, "payloads are whole granules");

// Largest request whose block fits the size field.
constexpr std::uint32_t kMaxRequest = kMaxBlock - kWord;

// Block size for a request of n bytes (n at most kMaxRequest).
constexpr std::uint32_t blockNeed(std::uint32_t n) {
  std::uint32_t need = alignUp(n + kWord, kAlign);
  return need < kMinBlock ? kMinBlock : need;
}

inline unsigned char* base(RamSegment* s) { return reinterpret_cast<unsigned char*>(s); }

inline std::uint32_t& word(RamSegment* s, std::uint32_t off) {
  return *reinterpret_cast<std::uint32_t*>(base(s) + off);
}
inline std::uint32_t blockSize(RamSegment* s, std::uint32_t off) { return word(s, off) & kSizeMask; }
inline bool inUse(RamSegment* s, std::uint32_t off) { return (word(s, off) & kInUse) != 0; }
inline std::uint32_t& nextFree(RamSegment* s, std::uint32_t off) { return word(s, off + kWord); }
inline std::uint32_t& prevFree(RamSegment* s, std::uint32_t off) { return word(s, off + 2 * kWord); }

// Offset of the block whose caller pointer is p.
inline std::uint32_t offsetOf(RamSegment* s, const void* p) {
  return static_cast<std::uint32_t>(static_cast<const unsigned char*>(p) - base(s)) - kWord;
}

}  // namespace zu::heap

#endif

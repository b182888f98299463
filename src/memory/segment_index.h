// An index beside the segment chain that makes the heap's per-call cost
// independent of the number of segments, without changing any result.
//
// The segments by creation order (the chain's order) in numbered slots,
// under a flat tree of the largest `fit` below each point, which finds the
// first segment a search could serve. A node's `fit`
// is 0 when the segment's rover is null, the largest conceivable block when
// the segment may hold adjacent free blocks (its search would merge them),
// and otherwise an upper bound of its largest free block: a segment whose
// fit is below a request would fail that search without changing anything,
// so skipping it is exact.
//
// The slots live in one system block sized by the number of segments alone,
// so a given sequence of heap calls asks the system for the same blocks in
// the same order, whatever addresses it gets.
#ifndef ZUUTL_MEMORY_SEGMENT_INDEX_H
#define ZUUTL_MEMORY_SEGMENT_INDEX_H

#include <cstdint>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace zu::heap {

// Invariants, under ramSemaphore: the node sits in the kIndexPrefix bytes
// in front of its segment, and slot numbers grow along the chain. A clean
// node's segment, its rover set, has no two adjacent free blocks and none
// above largest.
struct IndexNode {
  std::uint32_t slot;
  std::uint32_t fit;
  // Kept by the heap: whether the segment is known to hold no two adjacent
  // free blocks, and then a bound on its largest free block.
  std::uint32_t largest;
  bool clean;
};

// Invariants, under ramSemaphore and while the heap uses the index: the
// occupied slots hold one node per segment of the chain. fits_[capacity_ + k] is the fit of slot k (0 when
// empty) and fits_[i] the larger of fits_[2i] and fits_[2i + 1]; slots at
// and above used_ are empty. With no segment, no block is held.
class SegmentIndex {
 public:
  // Appends at the end of the chain order. False when the system refused
  // the block for more slots; the index is then as it was.
  bool append(IndexNode* node);
  void remove(IndexNode* node);
  void setFit(IndexNode* node, std::uint32_t fit);
  // The first node in chain order whose fit is at least `need` (above 0),
  // or null. Four levels at a step while four remain: a node's sixteen
  // great-great-grandchildren fill one 64-byte line, compared at once.
  IndexNode* firstFit(std::uint32_t need) const {
    if (capacity_ == 0 || fits_[1] < need) return nullptr;
    std::uint32_t i = 1;
    std::uint32_t below = depth_;
    for (; below >= 4; below -= 4) {
      i = i * 16 + static_cast<std::uint32_t>(__builtin_ctz(atLeast(fits_ + i * 16, need)));
    }
    for (; below > 0; --below) {
      i *= 2;
      if (fits_[i] < need) ++i;
    }
    return nodes_[i - capacity_];
  }
  std::uint32_t count() const { return count_; }
  // The node in slot k, or null; and whether the flat tree agrees with the fits.
  IndexNode* inSlot(std::uint32_t k) const { return k < used_ ? nodes_[k] : nullptr; }
  std::uint32_t slotsUsed() const { return used_; }
  bool summariesHold() const;

 private:
  // Bit k set when group[k] >= need, for the sixteen entries of a group.
  static std::uint32_t atLeast(const std::uint32_t* group, std::uint32_t need) {
#ifdef __SSE2__
    // Unsigned order through signed compares, both sides with the top bit flipped.
    const __m128i flip = _mm_set1_epi32(static_cast<int>(0x80000000u));
    const __m128i floor = _mm_set1_epi32(static_cast<int>((need - 1) ^ 0x80000000u));
    const auto* g = reinterpret_cast<const __m128i*>(group);
    const __m128i a = _mm_cmpgt_epi32(_mm_xor_si128(_mm_load_si128(g), flip), floor);
    const __m128i b = _mm_cmpgt_epi32(_mm_xor_si128(_mm_load_si128(g + 1), flip), floor);
    const __m128i c = _mm_cmpgt_epi32(_mm_xor_si128(_mm_load_si128(g + 2), flip), floor);
    const __m128i d = _mm_cmpgt_epi32(_mm_xor_si128(_mm_load_si128(g + 3), flip), floor);
    return static_cast<std::uint32_t>(
        _mm_movemask_epi8(_mm_packs_epi16(_mm_packs_epi32(a, b), _mm_packs_epi32(c, d))));
#else
    std::uint32_t hits = 0;
    for (std::uint32_t k = 0; k < 16; ++k) hits |= (group[k] >= need ? 1u : 0u) << k;
    return hits;
#endif
  }

  bool renumber();
  void climb(std::uint32_t leaf);

  void* block_ = nullptr;          // the system block holding both tables
  std::uint32_t* fits_ = nullptr;  // 2 * capacity_ entries, 64-byte aligned; [0] unused
  IndexNode** nodes_ = nullptr;    // capacity_ entries, by slot
  std::uint32_t capacity_ = 0;     // a power of two, or 0
  std::uint32_t depth_ = 0;        // log2 of capacity_
  std::uint32_t used_ = 0;
  std::uint32_t count_ = 0;
};

}  // namespace zu::heap

#endif

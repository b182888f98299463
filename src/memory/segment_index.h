// An index beside the segment chain that makes the heap's per-call cost
// independent of the number of segments, without changing any result.
//
// The segments by creation order (the chain's order) in numbered slots,
// under a tree of sixteen-way groups holding the largest key below each
// point, which finds the first segment a search could serve. A node's `fit`
// is 0 when the segment's rover is null, the largest conceivable block when
// the segment may hold adjacent free blocks (its search would merge them),
// and otherwise an upper bound of its largest free block: a segment whose
// fit is below a request would fail that search without changing anything,
// so skipping it is exact.
//
// The tree holds a byte per fit: the fit in granules, exact up to 254 of
// them, and 255 for every fit at or above that. Requests below 255 granules
// are answered by the keys alone; larger ones look at the fits of the
// segments whose key is 255. A group of sixteen keys is one compare.
//
// The slots live in one system block sized by the number of segments alone,
// so a given sequence of heap calls asks the system for the same blocks in
// the same order, whatever addresses it gets.
#ifndef ZUUTL_MEMORY_SEGMENT_INDEX_H
#define ZUUTL_MEMORY_SEGMENT_INDEX_H

#include <cstdint>

#include "memory/heap_layout.h"

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
// occupied slots hold one node per segment of the chain. Level 0 holds the
// key of slot k at k (0 when empty); entry j of level l + 1 is the largest
// of entries 16j to 16j + 15 of level l; every level is padded with zero
// keys to whole groups, and the top level is kTop entries (a level fewer to
// rewrite at each change costs three more compares in a search). Slots at
// and above used_ are empty. With no segment, no block is held.
class SegmentIndex {
 public:
  // Blocks are whole granules of kAlign bytes, and so are fits.
  static constexpr std::uint32_t kGranuleShift = __builtin_ctz(kAlign);
  static constexpr std::uint32_t kOpenKey = 255;  // this many granules or more
  static constexpr std::uint32_t kGroup = 16;
  static constexpr std::uint32_t kTop = 64;  // entries of the top level, four groups
  static constexpr std::uint32_t kMaxLevels = 9;

  // Appends at the end of the chain order. False when the system refused
  // the block for more slots; the index is then as it was.
  bool append(IndexNode* node);
  void remove(IndexNode* node);
  void setFit(IndexNode* node, std::uint32_t fit) {
    node->fit = fit;
    const std::uint8_t key = keyOf(fit);
    if (keys_[node->slot] != key) setKey(node->slot, key);
  }
  // The first node in chain order whose fit is at least `need` (above 0),
  // or null. The top level at once, then one group at each level below.
  IndexNode* firstFit(std::uint32_t need) const {
    const std::uint32_t k = need >> kGranuleShift;
    if (k >= kOpenKey) return firstLarge(need);
    if (levels_ == 0) return nullptr;
    std::uint32_t l = levels_ - 1;
    const std::uint8_t* top = keys_ + levelAt_[l];
    const std::uint64_t hits = atLeast(top, k) | std::uint64_t{atLeast(top + 16, k)} << 16 |
                               std::uint64_t{atLeast(top + 32, k)} << 32 |
                               std::uint64_t{atLeast(top + 48, k)} << 48;
    if (hits == 0) return nullptr;
    std::uint32_t pos = static_cast<std::uint32_t>(__builtin_ctzll(hits));
    while (l > 0) {
      --l;
      const std::uint32_t below = atLeast(keys_ + levelAt_[l] + pos * kGroup, k);
      pos = pos * kGroup + static_cast<std::uint32_t>(__builtin_ctz(below));
    }
    return nodes_[pos];
  }
  std::uint32_t count() const { return count_; }
  // The node in slot k, or null; and whether the tree agrees with the fits.
  IndexNode* inSlot(std::uint32_t k) const { return k < used_ ? nodes_[k] : nullptr; }
  std::uint32_t slotsUsed() const { return used_; }
  bool summariesHold() const;

  static std::uint8_t keyOf(std::uint32_t fit) {
    const std::uint32_t granules = fit >> kGranuleShift;
    return static_cast<std::uint8_t>(granules < kOpenKey ? granules : kOpenKey);
  }

 private:
  // Bit j set when group[j] >= k, for the sixteen keys of a group.
  static std::uint32_t atLeast(const std::uint8_t* group, std::uint32_t k) {
#ifdef __SSE2__
    const __m128i g = _mm_load_si128(reinterpret_cast<const __m128i*>(group));
    const __m128i floor = _mm_set1_epi8(static_cast<char>(k));
    return static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(_mm_max_epu8(g, floor), g)));
#else
    std::uint32_t hits = 0;
    for (std::uint32_t j = 0; j < kGroup; ++j) hits |= (group[j] >= k ? 1u : 0u) << j;
    return hits;
#endif
  }
  // The largest key of a group, for rebuilding and checking; a change of one
  // key finds it in a quicker way where SSE2 is there.
  static std::uint8_t largestOf(const std::uint8_t* group) {
    std::uint8_t best = 0;
    for (std::uint32_t j = 0; j < kGroup; ++j) best = group[j] > best ? group[j] : best;
    return best;
  }

  // Where level l ends in keys_: the next level's start, or the top's width.
  std::uint32_t levelEnd(std::uint32_t l) const {
    return l + 1 < levels_ ? levelAt_[l + 1] : levelAt_[l] + kTop;
  }
  bool renumber();
  void setKey(std::uint32_t slot, std::uint8_t key);
  // The first slot at or after `from` whose key is at least k, or used_.
  std::uint32_t firstFrom(std::uint32_t from, std::uint32_t k) const;
  IndexNode* firstLarge(std::uint32_t need) const;

  void* block_ = nullptr;          // the system block holding both tables
  IndexNode** nodes_ = nullptr;    // capacity_ entries, by slot
  std::uint8_t* keys_ = nullptr;   // all levels, each 16-byte aligned
  std::uint32_t levelAt_[kMaxLevels] = {};  // offset of each level in keys_
  std::uint32_t levels_ = 0;
  std::uint32_t capacity_ = 0;     // a power of two, or 0
  std::uint32_t used_ = 0;
  std::uint32_t count_ = 0;
};

}  // namespace zu::heap

#endif

// An index beside the segment chain that makes the heap's per-call cost
// independent of the number of segments, without changing any result.
//
// The segments by creation order (the chain's order) in numbered slots,
// under a flat tree of the largest key below each point, which finds the
// first segment a search could serve. A node's `fit`
// is 0 when the segment's rover is null, the largest conceivable block when
// the segment may hold adjacent free blocks (its search would merge them),
// and otherwise an upper bound of its largest free block: a segment whose
// fit is below a request would fail that search without changing anything,
// so skipping it is exact.
//
// The tree holds a byte per fit: the fit in granules, exact below 255 of
// them, and 255 for every fit from there up. Requests below 255 granules are
// answered by the keys alone; larger ones look at the fits of the segments
// keyed 255. Sixteen keys four levels down from a node lie side by side.
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
// occupied slots hold one node per segment of the chain. keys_[capacity_ + k]
// is the key of slot k's fit (0 when empty) and keys_[i] the larger of
// keys_[2i] and keys_[2i + 1]; slots at and above used_ are empty. With no
// segment, no block is held.
class SegmentIndex {
 public:
  // Blocks, and so fits, are whole granules.
  static constexpr std::uint32_t kGranuleShift = sizeof(void*) == 8 ? 3 : 2;
  static constexpr std::uint32_t kOpenKey = 255;  // this many granules or more

  // Appends at the end of the chain order. False when the system refused
  // the block for more slots; the index is then as it was.
  bool append(IndexNode* node);
  void remove(IndexNode* node);
  void setFit(IndexNode* node, std::uint32_t fit) {
    if (node->fit == fit) return;
    node->fit = fit;
    const std::uint8_t key = keyOf(fit);
    const std::uint32_t leaf = capacity_ + node->slot;
    if (keys_[leaf] == key) return;
    keys_[leaf] = key;
    climb(leaf);
  }
  // The first node in chain order whose fit is at least `need` (above 0),
  // or null. Four levels at a step while four remain: a node's sixteen
  // great-great-grandchildren are one compare.
  IndexNode* firstFit(std::uint32_t need) const {
    const std::uint32_t k = need >> kGranuleShift;
    if (k >= kOpenKey) return firstLarge(need);
    if (capacity_ == 0 || keys_[1] < k) return nullptr;
    std::uint32_t i = 1;
    std::uint32_t below = depth_;
    for (; below >= 4; below -= 4) {
      i = i * 16 + static_cast<std::uint32_t>(__builtin_ctz(atLeast(keys_ + i * 16, k)));
    }
    for (; below > 0; --below) {
      i *= 2;
      if (keys_[i] < k) ++i;
    }
    return nodes_[i - capacity_];
  }
  std::uint32_t count() const { return count_; }
  // The node in slot k, or null; and whether the flat tree agrees with the fits.
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
    for (std::uint32_t j = 0; j < 16; ++j) hits |= (group[j] >= k ? 1u : 0u) << j;
    return hits;
#endif
  }

  bool renumber();
  void climb(std::uint32_t leaf);
  // The first slot at or after `from` whose key is at least k, or used_.
  std::uint32_t firstFrom(std::uint32_t from, std::uint32_t k) const;
  IndexNode* firstLarge(std::uint32_t need) const;

  void* block_ = nullptr;          // the system block holding both tables
  std::uint8_t* keys_ = nullptr;   // 2 * capacity_ entries, 16-byte aligned; [0] unused
  IndexNode** nodes_ = nullptr;    // capacity_ entries, by slot
  std::uint32_t capacity_ = 0;     // a power of two, or 0
  std::uint32_t depth_ = 0;        // log2 of capacity_
  std::uint32_t used_ = 0;
  std::uint32_t count_ = 0;
};

}  // namespace zu::heap

#endif

// Finds the segment that holds a pointer in one or two probes: a hash
// table from each 512-byte granule of address space that a segment touches
// to that segment. Segments are longer than a granule and never adjacent
// (each has its index node in front), so at most two share a granule.
//
// The table's size follows a bound worked out from segment sizes alone, so
// a given sequence of heap calls asks the system for the same blocks in
// the same order, whatever addresses it gets. It grows only when a segment
// is added and is given back when the last one goes.
#ifndef ZUUTL_MEMORY_SEGMENT_MAP_H
#define ZUUTL_MEMORY_SEGMENT_MAP_H

#include <cstdint>

#include "memory/heap_layout.h"

namespace zu::heap {

// Invariants, under ramSemaphore: every granule of every added segment has
// exactly one entry, found by linear probing from its hash; bound_ is at
// least the number of entries and at most half the capacity.
class SegmentMap {
 public:
  // False when the system refused a larger table; nothing changed then.
  bool add(RamSegment* s);
  void drop(RamSegment* s);
  // The entry carries its segment's size, so that the probe does not wait
  // for the segment's header.
  RamSegment* find(const void* p) const {
    const auto at = reinterpret_cast<std::uintptr_t>(p);
    for (std::uint32_t i = home(granuleOf(at));; i = (i + 1) & mask_) {
      const Entry& e = entries_[i];
      if (e.segment == nullptr) return nullptr;
      if (at - reinterpret_cast<std::uintptr_t>(e.segment) < e.size) return e.segment;
    }
  }
  std::uint32_t entries() const { return count_; }
  static std::uint32_t granulesOf(const RamSegment* s);
  static constexpr std::uint32_t kGranuleBits = 9;

 private:
  // Granules are numbered modulo 2^32: a wrapped number only lengthens a
  // probe, since an entry answers by its segment's bounds.
  struct Entry {
    RamSegment* segment;  // null: an empty entry
    std::uint32_t size;   // the segment's
    std::uint32_t granule;
  };

  static std::uint32_t granuleOf(std::uintptr_t at) {
    return static_cast<std::uint32_t>(at >> kGranuleBits);
  }
  std::uint32_t home(std::uint32_t g) const {
    return static_cast<std::uint32_t>((static_cast<std::uint64_t>(g) * 0x9E3779B97F4A7C15ull) >>
                                      shift_);
  }
  void put(std::uint32_t g, RamSegment* s, std::uint32_t size);
  void erase(std::uint32_t g, RamSegment* s);
  bool resize(std::uint32_t capacity);

  Entry* entries_ = nullptr;
  std::uint32_t mask_ = 0;
  std::uint32_t shift_ = 63;
  std::uint32_t count_ = 0;
  std::uint64_t bound_ = 0;  // granules the added segments may touch, by their sizes
};

}  // namespace zu::heap

#endif

// Internals of the heap shared with its checker and the tests.
#ifndef ZUUTL_MEMORY_HEAP_H
#define ZUUTL_MEMORY_HEAP_H

#include <cstdint>

#include "memory/heap_layout.h"
#include "memory/segment_index.h"
#include "memory/segment_map.h"

namespace zu::heap {

// Bytes of the system block in front of each segment that hold its index
// node; the segment itself keeps its contracted layout and sizes.
constexpr std::uint32_t kIndexPrefix =
    alignUp(static_cast<std::uint32_t>(sizeof(IndexNode)), 16);

inline IndexNode* nodeOf(RamSegment* s) {
  return reinterpret_cast<IndexNode*>(base(s) - kIndexPrefix);
}
inline RamSegment* segmentOf(IndexNode* n) {
  return reinterpret_cast<RamSegment*>(reinterpret_cast<unsigned char*>(n) + kIndexPrefix);
}

RamSegment* head();
RamSegment* tail();
const SegmentIndex& index();
const SegmentMap& segmentMap();

// The index is on by default. It can be switched only while the heap is
// empty; returns whether the switch happened.
bool setIndexEnabled(bool on);
bool indexEnabled();

// Walks every segment and the index. Returns null when all holds, else a
// description of the first fault found. Caller must not race the heap.
const char* check();

}  // namespace zu::heap

#endif

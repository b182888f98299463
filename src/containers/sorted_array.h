// Sorted arrays: entries kept in order by binary insertion, duplicates
// allowed, each new entry going behind those equal to it.
//
// ZuSortedArray orders ZuObject* entries by the entry class's compare
// (called on the item, given the entry). Two flag bits turn the ordering
// off: while either is set, add appends and order is the caller's concern;
// resort puts everything in order again through ZuSort, in place.
// ZuSortedArrayU32 orders unsigned 32-bit numbers and is always in order.
// No lock.
#ifndef ZUUTL_CONTAINERS_SORTED_ARRAY_H
#define ZUUTL_CONTAINERS_SORTED_ARRAY_H

#include <cstdint>

#include "containers/array.h"
#include "frame/api.h"
#include "frame/status.h"

// Bits of ZuSortedArray's flag word.
inline constexpr std::uint32_t ZU_SORTED_NEEDS_RESORT = 1;
inline constexpr std::uint32_t ZU_SORTED_APPEND_ONLY = 2;

class ZU_API ZuSortedArray : public ZuArray {
 public:
  ZuSortedArray();
  ~ZuSortedArray() override;

  ZuStatus add(ZuObject* item);
  // 1 and the place of an equal entry (any of several), or 0 and the place
  // where `item` belongs.
  unsigned int findIndexOf(ZuObject* item, unsigned short& index);
  // Linear, for an array out of order: the first entry whose compare(item)
  // is 0. On a miss `index` is left alone.
  unsigned int seqFindIndexOf(ZuObject* item, unsigned short& index);
  // Sorts in place and clears ZU_SORTED_NEEDS_RESORT. Equal entries may
  // change places among themselves. Allocates nothing.
  ZuStatus resort();

  void setNeedsResort() { sortedFlags |= ZU_SORTED_NEEDS_RESORT; }
  void setAppendOnly(bool on) {
    sortedFlags = on ? (sortedFlags | ZU_SORTED_APPEND_ONLY) : (sortedFlags & ~ZU_SORTED_APPEND_ONLY);
  }
  std::uint32_t getSortedFlags() const { return sortedFlags; }

 protected:
  // From a place where an equal entry stands, the last of that run of equals.
  unsigned short findIndexOfLastKey(ZuObject* item, unsigned short index);

  std::uint32_t sortedFlags;
};

class ZU_API ZuSortedArrayU32 : public ZuArrayU32 {
 public:
  ZuSortedArrayU32();
  ~ZuSortedArrayU32() override;

  ZuStatus add(std::uint32_t value);
  unsigned int findIndexOf(std::uint32_t value, unsigned short& index);

 protected:
  unsigned short findIndexOfLastKey(std::uint32_t value, unsigned short index);
};

#endif

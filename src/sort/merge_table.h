// The merge table of a spilled sort. It lives at the front of block 0, in
// place of the first record slots, and is packed: its size enters the slot
// arithmetic. Fields are read and written by value only (no references to
// packed members).
#ifndef ZUUTL_SORT_MERGE_TABLE_H
#define ZUUTL_SORT_MERGE_TABLE_H

#include <cstdint>

#include "sort/sort_limits.h"

// Invariants: the first activeRuns entries are the runs not yet used up, in
// the order of their head records, smallest first. Memory slots firstSlot
// to lastSlot hold the slices; each run owns sliceSize of them, or with
// shared slots they rotate from victimSlot on.
struct __attribute__((packed)) ZuMergeTable {
  unsigned short activeRuns;
  std::uint32_t recordsPerRun;
  std::uint32_t sliceSize;
  std::uint32_t mergeFlags;
  std::uint32_t lastSlot;
  std::uint32_t firstSlot;
  std::uint32_t victimSlot;
};

namespace zu::sorting {

// One run's entry. File slots are record numbers in the run file.
struct __attribute__((packed)) MergeRun {
  std::uint32_t sliceStart;   // file slot of the slice's first record
  std::uint32_t nextRead;     // where the next slice starts; past lastRecord: used up
  std::uint32_t firstRecord;
  std::uint32_t lastRecord;
  std::int32_t sliceOffset;   // the head's place in the slice; kNothingLoaded, kSliceTaken
  std::uint32_t sliceSlot;    // memory slot where the slice begins
};

inline constexpr std::int32_t kNothingLoaded = -1;
inline constexpr std::int32_t kSliceTaken = -2;

static_assert(sizeof(ZuMergeTable) == kMergeHeadBytes);
static_assert(sizeof(MergeRun) == kMergeRunBytes);

inline MergeRun* mergeRun(ZuMergeTable* table, std::uint32_t index) {
  return reinterpret_cast<MergeRun*>(reinterpret_cast<unsigned char*>(table) + kMergeHeadBytes +
                                     index * kMergeRunBytes);
}

// Record slots the table takes for `runs` runs.
inline std::uint32_t mergeTableSlots(std::uint32_t runs, std::uint32_t recordSize) {
  return (kMergeHeadBytes + kMergeRunBytes * runs + recordSize - 1) / recordSize;
}

}  // namespace zu::sorting

#endif

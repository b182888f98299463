// Fixed sizes and catalogue rows of the sort. Internal.
#ifndef ZUUTL_SORT_SORT_LIMITS_H
#define ZUUTL_SORT_SORT_LIMITS_H

#include <cstdint>

#include "os/file.h"

namespace zu::sorting {

// One intake block, as ramAlloc64K gives it.
inline constexpr std::uint32_t kBlockBytes = 65536;
inline constexpr unsigned short kMaxBlocks = 64;
// Fewer blocks than this and the sort cannot work; from this many on, a
// further block is asked for only while ramIsAllocOK says yes.
inline constexpr unsigned short kMinBlocks = 2;
inline constexpr unsigned short kMaxKeys = 64;
// A new name in the temporary directory, opened for writing.
inline constexpr std::uint32_t kRunFileFlags = ZU_OPEN_TEMP | ZU_OPEN_WRITE;
// Ranges the quicksort may hold pending at once.
inline constexpr unsigned kQuickStackDepth = 200;
// Spans from this up take the pivot from five samples, below it from three.
inline constexpr std::uint32_t kFiveSampleSpan = 151;
// The merge table: a packed head and one entry per run, at the front of
// block 0.
inline constexpr std::uint32_t kMergeHeadBytes = 26;
inline constexpr std::uint32_t kMergeRunBytes = 24;
// Shared slots need two heads side by side behind the table.
inline constexpr std::uint32_t kMinMergeSlots = 2;
// Run-file offsets are signed 32-bit.
inline constexpr std::int64_t kMaxRunFileBytes = INT32_MAX;

// Where retrieval of a spilled sort stands (ZuSort::retrieval).
enum Retrieval : unsigned char {
  kMergeReady = 0,
  // A key search missed: the head of run 0 is the next record, not yet
  // delivered, so the next step of the merge does not consume it.
  kHeadPending,
  // A read failed inside the merge: only a fresh start can go on.
  kMustRestart,
  // A run was being rewritten when a transfer failed: the run file can no
  // longer be trusted.
  kDamaged,
};

namespace msg {
// "Quicksort stack overflow"
inline constexpr unsigned short kQuickStackOverflow = 2709;
// "Too many sort keys."
inline constexpr unsigned short kTooManyKeys = 2710;
}  // namespace msg

}  // namespace zu::sorting

#endif

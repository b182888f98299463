// ZuSort: the end of intake, and the one-pass merge of all runs through
// slices held in the intake blocks. The table and the slices take the
// blocks' memory, so the merge allocates nothing.
#include <cstring>

#include "sort/merge_table.h"
#include "sort/run_file.h"
#include "sort/sort.h"
#include "sort/sort_limits.h"

using namespace zu::sorting;

namespace {

void swapRuns(MergeRun* x, MergeRun* y) {
  unsigned char held[kMergeRunBytes];
  std::memcpy(held, x, kMergeRunBytes);
  std::memcpy(x, y, kMergeRunBytes);
  std::memcpy(y, held, kMergeRunBytes);
}

// Moves entry `from` to place `to`, the entries between closing up.
void moveRun(ZuMergeTable* table, std::uint32_t from, std::uint32_t to) {
  unsigned char held[kMergeRunBytes];
  std::memcpy(held, mergeRun(table, from), kMergeRunBytes);
  if (from < to) {
    std::memmove(mergeRun(table, from), mergeRun(table, from + 1), (to - from) * kMergeRunBytes);
  } else if (to < from) {
    std::memmove(mergeRun(table, to + 1), mergeRun(table, to), (from - to) * kMergeRunBytes);
  }
  std::memcpy(mergeRun(table, to), held, kMergeRunBytes);
}

}  // namespace

ZuStatus ZuSort::finishIntake() {
  if (sortRun() != ZU_OK) return ZU_ERROR;
  if ((flags & ZU_SORT_SPILLED) == 0) {
    flags |= ZU_SORT_FINISHED;
    deliveredCount = 0;
    return ZU_OK;
  }
  // Finished only once the last run is safe on disk, so that a failure
  // here can be retried: the run is written again at its own place.
  if (writeRun() != ZU_OK) return ZU_ERROR;
  flags |= ZU_SORT_FINISHED;
  ++runCount;
  mergeTable = static_cast<ZuMergeTable*>(buffers[0]);
  lastRunRecords = nextSlotIndex;
  initMergeTable();
  deliveredCount = 0;
  return ZU_OK;
}

void ZuSort::initMergeTable() {
  ZuMergeTable* table = mergeTable;
  const std::uint32_t perRun = bufferCount * recordsPerBuffer;
  const std::uint32_t firstSlot = mergeTableSlots(runCount, recordSize);
  table->recordsPerRun = perRun;
  table->firstSlot = firstSlot;
  table->lastSlot = perRun - 1;
  std::uint32_t slice = (perRun - firstSlot) / runCount;
  table->mergeFlags = 0;
  if (slice == 0) {
    table->mergeFlags = ZU_MERGE_SHARED_SLOTS;
    slice = 1;
  }
  table->sliceSize = slice;
  for (std::uint32_t i = 0; i < runCount; ++i) {
    MergeRun* run = mergeRun(table, i);
    run->sliceSlot = firstSlot + i * slice;
    run->firstRecord = i * perRun;
    const std::uint32_t end = run->firstRecord + perRun - 1;
    run->lastRecord = end < recordCount - 1 ? end : recordCount - 1;
  }
  restartMerge();
  retrieval = kMergeReady;
}

// Reads `count` records from file slot `fileSlot` into memory at `into`.
ZuStatus ZuSort::readRecord(std::uint32_t fileSlot, void* into, std::uint32_t count) {
  return readAt(spillHandle, static_cast<std::int64_t>(fileSlot) * recordSize, into, count * recordSize);
}

ZuStatus ZuSort::mergeLoad(unsigned short index) {
  ZuMergeTable* table = mergeTable;
  MergeRun* run = mergeRun(table, index);
  std::uint32_t slot = run->sliceSlot;
  if ((table->mergeFlags & ZU_MERGE_SHARED_SLOTS) != 0) {
    slot = table->victimSlot;
    for (std::uint32_t i = 0; i < table->activeRuns; ++i) {
      MergeRun* other = mergeRun(table, i);
      if (other->sliceSlot == slot) {
        other->sliceOffset = kSliceTaken;
        other->sliceSlot = 0;
        break;
      }
    }
    run->sliceSlot = slot;
  }
  const std::uint32_t from = run->nextRead;
  std::uint32_t to = from + table->sliceSize - 1;
  if (to > run->lastRecord) to = run->lastRecord;
  run->sliceOffset = 0;
  run->sliceStart = from;
  // One read up to each block boundary of the memory slots.
  for (std::uint32_t next = from; next <= to;) {
    const std::uint32_t room = recordsPerBuffer - slot % recordsPerBuffer;
    const std::uint32_t left = to - next + 1;
    const std::uint32_t count = left < room ? left : room;
    if (readRecord(next, slotAddress(slot), count) != ZU_OK) {
      run->sliceOffset = kNothingLoaded;
      return ZU_ERROR;
    }
    next += count;
    slot += count;
  }
  return ZU_OK;
}

ZuStatus ZuSort::mergeFetch(unsigned short index, unsigned char** head) {
  ZuMergeTable* table = mergeTable;
  MergeRun* run = mergeRun(table, index);
  if (run->nextRead > run->lastRecord) {
    moveRun(table, index, table->activeRuns - 1u);
    --table->activeRuns;
    *head = nullptr;
    return ZU_OK;
  }
  if (run->sliceOffset < 0 || static_cast<std::uint32_t>(run->sliceOffset) >= table->sliceSize) {
    if (mergeLoad(index) != ZU_OK) return ZU_ERROR;
  }
  *head = slotAddress(run->sliceSlot + static_cast<std::uint32_t>(run->sliceOffset));
  // The slot just read is not the next to be taken, so two heads can
  // stand side by side for a comparison.
  if ((table->mergeFlags & ZU_MERGE_SHARED_SLOTS) != 0 && run->sliceSlot == table->victimSlot) {
    table->victimSlot = table->victimSlot == table->lastSlot ? table->firstSlot : table->victimSlot + 1;
  }
  return ZU_OK;
}

// Puts the active entries in the order of their heads by exchange; a run
// found used up leaves the table, and the pass starts again without it.
ZuStatus ZuSort::orderRuns() {
  ZuMergeTable* table = mergeTable;
  for (bool again = true; again;) {
    again = false;
    for (unsigned short i = 0; i < table->activeRuns && !again; ++i) {
      for (unsigned short j = static_cast<unsigned short>(i + 1); j < table->activeRuns; ++j) {
        unsigned char* a = nullptr;
        unsigned char* b = nullptr;
        if (mergeFetch(i, &a) != ZU_OK) return ZU_ERROR;
        if (a != nullptr && mergeFetch(j, &b) != ZU_OK) return ZU_ERROR;
        if (a == nullptr || b == nullptr) {
          again = true;
          break;
        }
        if (compareRecords(a, b) > 0) swapRuns(mergeRun(table, i), mergeRun(table, j));
      }
    }
  }
  return ZU_OK;
}

// Every run back at its start, and the entries back in the order of the
// runs in the file, so that every fresh start orders them from the same
// place and ties come out the same. Until the table is ordered again only
// a fresh start can go on.
void ZuSort::restartMerge() {
  ZuMergeTable* table = mergeTable;
  const bool shared = (table->mergeFlags & ZU_MERGE_SHARED_SLOTS) != 0;
  for (std::uint32_t i = 0; i < runCount; ++i) {
    for (;;) {
      const std::uint32_t home = mergeRun(table, i)->firstRecord / table->recordsPerRun;
      if (home == i) break;
      swapRuns(mergeRun(table, i), mergeRun(table, home));
    }
    MergeRun* run = mergeRun(table, i);
    run->nextRead = run->firstRecord;
    run->sliceOffset = kNothingLoaded;
    run->sliceStart = 0;
    if (shared) run->sliceSlot = 0;
  }
  table->activeRuns = runCount;
  table->victimSlot = table->firstSlot;
  retrieval = kMustRestart;
}

ZuStatus ZuSort::mergeFirst(unsigned char** head) {
  restartMerge();
  if (orderRuns() != ZU_OK) return ZU_ERROR;
  if (mergeFetch(0, head) != ZU_OK) return ZU_ERROR;
  retrieval = kMergeReady;
  return ZU_OK;
}

ZuStatus ZuSort::mergeNext(unsigned char** head) {
  ZuMergeTable* table = mergeTable;
  const bool shared = (table->mergeFlags & ZU_MERGE_SHARED_SLOTS) != 0;
  if (retrieval != kHeadPending) {
    MergeRun* run = mergeRun(table, 0);
    const std::int32_t offset = run->sliceOffset + 1;
    run->sliceOffset = offset;
    if (static_cast<std::uint32_t>(offset) == table->sliceSize ||
        run->sliceStart + static_cast<std::uint32_t>(offset) > run->lastRecord) {
      run->nextRead += table->sliceSize;
    }
  }
  // Until the table is in order again a failure leaves it half moved.
  retrieval = kMustRestart;
  unsigned char* first = nullptr;
  if (mergeFetch(0, &first) != ZU_OK) return ZU_ERROR;
  if (first == nullptr) {
    if (mergeFetch(0, &first) != ZU_OK) return ZU_ERROR;
    retrieval = kMergeReady;
    *head = first;
    return ZU_OK;
  }
  if (table->activeRuns == 1) {
    retrieval = kMergeReady;
    *head = first;
    return ZU_OK;
  }
  // Binary insertion of run 0 among the others; a tie goes just before
  // the run it ties with.
  std::uint32_t lo = 1;
  std::uint32_t hi = table->activeRuns - 1u;
  std::uint32_t mid = 1;
  short c = 0;
  while (hi >= lo) {
    mid = (lo + hi) / 2;
    unsigned char* other = nullptr;
    if (shared) {
      if (mergeFetch(0, &first) != ZU_OK) return ZU_ERROR;
      if (mergeFetch(static_cast<unsigned short>(mid), &other) != ZU_OK) return ZU_ERROR;
    } else {
      const MergeRun* run = mergeRun(table, mid);
      other = slotAddress(run->sliceSlot + static_cast<std::uint32_t>(run->sliceOffset));
    }
    c = compareRecords(first, other);
    if (c > 0) {
      lo = mid + 1;
    } else if (c < 0) {
      hi = mid - 1;
    } else {
      break;
    }
  }
  const std::uint32_t target = c > 0 ? mid : mid - 1;
  if (target > 0) moveRun(table, 0, target);
  if (shared) {
    if (mergeFetch(0, &first) != ZU_OK) return ZU_ERROR;
  } else {
    const MergeRun* run = mergeRun(table, 0);
    first = slotAddress(run->sliceSlot + static_cast<std::uint32_t>(run->sliceOffset));
  }
  retrieval = kMergeReady;
  *head = first;
  return ZU_OK;
}

// ZuSort: every way of getting records back, the search for a key, and
// ordering again under changed keys.
#include <cstring>

#include "errors/message.h"
#include "memory/ram.h"
#include "os/os_messages.h"
#include "sort/merge_table.h"
#include "sort/run_file.h"
#include "sort/sort.h"
#include "sort/sort_limits.h"

using namespace zu::sorting;

namespace {

bool isSpilled(std::uint32_t flags) { return (flags & ZU_SORT_SPILLED) != 0; }

// A one-record buffer from the heap, released on every way out.
class RecordBuffer {
 public:
  explicit RecordBuffer(std::uint32_t size) : bytes_(static_cast<unsigned char*>(ramAlloc(size))) {}
  ~RecordBuffer() { ramFree(bytes_); }
  RecordBuffer(const RecordBuffer&) = delete;
  RecordBuffer& operator=(const RecordBuffer&) = delete;
  unsigned char* get() const { return bytes_; }

 private:
  unsigned char* bytes_;
};

// Binary search of slots `lo` to `hi` for the key, then back one slot at a
// time to the earliest tie. `order(slot, &c)` compares the key with a slot.
// Gives the earliest tie and true, or the place where the key would stand
// and false.
template <typename Order>
ZuStatus searchKey(std::int64_t lo, std::int64_t hi, const Order& order, std::int64_t* position, bool* hit) {
  const std::int64_t first = lo;
  std::int64_t mid = lo;
  short c = 0;
  while (lo <= hi) {
    mid = (lo + hi) / 2;
    if (order(mid, &c) != ZU_OK) return ZU_ERROR;
    if (c > 0) {
      lo = mid + 1;
    } else if (c < 0) {
      hi = mid - 1;
    } else {
      break;
    }
  }
  *hit = c == 0;
  if (c != 0) {
    *position = mid + (c > 0 ? 1 : 0);
    return ZU_OK;
  }
  for (short before = 0; mid > first; --mid) {
    if (order(mid - 1, &before) != ZU_OK) return ZU_ERROR;
    if (before != 0) break;
  }
  *position = mid;
  return ZU_OK;
}

}  // namespace

// A spilled sort whose merge was cut off by a failure cannot go on where it
// stood; one whose run file is in doubt cannot go on at all.
ZuStatus ZuSort::refuseBroken() {
  addMessageError(zu::msg::kFileIoError);
  return ZU_ERROR;
}

// The record after the deliveredCount delivered: the merge's next on a
// spilled sort (a fresh start when none has been delivered), else the next
// slot; null at the end.
ZuStatus ZuSort::deliverNext(void** record) {
  if (deliveredCount == recordCount) return ZU_OK;
  unsigned char* head = nullptr;
  if (isSpilled(flags)) {
    if (retrieval == kDamaged || (retrieval == kMustRestart && deliveredCount != 0)) {
      return refuseBroken();
    }
    if ((deliveredCount == 0 ? mergeFirst(&head) : mergeNext(&head)) != ZU_OK) return ZU_ERROR;
  } else {
    head = slotAddress(deliveredCount);
  }
  ++deliveredCount;
  *record = head;
  return ZU_OK;
}

ZuStatus ZuSort::getSorted(void** record) {
  *record = nullptr;
  if ((flags & ZU_SORT_FINISHED) == 0 && finishIntake() != ZU_OK) return ZU_ERROR;
  return deliverNext(record);
}

ZuStatus ZuSort::keepPrevious(void* record) {
  if (!isSpilled(flags)) {
    previousRecord = record;
  } else {
    if (previousRecord == nullptr) {
      previousRecord = ramAlloc(recordSize);
      if (previousRecord == nullptr) return ZU_ERROR;
    }
    std::memcpy(previousRecord, record, recordSize);
  }
  previousKept = true;
  return ZU_OK;
}

ZuStatus ZuSort::getSortedWithCompare(void** record, unsigned short* equalKeys) {
  if (getSorted(record) != ZU_OK) return ZU_ERROR;
  if (*record == nullptr) return ZU_OK;
  if (deliveredCount == 1 || !previousKept) {
    *equalKeys = 0;
  } else {
    *equalKeys = countEqualKeys(*record, previousRecord, keyCount);
  }
  return keepPrevious(*record);
}

ZuStatus ZuSort::getFirstRecord(void** record) {
  *record = nullptr;
  if ((flags & ZU_SORT_FINISHED) != 0) {
    deliveredCount = 0;
  } else if (finishIntake() != ZU_OK) {
    return ZU_ERROR;
  }
  if (recordCount == 0) return ZU_OK;
  unsigned char* head = nullptr;
  if (isSpilled(flags)) {
    if (retrieval == kDamaged) return refuseBroken();
    if (mergeFirst(&head) != ZU_OK) return ZU_ERROR;
  } else {
    head = slotAddress(0);
  }
  deliveredCount = 1;
  *record = head;
  return ZU_OK;
}

ZuStatus ZuSort::getNextRecord(void** record) {
  *record = nullptr;
  // A merge needs its table, which only the end of intake builds.
  if (isSpilled(flags) && (flags & ZU_SORT_FINISHED) == 0 && finishIntake() != ZU_OK) {
    return ZU_ERROR;
  }
  return deliverNext(record);
}

ZuStatus ZuSort::getFirstRecordWithKey(void* key, void** record) {
  *record = nullptr;
  if ((flags & ZU_SORT_FINISHED) == 0 && finishIntake() != ZU_OK) return ZU_ERROR;
  previousKept = false;
  if (!isSpilled(flags)) {
    previousRecord = nullptr;
    return findKeyInMemory(key, record);
  }
  if (retrieval == kDamaged) return refuseBroken();
  return findKeyInRuns(key, record);
}

ZuStatus ZuSort::findKeyInMemory(void* key, void** record) {
  if (recordCount == 0) {
    deliveredCount = 0;
    return ZU_OK;
  }
  std::int64_t mid = 0;
  bool hit = false;
  searchKey(
      0, static_cast<std::int64_t>(recordCount) - 1,
      [&](std::int64_t slot, short* c) {
        *c = compareRecords(key, slotAddress(static_cast<std::uint32_t>(slot)));
        return ZU_OK;
      },
      &mid, &hit);
  if (!hit) {
    deliveredCount = static_cast<std::uint32_t>(mid);
    return ZU_OK;
  }
  unsigned char* found = slotAddress(static_cast<std::uint32_t>(mid));
  previousRecord = found;
  previousKept = true;
  deliveredCount = static_cast<std::uint32_t>(mid) + 1;
  *record = found;
  return ZU_OK;
}

ZuStatus ZuSort::findKeyInRuns(void* key, void** record) {
  RecordBuffer probe(recordSize);
  if (probe.get() == nullptr) return ZU_ERROR;
  ZuMergeTable* table = mergeTable;
  restartMerge();
  deliveredCount = 0;
  bool found = false;
  for (std::uint32_t i = 0; i < runCount; ++i) {
    MergeRun* run = mergeRun(table, i);
    std::int64_t position = 0;
    bool hit = false;
    const auto order = [&](std::int64_t slot, short* c) {
      if (readRecord(static_cast<std::uint32_t>(slot), probe.get(), 1) != ZU_OK) return ZU_ERROR;
      *c = compareRecords(key, probe.get());
      return ZU_OK;
    };
    if (searchKey(run->firstRecord, run->lastRecord, order, &position, &hit) != ZU_OK) return ZU_ERROR;
    found = found || hit;
    run->nextRead = static_cast<std::uint32_t>(position);
    deliveredCount += static_cast<std::uint32_t>(position - run->firstRecord);
  }
  if (orderRuns() != ZU_OK) return ZU_ERROR;
  if (!found) {
    // The head of run 0, if any, is the first record after the key.
    retrieval = kHeadPending;
    return ZU_OK;
  }
  unsigned char* head = nullptr;
  if (mergeFetch(0, &head) != ZU_OK) return ZU_ERROR;
  retrieval = kMergeReady;
  ++deliveredCount;
  if (keepPrevious(head) != ZU_OK) return ZU_ERROR;
  *record = head;
  return ZU_OK;
}

ZuStatus ZuSort::sortBuf() {
  if ((flags & ZU_SORT_FINISHED) != 0) return ZU_OK;
  // A sort that spilled can only end its intake the way retrieval does.
  if (isSpilled(flags)) return finishIntake();
  if (sortRun() != ZU_OK) return ZU_ERROR;
  deliveredCount = 0;
  flags |= ZU_SORT_FINISHED;
  return ZU_OK;
}

ZuStatus ZuSort::reSort() {
  if (!isSpilled(flags)) {
    if (sortRun() != ZU_OK) return ZU_ERROR;
    deliveredCount = 0;
    return ZU_OK;
  }
  if (retrieval == kDamaged) return refuseBroken();
  if ((flags & ZU_SORT_FINISHED) == 0 && finishIntake() != ZU_OK) return ZU_ERROR;
  return reSortRuns();
}

// Each run is read into the blocks, ordered, and written back in place.
// The merge table is overwritten on the way and built again at the end.
ZuStatus ZuSort::reSortRuns() {
  const std::uint32_t blockBytes = recordSize * recordsPerBuffer;
  const std::uint32_t perRun = bufferCount * recordsPerBuffer;
  for (std::uint32_t r = 0; r < runCount; ++r) {
    const bool last = r + 1 == runCount;
    const std::uint32_t records = last ? lastRunRecords : perRun;
    const std::uint32_t blocks = last ? (records + recordsPerBuffer - 1) / recordsPerBuffer : bufferCount;
    const std::int64_t base = static_cast<std::int64_t>(r) * bufferCount * blockBytes;
    bool failed = false;
    for (std::uint32_t b = 0; b < blocks && !failed; ++b) {
      failed = readAt(spillHandle, base + static_cast<std::int64_t>(b) * blockBytes, buffers[b], blockBytes) != ZU_OK;
    }
    nextSlotIndex = records;
    if (failed || sortRun() != ZU_OK) {
      // The file is whole: runs are either ordered anew or as they were.
      nextSlotIndex = lastRunRecords;
      initMergeTable();
      retrieval = kMustRestart;
      return ZU_ERROR;
    }
    for (std::uint32_t b = 0; b < blocks; ++b) {
      if (writeAt(spillHandle, base + static_cast<std::int64_t>(b) * blockBytes, buffers[b], blockBytes) != ZU_OK) {
        retrieval = kDamaged;
        return ZU_ERROR;
      }
    }
  }
  flags |= ZU_SORT_FINISHED;
  initMergeTable();
  deliveredCount = 0;
  return ZU_OK;
}

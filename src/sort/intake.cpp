// ZuSort: construction, keys, and records coming in, up to the point where
// a full set of blocks goes to the run file.
#include <cstring>

#include "errors/message.h"
#include "memory/ram.h"
#include "os/file.h"
#include "os/os_messages.h"
#include "sort/merge_table.h"
#include "sort/run_file.h"
#include "sort/sort.h"
#include "sort/sort_limits.h"

using namespace zu::sorting;

ZuSort::ZuSort(unsigned short recordSize)
    : nextSlotIndex(0),
      deliveredCount(0),
      recordCount(0),
      keyCount(0),
      startKey(0),
      keys{},
      runCount(0),
      lastRunRecords(0),
      spillHandle(0),
      spillPath{},
      recordSize(recordSize),
      bufferCount(0),
      recordsPerBuffer(recordSize == 0 ? 0 : kBlockBytes / recordSize),
      flags(0),
      mergeTable(nullptr),
      previousRecord(nullptr),
      buffers{},
      keyBytes{},
      retrieval(kMergeReady),
      previousKept(false) {}

ZuSort::~ZuSort() {
  if (spillHandle != 0) {
    bosFileClose(spillHandle);
    bosFileDelete(spillPath);
  }
  if ((flags & ZU_SORT_OWNS_BUFFERS) != 0) {
    for (unsigned short b = 0; b < bufferCount; ++b) ramFree64K(buffers[b]);
  }
  if ((flags & ZU_SORT_SPILLED) != 0) ramFree(previousRecord);
}

ZuStatus ZuSort::addKey(unsigned short type, unsigned short offset, unsigned short length) {
  if (keyCount == kMaxKeys) {
    addMessageError(msg::kTooManyKeys);
    return ZU_ERROR;
  }
  keys[keyCount] = ZuSortKey{type, offset, length};
  unsigned short inside = 0;
  if ((type & ZU_SORTKEY_OBJECT) != 0) {
    if (recordSize >= sizeof(ZuObject*)) inside = sizeof(ZuObject*);
  } else if (offset < recordSize) {
    const unsigned short room = static_cast<unsigned short>(recordSize - offset);
    inside = length < room ? length : room;
  }
  keyBytes[keyCount] = inside;
  ++keyCount;
  return ZU_OK;
}

void ZuSort::setStartKey(unsigned short key) { startKey = key; }

unsigned char* ZuSort::slotAddress(std::uint32_t slot) const {
  return static_cast<unsigned char*>(buffers[slot / recordsPerBuffer]) +
         (slot % recordsPerBuffer) * recordSize;
}

ZuStatus ZuSort::nextSlot(void** slot) {
  // A sort without a record size has no slots to give, and a spilled sort
  // whose intake has ended holds its merge in the blocks.
  constexpr std::uint32_t kMerging = ZU_SORT_SPILLED | ZU_SORT_FINISHED;
  if (recordsPerBuffer == 0 || (flags & kMerging) == kMerging) {
    addMessageError(zu::msg::kInvalidParameter);
    return ZU_ERROR;
  }
  const std::uint32_t s = nextSlotIndex++;
  const std::uint32_t block = s / recordsPerBuffer;
  if (block < bufferCount) {
    ++recordCount;
    *slot = static_cast<unsigned char*>(buffers[block]) + (s - block * recordsPerBuffer) * recordSize;
    return ZU_OK;
  }
  flags |= ZU_SORT_OWNS_BUFFERS;
  if ((flags & ZU_SORT_SPILLED) == 0 && bufferCount < kMaxBlocks) {
    void* block = nullptr;
    if (bufferCount < kMinBlocks || ramIsAllocOK() != 0) block = ramAlloc64K();
    if (block != nullptr) {
      buffers[bufferCount++] = block;
      ++recordCount;
      *slot = slotAddress(s);
      return ZU_OK;
    }
  }
  // The slot stays free: a later call may try again, and retrieval sees
  // only the records given out.
  --nextSlotIndex;
  if (bufferCount < kMinBlocks) return ZU_ERROR;
  if (spill() != ZU_OK) return ZU_ERROR;
  nextSlotIndex = 1;
  ++recordCount;
  *slot = slotAddress(0);
  return ZU_OK;
}

ZuStatus ZuSort::addRecord(void* record) {
  void* slot = nullptr;
  if (nextSlot(&slot) != ZU_OK) return ZU_ERROR;
  std::memcpy(slot, record, recordSize);
  return ZU_OK;
}

void ZuSort::setBuf(unsigned short count, void* buffer) {
  nextSlotIndex = count;
  recordCount = count;
  buffers[0] = buffer;
  // The caller's block holds all its records, even more than a 64 KiB
  // block would: pointer-sized records of a full array pass that on 64-bit.
  if (count > recordsPerBuffer) recordsPerBuffer = count;
}

// Orders the full blocks and writes them as the next run. A failure leaves
// the blocks, the counts and the runs written before as they were, so the
// same run can be written again at the same place.
ZuStatus ZuSort::spill() {
  if (sortRun() != ZU_OK) return ZU_ERROR;
  flags |= ZU_SORT_SPILLED;
  // Every spill is followed by at least one more run, the last.
  if (checkRunFits(static_cast<std::uint32_t>(runCount) + 2) != ZU_OK) return ZU_ERROR;
  if (writeRun() != ZU_OK) return ZU_ERROR;
  ++runCount;
  return ZU_OK;
}

// Whether `runs` runs in all can still be merged and held: the merge must
// find room for its table and two record slots in the blocks, and the run
// file must stay within its 32-bit offsets.
ZuStatus ZuSort::checkRunFits(std::uint32_t runs) {
  const std::uint32_t perRun = bufferCount * recordsPerBuffer;
  if (runs * static_cast<std::uint64_t>(kMergeRunBytes) + kMergeHeadBytes > kBlockBytes ||
      mergeTableSlots(runs, recordSize) + kMinMergeSlots > perRun) {
    addMessageError(zu::msg::kNoMemoryForCommand);
    return ZU_ERROR;
  }
  if (static_cast<std::int64_t>(runs) * perRun * recordSize > kMaxRunFileBytes) {
    addMessageError(zu::msg::kInsufficientDiskSpace);
    return ZU_ERROR;
  }
  return ZU_OK;
}

// Writes every block as run number runCount, at that run's own place.
ZuStatus ZuSort::writeRun() {
  if (spillHandle == 0) {
    spillPath[0] = '\0';
    if (bosFileOpen(spillPath, kRunFileFlags, &spillHandle) != ZU_OK) {
      // The temporary name is made as a file before it is opened.
      if (spillPath[0] != '\0') bosFileDelete(spillPath);
      spillHandle = 0;
      return ZU_ERROR;
    }
  }
  const std::uint32_t blockBytes = recordSize * recordsPerBuffer;
  std::int64_t at = static_cast<std::int64_t>(runCount) * bufferCount * blockBytes;
  for (unsigned short b = 0; b < bufferCount; ++b, at += blockBytes) {
    if (writeAt(spillHandle, at, buffers[b], blockBytes) != ZU_OK) return ZU_ERROR;
  }
  return ZU_OK;
}

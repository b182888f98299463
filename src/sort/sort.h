// ZuSort: an external sort of fixed-size records under up to 64 keys.
//
// Records come in one at a time into 64 KiB blocks taken as they are needed
// (at most 64, so 4 MiB). When the blocks are full their contents are
// ordered and written as one sorted run to a private temporary file, and
// the blocks take the next run. Retrieval ends intake: a sort that stayed in
// memory hands out pointers into its blocks; one that spilled merges all its
// runs in one pass through slices held in those same blocks.
//
// Calling order: constructor; addKey for each key, most significant first;
// optionally setStartKey; nextSlot or addRecord per record, or one setBuf;
// retrieval; destructor. Delivered records belong to the sort and stay good
// until the next retrieval call. One thread at a time; no lock.
#ifndef ZUUTL_SORT_SORT_H
#define ZUUTL_SORT_SORT_H

#include <cstdint>

#include "frame/api.h"
#include "frame/object.h"
#include "frame/status.h"

// Flags of ZuSortKey::type.
inline constexpr unsigned short ZU_SORTKEY_DESCENDING = 1;
// A character field of `length` bytes in the user's collation, ending at a NUL.
inline constexpr unsigned short ZU_SORTKEY_COLLATED = 2;
// With DESCENDING: a key whose first byte is 0 in either record is not
// reversed, so empty values stay where an ascending sort puts them.
inline constexpr unsigned short ZU_SORTKEY_EMPTY_FIXED = 4;
// The record starts with a ZuObject*, compared by the first object's compare.
inline constexpr unsigned short ZU_SORTKEY_OBJECT = 8;

// Bits of ZuSort::flags.
inline constexpr std::uint32_t ZU_SORT_OWNS_BUFFERS = 1;
inline constexpr std::uint32_t ZU_SORT_SPILLED = 2;
inline constexpr std::uint32_t ZU_SORT_FINISHED = 4;

// Bit of the merge table's flags: fewer free slots than runs, so runs take
// turns in slots of one record.
inline constexpr std::uint32_t ZU_MERGE_SHARED_SLOTS = 1;

struct ZuSortKey {
  unsigned short type;
  unsigned short offset;
  unsigned short length;
};

// The merge table of a spilled sort; it lives at the front of block 0.
struct ZuMergeTable;

// Invariants: slot s lies in block s / recordsPerBuffer and never straddles
// two blocks; while intake runs the records are slots 0 to nextSlotIndex - 1.
// Once spilled, no block is added, so every run holds bufferCount *
// recordsPerBuffer records and run k starts at record k times that in the
// run file. spillHandle is 0 exactly when no run file is open.
class ZU_API ZuSort : public ZuObject {
 public:
  explicit ZuSort(unsigned short recordSize = 0);
  // Closes and deletes the run file; frees the blocks the sort took itself.
  ~ZuSort() override;
  ZuSort(const ZuSort&) = delete;
  ZuSort& operator=(const ZuSort&) = delete;

  // Error 2710 for a 65th key, the keys unchanged.
  ZuStatus addKey(unsigned short type, unsigned short offset, unsigned short length);
  // Keys before `startKey` are taken as already in order.
  void setStartKey(unsigned short startKey);
  // The next free slot, for the caller to fill with one whole record.
  ZuStatus nextSlot(void** slot);
  ZuStatus addRecord(void* record);
  // The caller's block of `recordCount` records becomes the sort's only
  // block; it stays the caller's. Continue with sortBuf.
  void setBuf(unsigned short recordCount, void* buffer);

  // Each delivers a record or, at the end, a null pointer with ZU_OK.
  ZuStatus getSorted(void** record);
  // And the index of the first key in which the record differs from the one
  // before (keyCount when none does, 0 for the first record).
  ZuStatus getSortedWithCompare(void** record, unsigned short* equalKeys);
  ZuStatus getFirstRecord(void** record);
  ZuStatus getNextRecord(void** record);
  // The first record that ties with the key image `key`, or null; either way
  // getNextRecord goes on from that point.
  ZuStatus getFirstRecordWithKey(void* key, void** record);
  // Orders a sort that stayed in memory (a setBuf block) and ends intake.
  ZuStatus sortBuf();
  // Orders everything again under the keys and start key as they stand.
  ZuStatus reSort();

  std::uint32_t nextSlotIndex;
  std::uint32_t deliveredCount;
  std::uint32_t recordCount;
  unsigned short keyCount;
  unsigned short startKey;
  ZuSortKey keys[64];
  unsigned short runCount;
  std::uint32_t lastRunRecords;
  int spillHandle;
  unsigned char spillPath[256];
  unsigned short recordSize;
  unsigned short bufferCount;
  std::uint32_t recordsPerBuffer;
  std::uint32_t flags;
  ZuMergeTable* mergeTable;
  void* previousRecord;
  void* buffers[64];

 private:
  struct Cursor;
  struct KeyPlan;

  KeyPlan keyPlan() const;
  unsigned char* slotAddress(std::uint32_t slot) const;
  short compareRecords(void* recordA, void* recordB);
  unsigned short countEqualKeys(void* recordA, void* recordB, unsigned short limit);
  ZuStatus sortRun();
  ZuStatus quickSort(std::uint32_t first, std::uint32_t last);
  template <typename Order>
  ZuStatus quickSortSized(std::uint32_t first, std::uint32_t last, const Order& order);
  template <typename Order, typename Swap>
  ZuStatus quickSortBy(std::uint32_t first, std::uint32_t last, const Order& order, const Swap& swap);
  ZuStatus spill();
  ZuStatus writeRun();
  ZuStatus finishIntake();
  void initMergeTable();
  ZuStatus mergeLoad(unsigned short run);
  ZuStatus mergeFetch(unsigned short run, unsigned char** head);
  ZuStatus orderRuns();
  void restartMerge();
  ZuStatus mergeFirst(unsigned char** head);
  ZuStatus mergeNext(unsigned char** head);
  ZuStatus deliverNext(void** record);
  ZuStatus keepPrevious(void* record);
  ZuStatus findKeyInMemory(void* key, void** record);
  ZuStatus findKeyInRuns(void* key, void** record);
  ZuStatus readRecord(std::uint32_t fileSlot, void* into, std::uint32_t count);
  ZuStatus reSortRuns();
  ZuStatus checkRunFits(std::uint32_t runs);
  ZuStatus refuseBroken();

  // Bytes of each key that lie inside a record: a key reaching past the
  // record compares only its part inside, so nothing outside is ever read.
  unsigned short keyBytes[64];
  // Where a spilled sort's retrieval stands beyond deliveredCount.
  unsigned char retrieval;
  // previousRecord holds the record delivered before.
  bool previousKept;
};

#endif

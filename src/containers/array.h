// ZuArray: a growing array of pointer-sized items with 16-bit indexes. The
// items are one heap block of exactly `capacity` slots, zeroed when made, so
// a slot never written reads as 0. Entries in use are the first `count`.
// Growth goes by `growBy` (16) and stops at 16000 entries; setInitialSize
// may go past that, but such an array never grows.
//
// The array holds what its entries point to only as far as the caller asks
// by deleteContents or deleteAtIndex. No index is checked: a caller keeps it
// below `count` (at most `count` for addAtIndex). No lock.
//
// The subclasses hold numbers (ZuArrayU32, ZuArrayS32), stored in and read
// from the ZuObject* slots by cast, and heap blocks (ZuArrayPVoid, whose
// delete operations release with ramFree instead of running destructors).
#ifndef ZUUTL_CONTAINERS_ARRAY_H
#define ZUUTL_CONTAINERS_ARRAY_H

#include <cstdint>

#include "frame/api.h"
#include "frame/object.h"
#include "frame/status.h"

// Invariants: items is null exactly when capacity is 0, else one heap block
// of capacity slots that the array alone frees; count <= capacity. Growth
// never takes capacity past zu::kArrayLimit, though setInitialSize and
// shrink may set it higher. Slots at or past count hold 0 or a stale value.
class ZU_API ZuArray : public ZuObject {
 public:
  ZuArray();
  ~ZuArray() override;  // frees the slots, not what they point to
  ZuArray(const ZuArray&) = delete;  // one owner per block of slots
  ZuArray& operator=(const ZuArray&) = delete;

  // For a new, empty array: `size` zeroed slots, past the growth limit if
  // asked. On failure the array has no storage.
  ZuStatus setInitialSize(unsigned short size);
  // Grows by `growBy` first when full; fails with error 2722 at the limit,
  // the array unchanged.
  ZuStatus addAtIndex(ZuObject* item, unsigned short index);
  // The item is left alone; the old top slot keeps its stale value.
  void removeAtIndex(unsigned short index);
  // Deletes the item (if not null), then removes its entry.
  void deleteAtIndex(unsigned short index);
  // Deletes every non-null item and zeroes its slot; keeps the storage.
  void deleteContents();
  // Sets capacity and count to `newSize`; 0 frees the storage. Items cut
  // off are not deleted.
  ZuStatus shrink(unsigned short newSize);
  // 1 if this very pointer is an entry.
  unsigned int doesExist(ZuObject* item) const;

  unsigned short size() const { return count; }
  ZuObject* at(unsigned short index) const { return items[index]; }
  ZuObject** slotAt(unsigned short index) const { return &items[index]; }
  ZuStatus append(ZuObject* item) { return addAtIndex(item, count); }

  ZuObject** items;  // null while nothing is allocated
  unsigned short capacity;
  unsigned short count;
  unsigned short growBy;

 private:
  // Grows by `growBy` (doubles with 0). With `stopAtLimit` a growth that
  // would pass 16000 stops there, once. Without `keepContents` the old slots
  // are freed before the new are made.
  ZuStatus increaseSize(unsigned short growBy, unsigned int keepContents, unsigned int stopAtLimit);
};

class ZU_API ZuArrayU32 : public ZuArray {
 public:
  ZuArrayU32();
  ~ZuArrayU32() override;
};

class ZU_API ZuArrayS32 : public ZuArray {
 public:
  ZuArrayS32();
  ~ZuArrayS32() override;
};

// Entries are blocks from ramAlloc. Its delete operations hide the base's:
// which runs follows the static type at the call.
// Invariants: as ZuArray's; entries its delete operations see are null or
// blocks that ramFree can take.
class ZU_API ZuArrayPVoid : public ZuArray {
 public:
  ZuArrayPVoid();
  ~ZuArrayPVoid() override;

  void deleteContents();
  void deleteAtIndex(unsigned short index);
};

#endif

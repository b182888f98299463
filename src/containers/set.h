// ZuSet: an open-addressing hash table of entry pointers, beneath
// ZuDictionary. The home slot of a hash is (hash * 0x9E3779B9) % tableSize;
// a collision probes downward, wrapping from slot 0 to the top. Entries are
// never removed one by one, so no deleted marker is needed, and the fill
// limit (75% of the slots) always leaves an empty slot to end a probe. Past
// the limit the table is rehashed about a quarter larger; its slots obey the
// array limit of 16000.
//
// The set knows its entries only by pointer: hashing and equality are the
// subclass's, and so is the entries' ownership. No lock.
#ifndef ZUUTL_CONTAINERS_SET_H
#define ZUUTL_CONTAINERS_SET_H

#include <cstdint>

#include "containers/array.h"
#include "frame/api.h"
#include "frame/object.h"
#include "frame/status.h"

// Invariants: table.capacity equals tableSize, 0 and without storage until
// the set is sized; an empty slot is null. entryCount counts the entries
// stored since the last rehash, replacements included, so it is never below
// the entries held; after every add it is at most loadPercent% of tableSize,
// so a load below 100 leaves a null slot to end each probe. tableSize is at
// most zu::kArrayLimit.
class ZU_API ZuSet : public ZuObject {
 public:
  ZuSet();

  virtual std::uint32_t hashOf(void* entry) = 0;
  virtual unsigned int isSameEntry(void* existing, void* entry) = 0;

  // Stores `entry` in the slot of an entry the same as it, or else in an
  // empty one. A replacement counts in entryCount as an add does; what it
  // displaced is the subclass's to release. A new entry past the fill limit rehashes; if that
  // fails (out of memory, or error 2722 past 16000 slots) the entry is taken
  // back out and the set is as it was.
  ZuStatus addEntry(void* entry);
  unsigned short hashIndex(std::uint32_t hash) const;

  ZuArrayPVoid table;  // capacity is the table's size; count stays 0
  unsigned short tableSize;  // the modulus; 0 until initialize
  unsigned short entryCount;
  unsigned short loadPercent;
  unsigned short growPercent;
  unsigned short highWater;  // largest entryCount since construction or reset

 protected:
  ~ZuSet() override;  // frees the table; the entries are the subclass's

  // Sizes the table for `expectedEntries`. Meant once, before the first
  // entry; on a table in use it only ever grows it, by a rehash.
  ZuStatus initialize(unsigned short expectedEntries);
  // Frees the table and starts over, unsized; the entries are not touched.
  void reset();
};

#endif

// Dictionaries: keys to values, through association objects (see
// association.h) that the dictionary makes in addAssoc and deletes in its
// destructor. Keys and values stay the caller's until deleteKeyAndData or
// deleteKeyAndDataAtIndex says otherwise. A missing key reads as 0 or null;
// doesExist tells it from a stored 0. No lock.
//
// ZuDictionary hashes (it is a ZuSet) and must be initialized before use.
// Adding a key it holds already puts the new association in the old one's
// slot and deletes the old association, not its key and value. Substring
// keys hash on their first five bytes only, so long keys that share their
// start collide and are found by probing.
//
// ZuSeqDictionary keeps the order of adding in a ZuArray and scans; it
// allows the same key twice, and lookups find the first. Its index-based
// readers do not check the index.
#ifndef ZUUTL_CONTAINERS_DICTIONARY_H
#define ZUUTL_CONTAINERS_DICTIONARY_H

#include <cstdint>

#include "containers/array.h"
#include "containers/association.h"
#include "containers/set.h"
#include "frame/api.h"
#include "frame/status.h"
#include "strings/substring.h"

// Invariants: every non-null slot holds an association the dictionary made
// and alone deletes; no two hold the same key, a second add of a key
// replacing the first association in its slot.
class ZU_API ZuDictionary : public ZuSet {
 public:
  ZuDictionary();
  // Deletes the associations, last slot first; keys and values stay.
  ~ZuDictionary() override;

  ZuStatus initialize(unsigned short expectedEntries) { return ZuSet::initialize(expectedEntries); }
  // Deletes the associations (not their keys and values) and frees the
  // table; initialize must come again before the next use.
  void reset();
  // Substring keys then match without regard to case.
  void setIgnoreCase() { ignoreCase = 1; }

  ZuStatus addAssoc(std::uint32_t key, std::uint32_t data);
  ZuStatus addAssoc(std::uint32_t key, ZuObject* data);
  // Stores the pointer `key`, not a copy.
  ZuStatus addAssoc(ZuSubString* key, ZuObject* data);

  std::uint32_t getIntForKey(std::uint32_t key);
  ZuObject* getPtrForKey(std::uint32_t key);
  ZuObject* getPtrForKey(ZuSubString const* key);
  unsigned int doesExist(std::uint32_t key);
  unsigned int doesExist(ZuSubString const* key);

  // Deletes every key, value and association; the table keeps its size.
  void deleteKeyAndData();

  std::uint32_t hashOf(void* entry) override;
  unsigned int isSameEntry(void* existing, void* entry) override;

  std::uint32_t ignoreCase : 1;

 private:
  // The key's slot, or the empty slot where the probe ended.
  unsigned short getIndexForKey(std::uint32_t key);
  unsigned short getIndexForKey(ZuSubString const* key);
};

// Invariants: entries below count are associations the dictionary made and
// alone deletes, in the order they were added; keys may repeat.
class ZU_API ZuSeqDictionary : public ZuArray {
 public:
  ZuSeqDictionary();
  // Deletes the associations, last first; keys and values stay.
  ~ZuSeqDictionary() override;

  void setIgnoreCase() { ignoreCase = 1; }

  // Appended; error 2722 past 16000 entries.
  ZuStatus addAssoc(std::uint32_t key, std::uint32_t data);
  ZuStatus addAssoc(std::uint32_t key, ZuObject* data);
  ZuStatus addAssoc(ZuSubString* key, ZuObject* data);

  // Index of the first association of the key, else `count`.
  unsigned short getIndexForKey(std::uint32_t key);
  unsigned short getIndexForKey(ZuSubString const& key);
  unsigned short getIndexForKey(ZuSubString const* key);
  unsigned int doesExist(std::uint32_t key);
  unsigned int doesExist(ZuSubString const* key);
  std::uint32_t getIntForKey(std::uint32_t key);
  ZuObject* getPtrForKey(std::uint32_t key);
  ZuObject* getPtrForKey(ZuSubString const* key);

  // The key must be there (a missing one changes nothing). The old value is
  // not deleted.
  void changeData(std::uint32_t key, std::uint32_t data);
  void changeData(ZuSubString const& key, ZuObject* data);

  ZuObject* getPtrDataAtIndex(unsigned short index);
  std::uint32_t getIntDataAtIndex(unsigned short index);
  ZuSubString* getSubKeyAtIndex(unsigned short index);
  std::uint32_t getIntKeyAtIndex(unsigned short index);

  // Deletes every key, value and association, last first; count becomes 0.
  void deleteKeyAndData();
  // Deletes one entry's key, value and association; later entries move down.
  void deleteKeyAndDataAtIndex(unsigned short index);

  std::uint32_t ignoreCase;
};

#endif

// Slot search of ZuSet, shared with the dictionaries. Internal.
#ifndef ZUUTL_CONTAINERS_SET_SLOTS_H
#define ZUUTL_CONTAINERS_SET_SLOTS_H

#include "containers/set.h"

namespace zu {

// The entry in `slot`, or null.
inline void* entryAt(const ZuSet& set, unsigned short slot) { return set.table.at(slot); }

// The next slot of a probe: downward, from slot 0 to the top.
inline unsigned short nextProbe(const ZuSet& set, unsigned short slot) {
  return slot == 0 ? static_cast<unsigned short>(set.tableSize - 1)
                   : static_cast<unsigned short>(slot - 1);
}

// The slot holding an entry the same as `entry`, else the empty slot where
// the probe ended. The set must be sized.
unsigned short findSlot(ZuSet& set, void* entry);

// addEntry with the slot already found by findSlot, so a caller that looked
// first does not probe twice.
ZuStatus storeInSlot(ZuSet& set, void* entry, unsigned short slot);

}  // namespace zu

#endif

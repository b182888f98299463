#include "containers/set.h"

#include <utility>

#include "containers/container_messages.h"
#include "containers/set_slots.h"

namespace zu {

unsigned short findSlot(ZuSet& set, void* entry) {
  unsigned short slot = set.hashIndex(set.hashOf(entry));
  for (void* held = entryAt(set, slot); held != nullptr; held = entryAt(set, slot)) {
    if (set.isSameEntry(held, entry) != 0) break;
    slot = nextProbe(set, slot);
  }
  return slot;
}

}  // namespace zu

namespace {

constexpr std::uint32_t kPercent = 100;

// Slots for `entries` at the set's fill limit; one more than the exact
// quotient, so a full table still has an empty slot.
std::uint32_t sizeForEntries(const ZuSet& set, std::uint32_t entries) {
  return entries * kPercent / set.loadPercent + 1;
}

std::uint32_t threshold(const ZuSet& set) {
  return std::uint32_t{set.loadPercent} * set.tableSize / kPercent;
}

// Moves every entry into a new table of `slots` slots, in the order of the
// old slots. The new storage is made before any entry moves, so a failure
// (out of memory, or past the limit) leaves the set as it was.
ZuStatus rehash(ZuSet& set, std::uint32_t slots) {
  if (slots > zu::kArrayLimit) {
    zu::refuseArrayGrowth();
    return ZU_ERROR;
  }
  ZuArrayPVoid old;
  if (old.setInitialSize(static_cast<unsigned short>(slots)) != ZU_OK) return ZU_ERROR;
  std::swap(old.items, set.table.items);
  std::swap(old.capacity, set.table.capacity);
  set.tableSize = static_cast<unsigned short>(slots);
  set.entryCount = 0;
  // Re-adding cannot rehash again: the new limit is above the old count.
  for (unsigned short i = 0; i < old.capacity; ++i) {
    if (old.at(i) != nullptr) set.addEntry(old.at(i));
  }
  return ZU_OK;  // `old` frees the old slots
}

}  // namespace

ZuSet::ZuSet()
    : tableSize(0),
      entryCount(0),
      loadPercent(zu::kSetLoadPercent),
      growPercent(zu::kSetGrowPercent),
      highWater(0) {}

ZuSet::~ZuSet() = default;

ZuStatus ZuSet::initialize(unsigned short expectedEntries) {
  const std::uint32_t slots = sizeForEntries(*this, expectedEntries);
  if (tableSize != 0) {
    // Already in use: the entries must move to their new homes.
    return slots > tableSize ? rehash(*this, slots) : ZU_OK;
  }
  if (slots > zu::kArrayLimit) {
    zu::refuseArrayGrowth();
    return ZU_ERROR;
  }
  if (table.setInitialSize(static_cast<unsigned short>(slots)) != ZU_OK) return ZU_ERROR;
  tableSize = static_cast<unsigned short>(slots);
  return ZU_OK;
}

void ZuSet::reset() {
  table.shrink(0);
  tableSize = 0;
  entryCount = 0;
  loadPercent = zu::kSetLoadPercent;
  growPercent = zu::kSetGrowPercent;
  highWater = 0;
}

unsigned short ZuSet::hashIndex(std::uint32_t hash) const {
  if (tableSize == 0) return 0;  // unsized: no slot to name
  return static_cast<unsigned short>(hash * zu::kSetHashMultiplier % tableSize);
}

ZuStatus ZuSet::addEntry(void* entry) {
  if (entry == nullptr) return ZU_OK;  // would read as an empty slot
  // Used before initialize: sized as for no entries rather than divided by 0.
  if (tableSize == 0 && initialize(0) != ZU_OK) return ZU_ERROR;
  return zu::storeInSlot(*this, entry, zu::findSlot(*this, entry));
}

ZuStatus zu::storeInSlot(ZuSet& set, void* entry, unsigned short slot) {
  ZuObject** place = set.table.slotAt(slot);
  // A replaced entry counts as an add all the same; the next rehash puts
  // the count right again.
  ZuObject* const displaced = *place;
  *place = static_cast<ZuObject*>(entry);

  const std::uint32_t limit = threshold(set);
  ++set.entryCount;
  if (set.entryCount > limit) {
    const auto grown = static_cast<unsigned short>(limit + set.growPercent * limit / kPercent + 1);
    if (rehash(set, sizeForEntries(set, grown)) != ZU_OK) {
      // A refused rehash moved nothing: the slot gets back what it held.
      *place = displaced;
      --set.entryCount;
      return ZU_ERROR;
    }
  }
  if (set.entryCount > set.highWater) set.highWater = set.entryCount;
  return ZU_OK;
}

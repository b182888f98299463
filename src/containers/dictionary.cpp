#include "containers/dictionary.h"

#include "containers/set_slots.h"

namespace {

ZuAssociation* asAssoc(void* entry) { return static_cast<ZuAssociation*>(entry); }

ZuAssociation* assocInSlot(const ZuSet& set, unsigned short slot) {
  return asAssoc(zu::entryAt(set, slot));
}

// Deletes every association, last slot first, and clears the slots; with
// `withKeyAndData` their keys and values go too.
void deleteAssociations(ZuSet& set, bool withKeyAndData) {
  for (std::uint32_t slot = set.table.capacity; slot-- > 0;) {
    ZuObject** place = set.table.slotAt(static_cast<unsigned short>(slot));
    ZuAssociation* a = asAssoc(*place);
    if (a == nullptr) continue;
    if (withKeyAndData) a->deleteKeyAndData();
    delete a;
    *place = nullptr;
  }
  set.entryCount = 0;
}

// Adds a new association, or gives back the failure to make one. The
// association it displaces, if any, is deleted: the dictionary owns it.
ZuStatus addNew(ZuDictionary& d, ZuAssociation* made) {
  if (made == nullptr) return ZU_ERROR;
  if (d.tableSize == 0 && d.initialize(0) != ZU_OK) {
    delete made;
    return ZU_ERROR;
  }
  const unsigned short slot = zu::findSlot(d, made);
  ZuAssociation* displaced = assocInSlot(d, slot);
  if (zu::storeInSlot(d, made, slot) != ZU_OK) {
    delete made;
    return ZU_ERROR;
  }
  delete displaced;
  return ZU_OK;
}

}  // namespace

ZuDictionary::ZuDictionary() : ignoreCase(0) {}

ZuDictionary::~ZuDictionary() { deleteAssociations(*this, false); }

void ZuDictionary::reset() {
  deleteAssociations(*this, false);
  ZuSet::reset();
}

ZuStatus ZuDictionary::addAssoc(std::uint32_t key, std::uint32_t data) {
  return addNew(*this, new ZuIntIntKey(key, data));
}

ZuStatus ZuDictionary::addAssoc(std::uint32_t key, ZuObject* data) {
  return addNew(*this, new ZuIntPtrKey(key, data));
}

ZuStatus ZuDictionary::addAssoc(ZuSubString* key, ZuObject* data) {
  return addNew(*this, new ZuSubPtrKey(key, data));
}

unsigned short ZuDictionary::getIndexForKey(std::uint32_t key) {
  unsigned short slot = hashIndex(key);
  for (ZuAssociation* a = assocInSlot(*this, slot); a != nullptr; a = assocInSlot(*this, slot)) {
    if (a->getIntKey() == key) break;
    slot = zu::nextProbe(*this, slot);
  }
  return slot;
}

unsigned short ZuDictionary::getIndexForKey(ZuSubString const* key) {
  unsigned short slot = hashIndex(key->hash());
  for (ZuAssociation* a = assocInSlot(*this, slot); a != nullptr; a = assocInSlot(*this, slot)) {
    if ((ignoreCase != 0 ? a->isKeyNoCase(key) : a->isKey(key)) != 0) break;
    slot = zu::nextProbe(*this, slot);
  }
  return slot;
}

// Lookups on an unsized table, or with no key, find nothing.
std::uint32_t ZuDictionary::getIntForKey(std::uint32_t key) {
  if (tableSize == 0) return 0;
  ZuAssociation* a = assocInSlot(*this, getIndexForKey(key));
  return a != nullptr ? a->getIntData() : 0;
}

ZuObject* ZuDictionary::getPtrForKey(std::uint32_t key) {
  if (tableSize == 0) return nullptr;
  ZuAssociation* a = assocInSlot(*this, getIndexForKey(key));
  return a != nullptr ? a->getPtrData() : nullptr;
}

ZuObject* ZuDictionary::getPtrForKey(ZuSubString const* key) {
  if (tableSize == 0 || key == nullptr) return nullptr;
  ZuAssociation* a = assocInSlot(*this, getIndexForKey(key));
  return a != nullptr ? a->getPtrData() : nullptr;
}

unsigned int ZuDictionary::doesExist(std::uint32_t key) {
  if (tableSize == 0) return 0;
  return assocInSlot(*this, getIndexForKey(key)) != nullptr ? 1 : 0;
}

unsigned int ZuDictionary::doesExist(ZuSubString const* key) {
  if (tableSize == 0 || key == nullptr) return 0;
  return assocInSlot(*this, getIndexForKey(key)) != nullptr ? 1 : 0;
}

void ZuDictionary::deleteKeyAndData() { deleteAssociations(*this, true); }

std::uint32_t ZuDictionary::hashOf(void* entry) { return asAssoc(entry)->hashKey(); }

unsigned int ZuDictionary::isSameEntry(void* existing, void* entry) {
  ZuAssociation* a = asAssoc(existing);
  ZuAssociation* b = asAssoc(entry);
  return ignoreCase != 0 ? a->isSameKeyNoCase(b) : a->isSameKey(b);
}

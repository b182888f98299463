#include "containers/dictionary.h"

namespace {

ZuAssociation* assocAt(const ZuArray& a, unsigned short index) {
  return static_cast<ZuAssociation*>(a.at(index));
}

ZuStatus appendNew(ZuSeqDictionary& d, ZuAssociation* made) {
  if (made == nullptr) return ZU_ERROR;
  if (d.append(made) != ZU_OK) {
    delete made;
    return ZU_ERROR;
  }
  return ZU_OK;
}

}  // namespace

ZuSeqDictionary::ZuSeqDictionary() : ignoreCase(0) {}

ZuSeqDictionary::~ZuSeqDictionary() {
  for (unsigned short i = count; i-- > 0;) delete at(i);
}

ZuStatus ZuSeqDictionary::addAssoc(std::uint32_t key, std::uint32_t data) {
  return appendNew(*this, new ZuIntIntKey(key, data));
}

ZuStatus ZuSeqDictionary::addAssoc(std::uint32_t key, ZuObject* data) {
  return appendNew(*this, new ZuIntPtrKey(key, data));
}

ZuStatus ZuSeqDictionary::addAssoc(ZuSubString* key, ZuObject* data) {
  return appendNew(*this, new ZuSubPtrKey(key, data));
}

unsigned short ZuSeqDictionary::getIndexForKey(std::uint32_t key) {
  unsigned short i = 0;
  while (i < count && assocAt(*this, i)->isKey(key) == 0) ++i;
  return i;
}

unsigned short ZuSeqDictionary::getIndexForKey(ZuSubString const& key) {
  unsigned short i = 0;
  if (ignoreCase != 0) {
    while (i < count && assocAt(*this, i)->isKeyNoCase(&key) == 0) ++i;
  } else {
    while (i < count && assocAt(*this, i)->isKey(&key) == 0) ++i;
  }
  return i;
}

unsigned short ZuSeqDictionary::getIndexForKey(ZuSubString const* key) {
  return key != nullptr ? getIndexForKey(*key) : count;
}

unsigned int ZuSeqDictionary::doesExist(std::uint32_t key) {
  return getIndexForKey(key) < count ? 1 : 0;
}

unsigned int ZuSeqDictionary::doesExist(ZuSubString const* key) {
  return getIndexForKey(key) < count ? 1 : 0;
}

std::uint32_t ZuSeqDictionary::getIntForKey(std::uint32_t key) {
  const unsigned short i = getIndexForKey(key);
  return i < count ? assocAt(*this, i)->getIntData() : 0;
}

ZuObject* ZuSeqDictionary::getPtrForKey(std::uint32_t key) {
  const unsigned short i = getIndexForKey(key);
  return i < count ? assocAt(*this, i)->getPtrData() : nullptr;
}

ZuObject* ZuSeqDictionary::getPtrForKey(ZuSubString const* key) {
  const unsigned short i = getIndexForKey(key);
  return i < count ? assocAt(*this, i)->getPtrData() : nullptr;
}

void ZuSeqDictionary::changeData(std::uint32_t key, std::uint32_t data) {
  const unsigned short i = getIndexForKey(key);
  if (i < count) assocAt(*this, i)->setIntData(data);
}

void ZuSeqDictionary::changeData(ZuSubString const& key, ZuObject* data) {
  const unsigned short i = getIndexForKey(key);
  if (i < count) assocAt(*this, i)->setPtrData(data);
}

ZuObject* ZuSeqDictionary::getPtrDataAtIndex(unsigned short index) {
  return assocAt(*this, index)->getPtrData();
}

std::uint32_t ZuSeqDictionary::getIntDataAtIndex(unsigned short index) {
  return assocAt(*this, index)->getIntData();
}

ZuSubString* ZuSeqDictionary::getSubKeyAtIndex(unsigned short index) {
  return assocAt(*this, index)->getSubKey();
}

std::uint32_t ZuSeqDictionary::getIntKeyAtIndex(unsigned short index) {
  return assocAt(*this, index)->getIntKey();
}

void ZuSeqDictionary::deleteKeyAndData() {
  for (unsigned short i = count; i-- > 0;) {
    ZuAssociation* a = assocAt(*this, i);
    if (a == nullptr) continue;
    a->deleteKeyAndData();
    delete a;
    items[i] = nullptr;
  }
  count = 0;
}

void ZuSeqDictionary::deleteKeyAndDataAtIndex(unsigned short index) {
  assocAt(*this, index)->deleteKeyAndData();
  ZuArray::deleteAtIndex(index);
}

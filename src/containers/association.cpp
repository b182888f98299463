#include "containers/association.h"

#include "strings/compare.h"

namespace {

// A null key reads as the empty text, so no comparison or hash can fault.
const unsigned char* bytesOf(ZuSubString const* s) { return s != nullptr ? s->bytes : nullptr; }
std::uint32_t lengthOf(ZuSubString const* s) { return s != nullptr ? s->length : 0; }

unsigned int sameBytes(ZuSubString const* a, ZuSubString const* b) {
  return strCompare(bytesOf(a), lengthOf(a), bytesOf(b), lengthOf(b)) == 0 ? 1 : 0;
}

unsigned int sameBytesCi(ZuSubString const* a, ZuSubString const* b) {
  return strCompareCi(bytesOf(a), lengthOf(a), bytesOf(b), lengthOf(b)) == 0 ? 1 : 0;
}

}  // namespace

ZuAssociation::~ZuAssociation() = default;
unsigned int ZuAssociation::isKey(std::uint32_t) { return 0; }
unsigned int ZuAssociation::isKey(ZuSubString const*) { return 0; }
unsigned int ZuAssociation::isKeyNoCase(ZuSubString const*) { return 0; }
unsigned int ZuAssociation::isSameKeyNoCase(ZuAssociation*) { return 0; }
std::uint32_t ZuAssociation::getIntKey() { return 0; }
std::uint32_t ZuAssociation::getIntData() { return 0; }
ZuSubString* ZuAssociation::getSubKey() { return nullptr; }
ZuObject* ZuAssociation::getPtrData() { return nullptr; }
void ZuAssociation::setPtrData(ZuObject*) {}
void ZuAssociation::setIntData(std::uint32_t) {}

ZuIntIntKey::~ZuIntIntKey() = default;
unsigned int ZuIntIntKey::isKey(std::uint32_t other) { return other == key ? 1 : 0; }
unsigned int ZuIntIntKey::isSameKey(ZuAssociation* other) { return other->isKey(key); }
std::uint32_t ZuIntIntKey::getIntKey() { return key; }
std::uint32_t ZuIntIntKey::getIntData() { return data; }
void ZuIntIntKey::setIntData(std::uint32_t value) { data = value; }
std::uint32_t ZuIntIntKey::hashKey() { return key; }
void ZuIntIntKey::deleteKeyAndData() {}

ZuIntPtrKey::~ZuIntPtrKey() = default;
unsigned int ZuIntPtrKey::isKey(std::uint32_t other) { return other == key ? 1 : 0; }
unsigned int ZuIntPtrKey::isSameKey(ZuAssociation* other) { return other->isKey(key); }
std::uint32_t ZuIntPtrKey::getIntKey() { return key; }
ZuObject* ZuIntPtrKey::getPtrData() { return data; }
std::uint32_t ZuIntPtrKey::hashKey() { return key; }
void ZuIntPtrKey::deleteKeyAndData() {
  delete data;
  data = nullptr;
}

ZuSubPtrKey::~ZuSubPtrKey() = default;
unsigned int ZuSubPtrKey::isKey(ZuSubString const* other) { return sameBytes(key, other); }
unsigned int ZuSubPtrKey::isSameKey(ZuAssociation* other) { return other->isKey(key); }
unsigned int ZuSubPtrKey::isKeyNoCase(ZuSubString const* other) { return sameBytesCi(key, other); }
unsigned int ZuSubPtrKey::isSameKeyNoCase(ZuAssociation* other) { return other->isKeyNoCase(key); }
ZuSubString* ZuSubPtrKey::getSubKey() { return key; }
ZuObject* ZuSubPtrKey::getPtrData() { return data; }
void ZuSubPtrKey::setPtrData(ZuObject* value) { data = value; }
std::uint32_t ZuSubPtrKey::hashKey() { return key != nullptr ? key->hash() : 0; }
void ZuSubPtrKey::deleteKeyAndData() {
  delete key;
  key = nullptr;
  delete data;
  data = nullptr;
}

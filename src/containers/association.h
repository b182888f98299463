// Associations: the key-and-value objects that the dictionaries store. Each
// kind knows how to compare its key, hash it and delete what it holds; the
// base answers "no", 0 or null for whatever a kind does not carry.
//
//   ZuIntIntKey  32-bit key -> 32-bit number
//   ZuIntPtrKey  32-bit key -> object
//   ZuSubPtrKey  substring key -> object; key and value are the caller's
//                objects, held by pointer, deleted only by deleteKeyAndData
#ifndef ZUUTL_CONTAINERS_ASSOCIATION_H
#define ZUUTL_CONTAINERS_ASSOCIATION_H

#include <cstdint>

#include "frame/api.h"
#include "frame/object.h"
#include "strings/substring.h"

class ZU_API ZuAssociation : public ZuObject {
 public:
  ZuAssociation() = default;
  ~ZuAssociation() override;

  virtual unsigned int isKey(std::uint32_t key);
  virtual unsigned int isKey(ZuSubString const* key);
  virtual unsigned int isSameKey(ZuAssociation* other) = 0;
  virtual unsigned int isKeyNoCase(ZuSubString const* key);
  virtual unsigned int isSameKeyNoCase(ZuAssociation* other);
  virtual std::uint32_t getIntKey();
  virtual std::uint32_t getIntData();
  virtual ZuSubString* getSubKey();
  virtual ZuObject* getPtrData();
  virtual void setPtrData(ZuObject* data);
  virtual void setIntData(std::uint32_t data);
  virtual std::uint32_t hashKey() = 0;
  virtual void deleteKeyAndData() = 0;
};

class ZU_API ZuIntIntKey : public ZuAssociation {
 public:
  ZuIntIntKey(std::uint32_t key, std::uint32_t data) : key(key), data(data) {}
  ~ZuIntIntKey() override;

  using ZuAssociation::isKey;
  unsigned int isKey(std::uint32_t key) override;
  unsigned int isSameKey(ZuAssociation* other) override;
  std::uint32_t getIntKey() override;
  std::uint32_t getIntData() override;
  void setIntData(std::uint32_t data) override;
  std::uint32_t hashKey() override;
  void deleteKeyAndData() override;  // nothing to delete

  std::uint32_t key;
  std::uint32_t data;
};

class ZU_API ZuIntPtrKey : public ZuAssociation {
 public:
  ZuIntPtrKey(std::uint32_t key, ZuObject* data) : key(key), data(data) {}
  ~ZuIntPtrKey() override;

  using ZuAssociation::isKey;
  unsigned int isKey(std::uint32_t key) override;
  unsigned int isSameKey(ZuAssociation* other) override;
  std::uint32_t getIntKey() override;
  ZuObject* getPtrData() override;
  std::uint32_t hashKey() override;
  void deleteKeyAndData() override;  // the value, if any

  std::uint32_t key;
  ZuObject* data;
};

// Keys compare byte for byte (isKey) or folding case (isKeyNoCase); the
// hash folds case, so one hash serves both.
class ZU_API ZuSubPtrKey : public ZuAssociation {
 public:
  ZuSubPtrKey(ZuSubString* key, ZuObject* data) : key(key), data(data) {}
  ~ZuSubPtrKey() override;

  using ZuAssociation::isKey;
  unsigned int isKey(ZuSubString const* key) override;
  unsigned int isSameKey(ZuAssociation* other) override;
  unsigned int isKeyNoCase(ZuSubString const* key) override;
  unsigned int isSameKeyNoCase(ZuAssociation* other) override;
  ZuSubString* getSubKey() override;
  ZuObject* getPtrData() override;
  void setPtrData(ZuObject* data) override;
  std::uint32_t hashKey() override;
  void deleteKeyAndData() override;  // the key, then the value, if any

  ZuSubString* key;
  ZuObject* data;
};

#endif

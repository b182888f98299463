#include "containers/array.h"

#include <cstring>

#include "containers/container_messages.h"
#include "errors/message.h"
#include "memory/ram.h"

namespace zu {

void refuseArrayGrowth() { addMessageError(msg::kArrayTooLarge); }

}  // namespace zu

namespace {

std::uint32_t bytesFor(std::uint32_t slots) {
  return slots * static_cast<std::uint32_t>(sizeof(ZuObject*));
}

ZuObject** allocSlots(std::uint32_t slots) {
  return static_cast<ZuObject**>(ramAllocZ(bytesFor(slots)));
}

}  // namespace

ZuArray::ZuArray() : items(nullptr), capacity(0), count(0), growBy(zu::kArrayGrowStep) {}

ZuArray::~ZuArray() { ramFree(items); }

ZuStatus ZuArray::setInitialSize(unsigned short size) {
  // Meant for a new array; storage it had already is given back, not lost.
  ramFree(items);
  items = nullptr;
  capacity = 0;
  count = 0;
  if (size == 0) return ZU_OK;
  items = allocSlots(size);
  if (items == nullptr) return ZU_ERROR;
  capacity = size;
  return ZU_OK;
}

ZuStatus ZuArray::increaseSize(unsigned short growBy, unsigned int keepContents,
                               unsigned int stopAtLimit) {
  std::uint32_t newSize = growBy != 0 ? std::uint32_t{capacity} + growBy : 2u * capacity;
  // Doubling nothing gives nothing; growth must make room.
  if (newSize == 0) newSize = zu::kArrayGrowStep;
  if (newSize > zu::kArrayLimit) {
    if (stopAtLimit == 0 || capacity >= zu::kArrayLimit) {
      zu::refuseArrayGrowth();
      return ZU_ERROR;
    }
    newSize = zu::kArrayLimit;
  }
  if (keepContents != 0) {
    ZuObject** grown = allocSlots(newSize);
    if (grown == nullptr) return ZU_ERROR;
    if (capacity != 0) std::memcpy(grown, items, bytesFor(capacity));
    ramFree(items);
    items = grown;
  } else {
    ramFree(items);
    items = nullptr;
    capacity = 0;
    count = 0;
    items = allocSlots(newSize);
    if (items == nullptr) return ZU_ERROR;
  }
  capacity = static_cast<unsigned short>(newSize);
  return ZU_OK;
}

ZuStatus ZuArray::addAtIndex(ZuObject* item, unsigned short index) {
  if (count == capacity && increaseSize(growBy, 1, 1) != ZU_OK) return ZU_ERROR;
  std::memmove(items + index + 1, items + index, bytesFor(count - index));
  items[index] = item;
  ++count;
  return ZU_OK;
}

void ZuArray::removeAtIndex(unsigned short index) {
  std::memmove(items + index, items + index + 1, bytesFor(count - index - 1));
  --count;
}

void ZuArray::deleteAtIndex(unsigned short index) {
  delete items[index];
  removeAtIndex(index);
}

void ZuArray::deleteContents() {
  for (unsigned short i = 0; i < count; ++i) {
    delete items[i];
    items[i] = nullptr;
  }
  count = 0;
}

ZuStatus ZuArray::shrink(unsigned short newSize) {
  if (newSize == 0) {
    ramFree(items);
    items = nullptr;
  } else if (items == nullptr) {
    items = allocSlots(newSize);
    if (items == nullptr) return ZU_ERROR;
  } else {
    void* block = items;
    if (ramResize(&block, bytesFor(newSize)) != ZU_OK) return ZU_ERROR;
    items = static_cast<ZuObject**>(block);
    // Slots gained by a "shrink" upward are new storage, and new storage
    // reads as 0.
    if (newSize > capacity) std::memset(items + capacity, 0, bytesFor(newSize - capacity));
  }
  capacity = newSize;
  count = newSize;
  return ZU_OK;
}

unsigned int ZuArray::doesExist(ZuObject* item) const {
  for (unsigned short i = 0; i < count; ++i) {
    if (items[i] == item) return 1;
  }
  return 0;
}

ZuArrayU32::ZuArrayU32() = default;
ZuArrayU32::~ZuArrayU32() = default;

ZuArrayS32::ZuArrayS32() = default;
ZuArrayS32::~ZuArrayS32() = default;

ZuArrayPVoid::ZuArrayPVoid() = default;
ZuArrayPVoid::~ZuArrayPVoid() = default;

void ZuArrayPVoid::deleteContents() {
  for (unsigned short i = 0; i < count; ++i) {
    ramFree(items[i]);
    items[i] = nullptr;
  }
  count = 0;
}

void ZuArrayPVoid::deleteAtIndex(unsigned short index) {
  ramFree(items[index]);
  removeAtIndex(index);
}

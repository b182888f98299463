#include "containers/sorted_array.h"

#include <cstdint>

#include "sort/sort.h"

namespace {

std::uint32_t numberAt(ZuObject* slot) {
  return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(slot));
}

ZuObject* slotFor(std::uint32_t value) {
  return reinterpret_cast<ZuObject*>(static_cast<std::uintptr_t>(value));
}

// The binary search of both arrays: `order(i)` is the item's comparison
// with entry i. Entry 0 is tested first so that `hi` never passes below 0.
template <typename Order>
unsigned int binarySearch(unsigned short count, Order order, unsigned short& index) {
  if (count == 0 || order(0) < 0) {
    index = 0;
    return 0;
  }
  std::uint32_t lo = 0;
  std::uint32_t hi = count - 1u;
  std::uint32_t mid = 0;
  int c = 0;
  while (hi >= lo) {
    mid = (lo + hi) / 2;
    c = order(mid);
    if (c > 0) {
      lo = mid + 1;
    } else if (c < 0) {
      hi = mid - 1;
    } else {
      index = static_cast<unsigned short>(mid);
      return 1;
    }
  }
  index = static_cast<unsigned short>(mid + (c > 0 ? 1 : 0));
  return 0;
}

template <typename Order>
unsigned short lastOfEquals(unsigned short count, Order order, unsigned short index) {
  while (index + 1u < count && order(index + 1u) == 0) ++index;
  return index;
}

int compareNumbers(std::uint32_t a, std::uint32_t b) { return a < b ? -1 : (a > b ? 1 : 0); }

}  // namespace

ZuSortedArray::ZuSortedArray() : sortedFlags(0) {}

ZuSortedArray::~ZuSortedArray() = default;

unsigned int ZuSortedArray::findIndexOf(ZuObject* item, unsigned short& index) {
  return binarySearch(count, [&](std::uint32_t i) { return int{item->compare(items[i])}; }, index);
}

unsigned short ZuSortedArray::findIndexOfLastKey(ZuObject* item, unsigned short index) {
  return lastOfEquals(count, [&](std::uint32_t i) { return int{item->compare(items[i])}; }, index);
}

unsigned int ZuSortedArray::seqFindIndexOf(ZuObject* item, unsigned short& index) {
  for (unsigned short i = 0; i < count; ++i) {
    if (items[i]->compare(item) == 0) {
      index = i;
      return 1;
    }
  }
  return 0;
}

ZuStatus ZuSortedArray::add(ZuObject* item) {
  if (count == 0 || sortedFlags != 0) return append(item);
  unsigned short index = 0;
  if (findIndexOf(item, index) != 0) index = static_cast<unsigned short>(findIndexOfLastKey(item, index) + 1);
  return addAtIndex(item, index);
}

ZuStatus ZuSortedArray::resort() {
  // Each entry is one record holding an object pointer: the sort moves the
  // pointers in place in the array's own storage and allocates nothing.
  ZuSort sort(sizeof(ZuObject*));
  sortedFlags &= ~ZU_SORTED_NEEDS_RESORT;
  sort.addKey(ZU_SORTKEY_OBJECT, 0, sizeof(ZuObject*));
  sort.setBuf(count, items);
  return sort.sortBuf();
}

ZuSortedArrayU32::ZuSortedArrayU32() = default;

ZuSortedArrayU32::~ZuSortedArrayU32() = default;

unsigned int ZuSortedArrayU32::findIndexOf(std::uint32_t value, unsigned short& index) {
  return binarySearch(count, [&](std::uint32_t i) { return compareNumbers(value, numberAt(items[i])); }, index);
}

unsigned short ZuSortedArrayU32::findIndexOfLastKey(std::uint32_t value, unsigned short index) {
  return lastOfEquals(count, [&](std::uint32_t i) { return compareNumbers(value, numberAt(items[i])); }, index);
}

ZuStatus ZuSortedArrayU32::add(std::uint32_t value) {
  if (count == 0) return append(slotFor(value));
  unsigned short index = 0;
  if (findIndexOf(value, index) != 0) index = static_cast<unsigned short>(findIndexOfLastKey(value, index) + 1);
  return addAtIndex(slotFor(value), index);
}

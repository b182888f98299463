// ZuSort: comparing records by their keys, and the ordering step.
#include <climits>
#include <cstring>

#include "sort/sort.h"
#include "sort/sort_limits.h"
#include "strings/bytes.h"
#include "strings/compare.h"

namespace {

ZuObject* objectAt(const unsigned char* record) {
  ZuObject* object;
  std::memcpy(&object, record, sizeof object);
  return object;
}

// The raw result of one key, before its direction. `inside` is the part of
// the key that lies inside the record.
short compareKey(const ZuSortKey& key, unsigned short inside, const unsigned char* a,
                 const unsigned char* b) {
  if ((key.type & ZU_SORTKEY_OBJECT) != 0) {
    if (inside == 0) return 0;
    return objectAt(a)->compare(objectAt(b));
  }
  if (inside == 0) return 0;
  if ((key.type & ZU_SORTKEY_COLLATED) != 0) {
    return strCompareIntl(a + key.offset, inside, b + key.offset, inside);
  }
  return BUTMMCMP(a + key.offset, b + key.offset, inside);
}

// Reverses a result; the one 16-bit value without a negative maps to the
// largest positive.
short negate(short result) { return result == SHRT_MIN ? SHRT_MAX : static_cast<short>(-result); }

}  // namespace

short ZuSort::compareRecords(void* recordA, void* recordB) {
  const auto* a = static_cast<const unsigned char*>(recordA);
  const auto* b = static_cast<const unsigned char*>(recordB);
  for (unsigned short k = startKey; k < keyCount; ++k) {
    const ZuSortKey& key = keys[k];
    const short raw = compareKey(key, keyBytes[k], a, b);
    if (raw == 0) continue;
    if ((key.type & ZU_SORTKEY_DESCENDING) == 0) return raw;
    // An empty value keeps its ascending place.
    if ((key.type & ZU_SORTKEY_EMPTY_FIXED) != 0 && key.offset < recordSize &&
        (a[key.offset] == 0 || b[key.offset] == 0)) {
      return raw;
    }
    return negate(raw);
  }
  return 0;
}

unsigned short ZuSort::countEqualKeys(void* recordA, void* recordB, unsigned short limit) {
  const auto* a = static_cast<const unsigned char*>(recordA);
  const auto* b = static_cast<const unsigned char*>(recordB);
  const unsigned short declared = limit < keyCount ? limit : keyCount;
  for (unsigned short k = 0; k < declared; ++k) {
    if (compareKey(keys[k], keyBytes[k], a, b) != 0) return k;
  }
  return limit;
}

ZuStatus ZuSort::sortRun() {
  if (nextSlotIndex < 2) return ZU_OK;
  if (startKey == 0) return quickSort(0, nextSlotIndex - 1);
  // Records come grouped on the leading keys: each group is ordered alone.
  std::uint32_t i = 0;
  while (i < nextSlotIndex) {
    std::uint32_t j = i + 1;
    while (j < nextSlotIndex && countEqualKeys(slotAddress(i), slotAddress(j), startKey) == startKey) {
      ++j;
    }
    if (j - i > 1 && quickSort(i, j - 1) != ZU_OK) return ZU_ERROR;
    i = j;
  }
  return ZU_OK;
}

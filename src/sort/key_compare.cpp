// ZuSort: comparing records by their keys, and the ordering step.
#include "sort/key_plan.h"
#include "sort/sort.h"

ZuSort::KeyPlan ZuSort::keyPlan() const {
  return KeyPlan{keys, keyBytes, startKey, keyCount, recordSize};
}

short ZuSort::compareRecords(void* recordA, void* recordB) {
  return keyPlan().order(static_cast<const unsigned char*>(recordA), static_cast<const unsigned char*>(recordB));
}

unsigned short ZuSort::countEqualKeys(void* recordA, void* recordB, unsigned short limit) {
  const KeyPlan plan = keyPlan();
  const auto* a = static_cast<const unsigned char*>(recordA);
  const auto* b = static_cast<const unsigned char*>(recordB);
  const unsigned short declared = limit < keyCount ? limit : keyCount;
  for (unsigned short k = 0; k < declared; ++k) {
    if (plan.raw(k, a, b) != 0) return k;
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

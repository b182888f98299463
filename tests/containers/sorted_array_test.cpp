// Sorted arrays against a model: a vector kept in order by upper_bound, so
// equal entries stand in order of arrival. Searches must agree with the
// model's bounds; append-only adds followed by resort must give the same
// key order; numbers compare as unsigned.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include "containers/sorted_array.h"
#include "containers_fixture.h"

namespace {

using zutest::ContainerTest;

struct Keyed : ZuObject {
  Keyed(int key, int arrival) : key(key), arrival(arrival) {}
  short compare(const ZuObject* other) const override {
    const int theirs = static_cast<const Keyed*>(other)->key;
    return static_cast<short>(key < theirs ? -1 : key > theirs ? 1 : 0);
  }
  int key;
  int arrival;
};

int keyAt(const ZuSortedArray& a, unsigned short i) { return static_cast<const Keyed*>(a.at(i))->key; }

TEST_F(ContainerTest, SortedArrayAgreesWithItsModel) {
  std::mt19937 rng(20261124);
  for (int round = 0; round < 20; ++round) {
    SCOPED_TRACE(round);
    const int range = 1 + round * 40;  // few keys at first: many duplicates
    ZuSortedArray array;
    std::vector<Keyed> objects;
    // The last round passes what one 64 KiB block holds of pointer-sized
    // records on 64-bit, which resort must still sort in one pass.
    const int count = round == 19 ? 10000 : 400;
    objects.reserve(count);
    std::vector<const Keyed*> model;
    const bool appendOnly = round % 4 == 3;
    if (appendOnly) array.setAppendOnly(true);
    for (int n = 0; n < count; ++n) {
      objects.emplace_back(static_cast<int>(rng() % range), n);
      Keyed* item = &objects.back();
      ASSERT_EQ(array.add(item), ZU_OK);
      const auto at = std::upper_bound(model.begin(), model.end(), item,
                                       [](const Keyed* a, const Keyed* b) { return a->key < b->key; });
      model.insert(appendOnly ? model.end() : at, item);
    }
    if (appendOnly) {
      ASSERT_EQ(array.resort(), ZU_OK);
      std::stable_sort(model.begin(), model.end(), [](const Keyed* a, const Keyed* b) { return a->key < b->key; });
      for (unsigned short i = 0; i < array.size(); ++i) ASSERT_EQ(keyAt(array, i), model[i]->key);
      continue;
    }
    // Arrival order among equals is kept: the entries are the model's.
    for (unsigned short i = 0; i < array.size(); ++i) ASSERT_EQ(array.at(i), model[i]);
    for (int probe = -1; probe <= range; ++probe) {
      Keyed wanted(probe, -1);
      unsigned short index = 9999;
      const auto lower = std::lower_bound(model.begin(), model.end(), &wanted,
                                          [](const Keyed* a, const Keyed* b) { return a->key < b->key; });
      const auto upper = std::upper_bound(model.begin(), model.end(), &wanted,
                                          [](const Keyed* a, const Keyed* b) { return a->key < b->key; });
      const unsigned int hit = array.findIndexOf(&wanted, index);
      ASSERT_EQ(hit, lower != upper ? 1u : 0u) << probe;
      if (hit != 0) {
        ASSERT_EQ(keyAt(array, index), probe);
      } else {
        ASSERT_EQ(index, lower - model.begin());
      }
      unsigned short first = 9999;
      ASSERT_EQ(array.seqFindIndexOf(&wanted, first), hit);
      if (hit != 0) {
        EXPECT_EQ(first, lower - model.begin());
      }
    }
  }
}

TEST_F(ContainerTest, SortedNumbersAreUnsignedAndStayInOrder) {
  std::mt19937 rng(7);
  ZuSortedArrayU32 array;
  std::vector<std::uint32_t> model;
  const std::uint32_t edges[] = {0u, 1u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu};
  for (int n = 0; n < 600; ++n) {
    const std::uint32_t value = n % 3 == 0 ? edges[rng() % 5] : static_cast<std::uint32_t>(rng());
    ASSERT_EQ(array.add(value), ZU_OK);
    model.insert(std::upper_bound(model.begin(), model.end(), value), value);
  }
  for (unsigned short i = 0; i < array.size(); ++i) {
    ASSERT_EQ(static_cast<std::uint32_t>(zutest::untag(array.at(i))), model[i]);
  }
  for (const std::uint32_t value : edges) {
    unsigned short index = 0;
    ASSERT_EQ(array.findIndexOf(value, index), 1u);
    EXPECT_EQ(static_cast<std::uint32_t>(zutest::untag(array.at(index))), value);
  }
}

}  // namespace

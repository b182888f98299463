// The hash table's sizes and growth sequence, downward probing with its
// wrap, replacement, reset, and the refusal past 16000 slots that leaves
// every entry in place.
#include <gtest/gtest.h>

#include <unordered_set>
#include <vector>

#include "containers/set.h"
#include "containers_fixture.h"

namespace {

struct Entry {
  std::uint32_t hash;
  int id;
};

// Entries are the same when their ids are.
class TestSet : public ZuSet {
 public:
  using ZuSet::initialize;
  using ZuSet::reset;
  std::uint32_t hashOf(void* e) override { return static_cast<Entry*>(e)->hash; }
  unsigned int isSameEntry(void* a, void* b) override {
    return static_cast<Entry*>(a)->id == static_cast<Entry*>(b)->id ? 1 : 0;
  }
  int slotOf(const Entry* e) const {
    for (unsigned short i = 0; i < table.capacity; ++i) {
      if (static_cast<const void*>(table.at(i)) == e) return i;
    }
    return -1;
  }
  // Every entry held, each once; their number must be entryCount.
  std::unordered_set<const void*> contents() const {
    std::unordered_set<const void*> held;
    for (unsigned short i = 0; i < table.capacity; ++i) {
      if (table.at(i) != nullptr) held.insert(table.at(i));
    }
    EXPECT_EQ(held.size(), entryCount);
    return held;
  }
};

std::vector<Entry> entries(int n) {
  std::vector<Entry> v;
  for (int i = 0; i < n; ++i) v.push_back({static_cast<std::uint32_t>(i), i});
  return v;
}

class Set : public zutest::ContainerTest {};

TEST_F(Set, SizesAndGrowthSequence) {
  TestSet tiny;
  ASSERT_EQ(tiny.initialize(0), ZU_OK);
  EXPECT_EQ(tiny.tableSize, 1);
  Entry first{7, 1};
  ASSERT_EQ(tiny.addEntry(&first), ZU_OK);
  EXPECT_EQ(tiny.tableSize, 2);

  TestSet s;
  ASSERT_EQ(s.initialize(10), ZU_OK);
  std::vector<unsigned short> sizes{s.tableSize};
  std::vector<Entry> v = entries(46);
  for (std::size_t i = 0; i < v.size(); ++i) {
    ASSERT_EQ(s.addEntry(&v[i]), ZU_OK);
    if (s.tableSize != sizes.back()) sizes.push_back(s.tableSize);
    ASSERT_EQ(s.contents().size(), i + 1);  // all still there after a rehash
  }
  EXPECT_EQ(sizes, (std::vector<unsigned short>{14, 18, 23, 30, 38, 49, 62}));
  EXPECT_EQ(s.highWater, 46);
}

TEST_F(Set, ProbesDownwardWrapsReplacesAndResets) {
  TestSet s;
  ASSERT_EQ(s.initialize(10), ZU_OK);
  Entry a{0, 1}, b{0, 2}, c{0, 3}, again{0, 2};
  for (Entry* e : {&a, &b, &c, &again}) ASSERT_EQ(s.addEntry(e), ZU_OK);
  EXPECT_EQ(s.slotOf(&a), 0);
  EXPECT_EQ(s.slotOf(&again), 13);  // in b's slot
  EXPECT_EQ(s.slotOf(&c), 12);
  EXPECT_EQ(s.entryCount, 4);  // the replacement counts too

  s.loadPercent = 50;
  s.reset();
  EXPECT_EQ(s.tableSize + s.entryCount + s.highWater, 0);
  EXPECT_EQ(s.loadPercent, 75);
  EXPECT_EQ(s.growPercent, 25);
  EXPECT_EQ(s.table.items, nullptr);
}

TEST_F(Set, RefusesPastSixteenThousandSlotsLeavingEveryEntry) {
  TestSet s;
  ASSERT_EQ(s.initialize(10), ZU_OK);
  std::vector<Entry> v = entries(13000);
  std::size_t added = 0;
  while (added < v.size() && s.addEntry(&v[added]) == ZU_OK) ++added;
  EXPECT_EQ(lastError(), zutest::kArrayTooLarge);
  EXPECT_GE(added, 10000u);
  EXPECT_LE(added, 12000u);
  const std::unordered_set<const void*> held = s.contents();
  EXPECT_EQ(held.size(), added);
  EXPECT_EQ(held.count(&v[added]), 0u);

  TestSet huge;
  EXPECT_EQ(huge.initialize(65535), ZU_ERROR);
  EXPECT_EQ(huge.tableSize, 0);
}

}  // namespace

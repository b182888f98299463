// Both dictionaries over the three kinds of association: missing keys
// against stored zeros, case, the weak substring hash, replacement and
// duplicates, what each delete operation deletes, the limits, and inserts
// with each system block refused.
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "containers/dictionary.h"
#include "containers_fixture.h"
#include "support/oom_sweep.h"

namespace {

using zutest::Counted;
using zutest::kArrayTooLarge;

class Dictionary : public zutest::ContainerTest {};

// Over bytes that outlive the view: a literal or a kept string.
ZuSubString view(std::string_view s) {
  return ZuSubString(reinterpret_cast<const unsigned char*>(s.data()),
                     static_cast<std::uint32_t>(s.size()));
}
ZuSubString* made(const std::string& s) { return new ZuSubString(view(s)); }

// Keys that all share their first five bytes, so all hash alike.
std::vector<std::string> sharedPrefix(int n) {
  std::vector<std::string> k;
  for (int i = 0; i < n; ++i) k.push_back("DRIVER_" + std::to_string(i));
  return k;
}

TEST_F(Dictionary, AssociationKindsAnswerOnlyForWhatTheyCarry) {
  int deaths = 0;
  ZuIntIntKey ii(1, 2);
  ZuIntPtrKey ip(1, nullptr);
  Counted value(&deaths);
  EXPECT_EQ(ii.getPtrData(), nullptr);
  EXPECT_EQ(ip.getIntData(), 0u);
  ip.setPtrData(&value);  // only the base body runs
  EXPECT_EQ(ip.getPtrData(), nullptr);
  EXPECT_EQ(ip.isSameKey(&ii), 1u);
}

TEST_F(Dictionary, HashedNumbersReplacementAndDeletion) {
  int deaths = 0;
  ZuDictionary d;
  ASSERT_EQ(d.initialize(4), ZU_OK);
  auto* value = new Counted(&deaths);
  ASSERT_EQ(d.addAssoc(1u, 0u), ZU_OK);
  ASSERT_EQ(d.addAssoc(2u, value), ZU_OK);
  EXPECT_EQ(d.doesExist(1u), 1u);  // a stored 0, told from a missing key
  EXPECT_EQ(d.doesExist(9u), 0u);
  EXPECT_EQ(d.getIntForKey(9u), 0u);
  EXPECT_EQ(d.getPtrForKey(2u), value);

  // Replacing: the new association is found, the old one freed.
  const std::uint32_t blocks = zutest::blocksInUse();
  ASSERT_EQ(d.addAssoc(1u, 5u), ZU_OK);
  EXPECT_EQ(d.getIntForKey(1u), 5u);
  EXPECT_EQ(zutest::blocksInUse(), blocks);
  EXPECT_EQ(d.entryCount, 3);  // counted as an add all the same

  d.deleteKeyAndData();
  EXPECT_EQ(deaths, 1);
  EXPECT_EQ(d.entryCount + d.doesExist(2u), 0u);
}

TEST_F(Dictionary, HashedTextKeysSharingTheirStartAndCase) {
  int deaths = 0;
  const std::vector<std::string> keys = sharedPrefix(300);
  ZuDictionary exact, folded;
  folded.setIgnoreCase();
  ASSERT_EQ(exact.initialize(0) + folded.initialize(0), ZU_OK);
  for (const std::string& k : keys) {
    ASSERT_EQ(exact.addAssoc(made(k), new Counted(&deaths)), ZU_OK);
    ASSERT_EQ(folded.addAssoc(made(k), nullptr), ZU_OK);
  }
  for (const std::string& k : keys) {
    const ZuSubString v = view(k);
    ASSERT_NE(exact.getPtrForKey(&v), nullptr) << k;
  }
  const ZuSubString lower = view("driver_7"), missing = view("DRIVER_300");
  EXPECT_EQ(exact.doesExist(&lower) + exact.doesExist(&missing), 0u);
  EXPECT_EQ(folded.doesExist(&lower), 1u);

  const unsigned short size = exact.tableSize;
  exact.deleteKeyAndData();
  EXPECT_EQ(deaths, 300);
  EXPECT_EQ(exact.tableSize, size);
  ASSERT_EQ(exact.addAssoc(made(keys[0]), nullptr), ZU_OK);  // filled again
  exact.deleteKeyAndData();
  folded.deleteKeyAndData();
}

TEST_F(Dictionary, HashedLimitLeavesTheDictionaryWhole) {
  ZuDictionary d;
  ASSERT_EQ(d.initialize(10), ZU_OK);
  std::uint32_t added = 0;
  while (added < 13000 && d.addAssoc(added, added + 1) == ZU_OK) ++added;
  EXPECT_EQ(lastError(), kArrayTooLarge);
  EXPECT_GE(added, 10000u);
  EXPECT_LE(added, 12000u);
  EXPECT_EQ(d.entryCount, added);
  EXPECT_EQ(d.doesExist(added), 0u);
  for (std::uint32_t k = 0; k < added; ++k) ASSERT_EQ(d.getIntForKey(k), k + 1) << k;
}

TEST_F(Dictionary, SequentialOrderCaseDuplicatesAndDeletion) {
  int deaths = 0;
  const std::vector<std::string> keys{"Driver", "DRIVER", "Server"};
  const ZuSubString probe = view("driver");
  ZuSeqDictionary s;
  EXPECT_EQ(s.getIndexForKey(&probe) + s.doesExist(0u), 0u);
  for (const std::string& k : keys) ASSERT_EQ(s.addAssoc(made(k), new Counted(&deaths)), ZU_OK);
  EXPECT_EQ(s.getIndexForKey(&probe), 3);  // exact: no such key
  EXPECT_EQ(s.getIndexForKey(view(keys[1])), 1);
  s.setIgnoreCase();
  EXPECT_EQ(s.getIndexForKey(view(keys[1])), 0);  // the first that matches

  ZuObject* old = s.getPtrDataAtIndex(2);
  s.changeData(view(keys[2]), new Counted(&deaths));
  EXPECT_EQ(deaths, 0);  // the old value is not deleted
  delete old;

  s.deleteKeyAndDataAtIndex(1);
  EXPECT_EQ(deaths, 2);
  EXPECT_EQ(s.getSubKeyAtIndex(1)->length, 6u);
  EXPECT_EQ(s.getIndexForKey(view(keys[2])), 1);
  s.deleteKeyAndData();
  EXPECT_EQ(deaths, 4);
  EXPECT_EQ(s.size(), 0);

  {
    ZuSeqDictionary kept;  // its destructor leaves the values alone
    ASSERT_EQ(kept.addAssoc(1u, new Counted(&deaths)), ZU_OK);
    old = kept.getPtrForKey(1u);
  }
  EXPECT_EQ(deaths, 4);
  delete old;
}

TEST_F(Dictionary, SequentialNumbersUpToTheLimit) {
  ZuSeqDictionary s;
  for (std::uint32_t k = 0; k < zutest::kLimit; ++k) ASSERT_EQ(s.addAssoc(k, k * 2), ZU_OK);
  EXPECT_EQ(s.addAssoc(1u, 1u), ZU_ERROR);
  EXPECT_EQ(lastError(), kArrayTooLarge);
  EXPECT_EQ(s.size(), zutest::kLimit);
  s.changeData(15999u, 7u);
  EXPECT_EQ(s.getIntForKey(15999u), 7u);
  EXPECT_EQ(s.getIntKeyAtIndex(15999), 15999u);
}

TEST(DictionaryOutOfMemory, Inserts) {
  zutest::SweepReport report;
  EXPECT_TRUE(zutest::sweepOutOfMemory(
      [] {
        int deaths = 0;
        ZuDictionary d;
        bool ok = d.initialize(0) == ZU_OK;
        for (std::uint32_t k = 0; ok && k < 2000; ++k) {
          const unsigned short before = d.entryCount;
          auto* value = new Counted(&deaths);
          ok = value != nullptr && d.addAssoc(k, value) == ZU_OK;
          if (!ok) {
            EXPECT_EQ(d.entryCount, before);  // refused: nothing taken over
            delete value;
          }
        }
        d.deleteKeyAndData();
        return ok;
      },
      &report));
  EXPECT_GT(report.failures, 0u);
}

}  // namespace

// Both dictionaries over the three kinds of association: missing keys
// against stored zeros, case, the weak substring hash, replacement and
// duplicates, what each delete operation deletes, the limits, and inserts
// with each system block refused.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "containers/dictionary.h"
#include "containers_fixture.h"
#include "support/oom_sweep.h"

namespace {

using zutest::Counted;
using zutest::kArrayTooLarge;

class Dictionary : public zutest::ContainerTest {};

// Heap-made views over texts the test keeps alive.
struct Keys {
  std::vector<std::string> texts;
  ZuSubString* make(std::size_t i) const {
    return new ZuSubString(reinterpret_cast<const unsigned char*>(texts[i].data()),
                           static_cast<std::uint32_t>(texts[i].size()));
  }
  ZuSubString view(std::size_t i) const {
    return ZuSubString(reinterpret_cast<const unsigned char*>(texts[i].data()),
                       static_cast<std::uint32_t>(texts[i].size()));
  }
};

// n keys that all share their first five bytes, so all hash alike.
Keys sharedPrefix(int n) {
  Keys k;
  for (int i = 0; i < n; ++i) k.texts.push_back("DRIVER_" + std::to_string(i));
  return k;
}

TEST_F(Dictionary, AssociationKindsAnswerOnlyForWhatTheyCarry) {
  int deaths = 0;
  ZuIntIntKey ii(1, 2);
  ZuIntPtrKey ip(3, nullptr);
  Counted value(&deaths);
  EXPECT_EQ(ii.getPtrData(), nullptr);
  EXPECT_EQ(ip.getIntData(), 0u);
  ip.setPtrData(&value);  // only the base body runs
  EXPECT_EQ(ip.getPtrData(), nullptr);
  EXPECT_EQ(ii.isSameKey(&ip), 0u);
  EXPECT_EQ(ZuIntPtrKey(1, nullptr).isSameKey(&ii), 1u);
}

TEST_F(Dictionary, HashedLookupsOfEveryKind) {
  int deaths = 0;
  ZuDictionary d;
  ASSERT_EQ(d.initialize(4), ZU_OK);
  auto* value = new Counted(&deaths);
  ASSERT_EQ(d.addAssoc(1u, 0u), ZU_OK);
  ASSERT_EQ(d.addAssoc(2u, value), ZU_OK);
  EXPECT_EQ(d.getIntForKey(1u), 0u);
  EXPECT_EQ(d.doesExist(1u), 1u);  // a stored 0, told from a missing key
  EXPECT_EQ(d.getIntForKey(9u), 0u);
  EXPECT_EQ(d.doesExist(9u), 0u);
  EXPECT_EQ(d.getPtrForKey(2u), value);

  // Replacing a key: the new association is found, the old one freed.
  const std::uint32_t blocks = zutest::blocksInUse();
  ASSERT_EQ(d.addAssoc(1u, 5u), ZU_OK);
  EXPECT_EQ(d.getIntForKey(1u), 5u);
  EXPECT_EQ(zutest::blocksInUse(), blocks);
  EXPECT_EQ(d.entryCount, 2);

  d.deleteKeyAndData();
  EXPECT_EQ(deaths, 1);
  EXPECT_EQ(d.entryCount, 0);
  EXPECT_EQ(d.doesExist(2u), 0u);
}

TEST_F(Dictionary, SubstringKeysSharingTheirStartAndCase) {
  int deaths = 0;
  const Keys keys = sharedPrefix(300);
  ZuDictionary exact, folded;
  folded.setIgnoreCase();
  ASSERT_EQ(exact.initialize(0), ZU_OK);
  ASSERT_EQ(folded.initialize(0), ZU_OK);
  for (std::size_t i = 0; i < keys.texts.size(); ++i) {
    ASSERT_EQ(exact.addAssoc(keys.make(i), new Counted(&deaths)), ZU_OK);
    ASSERT_EQ(folded.addAssoc(keys.make(i), new Counted(&deaths)), ZU_OK);
  }
  for (std::size_t i = 0; i < keys.texts.size(); ++i) {
    const ZuSubString k = keys.view(i);
    ASSERT_EQ(exact.doesExist(&k), 1u) << i;
    ASSERT_NE(exact.getPtrForKey(&k), folded.getPtrForKey(&k)) << i;
  }
  const ZuSubString lower(reinterpret_cast<const unsigned char*>("driver_7"), 8);
  const ZuSubString missing(reinterpret_cast<const unsigned char*>("DRIVER_300"), 10);
  EXPECT_EQ(exact.getPtrForKey(&lower), nullptr);
  EXPECT_NE(folded.getPtrForKey(&lower), nullptr);
  EXPECT_EQ(exact.doesExist(&missing), 0u);

  const unsigned short size = exact.tableSize;
  exact.deleteKeyAndData();
  EXPECT_EQ(deaths, 300);
  EXPECT_EQ(exact.tableSize, size);
  ASSERT_EQ(exact.addAssoc(keys.make(0), new Counted(&deaths)), ZU_OK);  // filled again
  EXPECT_EQ(exact.entryCount, 1);
  exact.deleteKeyAndData();
  folded.deleteKeyAndData();
  EXPECT_EQ(deaths, 601);
}

TEST_F(Dictionary, DestructorLeavesKeysAndValues) {
  int deaths = 0;
  Counted value(&deaths);
  const std::uint32_t blocks = zutest::blocksInUse();
  {
    ZuDictionary d;
    ZuSeqDictionary s;
    ASSERT_EQ(d.initialize(2), ZU_OK);
    ASSERT_EQ(d.addAssoc(7u, &value), ZU_OK);
    ASSERT_EQ(s.addAssoc(7u, &value), ZU_OK);
  }
  EXPECT_EQ(deaths, 0);
  EXPECT_EQ(zutest::blocksInUse(), blocks);
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

TEST_F(Dictionary, SequentialOrderCaseAndDuplicates) {
  int deaths = 0;
  Keys keys{{"Driver", "DRIVER", "Server"}};
  ZuSeqDictionary s;
  const ZuSubString probe(reinterpret_cast<const unsigned char*>("driver"), 6);
  EXPECT_EQ(s.getIndexForKey(&probe), 0);
  EXPECT_EQ(s.doesExist(0u), 0u);
  for (std::size_t i = 0; i < keys.texts.size(); ++i) {
    ASSERT_EQ(s.addAssoc(keys.make(i), new Counted(&deaths)), ZU_OK);
  }
  EXPECT_EQ(s.getIndexForKey(&probe), 3);  // exact: no such key
  EXPECT_EQ(s.getIndexForKey(keys.view(1)), 1);
  s.setIgnoreCase();
  EXPECT_EQ(s.getIndexForKey(&probe), 0);  // the first of the two that match
  EXPECT_EQ(s.getIndexForKey(keys.view(1)), 0);

  Counted other(&deaths);
  ZuObject* old = s.getPtrDataAtIndex(2);
  s.changeData(keys.view(2), &other);
  EXPECT_EQ(s.getPtrForKey(&probe), s.getPtrDataAtIndex(0));
  EXPECT_EQ(s.getPtrDataAtIndex(2), &other);
  delete old;  // changeData does not delete it
  s.changeData(keys.view(2), new Counted(&deaths));

  s.deleteKeyAndDataAtIndex(1);
  EXPECT_EQ(deaths, 2);
  ASSERT_EQ(s.size(), 2);
  EXPECT_EQ(s.getSubKeyAtIndex(1)->length, 6u);
  EXPECT_EQ(s.getIndexForKey(keys.view(2)), 1);
  s.deleteKeyAndData();
  EXPECT_EQ(deaths, 4);
  EXPECT_EQ(s.size(), 0);
}

TEST_F(Dictionary, SequentialNumbersAndLimit) {
  ZuSeqDictionary s;
  for (std::uint32_t k = 0; k < zutest::kLimit; ++k) ASSERT_EQ(s.addAssoc(k, k * 2), ZU_OK);
  EXPECT_EQ(s.addAssoc(1u, 1u), ZU_ERROR);
  EXPECT_EQ(lastError(), kArrayTooLarge);
  EXPECT_EQ(s.size(), zutest::kLimit);
  EXPECT_EQ(s.getIntForKey(15999u), 31998u);
  s.changeData(15999u, 7u);
  EXPECT_EQ(s.getIntDataAtIndex(15999), 7u);
  EXPECT_EQ(s.getIntKeyAtIndex(15999), 15999u);
  EXPECT_EQ(s.getPtrForKey(3u), nullptr);
}

TEST(DictionaryOutOfMemory, Inserts) {
  const Keys keys = sharedPrefix(2000);
  zutest::SweepReport report;
  EXPECT_TRUE(zutest::sweepOutOfMemory(
      [&keys] {
        int deaths = 0;
        ZuDictionary values;   // number -> object, owns the objects at the end
        ZuSeqDictionary names;  // name -> nothing, owns the names at the end
        bool ok = values.initialize(0) == ZU_OK;
        for (std::size_t i = 0; ok && i < keys.texts.size(); ++i) {
          const unsigned short before = values.entryCount;
          auto* value = new Counted(&deaths);
          ok = value != nullptr && values.addAssoc(static_cast<std::uint32_t>(i), value) == ZU_OK;
          if (!ok) {
            EXPECT_EQ(values.entryCount, before);  // refused: unchanged
            delete value;
            break;
          }
          ZuSubString* name = keys.make(i);
          ok = name != nullptr && names.addAssoc(name, nullptr) == ZU_OK;
          if (!ok) delete name;
        }
        values.deleteKeyAndData();
        names.deleteKeyAndData();
        return ok;
      },
      &report));
  EXPECT_GT(report.failures, 0u);
}

}  // namespace

// ZuSort against the reference comparator: random record sizes, keys of
// every kind and direction, duplicates, ordered and reversed input, run
// boundaries hit exactly and by one; in memory, spilled, and with more runs
// than the merge has slots. Each trial takes records back every way there
// is, searches for keys, sorts again, and with a start key works on input
// grouped on the leading keys. A trial names its seed when it fails.
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "platform/collation.h"
#include "platform/host.h"
#include "sort/sort.h"
#include "support/error_fixture.h"
#include "support/heap_check.h"
#include "support/sort_model.h"

namespace {

using zutest::SortRecord;
using zutest::SortReference;
using Records = std::vector<SortRecord>;

constexpr std::uint32_t kSeed = 20517;
constexpr unsigned short kTooManyKeys = 2710;
constexpr size_t kMaxKeys = 64;
constexpr std::uint32_t kBlockBytes = 65536;
// Blocks a run holds while memory is reported short.
constexpr std::uint32_t kShortBlocks = 2;
constexpr int kMaxRecordSize = 300;
constexpr int kMaxMemoryRecords = 1200;
// Big enough records that a few spilled runs stay cheap.
constexpr int kSpillMinRecordSize = 200;
constexpr int kMaxRuns = 4;
// Two records a block, four a run; from four runs on the slots behind the
// merge table are fewer than the runs.
constexpr int kSharedSlotRecordSize = 30000;
constexpr int kSharedSlotMinRuns = 5;
constexpr int kSharedSlotMaxRuns = 7;
constexpr int kMemoryTrials = 48;
constexpr int kSpillTrials = 18;
constexpr int kSharedSlotTrials = 3;
constexpr int kMaxKeyLength = 6;
constexpr int kUsualMaxKeys = 8;
// Few byte values, 0 among them, so keys tie and values are empty often.
constexpr unsigned char kAlphabet[] = {0, 1, 'a', 'b', 0xE9, 0xFF};
constexpr int kAlphabetSize = sizeof kAlphabet;
constexpr int kPointerBytes = sizeof(ZuObject*);
constexpr int kObjectValues = 5;
constexpr short kObjectStep = 4000;
constexpr int kDuplicatePercent = 20;
constexpr int kGroupedPercent = 25;
constexpr int kObjectPercent = 30;
constexpr int kEdgeKeyCountPercent = 10;  // each of: no key, all 64
// Leading keys of a grouped trial lie in this many bytes at the front.
constexpr int kLeadBytes = 4;
constexpr int kMaxLeadKeys = 3;
constexpr int kMaxGroup = 40;
constexpr unsigned short kUnwritten = 0xFFFF;

// While memory is reported short; a record never straddles two blocks.
int recordsPerRun(int recordSize) {
  return static_cast<int>(kShortBlocks * (kBlockBytes / static_cast<std::uint32_t>(recordSize)));
}

// Answers with magnitudes from the middle and both ends of the 16-bit range:
// only the sign may count, and SHRT_MIN has no negative.
struct Valued : ZuObject {
  short compare(const ZuObject* other) const override {
    const int d = value - static_cast<const Valued*>(other)->value;
    if (d > 1) return SHRT_MAX;
    if (d < -1) return SHRT_MIN;
    return static_cast<short>(d * kObjectStep);
  }
  int value = 0;
};

struct Draw {
  explicit Draw(std::uint32_t seed) : rng(seed) {}
  int in(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); }
  bool chance(int percent) { return in(0, 99) < percent; }
  std::mt19937 rng;
};

struct Trial {
  int recordSize = 0;
  bool objects = false;  // records start with a ZuObject* and end with its empty mark
  std::vector<ZuSortKey> keys;
  unsigned short startKey = 0;
  Records input;
  bool searchable = true;  // delivered in an order the key search can use
};

class SortModel : public zutest::ErrorFixture {
 protected:
  void SetUp() override {
    ErrorFixture::SetUp();
    ASSERT_TRUE(zu::platform::setCollationLocale("C"));
    for (int i = 0; i < kObjectValues; ++i) objects[i].value = i;
  }
  void TearDown() override {
    EXPECT_TRUE(zutest::heapIsSound());
    zu::platform::setCollationLocale("");
    ErrorFixture::TearDown();
  }

  // The sort then keeps two blocks a run.
  static void memoryIsShort() {
    zu::platform::hostFail(zu::platform::HostCall::sysinfo, 1, ENOMEM, true);
  }

  static char randomByte(Draw& d) { return static_cast<char>(kAlphabet[d.rng() % kAlphabetSize]); }

  SortRecord randomRecord(Draw& d, const Trial& t) {
    SortRecord r(static_cast<size_t>(t.recordSize), '\0');
    for (char& c : r) c = randomByte(d);
    if (t.objects) {
      const int value = d.in(0, kObjectValues - 1);
      const ZuObject* p = &objects[value];
      std::memcpy(r.data(), &p, sizeof p);
      r.back() = value == 0 ? '\0' : 'a';
    }
    return r;
  }

  // A key in bytes `from` to `to` - 1, or an object key.
  static ZuSortKey randomKey(Draw& d, const Trial& t, int from, int to, bool plainOnly) {
    const int kind = d.in(0, 2);
    ZuSortKey k{0, 0, 0};
    if (kind == 0 && t.objects && !plainOnly) {
      // The empty test reads the last byte, 0 exactly for the lowest value,
      // so that keeping empty values first still gives one order.
      k.type = ZU_SORTKEY_OBJECT;
      k.offset = static_cast<unsigned short>(t.recordSize - 1);
      k.length = kPointerBytes;
    } else {
      k.type = kind == 1 ? ZU_SORTKEY_COLLATED : 0;
      k.offset = static_cast<unsigned short>(d.in(from, to - 1));
      k.length = static_cast<unsigned short>(d.in(1, std::min(kMaxKeyLength, to - k.offset)));
    }
    if (d.chance(50)) k.type |= ZU_SORTKEY_DESCENDING;
    if (d.chance(50)) k.type |= ZU_SORTKEY_EMPTY_FIXED;
    return k;
  }

  static size_t keyCount(Draw& d) {
    if (d.chance(kEdgeKeyCountPercent)) return 0;
    if (d.chance(kEdgeKeyCountPercent)) return kMaxKeys;
    return static_cast<size_t>(d.in(1, kUsualMaxKeys));
  }

  Trial randomTrial(Draw& d, int size, int count) {
    Trial t;
    t.recordSize = size;
    t.objects = size > kPointerBytes && d.chance(kObjectPercent);
    const int from = t.objects ? kPointerBytes : 0;
    const size_t n = keyCount(d);
    while (t.keys.size() < n) t.keys.push_back(randomKey(d, t, from, size, false));
    const int order = d.in(0, 3);
    for (int i = 0; i < count; ++i) {
      const bool copy = i != 0 && (order == 3 || d.chance(kDuplicatePercent));
      t.input.push_back(copy ? t.input[static_cast<size_t>(order == 3 ? 0 : d.in(0, i - 1))]
                             : randomRecord(d, t));
    }
    if (order == 1 || order == 2) t.input = SortReference(t.keys, 0).expectedOrder(t.input);
    if (order == 2) std::reverse(t.input.begin(), t.input.end());
    return t;
  }

  // Plain leading keys in the front bytes; the records come in groups that
  // agree in them, shuffled within each group. With `apart`, a group ends
  // only where the later keys strictly rise, so that a merge over the later
  // keys alone keeps the groups as they are.
  Trial groupedTrial(Draw& d, int size, int count, bool apart) {
    Trial t;
    t.recordSize = size;
    t.objects = d.chance(kObjectPercent);
    const int from = t.objects ? kPointerBytes : 0;
    const int lead = from + kLeadBytes;
    t.startKey = static_cast<unsigned short>(d.in(1, kMaxLeadKeys));
    while (t.keys.size() < t.startKey) t.keys.push_back(randomKey(d, t, from, lead, true));
    const size_t n = t.startKey + static_cast<size_t>(d.in(0, kUsualMaxKeys));
    while (t.keys.size() < n) t.keys.push_back(randomKey(d, t, lead, size, false));
    const SortReference model(t.keys, t.startKey);
    for (int i = 0; i < count; ++i) {
      SortRecord r = randomRecord(d, t);
      std::fill(r.begin() + from, r.begin() + lead, '\0');
      t.input.push_back(r);
    }
    t.input = model.expectedOrder(t.input);  // one group while the leads are all 0
    SortRecord previous;
    for (size_t i = 0; i < t.input.size();) {
      size_t j = std::min(t.input.size(), i + static_cast<size_t>(d.in(1, kMaxGroup)));
      while (apart && j < t.input.size() && model.compare(t.input[j - 1], t.input[j]) == 0) ++j;
      SortRecord image = t.input[i];
      do {
        std::generate(image.begin() + from, image.begin() + lead, [&d] { return randomByte(d); });
      } while (!previous.empty() && model.firstDifference(image, previous) >= t.startKey);
      for (size_t k = i; k < j; ++k) {
        std::copy(image.begin() + from, image.begin() + lead, t.input[k].begin() + from);
      }
      std::shuffle(t.input.begin() + i, t.input.begin() + j, d.rng);
      previous = image;
      i = j;
    }
    t.searchable = apart;
    return t;
  }

  void run(const Trial& t, Draw& d, bool shortOfMemory) {
    SCOPED_TRACE(std::to_string(t.input.size()) + " records of " + std::to_string(t.recordSize) +
                 " bytes, " + std::to_string(t.keys.size()) + " keys, start key " +
                 std::to_string(t.startKey));
    const auto size = static_cast<size_t>(t.recordSize);
    ZuSort sort(static_cast<unsigned short>(t.recordSize));
    for (const ZuSortKey& k : t.keys) ASSERT_EQ(sort.addKey(k.type, k.offset, k.length), ZU_OK);
    if (t.keys.size() == kMaxKeys) {
      // Taken, this key would reverse the order of many records.
      EXPECT_EQ(sort.addKey(ZU_SORTKEY_DESCENDING, 0, 1), ZU_ERROR);
      EXPECT_EQ(lastError(), kTooManyKeys);
      EXPECT_EQ(lastText(), "Too many sort keys.");
      delete list.removeLastError();
    }
    sort.setStartKey(t.startKey);
    for (size_t i = 0; i < t.input.size(); ++i) {
      // Both ways in, taking turns.
      SortRecord copy = t.input[i];
      void* slot = nullptr;
      const ZuStatus s = i % 2 == 0 ? sort.addRecord(copy.data()) : sort.nextSlot(&slot);
      ASSERT_EQ(s, ZU_OK);
      if (slot != nullptr) std::memcpy(slot, copy.data(), size);
    }
    if (shortOfMemory) {
      const bool spills = t.input.size() > static_cast<size_t>(recordsPerRun(t.recordSize));
      ASSERT_EQ((sort.flags & ZU_SORT_SPILLED) != 0, spills);
    }

    const SortReference model(t.keys, t.startKey);
    const Records expected = model.expectedOrder(t.input);
    auto expectSequence = [](const SortReference& m, const char* how, const Records& got,
                             const Records& want) {
      EXPECT_EQ(zutest::checkKeyOrder(m, want, got), "") << how;
      EXPECT_EQ(zutest::checkDelivery(m, want, got), "") << how;
    };
    // Appends records from `step` until the end.
    auto collect = [size](auto step, Records& out) {
      ZuStatus s;
      void* r = nullptr;
      while ((s = step(&r)) == ZU_OK && r != nullptr) out.emplace_back(static_cast<char*>(r), size);
      EXPECT_EQ(s, ZU_OK) << "after " << out.size() << " records";
    };
    auto sorted = [&](void** r) { return sort.getSorted(r); };
    auto next = [&](void** r) { return sort.getNextRecord(r); };
    auto passWith = [&](bool withLevels) {
      Records got;
      std::vector<unsigned short> levels;
      collect(
          [&](void** r) {
            unsigned short level = kUnwritten;
            const ZuStatus s = withLevels ? sort.getSortedWithCompare(r, &level) : sorted(r);
            if (withLevels && *r != nullptr) levels.push_back(level);
            return s;
          },
          got);
      for (size_t i = 0; i < levels.size() && i < got.size(); ++i) {
        EXPECT_EQ(levels[i], i == 0 ? 0 : model.firstDifference(got[i], got[i - 1])) << i;
      }
      expectSequence(model, withLevels ? "getSortedWithCompare" : "getSorted", got, expected);
    };
    auto firstThenNext = [&] {
      Records got;
      void* r = nullptr;
      EXPECT_EQ(sort.getFirstRecord(&r), ZU_OK);
      if (r != nullptr) got.emplace_back(static_cast<const char*>(r), size);
      if (r != nullptr) collect(next, got);
      return got;
    };

    const bool levelsFirst = d.chance(50);
    passWith(levelsFirst);
    // Starting again gives the same sequence, ties across runs included.
    const Records once = firstThenNext();
    expectSequence(model, "getFirstRecord", once, expected);
    EXPECT_TRUE(once == firstThenNext()) << "getFirstRecord again gave another sequence";
    if (t.searchable) {
      Records keys = {randomRecord(d, t), randomRecord(d, t)};
      if (!t.input.empty()) keys.push_back(t.input[d.in(0, static_cast<int>(t.input.size()) - 1)]);
      for (SortRecord& key : keys) {
        // The records before `at` sort strictly before the key.
        size_t at = 0;
        while (at < expected.size() && model.compare(expected[at], key) < 0) ++at;
        const bool hit = at < expected.size() && model.compare(expected[at], key) == 0;
        void* r = &key;
        ASSERT_EQ(sort.getFirstRecordWithKey(key.data(), &r), ZU_OK);
        EXPECT_EQ(r != nullptr, hit);
        Records got;
        if (r != nullptr) got.emplace_back(static_cast<const char*>(r), size);
        collect(next, got);
        expectSequence(model, "getFirstRecordWithKey", got,
                       Records(expected.begin() + at, expected.end()));
      }
    }
    ASSERT_EQ(sort.reSort(), ZU_OK);
    passWith(!levelsFirst);
    if (t.startKey != 0) {
      sort.setStartKey(0);
      ASSERT_EQ(sort.reSort(), ZU_OK);
      Records got;
      collect(sorted, got);
      const SortReference whole(t.keys, 0);
      expectSequence(whole, "reSort from key 0", got, whole.expectedOrder(t.input));
    }
    EXPECT_EQ(lastError(), 0);
  }

  Valued objects[kObjectValues];
  zutest::FaultGuard faults;
};

// Each trial draws from a seed of its own and names it when it fails; the
// first failing trial ends the test.
template <class Body>
void eachTrial(std::uint32_t trials, Body trial) {
  for (std::uint32_t i = 0; i < trials && !::testing::Test::HasFailure(); ++i) {
    SCOPED_TRACE("seed " + std::to_string(kSeed + i));
    Draw d(kSeed + i);
    trial(d, i);
  }
}

TEST_F(SortModel, InMemoryAgreesWithTheReference) {
  eachTrial(kMemoryTrials, [this](Draw& d, std::uint32_t) {
    const int count = d.in(0, kMaxMemoryRecords);
    if (d.chance(kGroupedPercent)) {
      const int size = d.in(kPointerBytes + kLeadBytes + 1, kMaxRecordSize);
      run(groupedTrial(d, size, count, d.chance(50)), d, false);
    } else {
      run(randomTrial(d, d.in(1, kMaxRecordSize), count), d, false);
    }
  });
}

TEST_F(SortModel, SpilledRunsAgreeWithTheReference) {
  memoryIsShort();
  eachTrial(kSpillTrials, [this](Draw& d, std::uint32_t i) {
    const int size = d.in(kSpillMinRecordSize, kMaxRecordSize);
    const int perRun = recordsPerRun(size);
    // The last run filled exactly, by one record more, or in part.
    const int lastRun[] = {perRun, perRun + 1, d.in(1, perRun)};
    const int count = (d.in(1, kMaxRuns) - 1) * perRun + lastRun[i % 3];
    run(d.chance(kGroupedPercent) ? groupedTrial(d, size, count, true)
                                  : randomTrial(d, size, count),
        d, true);
  });
}

TEST_F(SortModel, MoreRunsThanMergeSlotsAgreeWithTheReference) {
  memoryIsShort();
  eachTrial(kSharedSlotTrials, [this](Draw& d, std::uint32_t) {
    const int perRun = recordsPerRun(kSharedSlotRecordSize);
    const int runs = d.in(kSharedSlotMinRuns, kSharedSlotMaxRuns);
    run(randomTrial(d, kSharedSlotRecordSize, (runs - 1) * perRun + d.in(1, perRun)), d, true);
  });
}

}  // namespace

// Random runs of alloc, resize and free against a shadow model, with the
// whole heap checked after every step; the same runs with each system block
// refused in turn; and the index beside the chain shown to change nothing.
#include <cstring>
#include <random>
#include <vector>

#include "heap_fixture.h"

namespace zutest {
namespace {

struct Live {
  void* p;
  std::uint32_t size;
  unsigned char fill;
};

// Where a block sits, independent of the addresses the system gave: its
// segment's place in the chain and its offset there.
struct Place {
  std::uint32_t segment;
  std::uint32_t offset;
  bool operator==(const Place&) const = default;
};

Place placeOf(const void* p) {
  std::uint32_t n = 0;
  for (RamSegment* s = head(); s != nullptr; s = s->nextSegment, ++n) {
    auto from = reinterpret_cast<std::uintptr_t>(s);
    auto at = reinterpret_cast<std::uintptr_t>(p);
    if (at >= from && at < from + s->size) return {n, offsetOf(s, p)};
  }
  return {~0u, 0};
}

std::uint32_t randomSize(std::mt19937& rng) {
  std::uint32_t kind = rng() % 100;
  if (kind < 70) return rng() % 64;
  if (kind < 95) return rng() % 600;
  return rng() % 20000;
}

bool intact(const Live& b) {
  if (ramSize(b.p) != b.size) return false;
  const unsigned char* bytes = static_cast<const unsigned char*>(b.p);
  for (std::uint32_t i = 0; i < b.size; ++i) {
    if (bytes[i] != b.fill) return false;
  }
  return true;
}

struct RunResult {
  std::vector<Place> places;  // of every pointer handed out
  std::uint32_t refusals = 0;
};

// One run of `steps` operations from `seed`. Every step is checked against
// the model; a refused step must leave both the block and the heap as they were.
RunResult run(std::uint32_t seed, int steps, bool checkEveryStep) {
  std::mt19937 rng(seed);
  std::vector<Live> live;
  RunResult result;
  for (int step = 0; step < steps; ++step) {
    std::uint32_t op = rng() % 10;
    if (op < 5 || live.empty()) {
      std::uint32_t size = randomSize(rng);
      auto fill = static_cast<unsigned char>(rng());
      void* p = ramAlloc(size);
      if (p == nullptr) {
        ++result.refusals;
      } else {
        std::memset(p, fill, size);
        live.push_back({p, size, fill});
        result.places.push_back(placeOf(p));
      }
    } else if (op < 8) {
      std::size_t i = rng() % live.size();
      EXPECT_TRUE(intact(live[i])) << "step " << step;
      ramFree(live[i].p);
      live[i] = live.back();
      live.pop_back();
    } else {
      Live& b = live[rng() % live.size()];
      std::uint32_t size = randomSize(rng);
      void* p = b.p;
      if (ramResizeZ(&p, size) != ZU_OK) {
        ++result.refusals;
        EXPECT_EQ(p, b.p);
        EXPECT_TRUE(intact(b)) << "a refused resize keeps the block, step " << step;
      } else {
        const unsigned char* bytes = static_cast<const unsigned char*>(p);
        std::uint32_t kept = size < b.size ? size : b.size;
        for (std::uint32_t k = 0; k < kept; ++k) {
          if (bytes[k] != b.fill) {
            ADD_FAILURE() << "resize lost byte " << k << " at step " << step;
            break;
          }
        }
        for (std::uint32_t k = b.size; k < size; ++k) {
          if (bytes[k] != 0) {
            ADD_FAILURE() << "resizeZ left byte " << k << " unzeroed at step " << step;
            break;
          }
        }
        std::memset(p, b.fill, size);
        b.p = p;
        b.size = size;
        result.places.push_back(placeOf(p));
      }
    }
    if (checkEveryStep) {
      const char* problem = check();
      if (problem != nullptr) {
        ADD_FAILURE() << "step " << step << ": " << problem;
        break;
      }
    }
    if (::testing::Test::HasFailure()) break;
  }
  for (const Live& b : live) {
    EXPECT_TRUE(intact(b));
    ramFree(b.p);
  }
  return result;
}

TEST_F(HeapTest, RandomRunAgainstShadowModel) {
  for (std::uint32_t seed : {1u, 2u, 3u}) {
    RunResult r = run(seed, 2500, true);
    EXPECT_EQ(r.refusals, 0u);
    ASSERT_FALSE(HasFailure()) << "seed " << seed;
  }
}

TEST_F(HeapTest, EverySystemBlockRefusedInTurn) {
  constexpr std::uint32_t kSeed = 7;
  constexpr int kSteps = 400;
  zu::platform::hostFail(zu::platform::HostCall::malloc, 0, ENOMEM);  // count only
  run(kSeed, kSteps, false);
  std::uint32_t blocks = zu::platform::hostCalls(zu::platform::HostCall::malloc);
  ASSERT_GT(blocks, 10u);
  for (std::uint32_t n = 1; n <= blocks; ++n) {
    zu::platform::hostFail(zu::platform::HostCall::malloc, n, ENOMEM);
    RunResult r = run(kSeed, kSteps, true);
    EXPECT_EQ(r.refusals, 1u) << "refusing block " << n;
    ASSERT_FALSE(HasFailure()) << "refusing block " << n;
    ASSERT_EQ(head(), nullptr);
  }
}

TEST_F(HeapTest, IndexChangesNoResult) {
  for (std::uint32_t seed : {11u, 12u}) {
    ASSERT_TRUE(setIndexEnabled(false));
    RunResult plain = run(seed, 3000, false);
    ASSERT_TRUE(setIndexEnabled(true));
    RunResult indexed = run(seed, 3000, true);
    ASSERT_EQ(plain.places.size(), indexed.places.size());
    for (std::size_t i = 0; i < plain.places.size(); ++i) {
      ASSERT_TRUE(plain.places[i] == indexed.places[i]) << "pointer " << i << " differs, seed " << seed;
    }
  }
  void* keep = ramAlloc(1);
  EXPECT_FALSE(setIndexEnabled(false)) << "no switching under live blocks";
  EXPECT_TRUE(indexEnabled());
  ramFree(keep);
}

}  // namespace
}  // namespace zutest

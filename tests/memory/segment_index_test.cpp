// The segment index against a plain list of fits in chain order: random
// appends, removals and new fits, each followed by requests of every kind,
// small and beyond the keys' open end. The list grows past four levels of
// groups, so that searches and rewrites cross every level.
#include <gtest/gtest.h>

#include <deque>
#include <random>
#include <vector>

#include "memory/segment_index.h"

namespace zutest {
namespace {

using zu::heap::IndexNode;
using zu::heap::SegmentIndex;

constexpr std::uint32_t kUnknown = 0xFFFFFFFFu;

// Mostly small or none, so that large requests go far down the chain.
std::uint32_t randomFit(std::mt19937& rng) {
  const std::uint32_t kind = rng() % 1000;
  if (kind < 400) return 0;
  if (kind < 950) return (rng() % 64) * zu::heap::kAlign;
  if (kind < 999) return (rng() % 4096) * zu::heap::kAlign;  // around the open key
  return kUnknown;
}

std::uint32_t randomNeed(std::mt19937& rng) {
  const std::uint32_t granules = rng() % 2 == 0 ? 2 + rng() % 4096 : 2 + rng() % 64;
  return granules * zu::heap::kAlign;
}

const IndexNode* scan(const std::vector<IndexNode*>& chain, std::uint32_t need) {
  for (const IndexNode* n : chain) {
    if (n->fit >= need) return n;
  }
  return nullptr;
}

TEST(SegmentIndex, FirstFitAgreesWithAScanOfTheChain) {
  SegmentIndex index;
  std::deque<IndexNode> store;  // nodes stay where they are
  std::vector<IndexNode*> chain;
  std::mt19937 rng(17);
  // A random request, and one for the fit of a random segment, whose answer
  // lies at or before that segment, wherever it is.
  auto ask = [&](int step) {
    const std::uint32_t some = chain.empty() ? 0 : chain[rng() % chain.size()]->fit;
    for (std::uint32_t need : {randomNeed(rng), some < 2 * zu::heap::kAlign ? 0 : some}) {
      if (need == 0) continue;
      EXPECT_EQ(index.firstFit(need), scan(chain, need)) << "need " << need << ", step " << step;
      if (HasFailure()) return;
    }
  };
  constexpr int kGrown = 17000;  // above 64 * 16 * 16 slots: four levels
  for (int step = 0; step < kGrown; ++step) {
    store.push_back(IndexNode{0, randomFit(rng), 0, false});
    ASSERT_TRUE(index.append(&store.back()));
    chain.push_back(&store.back());
    ask(step);
    ASSERT_FALSE(HasFailure());
  }
  for (int step = 0; step < 3000; ++step) {
    const std::uint32_t op = rng() % 3;
    if (op == 0) {
      store.push_back(IndexNode{0, randomFit(rng), 0, false});
      ASSERT_TRUE(index.append(&store.back()));
      chain.push_back(&store.back());
    } else if (op == 1) {
      const std::size_t i = rng() % chain.size();
      index.remove(chain[i]);
      chain.erase(chain.begin() + static_cast<std::ptrdiff_t>(i));
    } else {
      index.setFit(chain[rng() % chain.size()], randomFit(rng));
    }
    ask(step);
    ASSERT_FALSE(HasFailure());
    if (step % 1000 == 0) {
      ASSERT_TRUE(index.summariesHold()) << "step " << step;
    }
  }
  ASSERT_TRUE(index.summariesHold());
  EXPECT_EQ(index.count(), chain.size());
  for (IndexNode* n : chain) index.remove(n);
  EXPECT_EQ(index.count(), 0u);
  EXPECT_EQ(index.firstFit(zu::heap::kAlign * 2), nullptr);
}

}  // namespace
}  // namespace zutest

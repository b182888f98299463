// ZuTree against std::map and ZuPTree against a vector of optional entries,
// under random operations, on trees ten times the store's cache and more,
// so that nodes go to the temporary file and come back; the node image read
// back through the store; refused blocks during inserts.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

#include "storage/tmp_file.h"
#include "support/dos_world.h"
#include "support/oom_sweep.h"
#include "support/tree_drive.h"
#include "trees/tree.h"

namespace {

using zutest::TreeDrive;

class Trees : public zutest::DosWorld {};

constexpr std::uint32_t kCache = 8192;
// The 32-bit build runs unoptimised under an emulator: fewer operations
// there, on trees of the same size.
constexpr std::uint32_t kScale = sizeof(void*) == 4 ? 1 : 2;

std::string bytes(std::mt19937& rng, std::size_t n, unsigned alphabet) {
  std::string s(n, '\0');
  for (auto& c : s) c = static_cast<char>(rng() % alphabet * (256 / alphabet));
  return s;
}

struct Shape {
  unsigned short keyLength;
  unsigned short dataLength;
  bool numeric;
  bool markers;
};

// Keys come from a pool about the size the tree should reach, so adds hit
// existing keys and deletes find theirs; the pool is sized for nodes of ten
// times the cache, where the key space allows.
void runModel(const Shape& shape, std::uint32_t seed) {
  SCOPED_TRACE(testing::Message() << "key " << shape.keyLength << " data " << shape.dataLength << " markers "
                                  << shape.markers << " seed " << seed);
  std::mt19937 rng(seed);
  TreeDrive drive(shape.keyLength, shape.dataLength, shape.numeric, shape.markers);
  // Nodes fill to about two thirds, and deletes thin them.
  const std::uint32_t wanted = 24 * kCache / drive.tree.nodeSize * (drive.tree.maxChildren / 2) + 50;
  std::vector<std::string> pool;
  for (std::uint32_t i = 0; i < wanted; ++i) {
    // A few keys from a small alphabet, for long shared prefixes.
    pool.push_back(bytes(rng, shape.keyLength, rng() % 8 == 0 ? 4 : 256));
  }
  const std::uint32_t ops = wanted * (kScale + 1) + 1000;
  for (std::uint32_t op = 0; op < ops; ++op) {
    // Mostly adds at first, so the tree grows; then everything.
    const unsigned roll = rng() % 100;
    zutest::TreeOp kind = zutest::kTreeAdd;
    if (op > wanted && roll >= 45) {
      kind = roll < 62 ? zutest::kTreeLookup
             : roll < 70 ? zutest::kTreeChangeData
             : roll < 84 ? zutest::kTreeDelete
             : roll < 88 ? zutest::kTreeChangeKey
             : roll < 100 || op % 500 != 0 ? zutest::kTreeWalkFrom
                         : zutest::kTreeWalkAll;
    }
    const std::string& key = pool[rng() % pool.size()];
    const std::string& other = pool[rng() % pool.size()];
    ASSERT_TRUE(drive.step(kind, key, bytes(rng, shape.dataLength, 256), other, rng()))
        << drive.failure << " at op " << op;
  }
  ASSERT_TRUE(drive.step(zutest::kTreeWalkAll, pool[0], "", "", 1)) << drive.failure;
  ASSERT_TRUE(drive.step(zutest::kTreeWalkAll, pool[0], "", "", 0)) << drive.failure;
  if (shape.keyLength >= 3) {  // shorter keys have too few values
    EXPECT_GE(std::uint32_t{drive.tree.nodeCount} * drive.tree.nodeSize, 10 * kCache);
    EXPECT_NE(drive.tree.store.firstName, nullptr) << "nodes went to disk";
  }
  ASSERT_EQ(drive.tree.reset(), ZU_OK);
  drive.model.clear();
  ASSERT_TRUE(drive.step(zutest::kTreeAdd, pool[1], std::string(shape.dataLength, 'r'), "", 0));
  ASSERT_TRUE(drive.step(zutest::kTreeWalkAll, pool[0], "", "", 1)) << drive.failure;
}

TEST_F(Trees, AgreeWithAMapUnderRandomOperations) {
  const Shape shapes[] = {
      {4, 4, true, false}, {4, 0, true, true}, {8, 8, false, true}, {1, 0, false, true},
      {1, 100, false, false}, {200, 100, false, true}, {100, 100, false, true}, {33, 0, false, false},
  };
  std::uint32_t seed = 1;
  for (const Shape& shape : shapes) runModel(shape, seed++);
  std::mt19937 rng(77);
  for (int i = 0; i < 4; ++i) {
    runModel({static_cast<unsigned short>(1 + rng() % 200), static_cast<unsigned short>(rng() % 101), false,
              rng() % 2 == 0},
             seed++);
  }
}

// Nodes below `offset` whose keys are still absolute after the insert ended.
unsigned pendingNodes(ZuTree& tree, std::uint32_t offset) {
  if (offset == 0) return 0;
  unsigned char* at = nullptr;
  unsigned short available = 0;
  if (tree.store.tmpPointer(offset, &at, &available, 0) != ZU_OK) return 1;
  std::vector<unsigned char> node(at, at + tree.nodeSize);  // copied: the walk below moves pages
  const auto* header = reinterpret_cast<const ZuTreeNode*>(node.data());
  unsigned pending = header->keysPending;
  for (unsigned i = 0; i < header->count; ++i) {
    std::uint32_t child;
    std::memcpy(&child, &node[sizeof(ZuTreeNode) + i * tree.triadSize], sizeof child);
    pending += pendingNodes(tree, child);
  }
  return pending;
}

TEST_F(Trees, PositionalTreeAgreesWithAVectorUnderShifts) {
  for (unsigned short dataLength : {0, 4, 61}) {
    SCOPED_TRACE(dataLength);
    std::mt19937 rng(dataLength + 3u);
    zutest::PTreeDrive drive(dataLength);
    for (std::uint32_t op = 0; op < 10000 * kScale; ++op) {
      const std::uint32_t span = static_cast<std::uint32_t>(drive.model.size()) + 8;
      const unsigned roll = rng() % 100;
      // Growth first; then shifts at the front too, where keys reach the base.
      zutest::PTreeOp kind = roll < 40 ? zutest::kPAddAtPos
                             : roll < 47 ? zutest::kPAddHole
                             : roll < 68 ? zutest::kPDeleteAtPos
                             : roll < 76 ? zutest::kPAdd
                             : roll < 84 ? zutest::kPDelete
                             : roll < 94 ? zutest::kPLookup
                             : roll < 100 || op % 500 != 0 ? zutest::kPChangeKey
                                                                : zutest::kPWalkAll;
      if (op < 3000 * kScale && kind == zutest::kPDeleteAtPos) kind = zutest::kPAddAtPos;
      const std::uint32_t position = rng() % 4 == 0 ? rng() % 3 : rng() % span;
      ASSERT_TRUE(drive.step(kind, position, rng() % span, bytes(rng, dataLength, 256)))
          << drive.failure << " at op " << op;
    }
    ASSERT_TRUE(drive.step(zutest::kPWalkAll, 1, 0, "")) << drive.failure;
    ASSERT_TRUE(drive.step(zutest::kPWalkAll, 0, 0, "")) << drive.failure;
    EXPECT_EQ(pendingNodes(drive.tree, drive.tree.root), 0u);
    EXPECT_GE(drive.tree.maxDepth, 3) << "splits on a level above the leaves";
    // Emptied from the front, as a queue is.
    while (drive.tree.keyCount != 0) ASSERT_TRUE(drive.step(zutest::kPDeleteAtPos, 0, 0, "")) << drive.failure;
  }
}

// The node image at the offsets of its format: header, triads, markers
// and child pointers, read through the store as the tree left it.
TEST_F(Trees, NodesHaveTheirByteFormat) {
  struct Size {
    unsigned short key, data;
    unsigned markers;
    unsigned short triad, children, node;
  };
  for (const Size& s : {Size{4, 4, 0, 12, 49, 588}, Size{4, 0, 1, 12, 49, 588}, Size{100, 100, 1, 208, 10, 1884},
                        Size{500, 500, 0, 1004, 3, 2020}}) {
    ZuTree tree(s.key, s.data, nullptr, s.markers);
    EXPECT_EQ(tree.triadSize, s.triad);
    EXPECT_EQ(tree.maxChildren, s.children);
    EXPECT_EQ(tree.nodeSize, s.node);
  }
  ZuTree tree(4, 0, treeU32Compare, 1);
  for (std::uint32_t k = 1; k <= 49; ++k) ASSERT_EQ(tree.add(&k, nullptr), ZU_OK);
  // 48 keys filled the first node at offset 8; the 49th split it in the
  // middle, and the middle key went up into a new root.
  unsigned char* node = nullptr;
  unsigned short available = 0;
  ASSERT_EQ(tree.store.tmpPointer(8, &node, &available, 0), ZU_OK);
  auto u16 = [&](unsigned at) { std::uint16_t v; std::memcpy(&v, node + at, 2); return v; };
  auto u32 = [&](unsigned at) { std::uint32_t v; std::memcpy(&v, node + at, 4); return v; };
  EXPECT_EQ(u16(0), 25) << "count: 24 keys";
  EXPECT_EQ(u16(2), 0);
  EXPECT_EQ(u32(4), 8u) << "self";
  for (unsigned i = 0; i < 24; ++i) {
    EXPECT_EQ(u32(8 + i * 12), 0u) << "leaf child";
    EXPECT_EQ(u32(8 + i * 12 + 4), i + 1) << "key " << i;
    EXPECT_EQ(node[8 + i * 12 + 8], 0) << "live";
  }
  const std::uint32_t middle = 25;
  ASSERT_EQ(tree.deleteKey(&middle), ZU_OK);  // interior: stays, marked
  ASSERT_EQ(tree.store.tmpPointer(tree.root, &node, &available, 0), ZU_OK);
  EXPECT_EQ(u16(0), 2);
  EXPECT_EQ(u32(4), tree.root);
  EXPECT_EQ(u32(8), 8u) << "child 0: the old root";
  EXPECT_EQ(u32(12), middle);
  EXPECT_EQ(node[16], 1) << "marker";
  const std::uint32_t right = u32(20);
  ASSERT_EQ(tree.store.tmpPointer(right, &node, &available, 0), ZU_OK);
  EXPECT_EQ(u16(0), 25) << "24 keys on the right";
  EXPECT_EQ(u32(8 + 4), 26u);
  EXPECT_EQ(u32(4), right);
}

// Refused blocks while a tree grows past its cache: an insert fails with
// the memory error, and the tree and store give everything back.
TEST_F(Trees, RefusedBlocksFailInsertsAndLeakNothing) {
  zutest::SweepReport report;
  EXPECT_TRUE(zutest::sweepOutOfMemory([] {
    ZuTree tree(16, 16, nullptr, 1);
    ZuTreeIterator walker;
    if (walker.initialize(&tree) != ZU_OK) return false;
    char key[16] = {}, data[16] = {};
    for (std::uint32_t i = 0; i < 3000; ++i) {
      std::memcpy(key, &i, sizeof i);
      if (tree.add(key, data) != ZU_OK) return false;
    }
    unsigned int found = 0;
    return tree.getFirst(key, data, &found, &walker) == ZU_OK && found == 1;
  }, &report));
  EXPECT_GE(report.failures, 1u);
}

}  // namespace

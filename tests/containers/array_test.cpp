// Growth by 16 up to exactly 16000, the refusal after it, arrays sized past
// the limit (up to the 16-bit count), what insertion and removal leave, the
// delete operations, and growth with each system block refused.
#include <gtest/gtest.h>

#include "containers/array.h"
#include "containers_fixture.h"
#include "memory/ram.h"
#include "support/oom_sweep.h"

namespace {

using zutest::kArrayTooLarge;
using zutest::kLimit;
using zutest::tag;
using zutest::untag;

class Array : public zutest::ContainerTest {};

// Appends 1, 2, ... until `count` entries stand.
ZuStatus fillTo(ZuArray& a, std::uint32_t count) {
  for (std::uint32_t i = a.count; i < count; ++i) {
    if (a.append(tag(i + 1)) != ZU_OK) return ZU_ERROR;
  }
  return ZU_OK;
}

std::uint32_t slotBytes(std::uint32_t slots) { return slots * sizeof(ZuObject*); }

TEST_F(Array, GrowsBySixteenUpToTheLimitAndNoFurther) {
  ZuArray a;
  ASSERT_EQ(fillTo(a, 16), ZU_OK);
  EXPECT_EQ(a.capacity, 16);
  ASSERT_EQ(fillTo(a, 17), ZU_OK);
  EXPECT_EQ(a.capacity, 32);
  EXPECT_EQ(a.at(31), nullptr);  // new storage reads as 0

  ASSERT_EQ(fillTo(a, kLimit), ZU_OK);
  EXPECT_EQ(ramSize(a.items), slotBytes(kLimit));  // one block, exactly the slots
  EXPECT_EQ(a.append(tag(1)), ZU_ERROR);
  EXPECT_EQ(lastError(), kArrayTooLarge);
  EXPECT_EQ(a.count, kLimit);
  EXPECT_EQ(untag(a.at(kLimit - 1)), kLimit);

  ZuArray b;
  ASSERT_EQ(b.setInitialSize(15990), ZU_OK);
  ASSERT_EQ(fillTo(b, 15991), ZU_OK);
  EXPECT_EQ(b.capacity, kLimit);  // the last step is cut to the limit
}

TEST_F(Array, SizedPastTheLimitFillsButNeverGrows) {
  for (unsigned short size : {20000, 65535}) {
    ZuArray a;
    ASSERT_EQ(a.setInitialSize(size), ZU_OK);
    ASSERT_EQ(fillTo(a, size), ZU_OK);
    EXPECT_EQ(a.append(tag(1)), ZU_ERROR);
    EXPECT_EQ(lastError(), kArrayTooLarge);
    EXPECT_EQ(a.size(), size);
    EXPECT_EQ(untag(a.at(size - 1)), size);
  }
}

TEST_F(Array, InsertRemoveAndShrink) {
  ZuArray a;
  ASSERT_EQ(fillTo(a, 3), ZU_OK);
  ASSERT_EQ(a.addAtIndex(tag(9), 0), ZU_OK);
  a.removeAtIndex(2);
  ASSERT_EQ(a.count, 3);
  EXPECT_EQ(untag(a.at(0)) * 100 + untag(a.at(1)) * 10 + untag(a.at(2)), 913u);
  EXPECT_EQ(untag(a.at(3)), 3u);  // the old top slot keeps its stale value

  ASSERT_EQ(fillTo(a, 20), ZU_OK);
  ASSERT_EQ(a.shrink(5), ZU_OK);
  EXPECT_EQ(a.count, 5);
  EXPECT_EQ(ramSize(a.items), slotBytes(5));
  ASSERT_EQ(a.shrink(0), ZU_OK);
  EXPECT_EQ(a.items, nullptr);
  ASSERT_EQ(a.append(tag(1)), ZU_OK);
  EXPECT_EQ(a.capacity, 16);
  a.removeAtIndex(0);
  EXPECT_EQ(a.count, 0);
  EXPECT_EQ(a.capacity, 16);
}

TEST_F(Array, DeleteOperationsAndPointerIdentity) {
  int deaths = 0;
  zutest::Counted twin(&deaths);
  ZuArray a;
  ASSERT_EQ(a.append(new zutest::Counted(&deaths)), ZU_OK);
  ASSERT_EQ(a.append(nullptr), ZU_OK);
  ASSERT_EQ(a.append(new zutest::Counted(&deaths)), ZU_OK);
  EXPECT_EQ(a.doesExist(a.at(2)), 1u);
  EXPECT_EQ(a.doesExist(&twin), 0u);  // pointers, not values
  a.deleteAtIndex(0);
  a.deleteContents();  // skips the null entry
  EXPECT_EQ(deaths, 2);
  EXPECT_EQ(a.count, 0);
  EXPECT_EQ(a.capacity, 16);

  const std::uint32_t before = zutest::blocksInUse();
  ZuArrayPVoid p;
  for (int i = 0; i < 3; ++i) ASSERT_EQ(p.append(static_cast<ZuObject*>(ramAlloc(40))), ZU_OK);
  p.deleteAtIndex(1);
  p.deleteContents();
  EXPECT_EQ(zutest::blocksInUse(), before + 1);  // the slots alone
}

TEST(ArrayOutOfMemory, Growth) {
  zutest::SweepReport report;
  EXPECT_TRUE(zutest::sweepOutOfMemory(
      [] {
        ZuArray a;
        const ZuStatus result = fillTo(a, 4000);
        // A refused growth leaves every entry where it was.
        for (std::uint32_t i = 0; i < a.count; ++i) {
          if (untag(a.at(i)) != i + 1) {
            ADD_FAILURE() << "entry " << i << " moved";
            break;
          }
        }
        return result == ZU_OK;
      },
      &report));
  EXPECT_GT(report.failures, 2u);
}

}  // namespace

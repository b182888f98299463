// The heap's exact figures: block sizes, splits, merges, segment release,
// in-place resizing. On 32-bit builds every number is the classic one
// (12-byte smallest block, 24-byte segment header, 496-byte smallest
// segment); 64-bit builds round to 8 with 16 as the smallest block.
#include <cstring>
#include <vector>

#include "heap_fixture.h"

namespace zutest {
namespace {

constexpr bool k32 = sizeof(void*) == 4;

// The layout constants are checked where they are defined; what is left is
// the rounding of requests to blocks.
TEST(HeapFigures, BlockNeedRoundsToTheGranule) {
  struct Case {
    std::uint32_t request, need32, need64;
  };
  const Case cases[] = {{0, 12, 16},  {8, 12, 16},    {9, 16, 16},    {12, 16, 16},
                        {13, 20, 24}, {468, 472, 472}, {469, 476, 480}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.request);
    EXPECT_EQ(blockNeed(c.request), k32 ? c.need32 : c.need64);
  }
}

TEST_F(HeapTest, SmallRequestsAndTheirSizes) {
  void* zero = ramAlloc(0);
  void* one = ramAlloc(1);
  void* eight = ramAlloc(8);
  void* nine = ramAlloc(9);
  ASSERT_TRUE(zero && one && eight && nine);
  const std::uint32_t asked[] = {0, 1, 8, 9};
  const void* given[] = {zero, one, eight, nine};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(blockOf(given[i]), blockNeed(asked[i]));
    EXPECT_EQ(ramSize(given[i]), asked[i]);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(given[i]) % kAlign, 0u);
  }
  // Consecutive requests are cut one after another from the same segment.
  EXPECT_EQ(static_cast<unsigned char*>(one) - static_cast<unsigned char*>(zero), kMinBlock);
  EXPECT_EQ(segmentCount(), 1u);
  EXPECT_EQ(head()->size, kSegmentHeader + kMinPayload);
  EXPECT_EQ(head()->blocksInUse, 4u);
  for (void* p : {zero, one, eight, nine}) ramFree(p);
}

TEST_F(HeapTest, WholePayloadLeavesTheRoverNull) {
  void* whole = ramAlloc(468);
  ASSERT_NE(whole, nullptr);
  EXPECT_EQ(blockOf(whole), 472u);
  EXPECT_EQ(head()->rover, kNullOffset);
  EXPECT_EQ(head()->size, kSegmentHeader + kMinPayload);
  void* next = ramAlloc(0);
  EXPECT_EQ(segmentCount(), 2u);
  EXPECT_EQ(segmentHolding(next), head()->nextSegment);
  ramFree(whole);
  EXPECT_EQ(mdsGetPerTaskData(TASK_DATA_RAM_HEAP), segmentHolding(next))
      << "releasing the head moves the slot to the next segment";
  ramFree(next);
  EXPECT_EQ(mdsGetPerTaskData(TASK_DATA_RAM_HEAP), nullptr);
}

TEST_F(HeapTest, LargeBlockGetsASegmentOfItsOwn) {
  void* p = ramAlloc(469);
  ASSERT_NE(p, nullptr);
  EXPECT_EQ(head()->size, kSegmentHeader + blockNeed(469));
  ramFree(p);
}

// A segment holding A (104 bytes) then B up to the end, with A freed: the
// free list is A alone.
struct FreedFront {
  void* a;
  void* b;
  FreedFront() {
    a = ramAlloc(100);
    b = ramAlloc(kMinPayload - blockNeed(100) - kWord);
    ramFree(a);
  }
};

TEST_F(HeapTest, StrictSplitRule) {
  ASSERT_EQ(blockNeed(100), 104u);
  {
    FreedFront f;
    ASSERT_EQ(head()->rover, kNullOffset + offsetOf(head(), f.a));
    // A remainder of exactly the smallest block is not split off: slack.
    std::uint32_t need = 104 - kSplitAbove;
    void* p = ramAlloc(need - kWord);
    EXPECT_EQ(p, f.a);
    EXPECT_EQ(blockOf(p), 104u);
    EXPECT_EQ(ramSize(p), need - kWord);
    EXPECT_EQ(head()->freeHead, kNullOffset);
    ramFree(p);
    ramFree(f.b);
  }
  {
    FreedFront f;
    std::uint32_t need = 104 - kSplitAbove - kAlign;
    void* p = ramAlloc(need - kWord);
    EXPECT_EQ(p, f.a);
    EXPECT_EQ(blockOf(p), need);
    RamSegment* s = head();
    EXPECT_EQ(s->rover, offsetOf(s, p) + kWord + need - kWord);
    EXPECT_EQ(blockSize(s, s->rover), 104 - need);
    ramFree(p);
    ramFree(f.b);
  }
}

TEST_F(HeapTest, MergingWaitsForASearchThatNeedsIt) {
  void* a = ramAlloc(20);
  void* b = ramAlloc(20);
  void* c = ramAlloc(kMinPayload - 2 * blockNeed(20) - kWord);  // fills the segment
  RamSegment* s = head();
  ramFree(a);
  ramFree(b);
  std::uint32_t offA = offsetOf(s, a), offB = offsetOf(s, b);
  EXPECT_EQ(blockSize(s, offA), blockNeed(20));
  EXPECT_EQ(blockSize(s, offB), blockNeed(20)) << "freeing does not merge";
  EXPECT_EQ(s->freeHead, offB) << "push on free";
  // A request that fits in b is served by b, unmerged.
  void* again = ramAlloc(20);
  EXPECT_EQ(again, b);
  ramFree(again);
  // A request for both merges them, from the first: b is found first but too
  // small and its successor is in use; a then absorbs b.
  void* both = ramAlloc(2 * blockNeed(20) - kWord);
  EXPECT_EQ(both, a);
  EXPECT_EQ(blockOf(both), 2 * blockNeed(20));
  EXPECT_EQ(segmentCount(), 1u);
  ramFree(both);
  ramFree(c);
}

TEST_F(HeapTest, ResizeInPlaceAndByMoving) {
  void* p = ramAlloc(40);
  std::memset(p, 0xAB, 40);
  void* q = p;
  ASSERT_EQ(ramResize(&q, 40), ZU_OK);
  EXPECT_EQ(q, p);
  // Downward: same pointer, the tail goes back to the free list.
  ASSERT_EQ(ramResize(&q, 10), ZU_OK);
  EXPECT_EQ(q, p);
  EXPECT_EQ(blockOf(q), blockNeed(10));
  EXPECT_EQ(head()->rover, offsetOf(head(), q) + blockNeed(10));
  // Upward into the one free block that follows: still in place. Only that
  // neighbour counts, not the unmerged free run behind it.
  ASSERT_EQ(ramResize(&q, 40), ZU_OK);
  EXPECT_EQ(q, p);
  EXPECT_EQ(ramSize(q), 40u);
  EXPECT_EQ(static_cast<unsigned char*>(q)[9], 0xAB);
  // Growth past that neighbour moves the block; the new place comes from a
  // search, which merges the free run that resize would not.
  void* r = q;
  ASSERT_EQ(ramResize(&r, 10), ZU_OK);
  ASSERT_EQ(ramResize(&r, 200), ZU_OK);
  EXPECT_EQ(static_cast<unsigned char*>(r), static_cast<unsigned char*>(p) + blockNeed(10));
  EXPECT_EQ(static_cast<unsigned char*>(r)[9], 0xAB);
  ramFree(r);
  EXPECT_EQ(head(), nullptr) << "the moved-from block was freed, so the segment went";
  q = p = ramAlloc(200);
  std::memset(q, 0xAB, 200);
  // With a block in use behind it, growth has to move, keeping the bytes.
  void* wall = ramAlloc(16);
  ASSERT_EQ(static_cast<unsigned char*>(wall), static_cast<unsigned char*>(q) + blockOf(q));
  ASSERT_EQ(ramResizeZ(&q, 300), ZU_OK);
  EXPECT_NE(q, p);
  const unsigned char* bytes = static_cast<const unsigned char*>(q);
  for (int i = 0; i < 200; ++i) ASSERT_EQ(bytes[i], 0xAB) << "old bytes are kept";
  for (int i = 200; i < 300; ++i) ASSERT_EQ(bytes[i], 0) << "new bytes are zeroed";
  // Shrinking with ResizeZ zeroes nothing.
  std::memset(q, 0x5C, 300);
  ASSERT_EQ(ramResizeZ(&q, 100), ZU_OK);
  for (int i = 0; i < 100; ++i) ASSERT_EQ(bytes[i], 0x5C);
  ramFree(q);
  ramFree(wall);
}

TEST_F(HeapTest, FailedResizeLeavesTheBlock) {
  void* p = ramAlloc(30);
  std::memcpy(p, "unchanged contents of 30 bytes", 30);
  void* wall = ramAlloc(kMinPayload - blockNeed(30) - kWord);
  zu::platform::hostFail(zu::platform::HostCall::malloc, 1, ENOMEM);
  void* q = p;
  EXPECT_EQ(ramResize(&q, 1000), ZU_ERROR);
  EXPECT_EQ(q, p);
  EXPECT_EQ(std::memcmp(q, "unchanged contents of 30 bytes", 30), 0);
  EXPECT_EQ(ramSize(q), 30u);
  EXPECT_EQ(segmentCount(), 1u);
  EXPECT_EQ(ramResize(&q, kMaxRequest + 1), ZU_ERROR) << "beyond the size field";
  EXPECT_EQ(q, p);
  ramFree(wall);
  ramFree(p);
}

TEST_F(HeapTest, RefusedBlocksAndLimits) {
  zu::platform::hostFail(zu::platform::HostCall::malloc, 1, ENOMEM);
  EXPECT_EQ(ramAlloc(10), nullptr);
  EXPECT_EQ(head(), nullptr) << "a refused segment leaves the chain as it was";
  EXPECT_EQ(ramAlloc(kMaxRequest + 1), nullptr);
  EXPECT_EQ(ramAlloc(0xFFFFFFFFu), nullptr);
  EXPECT_EQ(ramAllocZ(0xFFFFFFFFu), nullptr);
  void* largest = ramAlloc(kMaxRequest);
  ASSERT_NE(largest, nullptr);
  EXPECT_EQ(blockOf(largest), kMaxBlock);
  ramFree(largest);

  zu::platform::hostFail(zu::platform::HostCall::malloc, 1, ENOMEM);
  EXPECT_EQ(ramAlloc64K(), nullptr);
  zu::platform::hostFail(zu::platform::HostCall::malloc, 1, ENOMEM);
  EXPECT_EQ(ramAllocHuge(100), nullptr);
  ramFree64K(nullptr);
  ramFreeHuge(nullptr);
  ramFree(nullptr);
  void* big = ramAlloc64K();
  ASSERT_NE(big, nullptr);
  std::memset(big, 1, 65536);
  EXPECT_EQ(head(), nullptr) << "stand-alone blocks lie in no segment";
  ramFree64K(big);
  void* huge = ramAllocHuge(20000000);
  ASSERT_NE(huge, nullptr);
  ramFreeHuge(huge);
}

TEST_F(HeapTest, StringCopies) {
  const unsigned char text[] = "DSN=ledger;UID=clerk";
  unsigned char* all = ramAllocStr(text);
  ASSERT_NE(all, nullptr);
  EXPECT_STREQ(reinterpret_cast<char*>(all), reinterpret_cast<const char*>(text));
  EXPECT_EQ(ramSize(all), sizeof text);
  unsigned char* part = ramAllocStr(text, 10);
  EXPECT_STREQ(reinterpret_cast<char*>(part), "DSN=ledger");
  // The measure is 16 bits wide: a text of 65536 + 5 bytes copies 5.
  std::vector<unsigned char> longText(65536 + 5, 'x');
  longText.push_back(0);
  unsigned char* wrapped = ramAllocStr(longText.data());
  EXPECT_EQ(std::strlen(reinterpret_cast<char*>(wrapped)), 5u);
  unsigned char* zeroed = static_cast<unsigned char*>(ramAllocZ(33));
  EXPECT_EQ(std::vector<unsigned char>(zeroed, zeroed + 33), std::vector<unsigned char>(33, 0));
  for (void* p : {static_cast<void*>(all), static_cast<void*>(part), static_cast<void*>(wrapped),
                  static_cast<void*>(zeroed)}) {
    ramFree(p);
  }
}

#ifndef NDEBUG
TEST_F(HeapTest, DebugBuildCatchesCheapMisuse) {
  // The default "fast" style forks without re-executing, which also works
  // under user-mode emulation of the 32-bit build.
  void* p = ramAlloc(10);
  void* keep = ramAlloc(10);
  static int outside;
  EXPECT_DEATH(ramFree(&outside), "no segment");
  ramFree(p);
  EXPECT_DEATH(ramFree(p), "double free");
  ramFree(keep);
}
#endif

}  // namespace
}  // namespace zutest

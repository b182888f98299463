// Heap tests start from and return to an empty heap, so that exact layouts
// can be checked.
#ifndef ZU_TESTS_MEMORY_HEAP_FIXTURE_H
#define ZU_TESTS_MEMORY_HEAP_FIXTURE_H

#include <gtest/gtest.h>

#include "frame/task.h"
#include "memory/ram.h"
#include "support/heap_check.h"

namespace zutest {

using namespace zu::heap;

inline std::uint32_t blockOf(const void* p) {
  return *reinterpret_cast<const std::uint32_t*>(static_cast<const unsigned char*>(p) - kWord) &
         kSizeMask;
}

inline RamSegment* segmentHolding(const void* p) {
  auto at = reinterpret_cast<std::uintptr_t>(p);
  for (RamSegment* s = head(); s != nullptr; s = s->nextSegment) {
    auto from = reinterpret_cast<std::uintptr_t>(s);
    if (at >= from && at < from + s->size) return s;
  }
  return nullptr;
}

class HeapTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(head(), nullptr) << "a previous test left blocks behind"; }
  void TearDown() override {
    EXPECT_TRUE(heapIsSound());
    EXPECT_EQ(head(), nullptr) << "the test left blocks behind";
  }
  FaultGuard faults;
};

}  // namespace zutest

#endif

// Many threads at once, each with its own stack of lists: nothing of one
// thread's errors shows on another's, and a thread that never announced
// itself gets its record when it first sets a list.
#include <gtest/gtest.h>

#include <latch>
#include <string>
#include <thread>
#include <vector>

#include "errors/keeper.h"
#include "errors/message.h"
#include "frame/task.h"
#include "frame/thread.h"
#include "memory/heap.h"
#include "support/heap_check.h"

namespace {

constexpr int kThreads = 8;
constexpr int kRounds = 150;
constexpr unsigned short kOwnNumberBase = 1000;

const unsigned char* u(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.c_str());
}
std::string text(ZuError* e) { return reinterpret_cast<char*>(e->text.getCString()); }

void raiseAndRead(int t, std::latch& start) {
  const bool announced = t % 2 == 0;
  if (announced) {
    EXPECT_EQ(mdsPerThreadInit(), 1);
  }
  EXPECT_EQ(mdsIsThreadInit(), announced ? 1u : 0u);
  const std::string name = "thread" + std::to_string(t);
  ZuErrorList outer(&t, 1);
  start.arrive_and_wait();
  ZuErrorKeeper::setErrorList(&outer);
  EXPECT_EQ(mdsIsThreadInit(), 1u);
  for (int i = 0; i < kRounds; ++i) {
    // A callee's own list, which keeps one error, then goes.
    ZuErrorList inner(nullptr, 0);
    ZuErrorKeeper::setErrorList(&inner);
    addMessageError(2705) << i << u(name);
    EXPECT_TRUE(addMessageError(2701).isNullError());
    EXPECT_EQ(text(ZuErrorKeeper::getLastError()),
              "Error parsing " + name + " at offset " + std::to_string(i) + ".");
    EXPECT_EQ(ZuErrorKeeper::giveUpErrorList(), &inner);
    EXPECT_EQ(ZuErrorKeeper::getOwnerOfList(), &t);
    addDatabaseError(static_cast<unsigned short>(kOwnNumberBase + t), i, u(name),
                     i % 3 == 0 ? ZU_ERROR_TYPE_WARNING : ZU_ERROR_TYPE_ERROR);
    if (i % 10 == 0) {
      ZuErrorKeeper::addMemoryError();
      EXPECT_EQ(ZuErrorKeeper::getLastErrorNumber(), 30190);
      ZuErrorKeeper::clearLastError();
    }
  }
  EXPECT_EQ(ZuErrorKeeper::giveUpErrorList(), &outer);
  EXPECT_EQ(outer.nodeCount, static_cast<std::uint32_t>(kRounds));
  EXPECT_EQ(outer.getErrorsMix(), ZU_MIX_BOTH);
  int expected = kRounds;
  while (ZuError* e = outer.removeLastError()) {
    --expected;
    EXPECT_EQ(e->getNumber(), kOwnNumberBase + t);
    EXPECT_EQ(e->getNativeCode(), expected);
    EXPECT_EQ(text(e), name);
    delete e;
  }
  // The record made on demand goes the same way as an announced one.
  mdsPerThreadTerm();
  EXPECT_EQ(mdsIsThreadInit(), 0u);
}

TEST(ErrorListThreads, EachThreadKeepsItsOwnNestedLists) {
  ASSERT_EQ(zu::heap::head(), nullptr);
  std::latch start(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) threads.emplace_back(raiseAndRead, t, std::ref(start));
  for (auto& thread : threads) thread.join();
  EXPECT_TRUE(zutest::heapIsSound());
  EXPECT_EQ(zu::heap::head(), nullptr);
  EXPECT_EQ(mdsGetPerTaskData(TASK_DATA_THREADS), nullptr);
}

}  // namespace

#include <gtest/gtest.h>

#include <condition_variable>
#include <functional>
#include <latch>
#include <mutex>
#include <thread>
#include <vector>

#include "frame/statics.h"
#include "frame/task.h"
#include "frame/thread.h"
#include "memory/heap.h"
#include "memory/ram.h"
#include "support/heap_check.h"

namespace {

ZuThreadInfo* table() { return static_cast<ZuThreadInfo*>(mdsGetPerTaskData(TASK_DATA_THREADS)); }

// The record of `id`, or null. Under the table's semaphore: the cursor is shared.
ZuThreadInfo* recordOf(std::uint32_t id) {
  ZuThreadInfo* found = nullptr;
  threadListSemaphore.lock();
  ZuNode* n = table() != nullptr ? table()->getFirstNode() : nullptr;
  for (; n != nullptr; n = table()->getNextNode()) {
    ZuThreadInfo* record = static_cast<ZuThreadInfo::Link*>(n)->record;
    if (record->threadId == id) found = record;
  }
  threadListSemaphore.unlock();
  return found;
}

// A thread that runs one job at a time for the test, which waits for each:
// the order of events across threads is then the test's, not the scheduler's.
class Worker {
 public:
  Worker() : thread_([this] { serve(); }) { run([this] { id = bosGetThreadID(); }); }
  ~Worker() {
    run(nullptr);
    thread_.join();
  }
  void run(std::function<void()> job) {
    std::unique_lock lock(mutex_);
    job_ = std::move(job);
    pending_ = true;
    changed_.notify_all();
    changed_.wait(lock, [this] { return !pending_; });
  }
  std::uint32_t id = 0;

 private:
  void serve() {
    for (bool more = true; more;) {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [this] { return pending_; });
      more = static_cast<bool>(job_);
      if (more) job_();
      pending_ = false;
      changed_.notify_all();
    }
  }
  std::mutex mutex_;
  std::condition_variable changed_;
  std::function<void()> job_;
  bool pending_ = false;
  std::thread thread_;
};

class PerThread : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(table(), nullptr) << "a previous test left records behind"; }
  void TearDown() override { EXPECT_EQ(table(), nullptr) << "the test left records behind"; }
};
using PerThreadThreads = PerThread;

}  // namespace

TEST_F(PerThread, StoreMakesARecordOnDemand) {
  int mine = 0;
  EXPECT_EQ(mdsGetPerThreadData(THREAD_DATA_ERROR_LIST), nullptr);
  mdsSetPerThreadData(THREAD_DATA_ERROR_LIST, &mine);
  ZuThreadInfo* record = recordOf(bosGetThreadID());
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->useCount, 1u);
  EXPECT_EQ(record->slots[THREAD_DATA_ERROR_LIST], &mine);
  EXPECT_EQ(mdsGetPerThreadDataAddress(THREAD_DATA_ERROR_LIST),
            &record->slots[THREAD_DATA_ERROR_LIST]);
  mdsPerThreadTerm();
  EXPECT_EQ(mdsIsThreadInit(), 0u);
}

// The first record holds the table; when its thread goes first, the others
// must stay reachable with their values, and a term without a record is inert.
TEST_F(PerThreadThreads, FirstRecordLeavesFirstOthersKeepTheirs) {
  constexpr int kThreads = 8;
  std::vector<Worker> workers(kThreads);
  int values[kThreads] = {};
  for (int i = 0; i < kThreads; ++i) {
    workers[i].run([&, i] {
      EXPECT_EQ(mdsPerThreadInit(), 1);
      mdsSetPerThreadData(THREAD_DATA_ERROR_LIST, &values[i]);
    });
  }
  ASSERT_EQ(table(), recordOf(workers[0].id));
  ASSERT_EQ(table()->nodeCount, static_cast<std::uint32_t>(kThreads));

  ZuThreadInfo* before = table();
  mdsPerThreadTerm();  // this thread has no record
  EXPECT_EQ(table(), before);
  EXPECT_EQ(table()->nodeCount, static_cast<std::uint32_t>(kThreads));

  workers[0].run([] { mdsPerThreadTerm(); });
  EXPECT_EQ(recordOf(workers[0].id), nullptr);
  EXPECT_EQ(table(), recordOf(workers[1].id)) << "the table passes to the next record made";
  for (int i = 0; i < kThreads; ++i) {
    workers[i].run([&, i] {
      EXPECT_EQ(mdsIsThreadInit(), i == 0 ? 0u : 1u);
      EXPECT_EQ(mdsGetPerThreadData(THREAD_DATA_ERROR_LIST), i == 0 ? nullptr : &values[i]);
    });
  }
  // The rest leave from the middle, the end and the front.
  for (int i : {4, 7, 1, 2, 3, 5, 6}) {
    workers[i].run([] { mdsPerThreadTerm(); });
    EXPECT_EQ(recordOf(workers[i].id), nullptr);
  }
  EXPECT_EQ(mdsIsThreadInit(), 0u);
}

// Each thread inits twice and terms twice: the first term keeps the record.
TEST_F(PerThreadThreads, ManyThreadsAtOnce) {
  constexpr int kThreads = 12;
  constexpr int kRounds = 50;
  std::latch start(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&start] {
      int mine = 0, spare = 0;
      start.arrive_and_wait();
      for (int round = 0; round < kRounds; ++round) {
        ASSERT_EQ(mdsPerThreadInit(), 1);
        mdsSetPerThreadData(THREAD_DATA_ERROR_LIST, &mine);
        mdsSetPerThreadData(THREAD_DATA_SPARE, &spare);
        ASSERT_EQ(mdsPerThreadInit(), 1);
        mdsPerThreadTerm();
        ASSERT_EQ(mdsGetPerThreadData(THREAD_DATA_ERROR_LIST), &mine);
        ASSERT_EQ(mdsGetPerThreadData(THREAD_DATA_SPARE), &spare);
        mdsPerThreadTerm();
        ASSERT_EQ(mdsIsThreadInit(), 0u);
        ASSERT_EQ(mdsGetPerThreadData(THREAD_DATA_SPARE), nullptr);
        ASSERT_EQ(mdsGetPerThreadDataAddress(THREAD_DATA_SPARE), nullptr);
      }
    });
  }
  for (std::thread& t : threads) t.join();
}

TEST_F(PerThreadThreads, RefusedRecordLeavesTheTableAsItWas) {
  zutest::FaultGuard faults;
  ASSERT_EQ(zu::heap::head(), nullptr) << "the first record needs the first system block";
  zu::platform::hostFail(zu::platform::HostCall::malloc, 1, ENOMEM);
  EXPECT_EQ(mdsPerThreadInit(), 0);
  EXPECT_EQ(table(), nullptr);

  Worker other;
  other.run([] { mdsPerThreadInit(); });
  ZuThreadInfo* before = table();
  ASSERT_NE(before, nullptr);
  // Fill the heap, so that this thread's record needs a block that is refused.
  zu::platform::hostFail(zu::platform::HostCall::malloc, 1, ENOMEM, true);
  std::vector<void*> fillers;
  for (std::uint32_t size : {256u, 64u, 1u}) {
    while (void* p = ramAlloc(size)) fillers.push_back(p);
  }
  EXPECT_EQ(mdsPerThreadInit(), 0);
  int mine = 0;
  mdsSetPerThreadData(THREAD_DATA_SPARE, &mine);
  EXPECT_EQ(mdsIsThreadInit(), 0u);
  EXPECT_EQ(table(), before);
  EXPECT_EQ(table()->nodeCount, 1u);
  EXPECT_EQ(table()->useCount, 1u);

  zu::platform::hostRestoreAll();
  for (void* p : fillers) ramFree(p);
  other.run([] { mdsPerThreadTerm(); });
  EXPECT_TRUE(zutest::heapIsSound());
}

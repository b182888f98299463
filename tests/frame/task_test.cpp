#include <gtest/gtest.h>

#include <thread>

#include "frame/object.h"
#include "frame/statics.h"
#include "frame/task.h"
#include "memory/ram.h"
#include "support/heap_check.h"

TEST(Frame, TaskCountsAndSlots) {
  ZuTaskInfo fresh;
  EXPECT_EQ(fresh.initCount, 1u);
  for (void* slot : fresh.slots) EXPECT_EQ(slot, nullptr);

  ZuTaskInfo* task = mdsGetTaskInfo();
  ASSERT_EQ(task, mdsGetTaskInfo());
  std::uint32_t before = task->initCount;
  EXPECT_EQ(mdsPerTaskInit(), 1);
  EXPECT_EQ(task->initCount, before + 1);
  EXPECT_EQ(mdsIsTaskInit(), 1u);
  mdsPerTaskTerm();
  EXPECT_EQ(task->initCount, before);

  // The count may reach 0; nothing happens then, but the answer changes.
  task->initCount = 1;
  mdsPerTaskTerm();
  EXPECT_EQ(mdsIsTaskInit(), 0u);
  mdsPerTaskInit();
  task->initCount = before;
}

TEST(Frame, Identity) {
  std::uint32_t pid = 0;
  bostskid(&pid);
  EXPECT_EQ(pid, bosGetProcessID());
  EXPECT_NE(bosGetThreadID(), 0u);
  std::uint32_t other = 0;
  std::thread([&] { other = bosGetThreadID(); }).join();
  EXPECT_NE(other, bosGetThreadID());
}

TEST(Frame, EntryPointKeepsTheFirstHandle) {
  void* first = moduleHandle;
  ASSERT_NE(first, nullptr);  // set before the first static semaphore
  int other;
  EXPECT_TRUE(zu::libraryEntry(&other, 0, nullptr));
  EXPECT_TRUE(zu::libraryEntry(&other, 3, nullptr));
  EXPECT_EQ(moduleHandle, first);
}

namespace {
struct Counted : ZuObject {
  explicit Counted(int* deaths) : deaths(deaths) {}
  ~Counted() override { ++*deaths; }
  int* deaths;
  char payload[40];
};
}  // namespace

// Objects live on the library heap and go through the virtual destructor.
TEST(Frame, ObjectRoot) {
  ZuObject root;
  EXPECT_EQ(root.compare(nullptr), 0);
  EXPECT_EQ(root.compare(&root), 0);
  Counted* none = nullptr;
  delete none;  // does nothing

  int deaths = 0;
  ZuObject* asRoot = new Counted(&deaths);
  ASSERT_NE(asRoot, nullptr);
  EXPECT_EQ(ramSize(asRoot), sizeof(Counted));
  delete asRoot;
  EXPECT_EQ(deaths, 1);
  EXPECT_TRUE(zutest::heapIsSound());
}

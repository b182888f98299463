#include <gtest/gtest.h>

#include <thread>

#include "frame/object.h"
#include "frame/statics.h"
#include "frame/task.h"

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

  static int value = 5;
  const auto slot = static_cast<PerTaskData>(7);
  mdsSetPerTaskData(slot, &value);
  EXPECT_EQ(mdsGetPerTaskData(slot), &value);
  EXPECT_EQ(mdsGetPerTaskDataAddress(slot), &task->slots[7]);
  mdsSetPerTaskData(slot, nullptr);
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
  static int built;
  Counted() { ++built; }
  short compare(const ZuObject*) const override { return 9; }
};
int Counted::built = 0;
}  // namespace

TEST(Frame, ObjectRoot) {
  ZuObject root;
  EXPECT_EQ(root.compare(nullptr), 0);
  EXPECT_EQ(root.compare(&root), 0);
  Counted* none = nullptr;
  delete none;  // does nothing

  int before = Counted::built;
  Counted* c = new Counted;
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(Counted::built, before + 1);
  ZuObject* asRoot = c;
  EXPECT_EQ(asRoot->compare(nullptr), 9);
  delete asRoot;
}

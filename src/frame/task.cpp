#include "frame/task.h"

#include "platform/platform.h"

unsigned short mdsPerTaskInit() {
  ++mdsGetTaskInfo()->initCount;
  return 1;
}

void mdsPerTaskTerm() { --mdsGetTaskInfo()->initCount; }

unsigned int mdsIsTaskInit() { return mdsGetTaskInfo()->initCount != 0 ? 1 : 0; }

void* mdsGetPerTaskData(PerTaskData slot) { return mdsGetTaskInfo()->slots[slot]; }

void** mdsGetPerTaskDataAddress(PerTaskData slot) { return &mdsGetTaskInfo()->slots[slot]; }

void mdsSetPerTaskData(PerTaskData slot, const void* value) {
  mdsGetTaskInfo()->slots[slot] = const_cast<void*>(value);
}

std::uint32_t bosGetProcessID() { return zu::platform::sys.processId(); }

std::uint32_t bosGetThreadID() { return zu::platform::sys.threadId(); }

void bostskid(std::uint32_t* id) { *id = bosGetProcessID(); }

// The tour's first stop: the task record, the semaphores and the heap.
#include <cstdio>
#include <cstring>

#include <zuutl.h>

#include "command.h"

namespace zutool {
namespace {

const char* form(const ZuSemaphore& s) {
  return s.allocatedType == 1 ? "system semaphore" : "spin lock";
}

void demoFrame() {
  std::printf("== Task and thread frame\n");
  mdsPerTaskInit();
  std::uint32_t pid = 0;
  bostskid(&pid);
  std::printf("task record: initCount %u after mdsPerTaskInit, process %u, thread %u\n",
              static_cast<unsigned>(mdsGetTaskInfo()->initCount), static_cast<unsigned>(pid),
              static_cast<unsigned>(bosGetThreadID()));
  static int clientValue = 42;
  mdsSetPerTaskData(static_cast<PerTaskData>(2), &clientValue);
  std::printf("client slot 2 holds %d\n", *static_cast<int*>(mdsGetPerTaskData(static_cast<PerTaskData>(2))));
  mdsSetPerTaskData(static_cast<PerTaskData>(2), nullptr);

  ZuSemaphore made;
  // Never constructed: zero bytes are a free spin lock.
  alignas(ZuSemaphore) static unsigned char storage[sizeof(ZuSemaphore)];
  ZuSemaphore& zeroed = *reinterpret_cast<ZuSemaphore*>(storage);
  made.lock();
  made.unlock();
  zeroed.lock();
  zeroed.unlock();
  std::printf("a constructed semaphore is a %s; an all-zero one is a %s (ZU_SEMCONTROL picks)\n",
              form(made), form(zeroed));
  const unsigned char* control = bosGetEnv(reinterpret_cast<const unsigned char*>("ZU_SEMCONTROL"));
  std::printf("ZU_SEMCONTROL is %s\n", control ? reinterpret_cast<const char*>(control) : "not set");

  std::printf("\n== Heap\n");
  void* tiny = ramAlloc(0);
  void* small = ramAlloc(9);
  std::printf("ramAlloc(0): ramSize %u; ramAlloc(9): ramSize %u\n", static_cast<unsigned>(ramSize(tiny)),
              static_cast<unsigned>(ramSize(small)));
  unsigned char* text = ramAllocStr(reinterpret_cast<const unsigned char*>("connect string"));
  void* grown = text;
  ramResizeZ(&grown, 64);
  std::printf("ramAllocStr + ramResizeZ(64): \"%s\", %u bytes, zero-filled tail\n",
              static_cast<const char*>(grown), static_cast<unsigned>(ramSize(grown)));
  void* big = ramAlloc64K();
  std::printf("ramAlloc64K: %s; ramIsAllocOK: %u\n", big ? "a stand-alone 64 KiB block" : "refused",
              static_cast<unsigned>(ramIsAllocOK()));
  ramFree64K(big);
  ramFree(grown);
  ramFree(small);
  ramFree(tiny);
  std::printf("all freed: heap slot is %s\n",
              mdsGetPerTaskData(TASK_DATA_RAM_HEAP) == nullptr ? "empty again" : "still holding segments");
  mdsPerTaskTerm();
}

Registration frame({"frame", "", "", nullptr, demoFrame, 10});

}  // namespace
}  // namespace zutool

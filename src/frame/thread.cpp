#include "frame/thread.h"

#include "frame/hold.h"
#include "frame/statics.h"
#include "frame/task.h"

namespace {

ZuThreadInfo*& table() {
  return *reinterpret_cast<ZuThreadInfo**>(mdsGetPerTaskDataAddress(TASK_DATA_THREADS));
}

// With threadListSemaphore held: the table's cursor is shared.
ZuThreadInfo* findRecord(std::uint32_t threadId) {
  ZuThreadInfo* holder = table();
  if (holder == nullptr) return nullptr;
  for (ZuNode* n = holder->getFirstNode(); n != nullptr; n = holder->getNextNode()) {
    ZuThreadInfo* record = static_cast<ZuThreadInfo::Link*>(n)->record;
    if (record->threadId == threadId) return record;
  }
  return nullptr;
}

// With threadListSemaphore held. When the record that holds the table leaves
// and others stay, its entries move, in order, to the new first record.
void removeRecord(ZuThreadInfo* record) {
  ZuThreadInfo* holder = table();
  holder->unlink(&record->link);
  if (holder->nodeCount == 0) {
    table() = nullptr;
  } else if (record == holder) {
    ZuThreadInfo* heir = static_cast<ZuThreadInfo::Link*>(holder->getFirstNode())->record;
    while (ZuNode* n = holder->removeFirstNode()) heir->append(n);
    table() = heir;
  }
}

}  // namespace

ZuThreadInfo::ZuThreadInfo(std::uint32_t id) : threadId(id), useCount(1), slots{}, link(this) {}

ZuThreadInfo::~ZuThreadInfo() = default;

unsigned short mdsPerThreadInit() {
  const std::uint32_t id = bosGetThreadID();
  {
    zu::Hold lock(threadListSemaphore);
    if (ZuThreadInfo* record = findRecord(id)) {
      ++record->useCount;
      return 1;
    }
  }
  // Made with the semaphore free: a failed allocation records itself, and
  // that path needs the semaphore. Only this thread makes a record for its
  // id, so none can appear meanwhile.
  auto* record = new ZuThreadInfo(id);
  if (record == nullptr) return 0;
  zu::Hold lock(threadListSemaphore);
  ZuThreadInfo*& holder = table();
  if (holder == nullptr) {
    record->append(&record->link);
    holder = record;
  } else {
    holder->append(&record->link);
  }
  return 1;
}

void mdsPerThreadTerm() {
  const std::uint32_t id = bosGetThreadID();
  zu::Hold lock(threadListSemaphore);
  ZuThreadInfo* record = findRecord(id);
  if (record == nullptr || --record->useCount > 0) return;
  removeRecord(record);
  delete record;
}

void* mdsGetPerThreadData(PerThreadData slot) {
  const std::uint32_t id = bosGetThreadID();
  zu::Hold lock(threadListSemaphore);
  ZuThreadInfo* record = findRecord(id);
  return record != nullptr ? record->slots[slot] : nullptr;
}

void** mdsGetPerThreadDataAddress(PerThreadData slot) {
  const std::uint32_t id = bosGetThreadID();
  zu::Hold lock(threadListSemaphore);
  ZuThreadInfo* record = findRecord(id);
  return record != nullptr ? &record->slots[slot] : nullptr;
}

void mdsSetPerThreadData(PerThreadData slot, const void* value) {
  void** where = mdsGetPerThreadDataAddress(slot);
  if (where == nullptr) {
    if (mdsPerThreadInit() == 0) return;  // the allocator has recorded it
    where = mdsGetPerThreadDataAddress(slot);
  }
  *where = const_cast<void*>(value);
}

unsigned int mdsIsThreadInit() {
  const std::uint32_t id = bosGetThreadID();
  zu::Hold lock(threadListSemaphore);
  return findRecord(id) != nullptr ? 1 : 0;
}

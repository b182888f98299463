// The keeper finds the calling thread's current list in its per-thread slot
// on every call; nothing is cached, so lists can be pushed and popped freely.
#include "errors/keeper.h"

#include "errors/static_records.h"
#include "frame/thread.h"

namespace {

ZuErrorList* currentList() {
  return static_cast<ZuErrorList*>(mdsGetPerThreadData(THREAD_DATA_ERROR_LIST));
}

void discard(ZuError* record) {
  if (record != nullptr && record->isStatic() == 0) delete record;
}

// A list that keeps one error takes nothing once it holds an error.
bool isClosed(ZuErrorList& list) {
  if (list.isKeepAll() != 0) return false;
  const ErrorsMix mix = list.getErrorsMix();
  return mix == ZU_MIX_ERRORS || mix == ZU_MIX_BOTH;
}

}  // namespace

ZuError& ZuErrorKeeper::addError(ZuError* record) {
  ZuErrorList* list = currentList();
  if (list == nullptr || isClosed(*list)) {
    discard(record);
    return zu::nullError;
  }
  // A shared record on a list would be deleted with it, or deleted twice.
  if (record == nullptr || record->isStatic() != 0) return zu::nullError;
  list->append(record);
  return *record;
}

ZuError* ZuErrorKeeper::getLastError() {
  ZuErrorList* list = currentList();
  return list != nullptr ? list->getLastError() : nullptr;
}

unsigned short ZuErrorKeeper::getLastErrorNumber() {
  ZuError* last = getLastError();
  return last != nullptr ? last->getNumber() : 0;
}

ZuError& ZuErrorKeeper::appendTextToLastError(const unsigned char* more) {
  ZuError* last = getLastError();
  if (last == nullptr) return zu::nullError;
  last->appendText(more);
  // Shared records keep their count: they take no parameters anyway.
  if (last->isStatic() == 0) last->text.resetParams();
  return *last;
}

void ZuErrorKeeper::clearLastError() {
  ZuErrorList* list = currentList();
  if (list != nullptr) discard(list->removeLastError());
}

void ZuErrorKeeper::addMemoryError() {
  ZuErrorList* list = currentList();
  if (list == nullptr) return;
  // In a list that keeps one error, the memory error takes its place.
  if (isClosed(*list)) discard(list->removeLastError());
  list->flags |= ZuErrorList::kMemoryPending;
}

void ZuErrorKeeper::setErrorList(ZuErrorList* list) {
  if (list == nullptr) return;
  list->previous = currentList();
  mdsSetPerThreadData(THREAD_DATA_ERROR_LIST, list);
}

ZuErrorList* ZuErrorKeeper::giveUpErrorList() {
  ZuErrorList* list = currentList();
  if (list == nullptr) return nullptr;
  mdsSetPerThreadData(THREAD_DATA_ERROR_LIST, list->previous);
  list->previous = nullptr;
  return list;
}

void* ZuErrorKeeper::getOwnerOfList() {
  ZuErrorList* list = currentList();
  return list != nullptr ? list->owner : nullptr;
}

ZuError& addDatabaseError(unsigned short number, std::int32_t nativeCode,
                          const unsigned char* text, ErrorType type) {
  return ZuErrorKeeper::addError(new ZuError(number, text, type, 0, nativeCode));
}

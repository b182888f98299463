#include "errors/error_list.h"

#include "errors/static_records.h"
#include "frame/thread.h"
#include "strings/bytes.h"

namespace {

// Shared records are never deleted, even if a client put one on a list.
void discard(ZuError* record) {
  if (record != nullptr && record->isStatic() == 0) delete record;
}

}  // namespace

ZuErrorList::ZuErrorList() : ZuErrorList(nullptr, 1) {}

ZuErrorList::ZuErrorList(void* owner, unsigned int keepAll)
    : owner(owner),
      flags((keepAll & 1u) != 0 ? kKeepAll : 0),
      previous(nullptr),
      slotAddress(mdsGetPerThreadDataAddress(THREAD_DATA_ERROR_LIST)) {}

ZuErrorList::~ZuErrorList() {
  flags &= ~kMemoryPending;
  while (ZuNode* node = removeFirstNode()) discard(static_cast<ZuError*>(node));
}

ZuError* ZuErrorList::getLastError() {
  if ((flags & kMemoryPending) != 0) return &zu::memoryError;
  return static_cast<ZuError*>(getLastNode());
}

ZuError* ZuErrorList::removeLastError() {
  if ((flags & kMemoryPending) != 0) {
    flags &= ~kMemoryPending;
    return &zu::memoryError;
  }
  return static_cast<ZuError*>(removeLastNode());
}

ZuError* ZuErrorList::removeFirstError() {
  if ((flags & kMemoryPending) != 0) {
    flags &= ~kMemoryPending;
    return &zu::memoryError;
  }
  return static_cast<ZuError*>(removeFirstNode());
}

ErrorsMix ZuErrorList::getErrorsMix() {
  if (last == nullptr) return ZU_MIX_NONE;
  bool warnings = false;
  bool errors = false;
  // Walked by links rather than the cursor, which belongs to the client.
  ZuNode* node = last;
  do {
    node = node->next;
    if (static_cast<ZuError*>(node)->isWarning() != 0) {
      warnings = true;
    } else {
      errors = true;
    }
  } while (node != last && !(warnings && errors));
  if (warnings && errors) return ZU_MIX_BOTH;
  return errors ? ZU_MIX_ERRORS : ZU_MIX_WARNINGS;
}

ZuStatus ZuErrorList::concatErrors(ZuString* out, unsigned short separator) {
  if (last == nullptr) return ZU_OK;
  ZuNode* node = last;
  bool first = true;
  do {
    node = node->next;
    ZuParamString& text = static_cast<ZuError*>(node)->text;
    const std::uint32_t n = text.bytes != nullptr ? text.length : 0;
    if (out->ensureRoom(n + 1) != ZU_OK) return ZU_ERROR;
    if (!first) out->concat(static_cast<unsigned char>(separator));
    out->concat(text.bytes, n);
    first = false;
  } while (node != last);
  return ZU_OK;
}

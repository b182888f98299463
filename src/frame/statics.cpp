// Every static object of the library, in construction order. Keeping them in
// one translation unit is what forces the order: C++ constructs objects of a
// unit in definition order and destroys them in reverse.
#include "frame/statics.h"

#include "errors/static_records.h"
#include "platform/platform.h"

void* moduleHandle = nullptr;

namespace zu {

bool libraryEntry(void* instance, std::uint32_t /*reason*/, void* /*reserved*/) {
  if (moduleHandle == nullptr) moduleHandle = instance;
  return true;
}

namespace {
constexpr std::uint32_t kProcessAttach = 1;
// Runs first, so the handle is known before the first semaphore can report.
struct EntryAtLoad {
  EntryAtLoad() { libraryEntry(platform::moduleSelf(), kProcessAttach, nullptr); }
};
EntryAtLoad entryAtLoad;
}  // namespace

}  // namespace zu

// Step 1: the pool, then the first semaphore, which configures the pool.
ZuSemaphoreInfo semaphorePool;
ZuSemaphore threadListSemaphore;
// Step 2: the shared error records.
namespace zu {
StaticError memoryError(kOutOfMemory, ZuError::kMemoryError);
StaticError nullError(0, ZuError::kNullError);
}  // namespace zu
// Step 3.
ZuSemaphore bvmSemaphore;
// Step 4: last, so a limit of one or two system semaphores leaves it a spin lock.
ZuSemaphore ramSemaphore;

// The loader's entry point. Built at load by library.cpp, before the first
// semaphore, so that a report at load already knows its module.
#include "frame/statics.h"

void* moduleHandle = nullptr;

namespace zu {

bool libraryEntry(void* instance, std::uint32_t /*reason*/, void* /*reserved*/) {
  if (moduleHandle == nullptr) moduleHandle = instance;
  return true;
}

}  // namespace zu

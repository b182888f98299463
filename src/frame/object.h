// Root of the class tree. Library objects live on the task's heap: new gives
// null when memory is out, and then no constructor runs. Nothing throws.
#ifndef ZUUTL_FRAME_OBJECT_H
#define ZUUTL_FRAME_OBJECT_H

#include <cstddef>
#include <cstdint>

#include "frame/api.h"

// The two heap functions that new and delete below need, declared again
// here as memory/ram.h declares them. The heap stands above the frame, yet
// the frame's own records are objects, and these operators must stay inline
// so that clients' subclasses get them too: the header cannot include the
// heap's, so it names just these two and the heap supplies them.
ZU_API void* ramAlloc(std::uint32_t size);
ZU_API void ramFree(const void* block);

class ZU_API ZuObject {
 public:
  ZuObject() = default;
  virtual ~ZuObject();
  virtual short compare(const ZuObject* other) const;

  // Sizes of library classes are far below the heap's limit, so the
  // narrowing to the 32-bit request is exact.
  static void* operator new(std::size_t size) noexcept {
    return ramAlloc(static_cast<std::uint32_t>(size));
  }
  static void* operator new[](std::size_t size) noexcept {
    return ramAlloc(static_cast<std::uint32_t>(size));
  }
  static void operator delete(void* block) noexcept { ramFree(block); }
  static void operator delete[](void* block) noexcept { ramFree(block); }
  // Placement forms, so an object can still be built inside other storage.
  static void* operator new(std::size_t, void* where) noexcept { return where; }
  static void operator delete(void*, void*) noexcept {}
};

#endif

// The task's heap: small blocks carved from small system blocks, and a thin
// road to the system for stand-alone 64 KiB and huge blocks. The two
// families do not mix. A failed allocation records itself; callers only
// return null or ZU_ERROR.
#ifndef ZUUTL_MEMORY_RAM_H
#define ZUUTL_MEMORY_RAM_H

#include <cstdint>

#include "frame/api.h"
#include "frame/status.h"

ZU_API void* ramAlloc(std::uint32_t size);
ZU_API void* ramAllocZ(std::uint32_t size);
ZU_API unsigned char* ramAllocStr(const unsigned char* text);
ZU_API unsigned char* ramAllocStr(const unsigned char* text, std::uint32_t length);
ZU_API void ramFree(const void* block);
ZU_API std::uint32_t ramSize(const void* block);
ZU_API ZuStatus ramResize(void** block, std::uint32_t size);
ZU_API ZuStatus ramResizeZ(void** block, std::uint32_t size);
ZU_API void* ramAlloc64K();
ZU_API void ramFree64K(const void* block);
ZU_API void* ramAllocHuge(std::uint32_t size);
ZU_API void ramFreeHuge(const void* block);
ZU_API unsigned short ramIsAllocOK();

#endif

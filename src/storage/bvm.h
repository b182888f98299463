// bvm: a per-task read cache of 8192-byte pages over files opened with
// bosFileOpen. Reads are served from cached frames; writes go straight to
// the file and refresh a frame already cached, so a frame is never newer
// than its file and bvmFlush only discards. One cache serves every file of
// the task; bvmInit and bvmTerm count its users.
#ifndef ZUUTL_STORAGE_BVM_H
#define ZUUTL_STORAGE_BVM_H

#include <cstdint>

#include "frame/api.h"
#include "frame/status.h"

enum VmHintType : std::uint32_t {
  VM_HINT_NORMAL = 0,
  // A miss may take a free frame but replaces no cached page.
  VM_HINT_NO_REPLACE = 1,
};

// `blocks` 64 KiB blocks of 8 frames at most (below 8192), taken as needed;
// a second call returns the task's cache and ignores its argument. Null
// when memory runs out.
ZU_API void* bvmInit(unsigned short blocks);
ZU_API void bvmTerm(void* cache);
// Up to `count` bytes at `offset`; fewer at the end of the file. The count
// read is stored only on success.
ZU_API ZuStatus bvmFileRead(void* cache, int file, std::int32_t offset, void* buffer, std::uint32_t count,
                            std::uint32_t* bytesRead, VmHintType hint);
ZU_API ZuStatus bvmFileWrite(void* cache, int file, std::int32_t offset, const void* buffer,
                             std::uint32_t count);
// Forgets every page of `file`; writes nothing.
ZU_API ZuStatus bvmFlush(void* cache, int file);
// bvmFlush, then bosFileClose; file 0 is nothing to close.
ZU_API ZuStatus bvmFileClose(void* cache, int file);

#endif

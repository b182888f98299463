// ZuSharedFile: a virtual file of 4096-byte blocks taken from a scratch
// store that several such files share. Its bytes lie scattered in the
// store; the blocks array maps the file's range, from 0, onto them. The
// file has no length of its own beyond its blocks. The store is not owned
// and must outlive the file. No lock: the store locks each of its calls,
// and one virtual file belongs to one thread at a time.
#ifndef ZUUTL_STORAGE_SHARED_FILE_H
#define ZUUTL_STORAGE_SHARED_FILE_H

#include <cstdint>

#include "containers/array.h"
#include "frame/api.h"
#include "frame/object.h"
#include "frame/status.h"
#include "storage/tmp_file.h"

class ZU_API ZuSharedFile : public ZuObject {
 public:
  explicit ZuSharedFile(ZuTmpFile* store) : tmpFile(store) {}
  ~ZuSharedFile() override;
  ZuSharedFile(const ZuSharedFile&) = delete;
  ZuSharedFile& operator=(const ZuSharedFile&) = delete;

  // Takes blocks as the range needs them, up to the block of `offset`
  // first when it lies further out.
  ZuStatus write(std::uint32_t offset, const void* source, std::uint32_t count);
  // Every byte must lie in a block the file has.
  ZuStatus read(std::uint32_t offset, void* destination, std::uint32_t count);
  // Gives every block back to the store.
  void truncate();

  ZuTmpFile* tmpFile;
  ZuArrayU32 blocks;  // entry n: the store offset of block n
};

#endif

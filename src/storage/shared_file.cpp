#include "storage/shared_file.h"

#include "errors/message.h"
#include "os/os_messages.h"

namespace {

constexpr unsigned kBlockShift = 12;
constexpr std::uint32_t kBlockSize = 1u << kBlockShift;  // 4096
constexpr std::uint32_t kBlockMask = kBlockSize - 1;

std::uint32_t blockAt(const ZuArrayU32& blocks, std::uint32_t index) {
  return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(blocks.at(static_cast<unsigned short>(index))));
}

// A block from the store, appended; on failure what was taken stays taken.
ZuStatus addBlock(ZuSharedFile& f) {
  std::uint32_t offset = 0;
  if (f.tmpFile->tmpFindSpace(kBlockSize, &offset) != ZU_OK) return ZU_ERROR;
  return f.blocks.append(reinterpret_cast<ZuObject*>(static_cast<std::uintptr_t>(offset)));
}

}  // namespace

ZuSharedFile::~ZuSharedFile() { truncate(); }

ZuStatus ZuSharedFile::write(std::uint32_t offset, const void* source, std::uint32_t count) {
  const auto* from = static_cast<const unsigned char*>(source);
  std::uint32_t block = offset >> kBlockShift;
  std::uint32_t within = offset & kBlockMask;
  while (count > 0) {
    while (block >= blocks.size()) {
      if (addBlock(*this) != ZU_OK) return ZU_ERROR;
    }
    const std::uint32_t piece = count < kBlockSize - within ? count : kBlockSize - within;
    if (tmpFile->tmpWrite(blockAt(blocks, block) + within, from, piece) != ZU_OK) return ZU_ERROR;
    from += piece;
    count -= piece;
    ++block;
    within = 0;
  }
  return ZU_OK;
}

ZuStatus ZuSharedFile::read(std::uint32_t offset, void* destination, std::uint32_t count) {
  if (count == 0) return ZU_OK;
  // Bytes the file never had are refused rather than read from elsewhere.
  if (((std::uint64_t{offset} + count - 1) >> kBlockShift) >= blocks.size()) {
    addMessageError(zu::msg::kInvalidParameter);
    return ZU_ERROR;
  }
  auto* to = static_cast<unsigned char*>(destination);
  std::uint32_t block = offset >> kBlockShift;
  std::uint32_t within = offset & kBlockMask;
  while (count > 0) {
    const std::uint32_t piece = count < kBlockSize - within ? count : kBlockSize - within;
    if (tmpFile->tmpRead(blockAt(blocks, block) + within, to, piece) != ZU_OK) return ZU_ERROR;
    to += piece;
    count -= piece;
    ++block;
    within = 0;
  }
  return ZU_OK;
}

void ZuSharedFile::truncate() {
  for (unsigned short i = 0; i < blocks.size(); ++i) tmpFile->tmpFreeSpace(blockAt(blocks, i), kBlockSize);
  blocks.shrink(0);
}

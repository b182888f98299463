#include "storage/tmp_file.h"

#include <bit>
#include <cstring>

#include "errors/keeper.h"
#include "frame/hold.h"
#include "memory/ram.h"
#include "os/file.h"
#include "strings/string.h"

using namespace zu::storage;

namespace {

// How a page is touched; it decides the dirty flags and whether to load.
enum class Use { kRead, kWrite, kWriteWholePage, kPoint, kPointForWrite };

constexpr std::uint32_t kCreateFlags = ZU_OPEN_WRITE | ZU_OPEN_TEMP;
constexpr std::uint32_t kCreateElsewhereFlags = ZU_OPEN_WRITE | ZU_OPEN_TEMP_OTHER_DRIVE;
constexpr std::uint32_t kReopenFlags = ZU_OPEN_WRITE;

// A power of two, at least one: a cache size that is not one is read as the
// largest that fits, so a careless size cannot send a page outside the cache.
std::uint32_t setCount(const ZuTmpFile& f) {
  const std::uint32_t sets = f.cacheSize >> kSetShift;
  return sets == 0 ? 1 : std::bit_floor(sets);
}

ZuStatus allocCache(ZuTmpFile& f) {
  const std::uint32_t sets = setCount(f);
  // Cleared, so that bytes never written read the same every time.
  f.cache = static_cast<unsigned char*>(ramAllocZ(sets * kSetSize));
  if (f.cache == nullptr) return ZU_ERROR;
  f.sets = static_cast<TmpSet*>(ramAllocZ(sets * static_cast<std::uint32_t>(sizeof(TmpSet))));
  if (f.sets == nullptr) {
    ramFree(f.cache);
    f.cache = nullptr;
    return ZU_ERROR;
  }
  return ZU_OK;
}

// Creates the file on first need, else reopens it by name when closed. A
// create that fails leaves no name behind, so the next store creates again.
ZuStatus openFile(unsigned char*& name, std::int32_t& handle, std::uint32_t createFlags) {
  int opened = 0;
  if (name == nullptr) {
    name = static_cast<unsigned char*>(ramAllocZ(kNameRoom));
    if (name == nullptr) return ZU_ERROR;
    if (bosFileOpen(name, createFlags, &opened) != ZU_OK) {
      if (name[0] != '\0') bosFileDelete(name);
      ramFree(name);
      name = nullptr;
      return ZU_ERROR;
    }
  } else if (handle == 0) {
    if (bosFileOpen(name, kReopenFlags, &opened) != ZU_OK) return ZU_ERROR;
  } else {
    return ZU_OK;
  }
  handle = opened;
  return ZU_OK;
}

std::int32_t filePlace(std::uint32_t page) { return static_cast<std::int32_t>(page << kPageShift); }

ZuStatus storePage(ZuTmpFile& f, const unsigned char* buffer, unsigned short page) {
  if (page > f.highPage) f.highPage = page;
  bool firstFailed = false;
  const bool toSecond = (f.secondName != nullptr && page >= f.firstPages) || page >= kFirstFilePages;
  if (!toSecond) {
    if (openFile(f.firstName, f.firstFile, kCreateFlags) != ZU_OK) return ZU_ERROR;
    if (bosFileWrite(f.firstFile, filePlace(page), buffer, kPageSize) == ZU_OK) {
      if (page + 1u > f.firstPages) f.firstPages = static_cast<unsigned short>(page + 1u);
      return ZU_OK;
    }
    // A page the first file already holds cannot move elsewhere.
    if (page < f.firstPages) return ZU_ERROR;
    ZuErrorKeeper::clearLastError();
    firstFailed = true;
  }
  if (openFile(f.secondName, f.secondFile, firstFailed ? kCreateElsewhereFlags : kCreateFlags) != ZU_OK) {
    return ZU_ERROR;
  }
  return bosFileWrite(f.secondFile, filePlace(page - f.firstPages), buffer, kPageSize);
}

ZuStatus loadPage(ZuTmpFile& f, unsigned char* buffer, unsigned short page) {
  // Pages above the highest ever stored have no disk image.
  if (page > f.highPage) return ZU_OK;
  const bool inFirst = page < f.firstPages;
  unsigned char*& name = inFirst ? f.firstName : f.secondName;
  std::int32_t& handle = inFirst ? f.firstFile : f.secondFile;
  // Never stored anywhere (a store of it failed): nothing to read.
  if (name == nullptr) return ZU_OK;
  if (handle == 0) {
    int opened = 0;
    if (bosFileOpen(name, kReopenFlags, &opened) != ZU_OK) return ZU_ERROR;
    handle = opened;
  }
  std::uint32_t done = 0;
  return bosFileRead(handle, filePlace(inFirst ? page : page - f.firstPages), buffer, kPageSize, &done);
}

// The page made resident in its set, or null with the reason on the list.
unsigned char* makeResident(ZuTmpFile& f, std::uint32_t offset, Use use) {
  const auto page = static_cast<unsigned short>(offset >> kPageShift);
  const std::uint32_t index = page & (setCount(f) - 1);
  TmpSet& set = f.sets[index];
  unsigned char* const wayA = f.cache + index * kSetSize;
  const bool dirties = use == Use::kWrite || use == Use::kWriteWholePage || use == Use::kPointForWrite;
  if (set.pageA == page) {
    set.flags = (set.flags & ~ZU_TMP_LAST_B) | (dirties ? ZU_TMP_DIRTY_A : 0);
    return wayA;
  }
  if (set.pageB == page) {
    set.flags |= ZU_TMP_LAST_B | (dirties ? ZU_TMP_DIRTY_B : 0);
    return wayA + kPageSize;
  }
  // A miss takes the way not used last.
  const bool victimB = (set.flags & ZU_TMP_LAST_B) == 0;
  const std::uint32_t dirtyBit = victimB ? ZU_TMP_DIRTY_B : ZU_TMP_DIRTY_A;
  unsigned char* const buffer = victimB ? wayA + kPageSize : wayA;
  unsigned short& held = victimB ? set.pageB : set.pageA;
  if ((set.flags & dirtyBit) != 0) {
    // A read gives up the victim's claim before the store, so a failed
    // store is not tried again; a write keeps it until its page is in.
    if (use == Use::kRead) set.flags &= ~dirtyBit;
    if (storePage(f, buffer, held) != ZU_OK) return nullptr;
  }
  set.flags = dirties ? (set.flags | dirtyBit) : (set.flags & ~dirtyBit);
  if (use != Use::kWriteWholePage && loadPage(f, buffer, page) != ZU_OK) return nullptr;
  held = page;
  set.flags = victimB ? (set.flags | ZU_TMP_LAST_B) : (set.flags & ~ZU_TMP_LAST_B);
  return buffer;
}

// Walks the extents from the lowest; adjacent ones become one, and one
// that ends at the top lowers the top.
void mergeSpace(ZuTmpFile& f) {
  ZuSortedArray& list = f.freeList;
  unsigned short i = 0;
  while (i + 1 < list.size()) {
    auto* here = static_cast<TmpSpace*>(list.at(i));
    const auto* next = static_cast<const TmpSpace*>(list.at(static_cast<unsigned short>(i + 1)));
    if (here->start + here->size == next->start) {
      here->size += next->size;
      list.deleteAtIndex(static_cast<unsigned short>(i + 1));
    } else {
      ++i;
    }
  }
  if (list.size() == 0) return;
  const unsigned short last = static_cast<unsigned short>(list.size() - 1);
  const auto* top = static_cast<const TmpSpace*>(list.at(last));
  if (top->start + top->size == f.nextOffset) {
    f.nextOffset = top->start;
    list.deleteAtIndex(last);
  }
}

void dropFile(unsigned char*& name, std::int32_t& handle) {
  if (name == nullptr) return;
  bosFileClose(handle);
  bosFileDelete(name);
  ramFree(name);
  name = nullptr;
}

}  // namespace

TmpSpace::~TmpSpace() = default;

short TmpSpace::compare(const ZuObject* other) const {
  const std::uint32_t theirs = static_cast<const TmpSpace*>(other)->start;
  return start < theirs ? -1 : (start == theirs ? 0 : 1);
}

ZuTmpFile::ZuTmpFile(unsigned short cacheSize)
    : cacheSize(cacheSize),
      highPage(0),
      nextOffset(1),
      firstFile(0),
      firstName(nullptr),
      firstPages(0),
      secondFile(0),
      secondName(nullptr),
      sets(nullptr),
      cache(nullptr) {}

ZuTmpFile::~ZuTmpFile() { tmpTruncate(); }

void ZuTmpFile::tmpTruncate() {
  zu::Hold hold(lock);
  ramFree(sets);
  ramFree(cache);
  freeList.deleteContents();
  freeList.shrink(0);
  dropFile(firstName, firstFile);
  dropFile(secondName, secondFile);
  nextOffset = 1;
  highPage = 0;
  firstFile = 0;
  firstPages = 0;
  secondFile = 0;
  sets = nullptr;
  cache = nullptr;
}

ZuStatus ZuTmpFile::tmpFindSpace(std::uint32_t size, std::uint32_t* offset) {
  zu::Hold hold(lock);
  if (sets == nullptr && allocCache(*this) != ZU_OK) return ZU_ERROR;
  if (size == kAllTheRest) {
    *offset = nextOffset;
    nextOffset = kAllTheRest;
    return ZU_OK;
  }
  for (unsigned short i = 0; i < freeList.size(); ++i) {
    auto* extent = static_cast<TmpSpace*>(freeList.at(i));
    if (extent->size < size) continue;
    *offset = extent->start;
    if (extent->size - size < kSmallestFreeExtent) {
      freeList.deleteAtIndex(i);
    } else {
      extent->start += size;
      extent->size -= size;
    }
    return ZU_OK;
  }
  *offset = nextOffset;
  nextOffset += size;
  return ZU_OK;
}

void ZuTmpFile::tmpFreeSpace(std::uint32_t offset, std::uint32_t size) {
  zu::Hold hold(lock);
  if (offset + size == nextOffset || size == kAllTheRest) {
    nextOffset = offset;
    mergeSpace(*this);
    return;
  }
  if (size < kSmallestFreeExtent) return;
  auto* extent = new TmpSpace(offset, size);
  if (extent == nullptr) {
    ZuErrorKeeper::clearLastError();
    return;
  }
  if (freeList.add(extent) != ZU_OK) {
    delete extent;
    ZuErrorKeeper::clearLastError();
    return;
  }
  mergeSpace(*this);
}

std::uint32_t ZuTmpFile::getContiguousSpace(std::uint32_t size) {
  zu::Hold hold(lock);
  std::uint32_t at = (nextOffset + 3u) & ~3u;
  if (kPageSize - (at & kPageMask) < size) at = (at + kPageMask) & ~kPageMask;
  nextOffset = at + size;
  return at;
}

ZuStatus ZuTmpFile::tmpWrite(std::uint32_t offset, const void* source, std::uint32_t count) {
  zu::Hold hold(lock);
  if (sets == nullptr && allocCache(*this) != ZU_OK) return ZU_ERROR;
  const auto* from = static_cast<const unsigned char*>(source);
  const std::uint32_t end = offset + count;
  for (std::uint32_t at = offset; count > 0;) {
    const std::uint32_t within = at & kPageMask;
    const std::uint32_t piece = count < kPageSize - within ? count : kPageSize - within;
    unsigned char* page = makeResident(*this, at, piece == kPageSize ? Use::kWriteWholePage : Use::kWrite);
    if (page == nullptr) return ZU_ERROR;
    std::memcpy(page + within, from, piece);
    from += piece;
    at += piece;
    count -= piece;
  }
  if (end > nextOffset) nextOffset = end;
  return ZU_OK;
}

ZuStatus ZuTmpFile::tmpRead(std::uint32_t offset, void* destination, std::uint32_t count) {
  zu::Hold hold(lock);
  // Nothing was written yet: the cleared cache answers.
  if (sets == nullptr && allocCache(*this) != ZU_OK) return ZU_ERROR;
  auto* to = static_cast<unsigned char*>(destination);
  for (std::uint32_t at = offset; count > 0;) {
    const std::uint32_t within = at & kPageMask;
    const std::uint32_t piece = count < kPageSize - within ? count : kPageSize - within;
    const unsigned char* page = makeResident(*this, at, Use::kRead);
    if (page == nullptr) return ZU_ERROR;
    std::memcpy(to, page + within, piece);
    to += piece;
    at += piece;
    count -= piece;
  }
  return ZU_OK;
}

ZuStatus ZuTmpFile::read(std::uint32_t offset, ZuString* target, std::uint32_t count) {
  if (target->ensureRoom(count) != ZU_OK) return ZU_ERROR;
  unsigned char* head = target->getCString(0);
  if (head == nullptr || tmpRead(offset, head, count) != ZU_OK) return ZU_ERROR;
  target->setBytes(head, count);
  return ZU_OK;
}

namespace {

// A transfer of any size as store transfers of at most kHugeChunk bytes,
// stopping at the first failure.
template <typename Bytes, typename Step>
ZuStatus inChunks(std::uint32_t offset, Bytes* bytes, std::uint32_t count, Step step) {
  while (count > 0) {
    const std::uint32_t chunk = count < kHugeChunk ? count : kHugeChunk;
    if (step(offset, bytes, chunk) != ZU_OK) return ZU_ERROR;
    offset += chunk;
    bytes += chunk;
    count -= chunk;
  }
  return ZU_OK;
}

}  // namespace

ZuStatus ZuTmpFile::readHuge(std::uint32_t offset, void* destination, std::uint32_t count) {
  return inChunks(offset, static_cast<unsigned char*>(destination), count,
                  [this](std::uint32_t at, unsigned char* to, std::uint32_t n) { return tmpRead(at, to, n); });
}

ZuStatus ZuTmpFile::writeHuge(std::uint32_t offset, const void* source, std::uint32_t count) {
  return inChunks(offset, static_cast<const unsigned char*>(source), count,
                  [this](std::uint32_t at, const unsigned char* from, std::uint32_t n) { return tmpWrite(at, from, n); });
}

ZuStatus ZuTmpFile::tmpPointer(std::uint32_t offset, void** pointer, unsigned short* available,
                               unsigned short forWrite) {
  zu::Hold hold(lock);
  if (sets == nullptr && allocCache(*this) != ZU_OK) return ZU_ERROR;
  unsigned char* page = makeResident(*this, offset, forWrite != 0 ? Use::kPointForWrite : Use::kPoint);
  if (page == nullptr) return ZU_ERROR;
  const std::uint32_t within = offset & kPageMask;
  *pointer = page + within;
  *available = static_cast<unsigned short>(kPageSize - within);
  return ZU_OK;
}

void ZuTmpFile::tmpLoseFocus() {
  zu::Hold hold(lock);
  bosFileClose(firstFile);
  bosFileClose(secondFile);
  firstFile = 0;
  secondFile = 0;
}

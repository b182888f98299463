#include "storage/bvm.h"

#include <cstring>

#include "errors/keeper.h"
#include "errors/message.h"
#include "frame/hold.h"
#include "frame/statics.h"
#include "frame/task.h"
#include "memory/ram.h"
#include "os/file.h"
#include "os/os_messages.h"
#include "storage/bvm_cache.h"

using namespace zu::bvm;

namespace {

constexpr std::uint32_t kMultipliers[16] = {13, 61, 29, 43, 17, 67, 31, 47, 19, 71, 37, 53, 23, 73, 41, 59};
constexpr unsigned kMultiplierMask = 15;
// A load refused with this row only means the page cannot be cached.
constexpr unsigned short kAccessDenied = 1508;

unsigned bucketOf(int file, unsigned short page) {
  const auto f = static_cast<std::uint32_t>(file);
  return (kMultipliers[f & kMultiplierMask] * (page + 1u) + f) % kBuckets;
}

void pushFree(BvmCache* c, unsigned short slot) {
  c->pages[slot].file = 0;
  c->pages[slot].next = c->freeHead;
  c->freeHead = slot;
}

// Takes `slot` off its bucket's chain and puts it on the free list.
void drop(BvmCache* c, unsigned short slot) {
  BvmPage& p = c->pages[slot];
  unsigned short* link = &c->buckets[bucketOf(p.file, p.page)];
  while (*link != slot) link = &c->pages[*link].next;
  *link = p.next;
  pushFree(c, slot);
}

void stamp(BvmCache* c, unsigned short slot) {
  c->pages[slot].stamp = c->clock;
  if (++c->clock == kClockWrap) {
    for (unsigned short s = 0; s < c->pageCount; ++s) c->pages[s].stamp >>= 1;
    c->clock >>= 1;
  }
}

// Drops the least recently used page: the lowest stamp, the lowest slot
// among equals, stamps halved on the way once the clock is old.
void replace(BvmCache* c) {
  const bool ageing = c->clock > kAgeingThreshold;
  unsigned short best = 0;
  unsigned short lowest = kEnd;
  for (unsigned short s = 0; s < c->pageCount; ++s) {
    if (ageing) c->pages[s].stamp >>= 1;
    if (c->pages[s].stamp < lowest) {
      lowest = c->pages[s].stamp;
      best = s;
    }
  }
  drop(c, best);
}

// The frame of (file, page), loading it when `loading` allows, or null when
// the page is not cached. ZU_ERROR only when memory or the file failed.
ZuStatus findPage(BvmCache* c, int file, unsigned short page, bool loading, VmHintType hint,
                  unsigned short* found) {
  const unsigned bucket = bucketOf(file, page);
  for (unsigned short s = c->buckets[bucket]; s != kEnd; s = c->pages[s].next) {
    if (c->pages[s].file == file && c->pages[s].page == page) {
      stamp(c, s);
      *found = s;
      return ZU_OK;
    }
  }
  *found = kEnd;
  if (!loading || c->maxPages == 0) return ZU_OK;
  if (c->freeHead == kEnd) {
    if (c->pageCount < c->maxPages) {
      void* block = ramAlloc64K();
      if (block == nullptr) return ZU_ERROR;
      c->blocks()[c->pageCount / kFramesPerBlock] = block;
      for (unsigned i = 0; i < kFramesPerBlock; ++i) pushFree(c, static_cast<unsigned short>(c->pageCount + i));
      c->pageCount = static_cast<unsigned short>(c->pageCount + kFramesPerBlock);
    } else if (hint == VM_HINT_NO_REPLACE) {
      return ZU_OK;
    } else {
      replace(c);
    }
  }
  const unsigned short slot = c->freeHead;
  std::uint32_t got = 0;
  const auto at = static_cast<std::int32_t>(static_cast<std::uint32_t>(page) << kPageShift);
  if (bosFileRead(file, at, c->frame(slot), kPageBytes, &got) != ZU_OK) {
    if (ZuErrorKeeper::getLastErrorNumber() != kAccessDenied) return ZU_ERROR;
    ZuErrorKeeper::clearLastError();
    return ZU_OK;
  }
  BvmPage& p = c->pages[slot];
  c->freeHead = p.next;
  p.validBytes = static_cast<unsigned short>(got);
  p.file = file;
  p.page = page;
  p.next = c->buckets[bucket];
  c->buckets[bucket] = slot;
  stamp(c, slot);
  *found = slot;
  return ZU_OK;
}

// Offsets are not negative; -1 means "where the file stands" to the file
// layer and nothing here.
bool refuseOffset(std::int32_t offset) {
  if (offset >= 0) return false;
  addMessageError(zu::msg::kInvalidParameter);
  return true;
}

}  // namespace

void* bvmInit(unsigned short blocks) {
  zu::Hold held(bvmSemaphore);
  auto* c = static_cast<BvmCache*>(mdsGetPerTaskData(TASK_DATA_BVM_CACHE));
  if (c != nullptr) {
    ++c->refCount;
    return c;
  }
  // Beyond 8191 blocks slot numbers would reach the end mark.
  if (blocks > kMaxBlocks) blocks = kMaxBlocks;
  c = static_cast<BvmCache*>(ramAllocZ(static_cast<std::uint32_t>(sizeof(BvmCache) + blocks * sizeof(void*))));
  if (c == nullptr) return nullptr;
  c->freeHead = kEnd;
  std::memset(c->buckets, 0xFF, sizeof c->buckets);
  c->maxPages = static_cast<unsigned short>(blocks * kFramesPerBlock);
  c->pages = static_cast<BvmPage*>(ramAlloc(static_cast<std::uint32_t>(c->maxPages * sizeof(BvmPage))));
  if (c->pages == nullptr && c->maxPages != 0) {
    ramFree(c);
    return nullptr;
  }
  c->refCount = 1;
  mdsSetPerTaskData(TASK_DATA_BVM_CACHE, c);
  return c;
}

void bvmTerm(void* cache) {
  auto* c = static_cast<BvmCache*>(cache);
  if (c == nullptr) return;
  zu::Hold held(bvmSemaphore);
  if (--c->refCount != 0) return;
  for (unsigned b = 0; b < c->pageCount / kFramesPerBlock; ++b) ramFree64K(c->blocks()[b]);
  ramFree(c->pages);
  ramFree(c);
  mdsSetPerTaskData(TASK_DATA_BVM_CACHE, nullptr);
}

ZuStatus bvmFileRead(void* cache, int file, std::int32_t offset, void* buffer, std::uint32_t count,
                     std::uint32_t* bytesRead, VmHintType hint) {
  if (refuseOffset(offset)) return ZU_ERROR;
  auto* c = static_cast<BvmCache*>(cache);
  auto* to = static_cast<unsigned char*>(buffer);
  auto at = static_cast<std::uint32_t>(offset);
  std::uint32_t total = 0;
  zu::Hold held(c->lock);
  for (;;) {
    unsigned short slot = kEnd;
    // Past the pages a 16-bit number reaches, reads go to the file.
    if ((at >> kPageShift) < kPageLimit &&
        findPage(c, file, static_cast<unsigned short>(at >> kPageShift), true, hint, &slot) != ZU_OK) {
      return ZU_ERROR;
    }
    const std::uint32_t inPage = at & kPageMask;
    const std::uint32_t chunk = count < kPageBytes - inPage ? count : kPageBytes - inPage;
    std::uint32_t got = chunk;
    if (slot != kEnd && inPage + chunk <= c->pages[slot].validBytes) {
      std::memcpy(to, c->frame(slot) + inPage, chunk);
    } else if (bosFileRead(file, static_cast<std::int32_t>(at), to, chunk, &got) != ZU_OK) {
      return ZU_ERROR;
    }
    total += got;
    count -= got;
    if (count == 0 || got < chunk) break;
    at += got;
    to += got;
  }
  *bytesRead = total;
  return ZU_OK;
}

ZuStatus bvmFileWrite(void* cache, int file, std::int32_t offset, const void* buffer, std::uint32_t count) {
  if (refuseOffset(offset)) return ZU_ERROR;
  auto* c = static_cast<BvmCache*>(cache);
  zu::Hold held(c->lock);
  if (bosFileWrite(file, offset, buffer, count) != ZU_OK) return ZU_ERROR;
  const auto* from = static_cast<const unsigned char*>(buffer);
  auto at = static_cast<std::uint32_t>(offset);
  while (count != 0 && (at >> kPageShift) < kPageLimit) {
    const std::uint32_t inPage = at & kPageMask;
    const std::uint32_t part = count < kPageBytes - inPage ? count : kPageBytes - inPage;
    unsigned short slot = kEnd;
    findPage(c, file, static_cast<unsigned short>(at >> kPageShift), false, VM_HINT_NORMAL, &slot);
    if (slot != kEnd) {
      BvmPage& p = c->pages[slot];
      std::memcpy(c->frame(slot) + inPage, from, part);
      // The frame is valid up to the end of the part only if the part
      // joins what is valid: bytes in a gap were never read from the file.
      if (inPage <= p.validBytes && inPage + part > p.validBytes) {
        p.validBytes = static_cast<unsigned short>(inPage + part);
      }
    }
    at += part;
    from += part;
    count -= part;
  }
  return ZU_OK;
}

ZuStatus bvmFlush(void* cache, int file) {
  auto* c = static_cast<BvmCache*>(cache);
  // Free slots carry file 0: there is nothing of it to forget.
  if (file == 0) return ZU_OK;
  zu::Hold held(c->lock);
  for (unsigned short s = 0; s < c->pageCount; ++s) {
    if (c->pages[s].file == file) drop(c, s);
  }
  return ZU_OK;
}

ZuStatus bvmFileClose(void* cache, int file) {
  if (file == 0) return ZU_OK;
  bvmFlush(cache, file);
  return bosFileClose(file);
}

#include "memory/segment_map.h"

#include <cstring>

#include "platform/platform.h"

namespace zu::heap {
namespace {

using platform::sys;

constexpr std::uint32_t kFewestEntries = 64;

std::uintptr_t first(const RamSegment* s) { return reinterpret_cast<std::uintptr_t>(s); }

}  // namespace

// At most this many granules, wherever the segment lies.
std::uint32_t SegmentMap::granulesOf(const RamSegment* s) { return (s->size >> kGranuleBits) + 2; }

void SegmentMap::put(std::uint32_t g, RamSegment* s, std::uint32_t size) {
  std::uint32_t i = home(g);
  while (entries_[i].segment != nullptr) i = (i + 1) & mask_;
  entries_[i] = {s, size, g};
  ++count_;
}

// Takes the entry out and moves later entries of its probe run back, so
// that every entry stays reachable from its home.
void SegmentMap::erase(std::uint32_t g, RamSegment* s) {
  std::uint32_t i = home(g);
  while (entries_[i].granule != g || entries_[i].segment != s) i = (i + 1) & mask_;
  for (std::uint32_t j = (i + 1) & mask_; entries_[j].segment != nullptr; j = (j + 1) & mask_) {
    const std::uint32_t k = home(entries_[j].granule);
    // Entry j may fill the hole at i unless its home lies cyclically in (i, j].
    const bool homeBetween = i <= j ? (i < k && k <= j) : (i < k || k <= j);
    if (!homeBetween) {
      entries_[i] = entries_[j];
      i = j;
    }
  }
  entries_[i].segment = nullptr;
  --count_;
}

bool SegmentMap::resize(std::uint32_t capacity) {
  auto* entries = static_cast<Entry*>(sys.blockAlloc(capacity * sizeof(Entry)));
  if (entries == nullptr) return false;
  std::memset(static_cast<void*>(entries), 0, capacity * sizeof(Entry));
  Entry* old = entries_;
  const std::uint32_t oldCapacity = old != nullptr ? mask_ + 1 : 0;
  entries_ = entries;
  mask_ = capacity - 1;
  shift_ = 64;
  for (std::uint32_t c = capacity; c > 1; c /= 2) --shift_;
  count_ = 0;
  for (std::uint32_t i = 0; i < oldCapacity; ++i) {
    if (old[i].segment != nullptr) put(old[i].granule, old[i].segment, old[i].size);
  }
  if (old != nullptr) sys.blockFree(old);
  return true;
}

bool SegmentMap::add(RamSegment* s) {
  const std::uint64_t bound = bound_ + granulesOf(s);
  const std::uint32_t capacity = entries_ != nullptr ? mask_ + 1 : 0;
  if (2 * bound > capacity) {
    std::uint32_t grown = kFewestEntries;
    while (grown < 4 * bound) grown *= 2;
    if (!resize(grown)) return false;
  }
  bound_ = bound;
  const std::uintptr_t last = (first(s) + s->size - 1) >> kGranuleBits;
  for (std::uintptr_t g = first(s) >> kGranuleBits; g <= last; ++g) {
    put(static_cast<std::uint32_t>(g), s, s->size);
  }
  return true;
}

void SegmentMap::drop(RamSegment* s) {
  const std::uintptr_t last = (first(s) + s->size - 1) >> kGranuleBits;
  for (std::uintptr_t g = first(s) >> kGranuleBits; g <= last; ++g) {
    erase(static_cast<std::uint32_t>(g), s);
  }
  bound_ -= granulesOf(s);
  if (bound_ == 0) {
    sys.blockFree(entries_);
    entries_ = nullptr;
    mask_ = 0;
  }
}

}  // namespace zu::heap

#include "memory/segment_index.h"

#include <cstddef>
#include <cstring>

#include "platform/platform.h"

namespace zu::heap {
namespace {

using platform::sys;

constexpr std::uint32_t kFewestSlots = 64;
constexpr std::uintptr_t kLine = 64;

std::uint32_t wholeGroups(std::uint32_t entries) {
  return (entries + SegmentIndex::kGroup - 1) & ~(SegmentIndex::kGroup - 1);
}

#ifdef __SSE2__
// Row i keeps every lane of a group but lane i.
struct alignas(16) AllBut {
  std::uint8_t lanes[SegmentIndex::kGroup][SegmentIndex::kGroup];
  constexpr AllBut() : lanes() {
    for (std::uint32_t i = 0; i < SegmentIndex::kGroup; ++i) {
      for (std::uint32_t j = 0; j < SegmentIndex::kGroup; ++j) lanes[i][j] = i == j ? 0 : 0xFF;
    }
  }
};
constexpr AllBut kAllBut;

std::uint32_t largestBut(const std::uint8_t* group, std::uint32_t lane) {
  __m128i m = _mm_and_si128(_mm_load_si128(reinterpret_cast<const __m128i*>(group)),
                            _mm_load_si128(reinterpret_cast<const __m128i*>(kAllBut.lanes[lane])));
  m = _mm_max_epu8(m, _mm_srli_si128(m, 8));
  m = _mm_max_epu8(m, _mm_srli_si128(m, 4));
  m = _mm_max_epu8(m, _mm_srli_si128(m, 2));
  m = _mm_max_epu8(m, _mm_srli_si128(m, 1));
  return static_cast<std::uint32_t>(_mm_cvtsi128_si32(m)) & 0xFF;
}

// Each group on the path is read before its entry is written, and the
// largest of the rest of it does not wait for the level below: the new key
// goes up a level with one comparison. The parameters do not overlap, which
// keeps the offsets in registers across the byte stores.
void rewritePath(std::uint8_t* __restrict keys, const std::uint32_t* __restrict at,
                 std::uint32_t top, std::uint32_t pos, std::uint32_t value) {
  for (std::uint32_t l = 0; l < top; ++l, pos /= SegmentIndex::kGroup) {
    std::uint8_t* level = keys + at[l];
    const std::uint32_t others =
        largestBut(level + (pos & ~(SegmentIndex::kGroup - 1)), pos % SegmentIndex::kGroup);
    level[pos] = static_cast<std::uint8_t>(value);
    value = others > value ? others : value;
  }
  keys[at[top] + pos] = static_cast<std::uint8_t>(value);
}
#endif

}  // namespace

// Moves the nodes, in order, to the first slots of a table with a quarter
// more room than their number, so that appends run without renumbering for
// a while; more room would cost every search and change a level.
bool SegmentIndex::renumber() {
  const std::uint32_t wanted = count_ + 1 + (count_ + 1) / 4;
  std::uint32_t capacity = kFewestSlots;
  while (capacity < wanted) capacity *= 2;
  std::uint32_t at[kMaxLevels];
  std::uint32_t levels = 0;
  std::uint32_t keyBytes = 0;
  for (std::uint32_t entries = capacity;; entries = (entries + kGroup - 1) / kGroup) {
    at[levels++] = keyBytes;
    if (entries <= kTop) {
      keyBytes += kTop;
      break;
    }
    keyBytes += wholeGroups(entries);
  }
  const std::size_t nodeBytes = capacity * sizeof(IndexNode*);
  void* block = sys.blockAlloc(nodeBytes + kLine + keyBytes);
  if (block == nullptr) return false;
  auto* nodes = static_cast<IndexNode**>(block);
  auto* keys = reinterpret_cast<std::uint8_t*>(
      (reinterpret_cast<std::uintptr_t>(block) + nodeBytes + kLine - 1) & ~(kLine - 1));
  std::memset(keys, 0, keyBytes);
  std::uint32_t k = 0;
  for (std::uint32_t old = 0; old < used_; ++old) {
    IndexNode* n = nodes_[old];
    if (n == nullptr) continue;
    n->slot = k;
    nodes[k] = n;
    keys[k] = keyOf(n->fit);
    ++k;
  }
  for (std::uint32_t l = 1; l < levels; ++l) {
    for (std::uint32_t j = 0; at[l - 1] + j * kGroup < at[l]; ++j) {
      keys[at[l] + j] = largestOf(keys + at[l - 1] + j * kGroup);
    }
  }
  if (block_ != nullptr) sys.blockFree(block_);
  block_ = block;
  nodes_ = nodes;
  keys_ = keys;
  std::memcpy(levelAt_, at, sizeof at);
  levels_ = levels;
  capacity_ = capacity;
  used_ = k;
  return true;
}

// Every level is rewritten, without a test for where the change stops.
void SegmentIndex::setKey(std::uint32_t slot, std::uint8_t key) {
#ifdef __SSE2__
  rewritePath(keys_, levelAt_, levels_ - 1, slot, key);
#else
  keys_[slot] = key;
  std::uint32_t pos = slot / kGroup;
  for (std::uint32_t l = 1; l < levels_; ++l, pos /= kGroup) {
    keys_[levelAt_[l] + pos] = largestOf(keys_ + levelAt_[l - 1] + pos * kGroup);
  }
#endif
}

std::uint32_t SegmentIndex::firstFrom(std::uint32_t from, std::uint32_t k) const {
  // Slots from `from` up to entry pos of level l hold no key of k or more.
  std::uint32_t pos = from;
  std::uint32_t l = 0;
  for (;;) {
    // The rest of pos's group; at the top, of the whole level.
    const bool top = l + 1 == levels_;
    const std::uint32_t end = levelEnd(l);
    std::uint32_t hits = 0;
    while (hits == 0 && levelAt_[l] + pos < end) {
      hits = atLeast(keys_ + levelAt_[l] + (pos & ~(kGroup - 1)), k) >> (pos % kGroup);
      if (hits != 0) {
        pos += static_cast<std::uint32_t>(__builtin_ctz(hits));
      } else if (top) {
        pos = (pos & ~(kGroup - 1)) + kGroup;
      } else {
        break;
      }
    }
    if (hits != 0) break;
    if (top) return used_;
    pos = pos / kGroup + 1;
    ++l;
  }
  for (; l > 0; --l) {
    const std::uint32_t hits = atLeast(keys_ + levelAt_[l - 1] + pos * kGroup, k);
    pos = pos * kGroup + static_cast<std::uint32_t>(__builtin_ctz(hits));
  }
  return pos;
}

// Keys of 255 stand for any fit from 255 granules up: the fit itself decides.
IndexNode* SegmentIndex::firstLarge(std::uint32_t need) const {
  for (std::uint32_t slot = 0; levels_ != 0 && slot < used_; ++slot) {
    slot = firstFrom(slot, kOpenKey);
    if (slot >= used_) break;
    if (nodes_[slot]->fit >= need) return nodes_[slot];
  }
  return nullptr;
}

bool SegmentIndex::append(IndexNode* node) {
  if (used_ == capacity_ && !renumber()) return false;
  node->slot = used_++;
  nodes_[node->slot] = node;
  setKey(node->slot, keyOf(node->fit));
  ++count_;
  return true;
}

void SegmentIndex::remove(IndexNode* node) {
  nodes_[node->slot] = nullptr;
  setKey(node->slot, 0);
  if (--count_ == 0) {
    // An empty heap holds nothing, the slots included.
    sys.blockFree(block_);
    block_ = nullptr;
    nodes_ = nullptr;
    keys_ = nullptr;
    capacity_ = used_ = levels_ = 0;
  }
}

bool SegmentIndex::summariesHold() const {
  if (levels_ == 0) return count_ == 0;
  for (std::uint32_t k = 0; k < capacity_; ++k) {
    const IndexNode* n = k < used_ ? nodes_[k] : nullptr;
    if (keys_[k] != (n != nullptr ? keyOf(n->fit) : 0)) return false;
    if (n != nullptr && n->slot != k) return false;
  }
  for (std::uint32_t l = 1; l < levels_; ++l) {
    const std::uint32_t end = levelEnd(l);
    for (std::uint32_t j = 0; levelAt_[l] + j < end; ++j) {
      const std::uint8_t want = levelAt_[l - 1] + j * kGroup < levelAt_[l]
                                    ? largestOf(keys_ + levelAt_[l - 1] + j * kGroup)
                                    : 0;
      if (keys_[levelAt_[l] + j] != want) return false;
    }
  }
  return true;
}

}  // namespace zu::heap

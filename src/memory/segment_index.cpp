#include "memory/segment_index.h"

#include <cstddef>
#include <cstring>

#include "platform/platform.h"

namespace zu::heap {
namespace {

using platform::sys;

constexpr std::uint32_t kFewestSlots = 64;
constexpr std::uintptr_t kLine = 64;

std::uint8_t larger(std::uint8_t a, std::uint8_t b) { return a > b ? a : b; }

}  // namespace

// Moves the nodes, in order, to the first slots of a table with a quarter
// more room than their number, so that appends run without renumbering for
// a while; more room would cost every search and change a level.
bool SegmentIndex::renumber() {
  const std::uint32_t wanted = count_ + 1 + (count_ + 1) / 4;
  std::uint32_t capacity = kFewestSlots;
  while (capacity < wanted) capacity *= 2;
  const std::size_t nodeBytes = capacity * sizeof(IndexNode*);
  void* block = sys.blockAlloc(nodeBytes + kLine + 2 * capacity);
  if (block == nullptr) return false;
  auto* nodes = static_cast<IndexNode**>(block);
  auto* keys = reinterpret_cast<std::uint8_t*>(
      (reinterpret_cast<std::uintptr_t>(block) + nodeBytes + kLine - 1) & ~(kLine - 1));
  std::memset(keys, 0, 2 * capacity);
  std::uint32_t k = 0;
  for (std::uint32_t old = 0; old < used_; ++old) {
    IndexNode* n = nodes_[old];
    if (n == nullptr) continue;
    n->slot = k;
    nodes[k] = n;
    keys[capacity + k] = keyOf(n->fit);
    ++k;
  }
  for (std::uint32_t i = capacity - 1; i >= 1; --i) keys[i] = larger(keys[2 * i], keys[2 * i + 1]);
  if (block_ != nullptr) sys.blockFree(block_);
  block_ = block;
  nodes_ = nodes;
  keys_ = keys;
  capacity_ = capacity;
  depth_ = static_cast<std::uint32_t>(__builtin_ctz(capacity));
  used_ = k;
  return true;
}

// Every level is rewritten, without a test for where the change stops: the
// siblings' loads are then independent of each other and nothing mispredicts.
void SegmentIndex::climb(std::uint32_t leaf) {
  // Locals: a byte written through keys_ could otherwise be this object.
  std::uint8_t* const keys = keys_;
  std::size_t i = leaf;
  std::uint8_t best = keys[i];
  // Two levels at a turn of the loop, then the odd one; depth_ is at least 6.
  std::uint32_t left = depth_;
  for (; left >= 2; left -= 2) {
    best = larger(best, keys[i ^ 1]);
    keys[i / 2] = best;
    best = larger(best, keys[(i / 2) ^ 1]);
    keys[i / 4] = best;
    i /= 4;
  }
  if (left != 0) keys[1] = larger(best, keys[i ^ 1]);
}

bool SegmentIndex::append(IndexNode* node) {
  if (used_ == capacity_ && !renumber()) return false;
  node->slot = used_++;
  nodes_[node->slot] = node;
  keys_[capacity_ + node->slot] = keyOf(node->fit);
  climb(capacity_ + node->slot);
  ++count_;
  return true;
}

void SegmentIndex::remove(IndexNode* node) {
  nodes_[node->slot] = nullptr;
  keys_[capacity_ + node->slot] = 0;
  climb(capacity_ + node->slot);
  if (--count_ == 0) {
    // An empty heap holds nothing, the slots included.
    sys.blockFree(block_);
    block_ = nullptr;
    nodes_ = nullptr;
    keys_ = nullptr;
    capacity_ = used_ = depth_ = 0;
  }
}

std::uint32_t SegmentIndex::firstFrom(std::uint32_t from, std::uint32_t k) const {
  std::uint32_t i = capacity_ + from;
  if (keys_[i] < k) {
    // Up to the first left child whose right sibling holds a key of k.
    for (;; i /= 2) {
      if (i == 1) return used_;
      if ((i & 1) == 0 && keys_[i + 1] >= k) break;
    }
    for (++i; i < capacity_;) {
      i *= 2;
      if (keys_[i] < k) ++i;
    }
  }
  return i - capacity_;
}

// A key of 255 stands for any fit from 255 granules up: the fit decides.
IndexNode* SegmentIndex::firstLarge(std::uint32_t need) const {
  for (std::uint32_t slot = 0; slot < used_; ++slot) {
    slot = firstFrom(slot, kOpenKey);
    if (slot < used_ && nodes_[slot]->fit >= need) return nodes_[slot];
  }
  return nullptr;
}

bool SegmentIndex::summariesHold() const {
  for (std::uint32_t k = 0; k < capacity_; ++k) {
    const IndexNode* n = k < used_ ? nodes_[k] : nullptr;
    if (keys_[capacity_ + k] != (n != nullptr ? keyOf(n->fit) : 0)) return false;
    if (n != nullptr && n->slot != k) return false;
  }
  for (std::uint32_t i = 1; i < capacity_; ++i) {
    if (keys_[i] != larger(keys_[2 * i], keys_[2 * i + 1])) return false;
  }
  return true;
}

}  // namespace zu::heap

#include "memory/segment_index.h"

#include <cstddef>
#include <cstring>

#include "platform/platform.h"

namespace zu::heap {
namespace {

using platform::sys;

constexpr std::uint32_t kFewestSlots = 64;
constexpr std::uintptr_t kLine = 64;

std::uint32_t larger(std::uint32_t a, std::uint32_t b) { return a > b ? a : b; }

}  // namespace

// Moves the nodes, in order, to the first slots of a table with a quarter
// more room than their number, so that appends run without renumbering for
// a while; more room would cost every search and change a level.
bool SegmentIndex::renumber() {
  const std::uint32_t wanted = count_ + 1 + (count_ + 1) / 4;
  std::uint32_t capacity = kFewestSlots;
  while (capacity < wanted) capacity *= 2;
  const std::size_t nodeBytes = capacity * sizeof(IndexNode*);
  void* block = sys.blockAlloc(nodeBytes + kLine + 2 * capacity * sizeof(std::uint32_t));
  if (block == nullptr) return false;
  auto* nodes = static_cast<IndexNode**>(block);
  auto* fits = reinterpret_cast<std::uint32_t*>(
      (reinterpret_cast<std::uintptr_t>(block) + nodeBytes + kLine - 1) & ~(kLine - 1));
  std::memset(fits, 0, 2 * capacity * sizeof(std::uint32_t));
  std::uint32_t k = 0;
  for (std::uint32_t old = 0; old < used_; ++old) {
    IndexNode* n = nodes_[old];
    if (n == nullptr) continue;
    n->slot = k;
    nodes[k] = n;
    fits[capacity + k] = n->fit;
    ++k;
  }
  for (std::uint32_t i = capacity - 1; i >= 1; --i) fits[i] = larger(fits[2 * i], fits[2 * i + 1]);
  if (block_ != nullptr) sys.blockFree(block_);
  block_ = block;
  nodes_ = nodes;
  fits_ = fits;
  capacity_ = capacity;
  depth_ = static_cast<std::uint32_t>(__builtin_ctz(capacity));
  used_ = k;
  return true;
}

// Every level is rewritten, without a test for where the change stops: the
// siblings' loads are then independent of each other and nothing mispredicts.
void SegmentIndex::climb(std::uint32_t i) {
  std::uint32_t best = fits_[i];
  // Two levels at a turn of the loop, then the odd one; depth_ is at least 6.
  std::uint32_t left = depth_;
  for (; left >= 2; left -= 2) {
    best = larger(best, fits_[i ^ 1]);
    fits_[i / 2] = best;
    best = larger(best, fits_[(i / 2) ^ 1]);
    fits_[i / 4] = best;
    i /= 4;
  }
  if (left != 0) fits_[1] = larger(best, fits_[i ^ 1]);
}

bool SegmentIndex::append(IndexNode* node) {
  if (used_ == capacity_ && !renumber()) return false;
  node->slot = used_++;
  nodes_[node->slot] = node;
  fits_[capacity_ + node->slot] = node->fit;
  climb(capacity_ + node->slot);
  ++count_;
  return true;
}

void SegmentIndex::remove(IndexNode* node) {
  nodes_[node->slot] = nullptr;
  fits_[capacity_ + node->slot] = 0;
  climb(capacity_ + node->slot);
  if (--count_ == 0) {
    // An empty heap holds nothing, the slots included.
    sys.blockFree(block_);
    block_ = nullptr;
    nodes_ = nullptr;
    fits_ = nullptr;
    capacity_ = used_ = depth_ = 0;
  }
}

void SegmentIndex::setFit(IndexNode* node, std::uint32_t fit) {
  if (node->fit == fit) return;
  node->fit = fit;
  std::uint32_t leaf = capacity_ + node->slot;
  fits_[leaf] = fit;
  climb(leaf);
}

bool SegmentIndex::summariesHold() const {
  for (std::uint32_t k = 0; k < capacity_; ++k) {
    const IndexNode* n = k < used_ ? nodes_[k] : nullptr;
    if (fits_[capacity_ + k] != (n != nullptr ? n->fit : 0)) return false;
    if (n != nullptr && n->slot != k) return false;
  }
  for (std::uint32_t i = 1; i < capacity_; ++i) {
    if (fits_[i] != larger(fits_[2 * i], fits_[2 * i + 1])) return false;
  }
  return true;
}

}  // namespace zu::heap

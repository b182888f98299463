// An index beside the segment chain that makes the heap's per-call cost
// independent of the number of segments, without changing any result.
//
// Two treaps over the same nodes: one by address, which finds the segment
// holding a pointer, and one by creation order (the chain's order) with the
// largest `fit` of each subtree, which finds the first segment a search
// could serve. A node's `fit` is 0 when the segment's rover is null, the
// largest conceivable block when the segment may hold adjacent free blocks
// (its search would merge them), and otherwise an upper bound of its
// largest free block: a segment whose fit is below a request would fail
// that search without changing anything, so skipping it is exact.
#ifndef ZUUTL_MEMORY_SEGMENT_INDEX_H
#define ZUUTL_MEMORY_SEGMENT_INDEX_H

#include <cstdint>

namespace zu::heap {

// Invariants, under ramSemaphore: the node sits in the kIndexPrefix bytes
// in front of its segment. While the index is in use, subtreeFit is the
// largest fit in its order subtree, orderParent its parent there (null at
// the root), order grows along the chain, and a clean node's segment, its
// rover set, has no two adjacent free blocks and none above largest.
struct IndexNode {
  IndexNode* byAddress[2];
  IndexNode* byOrder[2];
  IndexNode* orderParent;  // so a change of fit climbs only as far as it matters
  std::uint64_t order;  // creation number: the chain's order
  std::uint32_t priority;
  std::uint32_t fit;
  std::uint32_t subtreeFit;  // largest fit in this node's order subtree
  // Kept by the heap: whether the segment is known to hold no two adjacent
  // free blocks, and then a bound on its largest free block.
  std::uint32_t largest;
  bool clean;
};

// Invariants, under ramSemaphore and while the heap uses the index: both
// trees hold the same nodes, one per segment of the chain, each a treap
// under the shared priority, keyed by address and by order. nextOrder_ is
// above every order handed out.
class SegmentIndex {
 public:
  // Appends at the end of the chain order.
  void append(IndexNode* node);
  void remove(IndexNode* node);
  void setFit(IndexNode* node, std::uint32_t fit);
  // The node with the greatest address not above `address`, or null.
  IndexNode* atOrBelow(const void* address) const;
  // The first node in chain order whose fit is at least `need`, or null.
  IndexNode* firstFit(std::uint32_t need) const;
  IndexNode* root() const { return byOrder_; }
  IndexNode* addressRoot() const { return byAddress_; }
  bool empty() const { return byOrder_ == nullptr; }

 private:
  IndexNode* byAddress_ = nullptr;
  IndexNode* byOrder_ = nullptr;
  std::uint64_t nextOrder_ = 1;
  std::uint32_t seed_ = 0x9E3779B9u;
};

}  // namespace zu::heap

#endif

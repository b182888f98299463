#include "memory/segment_index.h"

#include <cstddef>

namespace zu::heap {
namespace {

// Both trees are treaps under the same priority; they differ in the child
// links they use, the key they order by and whether they keep subtreeFit.
struct ByAddress {
  static IndexNode*& child(IndexNode* n, int side) { return n->byAddress[side]; }
  static bool less(const IndexNode* a, const IndexNode* b) {
    return reinterpret_cast<std::uintptr_t>(a) < reinterpret_cast<std::uintptr_t>(b);
  }
  static void refresh(IndexNode*) {}
};

struct ByOrder {
  static IndexNode*& child(IndexNode* n, int side) { return n->byOrder[side]; }
  static bool less(const IndexNode* a, const IndexNode* b) { return a->order < b->order; }
  static std::uint32_t largestBelow(const IndexNode* n) {
    std::uint32_t best = n->fit;
    for (const IndexNode* c : n->byOrder) {
      if (c != nullptr && c->subtreeFit > best) best = c->subtreeFit;
    }
    return best;
  }
  // Every change of shape refreshes the nodes whose children changed, so
  // this is also where the children learn their parent.
  static void refresh(IndexNode* n) {
    for (IndexNode* c : n->byOrder) {
      if (c != nullptr) c->orderParent = n;
    }
    n->subtreeFit = largestBelow(n);
  }
};

// Splits `t` into nodes ordered before `key` and the rest.
template <class Tree>
void split(IndexNode* t, const IndexNode* key, IndexNode** left, IndexNode** right) {
  if (t == nullptr) {
    *left = *right = nullptr;
  } else if (Tree::less(t, key)) {
    split<Tree>(Tree::child(t, 1), key, &Tree::child(t, 1), right);
    Tree::refresh(t);
    *left = t;
  } else {
    split<Tree>(Tree::child(t, 0), key, left, &Tree::child(t, 0));
    Tree::refresh(t);
    *right = t;
  }
}

// Joins two treaps where every node of `a` orders before every node of `b`.
template <class Tree>
IndexNode* merge(IndexNode* a, IndexNode* b) {
  if (a == nullptr) return b;
  if (b == nullptr) return a;
  if (a->priority > b->priority) {
    Tree::child(a, 1) = merge<Tree>(Tree::child(a, 1), b);
    Tree::refresh(a);
    return a;
  }
  Tree::child(b, 0) = merge<Tree>(a, Tree::child(b, 0));
  Tree::refresh(b);
  return b;
}

template <class Tree>
IndexNode* insert(IndexNode* root, IndexNode* node) {
  IndexNode *left, *right;
  split<Tree>(root, node, &left, &right);
  return merge<Tree>(merge<Tree>(left, node), right);
}

template <class Tree>
IndexNode* erase(IndexNode* t, IndexNode* node) {
  if (t == node) return merge<Tree>(Tree::child(t, 0), Tree::child(t, 1));
  int side = Tree::less(node, t) ? 0 : 1;
  Tree::child(t, side) = erase<Tree>(Tree::child(t, side), node);
  Tree::refresh(t);
  return t;
}

}  // namespace

void SegmentIndex::append(IndexNode* node) {
  seed_ ^= seed_ << 13;
  seed_ ^= seed_ >> 17;
  seed_ ^= seed_ << 5;
  node->byAddress[0] = node->byAddress[1] = nullptr;
  node->byOrder[0] = node->byOrder[1] = nullptr;
  node->orderParent = nullptr;
  node->order = nextOrder_++;
  node->priority = seed_;
  node->subtreeFit = node->fit;
  byAddress_ = insert<ByAddress>(byAddress_, node);
  byOrder_ = merge<ByOrder>(byOrder_, node);  // the newest is always last
  byOrder_->orderParent = nullptr;
}

void SegmentIndex::remove(IndexNode* node) {
  byAddress_ = erase<ByAddress>(byAddress_, node);
  byOrder_ = erase<ByOrder>(byOrder_, node);
  if (byOrder_ != nullptr) byOrder_->orderParent = nullptr;
}

void SegmentIndex::setFit(IndexNode* node, std::uint32_t fit) {
  if (node->fit == fit) return;
  node->fit = fit;
  // Climb while the largest fit of a subtree changes.
  for (IndexNode* n = node; n != nullptr; n = n->orderParent) {
    std::uint32_t best = ByOrder::largestBelow(n);
    if (best == n->subtreeFit) break;
    n->subtreeFit = best;
  }
}

IndexNode* SegmentIndex::atOrBelow(const void* address) const {
  IndexNode* best = nullptr;
  for (IndexNode* t = byAddress_; t != nullptr;) {
    if (reinterpret_cast<std::uintptr_t>(t) <= reinterpret_cast<std::uintptr_t>(address)) {
      best = t;
      t = t->byAddress[1];
    } else {
      t = t->byAddress[0];
    }
  }
  return best;
}

IndexNode* SegmentIndex::firstFit(std::uint32_t need) const {
  IndexNode* t = byOrder_;
  if (t == nullptr || t->subtreeFit < need) return nullptr;
  for (;;) {
    IndexNode* left = t->byOrder[0];
    if (left != nullptr && left->subtreeFit >= need) {
      t = left;
    } else if (t->fit >= need) {
      return t;
    } else {
      t = t->byOrder[1];  // its subtree must hold the fit
    }
  }
}

}  // namespace zu::heap

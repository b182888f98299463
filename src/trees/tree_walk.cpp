// Walks in key order. A step reads the node on top of the iterator's
// stacks and at worst one node a level; it changes nothing in the tree.
// In a positional tree the iterator's base follows every move down and up.
#include <cstring>

#include "trees/node_access.h"
#include "trees/tree.h"

using namespace zu::trees;

namespace {

// The built-in iterator for null; an iterator that never had stacks gets
// them now rather than fail later.
ZuStatus resolve(ZuTree& t, ZuTreeIterator*& it) {
  if (it == nullptr) it = &t.iterator;
  if (it->nodePath.capacity == 0 || it->indexPath.capacity == 0) return it->initialize(&t);
  return ZU_OK;
}

void deliver(ZuTree& t, ZuTreeNode* n, unsigned i, void* key, void* data, unsigned int* found,
             ZuTreeIterator* it) {
  if (key != nullptr) std::memcpy(key, keyAt(t, n, i), t.keyLength);
  if (data != nullptr && t.dataLength != 0) std::memcpy(data, dataAt(t, n, i), t.dataLength);
  *found = 1;
  it->onKey = 1;
}

ZuStatus nothing(unsigned int* found, ZuTreeIterator* it) {
  *found = 0;
  it->onKey = 0;
  return ZU_OK;
}

bool positional(const ZuTree& t) { return (t.flags & ZU_TREE_POSITIONAL) != 0; }

}  // namespace

ZuStatus ZuTree::getFirst(void* key, void* data, unsigned int* found, ZuTreeIterator* it) {
  return getFirstOrLast(key, data, found, it, 1);
}

ZuStatus ZuTree::getLast(void* key, void* data, unsigned int* found, ZuTreeIterator* it) {
  return getFirstOrLast(key, data, found, it, 0);
}

ZuStatus ZuTree::getFirstOrLast(void* key, void* data, unsigned int* found, ZuTreeIterator* it,
                                unsigned int first) {
  if (resolve(*this, it) != ZU_OK) return ZU_ERROR;
  if (keyCount == 0) return nothing(found, it);
  clearPath(*it);
  it->basePosition = 0;
  ZuTreeNode* n = nullptr;
  for (std::uint32_t current = root; current != 0;) {
    n = fetchNode(*this, current, false);
    if (n == nullptr) return ZU_ERROR;
    const unsigned index = first != 0 ? 0u : n->count - 1u;
    if (!push(it->nodePath, current) || !push(it->indexPath, index)) return ZU_ERROR;
    current = childAt(*this, n, index);
    if (current != 0 && first == 0 && positional(*this) && n->count >= 2) {
      it->basePosition += numberAt(*this, n, n->count - 2u);
    }
  }
  *found = 1;
  it->onKey = 1;
  if (first == 0) setTop(it->indexPath, top(it->indexPath) - 1);
  const std::uint32_t index = top(it->indexPath);
  if (!isMarked(*this, n, index)) {
    deliver(*this, n, index, key, data, found, it);
    return ZU_OK;
  }
  return first != 0 ? ZuTree::getNext(key, data, found, it) : ZuTree::getPrevious(key, data, found, it);
}

ZuStatus ZuTree::getNext(void* key, void* data, unsigned int* found, ZuTreeIterator* it) {
  if (resolve(*this, it) != ZU_OK) return ZU_ERROR;
  if (keyCount == 0) return nothing(found, it);
  for (;;) {
    // No position, or before the start: the first key is next.
    if (it->nodePath.count == 0 || top(it->indexPath) == kBeforeStart) {
      return ZuTree::getFirst(key, data, found, it);
    }
    ZuTreeNode* n = fetchNode(*this, top(it->nodePath), false);
    if (n == nullptr) return ZU_ERROR;
    std::uint32_t index = top(it->indexPath);
    const std::uint32_t last = n->count - 1u;
    if (it->onKey == 0) {
      if (it->nodePath.count == 1 && index >= last) return nothing(found, it);
      if (index < last && !isMarked(*this, n, index)) {
        deliver(*this, n, index, key, data, found, it);
        return ZU_OK;
      }
    }
    if (index < last) setTop(it->indexPath, ++index);
    *found = 1;
    it->onKey = 1;
    std::uint32_t child = childAt(*this, n, index);
    if (child != 0) {
      if (positional(*this) && index >= 1) it->basePosition += numberAt(*this, n, index - 1);
      do {
        if (!push(it->nodePath, child) || !push(it->indexPath, 0)) return ZU_ERROR;
        n = fetchNode(*this, child, false);
        if (n == nullptr) return ZU_ERROR;
        child = childAt(*this, n, 0);
      } while (child != 0);
      if (isMarked(*this, n, 0)) continue;
      deliver(*this, n, 0, key, data, found, it);
      return ZU_OK;
    }
    if (index < last) {
      if (isMarked(*this, n, index)) continue;
      deliver(*this, n, index, key, data, found, it);
      return ZU_OK;
    }
    // The leaf is used up: climb to the first level with a key to the right.
    bool climbed = false;
    while (it->nodePath.count > 1) {
      --it->nodePath.count;
      --it->indexPath.count;
      n = fetchNode(*this, top(it->nodePath), false);
      if (n == nullptr) return ZU_ERROR;
      index = top(it->indexPath);
      if (positional(*this) && index > 0 && index != kBeforeStart) {
        it->basePosition -= numberAt(*this, n, index - 1);
      }
      if (index < n->count - 1u) {
        climbed = true;
        break;
      }
    }
    if (!climbed) return nothing(found, it);
    if (isMarked(*this, n, index)) continue;
    deliver(*this, n, index, key, data, found, it);
    return ZU_OK;
  }
}

ZuStatus ZuTree::getPrevious(void* key, void* data, unsigned int* found, ZuTreeIterator* it) {
  if (resolve(*this, it) != ZU_OK) return ZU_ERROR;
  if (keyCount == 0) return nothing(found, it);
  for (;;) {
    if (it->nodePath.count == 0) return ZuTree::getLast(key, data, found, it);
    ZuTreeNode* n = fetchNode(*this, top(it->nodePath), false);
    if (n == nullptr) return ZU_ERROR;
    std::uint32_t index = top(it->indexPath);
    if (index == kBeforeStart) return nothing(found, it);
    if (it->nodePath.count == 1 && index >= n->count - 1u) return ZuTree::getLast(key, data, found, it);
    *found = 1;
    it->onKey = 1;
    std::uint32_t child = childAt(*this, n, index);
    if (child != 0) {
      if (positional(*this) && index > 0) it->basePosition += numberAt(*this, n, index - 1);
      for (;;) {
        n = fetchNode(*this, child, false);
        if (n == nullptr) return ZU_ERROR;
        const std::uint32_t lastChild = n->count - 1u;
        if (!push(it->nodePath, child) || !push(it->indexPath, lastChild)) return ZU_ERROR;
        child = childAt(*this, n, lastChild);
        if (child == 0) break;
        if (positional(*this) && n->count >= 2) it->basePosition += numberAt(*this, n, n->count - 2u);
      }
      index = top(it->indexPath) - 1;
      setTop(it->indexPath, index);
      if (isMarked(*this, n, index)) continue;
      deliver(*this, n, index, key, data, found, it);
      return ZU_OK;
    }
    if (index > 0) {
      setTop(it->indexPath, --index);
      if (isMarked(*this, n, index)) continue;
      deliver(*this, n, index, key, data, found, it);
      return ZU_OK;
    }
    // The leaf is used up: climb to the first level with a key to the left.
    bool climbed = false;
    while (it->nodePath.count > 1) {
      --it->nodePath.count;
      --it->indexPath.count;
      n = fetchNode(*this, top(it->nodePath), false);
      if (n == nullptr) return ZU_ERROR;
      index = top(it->indexPath);
      if (index > 0) {
        if (positional(*this)) it->basePosition -= numberAt(*this, n, index - 1);
        climbed = true;
        break;
      }
    }
    if (!climbed) {
      setTop(it->indexPath, kBeforeStart);
      return nothing(found, it);
    }
    setTop(it->indexPath, --index);
    if (isMarked(*this, n, index)) continue;
    deliver(*this, n, index, key, data, found, it);
    return ZU_OK;
  }
}

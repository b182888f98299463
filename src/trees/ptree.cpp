// ZuPTree: keys are positions relative to their node's base (the root's is
// 0; child i > 0 has the node's base plus key i - 1), so one changed
// separator moves a whole subtree. A shift is a search that changes the
// keys of the path on its way down.
#include <cstring>

#include "trees/node_access.h"
#include "trees/tree.h"

using namespace zu::trees;

namespace {

// Takes triad i (child i and key i) out of a node; child i + 1 takes the
// place of child i.
void removeTriad(const ZuTree& t, ZuTreeNode* n, unsigned i) {
  std::memmove(triadAt(t, n, i), triadAt(t, n, i + 1),
               static_cast<std::size_t>(n->count - i - 2) * t.triadSize + kChildSize);
  --n->count;
}

void addToKeys(const ZuTree& t, ZuTreeNode* n, unsigned from, std::uint32_t amount) {
  for (unsigned i = from; i + 1u < n->count; ++i) setNumber(t, n, i, numberAt(t, n, i) + amount);
}

void promote(ZuTree& t, ZuTreeNode* n, unsigned i, std::uint32_t base) {
  const std::uint32_t absolute = numberAt(t, n, i) + base;
  std::memcpy(t.promotedKey, &absolute, sizeof absolute);
  std::memcpy(t.promotedData, dataAt(t, n, i), t.dataLength + t.markerBytes);
}

}  // namespace

ZuPTree::ZuPTree(unsigned short dataLength)
    : ZuTree(sizeof(std::uint32_t), dataLength, treeU32Compare, 1), inserting(0), deleting(0), foldedEntry(0) {
  flags |= ZU_TREE_POSITIONAL;
}

ZuPTree::~ZuPTree() = default;

ZuStatus ZuPTree::treeSearch(const void* key, std::uint32_t* node, unsigned short* position, unsigned int* found) {
  std::uint32_t target = loadNumber(key);
  iterator.basePosition = 0;
  clearPath(iterator);
  depth = 0;
  const bool shifting = inserting != 0 || deleting != 0;
  std::uint32_t current = root;
  std::uint32_t last = 0;
  std::uint32_t separator = 0;
  unsigned short at = 0;
  while (current != 0) {
    target -= separator;
    iterator.basePosition += separator;
    ++depth;
    ZuTreeNode* n = fetchNode(*this, current, shifting);
    if (n == nullptr) return ZU_ERROR;
    const bool leaf = childAt(*this, n, 0) == 0;
    // At the node's base a key cannot move down. Marked triads there hold
    // nothing and leave a leaf that has other keys.
    if (deleting != 0 && target == 0 && leaf) {
      for (unsigned i = 0; n->count > 2 && i + 1u < n->count && numberAt(*this, n, i) == 0;) {
        if (isMarked(*this, n, i)) {
          removeTriad(*this, n, i);
        } else {
          ++i;
        }
      }
    }
    unsigned int hit = nodeSearch(n, &target, &at);
    if (!push(iterator.nodePath, current) || !push(iterator.indexPath, at)) return ZU_ERROR;
    last = current;
    if (inserting != 0) addToKeys(*this, n, at, 1);
    if (deleting != 0) {
      unsigned from = at;
      if (target == 0 && leaf) {
        // The entry being deleted, or a leaf's sole marked triad, stays.
        if (n->count >= 2 && numberAt(*this, n, 0) == 0) from = 1;
      } else if (target == 0) {
        // A separator at the base goes, with its left subtree, and its
        // right subtree takes their place. Left of it lies nothing live but
        // maybe, under a marked separator, the entry being deleted.
        while (n->count >= 2 && numberAt(*this, n, 0) == 0) {
          unsigned int gone = isMarked(*this, n, 0) ? 0 : 1;
          for (std::uint32_t below = childAt(*this, n, 0); gone == 0 && below != 0;) {
            ZuTreeNode* b = fetchNode(*this, below, false);
            if (b == nullptr) return ZU_ERROR;
            unsigned short place = 0;
            gone = nodeSearch(b, &target, &place);
            below = childAt(*this, b, place);
          }
          n = fetchNode(*this, current, true);
          if (n == nullptr) return ZU_ERROR;
          if (gone != 0) {
            --keyCount;
            foldedEntry = 1;
            hit = 0;
          }
          removeTriad(*this, n, 0);
        }
      }
      addToKeys(*this, n, from, 0xFFFFFFFFu);
    }
    if (hit != 0 && inserting == 0) {
      if (depth > maxDepth) maxDepth = depth;
      *found = 1;
      iterator.onKey = 1;
      *node = current;
      *position = at;
      return ZU_OK;
    }
    separator = at > 0 ? numberAt(*this, n, at - 1u) : 0;
    current = childAt(*this, n, at);
  }
  *found = 0;
  iterator.onKey = 0;
  *node = last;
  *position = at;
  return ZU_OK;
}

ZuStatus ZuPTree::split(std::uint32_t node, unsigned short position, std::uint32_t rightChild,
                        std::uint32_t newNode) {
  ZuTreeNode* old = fetchNode(*this, node, true);
  if (old == nullptr) return ZU_ERROR;
  ZuTreeNode* fresh = fetchNode(*this, newNode, true);
  if (fresh == nullptr) return ZU_ERROR;
  const unsigned short mid = maxChildren / 2;
  const std::uint32_t base = iterator.basePosition;
  const std::uint32_t incoming = loadNumber(keyBuffer);
  // The new node holds absolute positions until doDecKeys settles it.
  copyTriads(fresh, old, position > mid ? static_cast<unsigned short>(mid + 1) : mid);
  addToKeys(*this, fresh, 0, base);
  fresh->keysPending = 1;
  if (position > mid) {
    insertInNode(fresh, static_cast<unsigned short>(position - mid - 1), keyBuffer, dataBuffer, rightChild, 1);
    old->count = static_cast<unsigned short>(mid + 1);
    promote(*this, old, mid, base);
  } else if (position < mid) {
    old->count = mid;
    promote(*this, old, mid - 1u, base);
    const std::uint32_t relative = incoming - base;
    insertInNode(old, position, &relative, dataBuffer, rightChild, 1);
  } else {
    old->count = static_cast<unsigned short>(mid + 1);
    setChild(*this, fresh, 0, rightChild);
    std::memcpy(promotedKey, keyBuffer, keyLength);
    std::memcpy(promotedData, dataBuffer, dataLength + markerBytes);
    return ZU_OK;
  }
  return rightChild != 0 ? doDecKeys(rightChild, incoming) : ZU_OK;
}

ZuStatus ZuPTree::doDecKeys(std::uint32_t node, std::uint32_t amount) {
  while (node != 0) {
    ZuTreeNode* n = fetchNode(*this, node, true);
    if (n == nullptr) return ZU_ERROR;
    if (n->keysPending == 0) return ZU_OK;
    addToKeys(*this, n, 0, 0u - amount);
    n->keysPending = 0;
    node = childAt(*this, n, 0);
  }
  return ZU_OK;
}

ZuStatus ZuPTree::addAtPos(std::uint32_t position, const void* data) {
  inserting = 1;
  const ZuStatus status = add(&position, data, nullptr);
  inserting = 0;
  return status;
}

ZuStatus ZuPTree::addHoleAtPos(std::uint32_t position) {
  inserting = 1;
  std::uint32_t node = 0;
  unsigned short at = 0;
  unsigned int found = 0;
  const ZuStatus status = treeSearch(&position, &node, &at, &found);
  inserting = 0;
  return status;
}

ZuStatus ZuPTree::deleteKeyAtPos(std::uint32_t position, unsigned int* found) {
  deleting = 1;
  foldedEntry = 0;
  unsigned int hit = 0;
  const ZuStatus status = deleteKey(&position, &hit);
  deleting = 0;
  if (found != nullptr) *found = hit | foldedEntry;
  foldedEntry = 0;
  return status;
}

namespace {

// The walk delivers a position relative to the iterator's base.
ZuStatus absolute(ZuStatus status, void* key, const unsigned int* found, const ZuTreeIterator* it) {
  if (status == ZU_OK && *found != 0 && key != nullptr) {
    const std::uint32_t position = loadNumber(key) + it->basePosition;
    std::memcpy(key, &position, sizeof position);
  }
  return status;
}

}  // namespace

ZuStatus ZuPTree::getFirst(void* key, void* data, unsigned int* found, ZuTreeIterator* it) {
  if (it == nullptr) it = &iterator;
  return absolute(ZuTree::getFirst(key, data, found, it), key, found, it);
}

ZuStatus ZuPTree::getNext(void* key, void* data, unsigned int* found, ZuTreeIterator* it) {
  if (it == nullptr) it = &iterator;
  return absolute(ZuTree::getNext(key, data, found, it), key, found, it);
}

ZuStatus ZuPTree::getPrevious(void* key, void* data, unsigned int* found, ZuTreeIterator* it) {
  if (it == nullptr) it = &iterator;
  return absolute(ZuTree::getPrevious(key, data, found, it), key, found, it);
}

ZuStatus ZuPTree::getLast(void* key, void* data, unsigned int* found, ZuTreeIterator* it) {
  if (it == nullptr) it = &iterator;
  return absolute(ZuTree::getLast(key, data, found, it), key, found, it);
}

#include "trees/tree.h"

#include <cstring>
#include <initializer_list>

#include "errors/message.h"
#include "memory/ram.h"
#include "os/os_messages.h"
#include "trees/node_access.h"

using namespace zu::trees;

namespace {

short compareKeys(const ZuTree& t, const void* search, const void* stored) {
  if (t.compareFn != nullptr) return t.compareFn(search, stored, t.keyLength);
  const int order = std::memcmp(search, stored, t.keyLength);
  return static_cast<short>(order < 0 ? -1 : (order > 0 ? 1 : 0));
}

// Refuses what the node format cannot hold and a path deeper than the
// stacks; neither can happen within the store's size and the documented
// key and data lengths.
ZuStatus refuse() {
  addMessageError(zu::msg::kInvalidParameter);
  return ZU_ERROR;
}

void copyKeyAndData(const ZuTree& t, ZuTreeNode* n, unsigned i, const void* key, const void* data) {
  std::memcpy(keyAt(t, n, i), key, t.keyLength);
  if (t.dataLength == 0) return;
  if (data != nullptr) {
    std::memcpy(dataAt(t, n, i), data, t.dataLength);
  } else {
    std::memset(dataAt(t, n, i), 0, t.dataLength);
  }
}

ZuStatus allocScratch(ZuTree& t) {
  const std::uint32_t dataRoom = t.dataLength + t.markerBytes + 1u;
  t.keyBuffer = static_cast<unsigned char*>(ramAlloc(t.keyLength + 1u));
  t.dataBuffer = static_cast<unsigned char*>(ramAlloc(dataRoom));
  t.promotedKey = static_cast<unsigned char*>(ramAlloc(t.keyLength + 1u));
  t.promotedData = static_cast<unsigned char*>(ramAlloc(dataRoom));
  if (t.keyBuffer != nullptr && t.dataBuffer != nullptr && t.promotedKey != nullptr &&
      t.promotedData != nullptr && t.iterator.initialize(&t) == ZU_OK) {
    return ZU_OK;
  }
  for (unsigned char** buffer : {&t.keyBuffer, &t.dataBuffer, &t.promotedKey, &t.promotedData}) {
    ramFree(*buffer);
    *buffer = nullptr;
  }
  return ZU_ERROR;
}

}  // namespace

short treeU32Compare(const void* first, const void* second, unsigned short) {
  const std::uint32_t a = loadNumber(first);
  const std::uint32_t b = loadNumber(second);
  return static_cast<short>(a < b ? -1 : (a == b ? 0 : 1));
}

ZuTreeIterator::ZuTreeIterator() : tree(nullptr), basePosition(0), onKey(0) {}

ZuTreeIterator::~ZuTreeIterator() = default;

ZuStatus ZuTreeIterator::initialize(ZuTree* owner) {
  tree = owner;
  basePosition = 0;
  onKey = 0;
  if (nodePath.setInitialSize(kPathDepth) != ZU_OK || indexPath.setInitialSize(kPathDepth) != ZU_OK) {
    return ZU_ERROR;
  }
  return ZU_OK;
}

ZuTree::ZuTree(unsigned short keyLength, unsigned short dataLength, ZuTreeCompare compareFn,
               unsigned int markers)
    : keyLength(keyLength),
      dataLength(dataLength),
      compareFn(compareFn),
      flags(markers != 0 ? ZU_TREE_MARKERS : 0),
      markerBytes(markers != 0 ? 1 : 0),
      root(0),
      keyBuffer(nullptr),
      dataBuffer(nullptr),
      promotedKey(nullptr),
      promotedData(nullptr),
      keyCount(0),
      nodeCount(0),
      maxDepth(0),
      depth(0) {
  std::uint32_t size = keyLength + dataLength + kChildSize + markerBytes;
  size += size & 1u;
  size = (size + 3u) & ~3u;
  triadSize = static_cast<unsigned short>(size);
  const std::uint32_t fit = kTriadRoom / size + 1;
  maxChildren = static_cast<unsigned short>(fit < kMostChildren ? fit : kMostChildren);
  nodeSize = static_cast<unsigned short>((maxChildren - 1u) * size + kNodeOverhead);
  // Offset 0 means no node, so the first byte is taken.
  store.getContiguousSpace(1);
}

ZuTree::~ZuTree() {
  for (unsigned char* buffer : {keyBuffer, dataBuffer, promotedKey, promotedData}) ramFree(buffer);
}

unsigned int ZuTree::nodeSearch(ZuTreeNode* node, const void* key, unsigned short* position) {
  int low = 0;
  int high = node->count - 2;
  int mid = 0;
  short order = 0;
  while (low <= high) {
    mid = (low + high) / 2;
    order = compareKeys(*this, key, keyAt(*this, node, static_cast<unsigned>(mid)));
    if (order > 0) {
      low = mid + 1;
    } else if (order == 0 && !isMarked(*this, node, static_cast<unsigned>(mid))) {
      *position = static_cast<unsigned short>(mid);
      return 1;
    } else {
      // An equal deleted key counts as greater, so the search goes left.
      high = mid - 1;
    }
  }
  *position = static_cast<unsigned short>(mid + (order > 0 ? 1 : 0));
  return 0;
}

ZuStatus ZuTree::treeSearch(const void* key, std::uint32_t* node, unsigned short* position, unsigned int* found) {
  clearPath(iterator);
  depth = 0;
  std::uint32_t current = root;
  std::uint32_t last = 0;
  unsigned short at = 0;
  while (current != 0) {
    ++depth;
    ZuTreeNode* n = fetchNode(*this, current, false);
    if (n == nullptr) return ZU_ERROR;
    const unsigned int hit = nodeSearch(n, key, &at);
    if (!push(iterator.nodePath, current) || !push(iterator.indexPath, at)) return refuse();
    last = current;
    if (hit != 0) {
      if (depth > maxDepth) maxDepth = depth;
      *found = 1;
      iterator.onKey = 1;
      *node = current;
      *position = at;
      return ZU_OK;
    }
    current = childAt(*this, n, at);
  }
  *found = 0;
  iterator.onKey = 0;
  *node = last;
  *position = at;
  return ZU_OK;
}

ZuStatus ZuTree::makeNode(std::uint32_t* offset, const void* key, const void* data) {
  ++nodeCount;
  const std::uint32_t at = store.getContiguousSpace(nodeSize);
  ZuTreeNode* n = fetchNode(*this, at, true);
  if (n == nullptr) return ZU_ERROR;
  // All of it, so that fill bytes and unused triads never carry old bytes.
  std::memset(n, 0, nodeSize);
  n->self = at;
  if (key != nullptr) {
    n->count = 2;
    copyKeyAndData(*this, n, 0, key, data);
  }
  *offset = at;
  return ZU_OK;
}

void ZuTree::insertInNode(ZuTreeNode* node, unsigned short position, const void* key, const void* data,
                          std::uint32_t rightChild, unsigned int markerInData) {
  // Each key moves right with its data, marker and the child to its right.
  unsigned char* from = keyAt(*this, node, position);
  std::memmove(from + triadSize, from, static_cast<std::size_t>(node->count - position - 1) * triadSize);
  copyKeyAndData(*this, node, position, key, data);
  setChild(*this, node, position + 1u, rightChild);
  if (markerBytes != 0) {
    const bool marked = markerInData != 0 && static_cast<const unsigned char*>(data)[dataLength] == kMarked;
    *markerAt(*this, node, position) = marked ? kMarked : 0;
  }
  ++node->count;
}

void ZuTree::copyTriads(ZuTreeNode* destination, ZuTreeNode* source, unsigned short start) {
  const unsigned moved = maxChildren - start - 1u;
  std::memcpy(triadAt(*this, destination, 0), triadAt(*this, source, start),
              static_cast<std::size_t>(moved) * triadSize);
  setChild(*this, destination, moved, childAt(*this, source, maxChildren - 1u));
  destination->count = static_cast<unsigned short>(moved + 1);
}

ZuStatus ZuTree::split(std::uint32_t node, unsigned short position, std::uint32_t rightChild,
                       std::uint32_t newNode) {
  // The one place that holds two nodes: both stay resident under the
  // store's pointer rule, since nothing else is touched between them.
  ZuTreeNode* old = fetchNode(*this, node, true);
  if (old == nullptr) return ZU_ERROR;
  ZuTreeNode* fresh = fetchNode(*this, newNode, true);
  if (fresh == nullptr) return ZU_ERROR;
  const unsigned short mid = maxChildren / 2;
  const std::size_t dataRoom = dataLength + markerBytes;
  if (position < mid) {
    copyTriads(fresh, old, mid);
    old->count = mid;
    std::memcpy(promotedKey, keyAt(*this, old, mid - 1u), keyLength);
    std::memcpy(promotedData, dataAt(*this, old, mid - 1u), dataRoom);
    insertInNode(old, position, keyBuffer, dataBuffer, rightChild, 1);
  } else if (position == mid) {
    copyTriads(fresh, old, mid);
    old->count = static_cast<unsigned short>(mid + 1);
    setChild(*this, fresh, 0, rightChild);
    std::memcpy(promotedKey, keyBuffer, keyLength);
    std::memcpy(promotedData, dataBuffer, dataRoom);
  } else {
    copyTriads(fresh, old, static_cast<unsigned short>(mid + 1));
    old->count = static_cast<unsigned short>(mid + 1);
    std::memcpy(promotedKey, keyAt(*this, old, mid), keyLength);
    std::memcpy(promotedData, dataAt(*this, old, mid), dataRoom);
    insertInNode(fresh, static_cast<unsigned short>(position - mid - 1), keyBuffer, dataBuffer, rightChild, 1);
  }
  return ZU_OK;
}

ZuStatus ZuTree::doDecKeys(std::uint32_t, std::uint32_t) { return ZU_OK; }

ZuStatus ZuTree::insertWithSplit(std::uint32_t node, unsigned short position, const void* key, const void* data) {
  const bool positional = (flags & ZU_TREE_POSITIONAL) != 0;
  const std::size_t dataRoom = dataLength + markerBytes;
  std::memmove(keyBuffer, key, keyLength);
  // changeKey hands its data over in dataBuffer itself.
  if (data != nullptr) {
    std::memmove(dataBuffer, data, dataLength);
  } else {
    std::memset(dataBuffer, 0, dataLength);
  }
  if (markerBytes != 0) dataBuffer[dataLength] = 0;
  std::uint32_t right = 0;
  int level = iterator.nodePath.count - 1;
  std::uint32_t current = node;
  ZuTreeNode* n = fetchNode(*this, current, true);
  if (n == nullptr) return ZU_ERROR;
  while (level > 0 && n->count >= maxChildren) {
    std::uint32_t fresh = 0;
    if (makeNode(&fresh, nullptr, nullptr) != ZU_OK) return ZU_ERROR;
    if (split(current, position, right, fresh) != ZU_OK) return ZU_ERROR;
    std::memcpy(keyBuffer, promotedKey, keyLength);
    std::memcpy(dataBuffer, promotedData, dataRoom);
    right = fresh;
    --level;
    current = at(iterator.nodePath, static_cast<unsigned>(level));
    position = static_cast<unsigned short>(at(iterator.indexPath, static_cast<unsigned>(level)));
    n = fetchNode(*this, current, true);
    if (n == nullptr) return ZU_ERROR;
    // Keep the base that of the current node.
    if (positional && position >= 1) iterator.basePosition -= numberAt(*this, n, position - 1u);
  }
  if (n->count < maxChildren) {
    if (!positional) {
      insertInNode(n, position, keyBuffer, dataBuffer, right, 1);
      return ZU_OK;
    }
    const std::uint32_t promoted = loadNumber(keyBuffer);
    const std::uint32_t relative = promoted - iterator.basePosition;
    insertInNode(n, position, &relative, dataBuffer, right, 1);
    return doDecKeys(right, promoted);
  }
  // The full root: it splits, and a new root above takes the promoted key.
  std::uint32_t fresh = 0;
  if (makeNode(&fresh, nullptr, nullptr) != ZU_OK) return ZU_ERROR;
  if (split(current, position, right, fresh) != ZU_OK) return ZU_ERROR;
  std::uint32_t newRoot = 0;
  if (makeNode(&newRoot, promotedKey, promotedData) != ZU_OK) return ZU_ERROR;
  ZuTreeNode* top = fetchNode(*this, newRoot, true);
  if (top == nullptr) return ZU_ERROR;
  setChild(*this, top, 0, current);
  setChild(*this, top, 1, fresh);
  if (markerBytes != 0) *markerAt(*this, top, 0) = promotedData[dataLength] == kMarked ? kMarked : 0;
  root = newRoot;
  return positional ? doDecKeys(fresh, loadNumber(promotedKey)) : ZU_OK;
}

ZuStatus ZuTree::add(const void* key, const void* data, unsigned int* found) {
  if (maxChildren < kLeastChildren) return refuse();
  if (root == 0) {
    if (keyBuffer == nullptr && allocScratch(*this) != ZU_OK) return ZU_ERROR;
    std::uint32_t first = 0;
    if (makeNode(&first, key, data) != ZU_OK) return ZU_ERROR;
    root = first;
    ++keyCount;
    if (found != nullptr) *found = 0;
    return ZU_OK;
  }
  std::uint32_t node = 0;
  unsigned short position = 0;
  unsigned int hit = 0;
  if (treeSearch(key, &node, &position, &hit) != ZU_OK) return ZU_ERROR;
  if (found != nullptr) *found = hit;
  if (hit != 0) return ZU_OK;
  ++keyCount;
  ZuTreeNode* n = fetchNode(*this, node, true);
  if (n == nullptr) return ZU_ERROR;
  // A positional leaf stores the position relative to its base.
  std::uint32_t relative = 0;
  const void* stored = key;
  if ((flags & ZU_TREE_POSITIONAL) != 0) {
    relative = loadNumber(key) - iterator.basePosition;
    stored = &relative;
  }
  if (position < n->count - 1 && isMarked(*this, n, position)) {
    copyKeyAndData(*this, n, position, stored, data);
    *markerAt(*this, n, position) = 0;
  } else if (n->count >= maxChildren) {
    if (insertWithSplit(node, position, key, data) != ZU_OK) return ZU_ERROR;
  } else {
    insertInNode(n, position, stored, data, 0, 0);
  }
  clearPath(iterator);
  return ZU_OK;
}

ZuStatus ZuTree::doesExist(const void* key, unsigned int* found) {
  std::uint32_t node = 0;
  unsigned short position = 0;
  return treeSearch(key, &node, &position, found);
}

ZuStatus ZuTree::getData(const void* key, void* data, unsigned int* found) {
  std::uint32_t node = 0;
  unsigned short position = 0;
  unsigned int hit = 0;
  if (treeSearch(key, &node, &position, &hit) != ZU_OK) return ZU_ERROR;
  if (found != nullptr) *found = hit;
  if (hit == 0 || dataLength == 0 || data == nullptr) return ZU_OK;
  ZuTreeNode* n = fetchNode(*this, node, false);
  if (n == nullptr) return ZU_ERROR;
  std::memcpy(data, dataAt(*this, n, position), dataLength);
  return ZU_OK;
}

ZuStatus ZuTree::changeData(const void* key, const void* data) {
  std::uint32_t node = 0;
  unsigned short position = 0;
  unsigned int hit = 0;
  if (treeSearch(key, &node, &position, &hit) != ZU_OK) return ZU_ERROR;
  if (hit == 0 || dataLength == 0) return ZU_OK;
  ZuTreeNode* n = fetchNode(*this, node, true);
  if (n == nullptr) return ZU_ERROR;
  if (data != nullptr) {
    std::memcpy(dataAt(*this, n, position), data, dataLength);
  } else {
    std::memset(dataAt(*this, n, position), 0, dataLength);
  }
  return ZU_OK;
}

ZuStatus ZuTree::changeKey(const void* oldKey, const void* newKey) {
  // Without markers a key cannot stay behind as deleted.
  if (markerBytes == 0) return refuse();
  std::uint32_t node = 0;
  unsigned short position = 0;
  unsigned int hit = 0;
  if (treeSearch(oldKey, &node, &position, &hit) != ZU_OK) return ZU_ERROR;
  if (hit == 0) return ZU_OK;
  ZuTreeNode* n = fetchNode(*this, node, true);
  if (n == nullptr) return ZU_ERROR;
  *markerAt(*this, n, position) = kMarked;
  --keyCount;
  std::memcpy(dataBuffer, dataAt(*this, n, position), dataLength);
  unsigned int existed = 0;
  return add(newKey, dataBuffer, &existed);
}

ZuStatus ZuTree::deleteKey(const void* key, unsigned int* found) {
  if (markerBytes == 0) return refuse();
  std::uint32_t node = 0;
  unsigned short position = 0;
  unsigned int hit = 0;
  if (treeSearch(key, &node, &position, &hit) != ZU_OK) return ZU_ERROR;
  if (found != nullptr) *found = hit;
  if (hit == 0) return ZU_OK;
  ZuTreeNode* n = fetchNode(*this, node, true);
  if (n == nullptr) return ZU_ERROR;
  *markerAt(*this, n, position) = kMarked;
  --keyCount;
  // A leaf's last key, and any key of an interior node, stays as a marked
  // triad; otherwise the triads behind it close up.
  if (n->count <= 2 || childAt(*this, n, 0) != 0) return ZU_OK;
  std::memmove(triadAt(*this, n, position), triadAt(*this, n, position + 1u),
               static_cast<std::size_t>(n->count - position - 2) * triadSize + kChildSize);
  --n->count;
  return ZU_OK;
}

ZuStatus ZuTree::reset() {
  root = 0;
  keyCount = 0;
  nodeCount = 0;
  maxDepth = 0;
  depth = 0;
  clearPath(iterator);
  iterator.basePosition = 0;
  iterator.onKey = 0;
  store.tmpTruncate();
  store.getContiguousSpace(1);
  return ZU_OK;
}

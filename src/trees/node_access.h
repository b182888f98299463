// Reading and writing the fields of a node image, and the path stacks.
// Fields are copied, not cast, so no alignment is assumed of key or data.
#ifndef ZUUTL_TREES_NODE_ACCESS_H
#define ZUUTL_TREES_NODE_ACCESS_H

#include <cstdint>
#include <cstring>

#include "storage/tmp_pages.h"
#include "trees/tree.h"

namespace zu::trees {

inline constexpr std::uint32_t kNodeHeader = sizeof(ZuTreeNode);  // 8
inline constexpr std::uint32_t kChildSize = 4;
// Header and last child: the bytes of a node beside its full triads.
inline constexpr std::uint32_t kNodeOverhead = kNodeHeader + kChildSize;
inline constexpr std::uint32_t kTriadRoom = zu::storage::kPageSize - kNodeOverhead;  // 2036
inline constexpr unsigned short kMostChildren = 49;
inline constexpr unsigned short kLeastChildren = 3;
inline constexpr unsigned short kPathDepth = 32;
// An index of the path that stands before the first key.
inline constexpr std::uint32_t kBeforeStart = 0xFFFF;
inline constexpr unsigned char kMarked = 1;

static_assert(kNodeHeader == 8, "the node header is 8 bytes");

inline unsigned char* triadAt(const ZuTree& t, ZuTreeNode* n, unsigned i) {
  return reinterpret_cast<unsigned char*>(n) + kNodeHeader + i * t.triadSize;
}
inline std::uint32_t childAt(const ZuTree& t, ZuTreeNode* n, unsigned i) {
  std::uint32_t child;
  std::memcpy(&child, triadAt(t, n, i), kChildSize);
  return child;
}
inline void setChild(const ZuTree& t, ZuTreeNode* n, unsigned i, std::uint32_t child) {
  std::memcpy(triadAt(t, n, i), &child, kChildSize);
}
inline unsigned char* keyAt(const ZuTree& t, ZuTreeNode* n, unsigned i) { return triadAt(t, n, i) + kChildSize; }
inline unsigned char* dataAt(const ZuTree& t, ZuTreeNode* n, unsigned i) { return keyAt(t, n, i) + t.keyLength; }
inline unsigned char* markerAt(const ZuTree& t, ZuTreeNode* n, unsigned i) {
  return dataAt(t, n, i) + t.dataLength;
}
inline bool isMarked(const ZuTree& t, ZuTreeNode* n, unsigned i) {
  return t.markerBytes != 0 && *markerAt(t, n, i) == kMarked;
}
// Keys of a positional tree are 32-bit numbers.
inline std::uint32_t numberAt(const ZuTree& t, ZuTreeNode* n, unsigned i) {
  std::uint32_t value;
  std::memcpy(&value, keyAt(t, n, i), sizeof value);
  return value;
}
inline void setNumber(const ZuTree& t, ZuTreeNode* n, unsigned i, std::uint32_t value) {
  std::memcpy(keyAt(t, n, i), &value, sizeof value);
}
inline std::uint32_t loadNumber(const void* key) {
  std::uint32_t value;
  std::memcpy(&value, key, sizeof value);
  return value;
}

// A node of the store, for reading or for changing; null when the store
// failed, with its reason on the error list.
inline ZuTreeNode* fetchNode(ZuTree& t, std::uint32_t offset, bool forChange) {
  void* at = nullptr;
  unsigned short available = 0;
  if (t.store.tmpPointer(offset, &at, &available, forChange ? 1 : 0) != ZU_OK) return nullptr;
  return static_cast<ZuTreeNode*>(at);
}

// The path stacks: ZuArrayU32 slots used as a stack of fixed capacity.
inline std::uint32_t slotValue(ZuObject* slot) {
  return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(slot));
}
inline bool push(ZuArrayU32& stack, std::uint32_t value) {
  if (stack.count >= stack.capacity) return false;
  stack.items[stack.count++] = reinterpret_cast<ZuObject*>(static_cast<std::uintptr_t>(value));
  return true;
}
inline std::uint32_t top(const ZuArrayU32& stack) { return slotValue(stack.items[stack.count - 1]); }
inline void setTop(ZuArrayU32& stack, std::uint32_t value) {
  stack.items[stack.count - 1] = reinterpret_cast<ZuObject*>(static_cast<std::uintptr_t>(value));
}
inline std::uint32_t at(const ZuArrayU32& stack, unsigned level) { return slotValue(stack.items[level]); }
inline void clearPath(ZuTreeIterator& it) {
  it.nodePath.count = 0;
  it.indexPath.count = 0;
}

}  // namespace zu::trees

#endif

// ZuTree: a B-tree of unique fixed-length keys with fixed-length data, its
// nodes kept in a private scratch store so that it can outgrow memory.
// Deletion is lazy: a key leaves its leaf, or stays as a marked triad that
// searches pass as a separator and walks step over; nodes are never freed
// before reset. No lock: a tree belongs to one thread at a time.
//
// A node pointer lives only until the store's next page accesses, so the
// tree holds at most two nodes at once and keys in transit sit in its own
// scratch buffers.
//
// ZuPTree: a ZuTree used as a sparse array keyed by position, whose keys are
// relative to their node's base so that a shift touches one path only.
#ifndef ZUUTL_TREES_TREE_H
#define ZUUTL_TREES_TREE_H

#include <cstdint>

#include "containers/array.h"
#include "frame/api.h"
#include "frame/object.h"
#include "frame/status.h"
#include "storage/tmp_file.h"

// Bits of ZuTree::flags.
inline constexpr std::uint32_t ZU_TREE_MARKERS = 1;     // triads carry a delete marker
inline constexpr std::uint32_t ZU_TREE_POSITIONAL = 2;  // a ZuPTree

// (search key, stored key, key length): negative, 0 or positive as the
// search key sorts before, with or after the stored key.
typedef short (*ZuTreeCompare)(const void* searchKey, const void* storedKey, unsigned short keyLength);

// Keys as 32-bit unsigned numbers; the length is ignored.
ZU_API short treeU32Compare(const void* first, const void* second, unsigned short keyLength);

// The image of a node, at a multiple of 4 inside one page of the store. The
// triads follow the header: child, key, data and marker each, the last one
// holding only the child behind the last key.
struct ZuTreeNode {
  unsigned short count;        // children: keys + 1; 0 in a node made for a split
  unsigned short keysPending;  // positional trees: keys still absolute
  std::uint32_t self;          // the node's own offset
};

class ZuTree;

// A position in a tree: the path of node offsets from the root and the
// index taken in each. The stacks hold 32 entries and never grow.
class ZU_API ZuTreeIterator : public ZuObject {
 public:
  ZuTreeIterator();
  ~ZuTreeIterator() override;
  ZuStatus initialize(ZuTree* tree);

  ZuTree* tree;
  ZuArrayU32 nodePath;
  ZuArrayU32 indexPath;
  std::uint32_t basePosition;  // positional trees: base of the top node
  std::uint32_t onKey : 1;     // stands on a key found or delivered
};

class ZU_API ZuTree : public ZuObject {
 public:
  // `markers` 1 for a tree that supports deletion. Key length plus data
  // length at most 1012 (1011 with markers).
  ZuTree(unsigned short keyLength, unsigned short dataLength, ZuTreeCompare compareFn, unsigned int markers);
  ~ZuTree() override;
  ZuTree(const ZuTree&) = delete;
  ZuTree& operator=(const ZuTree&) = delete;

  // Adds the key unless it is there; an existing key keeps its data.
  ZuStatus add(const void* key, const void* data, unsigned int* found = nullptr);
  ZuStatus doesExist(const void* key, unsigned int* found);
  // `data` is written only when the key is found.
  ZuStatus getData(const void* key, void* data, unsigned int* found = nullptr);
  // An absent key is no failure and changes nothing.
  ZuStatus changeData(const void* key, const void* data);
  // Needs markers. An existing new key keeps its own data.
  ZuStatus changeKey(const void* oldKey, const void* newKey);
  // Needs markers.
  ZuStatus deleteKey(const void* key, unsigned int* found = nullptr);
  // Empty again; the store's files go.
  ZuStatus reset();

  // Walks in key order. Key and data out may be null; a null iterator is
  // the built-in one, which a search also positions.
  virtual ZuStatus getFirst(void* key, void* data, unsigned int* found,
                            ZuTreeIterator* iterator = nullptr);
  virtual ZuStatus getNext(void* key, void* data, unsigned int* found,
                            ZuTreeIterator* iterator = nullptr);
  virtual ZuStatus getPrevious(void* key, void* data, unsigned int* found,
                            ZuTreeIterator* iterator = nullptr);
  virtual ZuStatus getLast(void* key, void* data, unsigned int* found,
                            ZuTreeIterator* iterator = nullptr);

  unsigned short keyLength;
  unsigned short dataLength;
  ZuTreeCompare compareFn;
  std::uint32_t flags;
  unsigned short maxChildren;
  unsigned short triadSize;
  unsigned short nodeSize;
  unsigned short markerBytes;
  std::uint32_t root;
  ZuTmpFile store;
  ZuTreeIterator iterator;
  unsigned char* keyBuffer;
  unsigned char* dataBuffer;
  unsigned char* promotedKey;
  unsigned char* promotedData;
  std::uint32_t keyCount;
  unsigned short nodeCount;
  unsigned short maxDepth;
  unsigned short depth;

 protected:
  // Leaves the path from the root in the built-in iterator.
  virtual ZuStatus treeSearch(const void* key, std::uint32_t* node, unsigned short* position,
                              unsigned int* found);
  virtual ZuStatus split(std::uint32_t node, unsigned short position, std::uint32_t rightChild,
                         std::uint32_t newNode);
  virtual ZuStatus doDecKeys(std::uint32_t node, std::uint32_t amount);
  ZuStatus insertWithSplit(std::uint32_t node, unsigned short position, const void* key, const void* data);
  void insertInNode(ZuTreeNode* node, unsigned short position, const void* key, const void* data,
                    std::uint32_t rightChild, unsigned int markerInData);
  ZuStatus makeNode(std::uint32_t* offset, const void* key, const void* data);
  unsigned int nodeSearch(ZuTreeNode* node, const void* key, unsigned short* position);
  void copyTriads(ZuTreeNode* destination, ZuTreeNode* source, unsigned short start);
  ZuStatus getFirstOrLast(void* key, void* data, unsigned int* found, ZuTreeIterator* iterator,
                          unsigned int first);
};

class ZU_API ZuPTree : public ZuTree {
 public:
  explicit ZuPTree(unsigned short dataLength);
  ~ZuPTree() override;

  // Adds an entry at `position`, moving every entry at or behind it up one.
  ZuStatus addAtPos(std::uint32_t position, const void* data);
  // Moves every entry at or behind `position` up one.
  ZuStatus addHoleAtPos(std::uint32_t position);
  // Takes the entry at `position` away, if any, and moves every entry
  // behind it down one.
  ZuStatus deleteKeyAtPos(std::uint32_t position, unsigned int* found = nullptr);

  // The key out is required and receives the absolute position.
  ZuStatus getFirst(void* key, void* data, unsigned int* found,
                    ZuTreeIterator* iterator = nullptr) override;
  ZuStatus getNext(void* key, void* data, unsigned int* found,
                    ZuTreeIterator* iterator = nullptr) override;
  ZuStatus getPrevious(void* key, void* data, unsigned int* found,
                    ZuTreeIterator* iterator = nullptr) override;
  ZuStatus getLast(void* key, void* data, unsigned int* found,
                    ZuTreeIterator* iterator = nullptr) override;

  std::uint32_t inserting;
  std::uint32_t deleting;
  // Set by a shifting search that took the entry away itself: an entry at
  // a node's base that separates nothing from its left.
  std::uint32_t foldedEntry;

 protected:
  ZuStatus treeSearch(const void* key, std::uint32_t* node, unsigned short* position,
                      unsigned int* found) override;
  ZuStatus split(std::uint32_t node, unsigned short position, std::uint32_t rightChild,
                 std::uint32_t newNode) override;
  ZuStatus doDecKeys(std::uint32_t node, std::uint32_t amount) override;
};

#endif

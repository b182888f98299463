// An intrusive, singly linked, circular list with a built-in cursor. The list
// is held by its last node (last->next is the first), allocates nothing, and
// owns its nodes only in deleteNodes. No lock: whoever shares a list guards it.
#ifndef ZUUTL_CONTAINERS_LIST_H
#define ZUUTL_CONTAINERS_LIST_H

#include <cstdint>

#include "frame/api.h"
#include "frame/object.h"

// Invariants: while on a list, next is the following node (itself when
// alone); off every list it is null, or unset if never linked.
class ZU_API ZuNode : public ZuObject {
 public:
  ZuNode();  // leaves next unset: linking sets it
  ~ZuNode() override;

  ZuNode* next;  // null once unlinked
};

// Invariants: last is null exactly when nodeCount is 0; otherwise the nodes
// form one cycle of nodeCount links with last->next the first. current is
// null or a node on this list: unlinking the node under it clears it.
class ZU_API ZuList : public ZuObject {
 public:
  ZuList();  // empty, with no cursor position
  ~ZuList() override;  // leaves the nodes alone

  void insert(ZuNode* node);
  void append(ZuNode* node);
  // `node` must be on this list. Walks from the first node to its predecessor.
  void unlink(ZuNode* node);
  // Unlinks and deletes every node, first to last.
  void deleteNodes();

  ZuNode* getFirstNode();
  ZuNode* getLastNode();
  // Null once the cursor is null or on the last node: no wrap-around.
  ZuNode* getNextNode();

  ZuNode* removeFirstNode();
  ZuNode* removeLastNode();

  ZuNode* last;
  std::uint32_t nodeCount;
  ZuNode* current;
};

#endif

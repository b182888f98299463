#include "containers/list.h"

// The link is left as it is: linking sets it.
ZuNode::ZuNode() {}

ZuNode::~ZuNode() = default;

// The cursor has no position until getFirstNode or getLastNode; null rather
// than garbage, so that unlink's comparison with it reads a defined value.
ZuList::ZuList() : last(nullptr), nodeCount(0), current(nullptr) {}

ZuList::~ZuList() = default;

void ZuList::insert(ZuNode* node) {
  if (last == nullptr) {
    node->next = node;
    last = node;
  } else {
    node->next = last->next;
    last->next = node;
  }
  ++nodeCount;
}

void ZuList::append(ZuNode* node) {
  insert(node);
  last = node;
}

void ZuList::unlink(ZuNode* node) {
  ZuNode* prev = last;
  ZuNode* cur = last->next;
  while (cur != node && cur != last) {
    prev = cur;
    cur = cur->next;
  }
  if (prev == node) {
    last = nullptr;
  } else {
    prev->next = node->next;
    if (last == node) last = prev;
  }
  node->next = nullptr;
  --nodeCount;
  if (current == node) current = nullptr;
}

void ZuList::deleteNodes() {
  while (last != nullptr) {
    ZuNode* first = last->next;
    unlink(first);
    delete first;
  }
  current = nullptr;
}

ZuNode* ZuList::getFirstNode() {
  current = last != nullptr ? last->next : nullptr;
  return current;
}

ZuNode* ZuList::getLastNode() {
  current = last;
  return current;
}

ZuNode* ZuList::getNextNode() {
  current = (current == nullptr || current == last) ? nullptr : current->next;
  return current;
}

ZuNode* ZuList::removeFirstNode() {
  if (last == nullptr) return nullptr;
  ZuNode* first = last->next;
  unlink(first);
  return first;
}

ZuNode* ZuList::removeLastNode() {
  if (last == nullptr) return nullptr;
  ZuNode* node = last;
  unlink(node);
  return node;
}

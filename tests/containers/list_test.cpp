#include <gtest/gtest.h>

#include <vector>

#include "containers/list.h"

namespace {

struct Item : ZuNode {
  explicit Item(int v, int* deaths = nullptr) : value(v), deaths(deaths) {}
  ~Item() override {
    if (deaths != nullptr) ++*deaths;
  }
  int value;
  int* deaths;
};

// The values in cursor order; also checks that the ring closes after nodeCount steps.
std::vector<int> walk(ZuList& list) {
  std::vector<int> seen;
  for (ZuNode* n = list.getFirstNode(); n != nullptr; n = list.getNextNode()) {
    seen.push_back(static_cast<Item*>(n)->value);
  }
  ZuNode* n = list.last;
  for (std::uint32_t i = 0; n != nullptr && i < list.nodeCount; ++i) n = n->next;
  EXPECT_EQ(n, list.last);
  EXPECT_EQ(seen.size(), list.nodeCount);
  return seen;
}

}  // namespace

TEST(List, EmptyAndOneNode) {
  ZuList list;
  EXPECT_EQ(list.getFirstNode(), nullptr);
  EXPECT_EQ(list.getLastNode(), nullptr);
  EXPECT_EQ(list.removeFirstNode(), nullptr);
  EXPECT_EQ(list.removeLastNode(), nullptr);

  Item a(1), b(2);
  list.insert(&a);
  EXPECT_EQ(list.last, &a);
  EXPECT_EQ(a.next, &a);
  EXPECT_EQ(list.removeLastNode(), &a);
  EXPECT_EQ(a.next, nullptr);
  list.append(&b);
  EXPECT_EQ(b.next, &b);
  EXPECT_EQ(walk(list), std::vector<int>{2});
  EXPECT_EQ(list.removeFirstNode(), &b);
  EXPECT_EQ(list.last, nullptr);
  EXPECT_EQ(list.nodeCount, 0u);
}

TEST(List, CursorStopsAtTheEnd) {
  Item a(1), b(2), c(3), d(4);
  ZuList list;
  list.append(&b);
  list.insert(&a);
  list.append(&c);
  list.insert(&d);
  EXPECT_EQ(walk(list), (std::vector<int>{4, 1, 2, 3}));
  EXPECT_EQ(list.getNextNode(), nullptr);  // already off the end
  EXPECT_EQ(list.getLastNode(), &c);
  EXPECT_EQ(list.getNextNode(), nullptr);

  list.getFirstNode();
  EXPECT_EQ(list.getNextNode(), &a);
  list.unlink(&d);  // elsewhere: the walk goes on
  EXPECT_EQ(list.getNextNode(), &b);
  list.unlink(&b);  // under the cursor: the walk ends
  EXPECT_EQ(list.getNextNode(), nullptr);
}

TEST(List, UnlinkFirstMiddleOrLastOfThree) {
  for (int gone = 0; gone < 3; ++gone) {
    Item items[] = {Item(0), Item(1), Item(2)};
    ZuList list;
    for (Item& i : items) list.append(&i);
    list.unlink(&items[gone]);
    std::vector<int> rest;
    for (int v = 0; v < 3; ++v) {
      if (v != gone) rest.push_back(v);
    }
    EXPECT_EQ(walk(list), rest) << "without " << gone;
    EXPECT_EQ(list.last, &items[gone == 2 ? 1 : 2]);
  }
}

TEST(List, DeleteNodesDeletesEachOnce) {
  int deaths = 0;
  ZuList list;
  for (int v = 0; v < 5; ++v) {
    Item* item = new Item(v, &deaths);
    ASSERT_NE(item, nullptr);
    list.append(item);
  }
  list.getLastNode();
  list.deleteNodes();
  EXPECT_EQ(deaths, 5);
  EXPECT_EQ(list.nodeCount, 0u);
  EXPECT_EQ(list.current, nullptr);
  EXPECT_EQ(list.getFirstNode(), nullptr);
}

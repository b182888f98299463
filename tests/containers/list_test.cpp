#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <random>
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

// Random inserts, appends, removals at both ends and unlinks anywhere,
// against a deque; the ring is walked after every step, and an emptied list
// answers null at both ends.
TEST(List, AgreesWithADeque) {
  std::mt19937 random(3);
  std::vector<Item> items;
  for (int v = 0; v < 8; ++v) items.emplace_back(v);
  ZuList list;
  std::deque<int> model;
  for (int step = 0; step < 4000; ++step) {
    const int v = static_cast<int>(random() % items.size());
    const bool held = std::find(model.begin(), model.end(), v) != model.end();
    ZuNode* gone = nullptr;
    switch (random() % 5) {
      case 0:
        if (!held) list.insert(&items[v]), model.push_front(v);
        break;
      case 1:
        if (!held) list.append(&items[v]), model.push_back(v);
        break;
      case 2:
        gone = list.removeFirstNode();
        EXPECT_EQ(gone, model.empty() ? nullptr : &items[model.front()]);
        if (!model.empty()) model.pop_front();
        break;
      case 3:
        gone = list.removeLastNode();
        EXPECT_EQ(gone, model.empty() ? nullptr : &items[model.back()]);
        if (!model.empty()) model.pop_back();
        break;
      default:
        if (held) list.unlink(&items[v]), model.erase(std::find(model.begin(), model.end(), v));
    }
    if (gone != nullptr) {
      EXPECT_EQ(gone->next, nullptr) << "a removed node is cut loose";
    }
    ASSERT_EQ(walk(list), std::vector<int>(model.begin(), model.end())) << "step " << step;
    EXPECT_EQ(list.getLastNode(), model.empty() ? nullptr : &items[model.back()]);
  }
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

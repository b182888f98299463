// Drives a ZuTree beside a std::map, and a ZuPTree beside a std::vector of
// entries or holes (whose insert and erase are the shifts), one operation at
// a time; each step checks the tree's answer against the model and records
// the first disagreement in `failure`. Header-only, for tests and fuzzing.
#ifndef ZU_TESTS_SUPPORT_TREE_DRIVE_H
#define ZU_TESTS_SUPPORT_TREE_DRIVE_H

#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "trees/tree.h"

namespace zutest {

// Operations; a step takes the operation and the bytes it needs.
enum TreeOp : unsigned {
  kTreeAdd,
  kTreeLookup,
  kTreeChangeData,
  kTreeDelete,
  kTreeChangeKey,
  kTreeWalkFrom,   // search, then steps forward or back from where it stood
  kTreeWalkAll,    // the whole tree through an iterator of the caller's
  kTreeOps,
};

struct KeyOrder {
  bool numeric = false;
  bool operator()(const std::string& a, const std::string& b) const {
    if (!numeric) return a < b;  // unsigned bytes, as the tree compares them
    std::uint32_t x, y;
    std::memcpy(&x, a.data(), 4);
    std::memcpy(&y, b.data(), 4);
    return x < y;
  }
};

class TreeDrive {
 public:
  TreeDrive(unsigned short keyLength, unsigned short dataLength, bool numeric, bool markers)
      : tree(keyLength, dataLength, numeric ? treeU32Compare : nullptr, markers ? 1 : 0),
        model(KeyOrder{numeric}),
        markers_(markers) {
    walker.initialize(&tree);
  }

  // `key` has keyLength bytes and `data` dataLength bytes; `count` is a
  // step count or a direction where the operation needs one.
  bool step(TreeOp op, const std::string& key, const std::string& data, const std::string& other,
            unsigned count) {
    unsigned int found = 9;
    std::string got(tree.dataLength, '\0');
    auto it = model.find(key);
    switch (op) {
      case kTreeAdd:
        if (tree.add(key.data(), data.data(), &found) != ZU_OK) return fail("add failed");
        if (found != (it != model.end())) return fail("add: found flag");
        if (it == model.end()) model.emplace(key, data);
        break;
      case kTreeLookup:
        if (tree.getData(key.data(), got.data(), &found) != ZU_OK) return fail("getData failed");
        if (found != (it != model.end())) return fail("getData: found flag");
        if (found != 0 && got != it->second) return fail("getData: data");
        break;
      case kTreeChangeData:
        if (tree.changeData(key.data(), data.data()) != ZU_OK) return fail("changeData failed");
        if (it != model.end()) it->second = data;
        break;
      case kTreeDelete:
        if (!markers_) return true;
        if (tree.deleteKey(key.data(), &found) != ZU_OK) return fail("deleteKey failed");
        if (found != (it != model.end())) return fail("deleteKey: found flag");
        if (it != model.end()) model.erase(it);
        break;
      case kTreeChangeKey:
        if (!markers_) return true;
        if (tree.changeKey(key.data(), other.data()) != ZU_OK) return fail("changeKey failed");
        if (it != model.end()) {
          const std::string moved = it->second;
          model.erase(it);
          model.emplace(other, moved);  // an existing new key keeps its data
        }
        break;
      case kTreeWalkFrom:
        return walkFrom(key, count);
      case kTreeWalkAll:
        return walkAll((count & 1) != 0);
      default:
        break;
    }
    if (tree.keyCount != model.size()) return fail("keyCount");
    return true;
  }

  ZuTree tree;
  ZuTreeIterator walker;
  std::map<std::string, std::string, KeyOrder> model;
  std::string failure;

 private:
  bool fail(const char* what) {
    if (failure.empty()) failure = what;
    return false;
  }

  bool delivered(const std::string& key, const std::string& data, unsigned int found,
                 std::map<std::string, std::string, KeyOrder>::const_iterator want) {
    if (want == model.end()) return found == 0 || fail("walk: a key past the end");
    if (found == 0) return fail("walk: ended early");
    if (key != want->first) return fail("walk: wrong key");
    return data == want->second || fail("walk: wrong data");
  }

  // After a search the built-in iterator stands on the key or between keys;
  // steps go on from there in one direction.
  bool walkFrom(const std::string& key, unsigned count) {
    unsigned int found = 0;
    if (tree.doesExist(key.data(), &found) != ZU_OK) return fail("doesExist failed");
    const bool forward = (count & 1) != 0;
    auto want = forward ? model.upper_bound(key) : model.lower_bound(key);
    std::string k(tree.keyLength, '\0');
    std::string d(tree.dataLength, '\0');
    for (unsigned i = 0; i < count % 16 + 1; ++i) {
      ZuStatus status = forward ? tree.getNext(k.data(), d.data(), &found, nullptr)
                                : tree.getPrevious(k.data(), d.data(), &found, nullptr);
      if (status != ZU_OK) return fail("step failed");
      if (forward) {
        if (!delivered(k, d, found, want)) return false;
        if (want == model.end()) return true;
        ++want;
      } else {
        if (want == model.begin()) return found == 0 || fail("walk: a key before the start");
        --want;
        if (!delivered(k, d, found, want)) return false;
      }
    }
    return true;
  }

  bool walkAll(bool forward) {
    unsigned int found = 0;
    std::string k(tree.keyLength, '\0');
    std::string d(tree.dataLength, '\0');
    ZuStatus status = forward ? tree.getFirst(k.data(), d.data(), &found, &walker)
                              : tree.getLast(k.data(), d.data(), &found, &walker);
    if (forward) {
      for (auto want = model.cbegin();; ++want) {
        if (status != ZU_OK) return fail("walk failed");
        if (!delivered(k, d, found, want)) return false;
        if (want == model.cend()) return true;
        status = tree.getNext(k.data(), d.data(), &found, &walker);
      }
    }
    for (auto want = model.crbegin();; ++want) {
      if (status != ZU_OK) return fail("walk failed");
      if (want == model.crend()) return found == 0 || fail("walk: a key before the start");
      if (!delivered(k, d, found, std::prev(want.base()))) return false;
      status = tree.getPrevious(k.data(), d.data(), &found, &walker);
    }
  }

  bool markers_;
};

enum PTreeOp : unsigned {
  kPAddAtPos,
  kPAddHole,
  kPDeleteAtPos,
  kPAdd,        // at a free position, nothing moves
  kPDelete,     // leaves a hole
  kPLookup,
  kPChangeKey,  // moves one entry
  kPWalkAll,
  kPTreeOps,
};

class PTreeDrive {
 public:
  explicit PTreeDrive(unsigned short dataLength) : tree(dataLength) {}

  bool step(PTreeOp op, std::uint32_t position, std::uint32_t other, const std::string& data) {
    unsigned int found = 9;
    const bool present = has(position);
    std::string got(tree.dataLength, '\0');
    switch (op) {
      case kPAddAtPos:
        if (tree.addAtPos(position, data.data()) != ZU_OK) return fail("addAtPos failed");
        if (position >= model.size()) model.resize(position, kHole);
        model.insert(model.begin() + position, keep(data));
        ++live_;
        break;
      case kPAddHole:
        if (tree.addHoleAtPos(position) != ZU_OK) return fail("addHoleAtPos failed");
        if (position < model.size()) model.insert(model.begin() + position, kHole);
        break;
      case kPDeleteAtPos:
        if (tree.deleteKeyAtPos(position, &found) != ZU_OK) return fail("deleteKeyAtPos failed");
        if (found != present) return fail("deleteKeyAtPos: found flag");
        if (position < model.size()) model.erase(model.begin() + position);
        live_ -= present ? 1 : 0;
        break;
      case kPAdd:
        if (tree.add(&position, data.data(), &found) != ZU_OK) return fail("add failed");
        if (found != present) return fail("add: found flag");
        if (!present) put(position, keep(data));
        break;
      case kPDelete:
        if (tree.deleteKey(&position, &found) != ZU_OK) return fail("deleteKey failed");
        if (found != present) return fail("deleteKey: found flag");
        if (present) model[position] = kHole, --live_;
        break;
      case kPLookup:
        if (tree.getData(&position, got.data(), &found) != ZU_OK) return fail("getData failed");
        if (found != present) return fail("getData: found flag");
        if (present && got != datas_[model[position]]) return fail("getData: data");
        break;
      case kPChangeKey:
        if (tree.changeKey(&position, &other) != ZU_OK) return fail("changeKey failed");
        if (present) {
          const std::uint32_t moved = model[position];
          model[position] = kHole;
          --live_;
          if (!has(other)) put(other, moved);
        }
        break;
      case kPWalkAll:
        return walkAll((position & 1) != 0);
      default:
        break;
    }
    return tree.keyCount == live_ || fail("keyCount");
  }

  ZuPTree tree;
  // Entry p of the model: the index of its data, or kHole. Numbers, so
  // that the shifts are cheap even where the build is slow.
  std::vector<std::uint32_t> model;
  std::string failure;

 private:
  static constexpr std::uint32_t kHole = 0xFFFFFFFF;

  bool has(std::uint32_t position) const { return position < model.size() && model[position] != kHole; }
  std::uint32_t keep(const std::string& data) {
    datas_.push_back(data);
    return static_cast<std::uint32_t>(datas_.size() - 1);
  }
  bool fail(const char* what) {
    if (failure.empty()) failure = what;
    return false;
  }
  void put(std::uint32_t position, std::uint32_t entry) {
    if (position >= model.size()) model.resize(position + 1, kHole);
    live_ += model[position] == kHole ? 1 : 0;
    model[position] = entry;
  }

  bool walkAll(bool forward) {
    std::vector<std::uint32_t> positions;
    for (std::uint32_t p = 0; p < model.size(); ++p) {
      if (model[p] != kHole) positions.push_back(p);
    }
    unsigned int found = 0;
    std::uint32_t position = 0;
    std::string d(tree.dataLength, '\0');
    ZuStatus status = forward ? tree.getFirst(&position, d.data(), &found) : tree.getLast(&position, d.data(), &found);
    for (std::size_t i = 0;; ++i) {
      if (status != ZU_OK) return fail("walk failed");
      if (i == positions.size()) return found == 0 || fail("walk: an entry too many");
      if (found == 0) return fail("walk: ended early");
      const std::uint32_t want = forward ? positions[i] : positions[positions.size() - 1 - i];
      if (position != want) return fail("walk: wrong position");
      if (d != datas_[model[want]]) return fail("walk: wrong data");
      status = forward ? tree.getNext(&position, d.data(), &found) : tree.getPrevious(&position, d.data(), &found);
    }
  }

  std::vector<std::string> datas_;
  std::uint32_t live_ = 0;
};

}  // namespace zutest

#endif

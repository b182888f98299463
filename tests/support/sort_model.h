// A reference for ZuSort, written from the rules of key comparison rather
// than from the sort's code: the comparator, the control-break level, the
// order a sort must deliver, and a check of a delivered sequence. The sort
// test and the fuzz target share it, so it uses no test framework; a check
// answers with a description of the first fault, empty when there is none.
//
// Records are byte strings of the record size. A record whose keys include
// an object key holds a ZuObject* in its first bytes.
#ifndef ZU_TESTS_SUPPORT_SORT_MODEL_H
#define ZU_TESTS_SUPPORT_SORT_MODEL_H

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "frame/object.h"
#include "sort/sort.h"
#include "strings/compare.h"

namespace zutest {

using SortRecord = std::string;

class SortReference {
 public:
  SortReference(std::vector<ZuSortKey> keys, unsigned short startKey)
      : keys(std::move(keys)), startKey(startKey) {}

  // Negative, 0 or positive as `a` sorts before, with or after `b`, over the
  // keys from the start key on.
  int compare(const unsigned char* a, const unsigned char* b) const {
    for (size_t i = startKey; i < keys.size(); ++i) {
      const ZuSortKey& k = keys[i];
      const int r = raw(k, a, b);
      if (r == 0) continue;
      const bool empty = a[k.offset] == 0 || b[k.offset] == 0;
      const bool reversed = (k.type & ZU_SORTKEY_DESCENDING) != 0 &&
                            !((k.type & ZU_SORTKEY_EMPTY_FIXED) != 0 && empty);
      return reversed ? -r : r;
    }
    return 0;
  }
  int compare(const SortRecord& a, const SortRecord& b) const { return compare(u(a), u(b)); }

  // The first key, counted from key 0 and regardless of direction, in which
  // the two differ; the key count when they agree in all.
  unsigned short firstDifference(const unsigned char* a, const unsigned char* b) const {
    unsigned short i = 0;
    while (i < keys.size() && raw(keys[i], a, b) == 0) ++i;
    return i;
  }
  unsigned short firstDifference(const SortRecord& a, const SortRecord& b) const {
    return firstDifference(u(a), u(b));
  }

  // The order a sort delivers up to ties: each group of neighbours that agree
  // in the keys before the start key stays where it is, ordered by itself.
  std::vector<SortRecord> expectedOrder(const std::vector<SortRecord>& input) const {
    std::vector<SortRecord> out(input);
    auto before = [this](const SortRecord& a, const SortRecord& b) { return compare(a, b) < 0; };
    for (size_t i = 0; i < out.size();) {
      size_t j = i + 1;
      while (j < out.size() && firstDifference(out[i], out[j]) >= startKey) ++j;
      std::stable_sort(out.begin() + static_cast<std::ptrdiff_t>(i),
                       out.begin() + static_cast<std::ptrdiff_t>(j), before);
      i = j;
    }
    return out;
  }

  std::vector<ZuSortKey> keys;
  unsigned short startKey;

 private:
  static const unsigned char* u(const SortRecord& r) {
    return reinterpret_cast<const unsigned char*>(r.data());
  }
  static int sign(int v) { return (v > 0) - (v < 0); }

  // The key's own order, ascending, as a sign.
  static int raw(const ZuSortKey& k, const unsigned char* a, const unsigned char* b) {
    if ((k.type & ZU_SORTKEY_OBJECT) != 0) {
      const ZuObject* x;
      const ZuObject* y;
      std::memcpy(&x, a, sizeof x);
      std::memcpy(&y, b, sizeof y);
      return sign(x->compare(y));
    }
    if ((k.type & ZU_SORTKEY_COLLATED) != 0) {
      return sign(strCompareIntl(a + k.offset, k.length, b + k.offset, k.length));
    }
    return sign(std::memcmp(a + k.offset, b + k.offset, k.length));
  }
};

// `delivered` holds the same records as `input`, counted with repeats, and
// each record that agrees with the one before it in the keys before the
// start key does not sort before it.
inline std::string checkDelivery(const SortReference& model, const std::vector<SortRecord>& input,
                                 const std::vector<SortRecord>& delivered) {
  for (size_t i = 1; i < delivered.size(); ++i) {
    if (model.firstDifference(delivered[i - 1], delivered[i]) >= model.startKey &&
        model.compare(delivered[i - 1], delivered[i]) > 0) {
      return "records " + std::to_string(i - 1) + " and " + std::to_string(i) + " out of order";
    }
  }
  // Views, so that sorting moves no record.
  auto sortedViews = [](const std::vector<SortRecord>& records) {
    std::vector<std::string_view> views(records.begin(), records.end());
    std::sort(views.begin(), views.end());
    return views;
  };
  if (sortedViews(input) != sortedViews(delivered)) {
    return "delivered " + std::to_string(delivered.size()) + " records, not the " +
           std::to_string(input.size()) + " given";
  }
  return {};
}

// `delivered` agrees with `expected` in every key, place by place.
inline std::string checkKeyOrder(const SortReference& model, const std::vector<SortRecord>& expected,
                                 const std::vector<SortRecord>& delivered) {
  if (expected.size() != delivered.size()) {
    return "delivered " + std::to_string(delivered.size()) + " records, expected " +
           std::to_string(expected.size());
  }
  for (size_t i = 0; i < expected.size(); ++i) {
    const unsigned short k = model.firstDifference(delivered[i], expected[i]);
    if (k != model.keys.size()) {
      return "record " + std::to_string(i) + " differs from the expected one in key " +
             std::to_string(k);
    }
  }
  return {};
}

}  // namespace zutest

#endif

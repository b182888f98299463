// DISTINCT through the library's B-tree: each result row is reduced to a
// 16-byte digest (two independent 64-bit hashes of its values, NULLs and
// value boundaries included) kept as the key of a ZuTree, whose nodes live
// in a scratch store and so may outgrow memory. A row whose digest is
// already there is a repeat. Two different rows share a digest with a
// chance of about 2^-128.
#ifndef ZUCSV_DISTINCT_FILTER_H
#define ZUCSV_DISTINCT_FILTER_H

#include <zuutl.h>

#include <vector>

#include "value.h"

namespace zucsv {

class DistinctFilter {
 public:
  DistinctFilter();
  ~DistinctFilter();
  DistinctFilter(const DistinctFilter&) = delete;
  DistinctFilter& operator=(const DistinctFilter&) = delete;
  // *first is true the first time these values are seen. false on a failure.
  bool firstTime(const std::vector<Value>& values, bool* first);

 private:
  ZuTree* tree_;
};

}  // namespace zucsv

#endif

// The comparison of two records by their keys, inline for the quicksort's
// inner loop. Internal.
#ifndef ZUUTL_SORT_KEY_PLAN_H
#define ZUUTL_SORT_KEY_PLAN_H

#include <climits>
#include <cstring>

#include "sort/sort.h"
#include "strings/compare.h"
#include "strings/mem_words.h"

// Keys `first` to `end - 1` of a sort, with the part of each that lies
// inside a record.
struct ZuSort::KeyPlan {
  const ZuSortKey* keys;
  const unsigned short* inside;
  unsigned short first;
  unsigned short end;
  unsigned short recordSize;

  // The raw result of key k, before its direction.
  short raw(unsigned short k, const unsigned char* a, const unsigned char* b) const {
    const ZuSortKey& key = keys[k];
    const unsigned short length = inside[k];
    if (length == 0) return 0;
    if ((key.type & ZU_SORTKEY_OBJECT) != 0) {
      ZuObject* x;
      ZuObject* y;
      std::memcpy(&x, a, sizeof x);
      std::memcpy(&y, b, sizeof y);
      return x->compare(y);
    }
    if ((key.type & ZU_SORTKEY_COLLATED) != 0) {
      return strCompareIntl(a + key.offset, length, b + key.offset, length);
    }
    return zu::memOrder(a + key.offset, b + key.offset, length);
  }

  // Negative, 0 or positive as A sorts before, with or after B. The first
  // key that differs decides, in its direction; an empty value under
  // ZU_SORTKEY_EMPTY_FIXED keeps its ascending place.
  short order(const unsigned char* a, const unsigned char* b) const {
    for (unsigned short k = first; k < end; ++k) {
      const short result = raw(k, a, b);
      if (result == 0) continue;
      const ZuSortKey& key = keys[k];
      if ((key.type & ZU_SORTKEY_DESCENDING) == 0) return result;
      if ((key.type & ZU_SORTKEY_EMPTY_FIXED) != 0 && key.offset < recordSize &&
          (a[key.offset] == 0 || b[key.offset] == 0)) {
        return result;
      }
      // The one 16-bit value without a negative maps to the largest positive.
      return result == SHRT_MIN ? SHRT_MAX : static_cast<short>(-result);
    }
    return 0;
  }
};

#endif

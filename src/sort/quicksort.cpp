// ZuSort: the in-memory quicksort over record slots that span blocks.
//
// Ranges of up to four records are finished by fixed comparison sequences;
// longer ones are partitioned around the median of three samples, or of
// five from kFiveSampleSpan on. The left part of each partition is pushed
// on a fixed stack and the right part taken next, so the sort allocates
// nothing; the stack's overflow is the one failure.
#include "errors/message.h"
#include "sort/key_plan.h"
#include "sort/sort.h"
#include "sort/sort_limits.h"
#include "strings/mem_words.h"

using namespace zu::sorting;

// A position in the slots that steps to its neighbours without a division:
// it knows its place in its block and re-derives the address only when it
// crosses into another block.
struct ZuSort::Cursor {
  std::uint32_t slot;
  std::uint32_t place;
  unsigned char* address;
};

namespace {

struct PendingRange {
  std::uint32_t last;
  std::uint32_t first;
};

}  // namespace

// One key of plain bytes decides most sorts; its comparison is compiled
// into the loop. Every other set of keys goes through the plan.
ZuStatus ZuSort::quickSort(std::uint32_t first, std::uint32_t last) {
  const KeyPlan plan = keyPlan();
  if (plan.end == plan.first + 1 && plan.inside[plan.first] != 0) {
    const ZuSortKey key = plan.keys[plan.first];
    const unsigned short length = plan.inside[plan.first];
    if ((key.type & (ZU_SORTKEY_OBJECT | ZU_SORTKEY_COLLATED | ZU_SORTKEY_DESCENDING)) == 0) {
      const unsigned short at = key.offset;
      // Keys of four and eight bytes, the common binary numbers, compare in
      // one load each.
      if (length == sizeof(std::uint32_t)) {
        return quickSortBy(first, last, [at](const unsigned char* a, const unsigned char* b) {
          return zu::memOrder(a + at, b + at, sizeof(std::uint32_t));
        });
      }
      if (length == sizeof(std::uint64_t)) {
        return quickSortBy(first, last, [at](const unsigned char* a, const unsigned char* b) {
          return zu::memOrder(a + at, b + at, sizeof(std::uint64_t));
        });
      }
      return quickSortBy(first, last, [at, length](const unsigned char* a, const unsigned char* b) {
        return zu::memOrder(a + at, b + at, length);
      });
    }
  }
  return quickSortBy(first, last, [&plan](const unsigned char* a, const unsigned char* b) { return plan.order(a, b); });
}

template <typename Order>
ZuStatus ZuSort::quickSortBy(std::uint32_t first, std::uint32_t last, const Order& order) {
  PendingRange pending[kQuickStackDepth];
  unsigned depth = 0;

  const auto at = [this](std::uint32_t slot) {
    return Cursor{slot, slot % recordsPerBuffer, slotAddress(slot)};
  };
  const auto advance = [this](Cursor& c) {
    ++c.slot;
    if (++c.place == recordsPerBuffer) {
      c.place = 0;
      c.address = slotAddress(c.slot);
    } else {
      c.address += recordSize;
    }
  };
  const auto retreat = [this](Cursor& c) {
    --c.slot;
    if (c.place == 0) {
      c.place = recordsPerBuffer - 1;
      c.address = slotAddress(c.slot);
    } else {
      --c.place;
      c.address -= recordSize;
    }
  };
  const auto swap = [this](unsigned char* x, unsigned char* y) { zu::memSwap(x, y, recordSize); };
  const auto below = [&order](const unsigned char* x, const unsigned char* y) { return order(x, y) < 0; };
  const auto above = [&order](const unsigned char* x, const unsigned char* y) { return order(x, y) > 0; };

  for (;;) {
    const std::uint32_t span = last - first;
    Cursor l = at(first);
    Cursor r = at(last);
    bool partition = false;
    if (span == 3) {
      unsigned char* a = l.address;
      unsigned char* b = slotAddress(first + 1);
      unsigned char* c = slotAddress(first + 2);
      unsigned char* d = r.address;
      if (above(a, b)) swap(a, b);
      if (above(c, d)) swap(c, d);
      if (above(b, c)) {
        if (below(a, d)) {
          if (above(a, c)) swap(a, c);
          if (above(b, d)) swap(b, d);
          swap(b, c);
        } else {
          swap(a, c);
          swap(b, d);
        }
      }
    } else if (span == 2) {
      unsigned char* a = l.address;
      unsigned char* m = slotAddress(first + 1);
      unsigned char* z = r.address;
      if (above(a, m)) swap(a, m);
      if (above(m, z)) {
        swap(m, z);
        if (above(a, m)) swap(a, m);
      }
    } else if (span < 2) {
      if (above(l.address, r.address)) swap(l.address, r.address);
    } else if (span < kFiveSampleSpan) {
      // Median of three: the smallest stays first and the largest last, as
      // sentinels for the scans; the median becomes the pivot next to last.
      unsigned char* m = slotAddress(first + span / 2);
      if (above(l.address, r.address)) swap(l.address, r.address);
      if (above(m, r.address)) {
        swap(m, r.address);
      } else if (above(l.address, m)) {
        swap(l.address, m);
      }
      advance(l);
      retreat(r);
      swap(r.address, m);
      partition = true;
    } else {
      // Median of five: the two lower samples go to the first two slots and
      // the two upper to the last two, the median to the pivot's slot.
      const std::uint32_t h = span / 2;
      const std::uint32_t q = h / 2;
      unsigned char* A = l.address;
      unsigned char* B = slotAddress(first + q);
      unsigned char* C = slotAddress(first + h);
      unsigned char* D = slotAddress(first + q + h);
      unsigned char* E = r.address;
      advance(l);
      retreat(r);
      swap(l.address, B);
      B = l.address;
      advance(l);
      swap(D, r.address);
      D = r.address;
      retreat(r);
      if (above(A, D)) swap(A, D);
      if (above(B, E)) swap(B, E);
      if (above(B, D)) {
        swap(B, D);
      } else if (above(A, E)) {
        swap(A, E);
        B = A;
        D = E;
      } else {
        if (above(A, B)) B = A;
        if (above(D, E)) D = E;
      }
      if (above(B, C)) {
        swap(B, C);
      } else if (above(C, D)) {
        swap(C, D);
      }
      swap(C, r.address);
      partition = true;
    }

    if (partition) {
      // Equal records stop both scans, so runs of equals split evenly.
      unsigned char* pivot = r.address;
      for (;;) {
        bool met = false;
        while (below(l.address, pivot)) {
          advance(l);
          if (r.slot == l.slot) {
            met = true;
            break;
          }
        }
        if (met) break;
        for (;;) {
          retreat(r);
          if (r.slot == l.slot) {
            met = true;
            break;
          }
          if (!above(r.address, pivot)) break;
        }
        if (met) break;
        swap(l.address, r.address);
        advance(l);
        if (r.slot == l.slot) break;
      }
      swap(l.address, pivot);

      if (first + 1 < l.slot) {
        if (depth == kQuickStackDepth) {
          addMessageError(msg::kQuickStackOverflow);
          return ZU_ERROR;
        }
        pending[depth++] = PendingRange{l.slot - 1, first};
      }
      if (l.slot + 1 < last) {
        first = l.slot + 1;
        continue;
      }
    }
    if (depth == 0) return ZU_OK;
    --depth;
    first = pending[depth].first;
    last = pending[depth].last;
  }
}

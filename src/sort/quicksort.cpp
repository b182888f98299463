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
// into the loop, and so is the exchange of small records. Every other set
// of keys goes through the plan.
ZuStatus ZuSort::quickSort(std::uint32_t first, std::uint32_t last) {
  const KeyPlan plan = keyPlan();
  if (plan.end == plan.first + 1 && plan.inside[plan.first] != 0) {
    const ZuSortKey key = plan.keys[plan.first];
    const unsigned short length = plan.inside[plan.first];
    if ((key.type & (ZU_SORTKEY_OBJECT | ZU_SORTKEY_COLLATED | ZU_SORTKEY_DESCENDING)) == 0) {
      const unsigned short at = key.offset;
      // A key of four bytes, the common binary number, compares in one
      // load a side.
      if (length == sizeof(std::uint32_t)) {
        return quickSortSized(first, last, [at](const unsigned char* a, const unsigned char* b) {
          return zu::memOrder(a + at, b + at, sizeof(std::uint32_t));
        });
      }
      return quickSortSized(first, last, [at, length](const unsigned char* a, const unsigned char* b) {
        return zu::memOrder(a + at, b + at, length);
      });
    }
  }
  const std::uint32_t size = recordSize;
  return quickSortBy(
      first, last, [&plan](const unsigned char* a, const unsigned char* b) { return plan.order(a, b); },
      [size](unsigned char* x, unsigned char* y) { zu::memSwap(x, y, size); });
}

// Records of one or two words are exchanged in registers with no loop.
template <typename Order>
ZuStatus ZuSort::quickSortSized(std::uint32_t first, std::uint32_t last, const Order& order) {
  constexpr std::uint32_t kWord = sizeof(std::uint64_t);
  if (recordSize == kWord) {
    return quickSortBy(first, last, order, [](unsigned char* x, unsigned char* y) { zu::memSwap(x, y, kWord); });
  }
  if (recordSize == 2 * kWord) {
    return quickSortBy(first, last, order,
                       [](unsigned char* x, unsigned char* y) { zu::memSwap(x, y, 2 * kWord); });
  }
  const std::uint32_t size = recordSize;
  return quickSortBy(first, last, order, [size](unsigned char* x, unsigned char* y) { zu::memSwap(x, y, size); });
}

template <typename Order, typename Swap>
ZuStatus ZuSort::quickSortBy(std::uint32_t first, std::uint32_t last, const Order& order, const Swap& swap) {
  PendingRange pending[kQuickStackDepth];
  unsigned depth = 0;

  // Locals, not members: records are written through byte pointers, which
  // would otherwise make every step read the sizes again.
  const std::uint32_t perBlock = recordsPerBuffer;
  const std::uint32_t size = recordSize;
  const Order compare = order;
  const auto locate = [this, perBlock, size](std::uint32_t slot) {
    const std::uint32_t block = slot / perBlock;
    const std::uint32_t place = slot - block * perBlock;
    return Cursor{slot, place, static_cast<unsigned char*>(buffers[block]) + place * size};
  };
  // The position `n` slots after `c`, without a division inside c's block.
  const auto ahead = [&locate, perBlock, size](const Cursor& c, std::uint32_t n) {
    if (n < perBlock - c.place) return Cursor{c.slot + n, c.place + n, c.address + n * size};
    return locate(c.slot + n);
  };
  const auto advance = [this, perBlock, size](Cursor& c) {
    ++c.slot;
    if (++c.place == perBlock) {
      c.place = 0;
      c.address = slotAddress(c.slot);
    } else {
      c.address += size;
    }
  };
  const auto retreat = [this, perBlock, size](Cursor& c) {
    --c.slot;
    if (c.place == 0) {
      c.place = perBlock - 1;
      c.address = slotAddress(c.slot);
    } else {
      --c.place;
      c.address -= size;
    }
  };
  const auto below = [&compare](const unsigned char* x, const unsigned char* y) { return compare(x, y) < 0; };
  const auto above = [&compare](const unsigned char* x, const unsigned char* y) { return compare(x, y) > 0; };

  for (;;) {
    const std::uint32_t span = last - first;
    Cursor l = locate(first);
    Cursor r = ahead(l, span);
    bool partition = false;
    if (span == 3) {
      unsigned char* a = l.address;
      unsigned char* b = ahead(l, 1).address;
      unsigned char* c = ahead(l, 2).address;
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
      unsigned char* m = ahead(l, 1).address;
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
      unsigned char* m = ahead(l, span / 2).address;
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
      unsigned char* B = ahead(l, q).address;
      unsigned char* C = ahead(l, h).address;
      unsigned char* D = ahead(l, q + h).address;
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

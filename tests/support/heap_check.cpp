#include "support/heap_check.h"

namespace zutest {

std::uint32_t segmentCount() {
  std::uint32_t n = 0;
  for (zu::heap::RamSegment* s = zu::heap::head(); s != nullptr; s = s->nextSegment) ++n;
  return n;
}

}  // namespace zutest

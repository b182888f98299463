// strLike on arbitrary bytes. The input is cut into flags, wildcards, a
// pattern and a text; both go into heap buffers of exactly their size, so
// the sanitizer reports any read past them. Small cases are also checked
// against the recursive reference.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "strings/like.h"
#include "../tests/strings/like_reference.h"

namespace {

// Header bytes: flags, anyMany, anyOne, escape, pattern length.
constexpr size_t kHeader = 5;
constexpr uint8_t kFoldCase = 1;
constexpr uint8_t kUsualWildcards = 2;  // % and _ whatever the next two bytes say
constexpr size_t kReferenceLimit =
    64;  // beyond this the reference is too slow to run on every input

unsigned char* exactCopy(const uint8_t* from, size_t size) {
  unsigned char* copy = static_cast<unsigned char*>(std::malloc(size));
  if (size != 0) std::memcpy(copy, from, size);
  return copy;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < kHeader) return 0;
  const uint8_t flags = data[0];
  const unsigned char anyMany = (flags & kUsualWildcards) != 0 ? '%' : data[1];
  const unsigned char anyOne = (flags & kUsualWildcards) != 0 ? '_' : data[2];
  const unsigned char escape = data[3];
  const std::uint32_t exactCase = (flags & kFoldCase) != 0 ? 0 : 1;
  data += kHeader;
  size -= kHeader;
  const size_t patternSize = data[-1] <= size ? data[-1] : size;
  const size_t textSize = size - patternSize;
  unsigned char* pattern = exactCopy(data, patternSize);
  unsigned char* text = exactCopy(data + patternSize, textSize);

  const unsigned got =
      strLike(text, textSize, pattern, patternSize, anyMany, anyOne, escape, exactCase);
  if (got > 1) std::abort();
  if (patternSize <= kReferenceLimit && textSize <= 4 * kReferenceLimit) {
    zutest::LikeReference reference;
    reference.text.assign(reinterpret_cast<const char*>(text), textSize);
    reference.pattern.assign(reinterpret_cast<const char*>(pattern), patternSize);
    reference.anyMany = anyMany;
    reference.anyOne = anyOne;
    reference.escape = escape;
    reference.exact = exactCase != 0;
    if (reference.run() != (got == 1)) std::abort();
  }
  std::free(text);
  std::free(pattern);
  return 0;
}

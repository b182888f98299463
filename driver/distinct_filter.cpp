#include "distinct_filter.h"

#include <cstdint>
#include <cstdio>
#include <cstring>

namespace zucsv {
namespace {

constexpr unsigned short kDigestBytes = 16;
constexpr unsigned short kDataBytes = 1;
constexpr std::uint64_t kFnvPrime = 0x100000001b3ull;
constexpr std::uint64_t kFnvBasis = 0xcbf29ce484222325ull;
constexpr std::uint64_t kSecondBasis = 0x84222325cbf29ce4ull;
constexpr std::uint64_t kSecondMultiplier = 0x9E3779B97F4A7C15ull;

short digestCompare(const void* a, const void* b, unsigned short length) {
  const int c = std::memcmp(a, b, length);
  return static_cast<short>(c < 0 ? -1 : c > 0 ? 1 : 0);
}

struct Digest {
  std::uint64_t first = kFnvBasis;
  std::uint64_t second = kSecondBasis;
  void add(unsigned char byte) {
    first = (first ^ byte) * kFnvPrime;
    second = (second + byte + 1) * kSecondMultiplier;
    second ^= second >> 29;
  }
  void add(const std::string& text) {
    for (char c : text) add(static_cast<unsigned char>(c));
  }
};

// The value's text in one form per value: numbers by value, so 7 and 07
// in an integer column are one.
std::string canonical(const Value& v) {
  if (v.type == ColumnType::kInteger) return std::to_string(v.integer);
  if (v.type == ColumnType::kDouble) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.17g", v.real);
    return buffer;
  }
  return v.text;
}

}  // namespace

DistinctFilter::DistinctFilter() : tree_(new ZuTree(kDigestBytes, kDataBytes, digestCompare, 0)) {}

DistinctFilter::~DistinctFilter() { delete tree_; }

bool DistinctFilter::firstTime(const std::vector<Value>& values, bool* first) {
  if (tree_ == nullptr) return false;
  Digest digest;
  for (const Value& v : values) {
    if (v.null) {
      digest.add(0);
      continue;
    }
    const std::string text = canonical(v);
    digest.add(1);
    digest.add(std::to_string(text.size()));
    digest.add(':');
    digest.add(text);
  }
  unsigned char key[kDigestBytes];
  std::memcpy(key, &digest.first, sizeof digest.first);
  std::memcpy(key + sizeof digest.first, &digest.second, sizeof digest.second);
  const unsigned char data[kDataBytes] = {0};
  unsigned int found = 0;
  if (tree_->add(key, data, &found) != ZU_OK) return false;
  *first = found == 0;
  return true;
}

}  // namespace zucsv

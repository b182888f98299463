// Where the library is put together: every static object in construction
// order, and what the frame needs from the layers above it that no single
// layer supplies. Keeping the objects in one translation unit is what forces
// the order: C++ constructs objects of a unit in definition order and
// destroys them in reverse.
#include <cstring>

#include "errors/static_records.h"
#include "frame/from_above.h"
#include "frame/statics.h"
#include "platform/platform.h"
#include "strings/convert.h"
#include "strings/text_rules.h"

namespace zu {

namespace {

// The largest magnitudes that the two conversions take, as digits.
constexpr char kLargestUnsigned[] = "4294967295";
constexpr char kLargestNegative[] = "2147483648";
constexpr std::size_t kMostDigits = sizeof kLargestUnsigned - 1;
// A sign, the digits and a NUL.
constexpr std::size_t kNumberSize = 1 + kMostDigits + 1;

}  // namespace

// The number is the sign and digits that start the value; whatever follows
// them is ignored. Its form and range are checked before converting, because
// a refused conversion records an error, and at load there is no thread
// record to take it. A value beyond 32 bits holds no number either.
std::uint32_t environmentNumber(const char* name, std::uint32_t fallback) {
  const unsigned char* at = bosGetEnv(reinterpret_cast<const unsigned char*>(name));
  if (at == nullptr) return fallback;
  const bool negative = *at == '-';
  if (*at == '+' || *at == '-') ++at;
  while (*at == '0' && bytes::isDigit(at[1])) ++at;
  std::size_t count = 0;
  while (bytes::isDigit(at[count])) ++count;
  if (count == 0 || count > kMostDigits) return fallback;
  const char* largest = negative ? kLargestNegative : kLargestUnsigned;
  if (count == kMostDigits && std::memcmp(at, largest, kMostDigits) > 0) return fallback;

  // The sign and digits alone, as the conversion reads to the NUL.
  unsigned char text[kNumberSize] = {'-'};
  const std::size_t signBytes = negative ? 1 : 0;
  std::memcpy(text + signBytes, at, count);
  text[signBytes + count] = 0;
  if (negative) {
    std::int32_t number = 0;
    // Negation modulo 2^32, as the fields are unsigned.
    return convert(text, &number) == ZU_OK ? static_cast<std::uint32_t>(number) : fallback;
  }
  std::uint32_t number = 0;
  return convert(text, &number) == ZU_OK ? number : fallback;
}

namespace {
constexpr std::uint32_t kProcessAttach = 1;
// Runs first, so the handle is known before the first semaphore can report.
struct EntryAtLoad {
  EntryAtLoad() { libraryEntry(platform::moduleSelf(), kProcessAttach, nullptr); }
};
EntryAtLoad entryAtLoad;
}  // namespace

}  // namespace zu

// Step 1: the pool, then the first semaphore, which configures the pool.
ZuSemaphoreInfo semaphorePool;
ZuSemaphore threadListSemaphore;
// Step 2: the shared error records.
namespace zu {
StaticError memoryError(kOutOfMemory, ZuError::kMemoryError);
StaticError nullError(0, ZuError::kNullError);
}  // namespace zu
// Step 3.
ZuSemaphore bvmSemaphore;
// Step 4: last, so a limit of one or two system semaphores leaves it a spin lock.
ZuSemaphore ramSemaphore;

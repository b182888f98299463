// ZuTree against std::map, or ZuPTree against a vector of optional entries,
// under operations decoded from the input, through the drives the model
// tests use; any disagreement aborts. The trees outgrow the store's cache
// after a few hundred keys, so nodes go to the temporary file and come back.
// The heap must hold no more blocks afterwards than before.
//
// Header: key length, data length, flags, key space, filler. Then steps of
// kStepBytes: operation (low bits) and repeat (high bits), a value (2), an
// other value (2), a data seed, a count.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "errors/error_list.h"
#include "errors/keeper.h"
#include "frame/thread.h"
#include "memory/heap.h"

#include "../tests/support/tree_drive.h"

namespace {

constexpr size_t kHeader = 5;
constexpr size_t kStepBytes = 7;
enum Flag : uint8_t { kMarkers = 1, kNumeric = 2, kPositional = 4 };
constexpr unsigned kMaxKeyLength = 200;
constexpr unsigned kMaxDataLength = 100;
constexpr unsigned kNumberBytes = 4;
constexpr unsigned kOpBits = 3;  // the operation in the low bits, a repeat above
constexpr unsigned kRepeatScale = 8;
// Operations per input, repeats counted, so that an input stays fast.
constexpr unsigned kMaxOperations = 2000;
constexpr unsigned kMaxKeySpaceBits = 16;
// Positions reach this far past the last entry, so that adds leave holes.
constexpr uint32_t kPositionSlack = 64;
constexpr unsigned kByteBits = 8;
constexpr unsigned kSeedStride = 7;

std::uint32_t blocksInUse() {
  std::uint32_t n = 0;
  for (zu::heap::RamSegment* s = zu::heap::head(); s != nullptr; s = s->nextSegment) {
    n += s->blocksInUse;
  }
  return n;
}

void disagree(const std::string& failure, unsigned step) {
  std::fprintf(stderr, "tree and model disagree at step %u: %s\n", step, failure.c_str());
  std::abort();
}

std::string dataFrom(unsigned seed, unsigned length) {
  std::string d(length, '\0');
  for (unsigned j = 0; j < length; ++j) d[j] = static_cast<char>(seed + j * kSeedStride);
  return d;
}

// Equal values give equal keys. Byte keys share a long prefix of the filler
// and order by the value at their end; numeric keys are the value.
std::string keyFrom(std::uint32_t value, unsigned length, bool numeric, uint8_t filler) {
  std::string k(length, static_cast<char>(filler));
  if (numeric) {
    for (unsigned i = 0; i < kNumberBytes; ++i) k[i] = static_cast<char>(value >> (kByteBits * i));
    return k;
  }
  k[length - 1] = static_cast<char>(value);
  if (length >= 2) k[length - 2] = static_cast<char>(value >> kByteBits);
  return k;
}

struct Step {
  unsigned kind;
  unsigned repeat;
  std::uint32_t value;
  std::uint32_t other;
  uint8_t seed;
  uint8_t count;
};

Step decode(const uint8_t* p) {
  return {p[0] & ((1u << kOpBits) - 1), 1 + (p[0] >> kOpBits) * kRepeatScale,
          static_cast<std::uint32_t>(p[1] | p[2] << kByteBits), static_cast<std::uint32_t>(p[3] | p[4] << kByteBits),
          p[5], p[6]};
}

void driveTree(const uint8_t* data, size_t size) {
  const uint8_t flags = data[2];
  const bool numeric = (flags & kNumeric) != 0;
  unsigned keyLength = 1 + data[0] % kMaxKeyLength;
  if (numeric && keyLength < kNumberBytes) keyLength = kNumberBytes;
  const unsigned dataLength = data[1] % (kMaxDataLength + 1);
  const std::uint32_t space = 1u << (1 + data[3] % kMaxKeySpaceBits);
  const uint8_t filler = data[4];
  zutest::TreeDrive drive(static_cast<unsigned short>(keyLength), static_cast<unsigned short>(dataLength), numeric,
                          (flags & kMarkers) != 0);
  unsigned done = 0;
  for (size_t at = kHeader; at + kStepBytes <= size && done < kMaxOperations; at += kStepBytes) {
    const Step s = decode(data + at);
    const auto op = static_cast<zutest::TreeOp>(s.kind % zutest::kTreeOps);
    // Walks run once; the rest repeat over consecutive values.
    const bool walk = op == zutest::kTreeWalkFrom || op == zutest::kTreeWalkAll;
    for (unsigned r = 0; r < (walk ? 1 : s.repeat) && done < kMaxOperations; ++r, ++done) {
      const std::string key = keyFrom((s.value + r) % space, keyLength, numeric, filler);
      const std::string other = keyFrom((s.other + r) % space, keyLength, numeric, filler);
      if (!drive.step(op, key, dataFrom(s.seed + r, dataLength), other, s.count)) disagree(drive.failure, done);
    }
  }
  if (!drive.step(zutest::kTreeWalkAll, std::string(keyLength, '\0'), "", "", 1)) disagree(drive.failure, done);
  if (!drive.step(zutest::kTreeWalkAll, std::string(keyLength, '\0'), "", "", 0)) disagree(drive.failure, done);
}

void drivePTree(const uint8_t* data, size_t size) {
  const unsigned dataLength = data[1] % (kMaxDataLength + 1);
  zutest::PTreeDrive drive(static_cast<unsigned short>(dataLength));
  unsigned done = 0;
  for (size_t at = kHeader; at + kStepBytes <= size && done < kMaxOperations; at += kStepBytes) {
    const Step s = decode(data + at);
    const auto op = static_cast<zutest::PTreeOp>(s.kind % zutest::kPTreeOps);
    const bool walk = op == zutest::kPWalkAll;
    for (unsigned r = 0; r < (walk ? 1 : s.repeat) && done < kMaxOperations; ++r, ++done) {
      const auto span = static_cast<std::uint32_t>(drive.model.size()) + kPositionSlack;
      if (!drive.step(op, (s.value + r) % span, (s.other + r) % span, dataFrom(s.seed + r, dataLength))) {
        disagree(drive.failure, done);
      }
    }
  }
  if (!drive.step(zutest::kPWalkAll, 1, 0, "")) disagree(drive.failure, done);
  if (!drive.step(zutest::kPWalkAll, 0, 0, "")) disagree(drive.failure, done);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool ready = mdsPerThreadInit() == 1;
  if (!ready) std::abort();
  if (size < kHeader) return 0;
  const std::uint32_t blocksBefore = blocksInUse();
  {
    ZuErrorList errors;
    ZuErrorKeeper::setErrorList(&errors);
    if ((data[2] & kPositional) != 0) {
      drivePTree(data, size);
    } else {
      driveTree(data, size);
    }
    ZuErrorKeeper::giveUpErrorList();
  }
  if (blocksInUse() != blocksBefore) std::abort();
  return 0;
}

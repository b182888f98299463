// ZuSort on keys and records drawn from arbitrary bytes, in memory and
// spilled, against the reference comparator: the records given come back in
// order with the right control-break levels, a key search gives exactly those
// from the key on, and so does sorting again. Record i is the body read
// cyclically from byte i * step. The one failure accepted is the quicksort's
// stack overflow; the heap must hold no more blocks afterwards than before.
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <vector>

#include "errors/error_list.h"
#include "errors/keeper.h"
#include "frame/thread.h"
#include "memory/heap.h"
#include "platform/collation.h"
#include "platform/host.h"
#include "sort/sort.h"

#include "../tests/support/sort_model.h"

namespace {

using zutest::SortRecord;
using Records = std::vector<SortRecord>;

// Header: flags, record size, key count, start key, step, record count (2);
// then for each key: type, offset (2), length; then the body.
constexpr size_t kHeader = 7;
constexpr size_t kKeyBytes = 4;
enum Flag : uint8_t { kSpill = 1, kLevels = 2, kSearch = 4, kResort = 8 };
constexpr unsigned kMaxKeys = 64;
// Byte and collated keys in both directions; object keys are the test's.
constexpr unsigned kKeyTypeBits =
    ZU_SORTKEY_DESCENDING | ZU_SORTKEY_COLLATED | ZU_SORTKEY_EMPTY_FIXED;
constexpr unsigned kMaxMemoryRecordSize = 64;
constexpr unsigned kMaxMemoryRecords = 512;
// Records that spill after few of them: 32, 8, 3 and 2 a block.
constexpr unsigned short kSpillSizes[] = {2048, 8192, 21845, 30000};
constexpr std::uint32_t kBlockBytes = 65536;
constexpr std::uint32_t kShortBlocks = 2;  // a run's blocks while memory is short
constexpr unsigned kMaxRuns = 8;
constexpr unsigned short kStackOverflow = 2709;

void check(bool holds) {
  if (!holds) std::abort();
}

// A failure must be the quicksort's overflow, and ends the input.
bool failed(ZuStatus status) {
  check(status == ZU_OK || ZuErrorKeeper::getLastErrorNumber() == kStackOverflow);
  return status != ZU_OK;
}

std::uint32_t blocksInUse() {
  std::uint32_t n = 0;
  for (zu::heap::RamSegment* s = zu::heap::head(); s != nullptr; s = s->nextSegment) {
    n += s->blocksInUse;
  }
  return n;
}

SortRecord cut(const uint8_t* body, size_t bodySize, size_t from, size_t size) {
  SortRecord r(size, '\0');
  for (size_t j = 0; j < size; ++j) r[j] = static_cast<char>(body[(from + j) % bodySize]);
  return r;
}

// Appends what `step` gives up to the end; false when the sort failed.
template <class Step>
bool collect(Step step, Records& out, size_t size) {
  for (void* r = nullptr;;) {
    if (failed(step(&r))) return false;
    if (r == nullptr) return true;
    out.emplace_back(static_cast<char*>(r), size);
  }
}

void exercise(ZuSort& sort, const zutest::SortReference& model, const Records& input,
              SortRecord key, uint8_t flags) {
  const size_t size = key.size();
  Records got;
  auto sorted = [&](void** r) {
    unsigned short level = 0;
    if ((flags & kLevels) == 0) return sort.getSorted(r);
    const ZuStatus s = sort.getSortedWithCompare(r, &level);
    if (s == ZU_OK && *r != nullptr) {
      const SortRecord record(static_cast<char*>(*r), size);
      check(level == (got.empty() ? 0 : model.firstDifference(record, got.back())));
    }
    return s;
  };
  auto next = [&](void** r) { return sort.getNextRecord(r); };
  if (!collect(sorted, got, size)) return;
  check(zutest::checkDelivery(model, input, got).empty());
  if ((flags & kSearch) != 0 && model.startKey == 0) {
    Records want;  // the records from the key on
    bool hit = false;
    for (const SortRecord& x : input) {
      if (model.compare(x, key) >= 0) want.push_back(x);
      hit = hit || model.compare(x, key) == 0;
    }
    void* r = nullptr;
    got.clear();
    if (failed(sort.getFirstRecordWithKey(key.data(), &r))) return;
    check((r != nullptr) == hit);
    if (r != nullptr) got.emplace_back(static_cast<char*>(r), size);
    if (!collect(next, got, size)) return;
    check(zutest::checkDelivery(model, want, got).empty());
  }
  if ((flags & kResort) != 0) {
    void* r = nullptr;
    got.clear();
    if (failed(sort.reSort()) || failed(sort.getFirstRecord(&r))) return;
    if (r != nullptr) got.emplace_back(static_cast<char*>(r), size);
    if (collect(next, got, size)) check(zutest::checkDelivery(model, input, got).empty());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool ready = mdsPerThreadInit() == 1 && zu::platform::setCollationLocale("C");
  check(ready);
  if (size < kHeader) return 0;
  const uint8_t flags = data[0];
  const bool spill = (flags & kSpill) != 0;
  const auto recordSize = static_cast<unsigned short>(
      spill ? kSpillSizes[data[1] % std::size(kSpillSizes)] : 1 + data[1] % kMaxMemoryRecordSize);
  const unsigned keyCount = data[2] % (kMaxKeys + 1);
  if (size <= kHeader + keyCount * kKeyBytes) return 0;
  std::vector<ZuSortKey> keys;
  for (const uint8_t* k = data + kHeader; keys.size() < keyCount; k += kKeyBytes) {
    const auto type = static_cast<unsigned short>(k[0] & kKeyTypeBits);
    const auto offset = static_cast<unsigned short>((k[1] | k[2] << 8) % recordSize);
    keys.push_back({type, offset, static_cast<unsigned short>(1 + k[3] % (recordSize - offset))});
  }
  const auto startKey = static_cast<unsigned short>(spill ? 0 : data[3] % (keyCount + 1));
  const size_t step = data[4];
  const uint8_t* body = data + kHeader + keyCount * kKeyBytes;
  const size_t bodySize = size - kHeader - keyCount * kKeyBytes;
  const std::uint32_t perRun = kShortBlocks * (kBlockBytes / recordSize);
  const std::uint32_t limit = spill ? kMaxRuns * perRun + 1 : kMaxMemoryRecords;
  const std::uint32_t count = (data[5] | data[6] << 8) % (limit + 1);
  Records input;
  for (std::uint32_t i = 0; i < count; ++i) {
    input.push_back(cut(body, bodySize, i * step, recordSize));
  }

  const std::uint32_t blocksBefore = blocksInUse();
  if (spill) zu::platform::hostFail(zu::platform::HostCall::sysinfo, 1, ENOMEM, true);
  {
    ZuErrorList errors;
    ZuErrorKeeper::setErrorList(&errors);
    {
      ZuSort sort(recordSize);
      for (const ZuSortKey& k : keys) check(sort.addKey(k.type, k.offset, k.length) == ZU_OK);
      sort.setStartKey(startKey);
      bool taken = true;
      for (SortRecord r : input) taken = taken && !failed(sort.addRecord(r.data()));
      const SortRecord key = cut(body, bodySize, count * step + 1, recordSize);
      if (taken) exercise(sort, zutest::SortReference(keys, startKey), input, key, flags);
    }
    ZuErrorKeeper::giveUpErrorList();
  }
  zu::platform::hostRestoreAll();
  check(blocksInUse() == blocksBefore);
  return 0;
}

// The sort with each host call it makes failing in turn, over intake,
// spills, the merge (slices of their own and shared ones), the key search
// and sorting again; and with each 64 KiB block refused in turn. Every run
// ends with the file layer's row or the memory error, or copes; what it
// delivered is in order; no block, handle, descriptor or run file is left.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

#include "errors/keeper.h"
#include "platform/platform.h"
#include "sort/sort.h"
#include "support/dos_world.h"
#include "support/fault_sweep.h"
#include "support/oom_sweep.h"

namespace {

constexpr unsigned short kNoMemory = 30190;
constexpr unsigned short kCannotDelete = 1502;
constexpr unsigned short kKeyBytes = 6;

// A record of `size` bytes whose first kKeyBytes bytes are its key; several
// records share each key.
std::string record(std::uint32_t n, unsigned short size) {
  std::string r(size, static_cast<char>('a' + n % 23));
  const std::uint32_t key = (n * 7919u) % 1000u;
  for (unsigned short i = 0; i < kKeyBytes; ++i) r[i] = static_cast<char>('0' + (key >> (i * 2)) % 10);
  return r;
}

// Reads the sort to its end with `next`, checking the order as it goes.
ZuStatus drain(ZuSort& sort, const std::function<ZuStatus(void**)>& next, std::uint32_t* delivered) {
  std::string previous;
  *delivered = 0;
  for (;;) {
    void* r = nullptr;
    if (next(&r) != ZU_OK) return ZU_ERROR;
    if (r == nullptr) return ZU_OK;
    std::string now(static_cast<const char*>(r), sort.recordSize);
    if (!previous.empty() && std::memcmp(previous.data(), now.data(), kKeyBytes) > 0) {
      ADD_FAILURE() << "out of order after " << *delivered << " records";
    }
    previous = std::move(now);
    ++*delivered;
  }
}

// Intake of `count` records, a full read, a key search and the rest after
// it, then a second key ordering under the start key and a read again.
ZuStatus sortAndRead(std::uint32_t count, unsigned short size) {
  ZuSort sort(size);
  sort.addKey(0, 0, kKeyBytes);
  sort.addKey(ZU_SORTKEY_DESCENDING, kKeyBytes, 1);
  for (std::uint32_t n = 0; n < count; ++n) {
    std::string r = record(n, size);
    if (sort.addRecord(r.data()) != ZU_OK) return ZU_ERROR;
  }
  std::uint32_t seen = 0;
  if (drain(sort, [&](void** r) { return sort.getSorted(r); }, &seen) != ZU_OK) return ZU_ERROR;
  EXPECT_EQ(seen, count);
  std::string key = record(count / 2, size);
  void* found = nullptr;
  if (sort.getFirstRecordWithKey(key.data(), &found) != ZU_OK) return ZU_ERROR;
  EXPECT_NE(found, nullptr);
  if (drain(sort, [&](void** r) { return sort.getNextRecord(r); }, &seen) != ZU_OK) return ZU_ERROR;
  sort.setStartKey(1);
  if (sort.reSort() != ZU_OK) return ZU_ERROR;
  sort.setStartKey(0);
  void* first = nullptr;
  if (sort.getFirstRecord(&first) != ZU_OK) return ZU_ERROR;
  return drain(sort, [&](void** r) { return sort.getNextRecord(r); }, &seen);
}

class SortFaults : public zutest::DosWorld {
 protected:
  void SetUp() override {
    DosWorld::SetUp();
    saved_ = zu::platform::sys.memoryAvailable;
  }
  void TearDown() override {
    zu::platform::sys.memoryAvailable = saved_;
    DosWorld::TearDown();
  }
  // Memory reported as gone: every sort keeps to its first two blocks.
  static void keepToTwoBlocks() {
    zu::platform::sys.memoryAvailable = [] { return std::uint64_t{0}; };
  }
  // Runs the operation and then requires the temporary directory empty.
  std::function<ZuStatus()> leavingNoFile(const std::function<ZuStatus()>& operation) {
    return [this, operation] {
      const ZuStatus status = operation();
      // Only a deletion that failed, and said so, may leave the file, or
      // one that the host said was not there.
      using zu::platform::HostCall;
      const bool denied = zu::platform::hostFailed(HostCall::stat) || zu::platform::hostFailed(HostCall::lstat);
      if (!hostNames("c/TEMP").empty()) {
        EXPECT_TRUE(denied || ZuErrorKeeper::getLastErrorNumber() == kCannotDelete) << "a run file was left";
        for (const std::string& left : hostNames("c/TEMP")) ::unlink(host("c/TEMP/" + left).c_str());
      }
      return status;
    };
  }

 private:
  std::uint64_t (*saved_)() = nullptr;
};

TEST_F(SortFaults, EveryHostFailureEndsWithTheFileLayersRow) {
  keepToTwoBlocks();
  const std::initializer_list<unsigned short> rows = {1501, 1502, 1503, 1506, 1507, 1508,
                                                      1509, 30040, 30041, 30045, kNoMemory};
  zutest::HostSweepTally tally;
  // Records of 100 bytes: three runs, each with a slice of its own.
  EXPECT_TRUE(zutest::sweepHostFaults(leavingNoFile([] { return sortAndRead(3000, 100); }), rows, &tally));
  // Records of 30000 bytes, four to a run: more runs than slots, so the
  // runs share slots of one record.
  EXPECT_TRUE(zutest::sweepHostFaults(leavingNoFile([] { return sortAndRead(16, 30000); }), rows, &tally));
  EXPECT_GT(tally.failures, 100u);
}

TEST_F(SortFaults, EachBlockRefusedInTurn) {
  zutest::SweepReport report;
  EXPECT_TRUE(zutest::sweepOutOfMemory(
      [this] {
        // Five blocks' worth: a refusal of the third or a later block
        // spills instead, and the sort goes on with the blocks it has.
        ZuSort sort(64);
        sort.addKey(0, 0, kKeyBytes);
        for (std::uint32_t n = 0; n < 5000; ++n) {
          std::string r = record(n, 64);
          if (sort.addRecord(r.data()) != ZU_OK) return false;
        }
        std::uint32_t seen = 0;
        unsigned short level = 0;
        const bool read =
            drain(sort, [&](void** r) { return sort.getSortedWithCompare(r, &level); }, &seen) == ZU_OK;
        EXPECT_TRUE(!read || seen == 5000u);
        return read;
      },
      &report));
  EXPECT_GE(report.failures, 2u);
  EXPECT_TRUE(hostNames("c/TEMP").empty());
}

}  // namespace

// The scratch store against a byte array: 34 MiB written through a cache of
// 4 pages, so pages go out to both temporary files and come back, then
// random transfers of every kind; the allocator against its invariants; the
// store under refused host calls and refused blocks.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>
#include <random>
#include <vector>

#include "platform/host.h"
#include "storage/tmp_file.h"
#include "strings/string.h"
#include "support/dos_world.h"
#include "support/fault_sweep.h"
#include "support/oom_sweep.h"

namespace {

using zu::platform::HostCall;
using zu::storage::kFirstFilePages;
using zu::storage::kPageSize;

class TmpFile : public zutest::DosWorld {};

std::vector<unsigned char> randomBytes(std::mt19937& rng, std::size_t n) {
  std::vector<unsigned char> bytes(n);
  for (auto& b : bytes) b = static_cast<unsigned char>(rng());
  return bytes;
}

TEST_F(TmpFile, TransfersMatchAByteArrayAcrossBothFiles) {
  std::mt19937 rng(11);
  const std::uint32_t size = (kFirstFilePages + 700) * kPageSize;
  std::vector<unsigned char> model = randomBytes(rng, size);
  {
    ZuTmpFile store;
    ASSERT_EQ(store.writeHuge(1, model.data() + 1, size - 1), ZU_OK);
    EXPECT_EQ(store.nextOffset, size);
    EXPECT_EQ(store.firstPages, kFirstFilePages) << "the first file stops at 32 MiB";
    EXPECT_NE(store.secondName, nullptr);
    ZuString text;
    for (int op = 0; op < 4000; ++op) {
      const std::uint32_t at = 1 + rng() % (size - 70000);
      const std::uint32_t n = 1 + rng() % 5000;
      switch (rng() % 6) {
        case 0: {
          const std::vector<unsigned char> bytes = randomBytes(rng, n);
          ASSERT_EQ(store.tmpWrite(at, bytes.data(), n), ZU_OK);
          std::memcpy(&model[at], bytes.data(), n);
          break;
        }
        case 1: {
          std::vector<unsigned char> got(n);
          ASSERT_EQ(store.tmpRead(at, got.data(), n), ZU_OK);
          ASSERT_EQ(0, std::memcmp(got.data(), &model[at], n)) << "at " << at;
          break;
        }
        case 2: {
          unsigned char* p = nullptr;
          unsigned short available = 0;
          const unsigned short forWrite = rng() % 2;
          ASSERT_EQ(store.tmpPointer(at, &p, &available, forWrite), ZU_OK);
          ASSERT_EQ(available, kPageSize - at % kPageSize);
          ASSERT_EQ(0, std::memcmp(p, &model[at], available));
          if (forWrite) std::memset(p, op & 0xff, available), std::memset(&model[at], op & 0xff, available);
          break;
        }
        case 3: {
          std::vector<unsigned char> got(n * 13);
          ASSERT_EQ(store.readHuge(at, got.data(), n * 13), ZU_OK);
          ASSERT_EQ(0, std::memcmp(got.data(), &model[at], n * 13));
          break;
        }
        case 4:
          ASSERT_EQ(store.read(at, &text, n), ZU_OK);
          ASSERT_EQ(text.getLength(), n);
          ASSERT_EQ(0, std::memcmp(text.getBytes(), &model[at], n));
          break;
        default:
          if (op % 7 == 0) store.tmpLoseFocus();
      }
    }
    std::vector<unsigned char> all(size - 1);
    ASSERT_EQ(store.readHuge(1, all.data(), size - 1), ZU_OK);
    EXPECT_EQ(0, std::memcmp(all.data(), model.data() + 1, size - 1));
    EXPECT_EQ(hostNames("c/TEMP").size(), 2u);
  }
  EXPECT_TRUE(hostNames("c/TEMP").empty()) << "the files go with the store";
}

// Small cases whose answer is fixed, each one a distinct rule.
TEST_F(TmpFile, AllocationAndResidenceRules) {
  ZuTmpFile store;
  EXPECT_EQ(store.getContiguousSpace(1), 4u);
  EXPECT_EQ(store.nextOffset, 5u);
  EXPECT_EQ(store.getContiguousSpace(2040), 8u);
  EXPECT_EQ(store.getContiguousSpace(2041), 2048u);
  EXPECT_EQ(store.getContiguousSpace(5000), 4096u) << "a large piece starts on a page";
  // Four pages falling two and two in the two sets stay in the cache.
  const char page[kPageSize] = {'x'};
  for (std::uint32_t p = 0; p < 4; ++p) ASSERT_EQ(store.tmpWrite(p * kPageSize, page, kPageSize), ZU_OK);
  EXPECT_EQ(store.firstName, nullptr);
  ASSERT_EQ(store.tmpWrite(4 * kPageSize, page, 1), ZU_OK);
  EXPECT_NE(store.firstName, nullptr) << "a third page in a set pushes one out";
  void* p = nullptr;
  unsigned short available = 0;
  const std::uint32_t top = store.nextOffset;
  ASSERT_EQ(store.tmpPointer(top + 5000, &p, &available, 1), ZU_OK);
  EXPECT_EQ(store.nextOffset, top) << "a pointer does not claim space";
  ASSERT_EQ(store.tmpPointer(2047, &p, &available, 0), ZU_OK);
  EXPECT_EQ(available, 1);

  store.tmpTruncate();
  EXPECT_EQ(store.firstName, nullptr);
  EXPECT_TRUE(hostNames("c/TEMP").empty());
  std::uint32_t at = 0;
  ASSERT_EQ(store.tmpFindSpace(300, &at), ZU_OK);
  EXPECT_EQ(at, 1u) << "offsets start again from 1";
  ASSERT_EQ(store.tmpFindSpace(0xFFFFFFFF, &at), ZU_OK);
  EXPECT_EQ(at, 301u);
  store.tmpFreeSpace(1000, 0xFFFFFFFF);
  EXPECT_EQ(store.nextOffset, 1000u) << "giving back the unused tail of everything";
}

// Random claims and releases: live pieces never overlap and never hold 0;
// the free list stays ordered, merged, at least 256 bytes an extent, below
// the top and clear of live pieces; releasing everything adjacent to the
// top brings the top down.
void checkFreeList(const ZuTmpFile& store, const std::map<std::uint32_t, std::uint32_t>& live) {
  std::uint32_t previousEnd = 0;
  for (unsigned short i = 0; i < store.freeList.size(); ++i) {
    const auto* e = static_cast<const TmpSpace*>(store.freeList.at(i));
    ASSERT_GE(e->size, 256u);
    ASSERT_GT(e->start, previousEnd) << "ordered and merged";
    previousEnd = e->start + e->size;
    ASSERT_LT(previousEnd, store.nextOffset);
    auto next = live.lower_bound(e->start);
    ASSERT_TRUE(next == live.end() || previousEnd <= next->first) << "free space handed out";
  }
}

TEST_F(TmpFile, AllocatorKeepsPiecesApartAndExtentsMerged) {
  std::mt19937 rng(5);
  ZuTmpFile store;
  std::map<std::uint32_t, std::uint32_t> live;  // start -> size
  for (int op = 0; op < 6000; ++op) {
    if (live.empty() || rng() % 5 < 3) {
      const std::uint32_t size = 1 + rng() % (rng() % 4 == 0 ? 3000 : 400);
      std::uint32_t at = 0;
      ASSERT_EQ(store.tmpFindSpace(size, &at), ZU_OK);
      ASSERT_NE(at, 0u);
      auto next = live.lower_bound(at);
      ASSERT_TRUE(next == live.end() || at + size <= next->first) << "overlaps what follows";
      ASSERT_TRUE(next == live.begin() || std::prev(next)->first + std::prev(next)->second <= at);
      live[at] = size;
    } else {
      auto it = std::next(live.begin(), static_cast<long>(rng() % live.size()));
      store.tmpFreeSpace(it->first, it->second);
      live.erase(it);
    }
    checkFreeList(store, live);
  }
  while (!live.empty()) {
    const auto last = std::prev(live.end());
    store.tmpFreeSpace(last->first, last->second);
    live.erase(last);
    checkFreeList(store, live);
  }
}

// A first file that refuses a new page sends it, and every later new page,
// to a second file; pages the first file holds are still read from it.
TEST_F(TmpFile, FirstFileRefusingANewPageSpillsToTheSecond) {
  ZuTmpFile store(4096);  // one set: the third page pushes one out
  std::vector<unsigned char> model(12 * kPageSize);
  for (std::size_t i = 0; i < model.size(); ++i) model[i] = static_cast<unsigned char>(i * 7 + i / kPageSize);
  ASSERT_EQ(store.tmpWrite(1, &model[1], 4 * kPageSize), ZU_OK);
  const unsigned short before = store.firstPages;
  zu::platform::hostFail(HostCall::pwrite, 1, ENOSPC);
  ASSERT_EQ(store.tmpWrite(4 * kPageSize, &model[4 * kPageSize], 8 * kPageSize), ZU_OK);
  zu::platform::hostRestoreAll();
  EXPECT_EQ(store.firstPages, before);
  EXPECT_NE(store.secondName, nullptr);
  std::vector<unsigned char> got(model.size() - 1);
  ASSERT_EQ(store.tmpRead(1, got.data(), got.size()), ZU_OK);
  EXPECT_EQ(0, std::memcmp(got.data(), &model[1], got.size()));
  EXPECT_TRUE(takeErrors().empty()) << "the refusal is no failure";
}

// A store's whole life with pages going out and back, each host call failed
// in turn: a failure reports the file layer's row, and the files and the
// memory go with the store.
TEST_F(TmpFile, EveryHostFailureEndsWithItsRowAndNothingLeft) {
  zutest::HostSweepTally tally;
  EXPECT_TRUE(zutest::sweepHostFaults(
      [this] {
        ZuStatus status = ZU_OK;
        {
          ZuTmpFile store(4096);
          unsigned char page[kPageSize];
          for (std::uint32_t p = 0; status == ZU_OK && p < 6; ++p) {
            std::memset(page, static_cast<int>(p), sizeof page);
            status = store.tmpWrite(p * kPageSize, page, kPageSize);
            if (p == 3) store.tmpLoseFocus();
          }
          for (std::uint32_t p = 0; status == ZU_OK && p < 6; ++p) {
            status = store.tmpRead(p * kPageSize + 100, page, 10);
            if (status == ZU_OK && page[9] != p) status = ZU_ERROR, ADD_FAILURE() << "page " << p;
          }
        }
        // Looked at past the host table, which the sweep is failing.
        // A file stays only when its delete was refused.
        if (!std::filesystem::is_empty(host("c/TEMP"))) {
          bool deleteRefused = false;
          for (HostCall step : {HostCall::unlink, HostCall::lstat, HostCall::stat, HostCall::opendir,
                                HostCall::readdir}) {
            deleteRefused = deleteRefused || zu::platform::hostFailed(step);
          }
          EXPECT_TRUE(deleteRefused) << "a temporary file outlived its store";
          for (const auto& entry : std::filesystem::directory_iterator(host("c/TEMP"))) {
            std::filesystem::remove(entry.path());
          }
        }
        return status;
      },
      {1501, 1502, 1503, 1506, 1507, 1508, 1509, 30040, 30041, 30045, 30190}, &tally));
  EXPECT_GT(tally.failures, 10u);
}

TEST_F(TmpFile, RefusedBlocksFailTheStepThatNeededThem) {
  zutest::SweepReport report;
  EXPECT_TRUE(zutest::sweepOutOfMemory([] {
    ZuTmpFile store(4096);
    std::uint32_t at = 0;
    bool ok = store.tmpFindSpace(600, &at) == ZU_OK;
    unsigned char page[kPageSize] = {};
    for (std::uint32_t p = 0; ok && p < 4; ++p) ok = store.tmpWrite(p * kPageSize, page, kPageSize) == ZU_OK;
    // A free extent that cannot be recorded is lost quietly.
    if (ok) store.tmpFreeSpace(at, 300);
    return ok;
  }, &report));
  EXPECT_GE(report.failures, 1u);
}

}  // namespace

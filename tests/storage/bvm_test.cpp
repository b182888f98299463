// The bvm cache against a byte array of the file: random reads (with both
// hints), writes through the cache, appends behind its back, flushes and
// closes, over two files and a cache far smaller than they are, so pages
// are replaced all the time. Every read must give the file's bytes.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "os/file.h"
#include "storage/bvm.h"
#include "support/dos_world.h"
#include "support/fault_sweep.h"
#include "support/oom_sweep.h"

namespace {

using zutest::u;

constexpr std::uint32_t kPage = 8192;

class Bvm : public zutest::DosWorld {};

struct ModelFile {
  int handle = 0;
  std::string bytes;

  void put(std::uint32_t at, const std::string& data) {
    if (bytes.size() < at + data.size()) bytes.resize(at + data.size(), '\0');
    bytes.replace(at, data.size(), data);
  }
};

TEST_F(Bvm, ReadsGiveTheFilesBytesWhateverTheCacheHolds) {
  void* cache = bvmInit(1);  // 8 frames for files of about 30 pages each
  ASSERT_NE(cache, nullptr);
  EXPECT_EQ(bvmInit(5), cache) << "one cache for the task";
  std::mt19937 rng(20261124);
  const auto in = [&](std::uint32_t n) { return static_cast<std::uint32_t>(rng() % n); };
  const auto text = [&](std::uint32_t n) {
    std::string s(n, '\0');
    for (char& ch : s) ch = static_cast<char>('a' + in(26));
    return s;
  };
  ModelFile files[2];
  const char* names[2] = {"ONE.DAT", "TWO.DAT"};
  for (int f = 0; f < 2; ++f) {
    unsigned char name[256];
    std::strcpy(reinterpret_cast<char*>(name), names[f]);
    ASSERT_EQ(bosFileOpen(name, ZU_OPEN_CREATE, &files[f].handle), ZU_OK);
    files[f].put(0, text(30 * kPage + 100));
    ASSERT_EQ(bosFileWrite(files[f].handle, 0, files[f].bytes.data(), files[f].bytes.size()), ZU_OK);
  }
  for (int step = 0; step < 4000; ++step) {
    ModelFile& m = files[in(2)];
    const std::uint32_t size = static_cast<std::uint32_t>(m.bytes.size());
    const std::uint32_t at = in(size + kPage);
    const unsigned what = in(100);
    if (what < 60) {
      const std::uint32_t count = in(3 * kPage);
      std::string got(count, '\0');
      std::uint32_t done = 0xDEAD;
      ASSERT_EQ(bvmFileRead(cache, m.handle, static_cast<std::int32_t>(at), got.data(), count, &done,
                            in(2) != 0 ? VM_HINT_NORMAL : VM_HINT_NO_REPLACE),
                ZU_OK);
      const std::string want = at < size ? m.bytes.substr(at, count) : std::string();
      ASSERT_EQ(got.substr(0, done), want) << "step " << step << " at " << at << " count " << count;
    } else if (what < 90) {
      const std::string data = text(in(2 * kPage));
      ASSERT_EQ(bvmFileWrite(cache, m.handle, static_cast<std::int32_t>(at), data.data(),
                             static_cast<std::uint32_t>(data.size())),
                ZU_OK);
      m.put(at, data);
    } else if (what < 97) {
      // Appended behind the cache's back: only the bytes past what a
      // frame holds may change that way, and the cache must see them.
      const std::string data = text(in(kPage));
      ASSERT_EQ(bosFileWrite(m.handle, static_cast<std::int32_t>(size), data.data(),
                             static_cast<std::uint32_t>(data.size())),
                ZU_OK);
      m.put(size, data);
    } else {
      ASSERT_EQ(bvmFlush(cache, m.handle), ZU_OK);
    }
  }
  for (ModelFile& m : files) EXPECT_EQ(bvmFileClose(cache, m.handle), ZU_OK);
  EXPECT_EQ(bvmFileClose(cache, 0), ZU_OK);
  bvmTerm(cache);
  bvmTerm(cache);
  EXPECT_EQ(bvmInit(0), bvmInit(0)) << "a new cache after the last term";
  void* empty = bvmInit(0);
  bvmTerm(empty);
  bvmTerm(empty);
  bvmTerm(empty);
}

// Every host call of a cache's life failed in turn: the file layer's row or
// the memory error, and nothing left behind.
TEST_F(Bvm, EachHostFailureEndsWithItsRow) {
  writeHost("c/PAGES.DAT", std::string(5 * kPage + 10, 'p'));
  zutest::HostSweepTally tally;
  EXPECT_TRUE(zutest::sweepHostFaults(
      [] {
        void* cache = bvmInit(1);
        if (cache == nullptr) return ZU_ERROR;
        unsigned char name[256] = "PAGES.DAT";
        int h = 0;
        ZuStatus status = bosFileOpen(name, ZU_OPEN_WRITE, &h);
        char buffer[3 * kPage];
        std::uint32_t got = 0;
        for (std::int32_t at = 0; status == ZU_OK && at < static_cast<std::int32_t>(5 * kPage); at += 3000) {
          status = bvmFileRead(cache, h, at, buffer, sizeof buffer, &got, VM_HINT_NORMAL);
          if (status == ZU_OK) status = bvmFileWrite(cache, h, at + 7, "written", 7);
        }
        if (h != 0 && bvmFileClose(cache, h) != ZU_OK) status = ZU_ERROR;
        bvmTerm(cache);
        return status;
      },
      {1503, 1506, 1507, 1508, 1509, 30040, 30041, 30045, 30190}, &tally));
  // The clean run reads every page and writes through the cache, so the
  // sweep reaches memory, the open, the transfers and the close.
  EXPECT_GT(tally.runs, 20u);
  EXPECT_GT(tally.failures, 10u);
}

// Each block the cache asks for refused in turn: the read that needed it
// fails with the memory error, the pages already cached stay usable.
TEST_F(Bvm, EachBlockRefusedInTurn) {
  writeHost("c/PAGES.DAT", std::string(20 * kPage, 'q'));
  zutest::SweepReport report;
  EXPECT_TRUE(zutest::sweepOutOfMemory([] {
    void* cache = bvmInit(2);
    if (cache == nullptr) return false;
    unsigned char name[256] = "PAGES.DAT";
    int h = 0;
    bool ok = bosFileOpen(name, 0, &h) == ZU_OK;
    char buffer[kPage];
    std::uint32_t got = 0;
    for (std::int32_t at = 0; ok && at < static_cast<std::int32_t>(20 * kPage); at += kPage) {
      ok = bvmFileRead(cache, h, at, buffer, sizeof buffer, &got, VM_HINT_NORMAL) == ZU_OK;
      EXPECT_TRUE(!ok || (got == kPage && buffer[0] == 'q'));
    }
    if (h != 0) bvmFileClose(cache, h);
    bvmTerm(cache);
    return ok;
  }, &report));
  EXPECT_GE(report.failures, 3u) << "the cache, its slots and each of two blocks";
}

}  // namespace

// Virtual files in one store against byte arrays: several files written,
// grown, read and truncated in turns, in a store whose cache is one set, so
// their blocks interleave and go to disk and back.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "errors/keeper.h"
#include "storage/shared_file.h"
#include "support/dos_world.h"

namespace {

constexpr std::uint32_t kBlock = 4096;

class SharedFile : public zutest::DosWorld {};

TEST_F(SharedFile, VirtualFilesKeepTheirOwnBytes) {
  std::mt19937 rng(3);
  ZuTmpFile store(4096);
  std::vector<ZuSharedFile*> files;
  std::vector<std::vector<unsigned char>> models(4);
  for (int i = 0; i < 4; ++i) files.push_back(new ZuSharedFile(&store));
  for (int op = 0; op < 3000; ++op) {
    const std::size_t f = rng() % files.size();
    ZuSharedFile& file = *files[f];
    std::vector<unsigned char>& model = models[f];
    const unsigned roll = rng() % 20;
    if (roll == 0) {
      file.truncate();
      model.clear();
      EXPECT_EQ(file.blocks.size(), 0);
    } else if (roll < 11 || model.empty()) {
      // Anywhere up to the end of what was written, so the file grows
      // without gaps whose bytes nobody wrote.
      const std::uint32_t at = rng() % (static_cast<std::uint32_t>(model.size()) + 1);
      std::vector<unsigned char> bytes(1 + rng() % 9000);
      for (auto& b : bytes) b = static_cast<unsigned char>(rng());
      ASSERT_EQ(file.write(at, bytes.data(), static_cast<std::uint32_t>(bytes.size())), ZU_OK);
      if (model.size() < at + bytes.size()) model.resize(at + bytes.size());
      std::memcpy(&model[at], bytes.data(), bytes.size());
      ASSERT_GE(file.blocks.size() * kBlock, model.size());
    } else {
      const std::uint32_t at = rng() % model.size();
      const std::uint32_t n = 1 + rng() % static_cast<std::uint32_t>(model.size() - at);
      std::vector<unsigned char> got(n);
      ASSERT_EQ(file.read(at, got.data(), n), ZU_OK);
      ASSERT_EQ(0, std::memcmp(got.data(), &model[at], n)) << "file " << f << " at " << at;
    }
  }
  EXPECT_NE(store.firstName, nullptr) << "the blocks went to disk";
  // A read past the blocks is refused.
  char byte = 0;
  EXPECT_EQ(files[0]->read(files[0]->blocks.size() * kBlock, &byte, 1), ZU_ERROR);
  EXPECT_EQ(ZuErrorKeeper::getLastErrorNumber(), 1517);
  for (ZuSharedFile* file : files) delete file;
  EXPECT_EQ(store.nextOffset, 1u) << "every block given back";
}

TEST_F(SharedFile, BlockPastTheArrayLimitFailsAndEarlierBytesStay) {
  ZuTmpFile store;
  ZuSharedFile file(&store);
  const std::uint32_t last = 16000 * kBlock - 2;
  ASSERT_EQ(file.write(last, "ab", 2), ZU_OK);
  EXPECT_EQ(file.blocks.size(), 16000);
  EXPECT_EQ(file.write(last, "xyz", 3), ZU_ERROR);
  EXPECT_EQ(ZuErrorKeeper::getLastErrorNumber(), 2722);
  char got[2] = {};
  ASSERT_EQ(file.read(last, got, 2), ZU_OK);
  EXPECT_EQ(std::memcmp(got, "xy", 2), 0) << "the pieces before the failure are written";
}

}  // namespace

// The bvm read cache beside plain system calls on the same file, each pair
// in the same run:
//  - Random: 100-byte reads at uniformly random offsets of a 64 MiB file
//    through a cache of 1,024 frames (128 blocks of 8), against pread of the
//    same reads. The counter hit_ratio is the share of the pages the reads
//    touched that came from a frame, counted from the reads the cache made
//    of the file (about 1,024 / 8,192 of the file fits).
//  - Sequential: the whole file in 8 KiB reads, against read().
// The file is a temporary file made through the library; the system calls
// go to the descriptor the library reads it through.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include <zuutl.h>

#include "platform/host.h"

namespace {

using zu::platform::host;
using zu::platform::kDefaultHost;

constexpr std::uint32_t kFileBytes = std::uint32_t{64} << 20;
constexpr std::uint32_t kReadBytes = 100;
constexpr std::uint32_t kPageBytes = 8192;
constexpr unsigned short kCacheBlocks = 128;  // 1,024 frames
constexpr std::uint32_t kRandomReads = 200000;
constexpr std::uint32_t kWriteChunk = 65536;
constexpr std::uint32_t kNameRoom = 256;
constexpr std::uint32_t kSeed = 424242;

// The file's reads through the host table: their count, and the descriptor.
std::uint64_t fileReads = 0;
int fileDescriptor = -1;

ssize_t countingPread(int fd, void* buffer, std::size_t size, off_t offset) {
  ++fileReads;
  fileDescriptor = fd;
  return kDefaultHost.pread(fd, buffer, size, offset);
}

class TestFile {
 public:
  TestFile() {
    std::vector<unsigned char> chunk(kWriteChunk);
    std::mt19937 rng(kSeed);
    for (auto& b : chunk) b = static_cast<unsigned char>(rng());
    if (bosFileOpen(name_, ZU_OPEN_WRITE | ZU_OPEN_TEMP, &handle_) != ZU_OK) return;
    for (std::uint32_t at = 0; at < kFileBytes; at += kWriteChunk) {
      if (bosFileWrite(handle_, static_cast<std::int32_t>(at), chunk.data(), kWriteChunk) != ZU_OK) return;
    }
    // One read through the library shows the descriptor behind the handle.
    host.pread = countingPread;
    std::uint32_t got = 0;
    bosFileRead(handle_, 0, chunk.data(), 1, &got);
    ready_ = fileDescriptor >= 0;
  }
  ~TestFile() {
    host.pread = kDefaultHost.pread;
    if (handle_ > 0) bosFileClose(handle_);
    if (name_[0] != '\0') bosFileDelete(name_);
  }
  TestFile(const TestFile&) = delete;
  TestFile& operator=(const TestFile&) = delete;

  bool ready() const { return ready_; }
  int handle() const { return handle_; }

 private:
  unsigned char name_[kNameRoom] = {};
  int handle_ = 0;
  bool ready_ = false;
};

TestFile& file() {
  static TestFile f;
  return f;
}

std::vector<std::uint32_t> randomOffsets() {
  std::mt19937 rng(kSeed);
  std::uniform_int_distribution<std::uint32_t> at(0, kFileBytes - kReadBytes);
  std::vector<std::uint32_t> offsets(kRandomReads);
  for (auto& o : offsets) o = at(rng);
  return offsets;
}

// Pages a read of `count` bytes at each offset touches.
std::uint64_t pagesTouched(const std::vector<std::uint32_t>& offsets, std::uint32_t count) {
  std::uint64_t pages = 0;
  for (std::uint32_t o : offsets) pages += (o + count - 1) / kPageBytes - o / kPageBytes + 1;
  return pages;
}

void BM_BvmRandom100(benchmark::State& state) {
  if (!file().ready()) return state.SkipWithError("no test file");
  const std::vector<std::uint32_t> offsets = randomOffsets();
  void* cache = bvmInit(kCacheBlocks);
  unsigned char buffer[kReadBytes];
  // A first pass fills the frames, so the timed passes see the steady state.
  std::uint32_t got = 0;
  for (std::uint32_t o : offsets) bvmFileRead(cache, file().handle(), static_cast<std::int32_t>(o), buffer, kReadBytes, &got, VM_HINT_NORMAL);
  fileReads = 0;
  std::uint64_t passes = 0;
  for (auto _ : state) {
    for (std::uint32_t o : offsets) {
      if (bvmFileRead(cache, file().handle(), static_cast<std::int32_t>(o), buffer, kReadBytes, &got,
                      VM_HINT_NORMAL) != ZU_OK) {
        return state.SkipWithError("bvmFileRead failed");
      }
      benchmark::DoNotOptimize(buffer);
    }
    ++passes;
  }
  const double touched = static_cast<double>(pagesTouched(offsets, kReadBytes) * passes);
  state.counters["hit_ratio"] = 1.0 - static_cast<double>(fileReads) / touched;
  state.counters["reads_per_s"] = benchmark::Counter(static_cast<double>(offsets.size() * passes), benchmark::Counter::kIsRate);
  state.SetBytesProcessed(static_cast<std::int64_t>(offsets.size() * passes * kReadBytes));
  bvmFlush(cache, file().handle());
  bvmTerm(cache);
}
BENCHMARK(BM_BvmRandom100)->Unit(benchmark::kMillisecond);

void BM_PreadRandom100(benchmark::State& state) {
  if (!file().ready()) return state.SkipWithError("no test file");
  const std::vector<std::uint32_t> offsets = randomOffsets();
  unsigned char buffer[kReadBytes];
  std::uint64_t passes = 0;
  for (auto _ : state) {
    for (std::uint32_t o : offsets) {
      if (::pread(fileDescriptor, buffer, kReadBytes, o) != static_cast<ssize_t>(kReadBytes)) {
        return state.SkipWithError("pread failed");
      }
      benchmark::DoNotOptimize(buffer);
    }
    ++passes;
  }
  state.counters["reads_per_s"] = benchmark::Counter(static_cast<double>(offsets.size() * passes), benchmark::Counter::kIsRate);
  state.SetBytesProcessed(static_cast<std::int64_t>(offsets.size() * passes * kReadBytes));
}
BENCHMARK(BM_PreadRandom100)->Unit(benchmark::kMillisecond);

void BM_BvmSequential8K(benchmark::State& state) {
  if (!file().ready()) return state.SkipWithError("no test file");
  void* cache = bvmInit(kCacheBlocks);
  std::vector<unsigned char> buffer(kPageBytes);
  fileReads = 0;
  std::uint64_t reads = 0;
  for (auto _ : state) {
    for (std::uint32_t at = 0; at < kFileBytes; at += kPageBytes, ++reads) {
      std::uint32_t got = 0;
      if (bvmFileRead(cache, file().handle(), static_cast<std::int32_t>(at), buffer.data(), kPageBytes, &got,
                      VM_HINT_NORMAL) != ZU_OK) {
        return state.SkipWithError("bvmFileRead failed");
      }
      benchmark::DoNotOptimize(buffer.data());
    }
  }
  state.counters["hit_ratio"] = 1.0 - static_cast<double>(fileReads) / static_cast<double>(reads);
  state.SetBytesProcessed(static_cast<std::int64_t>(reads * kPageBytes));
  bvmFlush(cache, file().handle());
  bvmTerm(cache);
}
BENCHMARK(BM_BvmSequential8K)->Unit(benchmark::kMillisecond);

void BM_ReadSequential8K(benchmark::State& state) {
  if (!file().ready()) return state.SkipWithError("no test file");
  std::vector<unsigned char> buffer(kPageBytes);
  std::uint64_t reads = 0;
  for (auto _ : state) {
    ::lseek(fileDescriptor, 0, SEEK_SET);
    for (std::uint32_t at = 0; at < kFileBytes; at += kPageBytes, ++reads) {
      if (::read(fileDescriptor, buffer.data(), kPageBytes) != static_cast<ssize_t>(kPageBytes)) {
        return state.SkipWithError("read failed");
      }
      benchmark::DoNotOptimize(buffer.data());
    }
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(reads * kPageBytes));
}
BENCHMARK(BM_ReadSequential8K)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();

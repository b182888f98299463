// The external sort beside its peers, each pair in the same run:
//  - File: 100-byte records (99 printable bytes and a newline) keyed on the
//    99 bytes, read from a file and written to one, within the sort's 64
//    blocks (4 MiB), against `LC_ALL=C sort -S 4M --parallel=1` on the same
//    file. ZU_BENCH_SORT_MB sets the file's size in MB (100 by default).
//  - Memory: 4 MiB of 16-byte records under one 4-byte big-endian key,
//    against std::sort; both sides include putting the records into the
//    sorter's storage and walking the result.
//  - SortedArray: 10,000 objects added in random order to a ZuSortedArray,
//    against a std::vector kept sorted by inserting at lower_bound; both
//    compare through the objects' compare, so the containers differ only.
#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "containers/sorted_array.h"
#include "sort/sort.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMegabyte = 1000000;
constexpr std::size_t kDefaultFileMegabytes = 100;
constexpr const char* kSizeVariable = "ZU_BENCH_SORT_MB";
constexpr unsigned short kFileRecord = 100;
constexpr unsigned short kFileKey = kFileRecord - 1;  // all but the newline
constexpr char kFirstPrintable = ' ';
constexpr char kLastPrintable = '~';
constexpr std::size_t kIoChunk = std::size_t{1} << 20;
constexpr mode_t kNewFileMode = 0644;

constexpr std::size_t kMemoryBytes = std::size_t{4} << 20;
constexpr unsigned short kKeyBytes = 4;
constexpr std::size_t kPayloadBytes = 12;
constexpr unsigned kByteBits = 8;
constexpr unsigned kByteMask = 0xFF;

constexpr std::uint32_t kArrayItems = 10000;

// The records' file, made once in a directory removed at exit.
class Workspace {
 public:
  static Workspace& get() {
    static Workspace w;
    return w;
  }
  const fs::path& input() const { return input_; }
  fs::path output(const char* name) const { return dir_ / name; }
  std::size_t bytes() const { return bytes_; }
  ~Workspace() { fs::remove_all(dir_); }

 private:
  Workspace() {
    std::string pattern = (fs::temp_directory_path() / "zu-bench-sort-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) std::abort();
    dir_ = pattern;
    input_ = dir_ / "records";
    const char* size = std::getenv(kSizeVariable);
    const std::size_t megabytes = size != nullptr ? std::strtoul(size, nullptr, 10) : kDefaultFileMegabytes;
    const std::size_t records = megabytes * kMegabyte / kFileRecord;
    bytes_ = records * kFileRecord;
    std::mt19937 rng(42);
    std::uniform_int_distribution<int> byte(kFirstPrintable, kLastPrintable);
    std::ofstream out(input_, std::ios::binary);
    std::string record(kFileRecord, '\n');
    for (std::size_t r = 0; r < records; ++r) {
      for (unsigned short i = 0; i < kFileKey; ++i) record[i] = static_cast<char>(byte(rng));
      out << record;
    }
  }

  fs::path dir_, input_;
  std::size_t bytes_ = 0;
};

bool writeAll(int fd, const char* bytes, std::size_t count) {
  while (count > 0) {
    const ssize_t done = ::write(fd, bytes, count);
    if (done <= 0) return false;
    bytes += done;
    count -= static_cast<std::size_t>(done);
  }
  return true;
}

// Reads the file into the sort a chunk at a time and writes what it
// delivers through a buffer of the same size.
bool zuSortFile(const fs::path& input, const fs::path& output, unsigned short* runs) {
  ZuSort sort(kFileRecord);
  if (sort.addKey(0, 0, kFileKey) != ZU_OK) return false;
  const int in = ::open(input.c_str(), O_RDONLY);
  if (in < 0) return false;
  std::vector<char> chunk(kIoChunk - kIoChunk % kFileRecord);
  bool ok = true;
  for (ssize_t got; ok && (got = ::read(in, chunk.data(), chunk.size())) > 0;) {
    // Whole records only: a regular file's reads stop short only at its end.
    for (ssize_t at = 0; ok && at + kFileRecord <= got; at += kFileRecord) {
      ok = sort.addRecord(chunk.data() + at) == ZU_OK;
    }
  }
  ::close(in);
  const int out = ::open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, kNewFileMode);
  if (out < 0) return false;
  std::size_t held = 0;
  for (void* record = nullptr; ok;) {
    ok = sort.getSorted(&record) == ZU_OK;
    if (!ok || record == nullptr) break;
    if (held + kFileRecord > chunk.size()) {
      ok = writeAll(out, chunk.data(), held);
      held = 0;
    }
    std::memcpy(chunk.data() + held, record, kFileRecord);
    held += kFileRecord;
  }
  ok = ok && writeAll(out, chunk.data(), held);
  *runs = sort.runCount;
  return ::close(out) == 0 && ok;
}

void FileZuSort(benchmark::State& state) {
  const Workspace& w = Workspace::get();
  unsigned short runs = 0;
  for (auto _ : state) {
    if (!zuSortFile(w.input(), w.output("zusort.out"), &runs)) state.SkipWithError("ZuSort failed");
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * w.bytes()));
  state.counters["runs"] = runs;
}

void FileGnuSort(benchmark::State& state) {
  const Workspace& w = Workspace::get();
  const std::string command = "LC_ALL=C sort -S 4M --parallel=1 -o '" + w.output("gnusort.out").string() +
                              "' '" + w.input().string() + "'";
  for (auto _ : state) {
    if (std::system(command.c_str()) != 0) state.SkipWithError("sort failed or is not on PATH");
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * w.bytes()));
}

struct Record {
  unsigned char key[kKeyBytes];  // big-endian, so byte order is numeric order
  unsigned char payload[kPayloadBytes];
};

// Big-endian keys in byte order: the compiler turns this into one load and
// a byte swap per side.
bool keyLess(const Record& a, const Record& b) { return std::memcmp(a.key, b.key, kKeyBytes) < 0; }

const std::vector<Record>& memoryRecords() {
  static const std::vector<Record> records = [] {
    std::vector<Record> all(kMemoryBytes / sizeof(Record));
    std::mt19937 rng(9);
    std::uint32_t serial = 0;
    for (Record& r : all) {
      const std::uint32_t k = rng();
      for (unsigned i = 0; i < kKeyBytes; ++i) {
        r.key[i] = static_cast<unsigned char>((k >> (kByteBits * (kKeyBytes - 1 - i))) & kByteMask);
      }
      std::memset(r.payload, 0, sizeof r.payload);
      std::memcpy(r.payload, &serial, sizeof serial);
      ++serial;
    }
    return all;
  }();
  return records;
}

void MemoryZuSort(benchmark::State& state) {
  const std::vector<Record>& records = memoryRecords();
  unsigned short runs = 0;
  for (auto _ : state) {
    ZuSort sort(sizeof(Record));
    sort.addKey(0, 0, kKeyBytes);
    for (const Record& r : records) {
      void* slot = nullptr;
      if (sort.nextSlot(&slot) != ZU_OK) {
        state.SkipWithError("nextSlot failed");
        break;
      }
      std::memcpy(slot, &r, sizeof r);
    }
    std::uint32_t sum = 0;
    for (void* record = nullptr; sort.getSorted(&record) == ZU_OK && record != nullptr;) {
      sum += static_cast<const Record*>(record)->payload[0];
    }
    benchmark::DoNotOptimize(sum);
    runs = sort.runCount;
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kMemoryBytes));
  state.counters["runs"] = runs;
}

void MemoryStdSort(benchmark::State& state) {
  const std::vector<Record>& records = memoryRecords();
  for (auto _ : state) {
    std::vector<Record> copy = records;
    std::sort(copy.begin(), copy.end(), keyLess);
    std::uint32_t sum = 0;
    for (const Record& r : copy) sum += r.payload[0];
    benchmark::DoNotOptimize(sum);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kMemoryBytes));
}

class Item : public ZuObject {
 public:
  explicit Item(std::uint32_t k) : key(k) {}
  short compare(const ZuObject* other) const override {
    const std::uint32_t theirs = static_cast<const Item*>(other)->key;
    return key < theirs ? -1 : key > theirs ? 1 : 0;
  }
  std::uint32_t key;
};

// The objects in random order; they live as long as the program.
const std::vector<Item*>& arrayItems() {
  static const std::vector<Item*> items = [] {
    std::vector<std::uint32_t> keys(kArrayItems);
    std::iota(keys.begin(), keys.end(), 0);
    std::shuffle(keys.begin(), keys.end(), std::mt19937(5));
    std::vector<Item*> all;
    for (std::uint32_t k : keys) all.push_back(new Item(k));
    return all;
  }();
  return items;
}

void SortedArrayZu(benchmark::State& state) {
  const std::vector<Item*>& items = arrayItems();
  for (auto _ : state) {
    ZuSortedArray array;
    for (Item* item : items) {
      if (array.add(item) != ZU_OK) {
        state.SkipWithError("add failed");
        break;
      }
    }
    benchmark::DoNotOptimize(array.items);
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * kArrayItems));
}

void SortedArrayStdVector(benchmark::State& state) {
  const std::vector<Item*>& items = arrayItems();
  const auto less = [](const ZuObject* a, const ZuObject* b) { return a->compare(b) < 0; };
  for (auto _ : state) {
    std::vector<ZuObject*> array;
    for (Item* item : items) array.insert(std::lower_bound(array.begin(), array.end(), item, less), item);
    benchmark::DoNotOptimize(array.data());
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * kArrayItems));
}

}  // namespace

BENCHMARK(FileZuSort)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(FileGnuSort)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(MemoryZuSort)->Unit(benchmark::kMillisecond);
BENCHMARK(MemoryStdSort)->Unit(benchmark::kMillisecond);
BENCHMARK(SortedArrayZu)->Unit(benchmark::kMicrosecond);
BENCHMARK(SortedArrayStdVector)->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();

// The byte copies beside the C library's, and LIKE over a large text beside
// SQLite's LIKE and GLOB when the build found SQLite.
#include <benchmark/benchmark.h>
#ifdef ZU_BENCH_SQLITE3
#include <sqlite3.h>
#endif

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "strings/bytes.h"
#include "strings/like.h"

namespace {

constexpr size_t kSmall = 64;
constexpr size_t kPage = 4096;
constexpr size_t kLarge = 1 << 20;
// 16-bit counts reach 1 MiB in pieces of this size.
constexpr size_t kPiece = 32768;
// Room past each buffer's copy: the overlapping moves write this far beyond it.
constexpr size_t kSlack = 64;

// Source and destination start on fixed cache lines, half a page apart, so
// every copy meets the same alignment; where the allocator put two vectors
// used to decide it, and moved a 4 KiB memcpy between 60 and 200 ns from one
// benchmark to the next. Half a page keeps a load from seeming to depend on
// the store just before it, as two addresses a whole number of pages apart
// do.
struct Buffers {
  std::vector<unsigned char> bytes;
  unsigned char* src;
  unsigned char* dst;
  explicit Buffers(size_t size) : bytes(2 * span(size) + 2 * kPage) {
    src = alignUp(bytes.data());
    dst = src + span(size) + kPage / 2;
    std::memset(src, 'x', size);
    src[size] = 0;
  }
  static size_t span(size_t size) { return (size + kSlack + kPage - 1) / kPage * kPage; }
  static unsigned char* alignUp(unsigned char* p) {
    return p + (kPage - reinterpret_cast<uintptr_t>(p) % kPage) % kPage;
  }
};

// Every contestant is called the same way: through a pointer the compiler
// cannot see through, to a small function that passes the arguments on. So
// the loop around the call is the same machine code for each of them, and
// only the copies differ.
using Bytes = unsigned char*;
using Text = const unsigned char*;
using CopyCall = void (*)(Bytes dst, Text src, size_t size);

void runCopy(benchmark::State& state, CopyCall copy) {
  const size_t size = state.range(0);
  Buffers b(size);
  for (auto _ : state) {
    benchmark::DoNotOptimize(copy);
    copy(b.dst, b.src, size);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * size);
}

// A BUT copy over `size` bytes, in pieces its count can hold. The loop is
// apart, so that a copy of one piece is a jump like every other contestant's.
using ButCopy = void (*)(Bytes dst, Text src, unsigned short count);

[[gnu::noinline]] void piecewise(Bytes dst, Text src, size_t size, ButCopy copy) {
  for (size_t done = 0; done < size; done += kPiece) {
    const size_t n = size - done < kPiece ? size - done : kPiece;
    copy(dst + done, src + done, static_cast<unsigned short>(n));
  }
}

inline void inPieces(Bytes dst, Text src, size_t size, ButCopy copy) {
  if (size <= kPiece) return copy(dst, src, static_cast<unsigned short>(size));
  piecewise(dst, src, size, copy);
}

void Memcpy(benchmark::State& s) {
  runCopy(s, [](Bytes d, Text c, size_t n) { std::memcpy(d, c, n); });
}
void Memmove(benchmark::State& s) {
  runCopy(s, [](Bytes d, Text c, size_t n) { std::memmove(d, c, n); });
}
void ButMemcp(benchmark::State& s) {
  runCopy(s, [](Bytes d, Text c, size_t n) { inPieces(d, c, n, BUTMEMCP); });
}
void ButMmcpd(benchmark::State& s) {
  runCopy(s, [](Bytes d, Text c, size_t n) { inPieces(d, c, n, BUTMMCPD); });
}
void MemCopyHuge(benchmark::State& s) {
  runCopy(s, [](Bytes d, Text c, size_t n) { memCopyHuge(d, c, n); });
}
void StrCopyCount(benchmark::State& s) {
  runCopy(s, [](Bytes d, Text c, size_t n) { strCopy(d, c, n); });
}
void StrCopyBounded(benchmark::State& s) {
  runCopy(s, [](Bytes d, Text c, size_t n) { strCopy(d, n + 1, c); });
}
void Strcpy(benchmark::State& s) {
  runCopy(s, [](Bytes d, Text c, size_t) {
    std::strcpy(reinterpret_cast<char*>(d), reinterpret_cast<const char*>(c));
  });
}
void Stpcpy(benchmark::State& s) {
  runCopy(s, [](Bytes d, Text c, size_t) {
    benchmark::DoNotOptimize(
        stpcpy(reinterpret_cast<char*>(d), reinterpret_cast<const char*>(c)));
  });
}
void ButStcpy(benchmark::State& s) {
  runCopy(s, [](Bytes d, Text c, size_t) { BUTSTCPY(d, c); });
}

// Overlapping moves within one buffer: ascending 16 bytes up repeats a
// 16-byte pattern; descending 16 bytes down likewise; memmove for scale.
constexpr size_t kShift = 16;
void OverlapMemmoveUp(benchmark::State& s) {
  runCopy(s, [](Bytes d, Text, size_t n) { std::memmove(d + kShift, d, n); });
}
void OverlapMemCopyHugeUp(benchmark::State& s) {
  runCopy(s, [](Bytes d, Text, size_t n) { memCopyHuge(d + kShift, d, n); });
}
void OverlapButMmcpdDown(benchmark::State& s) {
  runCopy(s, [](Bytes d, Text, size_t n) { inPieces(d, d + kShift, n, BUTMMCPD); });
}

#define COPY_SIZES ->Arg(kSmall)->Arg(kPage)->Arg(kLarge)
BENCHMARK(Memcpy) COPY_SIZES;
BENCHMARK(Memmove) COPY_SIZES;
BENCHMARK(ButMemcp) COPY_SIZES;
BENCHMARK(ButMmcpd) COPY_SIZES;
BENCHMARK(MemCopyHuge) COPY_SIZES;
BENCHMARK(StrCopyCount) COPY_SIZES;
BENCHMARK(StrCopyBounded) COPY_SIZES;
BENCHMARK(Strcpy) COPY_SIZES;
BENCHMARK(Stpcpy) COPY_SIZES;
BENCHMARK(ButStcpy) COPY_SIZES;
BENCHMARK(OverlapMemmoveUp) COPY_SIZES;
BENCHMARK(OverlapMemCopyHugeUp) COPY_SIZES;
BENCHMARK(OverlapButMmcpdDown) COPY_SIZES;

// Words of driver talk, none containing "abc", with "abc" once at the end.
std::string likeText() {
  const char* words[] = {"select", "from",  "table", "where", "value", "connect", "driver",
                         "order",  "group", "by",    "and",   "cache", "label",   "database"};
  std::mt19937 random(7);
  std::string text;
  while (text.size() < kLarge - 4) {
    text += words[random() % std::size(words)];
    text += ' ';
  }
  text.resize(kLarge - 4);
  return text + "abc.";
}

void runLike(benchmark::State& state, std::uint32_t exactCase) {
  const std::string text = likeText();
  const unsigned char pattern[] = "%abc%";
  for (auto _ : state) {
    const unsigned found = strLike(reinterpret_cast<const unsigned char*>(text.data()), text.size(),
                                   pattern, 5, '%', '_', '\\', exactCase);
    benchmark::DoNotOptimize(found);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * text.size());
}
void LikeExact(benchmark::State& s) { runLike(s, 1); }
void LikeFolded(benchmark::State& s) { runLike(s, 0); }
BENCHMARK(LikeExact);
BENCHMARK(LikeFolded);

#ifdef ZU_BENCH_SQLITE3
// SQLite's LIKE folds ASCII; its GLOB is exact. Same text, same question.
template <typename Match>
void runSqlite(benchmark::State& state, Match match) {
  const std::string text = likeText();
  for (auto _ : state) {
    const int found = match(text.c_str());
    benchmark::DoNotOptimize(found);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * text.size());
}
void SqliteStrlike(benchmark::State& s) {
  runSqlite(s, [](const char* t) { return sqlite3_strlike("%abc%", t, '\\'); });
}
void SqliteStrglob(benchmark::State& s) {
  runSqlite(s, [](const char* t) { return sqlite3_strglob("*abc*", t); });
}
BENCHMARK(SqliteStrlike);
BENCHMARK(SqliteStrglob);
#endif

}  // namespace

BENCHMARK_MAIN();

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

struct Buffers {
  std::vector<unsigned char> src, dst;
  explicit Buffers(size_t size) : src(size + 64, 'x'), dst(size + 64, 0) { src[size] = 0; }
};

template <typename Copy>
void runCopy(benchmark::State& state, Copy copy) {
  const size_t size = state.range(0);
  Buffers b(size);
  for (auto _ : state) {
    copy(b.dst.data(), b.src.data(), size);
    benchmark::DoNotOptimize(b.dst.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * size);
}

// A BUT copy over `size` bytes, in pieces its count can hold.
template <typename Copy>
void inPieces(unsigned char* dst, const unsigned char* src, size_t size, Copy copy) {
  if (size <= kPiece) {
    copy(dst, src, static_cast<unsigned short>(size));
    return;
  }
  for (size_t done = 0; done < size; done += kPiece) {
    const size_t n = size - done < kPiece ? size - done : kPiece;
    copy(dst + done, src + done, static_cast<unsigned short>(n));
  }
}

void Memcpy(benchmark::State& s) {
  runCopy(s, [](auto d, auto c, size_t n) { std::memcpy(d, c, n); });
}
void Memmove(benchmark::State& s) {
  runCopy(s, [](auto d, auto c, size_t n) { std::memmove(d, c, n); });
}
void ButMemcp(benchmark::State& s) {
  runCopy(s, [](auto d, auto c, size_t n) { inPieces(d, c, n, BUTMEMCP); });
}
void ButMmcpd(benchmark::State& s) {
  runCopy(s, [](auto d, auto c, size_t n) { inPieces(d, c, n, BUTMMCPD); });
}
void MemCopyHuge(benchmark::State& s) {
  runCopy(s, [](auto d, auto c, size_t n) { memCopyHuge(d, c, n); });
}
void StrCopyCount(benchmark::State& s) {
  runCopy(s, [](auto d, auto c, size_t n) { strCopy(d, c, n); });
}
void StrCopyBounded(benchmark::State& s) {
  runCopy(s, [](auto d, auto c, size_t n) { strCopy(d, n + 1, c); });
}
void Strcpy(benchmark::State& s) {
  runCopy(s, [](auto d, auto c, size_t) {
    std::strcpy(reinterpret_cast<char*>(d), reinterpret_cast<const char*>(c));
  });
}
void Stpcpy(benchmark::State& s) {
  runCopy(s, [](auto d, auto c, size_t) {
    benchmark::DoNotOptimize(
        stpcpy(reinterpret_cast<char*>(d), reinterpret_cast<const char*>(c)));
  });
}
void ButStcpy(benchmark::State& s) {
  runCopy(s, [](auto d, auto c, size_t) { BUTSTCPY(d, c); });
}

// Overlapping moves within one buffer: ascending 16 bytes up repeats a
// 16-byte pattern; descending 16 bytes down likewise; memmove for scale.
constexpr size_t kShift = 16;
void OverlapMemmoveUp(benchmark::State& s) {
  runCopy(s, [](auto d, auto, size_t n) { std::memmove(d + kShift, d, n); });
}
void OverlapMemCopyHugeUp(benchmark::State& s) {
  runCopy(s, [](auto d, auto, size_t n) { memCopyHuge(d + kShift, d, n); });
}
void OverlapButMmcpdDown(benchmark::State& s) {
  runCopy(s, [](auto d, auto, size_t n) { inPieces(d, d + kShift, n, BUTMMCPD); });
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

// Decimal and hexadecimal conversion beside the C library, on the same
// inputs in the same run: 1024 values spread over every digit count.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "strings/convert.h"
#include "strings/hex.h"

namespace {

constexpr std::size_t kValues = 1024;
constexpr std::size_t kHexBytes = 4096;

// Values with 1 to 10 digits in equal shares, so short and long texts both count.
std::vector<std::uint32_t> makeValues() {
  std::mt19937 rng(42);
  std::vector<std::uint32_t> values;
  for (std::size_t i = 0; i < kValues; ++i) {
    const int digits = 1 + static_cast<int>(i % 10);
    std::uint64_t top = 1;
    for (int d = 1; d < digits; ++d) top *= 10;
    const std::uint64_t low = digits == 1 ? 0 : top;
    const std::uint64_t high = digits == 10 ? UINT32_MAX : top * 10 - 1;
    values.push_back(static_cast<std::uint32_t>(low + rng() % (high - low + 1)));
  }
  return values;
}

const std::vector<std::uint32_t>& values() {
  static const std::vector<std::uint32_t> v = makeValues();
  return v;
}

std::vector<std::string> texts(bool negative) {
  std::vector<std::string> t;
  for (std::uint32_t v : values()) {
    const std::int32_t s = static_cast<std::int32_t>(v / 2);
    t.push_back(negative ? std::to_string(-s) : std::to_string(v));
  }
  return t;
}

const unsigned char* u(const std::string& s) { return reinterpret_cast<const unsigned char*>(s.c_str()); }

void TextToU32_convert(benchmark::State& state) {
  const auto t = texts(false);
  for (auto _ : state) {
    for (const auto& s : t) {
      std::uint32_t v;
      benchmark::DoNotOptimize(convert(u(s), &v));
      benchmark::DoNotOptimize(v);
    }
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kValues);
}

void TextToU32_strtoul(benchmark::State& state) {
  const auto t = texts(false);
  for (auto _ : state) {
    for (const auto& s : t) benchmark::DoNotOptimize(std::strtoul(s.c_str(), nullptr, 10));
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kValues);
}

void TextToI32_convert(benchmark::State& state) {
  const auto t = texts(true);
  for (auto _ : state) {
    for (const auto& s : t) {
      std::int32_t v;
      benchmark::DoNotOptimize(convert(u(s), &v));
      benchmark::DoNotOptimize(v);
    }
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kValues);
}

void TextToI32_strtol(benchmark::State& state) {
  const auto t = texts(true);
  for (auto _ : state) {
    for (const auto& s : t) benchmark::DoNotOptimize(std::strtol(s.c_str(), nullptr, 10));
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kValues);
}

void U32ToText_convert(benchmark::State& state) {
  unsigned char out[16];
  for (auto _ : state) {
    for (std::uint32_t v : values()) {
      benchmark::DoNotOptimize(convert(out, v));
      benchmark::ClobberMemory();
    }
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kValues);
}

void U32ToText_snprintf(benchmark::State& state) {
  char out[16];
  for (auto _ : state) {
    for (std::uint32_t v : values()) {
      benchmark::DoNotOptimize(std::snprintf(out, sizeof out, "%u", static_cast<unsigned>(v)));
      benchmark::ClobberMemory();
    }
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kValues);
}

void I32ToText_convert(benchmark::State& state) {
  unsigned char out[16];
  for (auto _ : state) {
    for (std::uint32_t v : values()) {
      benchmark::DoNotOptimize(convert(out, -static_cast<std::int32_t>(v / 2)));
      benchmark::ClobberMemory();
    }
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kValues);
}

void I32ToText_snprintf(benchmark::State& state) {
  char out[16];
  for (auto _ : state) {
    for (std::uint32_t v : values()) {
      benchmark::DoNotOptimize(std::snprintf(out, sizeof out, "%d", -static_cast<int>(v / 2)));
      benchmark::ClobberMemory();
    }
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kValues);
}

void Field10_convert(benchmark::State& state) {
  unsigned char out[16];
  for (auto _ : state) {
    for (std::uint32_t v : values()) {
      benchmark::DoNotOptimize(convert(out, 10, v, 0));
      benchmark::ClobberMemory();
    }
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kValues);
}

void Field10_snprintf(benchmark::State& state) {
  char out[16];
  for (auto _ : state) {
    for (std::uint32_t v : values()) {
      benchmark::DoNotOptimize(std::snprintf(out, sizeof out, "%10u", static_cast<unsigned>(v)));
      benchmark::ClobberMemory();
    }
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kValues);
}

void HexValue_hexify(benchmark::State& state) {
  unsigned char out[16];
  for (auto _ : state) {
    for (std::uint32_t v : values()) {
      benchmark::DoNotOptimize(hexify(out, v, 0));
      benchmark::ClobberMemory();
    }
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kValues);
}

void HexValue_snprintf(benchmark::State& state) {
  char out[16];
  for (auto _ : state) {
    for (std::uint32_t v : values()) {
      benchmark::DoNotOptimize(std::snprintf(out, sizeof out, "%X", static_cast<unsigned>(v)));
      benchmark::ClobberMemory();
    }
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kValues);
}

void HexBytes_roundTrip(benchmark::State& state) {
  std::vector<unsigned char> bytes(kHexBytes), digits(2 * kHexBytes);
  std::mt19937 rng(7);
  for (auto& b : bytes) b = static_cast<unsigned char>(rng());
  for (auto _ : state) {
    hexify(digits.data(), bytes.data(), kHexBytes);
    benchmark::DoNotOptimize(dehexify(bytes.data(), digits.data(), 2 * kHexBytes));
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * kHexBytes);
}

BENCHMARK(TextToU32_convert);
BENCHMARK(TextToU32_strtoul);
BENCHMARK(TextToI32_convert);
BENCHMARK(TextToI32_strtol);
BENCHMARK(U32ToText_convert);
BENCHMARK(U32ToText_snprintf);
BENCHMARK(I32ToText_convert);
BENCHMARK(I32ToText_snprintf);
BENCHMARK(Field10_convert);
BENCHMARK(Field10_snprintf);
BENCHMARK(HexValue_hexify);
BENCHMARK(HexValue_snprintf);
BENCHMARK(HexBytes_roundTrip);

}  // namespace

BENCHMARK_MAIN();

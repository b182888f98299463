// ZuDictionary beside std::unordered_map, 10,000 keys each: inserts into a
// dictionary grown from nothing, and lookups of every key. Number keys, then
// text keys of two kinds: varied ones, and ones sharing their first five
// bytes. The dictionary's text hash is the sum of the first five bytes, so
// the second kind all land on one home slot and every probe walks the whole
// cluster; the "hashes" counter gives the distinct hash values of each set.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "containers/dictionary.h"

namespace {

constexpr std::uint32_t kKeys = 10000;

std::vector<std::uint32_t> numberKeys() {
  std::mt19937 rng(7);
  std::set<std::uint32_t> seen;
  std::vector<std::uint32_t> keys;
  while (keys.size() < kKeys) {
    const std::uint32_t k = rng();
    if (seen.insert(k).second) keys.push_back(k);
  }
  return keys;
}

// Keyword-like texts of 6 to 16 letters, digits and underscores.
std::vector<std::string> variedTexts() {
  static const char kChars[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";
  std::mt19937 rng(11);
  std::uniform_int_distribution<int> length(6, 16), pick(0, sizeof(kChars) - 2);
  std::set<std::string> seen;
  std::vector<std::string> texts;
  while (texts.size() < kKeys) {
    std::string t;
    for (int n = length(rng); n > 0; --n) t += kChars[pick(rng)];
    if (seen.insert(t).second) texts.push_back(t);
  }
  return texts;
}

std::vector<std::string> sharedPrefixTexts() {
  std::vector<std::string> texts;
  for (std::uint32_t i = 0; i < kKeys; ++i) texts.push_back("DRIVER_" + std::to_string(i));
  return texts;
}

struct TextKeys {
  std::vector<std::string> texts;
  std::vector<ZuSubString> views;
  explicit TextKeys(std::vector<std::string> t) : texts(std::move(t)) {
    for (const std::string& s : texts) {
      views.emplace_back(reinterpret_cast<const unsigned char*>(s.data()),
                         static_cast<std::uint32_t>(s.size()));
    }
  }
  double distinctHashes() const {
    std::set<std::uint32_t> h;
    for (const ZuSubString& v : views) h.insert(v.hash());
    return static_cast<double>(h.size());
  }
};

const TextKeys& varied() {
  static const TextKeys k(variedTexts());
  return k;
}
const TextKeys& shared() {
  static const TextKeys k(sharedPrefixTexts());
  return k;
}

void fill(ZuDictionary& d, const std::vector<std::uint32_t>& keys) {
  if (d.initialize(0) != ZU_OK) std::abort();
  for (std::uint32_t k : keys) {
    if (d.addAssoc(k, k) != ZU_OK) std::abort();
  }
}

void fill(ZuDictionary& d, const TextKeys& keys) {
  if (d.initialize(0) != ZU_OK) std::abort();
  for (const ZuSubString& v : keys.views) {
    if (d.addAssoc(const_cast<ZuSubString*>(&v), nullptr) != ZU_OK) std::abort();
  }
}

void NumberInsert_Zu(benchmark::State& state) {
  const auto keys = numberKeys();
  for (auto _ : state) {
    ZuDictionary d;
    fill(d, keys);
    benchmark::DoNotOptimize(d.entryCount);
  }
  state.SetItemsProcessed(state.iterations() * kKeys);
}

void NumberInsert_Std(benchmark::State& state) {
  const auto keys = numberKeys();
  for (auto _ : state) {
    std::unordered_map<std::uint32_t, std::uint32_t> m;
    for (std::uint32_t k : keys) m.emplace(k, k);
    benchmark::DoNotOptimize(m.size());
  }
  state.SetItemsProcessed(state.iterations() * kKeys);
}

void NumberLookup_Zu(benchmark::State& state) {
  const auto keys = numberKeys();
  ZuDictionary d;
  fill(d, keys);
  for (auto _ : state) {
    std::uint32_t sum = 0;
    for (std::uint32_t k : keys) sum += d.getIntForKey(k);
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * kKeys);
}

void NumberLookup_Std(benchmark::State& state) {
  const auto keys = numberKeys();
  std::unordered_map<std::uint32_t, std::uint32_t> m;
  for (std::uint32_t k : keys) m.emplace(k, k);
  for (auto _ : state) {
    std::uint32_t sum = 0;
    for (std::uint32_t k : keys) sum += m.find(k)->second;
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * kKeys);
}

template <const TextKeys& (*Keys)()>
void TextInsert_Zu(benchmark::State& state) {
  const TextKeys& keys = Keys();
  for (auto _ : state) {
    ZuDictionary d;
    fill(d, keys);
    benchmark::DoNotOptimize(d.entryCount);
  }
  state.SetItemsProcessed(state.iterations() * kKeys);
  state.counters["hashes"] = keys.distinctHashes();
}

template <const TextKeys& (*Keys)()>
void TextInsert_Std(benchmark::State& state) {
  const TextKeys& keys = Keys();
  for (auto _ : state) {
    std::unordered_map<std::string_view, const void*> m;
    for (const std::string& t : keys.texts) m.emplace(t, nullptr);
    benchmark::DoNotOptimize(m.size());
  }
  state.SetItemsProcessed(state.iterations() * kKeys);
}

template <const TextKeys& (*Keys)()>
void TextLookup_Zu(benchmark::State& state) {
  const TextKeys& keys = Keys();
  ZuDictionary d;
  fill(d, keys);
  for (auto _ : state) {
    std::uint32_t found = 0;
    for (const ZuSubString& v : keys.views) found += d.doesExist(&v);
    if (found != kKeys) std::abort();
  }
  state.SetItemsProcessed(state.iterations() * kKeys);
  state.counters["hashes"] = keys.distinctHashes();
}

template <const TextKeys& (*Keys)()>
void TextLookup_Std(benchmark::State& state) {
  const TextKeys& keys = Keys();
  std::unordered_map<std::string_view, const void*> m;
  for (const std::string& t : keys.texts) m.emplace(t, nullptr);
  for (auto _ : state) {
    std::uint32_t found = 0;
    for (const std::string& t : keys.texts) found += static_cast<std::uint32_t>(m.count(t));
    if (found != kKeys) std::abort();
  }
  state.SetItemsProcessed(state.iterations() * kKeys);
}

BENCHMARK(NumberInsert_Zu);
BENCHMARK(NumberInsert_Std);
BENCHMARK(NumberLookup_Zu);
BENCHMARK(NumberLookup_Std);
BENCHMARK(TextInsert_Zu<varied>)->Name("TextInsert_Zu/varied");
BENCHMARK(TextInsert_Std<varied>)->Name("TextInsert_Std/varied");
BENCHMARK(TextLookup_Zu<varied>)->Name("TextLookup_Zu/varied");
BENCHMARK(TextLookup_Std<varied>)->Name("TextLookup_Std/varied");
BENCHMARK(TextInsert_Zu<shared>)->Name("TextInsert_Zu/shared_prefix")->Unit(benchmark::kMillisecond);
BENCHMARK(TextInsert_Std<shared>)->Name("TextInsert_Std/shared_prefix");
BENCHMARK(TextLookup_Zu<shared>)->Name("TextLookup_Zu/shared_prefix")->Unit(benchmark::kMillisecond);
BENCHMARK(TextLookup_Std<shared>)->Name("TextLookup_Std/shared_prefix");

}  // namespace

BENCHMARK_MAIN();

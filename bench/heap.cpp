// The heap against the C library: alloc/free pairs and resizes of random
// sizes (8 to 256 bytes) among a population of live blocks. The "_noindex"
// runs walk the segment chain as a plain first-fit heap would, to show what
// the index beside the chain buys as the population grows.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <random>
#include <vector>

#include "memory/heap.h"
#include "memory/ram.h"

namespace {

constexpr std::uint32_t kMinSize = 8;
constexpr std::uint32_t kMaxSize = 256;
constexpr std::size_t kScript = 1 << 16;  // precomputed random choices

struct Script {
  std::vector<std::uint32_t> sizes, slots;
  explicit Script(std::size_t live) {
    std::mt19937 rng(42);
    std::uniform_int_distribution<std::uint32_t> size(kMinSize, kMaxSize);
    std::uniform_int_distribution<std::size_t> slot(0, live - 1);
    for (std::size_t i = 0; i < kScript; ++i) {
      sizes.push_back(size(rng));
      slots.push_back(static_cast<std::uint32_t>(slot(rng)));
    }
  }
};

struct Ram {
  static void* alloc(std::uint32_t n) { return ramAlloc(n); }
  static void release(void* p) { ramFree(p); }
  static void* resize(void* p, std::uint32_t n) {
    return ramResize(&p, n) == ZU_OK ? p : nullptr;
  }
};

struct Malloc {
  static void* alloc(std::uint32_t n) { return std::malloc(n); }
  static void release(void* p) { std::free(p); }
  static void* resize(void* p, std::uint32_t n) { return std::realloc(p, n); }
};

template <class Heap>
std::vector<void*> populate(std::size_t live, const Script& script) {
  std::vector<void*> blocks(live);
  for (std::size_t i = 0; i < live; ++i) blocks[i] = Heap::alloc(script.sizes[i % kScript]);
  return blocks;
}

template <class Heap>
void drain(std::vector<void*>& blocks) {
  for (void* p : blocks) Heap::release(p);
}

// Runs `step` on a random slot of a population of `state.range(0)` live
// blocks, with the index on or off.
template <class Heap, bool kIndexed, class Step>
void churn(benchmark::State& state, Step step) {
  auto live = static_cast<std::size_t>(state.range(0));
  zu::heap::setIndexEnabled(kIndexed);
  Script script(live);
  std::vector<void*> blocks = populate<Heap>(live, script);
  std::size_t i = 0;
  for (auto _ : state) {
    std::size_t k = i++ & (kScript - 1);
    void*& slot = blocks[script.slots[k]];
    slot = step(slot, script.sizes[k]);
    benchmark::DoNotOptimize(slot);
  }
  drain<Heap>(blocks);
  zu::heap::setIndexEnabled(true);
  state.SetItemsProcessed(state.iterations());
}

template <class Heap, bool kIndexed = true>
void AllocFreePair(benchmark::State& state) {
  churn<Heap, kIndexed>(state, [](void* old, std::uint32_t size) {
    Heap::release(old);
    return Heap::alloc(size);
  });
}

template <class Heap, bool kIndexed = true>
void Resize(benchmark::State& state) {
  churn<Heap, kIndexed>(state, [](void* old, std::uint32_t size) { return Heap::resize(old, size); });
}

void Populations(benchmark::internal::Benchmark* b) {
  for (int live : {1000, 10000, 100000}) b->Arg(live);
}

BENCHMARK(AllocFreePair<Ram>)->Apply(Populations);
BENCHMARK(AllocFreePair<Malloc>)->Apply(Populations);
BENCHMARK(AllocFreePair<Ram, false>)->Name("AllocFreePair<Ram>_noindex")->Apply(Populations);
BENCHMARK(Resize<Ram>)->Apply(Populations);
BENCHMARK(Resize<Malloc>)->Apply(Populations);
BENCHMARK(Resize<Ram, false>)->Name("Resize<Ram>_noindex")->Apply(Populations);

}  // namespace

BENCHMARK_MAIN();

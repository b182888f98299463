// The heap against the C library: alloc/free pairs and resizes of random
// sizes (8 to 256 bytes) among a population of live blocks. The "_noindex"
// runs walk the segment chain as a plain first-fit heap would, to show what
// the index beside the chain buys as the population grows. jemalloc and
// mimalloc run beside glibc when the build found them; they are loaded by
// path, so the program's own malloc stays glibc's.
#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
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

// An allocator loaded from a shared library; `Tag` tells the instances apart.
template <int Tag>
struct Loaded {
  static inline void* (*allocFn)(std::size_t) = nullptr;
  static inline void (*releaseFn)(void*) = nullptr;
  static inline void* (*resizeFn)(void*, std::size_t) = nullptr;
  static void* alloc(std::uint32_t n) { return allocFn(n); }
  static void release(void* p) { releaseFn(p); }
  static void* resize(void* p, std::uint32_t n) { return resizeFn(p, n); }

  static bool load(const char* path, const char* alloc, const char* release, const char* resize) {
    void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
      std::fprintf(stderr, "not measured: %s\n", dlerror());
      return false;
    }
    allocFn = reinterpret_cast<void* (*)(std::size_t)>(dlsym(library, alloc));
    releaseFn = reinterpret_cast<void (*)(void*)>(dlsym(library, release));
    resizeFn = reinterpret_cast<void* (*)(void*, std::size_t)>(dlsym(library, resize));
    return allocFn != nullptr && releaseFn != nullptr && resizeFn != nullptr;
  }
};
using Jemalloc = Loaded<1>;
using Mimalloc = Loaded<2>;

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

template <class Heap>
void registerPeer(const char* name) {
  benchmark::RegisterBenchmark((std::string("AllocFreePair<") + name + ">").c_str(),
                               AllocFreePair<Heap>)
      ->Apply(Populations);
  benchmark::RegisterBenchmark((std::string("Resize<") + name + ">").c_str(), Resize<Heap>)
      ->Apply(Populations);
}

#ifdef ZU_BENCH_JEMALLOC
// jemalloc's thread data is of the initial-exec kind, which a library opened
// late finds room for only when the loader reserved it at start.
constexpr char kTunable[] = "glibc.rtld.optional_static_tls=65536";

void reserveStaticTls(char** argv) {
  const char* set = std::getenv("GLIBC_TUNABLES");
  if (set != nullptr && std::strstr(set, "optional_static_tls") != nullptr) return;
  const std::string tunables = set != nullptr ? std::string(set) + ":" + kTunable : kTunable;
  setenv("GLIBC_TUNABLES", tunables.c_str(), 1);
  execv("/proc/self/exe", argv);  // on failure jemalloc is reported as not measured
}
#endif

}  // namespace

int main(int argc, char** argv) {
#ifdef ZU_BENCH_JEMALLOC
  reserveStaticTls(argv);
  if (Jemalloc::load(ZU_BENCH_JEMALLOC, "malloc", "free", "realloc")) {
    registerPeer<Jemalloc>("Jemalloc");
  }
#endif
#ifdef ZU_BENCH_MIMALLOC
  if (Mimalloc::load(ZU_BENCH_MIMALLOC, "mi_malloc", "mi_free", "mi_realloc")) {
    registerPeer<Mimalloc>("Mimalloc");
  }
#endif
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}

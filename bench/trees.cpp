// ZuTree beside SQLite and std::map, and ZuPTree beside std::vector, in the
// same run:
//  - 1,000,000 random 8-byte keys with 8-byte data: insert, then look up
//    each, then walk all in order. The ZuTree has its store's default cache
//    of 8 KiB, so nearly every node lives in the temporary file; SQLite gets
//    the same cache (cache_size=-8) over a temporary database, with a
//    WITHOUT ROWID table on an 8-byte blob key, all in one transaction.
//    ZU_BENCH_TREE_KEYS sets the number of keys.
//  - 100,000 inserts at random positions of a ZuPTree, against
//    std::vector::insert.
// Each structure is built by its Insert case and used by the two after it.
#include <benchmark/benchmark.h>

#include <sqlite3.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <random>
#include <vector>

#include <zuutl.h>

namespace {

constexpr std::uint32_t kDefaultKeys = 1000000;
constexpr std::uint32_t kPositionalInserts = 100000;
constexpr std::uint32_t kSeed = 8675309;
constexpr unsigned short kKeyBytes = 8;
constexpr unsigned short kDataBytes = 8;

std::uint32_t keyCount() {
  const char* text = std::getenv("ZU_BENCH_TREE_KEYS");
  const long n = text != nullptr ? std::strtol(text, nullptr, 10) : 0;
  return n > 0 ? static_cast<std::uint32_t>(n) : kDefaultKeys;
}

// Random keys, distinct, in the order they are inserted; the data of a key
// is its index.
const std::vector<std::uint64_t>& keys() {
  static const std::vector<std::uint64_t> all = [] {
    std::mt19937_64 rng(kSeed);
    std::vector<std::uint64_t> k(keyCount());
    for (auto& key : k) key = rng();
    return k;
  }();
  return all;
}

void report(benchmark::State& state, std::uint64_t items) {
  state.SetItemsProcessed(static_cast<std::int64_t>(items));
}

// ZuTree ------------------------------------------------------------------

std::unique_ptr<ZuTree> zuTree;

void BM_ZuTree_Insert(benchmark::State& state) {
  for (auto _ : state) {
    zuTree = std::make_unique<ZuTree>(kKeyBytes, kDataBytes, nullptr, 0);
    std::uint64_t i = 0;
    for (std::uint64_t key : keys()) {
      if (zuTree->add(&key, &i, nullptr) != ZU_OK) return state.SkipWithError("add failed");
      ++i;
    }
  }
  state.counters["nodes"] = zuTree->nodeCount;
  state.counters["file_pages"] = zuTree->store.firstName != nullptr ? zuTree->store.highPage + 1 : 0;
  report(state, keys().size());
}

void BM_ZuTree_Lookup(benchmark::State& state) {
  if (!zuTree) return state.SkipWithError("no tree");
  for (auto _ : state) {
    std::uint64_t i = 0, data = 0;
    for (std::uint64_t key : keys()) {
      unsigned int found = 0;
      if (zuTree->getData(&key, &data, &found) != ZU_OK || found == 0 || data != i) {
        return state.SkipWithError("lookup failed");
      }
      ++i;
    }
  }
  // Every key was found, so the deepest hit is the depth of the leaves.
  state.counters["depth"] = zuTree->maxDepth;
  report(state, keys().size());
}

void BM_ZuTree_Walk(benchmark::State& state) {
  if (!zuTree) return state.SkipWithError("no tree");
  for (auto _ : state) {
    std::uint64_t key = 0, data = 0, n = 0;
    unsigned int found = 0;
    for (ZuStatus s = zuTree->getFirst(&key, &data, &found); found != 0; s = zuTree->getNext(&key, &data, &found)) {
      if (s != ZU_OK) return state.SkipWithError("walk failed");
      ++n;
    }
    if (n != keys().size()) return state.SkipWithError("walk missed keys");
  }
  zuTree.reset();
  report(state, keys().size());
}

// SQLite ------------------------------------------------------------------

struct Sqlite {
  sqlite3* db = nullptr;
  sqlite3_stmt* insert = nullptr;
  sqlite3_stmt* lookup = nullptr;
  sqlite3_stmt* walk = nullptr;
  ~Sqlite() {
    sqlite3_finalize(insert);
    sqlite3_finalize(lookup);
    sqlite3_finalize(walk);
    sqlite3_close(db);
  }
};

std::unique_ptr<Sqlite> sqlite;

bool openSqlite() {
  sqlite = std::make_unique<Sqlite>();
  Sqlite& s = *sqlite;
  // An empty name is a private temporary file, deleted when closed.
  return sqlite3_open("", &s.db) == SQLITE_OK &&
         sqlite3_exec(s.db, "PRAGMA cache_size=-8", nullptr, nullptr, nullptr) == SQLITE_OK &&
         sqlite3_exec(s.db, "CREATE TABLE t(k BLOB PRIMARY KEY, v BLOB) WITHOUT ROWID", nullptr, nullptr,
                      nullptr) == SQLITE_OK &&
         sqlite3_exec(s.db, "BEGIN", nullptr, nullptr, nullptr) == SQLITE_OK &&
         sqlite3_prepare_v2(s.db, "INSERT INTO t VALUES(?1, ?2)", -1, &s.insert, nullptr) == SQLITE_OK &&
         sqlite3_prepare_v2(s.db, "SELECT v FROM t WHERE k = ?1", -1, &s.lookup, nullptr) == SQLITE_OK &&
         sqlite3_prepare_v2(s.db, "SELECT k, v FROM t ORDER BY k", -1, &s.walk, nullptr) == SQLITE_OK;
}

void BM_Sqlite_Insert(benchmark::State& state) {
  for (auto _ : state) {
    if (!openSqlite()) return state.SkipWithError("sqlite setup failed");
    sqlite3_stmt* st = sqlite->insert;
    std::uint64_t i = 0;
    for (std::uint64_t key : keys()) {
      sqlite3_bind_blob(st, 1, &key, kKeyBytes, SQLITE_STATIC);
      sqlite3_bind_blob(st, 2, &i, kDataBytes, SQLITE_STATIC);
      if (sqlite3_step(st) != SQLITE_DONE) return state.SkipWithError("insert failed");
      sqlite3_reset(st);
      ++i;
    }
  }
  report(state, keys().size());
}

void BM_Sqlite_Lookup(benchmark::State& state) {
  if (!sqlite) return state.SkipWithError("no database");
  sqlite3_stmt* st = sqlite->lookup;
  for (auto _ : state) {
    std::uint64_t i = 0, data = 0;
    for (std::uint64_t key : keys()) {
      sqlite3_bind_blob(st, 1, &key, kKeyBytes, SQLITE_STATIC);
      if (sqlite3_step(st) != SQLITE_ROW) return state.SkipWithError("lookup failed");
      std::memcpy(&data, sqlite3_column_blob(st, 0), kDataBytes);
      if (data != i) return state.SkipWithError("lookup: wrong data");
      sqlite3_reset(st);
      ++i;
    }
  }
  report(state, keys().size());
}

void BM_Sqlite_Walk(benchmark::State& state) {
  if (!sqlite) return state.SkipWithError("no database");
  sqlite3_stmt* st = sqlite->walk;
  for (auto _ : state) {
    std::uint64_t key = 0, data = 0, n = 0;
    for (int r; (r = sqlite3_step(st)) == SQLITE_ROW; ++n) {
      std::memcpy(&key, sqlite3_column_blob(st, 0), kKeyBytes);
      std::memcpy(&data, sqlite3_column_blob(st, 1), kDataBytes);
      benchmark::DoNotOptimize(key);
      benchmark::DoNotOptimize(data);
    }
    sqlite3_reset(st);
    if (n != keys().size()) return state.SkipWithError("walk missed rows");
  }
  sqlite.reset();
  report(state, keys().size());
}

// std::map ----------------------------------------------------------------

// Keys in the order the trees give them: their bytes, as memcmp sees them.
struct Bytes8 {
  unsigned char b[kKeyBytes];
  bool operator<(const Bytes8& o) const { return std::memcmp(b, o.b, kKeyBytes) < 0; }
};

std::unique_ptr<std::map<Bytes8, std::uint64_t>> stdMap;

void BM_StdMap_Insert(benchmark::State& state) {
  for (auto _ : state) {
    stdMap = std::make_unique<std::map<Bytes8, std::uint64_t>>();
    std::uint64_t i = 0;
    for (std::uint64_t key : keys()) {
      Bytes8 k;
      std::memcpy(k.b, &key, kKeyBytes);
      stdMap->emplace(k, i++);
    }
  }
  report(state, keys().size());
}

void BM_StdMap_Lookup(benchmark::State& state) {
  if (!stdMap) return state.SkipWithError("no map");
  for (auto _ : state) {
    std::uint64_t i = 0;
    for (std::uint64_t key : keys()) {
      Bytes8 k;
      std::memcpy(k.b, &key, kKeyBytes);
      auto it = stdMap->find(k);
      if (it == stdMap->end() || it->second != i) return state.SkipWithError("lookup failed");
      ++i;
    }
  }
  report(state, keys().size());
}

void BM_StdMap_Walk(benchmark::State& state) {
  if (!stdMap) return state.SkipWithError("no map");
  for (auto _ : state) {
    std::uint64_t n = 0;
    for (const auto& [k, v] : *stdMap) {
      benchmark::DoNotOptimize(&k);
      benchmark::DoNotOptimize(v);
      ++n;
    }
    if (n != keys().size()) return state.SkipWithError("walk missed keys");
  }
  stdMap.reset();
  report(state, keys().size());
}

// Positional --------------------------------------------------------------

std::vector<std::uint32_t> positions() {
  std::mt19937 rng(kSeed);
  std::vector<std::uint32_t> p(kPositionalInserts);
  for (std::uint32_t i = 0; i < kPositionalInserts; ++i) p[i] = rng() % (i + 1);
  return p;
}

void BM_ZuPTree_InsertAtRandom(benchmark::State& state) {
  const std::vector<std::uint32_t> at = positions();
  for (auto _ : state) {
    ZuPTree tree(kDataBytes);
    std::uint64_t data = 0;
    for (std::uint32_t p : at) {
      if (tree.addAtPos(p, &data) != ZU_OK) return state.SkipWithError("addAtPos failed");
      ++data;
    }
    if (tree.keyCount != at.size()) return state.SkipWithError("entries lost");
  }
  report(state, at.size());
}

void BM_Vector_InsertAtRandom(benchmark::State& state) {
  const std::vector<std::uint32_t> at = positions();
  for (auto _ : state) {
    std::vector<std::uint64_t> v;
    std::uint64_t data = 0;
    for (std::uint32_t p : at) v.insert(v.begin() + p, data++);
    benchmark::DoNotOptimize(v.data());
  }
  report(state, at.size());
}

// One pass each: the structures are large, and the machine may be shared.
BENCHMARK(BM_ZuTree_Insert)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ZuTree_Lookup)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ZuTree_Walk)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Sqlite_Insert)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Sqlite_Lookup)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Sqlite_Walk)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StdMap_Insert)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StdMap_Lookup)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StdMap_Walk)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ZuPTree_InsertAtRandom)->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Vector_InsertAtRandom)->Iterations(3)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();

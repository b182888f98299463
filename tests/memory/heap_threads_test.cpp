// Several threads on one heap and on both forms of the lock at once.
#include <cstring>
#include <random>
#include <thread>
#include <vector>

#include "frame/semaphore.h"
#include "heap_fixture.h"

namespace zutest {
namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 3000;

TEST_F(HeapTest, HeapThreadsShareOneHeap) {
  std::vector<std::thread> threads;
  std::vector<int> faults(kThreads, 0);
  // Blocks made on one thread and freed on another, through a locked stack.
  ZuSemaphore handoffLock;
  std::vector<void*> handoff;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      std::mt19937 rng(100 + t);
      std::vector<std::pair<void*, std::uint32_t>> mine;
      auto fill = static_cast<unsigned char>(t + 1);
      for (int i = 0; i < kRounds; ++i) {
        std::uint32_t op = rng() % 8;
        if (op < 4 || mine.empty()) {
          std::uint32_t size = rng() % 300;
          void* p = ramAlloc(size);
          if (p == nullptr) {
            ++faults[t];
            continue;
          }
          std::memset(p, fill, size);
          mine.push_back({p, size});
        } else if (op < 6) {
          auto [p, size] = mine.back();
          mine.pop_back();
          const auto* bytes = static_cast<const unsigned char*>(p);
          for (std::uint32_t k = 0; k < size; ++k) {
            if (bytes[k] != fill) {
              ++faults[t];
              break;
            }
          }
          if (op == 4) {
            ramFree(p);
          } else {
            handoffLock.lock();
            handoff.push_back(p);
            handoffLock.unlock();
          }
        } else {
          auto& [p, size] = mine[rng() % mine.size()];
          std::uint32_t grown = size + rng() % 200;
          if (ramResize(&p, grown) != ZU_OK) {
            ++faults[t];
            continue;
          }
          std::memset(p, fill, grown);
          size = grown;
        }
        if (op == 7) {
          handoffLock.lock();
          void* theirs = handoff.empty() ? nullptr : handoff.back();
          if (theirs != nullptr) handoff.pop_back();
          handoffLock.unlock();
          ramFree(theirs);
        }
      }
      for (auto& [p, size] : mine) ramFree(p);
    });
  }
  for (std::thread& th : threads) th.join();
  for (void* p : handoff) ramFree(p);
  for (int t = 0; t < kThreads; ++t) EXPECT_EQ(faults[t], 0) << "thread " << t;
}

// Counts kept without atomics are exact only if the lock excludes.
void hammer(ZuSemaphore& lock) {
  long counter = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < kRounds; ++i) {
        lock.lock();
        long seen = counter;
        std::this_thread::yield();
        counter = seen + 1;
        lock.unlock();
      }
    });
  }
  for (std::thread& th : threads) th.join();
  EXPECT_EQ(counter, static_cast<long>(kThreads) * kRounds);
  EXPECT_EQ(lock.owner, 0u);
}

TEST(SemaphoreThreads, SystemFormExcludes) {
  ZuSemaphore made;
  ASSERT_EQ(made.allocatedType, 1u);
  hammer(made);
}

TEST(SemaphoreThreads, AllZeroSpinLockExcludesWithoutAConstructor) {
  alignas(ZuSemaphore) unsigned char storage[sizeof(ZuSemaphore)] = {};
  auto* spin = reinterpret_cast<ZuSemaphore*>(storage);  // never constructed
  hammer(*spin);
  EXPECT_EQ(spin->spinWord, 0u);
}

TEST(Semaphore, UnlockClearsTheOwnerAndReleaseIsHarmlessTwice) {
  ZuSemaphore s;
  s.lock();
  EXPECT_EQ(s.owner, bosGetThreadID());
  s.unlock();
  EXPECT_EQ(s.owner, 0u);
  s.bosSemaphoreFree();
  s.bosSemaphoreFree();  // a released semaphore is left a free spin lock
  EXPECT_EQ(s.allocatedType, 0u);
  s.lock();
  s.unlock();
}

TEST(Semaphore, EnvironmentLookup) {
  ASSERT_EQ(setenv("ZU_TEST_PROBE", "value=1", 1), 0);
  ASSERT_EQ(setenv("ZU_TEST_EMPTY", "", 1), 0);
  const unsigned char* v = bosGetEnv(reinterpret_cast<const unsigned char*>("ZU_TEST_PROBE"));
  ASSERT_NE(v, nullptr);
  EXPECT_STREQ(reinterpret_cast<const char*>(v), "value=1");
  v = bosGetEnv(reinterpret_cast<const unsigned char*>("ZU_TEST_EMPTY"));
  ASSERT_NE(v, nullptr);
  EXPECT_EQ(*v, 0) << "an empty value is an empty text, not null";
  EXPECT_EQ(bosGetEnv(reinterpret_cast<const unsigned char*>("zu_test_probe")), nullptr)
      << "names are case-sensitive";
  EXPECT_EQ(bosGetEnv(reinterpret_cast<const unsigned char*>("ZU_TEST_NOT_SET_ANYWHERE")), nullptr);
  // A shorter name matches a longer variable that starts with it.
  v = bosGetEnv(reinterpret_cast<const unsigned char*>("ZU_TEST_PROB"));
  ASSERT_NE(v, nullptr);
  EXPECT_STREQ(reinterpret_cast<const char*>(v), "=value=1");
  unsetenv("ZU_TEST_PROBE");
  unsetenv("ZU_TEST_EMPTY");
}

}  // namespace
}  // namespace zutest

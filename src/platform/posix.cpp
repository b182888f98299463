// POSIX implementation of the platform table.
#include <dlfcn.h>
#include <pthread.h>
#include <sched.h>
#include <semaphore.h>
#include <sys/syscall.h>
#include <sys/sysinfo.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "platform/fault.h"
#include "platform/platform.h"

extern char** environ;

namespace zu::platform {
namespace {

void* blockAlloc(std::size_t bytes) {
  if (faultHit(Fault::Block)) return nullptr;
  return std::malloc(bytes == 0 ? 1 : bytes);
}

void blockFree(void* block) { std::free(block); }

std::uint64_t memoryAvailable() {
  struct sysinfo info;
  if (sysinfo(&info) != 0) return 0;
  return (static_cast<std::uint64_t>(info.freeram) + info.bufferram) * info.mem_unit;
}

void* semCreate() {
  if (faultHit(Fault::Semaphore)) return nullptr;
  sem_t* sem = static_cast<sem_t*>(std::malloc(sizeof(sem_t)));
  if (sem == nullptr) return nullptr;
  if (sem_init(sem, 0, 1) != 0) {
    std::free(sem);
    return nullptr;
  }
  return sem;
}

void semWait(void* sem) {
  while (sem_wait(static_cast<sem_t*>(sem)) != 0 && errno == EINTR) {
  }
}

void semPost(void* sem) { sem_post(static_cast<sem_t*>(sem)); }

void semClose(void* sem) {
  sem_destroy(static_cast<sem_t*>(sem));
  std::free(sem);
}

void sleepMs(std::uint32_t ms) {
  if (ms == 0) {
    sched_yield();
    return;
  }
  struct timespec ts;
  ts.tv_sec = ms / 1000;
  ts.tv_nsec = static_cast<long>(ms % 1000) * 1000000L;
  while (nanosleep(&ts, &ts) != 0 && errno == EINTR) {
  }
}

std::uint32_t processId() { return static_cast<std::uint32_t>(getpid()); }

// gettid is a system call and the heap's lock asks for it on every call, so
// each thread remembers its own; a forked child forgets the parent's.
thread_local std::uint32_t cachedThreadId = 0;

void forgetThreadId() { cachedThreadId = 0; }

std::uint32_t threadId() {
  if (cachedThreadId == 0) {
    static const int registered = pthread_atfork(nullptr, nullptr, forgetThreadId);
    (void)registered;
    cachedThreadId = static_cast<std::uint32_t>(syscall(SYS_gettid));
  }
  return cachedThreadId;
}

char** environment() { return environ; }

void report(const unsigned char* caption, const unsigned char* text) {
  std::fprintf(stderr, "%s\n%s", reinterpret_cast<const char*>(caption),
               reinterpret_cast<const char*>(text));
  std::fflush(stderr);
}

}  // namespace

constexpr Calls kDefaultCalls = {
    blockAlloc, blockFree, memoryAvailable, semCreate, semWait, semPost, semClose,
    sleepMs,    processId, threadId,        environment, report,
};

// Constant-initialised, so it is in place before any static constructor runs.
constinit Calls sys = kDefaultCalls;

std::uint32_t atomicExchange(std::uint32_t* word, std::uint32_t value) {
  return std::atomic_ref<std::uint32_t>(*word).exchange(value, std::memory_order_seq_cst);
}

void* moduleSelf() {
  Dl_info info;
  if (dladdr(reinterpret_cast<void*>(&moduleSelf), &info) != 0) return info.dli_fbase;
  return nullptr;
}

}  // namespace zu::platform

// The system services of `sys`, written against the host table.
#include <atomic>
#include <cerrno>
#include <cstring>

#include "platform/host.h"
#include "platform/platform.h"

namespace zu::platform {
namespace {

constexpr std::uint32_t kMsPerSecond = 1000;
constexpr long kNsPerMs = 1000000L;
constexpr int kStandardError = 2;
constexpr unsigned char kLineFeed[] = "\n";

void* blockAlloc(std::size_t bytes) { return host.malloc(bytes); }

void blockFree(void* block) { host.free(block); }

std::uint64_t memoryAvailable() {
  struct sysinfo info;
  if (host.sysinfo(&info) != 0) return 0;
  return (static_cast<std::uint64_t>(info.freeram) + info.bufferram) * info.mem_unit;
}

void* semCreate() {
  sem_t* sem = static_cast<sem_t*>(host.malloc(sizeof(sem_t)));
  if (sem == nullptr) return nullptr;
  if (host.sem_init(sem, 0, 1) != 0) {
    host.free(sem);
    return nullptr;
  }
  return sem;
}

// The wait's result is not looked at, but an interrupted wait waits again.
void semWait(void* sem) {
  while (host.sem_wait(static_cast<sem_t*>(sem)) != 0 && errno == EINTR) {
  }
}

void semPost(void* sem) { host.sem_post(static_cast<sem_t*>(sem)); }

void semClose(void* sem) {
  host.sem_destroy(static_cast<sem_t*>(sem));
  host.free(sem);
}

void sleepMs(std::uint32_t ms) {
  if (ms == 0) {
    host.sched_yield();
    return;
  }
  struct timespec left;
  left.tv_sec = ms / kMsPerSecond;
  left.tv_nsec = static_cast<long>(ms % kMsPerSecond) * kNsPerMs;
  while (host.nanosleep(&left, &left) != 0 && errno == EINTR) {
  }
}

std::uint32_t processId() { return static_cast<std::uint32_t>(host.getpid()); }

// The heap's lock asks for the thread's id on every call, so each thread
// remembers its own; a forked child forgets the parent's.
thread_local std::uint32_t cachedThreadId = 0;

void forgetThreadId() { cachedThreadId = 0; }

std::uint32_t threadId() {
  if (cachedThreadId == 0) {
    static const int registered = host.pthread_atfork(nullptr, nullptr, forgetThreadId);
    (void)registered;
    cachedThreadId = static_cast<std::uint32_t>(host.gettid());
  }
  return cachedThreadId;
}

void writeAll(const unsigned char* text) {
  std::size_t left = std::strlen(reinterpret_cast<const char*>(text));
  while (left > 0) {
    const ssize_t put = host.write(kStandardError, text, left);
    if (put < 0 && errno == EINTR) continue;
    if (put <= 0) return;
    text += put;
    left -= static_cast<std::size_t>(put);
  }
}

void report(const unsigned char* caption, const unsigned char* text) {
  writeAll(caption);
  writeAll(kLineFeed);
  writeAll(text);
}

}  // namespace

constexpr Calls kDefaultCalls = {
    .blockAlloc = blockAlloc,
    .blockFree = blockFree,
    .memoryAvailable = memoryAvailable,
    .semCreate = semCreate,
    .semWait = semWait,
    .semPost = semPost,
    .semClose = semClose,
    .sleepMs = sleepMs,
    .processId = processId,
    .threadId = threadId,
    .report = report,
};

// Constant-initialised, so it is in place before any static constructor runs.
constinit Calls sys = kDefaultCalls;

std::uint32_t atomicExchange(std::uint32_t* word, std::uint32_t value) {
  return std::atomic_ref<std::uint32_t>(*word).exchange(value, std::memory_order_seq_cst);
}

void* moduleSelf() {
  Dl_info info;
  if (host.dladdr(reinterpret_cast<void*>(&moduleSelf), &info) != 0) return info.dli_fbase;
  return nullptr;
}

}  // namespace zu::platform

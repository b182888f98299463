// The host table: every call this library makes to the operating system
// goes through `host`, one slot per call, and nowhere else. The service
// tables above it (`sys`, `dos`) are written against this table only.
//
// Tests replace a slot by assigning to it, or make its Nth call fail with a
// chosen errno through hostFail; hostRestore puts the slot back. With no
// failure armed a call costs one indirect jump.
//
// Each line of ZU_HOST_CALLS keeps a slot's name, type, default and failure
// form together: X(name, result, (parameters), default body, fails as).
#ifndef ZUUTL_PLATFORM_HOST_H
#define ZUUTL_PLATFORM_HOST_H

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <locale.h>
#include <pthread.h>
#include <semaphore.h>
#include <sys/stat.h>
#include <sys/sysinfo.h>
#include <sys/types.h>
#include <time.h>
#include <unistd.h>
#include <wchar.h>

#include <cstddef>
#include <cstdint>

namespace zu::platform {

// How a slot reports a failure, and so how an injected one looks.
enum class FailsAs {
  kMinusOne,    // returns -1 and sets errno
  kNull,        // returns null and sets errno
  kZero,        // returns 0 and sets errno
  kErrorValue,  // returns the error number itself (the pthread convention)
  kAfterActing, // returns -1 and sets errno, but has done its work: the host
                // releases a descriptor even when its close reports a failure
  kNever,       // cannot fail; an armed failure is counted and not delivered
};

#define ZU_HOST_CALLS(X)                                                                          \
  /* Memory */                                                                                    \
  X(malloc, void*, (std::size_t bytes), ::malloc(bytes == 0 ? 1 : bytes), kNull)                  \
  X(realloc, void*, (void* block, std::size_t bytes), ::realloc(block, bytes), kNull)             \
  X(free, void, (void* block), ::free(block), kNever)                                            \
  X(sysinfo, int, (struct ::sysinfo * info), ::sysinfo(info), kMinusOne)                          \
  /* Semaphores and the platform's own mutexes */                                                 \
  X(sem_init, int, (sem_t * sem, int shared, unsigned value), ::sem_init(sem, shared, value),     \
    kMinusOne)                                                                                    \
  X(sem_wait, int, (sem_t * sem), ::sem_wait(sem), kMinusOne)                                     \
  /* A post on a live count-1 semaphore cannot fail (its only errors are a */                      \
  /* bad semaphore and an overflow at SEM_VALUE_MAX); a feigned failure    */                      \
  /* would leave the lock held for good and hang the next taker.          */                      \
  X(sem_post, int, (sem_t * sem), ::sem_post(sem), kNever)                                         \
  X(sem_destroy, int, (sem_t * sem), ::sem_destroy(sem), kMinusOne)                               \
  X(pthread_mutex_lock, int, (pthread_mutex_t * mutex), ::pthread_mutex_lock(mutex), kNever)      \
  X(pthread_mutex_unlock, int, (pthread_mutex_t * mutex), ::pthread_mutex_unlock(mutex), kNever)  \
  /* The clock and sleep */                                                                       \
  X(clock_gettime, int, (clockid_t clock, struct timespec * now), ::clock_gettime(clock, now),    \
    kMinusOne)                                                                                    \
  X(gmtime_r, struct tm*, (const time_t* seconds, struct tm* fields), ::gmtime_r(seconds, fields), \
    kNull)                                                                                        \
  X(nanosleep, int, (const struct timespec* length, struct timespec* left),                      \
    ::nanosleep(length, left), kMinusOne)                                                         \
  X(sched_yield, int, (), ::sched_yield(), kMinusOne)                                             \
  /* Identity and environment */                                                                  \
  X(getpid, pid_t, (), ::getpid(), kNever)                                                        \
  X(gettid, pid_t, (), ::gettid(), kNever)                                                        \
  X(pthread_atfork, int, (void (*prepare)(), void (*parent)(), void (*child)()),                  \
    ::pthread_atfork(prepare, parent, child), kErrorValue)                                        \
  X(environ, char**, (), ::environ, kNull)                                                        \
  /* Files and region locks */                                                                    \
  X(open, int, (const char* path, int flags, mode_t mode), ::open(path, flags, mode), kMinusOne)  \
  X(close, int, (int fd), ::close(fd), kAfterActing)                                                 \
  X(pread, ssize_t, (int fd, void* buffer, std::size_t size, off_t offset),                     \
    ::pread(fd, buffer, size, offset), kMinusOne)                                                 \
  X(pwrite, ssize_t, (int fd, const void* buffer, std::size_t size, off_t offset),               \
    ::pwrite(fd, buffer, size, offset), kMinusOne)                                                \
  X(write, ssize_t, (int fd, const void* buffer, std::size_t size), ::write(fd, buffer, size),    \
    kMinusOne)                                                                                    \
  X(fsync, int, (int fd), ::fsync(fd), kMinusOne)                                                 \
  X(fstat, int, (int fd, struct stat* info), ::fstat(fd, info), kMinusOne)                        \
  X(fcntl, int, (int fd, int command, struct flock* lock), ::fcntl(fd, command, lock), kMinusOne) \
  /* Names */                                                                                     \
  X(stat, int, (const char* path, struct stat* info), ::stat(path, info), kMinusOne)              \
  X(lstat, int, (const char* path, struct stat* info), ::lstat(path, info), kMinusOne)            \
  X(unlink, int, (const char* path), ::unlink(path), kMinusOne)                                   \
  X(rename, int, (const char* from, const char* to), ::rename(from, to), kMinusOne)               \
  X(readlink, ssize_t, (const char* path, char* buffer, std::size_t size),                        \
    ::readlink(path, buffer, size), kMinusOne)                                                    \
  /* Directories and the current directory */                                                     \
  X(opendir, DIR*, (const char* path), ::opendir(path), kNull)                                    \
  X(readdir, struct dirent*, (DIR * dir), ::readdir(dir), kNull)                                  \
  X(closedir, int, (DIR * dir), ::closedir(dir), kAfterActing)                                       \
  X(getcwd, char*, (char* buffer, std::size_t size), ::getcwd(buffer, size), kNull)               \
  X(chdir, int, (const char* path), ::chdir(path), kMinusOne)                                     \
  /* Libraries */                                                                                 \
  X(dladdr, int, (const void* address, Dl_info* info), ::dladdr(address, info), kZero)            \
  X(dlopen, void*, (const char* path, int flags), ::dlopen(path, flags), kNull)                   \
  /* Collation of the user's locale */                                                            \
  X(newlocale, locale_t, (int categories, const char* name, locale_t base),                      \
    ::newlocale(categories, name, base), kNull)                                                   \
  X(freelocale, void, (locale_t locale), ::freelocale(locale), kNever)                            \
  X(wcscoll_l, int, (const wchar_t* a, const wchar_t* b, locale_t locale),                       \
    ::wcscoll_l(a, b, locale), kNever)

#define ZU_HOST_SLOT(name, result, parameters, body, failsAs) result(*name) parameters;
struct HostCalls {
  ZU_HOST_CALLS(ZU_HOST_SLOT)
};
#undef ZU_HOST_SLOT

#define ZU_HOST_ENUM(name, result, parameters, body, failsAs) name,
enum class HostCall : unsigned { ZU_HOST_CALLS(ZU_HOST_ENUM) kCount };
#undef ZU_HOST_ENUM

constexpr unsigned kHostCallCount = static_cast<unsigned>(HostCall::kCount);

extern HostCalls host;
extern const HostCalls kDefaultHost;

// The slot's name as written in the table, for messages.
const char* hostCallName(HostCall call);
FailsAs hostFailsAs(HostCall call);

// From now on, the `nth` call of `call` (1 is the next) fails with `error`;
// with `persistent`, every later one too. `nth` 0 only counts the calls.
// Whatever the slot held is what the calls that do not fail reach.
void hostFail(HostCall call, std::uint32_t nth, int error, bool persistent = false);
// Calls of `call` counted since hostFail armed it.
std::uint32_t hostCalls(HostCall call);
// Whether an armed failure has been delivered.
bool hostFailed(HostCall call);
// Puts back what the slot held before hostFail; a slot not armed is left.
void hostRestore(HostCall call);
// Disarms every slot, and puts every slot back to its default.
void hostRestoreAll();

}  // namespace zu::platform

#endif

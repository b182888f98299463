// Directory walks, this library's file and its sister libraries, the clock,
// and the (headless) key queue; and the default DOS table.
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "platform/dos_impl.h"
#include "platform/dos_names.h"
#include "platform/dos_view.h"
#include "platform/host.h"

namespace zu::platform {
namespace files {
namespace {

constexpr std::size_t kNameSize = 256;
constexpr const char* kLibraryPrefix = "lib";
constexpr const char* kLibrarySuffix = ".so";
constexpr const char* kSelfExe = "/proc/self/exe";
constexpr std::uint32_t kMsPerSecond = 1000;
constexpr long kNsPerMs = 1000000L;
constexpr int kTmYearBase = 1900;
constexpr int kEpochYear = 1970;

// A walk holds its matches, sorted, so that no descriptor stays open
// between calls and the order does not depend on the file system.
struct Search {
  char** names;
  std::size_t count;
  std::size_t next;
};

void freeSearch(Search* search) {
  for (std::size_t i = 0; i < search->count; ++i) host.free(search->names[i]);
  host.free(search->names);
  host.free(search);
}

char* copyName(const char* name) {
  const std::size_t size = std::strlen(name) + 1;
  char* copy = static_cast<char*>(host.malloc(size));
  if (copy != nullptr) std::memcpy(copy, name, size);
  return copy;
}

int byBytes(const void* a, const void* b) {
  return std::strcmp(*static_cast<char* const*>(a), *static_cast<char* const*>(b));
}

bool isDot(const char* name) {
  return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

bool handOut(Search* search, unsigned char* name) {
  if (search->next >= search->count) return false;
  const char* found = search->names[search->next++];
  std::memcpy(name, found, std::strlen(found) + 1);
  return true;
}

}  // namespace

void* findFirst(const unsigned char* pattern, unsigned char* name) {
  // The directory part keeps its final separator, so "C:" and "\" stay what
  // they are; an empty one is the current directory.
  const std::size_t cut = filePartStart(pattern, true);
  const unsigned char* filePattern = pattern + cut;
  if (*filePattern == '\0' || cut >= kNameSize) return nullptr;
  unsigned char directory[kNameSize];
  std::memcpy(directory, pattern, cut);
  directory[cut] = '\0';
  if (cut == 0) {
    directory[0] = '.';
    directory[1] = '\0';
  }
  char path[view::kHostPathSize];
  if (view::resolve(directory, view::Want::kExisting, path, sizeof path) != kNoFailure) return nullptr;
  // At a drive's root there is no "." or "..", as on a DOS disk.
  bool atRoot = false;
  char root[view::kHostPathSize];
  for (int d = 0; d < view::kDriveCount && !atRoot; ++d) {
    atRoot = view::driveRoot(d, root, sizeof root) && std::strcmp(root, path) == 0;
  }
  DIR* dir = host.opendir(path);
  if (dir == nullptr) return nullptr;
  Search* search = static_cast<Search*>(host.malloc(sizeof(Search)));
  if (search != nullptr) *search = Search{nullptr, 0, 0};
  std::size_t capacity = 0;
  bool full = search == nullptr;
  while (!full) {
    // A failed read and the end look alike but for errno.
    errno = 0;
    struct dirent* entry = host.readdir(dir);
    if (entry == nullptr) {
      full = errno != 0;
      break;
    }
    if (atRoot && isDot(entry->d_name)) continue;
    if (!view::wildcardMatch(filePattern, reinterpret_cast<const unsigned char*>(entry->d_name))) {
      continue;
    }
    if (search->count == capacity) {
      capacity = capacity == 0 ? 16 : capacity * 2;
      void* grown = host.realloc(search->names, capacity * sizeof(char*));
      if (grown == nullptr) {
        full = true;
        break;
      }
      search->names = static_cast<char**>(grown);
    }
    char* copy = copyName(entry->d_name);
    if (copy == nullptr) {
      full = true;
      break;
    }
    search->names[search->count++] = copy;
  }
  host.closedir(dir);
  if (search == nullptr) return nullptr;
  if (full || search->count == 0) {
    freeSearch(search);
    return nullptr;
  }
  std::qsort(search->names, search->count, sizeof(char*), byBytes);
  handOut(search, name);
  return search;
}

bool findNext(void* search, unsigned char* name) { return handOut(static_cast<Search*>(search), name); }

void findClose(void* search) {
  if (search != nullptr) freeSearch(static_cast<Search*>(search));
}

bool moduleFile(char* path, std::size_t size) {
  Dl_info info;
  if (host.dladdr(reinterpret_cast<void*>(&moduleFile), &info) != 0 && info.dli_fname != nullptr &&
      info.dli_fname[0] == '/') {
    const std::size_t length = std::strlen(info.dli_fname);
    if (length >= size) return false;
    std::memcpy(path, info.dli_fname, length + 1);
    return true;
  }
  // The main program, when this code is linked into it.
  const ssize_t length = host.readlink(kSelfExe, path, size - 1);
  if (length <= 0 || static_cast<std::size_t>(length) >= size - 1) return false;
  path[length] = '\0';
  return true;
}

void* loadBeside(const unsigned char* stem) {
  char path[view::kHostPathSize];
  if (!dos.moduleFile(path, sizeof path)) return nullptr;
  char* slash = std::strrchr(path, '/');
  if (slash == nullptr) return nullptr;
  *++slash = '\0';
  const std::size_t directoryLength = static_cast<std::size_t>(slash - path);
  char wanted[kNameSize];
  const std::size_t stemLength = std::strlen(reinterpret_cast<const char*>(stem));
  const std::size_t nameLength = std::strlen(kLibraryPrefix) + stemLength + std::strlen(kLibrarySuffix);
  if (nameLength >= sizeof wanted || directoryLength + nameLength >= sizeof path) return nullptr;
  std::strcpy(wanted, kLibraryPrefix);
  std::strcat(wanted, reinterpret_cast<const char*>(stem));
  std::strcat(wanted, kLibrarySuffix);
  // The stem is a DOS name: the file beside us may be in any case.
  DIR* dir = host.opendir(path);
  if (dir == nullptr) return nullptr;
  bool found = false;
  while (struct dirent* entry = host.readdir(dir)) {
    if (std::strlen(entry->d_name) != nameLength) continue;
    if (sameName(reinterpret_cast<const unsigned char*>(entry->d_name),
                 reinterpret_cast<const unsigned char*>(wanted), nameLength)) {
      std::memcpy(slash, entry->d_name, nameLength + 1);
      found = true;
      break;
    }
  }
  host.closedir(dir);
  if (!found) return nullptr;
  return host.dlopen(path, RTLD_NOW);
}

// A clock that cannot be read gives the epoch.
void utcNow(UtcTime* time) {
  struct timespec now {};
  host.clock_gettime(CLOCK_REALTIME, &now);  // a failed read writes nothing
  struct tm fields {};
  if (host.gmtime_r(&now.tv_sec, &fields) == nullptr) {
    fields = tm{};
    fields.tm_mday = 1;
    fields.tm_year = kEpochYear - kTmYearBase;
  }
  time->day = static_cast<unsigned short>(fields.tm_mday);
  time->month = static_cast<unsigned short>(fields.tm_mon + 1);
  time->year = static_cast<unsigned short>(fields.tm_year + kTmYearBase);
  time->hour = static_cast<unsigned short>(fields.tm_hour);
  time->minute = static_cast<unsigned short>(fields.tm_min);
  time->second = static_cast<unsigned short>(fields.tm_sec);
  time->millisecond = static_cast<unsigned short>(now.tv_nsec / kNsPerMs);
}

std::uint32_t tickMs() {
  struct timespec now {};
  if (host.clock_gettime(CLOCK_MONOTONIC, &now) != 0) return 0;
  return static_cast<std::uint32_t>(now.tv_sec) * kMsPerSecond +
         static_cast<std::uint32_t>(now.tv_nsec / kNsPerMs);
}

// A headless desktop has no key queue.
bool nextKey(unsigned*, unsigned*) { return false; }
void beep() {}

}  // namespace files

constexpr DosCalls kDefaultDosCalls = {
    .open = files::fileOpen,
    .read = files::fileRead,
    .readAt = files::fileReadAt,
    .write = files::fileWrite,
    .seek = files::fileSeek,
    .close = files::fileClose,
    .lockRegion = files::fileLockRegion,
    .commit = files::fileCommit,
    .remove = files::fileRemove,
    .rename = files::fileRename,
    .attributes = files::fileAttributes,
    .tempDirectory = view::tempDirectory,
    .tempFile = files::tempFile,
    .driveType = view::driveType,
    .logicalDrives = view::logicalDrives,
    .currentDirectory = view::currentDirectory,
    .setCurrentDirectory = view::setCurrentDirectory,
    .findFirst = files::findFirst,
    .findNext = files::findNext,
    .findClose = files::findClose,
    .moduleFile = files::moduleFile,
    .loadBeside = files::loadBeside,
    .utcNow = files::utcNow,
    .tickMs = files::tickMs,
    .nextKey = files::nextKey,
    .beep = files::beep,
};

constinit DosCalls dos = kDefaultDosCalls;

}  // namespace zu::platform

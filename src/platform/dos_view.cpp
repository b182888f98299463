#include "platform/dos_view.h"

#include <cerrno>
#include <cstring>

#include "platform/charset.h"
#include "platform/dos_names.h"
#include "platform/environment.h"
#include "platform/host.h"
#include "platform/lock.h"
#include "platform/wildcard.h"

namespace zu::platform::view {
namespace {

constexpr int kDriveC = 2;
constexpr const char* kDefaultTemp = "/tmp";
// What a temporary file's name adds to its directory: "zuXXXX.TMP".
constexpr std::size_t kTempNameLength = 10;
constexpr std::size_t kDosNameMax = 255;
// A DOS path being built: components each led by a backslash, so that the
// root is the empty text.
constexpr std::size_t kNormalSize = 1024;

struct Normal {
  int drive = kDriveC;
  std::size_t length = 0;
  unsigned char path[kNormalSize];
};

// The drive map and the temporary directory. The current directory is not
// kept: it is the process's, read from the host at each call.
// Invariants, under viewLock: roots, tempDrive and temp hold only while
// loaded; reset clears loaded and the next call reads the environment
// again. tempDrive is -1 or a drive mapped to the temporary directory, and
// temp is a NUL-terminated DOS directory ending in kDosSeparator.
struct State {
  bool loaded = false;
  // A drive is mapped when its root is not empty; a root is an absolute host
  // directory without a trailing slash, except "/" itself.
  char roots[kDriveCount][kHostPathSize] = {};
  int tempDrive = -1;
  unsigned char temp[kDosNameMax + 1] = {};
};

constinit Mutex viewLock;
State state;

using Held = ScopedLock<Mutex>;

const char* variable(const char* name) {
  return reinterpret_cast<const char*>(environmentValue(reinterpret_cast<const unsigned char*>(name)));
}

bool isDirectory(const char* path) {
  struct stat info;
  return host.stat(path, &info) == 0 && S_ISDIR(info.st_mode);
}

const char* rootOf(int drive) { return state.roots[drive][0] != '\0' ? state.roots[drive] : nullptr; }

// Maps `drive` to a host directory, without its trailing slashes ("/"
// stays); false, with the drive as it was, when `text` is not absolute.
bool setRoot(int drive, const char* text, std::size_t length) {
  if (length == 0 || text[0] != kHostSeparator || length >= kHostPathSize) return false;
  while (length > 1 && text[length - 1] == kHostSeparator) --length;
  std::memcpy(state.roots[drive], text, length);
  state.roots[drive][length] = '\0';
  return true;
}

void unmap(int drive) { state.roots[drive][0] = '\0'; }

// "D=/srv/data;E=/mnt/e": later entries win; malformed ones are skipped.
void readDriveMap() {
  for (int d = 0; d < kDriveCount; ++d) unmap(d);
  setRoot(kDriveC, "/", 1);
  const char* map = variable(kDriveVariable);
  if (map == nullptr) return;
  while (*map != '\0') {
    const char* end = std::strchr(map, ';');
    const std::size_t length = end != nullptr ? static_cast<std::size_t>(end - map) : std::strlen(map);
    const int drive = length >= 2 ? driveIndex(static_cast<unsigned char>(map[0])) : -1;
    if (drive >= 0 && map[1] == '=') {
      if (length == 2) {
        unmap(drive);
      } else {
        setRoot(drive, map + 2, length - 2);
      }
    }
    map += length;
    if (*map == ';') ++map;
  }
}

// Appends the components of `text` to `n`, folding "." and "..".
bool appendComponents(Normal& n, const unsigned char* text) {
  while (*text != '\0') {
    while (isNameSeparator(*text)) ++text;
    const unsigned char* start = text;
    while (*text != '\0' && !isNameSeparator(*text)) ++text;
    const std::size_t length = static_cast<std::size_t>(text - start);
    if (length == 0 || (length == 1 && start[0] == '.')) continue;
    if (length == 2 && start[0] == '.' && start[1] == '.') {
      // Never above the drive's root.
      const std::size_t parent = parentStart(n.path, n.length);
      n.length = parent == kNoParent ? 0 : parent;
      continue;
    }
    if (n.length + 1 + length >= kNormalSize) return false;
    n.path[n.length++] = kDosSeparator;
    std::memcpy(n.path + n.length, start, length);
    n.length += length;
  }
  n.path[n.length] = '\0';
  return true;
}

// Bytes of "X:\..." for `n`, without the NUL.
std::size_t dosLength(const Normal& n) { return kDriveLength + (n.length == 0 ? 1 : n.length); }

// Whether `n` is short enough to be given out as a DOS path.
bool fitsDosPath(const Normal& n) { return dosLength(n) <= kDosPathMax; }

// Writes "X:\..." for `n`; false when it does not fit in `size` bytes.
bool dosText(const Normal& n, unsigned char* buffer, std::size_t size) {
  const std::size_t need = dosLength(n);
  if (need >= size) return false;
  buffer[0] = static_cast<unsigned char>('A' + n.drive);
  buffer[1] = kDriveColon;
  if (n.length == 0) {
    buffer[2] = kDosSeparator;
  } else {
    std::memcpy(buffer + 2, n.path, n.length);
  }
  buffer[need] = '\0';
  return true;
}

// The DOS form of a host path, under the drive with the longest root that
// holds it.
bool hostToDos(const char* path, Normal& n) {
  int best = -1;
  std::size_t bestLength = 0;
  for (int d = 0; d < kDriveCount; ++d) {
    const char* root = rootOf(d);
    if (root == nullptr) continue;
    std::size_t length = std::strlen(root);
    if (length == 1) length = 0;  // "/" holds everything
    if (std::strncmp(path, root, length) != 0) continue;
    if (path[length] != '\0' && path[length] != kHostSeparator) continue;
    if (best < 0 || length > bestLength) {
      best = d;
      bestLength = length;
    }
  }
  if (best < 0) return false;
  n.drive = best;
  n.length = 0;
  n.path[0] = '\0';
  return appendComponents(n, reinterpret_cast<const unsigned char*>(path + bestLength));
}

void useRootOfFirstDrive(Normal& n) {
  n.drive = kDriveC;
  if (rootOf(kDriveC) == nullptr) {
    for (int d = 0; d < kDriveCount; ++d) {
      if (rootOf(d) != nullptr) {
        n.drive = d;
        break;
      }
    }
  }
  n.length = 0;
  n.path[0] = '\0';
}

void findTemp() {
  const char* directory = variable(kTempVariable);
  if (directory == nullptr || directory[0] != kHostSeparator || !isDirectory(directory)) {
    directory = kDefaultTemp;
  }
  Normal n;
  unsigned char text[kDosNameMax + 1];
  if (hostToDos(directory, n) && dosText(n, text, sizeof text - 1)) {
    std::size_t length = std::strlen(reinterpret_cast<char*>(text));
    if (text[length - 1] != kDosSeparator) text[length++] = kDosSeparator;
    text[length] = '\0';
    unsigned char upper[kDosNameMax + 1];
    for (std::size_t i = 0; i <= length; ++i) upper[i] = upperCase(text[i]);
    if (length + kTempNameLength <= kDosNameMax && checkDosName(upper) == NameCheck::kValid) {
      std::memcpy(state.temp, text, length + 1);
      return;
    }
  }
  for (int d = kDriveCount - 1; d >= kDriveC; --d) {
    if (rootOf(d) != nullptr) continue;
    if (!setRoot(d, directory, std::strlen(directory))) break;
    state.tempDrive = d;
    state.temp[0] = static_cast<unsigned char>('A' + d);
    state.temp[1] = kDriveColon;
    state.temp[2] = kDosSeparator;
    state.temp[3] = '\0';
    return;
  }
  // Every letter taken: the root of the first drive is still an 8.3 path.
  useRootOfFirstDrive(n);
  dosText(n, state.temp, sizeof state.temp);
}

// The process's current directory in DOS form. A directory that no drive
// reaches, one too long for a DOS path, or one the host cannot name (it was
// removed) gives the root of the first drive.
void currentNormal(Normal& n) {
  char path[kHostPathSize];
  if (host.getcwd(path, sizeof path) != nullptr && hostToDos(path, n) && fitsDosPath(n)) return;
  useRootOfFirstDrive(n);
}

void ensureLoaded() {
  if (state.loaded) return;
  state.loaded = true;
  state.tempDrive = -1;
  readDriveMap();
  findTemp();
}

bool normalize(const unsigned char* name, Normal& n) {
  if (name[0] == '\0') return false;
  if (isNameSeparator(name[0]) && isNameSeparator(name[1])) return false;  // a network name
  if (hasDrive(name)) {
    const int drive = driveIndex(name[0]);
    if (drive < 0) return false;
    name += 2;
    if (!isNameSeparator(name[0])) currentNormal(n);
    if (isNameSeparator(name[0]) || n.drive != drive) {
      n.drive = drive;
      n.length = 0;
    }
  } else {
    currentNormal(n);
    if (isNameSeparator(name[0])) n.length = 0;
  }
  return appendComponents(n, name);
}

// What stands at `path`: kNoFailure for a directory, kNoEntry for nothing
// or something else, or the class of a host failure on the way, which must
// not pass for an absent name.
ErrorClass directoryAt(const char* path) {
  struct stat info;
  if (host.stat(path, &info) == 0) return S_ISDIR(info.st_mode) ? kNoFailure : kNoEntry;
  return classifyHostError(errno);
}

// Appends to `host` (a directory, `length` bytes) the name of its entry
// that is `component` without regard to case: the name itself when there is
// one, else the lowest in byte order of those that match. kNoEntry when none
// does, the name as given then standing in place for a caller that creates
// it; another class when the host failed on the way.
ErrorClass matchComponent(char* path, std::size_t length, std::size_t size, const unsigned char* component,
                          std::size_t componentLength) {
  if (length + componentLength + 1 >= size) return kNoEntry;
  std::memcpy(path + length, component, componentLength);
  path[length + componentLength] = '\0';
  struct stat info;
  if (host.lstat(path, &info) == 0) return kNoFailure;
  ErrorClass failure = classifyHostError(errno);
  if (failure != kNoEntry) return failure;
  path[length] = '\0';
  DIR* dir = host.opendir(path);
  if (dir == nullptr) {
    failure = classifyHostError(errno);
  } else {
    bool found = false;
    for (;;) {
      errno = 0;
      const struct dirent* entry = host.readdir(dir);
      if (entry == nullptr) {
        // The end of the directory leaves errno alone; a failure sets it.
        failure = errno != 0 ? classifyHostError(errno) : found ? kNoFailure : kNoEntry;
        break;
      }
      const unsigned char* entryName = reinterpret_cast<const unsigned char*>(entry->d_name);
      if (std::strlen(entry->d_name) != componentLength || !sameName(entryName, component, componentLength)) {
        continue;
      }
      if (!found || std::memcmp(entry->d_name, path + length, componentLength) < 0) {
        std::memcpy(path + length, entry->d_name, componentLength);
        found = true;
      }
    }
    host.closedir(dir);
  }
  if (failure != kNoFailure) std::memcpy(path + length, component, componentLength);
  path[length + componentLength] = '\0';
  return failure;
}

}  // namespace

void reset() {
  Held held(viewLock);
  state.loaded = false;
}

bool driveRoot(int index, char* buffer, std::size_t size) {
  Held held(viewLock);
  ensureLoaded();
  if (index < 0 || index >= kDriveCount || rootOf(index) == nullptr) return false;
  const std::size_t length = std::strlen(state.roots[index]);
  if (length >= size) return false;
  std::memcpy(buffer, state.roots[index], length + 1);
  return true;
}

int tempDrive() {
  Held held(viewLock);
  ensureLoaded();
  return state.tempDrive;
}

ErrorClass resolve(const unsigned char* name, Want want, char* path, std::size_t size) {
  Held held(viewLock);
  ensureLoaded();
  Normal n;
  if (!normalize(name, n)) return kNoEntry;
  const char* root = rootOf(n.drive);
  if (root == nullptr) return kNoEntry;
  std::size_t length = std::strlen(root);
  if (length >= size) return kNoEntry;
  std::memcpy(path, root, length + 1);
  if (length == 1) length = 0;  // components are led by '/', so "/" adds nothing
  if (n.length == 0) return directoryAt(path);
  const unsigned char* at = n.path;
  while (*at != '\0') {
    ++at;  // the component's backslash
    const unsigned char* end = at;
    while (*end != '\0' && *end != kDosSeparator) ++end;
    const std::size_t componentLength = static_cast<std::size_t>(end - at);
    const bool last = *end == '\0';
    if (length + 1 >= size) return kNoEntry;
    path[length++] = static_cast<char>(kHostSeparator);
    const ErrorClass matched = matchComponent(path, length, size, at, componentLength);
    if (matched != kNoFailure && (matched != kNoEntry || !last || want != Want::kCreatable)) {
      return matched;
    }
    length = std::strlen(path);
    if (!last) {
      const ErrorClass directory = directoryAt(path);
      if (directory != kNoFailure) return directory;
    }
    at = end;
  }
  return kNoFailure;
}

namespace {
bool globMatch(const unsigned char* pattern, std::size_t patternLength, const unsigned char* name,
               std::size_t nameLength) {
  // No escape: a DOS pattern cannot hold a NUL.
  static constexpr Wildcards kDosWildcards{'*', '?', '\0', false};
  return platform::wildcardMatch(name, static_cast<std::uint32_t>(nameLength), pattern,
                                 static_cast<std::uint32_t>(patternLength), kDosWildcards);
}
}  // namespace

bool wildcardMatch(const unsigned char* pattern, const unsigned char* name) {
  const std::size_t p = std::strlen(reinterpret_cast<const char*>(pattern));
  const std::size_t s = std::strlen(reinterpret_cast<const char*>(name));
  if (globMatch(pattern, p, name, s)) return true;
  if (std::memchr(name, kExtensionDot, s) != nullptr) return false;
  if (p >= 2 && pattern[p - 2] == kExtensionDot && pattern[p - 1] == '*') {
    return globMatch(pattern, p - 2, name, s);
  }
  return p >= 1 && pattern[p - 1] == kExtensionDot && globMatch(pattern, p - 1, name, s);
}

void currentDirectory(unsigned char* buffer, std::size_t size) {
  Held held(viewLock);
  ensureLoaded();
  Normal n;
  currentNormal(n);
  if (size > 0 && !dosText(n, buffer, size)) buffer[0] = '\0';
}

ErrorClass setCurrentDirectory(const unsigned char* path) {
  char target[kHostPathSize];
  const ErrorClass failure = resolve(path, Want::kExisting, target, sizeof target);
  if (failure != kNoFailure) return failure;
  {
    Held held(viewLock);
    Normal n;
    if (!normalize(path, n) || !fitsDosPath(n)) return kNoEntry;
  }
  if (!isDirectory(target)) return kNoEntry;
  return host.chdir(target) == 0 ? kNoFailure : classifyHostError(errno);
}

void tempDirectory(unsigned char* buffer, std::size_t size) {
  Held held(viewLock);
  ensureLoaded();
  const std::size_t length = std::strlen(reinterpret_cast<char*>(state.temp));
  if (length >= size) {
    if (size > 0) buffer[0] = '\0';
    return;
  }
  std::memcpy(buffer, state.temp, length + 1);
}

unsigned driveType(const unsigned char* root) {
  if (root == nullptr || root[0] == '\0' || root[1] != kDriveColon) return kDriveNoRoot;
  const int drive = driveIndex(root[0]);
  Held held(viewLock);
  ensureLoaded();
  if (drive < 0 || rootOf(drive) == nullptr) return kDriveNoRoot;
  return isDirectory(state.roots[drive]) ? kDriveFixed : kDriveNoRoot;
}

std::uint32_t logicalDrives() {
  Held held(viewLock);
  ensureLoaded();
  std::uint32_t bits = 0;
  for (int d = 0; d < kDriveCount; ++d) {
    if (rootOf(d) != nullptr && isDirectory(state.roots[d])) bits |= 1u << d;
  }
  return bits;
}

}  // namespace zu::platform::view

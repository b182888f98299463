#include "platform/dos_view.h"

#include <dirent.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "platform/charset.h"
#include "platform/dos_names.h"
#include "platform/platform.h"

namespace zu::platform::view {
namespace {

constexpr int kDriveC = 2;
constexpr unsigned char kHostSeparator = '/';
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

struct State {
  bool loaded = false;
  char* roots[kDriveCount] = {};
  int tempDrive = -1;
  unsigned char temp[kDosNameMax + 1] = {};
  Normal cwd;
};

pthread_mutex_t viewLock = PTHREAD_MUTEX_INITIALIZER;
State state;

class Held {
 public:
  Held() { pthread_mutex_lock(&viewLock); }
  ~Held() { pthread_mutex_unlock(&viewLock); }
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;
};

bool isSeparator(unsigned char c) { return c == kDosSeparator || c == kHostSeparator; }

int driveIndex(unsigned char letter) {
  const unsigned char upper = upperCase(letter);
  return upper >= 'A' && upper <= 'Z' ? upper - 'A' : -1;
}

const char* environmentValue(const char* name) {
  char** block = sys.environment();
  if (block == nullptr) return nullptr;
  const std::size_t length = std::strlen(name);
  for (char** entry = block; *entry != nullptr; ++entry) {
    if (std::strncmp(*entry, name, length) == 0 && (*entry)[length] == '=') return *entry + length + 1;
  }
  return nullptr;
}

bool isDirectory(const char* host) {
  struct stat info;
  return stat(host, &info) == 0 && S_ISDIR(info.st_mode);
}

// A host directory without its trailing slashes ("/" stays), or null.
char* copyRoot(const char* text, std::size_t length) {
  if (length == 0 || text[0] != kHostSeparator || length >= kHostPathSize) return nullptr;
  while (length > 1 && text[length - 1] == kHostSeparator) --length;
  char* root = static_cast<char*>(std::malloc(length + 1));
  if (root == nullptr) return nullptr;
  std::memcpy(root, text, length);
  root[length] = '\0';
  return root;
}

void setRoot(int drive, char* root) {
  std::free(state.roots[drive]);
  state.roots[drive] = root;
}

// "D=/srv/data;E=/mnt/e": later entries win; malformed ones are skipped.
void readDriveMap() {
  setRoot(kDriveC, copyRoot("/", 1));
  const char* map = environmentValue(kDriveVariable);
  if (map == nullptr) return;
  while (*map != '\0') {
    const char* end = std::strchr(map, ';');
    const std::size_t length = end != nullptr ? static_cast<std::size_t>(end - map) : std::strlen(map);
    const int drive = length >= 2 ? driveIndex(static_cast<unsigned char>(map[0])) : -1;
    if (drive >= 0 && map[1] == '=') {
      if (length == 2) {
        setRoot(drive, nullptr);
      } else if (char* root = copyRoot(map + 2, length - 2)) {
        setRoot(drive, root);
      }
    }
    map += length;
    if (*map == ';') ++map;
  }
}

// Appends the components of `text` to `n`, folding "." and "..".
bool appendComponents(Normal& n, const unsigned char* text) {
  while (*text != '\0') {
    while (isSeparator(*text)) ++text;
    const unsigned char* start = text;
    while (*text != '\0' && !isSeparator(*text)) ++text;
    const std::size_t length = static_cast<std::size_t>(text - start);
    if (length == 0 || (length == 1 && start[0] == '.')) continue;
    if (length == 2 && start[0] == '.' && start[1] == '.') {
      while (n.length > 0 && n.path[--n.length] != kDosSeparator) {
      }
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

// Writes "X:\..." for `n`; false when it does not fit in `size` bytes.
bool dosText(const Normal& n, unsigned char* buffer, std::size_t size) {
  const std::size_t need = 2 + (n.length == 0 ? 1 : n.length);
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
bool hostToDos(const char* host, Normal& n) {
  int best = -1;
  std::size_t bestLength = 0;
  for (int d = 0; d < kDriveCount; ++d) {
    const char* root = state.roots[d];
    if (root == nullptr) continue;
    std::size_t length = std::strlen(root);
    if (length == 1) length = 0;  // "/" holds everything
    if (std::strncmp(host, root, length) != 0) continue;
    if (host[length] != '\0' && host[length] != kHostSeparator) continue;
    if (best < 0 || length > bestLength) {
      best = d;
      bestLength = length;
    }
  }
  if (best < 0) return false;
  n.drive = best;
  n.length = 0;
  n.path[0] = '\0';
  return appendComponents(n, reinterpret_cast<const unsigned char*>(host + bestLength));
}

void useRootOfFirstDrive(Normal& n) {
  n.drive = kDriveC;
  if (state.roots[kDriveC] == nullptr) {
    for (int d = 0; d < kDriveCount; ++d) {
      if (state.roots[d] != nullptr) {
        n.drive = d;
        break;
      }
    }
  }
  n.length = 0;
  n.path[0] = '\0';
}

void findTemp() {
  const char* host = environmentValue(kTempVariable);
  if (host == nullptr || host[0] != kHostSeparator || !isDirectory(host)) host = kDefaultTemp;
  Normal n;
  unsigned char text[kDosNameMax + 1];
  if (hostToDos(host, n) && dosText(n, text, sizeof text - 1)) {
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
    if (state.roots[d] != nullptr) continue;
    char* root = copyRoot(host, std::strlen(host));
    if (root == nullptr) break;
    setRoot(d, root);
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

void findCurrentDirectory() {
  char host[kHostPathSize];
  unsigned char text[kDosNameMax + 1];
  if (getcwd(host, sizeof host) != nullptr && hostToDos(host, state.cwd) &&
      dosText(state.cwd, text, kDosPathMax + 1)) {
    return;
  }
  useRootOfFirstDrive(state.cwd);
}

void ensureLoaded() {
  if (state.loaded) return;
  state.loaded = true;
  state.tempDrive = -1;
  readDriveMap();
  findTemp();
  findCurrentDirectory();
}

bool normalize(const unsigned char* name, Normal& n) {
  if (name[0] == '\0') return false;
  if (isSeparator(name[0]) && isSeparator(name[1])) return false;  // a network name
  if (name[0] != '\0' && name[1] == kDriveColon) {
    const int drive = driveIndex(name[0]);
    if (drive < 0) return false;
    name += 2;
    if (!isSeparator(name[0]) && drive == state.cwd.drive) {
      n = state.cwd;
    } else {
      n.drive = drive;
      n.length = 0;
    }
  } else if (isSeparator(name[0])) {
    n.drive = state.cwd.drive;
    n.length = 0;
  } else {
    n = state.cwd;
  }
  return appendComponents(n, name);
}

bool sameUpper(const unsigned char* a, const unsigned char* b, std::size_t length) {
  for (std::size_t i = 0; i < length; ++i) {
    if (upperCase(a[i]) != upperCase(b[i])) return false;
  }
  return true;
}

// Appends to `host` (a directory, `length` bytes) the name of its entry
// that is `component` without regard to case: the name itself when there is
// one, else the lowest in byte order of those that match.
bool matchComponent(char* host, std::size_t length, std::size_t size, const unsigned char* component,
                    std::size_t componentLength) {
  if (length + componentLength + 1 >= size) return false;
  std::memcpy(host + length, component, componentLength);
  host[length + componentLength] = '\0';
  struct stat info;
  if (lstat(host, &info) == 0) return true;
  host[length] = '\0';
  DIR* dir = opendir(host);
  bool found = false;
  if (dir != nullptr) {
  while (struct dirent* entry = readdir(dir)) {
    const unsigned char* entryName = reinterpret_cast<const unsigned char*>(entry->d_name);
    if (std::strlen(entry->d_name) != componentLength || !sameUpper(entryName, component, componentLength)) {
      continue;
    }
    if (!found || std::memcmp(entry->d_name, host + length, componentLength) < 0) {
      std::memcpy(host + length, entry->d_name, componentLength);
      found = true;
    }
  }
  closedir(dir);
  }
  // Not found: the name as given stays in place for a caller that creates it.
  if (!found) std::memcpy(host + length, component, componentLength);
  host[length + componentLength] = '\0';
  return found;
}

}  // namespace

void reset() {
  Held held;
  for (int d = 0; d < kDriveCount; ++d) setRoot(d, nullptr);
  state.loaded = false;
}

bool driveRoot(int index, char* buffer, std::size_t size) {
  Held held;
  ensureLoaded();
  if (index < 0 || index >= kDriveCount || state.roots[index] == nullptr) return false;
  const std::size_t length = std::strlen(state.roots[index]);
  if (length >= size) return false;
  std::memcpy(buffer, state.roots[index], length + 1);
  return true;
}

int tempDrive() {
  Held held;
  ensureLoaded();
  return state.tempDrive;
}

ErrorClass resolve(const unsigned char* name, Want want, char* host, std::size_t size) {
  Held held;
  ensureLoaded();
  Normal n;
  if (!normalize(name, n)) return kNoEntry;
  const char* root = state.roots[n.drive];
  if (root == nullptr) return kNoEntry;
  std::size_t length = std::strlen(root);
  if (length >= size) return kNoEntry;
  std::memcpy(host, root, length + 1);
  if (length == 1) length = 0;  // components are led by '/', so "/" adds nothing
  if (n.length == 0) return isDirectory(host) ? kNoFailure : kNoEntry;
  const unsigned char* at = n.path;
  while (*at != '\0') {
    ++at;  // the component's backslash
    const unsigned char* end = at;
    while (*end != '\0' && *end != kDosSeparator) ++end;
    const std::size_t componentLength = static_cast<std::size_t>(end - at);
    const bool last = *end == '\0';
    if (length + 1 >= size) return kNoEntry;
    host[length++] = static_cast<char>(kHostSeparator);
    if (!matchComponent(host, length, size, at, componentLength)) {
      if (!last || want != Want::kCreatable) return kNoEntry;
    }
    length = std::strlen(host);
    if (!last && !isDirectory(host)) return kNoEntry;
    at = end;
  }
  return kNoFailure;
}

namespace {
bool globMatch(const unsigned char* pattern, std::size_t patternLength, const unsigned char* name,
               std::size_t nameLength) {
  constexpr std::size_t kNoStar = static_cast<std::size_t>(-1);
  std::size_t p = 0, s = 0, star = kNoStar, starName = 0;
  while (s < nameLength) {
    if (p < patternLength && (pattern[p] == '?' || upperCase(pattern[p]) == upperCase(name[s]))) {
      ++p;
      ++s;
    } else if (p < patternLength && pattern[p] == '*') {
      star = p++;
      starName = s;
    } else if (star != kNoStar) {
      p = star + 1;
      s = ++starName;
    } else {
      return false;
    }
  }
  while (p < patternLength && pattern[p] == '*') ++p;
  return p == patternLength;
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
  Held held;
  ensureLoaded();
  if (size > 0 && !dosText(state.cwd, buffer, size)) buffer[0] = '\0';
}

ErrorClass setCurrentDirectory(const unsigned char* path) {
  char host[kHostPathSize];
  ErrorClass failure = resolve(path, Want::kExisting, host, sizeof host);
  if (failure != kNoFailure) return failure;
  if (!isDirectory(host)) return kNoEntry;
  Held held;
  Normal n;
  unsigned char text[kDosNameMax + 1];
  if (!normalize(path, n) || !dosText(n, text, kDosPathMax + 1)) return kNoEntry;
  state.cwd = n;
  return kNoFailure;
}

void tempDirectory(unsigned char* buffer, std::size_t size) {
  Held held;
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
  Held held;
  ensureLoaded();
  if (drive < 0 || state.roots[drive] == nullptr) return kDriveNoRoot;
  return isDirectory(state.roots[drive]) ? kDriveFixed : kDriveNoRoot;
}

std::uint32_t logicalDrives() {
  Held held;
  ensureLoaded();
  std::uint32_t bits = 0;
  for (int d = 0; d < kDriveCount; ++d) {
    if (state.roots[d] != nullptr && isDirectory(state.roots[d])) bits |= 1u << d;
  }
  return bits;
}

}  // namespace zu::platform::view

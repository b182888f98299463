// Files behind numeric handles. The table keeps, per handle, the descriptor,
// its access and sharing, the file's identity, and the regions it has
// locked, so that the rules the library expects of its files hold inside the
// process too: sharing modes, and reads and writes refused in a region that
// another handle holds. Across processes a region lock is an open-file-
// description lock, which every handle has its own of.
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "platform/dos_impl.h"
#include "platform/dos_names.h"
#include "platform/dos_view.h"
#include "platform/host.h"
#include "platform/lock.h"

namespace zu::platform {

ErrorClass classifyHostError(int hostError) {
  switch (hostError) {
    case 0:
      return kNoFailure;
    case ENOENT:
    case ENOTDIR:
    case ENAMETOOLONG:
    case ELOOP:
      return kNoEntry;
    case EBADF:
      return kBadHandle;
    case ENOMEM:
      return kNoMemory;
    case EACCES:
    case EPERM:
    case EROFS:
    case ETXTBSY:
    case EISDIR:
    case EBUSY:
    case EAGAIN:
      return kAccessDenied;
    case EMFILE:
    case ENFILE:
      return kTooManyFiles;
    case ENOSPC:
    case EDQUOT:
      return kNoSpace;
    case EDEADLK:
      return kDeadlock;
    default:
      return kIoFailure;
  }
}

namespace files {
namespace {

constexpr int kNoDescriptor = -1;
constexpr mode_t kNewFileMode = 0666;
constexpr std::size_t kDosNameSize = 256;
constexpr std::uint32_t kTempNumbers = 0xFFFF;

struct Region {
  std::uint64_t start, length;
  bool overlaps(const Region& other) const {
    return length != 0 && other.length != 0 && start < other.start + other.length &&
           other.start < start + length;
  }
};

// Invariants, under tableLock: handle h is open exactly when table[h].fd is
// not kNoDescriptor; handle 0 is never handed out. regions is null or a host
// block of regionCapacity entries, the first regionCount of them held as
// descriptor locks on fd; no two held regions of one file overlap. Closing
// frees regions and resets the slot.
struct Slot {
  int fd = kNoDescriptor;
  // The handle keeps its own position, so that a seek costs no call and
  // each transfer is one positioned call.
  std::uint64_t position = 0;
  bool write = false;
  bool exclusive = false;
  dev_t device = 0;
  ino_t inode = 0;
  Region* regions = nullptr;
  std::size_t regionCount = 0;
  std::size_t regionCapacity = 0;

  bool sameFile(const struct stat& info) const {
    return fd != kNoDescriptor && device == info.st_dev && inode == info.st_ino;
  }
};

Slot table[kHandleLimit];
constinit Mutex tableLock;
// Regions held by all handles together, so that a transfer looks through
// the table only while some region is held at all.
std::size_t regionsHeld = 0;

using Held = ScopedLock<Mutex>;

Slot* slotOf(int handle) {
  if (handle <= 0 || handle >= kHandleLimit || table[handle].fd == kNoDescriptor) return nullptr;
  return &table[handle];
}

bool openInProcess(const struct stat& info) {
  for (int h = 1; h < kHandleLimit; ++h) {
    if (table[h].sameFile(info)) return true;
  }
  return false;
}

// Windows-style read-only: the owner's write bit is off, whoever asks.
bool readOnly(const struct stat& info) { return (info.st_mode & S_IWUSR) == 0; }

// Whether a handle of the same file as `self`, other than `except` (0: none),
// holds a region overlapping `wanted`.
bool regionHeld(const Slot& self, int except, const Region& wanted) {
  if (regionsHeld == 0) return false;
  for (int h = 1; h < kHandleLimit; ++h) {
    const Slot& other = table[h];
    if (h == except || other.fd == kNoDescriptor || other.device != self.device ||
        other.inode != self.inode) {
      continue;
    }
    for (std::size_t r = 0; r < other.regionCount; ++r) {
      if (other.regions[r].overlaps(wanted)) return true;
    }
  }
  return false;
}

// Moves the handle to `at` if given, checks the region [position, position
// + size) of a transfer and hands out the descriptor and the position; the
// transfer itself runs outside the table's lock.
ErrorClass prepareTransfer(int handle, std::uint32_t size, bool writing, const std::uint32_t* at, int* fd,
                           std::uint64_t* position) {
  Held held(tableLock);
  Slot* slot = slotOf(handle);
  if (slot == nullptr || (writing && !slot->write)) return kBadHandle;
  if (at != nullptr) slot->position = *at;
  if (regionHeld(*slot, handle, Region{slot->position, size})) return kAccessDenied;
  *fd = slot->fd;
  *position = slot->position;
  return kNoFailure;
}

// Moves the handle past what a transfer from `position` moved, unless the
// handle was closed meanwhile.
void finishTransfer(int handle, int fd, std::uint64_t position, std::uint32_t done) {
  Held held(tableLock);
  Slot* slot = slotOf(handle);
  if (slot != nullptr && slot->fd == fd) slot->position = position + done;
}

bool addRegion(Slot& slot, const Region& region) {
  if (slot.regionCount == slot.regionCapacity) {
    const std::size_t capacity = slot.regionCapacity == 0 ? 4 : slot.regionCapacity * 2;
    void* grown = host.realloc(slot.regions, capacity * sizeof(Region));
    if (grown == nullptr) return false;
    slot.regions = static_cast<Region*>(grown);
    slot.regionCapacity = capacity;
  }
  slot.regions[slot.regionCount++] = region;
  ++regionsHeld;
  return true;
}

ErrorClass ofdLock(int fd, short type, const Region& region) {
  if (region.length == 0) return kNoFailure;
  struct flock lock;
  std::memset(&lock, 0, sizeof lock);
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  lock.l_start = static_cast<off_t>(region.start);
  lock.l_len = static_cast<off_t>(region.length);
  if (host.fcntl(fd, F_OFD_SETLK, &lock) == 0) return kNoFailure;
  return classifyHostError(errno);
}


}  // namespace

ErrorClass fileOpen(const unsigned char* name, unsigned mode, int* handle) {
  const bool create = (mode & kOpenCreate) != 0;
  const bool write = create || (mode & kOpenWrite) != 0;
  const bool exclusive = !create && (mode & kOpenExclusive) != 0;
  char path[view::kHostPathSize];
  ErrorClass failure = view::resolve(name, create ? view::Want::kCreatable : view::Want::kExisting,
                                     path, sizeof path);
  if (failure != kNoFailure) return failure;
  Held held(tableLock);
  int free = 0;
  for (int h = 1; h < kHandleLimit && free == 0; ++h) {
    if (table[h].fd == kNoDescriptor) free = h;
  }
  if (free == 0) return kTooManyFiles;
  struct stat info;
  if (host.stat(path, &info) == 0) {
    if (S_ISDIR(info.st_mode)) return kAccessDenied;
    if (write && readOnly(info)) return kAccessDenied;
    for (int h = 1; h < kHandleLimit; ++h) {
      if (table[h].sameFile(info) && (exclusive || table[h].exclusive)) return kAccessDenied;
    }
  }
  const int flags = (create ? O_RDWR | O_CREAT | O_TRUNC : write ? O_RDWR : O_RDONLY) | O_CLOEXEC;
  int fd;
  do {
    fd = host.open(path, flags, kNewFileMode);
  } while (fd < 0 && errno == EINTR);
  if (fd < 0) return classifyHostError(errno);
  if (host.fstat(fd, &info) != 0) {
    failure = classifyHostError(errno);
    host.close(fd);
    return failure;
  }
  Slot& slot = table[free];
  slot.fd = fd;
  slot.write = write;
  slot.exclusive = exclusive;
  slot.device = info.st_dev;
  slot.inode = info.st_ino;
  slot.regionCount = 0;
  *handle = free;
  return kNoFailure;
}

namespace {

ErrorClass readFrom(int handle, const std::uint32_t* at, void* buffer, std::uint32_t size, std::uint32_t* done) {
  *done = 0;
  int fd;
  std::uint64_t position;
  ErrorClass failure = prepareTransfer(handle, size, false, at, &fd, &position);
  if (failure != kNoFailure) return failure;
  ssize_t got;
  do {
    got = host.pread(fd, buffer, size, static_cast<off_t>(position));
  } while (got < 0 && errno == EINTR);
  if (got < 0) return classifyHostError(errno);
  *done = static_cast<std::uint32_t>(got);
  finishTransfer(handle, fd, position, *done);
  return kNoFailure;
}

}  // namespace

ErrorClass fileRead(int handle, void* buffer, std::uint32_t size, std::uint32_t* done) {
  return readFrom(handle, nullptr, buffer, size, done);
}

ErrorClass fileReadAt(int handle, std::uint32_t position, void* buffer, std::uint32_t size,
                      std::uint32_t* done) {
  return readFrom(handle, &position, buffer, size, done);
}

// A full disk is a short count, as the library's writes expect of it; any
// other failure is one only when nothing was written.
ErrorClass fileWrite(int handle, const void* buffer, std::uint32_t size, std::uint32_t* done) {
  *done = 0;
  int fd;
  std::uint64_t position;
  ErrorClass failure = prepareTransfer(handle, size, true, nullptr, &fd, &position);
  if (failure != kNoFailure) return failure;
  const unsigned char* at = static_cast<const unsigned char*>(buffer);
  ErrorClass result = kNoFailure;
  while (*done < size) {
    const ssize_t put = host.pwrite(fd, at + *done, size - *done, static_cast<off_t>(position + *done));
    if (put > 0) {
      *done += static_cast<std::uint32_t>(put);
      continue;
    }
    if (put < 0 && errno == EINTR) continue;
    const ErrorClass why = put < 0 ? classifyHostError(errno) : kNoSpace;
    result = why == kNoSpace || *done > 0 ? kNoFailure : why;
    break;
  }
  finishTransfer(handle, fd, position, *done);
  return result;
}

ErrorClass fileSeek(int handle, std::int32_t offset, unsigned short origin, std::uint32_t* position) {
  enum : unsigned short { kFromStart, kFromHere, kFromEnd, kOrigins };
  if (origin >= kOrigins) return kIoFailure;
  Held held(tableLock);
  Slot* slot = slotOf(handle);
  if (slot == nullptr) return kBadHandle;
  std::int64_t base = 0;
  if (origin == kFromHere) {
    base = static_cast<std::int64_t>(slot->position);
  } else if (origin == kFromEnd) {
    struct stat info;
    if (host.fstat(slot->fd, &info) != 0) return classifyHostError(errno);
    base = info.st_size;
  }
  const std::int64_t at = base + offset;
  if (at < 0) return classifyHostError(EINVAL);
  slot->position = static_cast<std::uint64_t>(at);
  *position = static_cast<std::uint32_t>(at);
  return kNoFailure;
}

ErrorClass fileClose(int handle) {
  Held held(tableLock);
  Slot* slot = slotOf(handle);
  if (slot == nullptr) return kBadHandle;
  // Closing the descriptor drops its region locks with it.
  const int result = host.close(slot->fd);
  const int why = errno;
  host.free(slot->regions);
  regionsHeld -= slot->regionCount;
  *slot = Slot();
  return result == 0 || why == EINTR ? kNoFailure : classifyHostError(why);
}

ErrorClass fileLockRegion(int handle, bool unlock, std::uint32_t length) {
  Held held(tableLock);
  Slot* slot = slotOf(handle);
  if (slot == nullptr) return kBadHandle;
  const Region region{slot->position, length};
  if (unlock) {
    for (std::size_t r = 0; r < slot->regionCount; ++r) {
      if (slot->regions[r].start != region.start || slot->regions[r].length != region.length) continue;
      const ErrorClass failure = ofdLock(slot->fd, F_UNLCK, region);
      if (failure != kNoFailure) return failure;
      slot->regions[r] = slot->regions[--slot->regionCount];
      --regionsHeld;
      return kNoFailure;
    }
    return kAccessDenied;  // not a region this handle locked
  }
  // Regions do not stack, not even on one handle.
  if (regionHeld(*slot, 0, region)) return kAccessDenied;
  ErrorClass failure = ofdLock(slot->fd, F_WRLCK, region);
  if (failure != kNoFailure) return failure;
  if (!addRegion(*slot, region)) {
    ofdLock(slot->fd, F_UNLCK, region);
    return kNoMemory;
  }
  return kNoFailure;
}

ErrorClass fileCommit(int handle) {
  int fd;
  {
    Held held(tableLock);
    Slot* slot = slotOf(handle);
    if (slot == nullptr) return kBadHandle;
    fd = slot->fd;
  }
  return host.fsync(fd) == 0 ? kNoFailure : classifyHostError(errno);
}

ErrorClass fileRemove(const unsigned char* name) {
  char path[view::kHostPathSize];
  const ErrorClass failure = view::resolve(name, view::Want::kExisting, path, sizeof path);
  if (failure != kNoFailure) return failure;
  Held held(tableLock);
  struct stat info;
  if (host.lstat(path, &info) != 0) return classifyHostError(errno);
  // Files are shared for reading and writing only, never for deleting.
  if (S_ISDIR(info.st_mode) || readOnly(info) || openInProcess(info)) return kAccessDenied;
  return host.unlink(path) == 0 ? kNoFailure : classifyHostError(errno);
}

ErrorClass fileRename(const unsigned char* from, const unsigned char* to) {
  char source[view::kHostPathSize];
  char target[view::kHostPathSize];
  ErrorClass failure = view::resolve(from, view::Want::kExisting, source, sizeof source);
  if (failure == kNoFailure) failure = view::resolve(to, view::Want::kCreatable, target, sizeof target);
  if (failure != kNoFailure) return failure;
  Held held(tableLock);
  struct stat was, there;
  if (host.lstat(source, &was) != 0) return classifyHostError(errno);
  if (openInProcess(was)) return kAccessDenied;
  if (host.lstat(target, &there) == 0) {
    if (there.st_dev != was.st_dev || there.st_ino != was.st_ino) return classifyHostError(EEXIST);
    // The same file under another case: the new name is taken as given.
    char* slash = std::strrchr(target, '/');
    const unsigned char* given = to + filePartStart(to, true);  // as given
    const std::size_t length = std::strlen(reinterpret_cast<const char*>(given));
    if (slash == nullptr || static_cast<std::size_t>(slash + 1 - target) + length >= sizeof target) {
      return kNoEntry;
    }
    std::memcpy(slash + 1, given, length + 1);
  }
  return host.rename(source, target) == 0 ? kNoFailure : classifyHostError(errno);
}

ErrorClass fileAttributes(const unsigned char* name, unsigned* bits) {
  char path[view::kHostPathSize];
  const ErrorClass failure = view::resolve(name, view::Want::kExisting, path, sizeof path);
  if (failure != kNoFailure) return failure;
  struct stat info;
  if (host.stat(path, &info) != 0) return classifyHostError(errno);
  *bits = S_ISDIR(info.st_mode) ? kAttrDirectory : kAttrFile | (readOnly(info) ? kAttrReadOnly : 0u);
  return kNoFailure;
}

ErrorClass tempFile(const unsigned char* directory, const char* prefix, unsigned char* name) {
  const std::size_t length = std::strlen(reinterpret_cast<const char*>(directory));
  const bool separated = length > 0 && (directory[length - 1] == kDosSeparator || directory[length - 1] == kDriveColon);
  std::uint32_t number = (tickMs() ^ static_cast<std::uint32_t>(host.getpid())) & kTempNumbers;
  for (std::uint32_t tries = 0; tries < kTempNumbers; ++tries) {
    number = number % kTempNumbers + 1;  // 1 to 0xFFFF
    char candidate[kDosNameSize];
    const int made = std::snprintf(candidate, sizeof candidate, "%s%s%.3s%04X.TMP",
                                   reinterpret_cast<const char*>(directory), separated ? "" : "\\",
                                   prefix, static_cast<unsigned>(number));
    if (made < 0 || static_cast<std::size_t>(made) >= sizeof candidate) return kNoEntry;
    char path[view::kHostPathSize];
    const unsigned char* dosName = reinterpret_cast<const unsigned char*>(candidate);
    ErrorClass failure = view::resolve(dosName, view::Want::kCreatable, path, sizeof path);
    if (failure != kNoFailure) return failure;
    const int fd = host.open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kNewFileMode);
    if (fd < 0) {
      if (errno == EEXIST) continue;
      return classifyHostError(errno);
    }
    host.close(fd);
    std::memcpy(name, candidate, static_cast<std::size_t>(made) + 1);
    return kNoFailure;
  }
  return kIoFailure;
}

int openHandleCount() {
  Held held(tableLock);
  int count = 0;
  for (int h = 1; h < kHandleLimit; ++h) count += table[h].fd != kNoDescriptor ? 1 : 0;
  return count;
}

}  // namespace files
}  // namespace zu::platform

// The profile services over the host's files (see profile.h for the
// contract). The text work is profile_text's; here the file is read, and a
// write is carried from the lock to the rename.
#include "platform/profile.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "platform/dos_view.h"
#include "platform/host.h"
#include "platform/profile_text.h"

namespace zu::platform {
namespace {

using profile::Edit;
using profile::Line;
using profile::Span;
using profile::Text;

constexpr mode_t kNewFileMode = 0666;
constexpr mode_t kPermissionBits = 0777;
// A file larger than this is not read as a profile.
constexpr std::size_t kMaxFileBytes = std::size_t{1} << 26;
constexpr std::size_t kFirstReadBytes = 4096;
// Writers that replace the file while this one waits for the lock send it
// round again; this many rounds is beyond any fair contention.
constexpr int kLockRounds = 1000;
constexpr int kLinkDepth = 16;
constexpr int kTempNameTries = 16;
constexpr unsigned kDecimalBase = 10;

// A host block of bytes, freed with the holder.
class Bytes {
 public:
  Bytes() = default;
  ~Bytes() { host.free(bytes_); }
  Bytes(const Bytes&) = delete;
  Bytes& operator=(const Bytes&) = delete;

  bool reserve(std::size_t capacity) {
    void* grown = host.realloc(bytes_, capacity == 0 ? 1 : capacity);
    if (grown == nullptr) return false;
    bytes_ = static_cast<unsigned char*>(grown);
    capacity_ = capacity;
    return true;
  }
  unsigned char* data() { return bytes_; }
  std::size_t capacity() const { return capacity_; }
  Text text(std::size_t size) const { return Text{bytes_, size}; }

 private:
  unsigned char* bytes_ = nullptr;
  std::size_t capacity_ = 0;
};

// The whole of an open file into `bytes`; its size in `size`.
bool readAll(int fd, Bytes& bytes, std::size_t* size) {
  struct stat info;
  if (host.fstat(fd, &info) != 0 || info.st_size < 0 || static_cast<std::uint64_t>(info.st_size) > kMaxFileBytes) {
    return false;
  }
  std::size_t want = static_cast<std::size_t>(info.st_size) + 1;  // + 1 sees the end at once
  if (want < kFirstReadBytes) want = kFirstReadBytes;
  *size = 0;
  for (;;) {
    if (want > kMaxFileBytes + 1 || !bytes.reserve(want)) return false;
    while (*size < bytes.capacity()) {
      const ssize_t got =
          host.pread(fd, bytes.data() + *size, bytes.capacity() - *size, static_cast<off_t>(*size));
      if (got == 0) return true;
      if (got < 0) {
        if (errno == EINTR) continue;
        return false;
      }
      *size += static_cast<std::size_t>(got);
    }
    want = bytes.capacity() * 2;  // the file grew behind fstat's back
  }
}

int openRetrying(const char* path, int flags, mode_t mode) {
  int fd;
  do {
    fd = host.open(path, flags | O_CLOEXEC, mode);
  } while (fd < 0 && errno == EINTR);
  return fd;
}

// The file's bytes; a file that is not there, or cannot be read, is empty.
std::size_t readFile(const unsigned char* fileName, Bytes& bytes) {
  char path[view::kHostPathSize];
  if (view::resolve(fileName, view::Want::kExisting, path, sizeof path) != kNoFailure) return 0;
  const int fd = openRetrying(path, O_RDONLY, 0);
  if (fd < 0) return 0;
  std::size_t size = 0;
  const bool read = readAll(fd, bytes, &size);
  host.close(fd);
  return read ? size : 0;
}

// Follows symbolic links at `path` in place, so that a write replaces the
// file a link names and leaves the link. A name with nothing behind it is
// the name to create.
bool followLinks(char* path, std::size_t size) {
  for (int depth = 0; depth < kLinkDepth; ++depth) {
    struct stat info;
    if (host.lstat(path, &info) != 0) return errno == ENOENT;
    if (!S_ISLNK(info.st_mode)) return true;
    char target[view::kHostPathSize];
    const ssize_t length = host.readlink(path, target, sizeof target);
    if (length <= 0 || static_cast<std::size_t>(length) >= sizeof target) return false;
    target[length] = '\0';
    std::size_t keep = 0;  // an absolute target replaces the whole path
    if (target[0] != '/') {
      const char* slash = std::strrchr(path, '/');
      keep = slash != nullptr ? static_cast<std::size_t>(slash + 1 - path) : 0;
    }
    if (keep + static_cast<std::size_t>(length) >= size) return false;
    std::memcpy(path + keep, target, static_cast<std::size_t>(length) + 1);
  }
  return false;  // a loop of links
}

// The file at `path`, opened for writing and locked against other writers,
// and still the file at `path` once the lock is held. `fd` -1 (and true)
// when the file is not there and `create` is false.
struct Locked {
  int fd = -1;
  bool created = false;
  mode_t mode = 0;
};

bool lockFile(const char* path, bool create, Locked* locked) {
  for (int round = 0; round < kLockRounds; ++round) {
    bool created = false;
    int fd = openRetrying(path, O_RDWR, 0);
    if (fd < 0 && errno == ENOENT) {
      if (!create) return true;
      fd = openRetrying(path, O_RDWR | O_CREAT | O_EXCL, kNewFileMode);
      if (fd < 0 && errno == EEXIST) continue;
      created = fd >= 0;
    }
    if (fd < 0) return false;
    struct flock lock;
    std::memset(&lock, 0, sizeof lock);
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;  // start 0, length 0: the whole file
    int result;
    do {
      result = host.fcntl(fd, F_OFD_SETLKW, &lock);
    } while (result != 0 && errno == EINTR);
    struct stat mine, there;
    bool same = false;
    if (result == 0 && host.fstat(fd, &mine) == 0) {
      if (host.stat(path, &there) == 0) {
        same = mine.st_dev == there.st_dev && mine.st_ino == there.st_ino;
        if (!same) created = false;  // another writer replaced it: round again
      } else if (errno == ENOENT) {
        created = false;  // a failed creator took it away again
      } else {
        result = -1;
      }
    } else {
      result = -1;
    }
    if (result != 0) {
      if (created) host.unlink(path);
      host.close(fd);
      return false;
    }
    if (same) {
      *locked = Locked{fd, created, mine.st_mode & kPermissionBits};
      return true;
    }
    host.close(fd);
  }
  return false;
}

bool writeAll(int fd, const unsigned char* bytes, std::size_t size) {
  while (size != 0) {
    const ssize_t put = host.write(fd, bytes, size);
    if (put > 0) {
      bytes += put;
      size -= static_cast<std::size_t>(put);
    } else if (put == 0 || errno != EINTR) {
      return false;
    }
  }
  return true;
}

// Writes `text` to a new file beside `path`, with `mode`, makes it durable
// and renames it over `path`. Any failure removes the new file and leaves
// `path` as it was.
bool replaceFile(const char* path, mode_t mode, const Text& text) {
  static std::atomic<std::uint32_t> serial{0};
  char temp[view::kHostPathSize];
  int fd = -1;
  for (int tries = 0; tries < kTempNameTries && fd < 0; ++tries) {
    const int made =
        std::snprintf(temp, sizeof temp, "%s.~zu%x.%x", path, static_cast<unsigned>(host.getpid()),
                      static_cast<unsigned>(serial.fetch_add(1)));
    if (made < 0 || static_cast<std::size_t>(made) >= sizeof temp) return false;
    fd = openRetrying(temp, O_WRONLY | O_CREAT | O_EXCL, mode);
    if (fd < 0 && errno != EEXIST) return false;
  }
  if (fd < 0) return false;
  bool done = writeAll(fd, text.bytes, text.size) && host.fsync(fd) == 0;
  // A close that reports a failure may have lost what was written.
  done = host.close(fd) == 0 && done;
  done = done && host.rename(temp, path) == 0;
  if (!done) host.unlink(temp);
  return done;
}

bool editFile(const unsigned char* fileName, const Edit& edit) {
  char path[view::kHostPathSize];
  if (view::resolve(fileName, view::Want::kCreatable, path, sizeof path) != kNoFailure) return false;
  if (!followLinks(path, sizeof path)) return false;
  Locked locked;
  if (!lockFile(path, edit.value != nullptr, &locked)) return false;
  if (locked.fd < 0) return true;  // nothing to remove from
  Bytes old, edited;
  std::size_t size = 0;
  bool done = readAll(locked.fd, old, &size) && edited.reserve(size + profile::growthBound(edit));
  if (done) {
    const std::size_t newSize = profile::apply(old.text(size), edit, edited.data());
    const bool same = newSize == size && (size == 0 || std::memcmp(old.data(), edited.data(), size) == 0);
    if (!same) done = replaceFile(path, locked.mode, edited.text(newSize));
  }
  // A file made for this write goes again if the write failed; the lock
  // still keeps other writers off it.
  if (!done && locked.created) host.unlink(path);
  host.close(locked.fd);  // and with it the lock
  return done;
}

// Copies what fits of a name list; see profileGetString.
struct ListOut {
  unsigned char* buffer;
  std::uint32_t size;
  std::uint32_t used = 0;
  bool cut = false;
};

bool takeName(void* context, const Span& name) {
  ListOut& out = *static_cast<ListOut*>(context);
  // The name, its NUL and the list's final NUL.
  if (out.used + name.size + 2 <= out.size) {
    std::memcpy(out.buffer + out.used, name.bytes, name.size);
    out.used += static_cast<std::uint32_t>(name.size);
    out.buffer[out.used++] = '\0';
    return true;
  }
  const std::uint32_t room = out.size - 2 - out.used;
  std::memcpy(out.buffer + out.used, name.bytes, room);
  out.used += room;
  out.cut = true;
  return false;
}

std::uint32_t copyList(const Text& text, const Span* section, unsigned char* buffer, std::uint32_t size) {
  if (size < 2) {
    if (size == 1) buffer[0] = '\0';
    return 0;
  }
  ListOut out{buffer, size};
  profile::listNames(text, section, takeName, &out);
  buffer[out.used] = '\0';
  if (out.cut || out.used == 0) buffer[out.used + 1] = '\0';
  return out.used;
}

std::uint32_t copyValue(const unsigned char* value, std::size_t length, unsigned char* buffer,
                        std::uint32_t size) {
  if (size == 0) return 0;
  const std::uint32_t n = length < size ? static_cast<std::uint32_t>(length) : size - 1;
  if (n != 0) std::memcpy(buffer, value, n);
  buffer[n] = '\0';
  return n;
}

}  // namespace

std::uint32_t profileGetString(const unsigned char* section, const unsigned char* entry,
                               const unsigned char* defaultValue, unsigned char* buffer, std::uint32_t size,
                               const unsigned char* fileName) {
  Bytes bytes;
  const Text text = bytes.text(readFile(fileName, bytes));
  if (section == nullptr) return copyList(text, nullptr, buffer, size);
  const Span wanted = profile::trimmed(section);
  if (entry == nullptr) return copyList(text, &wanted, buffer, size);
  Line line;
  if (profile::findEntry(text, wanted, profile::trimmed(entry), &line)) {
    return copyValue(text.bytes + line.valueStart, line.valueEnd - line.valueStart, buffer, size);
  }
  const unsigned char* fallback =
      defaultValue != nullptr ? defaultValue : reinterpret_cast<const unsigned char*>("");
  return copyValue(fallback, std::strlen(reinterpret_cast<const char*>(fallback)), buffer, size);
}

std::int32_t profileGetInt(const unsigned char* section, const unsigned char* entry,
                           std::int32_t defaultValue, const unsigned char* fileName) {
  if (section == nullptr || entry == nullptr) return defaultValue;
  Bytes bytes;
  const Text text = bytes.text(readFile(fileName, bytes));
  Line line;
  if (!profile::findEntry(text, profile::trimmed(section), profile::trimmed(entry), &line))
    return defaultValue;
  const unsigned char* at = text.bytes + line.valueStart;
  const unsigned char* end = text.bytes + line.valueEnd;
  const bool negative = at < end && *at == '-';
  if (at < end && (*at == '-' || *at == '+')) ++at;
  if (at == end || *at < '0' || *at > '9') return defaultValue;
  std::uint32_t value = 0;
  for (; at < end && *at >= '0' && *at <= '9'; ++at) value = value * kDecimalBase + (*at - '0');
  return static_cast<std::int32_t>(negative ? 0u - value : value);
}

bool profileWriteString(const unsigned char* section, const unsigned char* entry, const unsigned char* value,
                        const unsigned char* fileName) {
  if (section == nullptr) return false;
  if (entry == nullptr) value = nullptr;  // the whole section goes, whatever the value
  const Span entryName = entry != nullptr ? profile::trimmed(entry) : Span();
  const Span newValue = value != nullptr ? profile::trimmed(value) : Span();
  Edit edit;
  edit.section = profile::trimmed(section);
  edit.entry = entry != nullptr ? &entryName : nullptr;
  edit.value = value != nullptr ? &newValue : nullptr;
  return profile::writable(edit) && editFile(fileName, edit);
}

}  // namespace zu::platform

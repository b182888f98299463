#include "os/file.h"

#include <cstring>

#include "errors/message.h"
#include "frame/semaphore.h"
#include "os/file_errors.h"
#include "os/names.h"
#include "os/os_messages.h"
#include "os/path.h"
#include "platform/dos.h"
#include "platform/dos_names.h"

using zu::platform::dos;
using zu::platform::ErrorClass;
using zu::platform::kNoFailure;

namespace {

// A write's count is 16 bits wide, and 0xFFFF means failure there.
constexpr std::uint32_t kWriteChunkMax = 65534;
constexpr std::uint32_t kSeekFailed = 0xFFFFFFFF;
constexpr std::int32_t kCurrentPosition = -1;
constexpr unsigned short kFromStart = 0;
constexpr int kFailedHandle = -1;
constexpr const char* kTempPrefix = "zu";
constexpr unsigned char kPathVariable[] = "PATH";
// PATH elements end at ';', or at a ':' that does not follow a lone drive
// letter, so both DOS and host lists search.
constexpr unsigned char kPathListSeparator = ';';
constexpr unsigned char kHostListSeparator = ':';
// Drives tried for a temporary file away from the temporary directory's.
constexpr unsigned char kFirstOtherDrive = 'C';
constexpr unsigned char kLastOtherDrive = 'H';

void makeTempName(unsigned char* name) {
  unsigned char directory[zu::os::kNameBufferSize];
  dos.tempDirectory(directory, sizeof directory);
  dos.tempFile(directory, kTempPrefix, name);
}

void makeTempNameOnOtherDrive(unsigned char* name) {
  makeTempName(name);
  for (unsigned char letter = kFirstOtherDrive; letter <= kLastOtherDrive; ++letter) {
    if (letter == name[0]) continue;
    const unsigned char root[] = {letter, zu::platform::kDriveColon, zu::platform::kDosSeparator, '\0'};
    if (dos.driveType(root) != zu::platform::kDriveFixed) continue;
    bosFileDelete(name);
    dos.tempFile(root, kTempPrefix, name);
    break;
  }
}

bool endsElement(const unsigned char* element, const unsigned char* at) {
  if (*at == kPathListSeparator) return true;
  const bool driveColon = at - element == 1 && zu::platform::driveIndex(element[0]) >= 0;
  return *at == kHostListSeparator && !driveColon;
}

// The next PATH element joined with `name` into `buffer`; false when the
// list is used up. An element too long to join is skipped.
bool nextCandidate(const unsigned char*& list, const unsigned char* name, unsigned char* buffer) {
  const std::size_t nameLength = std::strlen(reinterpret_cast<const char*>(name));
  while (*list != '\0') {
    const unsigned char* element = list;
    while (*list != '\0' && !endsElement(element, list)) ++list;
    const std::size_t length = static_cast<std::size_t>(list - element);
    if (*list != '\0') ++list;
    const bool separated = length > 0 && element[length - 1] == zu::platform::kDosSeparator;
    if (length + (separated ? 0 : 1) + nameLength > zu::os::kNameMax) continue;
    std::memcpy(buffer, element, length);
    std::size_t at = length;
    if (!separated) buffer[at++] = zu::platform::kDosSeparator;
    std::memcpy(buffer + at, name, nameLength + 1);
    return true;
  }
  return false;
}

ZuStatus refuseName(const unsigned char* name, bool create) {
  addMessageError(create ? zu::msg::kCannotCreateFile : zu::msg::kCannotOpenFile) << name;
  return ZU_ERROR;
}

}  // namespace

ZuStatus bosFileOpen(unsigned char* name, std::uint32_t flags, int* handle) {
  if ((flags & ZU_OPEN_TEMP) != 0) {
    makeTempName(name);
    bosfpath(name);
  }
  if ((flags & ZU_OPEN_TEMP_OTHER_DRIVE) != 0) {
    makeTempNameOnOtherDrive(name);
    bosfpath(name);
  }
  const bool create = (flags & ZU_OPEN_CREATE) != 0;
  unsigned char local[zu::os::kNameBufferSize];
  if (!zu::os::prepareName(name, local)) return refuseName(name, create);
  switch (zu::platform::checkDosName(local)) {
    case zu::platform::NameCheck::kReserved:
      addMessageError(zu::msg::kReservedFileName) << name;
      return ZU_ERROR;
    case zu::platform::NameCheck::kRefused:
      return refuseName(name, create);
    case zu::platform::NameCheck::kValid:
      break;
  }
  unsigned mode = zu::platform::kOpenCreate;
  if (!create) {
    mode = ((flags & ZU_OPEN_WRITE) != 0 ? zu::platform::kOpenWrite : 0u) |
           ((flags & ZU_OPEN_EXCLUSIVE) != 0 ? zu::platform::kOpenExclusive : 0u);
  }
  if (dos.open(local, mode, handle) == kNoFailure) return ZU_OK;
  if (!create && (flags & ZU_OPEN_SEARCH_PATH) != 0) {
    // Any failure goes on to the next directory, and the caller never
    // learns where the file was found.
    const unsigned char* list = bosGetEnv(kPathVariable);
    if (list != nullptr) {
      while (nextCandidate(list, name, local)) {
        if (dos.open(local, mode, handle) == kNoFailure) return ZU_OK;
      }
    }
  }
  *handle = kFailedHandle;
  return refuseName(name, create);
}

ZuStatus bosFileRead(int handle, std::int32_t offset, void* buffer, std::uint32_t size,
                     std::uint32_t* bytesRead) {
  // A read at a place moves the handle there and reads in one step; a
  // negative place fails its seek, so the read stays where the handle is.
  const ErrorClass failure = offset >= 0 ? dos.readAt(handle, static_cast<std::uint32_t>(offset), buffer, size, bytesRead)
                                         : dos.read(handle, buffer, size, bytesRead);
  if (failure == kNoFailure) return ZU_OK;
  zu::os::reportFileError(failure);
  return ZU_ERROR;
}

ZuStatus bosFileWrite(int handle, std::int32_t offset, const void* buffer, std::uint32_t size) {
  if (offset != kCurrentPosition) bosFileSeek(handle, offset, kFromStart);
  const unsigned char* at = static_cast<const unsigned char*>(buffer);
  while (size > 0) {
    const std::uint32_t chunk = size < kWriteChunkMax ? size : kWriteChunkMax;
    std::uint32_t written = 0;
    const ErrorClass failure = dos.write(handle, at, chunk, &written);
    if (failure != kNoFailure) {
      zu::os::reportFileError(failure);
      return ZU_ERROR;
    }
    if (written != chunk) {
      addMessageError(written == 0 ? zu::msg::kInsufficientDiskSpace : zu::msg::kFileIoError);
      return ZU_ERROR;
    }
    at += chunk;
    size -= chunk;
  }
  return ZU_OK;
}

ZuStatus bosFileClose(int handle) {
  if (handle == 0) return ZU_OK;
  const ErrorClass failure = dos.close(handle);
  if (failure == kNoFailure) return ZU_OK;
  zu::os::reportFileError(failure);
  return ZU_ERROR;
}

ZuStatus bosFileDelete(const unsigned char* name) {
  unsigned char local[zu::os::kNameBufferSize];
  if (zu::os::prepareName(name, local)) {
    const ErrorClass failure = dos.remove(local);
    if (failure == zu::platform::kNoEntry) return ZU_OK;
    if (failure == kNoFailure && bosexist(local) == 0) return ZU_OK;
  }
  addMessageError(zu::msg::kCannotDeleteFile) << name;
  return ZU_ERROR;
}

ZuStatus bosrname(const unsigned char* oldName, const unsigned char* newName) {
  unsigned char from[zu::os::kNameBufferSize];
  unsigned char to[zu::os::kNameBufferSize];
  if (zu::os::prepareName(oldName, from) && zu::os::prepareName(newName, to) &&
      dos.rename(from, to) == kNoFailure) {
    return ZU_OK;
  }
  addMessageError(zu::msg::kCannotRename) << oldName << newName;
  return ZU_ERROR;
}

std::uint32_t bosFileSeek(int handle, std::int32_t offset, unsigned short origin) {
  std::uint32_t position = 0;
  return dos.seek(handle, offset, origin, &position) == kNoFailure ? position : kSeekFailed;
}

ZuStatus bosRegionLock(int handle, unsigned short unlock, std::uint32_t offset, std::uint32_t length) {
  if (handle == 0) return ZU_OK;
  bosFileSeek(handle, static_cast<std::int32_t>(offset), kFromStart);
  ErrorClass failure = dos.lockRegion(handle, unlock != 0, length);
  if (failure == kNoFailure) return ZU_OK;
  // Someone else's region and an unlock of a region not locked read alike.
  if (failure == zu::platform::kAccessDenied) failure = zu::platform::kDeadlock;
  zu::os::reportFileError(failure);
  return ZU_ERROR;
}

void bosflush() {}

void bosupdir(int handle) { dos.commit(handle); }

unsigned short bosfattr(const unsigned char* name) {
  static constexpr unsigned char kParent[] = "..";
  static constexpr std::size_t kDriveRootLength = 3;
  if (std::strcmp(reinterpret_cast<const char*>(name), reinterpret_cast<const char*>(kParent)) == 0) {
    return ZU_ATTR_DIRECTORY;
  }
  unsigned char local[zu::os::kNameBufferSize];
  if (!zu::os::prepareName(name, local)) return 0;
  // A root of a hard drive is a directory whether or not the drive is
  // there; the floppy drives A and B are asked.
  if (std::strlen(reinterpret_cast<const char*>(local)) == kDriveRootLength &&
      zu::platform::hasDrive(local) && local[0] != 'A' && local[0] != 'B') {
    return ZU_ATTR_DIRECTORY;
  }
  unsigned bits = 0;
  if (dos.attributes(local, &bits) != kNoFailure) return 0;
  if ((bits & zu::platform::kAttrDirectory) != 0) return ZU_ATTR_DIRECTORY;
  if ((bits & zu::platform::kAttrReadOnly) != 0) return ZU_ATTR_FILE | ZU_ATTR_READONLY;
  return ZU_ATTR_FILE;
}

unsigned short bosexist(const unsigned char* name) {
  return (bosfattr(name) & ZU_ATTR_FILE) != 0 ? 1 : 0;
}

unsigned short bosftest(const unsigned char*) { return 1; }

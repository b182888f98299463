// ZuTrace: lines gathered, then written to the file and the window.
#include "desktop/trace.h"

#include <cstring>

#include "desktop/helpers.h"
#include "os/file.h"
#include "platform/lock.h"

namespace {

constexpr std::uint32_t kLineRoom = 1024;
constexpr std::uint32_t kOpenFlags = ZU_OPEN_CREATE | ZU_OPEN_WRITE;
constexpr unsigned char kEndOfLine[] = "\r\n";
constexpr std::uint32_t kEndOfLineLength = 2;
constexpr unsigned kStampSize = 12;  // the stamp and a blank
constexpr unsigned char kStampSeparator = ' ';
constexpr std::int32_t kWhereTheFileStands = -1;

}  // namespace

ZuTrace::ZuTrace()
    : instance(nullptr),
      traceWindow(nullptr),
      editWindow(nullptr),
      editMemory(nullptr),
      windowTextLength(0),
      fileHandle(0),
      flags(ZU_TRACE_LINE_START | ZU_TRACE_FLUSH_LINES) {}

ZuTrace::~ZuTrace() { resetTrace(); }

ZuStatus ZuTrace::initialize(HINSTANCE givenInstance, unsigned int toWindow,
                             unsigned char const* fileName) {
  // What an earlier initialize left would otherwise be lost here.
  resetTrace();
  windowTextLength = 0;
  flags = ZU_TRACE_LINE_START | ZU_TRACE_FLUSH_LINES | ((toWindow & 1) != 0 ? ZU_TRACE_TO_WINDOW : 0);
  instance = givenInstance;
  line.clear();
  if (line.ensureRoom(kLineRoom) != ZU_OK) return ZU_ERROR;
  if (fileName != nullptr) {
    // Without a temporary flag the open does not write to the name.
    int handle = 0;
    if (bosFileOpen(const_cast<unsigned char*>(fileName), kOpenFlags, &handle) != ZU_OK) {
      return ZU_ERROR;
    }
    fileHandle = handle;
  }
  if (toWindow != 0 && createWindow() != ZU_OK) return ZU_ERROR;
  flags |= ZU_TRACE_READY;
  return ZU_OK;
}

ZuStatus ZuTrace::writeString(unsigned char const* text) {
  return writeString(text, static_cast<std::uint32_t>(std::strlen(reinterpret_cast<const char*>(text))));
}

ZuStatus ZuTrace::writeString(ZuSubString const& text) { return writeString(text.bytes, text.length); }

ZuStatus ZuTrace::writeString(unsigned char const* text, std::uint32_t length) {
  if ((flags & (ZU_TRACE_TIMESTAMPS | ZU_TRACE_LINE_START)) ==
      (ZU_TRACE_TIMESTAMPS | ZU_TRACE_LINE_START)) {
    unsigned char stamp[kStampSize];
    ZuTime::getCurrentTimeStamp(stamp);
    stamp[kStampSize - 1] = kStampSeparator;
    line.concat(stamp, kStampSize);
  }
  flags &= ~ZU_TRACE_LINE_START;
  return line.concat(text, length);
}

ZuStatus ZuTrace::writeEol() {
  writeString(kEndOfLine, kEndOfLineLength);
  flags |= ZU_TRACE_LINE_START;
  return flushLine();
}

ZuStatus ZuTrace::writeLine(unsigned char const* text) {
  zu::platform::ScopedLock<ZuSemaphore> hold(lineSemaphore);
  if (writeString(text) != ZU_OK) return ZU_ERROR;
  return writeEol();
}

ZuStatus ZuTrace::flushLine() {
  ZuStatus status = ZU_OK;
  if (fileHandle != 0) {
    if (bosFileWrite(fileHandle, kWhereTheFileStands, line.bytes, line.length) != ZU_OK) {
      status = ZU_ERROR;
    }
    if ((flags & ZU_TRACE_FLUSH_LINES) != 0) {
      bosflush();
      bosupdir(fileHandle);
    }
  }
  if (traceWindow != nullptr && (flags & ZU_TRACE_TO_WINDOW) != 0) addLineToWindow();
  line.clear();
  return status;
}

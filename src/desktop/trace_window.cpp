// The trace window: a top-level window holding a read-only edit control
// that keeps the last 32767 characters of the trace.
#include <atomic>
#include <cstdint>

#include "desktop/trace.h"
#include "desktop/trace_window.h"
#include "desktop/window_handle.h"
#include "errors/message.h"
#include "frame/statics.h"
#include "os/file.h"
#include "platform/desktop.h"
#include "platform/platform.h"

namespace dsk = zu::platform::desktop;
using zu::desktop::kLinesDroppedTogether;
using zu::desktop::kTraceWindowLimit;
using zu::desktop::toHandle;
using zu::desktop::toWindow;

namespace {

constexpr unsigned short kCannotCreateWindow = 2719;
constexpr unsigned char kClassName[] = "ZuTraceClass";
constexpr std::uint32_t kClassStyle = 0x4000;     // a class for every module of the process
constexpr int kWindowExtraBytes = 4;              // the ZuTrace behind the window
constexpr std::uint32_t kWindowStyle = 0xCF0000;  // an overlapped window
constexpr std::uint32_t kEditStyle = 0x50300804;  // a visible read-only multi-line child with scroll bars
constexpr std::size_t kEditMemorySize = 2048;
constexpr unsigned kLowWordBits = 16;
constexpr std::uintptr_t kLowWord = 0xFFFF;
constexpr std::intptr_t kNoSuchLine = -1;
constexpr unsigned char kEditClass[] = "Edit";

// Set by the first attempt to register the class, and never cleared.
std::atomic<bool> classRegistered{false};

// Keeps the edit control filling the window.
std::intptr_t traceProcedure(dsk::Window* window, unsigned message, std::uintptr_t /*wParam*/,
                             std::intptr_t lParam) {
  if (message != dsk::kMessageSize) return 0;
  const auto* trace = static_cast<const ZuTrace*>(dsk::windowData(window));
  if (trace == nullptr || trace->editWindow == nullptr) return 0;
  const auto size = static_cast<std::uintptr_t>(lParam);
  dsk::moveWindow(toWindow(trace->editWindow), 0, 0, static_cast<std::int32_t>(size & kLowWord),
                  static_cast<std::int32_t>((size >> kLowWordBits) & kLowWord));
  return 0;
}

}  // namespace

ZuStatus ZuTrace::createWindow() {
  if (!classRegistered.exchange(true) &&
      !dsk::registerClass(kClassName, kClassStyle, kWindowExtraBytes, moduleHandle, traceProcedure)) {
    addMessageError(kCannotCreateWindow);
    return ZU_ERROR;
  }
  dsk::Window* noted = dsk::focus();
  dsk::Window* top = dsk::createWindow(kClassName, kWindowStyle, dsk::kUseDefault, dsk::kUseDefault,
                                       dsk::kUseDefault, dsk::kUseDefault, nullptr, instance);
  if (top == nullptr) {
    addMessageError(kCannotCreateWindow);
    return ZU_ERROR;
  }
  traceWindow = toHandle(top);
  dsk::setWindowData(top, this);
  auto* memory = static_cast<unsigned char*>(zu::platform::sys.blockAlloc(kEditMemorySize));
  if (memory != nullptr) {
    for (std::size_t i = 0; i < kEditMemorySize; ++i) memory[i] = 0;
  }
  editMemory = reinterpret_cast<HGLOBAL>(memory);
  dsk::Rect client{};
  dsk::clientRect(top, &client);
  dsk::Window* edit = dsk::createWindow(kEditClass, kEditStyle, 0, 0, client.right, client.bottom,
                                        top, editMemory);
  if (edit == nullptr) {
    addMessageError(kCannotCreateWindow);
    dsk::setFocus(noted);
    return ZU_ERROR;
  }
  editWindow = toHandle(edit);
  dsk::send(edit, dsk::kEditLimitText, kTraceWindowLimit, 0);
  dsk::show(top, true);
  dsk::setFocus(noted);
  return ZU_OK;
}

void ZuTrace::resetTrace() {
  bosFileClose(fileHandle);
  fileHandle = 0;
  if (traceWindow != nullptr) dsk::destroyWindow(toWindow(traceWindow));
  traceWindow = nullptr;
  editWindow = nullptr;
  if (editMemory != nullptr) zu::platform::sys.blockFree(editMemory);
  editMemory = nullptr;
  flags &= ~ZU_TRACE_READY;
}

ZuStatus ZuTrace::setTraceToWindow() {
  if (traceWindow == nullptr && createWindow() != ZU_OK) return ZU_ERROR;
  flags |= ZU_TRACE_TO_WINDOW;
  return ZU_OK;
}

void ZuTrace::setTopMost() {
  dsk::setPosition(toWindow(traceWindow), dsk::Place::kTopMost, 0, 0, 0, 0,
                   dsk::kKeepSize | dsk::kKeepPosition);
}

void ZuTrace::resetTopMost() {
  dsk::setPosition(toWindow(traceWindow), dsk::Place::kNoTopMost, 0, 0, 0, 0,
                   dsk::kKeepSize | dsk::kKeepPosition);
}

// Drops whole groups of ten lines from the top until at least the new
// line's length has gone. When the text has too few lines for that, all of
// it goes; a line longer than the window can hold keeps only its end.
void ZuTrace::addLineToWindow() {
  dsk::Window* edit = toWindow(editWindow);
  std::uint32_t length = line.length;
  const unsigned char* text = line.getCString();
  if (text == nullptr) return;
  if (length > kTraceWindowLimit) {
    text += length - kTraceWindowLimit;
    length = kTraceWindowLimit;
  }
  const bool makeRoom = windowTextLength + length > kTraceWindowLimit;
  if (makeRoom) {
    dsk::send(edit, dsk::kMessageSetRedraw, 0, 0);
    std::intptr_t offset = 0;
    for (std::uintptr_t lineNumber = kLinesDroppedTogether;; lineNumber += kLinesDroppedTogether) {
      offset = dsk::send(edit, dsk::kEditLineIndex, lineNumber, 0);
      if (offset == kNoSuchLine || static_cast<std::uint32_t>(offset) >= length) break;
    }
    const std::uint32_t dropped = offset == kNoSuchLine || static_cast<std::uint32_t>(offset) > windowTextLength
                                      ? windowTextLength
                                      : static_cast<std::uint32_t>(offset);
    dsk::send(edit, dsk::kEditSetSelection, 0, static_cast<std::intptr_t>(dropped));
    dsk::send(edit, dsk::kEditReplaceSelection, 0, reinterpret_cast<std::intptr_t>(""));
    windowTextLength -= dropped;
  }
  dsk::send(edit, dsk::kEditSetSelection, windowTextLength, static_cast<std::intptr_t>(windowTextLength));
  dsk::send(edit, dsk::kEditReplaceSelection, 0, reinterpret_cast<std::intptr_t>(text));
  windowTextLength += length;
  if (makeRoom) dsk::send(edit, dsk::kMessageSetRedraw, 1, 0);
}

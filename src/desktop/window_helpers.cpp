// Helpers over the desktop's windows: centring a dialog, the help system,
// and a pointer kept on a window.
#include <cstdint>
#include <cstring>

#include "desktop/helpers.h"
#include "desktop/window_handle.h"
#include "errors/message.h"
#include "platform/desktop.h"

namespace dsk = zu::platform::desktop;
using zu::desktop::toWindow;

namespace {

constexpr std::size_t kHelpFileSize = 256;  // 255 characters and the NUL
constexpr unsigned kHalfBits = 16;
constexpr std::uintptr_t kLowHalf = 0xFFFF;
constexpr unsigned char kHighProperty[] = "Segm";
constexpr unsigned char kLowProperty[] = "Offset";

// One axis of the centring: the reference's middle, kept on the screen.
std::int32_t centred(std::int32_t referenceStart, std::int32_t referenceSize, std::int16_t size,
                     std::int32_t screenSize) {
  std::int32_t at = referenceStart + (referenceSize - size) / 2;
  if (at < 0) at = 0;
  if (size > screenSize) {
    at = 0;
  } else if (at + size > screenSize) {
    at = screenSize - size;
  }
  return at;
}

}  // namespace

void winCenterBox(HWND window) {
  dsk::Window* w = toWindow(window);
  dsk::Rect own;
  if (!dsk::windowRect(w, &own)) return;
  const auto width = static_cast<std::int16_t>(own.right - own.left);
  const auto height = static_cast<std::int16_t>(own.bottom - own.top);

  dsk::Window* parent = dsk::parentOf(w);
  dsk::Window* topLevel = parent;
  while (topLevel != nullptr && dsk::parentOf(topLevel) != nullptr) topLevel = dsk::parentOf(topLevel);
  const bool onScreen = parent == nullptr || (dsk::windowStyle(topLevel) & dsk::kStyleMinimized) != 0;

  std::int32_t screenWidth = 0, screenHeight = 0;
  dsk::screenSize(&screenWidth, &screenHeight);
  dsk::Rect reference{0, 0, screenWidth, screenHeight};
  if (!onScreen) dsk::windowRect(parent, &reference);

  const std::int32_t x =
      centred(reference.left, reference.right - reference.left, width, screenWidth);
  const std::int32_t y =
      centred(reference.top, reference.bottom - reference.top, height, screenHeight);
  dsk::setPosition(w, dsk::Place::kTop, x, y, 0, 0, dsk::kKeepSize);
}

void butdohlp(HWND window, unsigned short helpFileId, unsigned short /*spare*/,
              unsigned short command, std::uint32_t data) {
  char row[ZuMessageText::kSize];
  loadMessage(row, helpFileId);
  unsigned char file[kHelpFileSize];
  std::size_t n = 0;
  for (; n + 1 < kHelpFileSize && row[n] != 0; ++n) file[n] = static_cast<unsigned char>(row[n]);
  file[n] = 0;
  const unsigned before = dsk::setCursor(dsk::kCursorWait);
  dsk::requestHelp(toWindow(window), file, command, data);
  dsk::setCursor(before);
}

// Two 16-bit halves of a 32-bit pointer; where a pointer is wider, the high
// property carries all of it above the low 16 bits.
void zuSetWinPointer(HWND window, void* pointer) {
  const auto value = reinterpret_cast<std::uintptr_t>(pointer);
  dsk::setProperty(toWindow(window), kHighProperty, value >> kHalfBits);
  dsk::setProperty(toWindow(window), kLowProperty, value & kLowHalf);
}

void* zuGetWinPointer(HWND window) {
  const std::uintptr_t high = dsk::property(toWindow(window), kHighProperty);
  const std::uintptr_t low = dsk::property(toWindow(window), kLowProperty);
  return reinterpret_cast<void*>((high << kHalfBits) | (low & kLowHalf));
}

void zuRemoveWinPointer(HWND window) {
  dsk::removeProperty(toWindow(window), kHighProperty);
  dsk::removeProperty(toWindow(window), kLowProperty);
}

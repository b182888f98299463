// Windows, classes, properties, positions, focus, cursor, screen and help
// of the headless desktop.
#include <cstring>

#include "platform/charset.h"
#include "platform/desktop_records.h"
#include "platform/environment.h"
#include "platform/host.h"

namespace zu::platform::desktop {

Mutex desktopMutex;

namespace {

constexpr std::int32_t kDefaultScreenWidth = 1024;
constexpr std::int32_t kDefaultScreenHeight = 768;
constexpr const char* kScreenVariable = "ZU_SCREEN";
constexpr unsigned char kScreenSeparator = 'x';
constexpr std::int32_t kLargestScreenSide = 32767;
// Where a top-level window left to the desktop goes, and its share of the screen.
constexpr std::int32_t kDefaultOrigin = 32;
constexpr std::int32_t kDefaultShare = 2;
constexpr unsigned kLowWordBits = 16;
constexpr std::uint32_t kLowWord = 0xFFFF;

WindowClass* classes = nullptr;
Window* windows = nullptr;
Window* focused = nullptr;
std::uint32_t nextStamp = 0;
unsigned cursorShown = kCursorArrow;
bool screenKnown = false;
std::int32_t screenWidth = kDefaultScreenWidth;
std::int32_t screenHeight = kDefaultScreenHeight;
HelpRequest lastHelp = {};

bool sameName(const unsigned char* a, const unsigned char* b) {
  for (;; ++a, ++b) {
    if (upperCase(*a) != upperCase(*b)) return false;
    if (*a == 0) return true;
  }
}

void copyName(unsigned char* to, const unsigned char* from) {
  std::size_t n = 0;
  for (; n + 1 < kNameSize && from[n] != 0; ++n) to[n] = from[n];
  to[n] = 0;
}

WindowClass* findClass(const unsigned char* name) {
  for (WindowClass* c = classes; c != nullptr; c = c->next) {
    if (sameName(c->name, name)) return c;
  }
  return nullptr;
}

// The edit class stands from the first window on; false when memory is short.
bool ensureEditClass() {
  const unsigned char* name = reinterpret_cast<const unsigned char*>(kEditClass);
  if (findClass(name) != nullptr) return true;
  auto* c = static_cast<WindowClass*>(host.malloc(sizeof(WindowClass)));
  if (c == nullptr) return false;
  copyName(c->name, name);
  c->extraBytes = 0;
  c->procedure = nullptr;
  c->edit = true;
  c->next = classes;
  classes = c;
  return true;
}

// Reads "WIDTHxHEIGHT"; anything else leaves the default.
void readScreenVariable() {
  screenKnown = true;
  const unsigned char* at = environmentValue(reinterpret_cast<const unsigned char*>(kScreenVariable));
  if (at == nullptr) return;
  std::int32_t sides[2] = {0, 0};
  for (int side = 0; side < 2; ++side) {
    if (*at < '0' || *at > '9') return;
    while (*at >= '0' && *at <= '9') {
      sides[side] = sides[side] * 10 + (*at++ - '0');
      if (sides[side] > kLargestScreenSide) return;
    }
    if (side == 0 && *at++ != kScreenSeparator) return;
  }
  if (*at != 0 || sides[0] == 0 || sides[1] == 0) return;
  screenWidth = sides[0];
  screenHeight = sides[1];
}

void unlinkWindow(Window* window) {
  for (Window** at = &windows; *at != nullptr; at = &(*at)->next) {
    if (*at == window) {
      *at = window->next;
      return;
    }
  }
}

void destroyLocked(Window* window) {
  for (Window* child = windows; child != nullptr;) {
    Window* next = child->next;
    if (child->parent == window) {
      destroyLocked(child);
      next = windows;  // the chain changed under the walk
    }
    child = next;
  }
  unlinkWindow(window);
  if (focused == window) focused = nullptr;
  for (Property* p = window->properties; p != nullptr;) {
    Property* next = p->next;
    host.free(p);
    p = next;
  }
  if (window->edit != nullptr) freeEditText(window->edit);
  host.free(window);
}

Property* findProperty(Window* window, const unsigned char* name) {
  for (Property* p = window->properties; p != nullptr; p = p->next) {
    if (sameName(p->name, name)) return p;
  }
  return nullptr;
}

}  // namespace

Window* live(Window* window) {
  if (window == nullptr) return nullptr;
  for (Window* w = windows; w != nullptr; w = w->next) {
    if (w == window) return w;
  }
  return nullptr;
}

bool registerClass(const unsigned char* name, std::uint32_t /*classStyle*/, int extraBytes,
                   void* /*instance*/, Procedure procedure) {
  ScopedLock<Mutex> hold(desktopMutex);
  if (!ensureEditClass() || findClass(name) != nullptr) return false;
  auto* c = static_cast<WindowClass*>(host.malloc(sizeof(WindowClass)));
  if (c == nullptr) return false;
  copyName(c->name, name);
  c->extraBytes = extraBytes;
  c->procedure = procedure;
  c->edit = false;
  c->next = classes;
  classes = c;
  return true;
}

Window* createWindow(const unsigned char* className, std::uint32_t style, std::int32_t x,
                     std::int32_t y, std::int32_t width, std::int32_t height, Window* parent,
                     void* /*instance*/) {
  ScopedLock<Mutex> hold(desktopMutex);
  if (!screenKnown) readScreenVariable();
  if (!ensureEditClass()) return nullptr;
  WindowClass* c = findClass(className);
  if (c == nullptr || (parent != nullptr && live(parent) == nullptr)) return nullptr;
  auto* w = static_cast<Window*>(host.malloc(sizeof(Window)));
  if (w == nullptr) return nullptr;
  *w = Window{};
  if (c->edit) {
    w->edit = newEditText();
    if (w->edit == nullptr) {
      host.free(w);
      return nullptr;
    }
  }
  if (x == kUseDefault) x = y = kDefaultOrigin;
  if (width == kUseDefault) {
    width = screenWidth / kDefaultShare;
    height = screenHeight / kDefaultShare;
  }
  w->windowClass = c;
  w->parent = parent;
  w->style = style;
  w->rect = Rect{x, y, x + width, y + height};
  w->zStamp = ++nextStamp;
  w->next = windows;
  windows = w;
  return w;
}

void destroyWindow(Window* window) {
  ScopedLock<Mutex> hold(desktopMutex);
  if (live(window) != nullptr) destroyLocked(window);
}

std::uint32_t windowCount() {
  ScopedLock<Mutex> hold(desktopMutex);
  std::uint32_t count = 0;
  for (Window* w = windows; w != nullptr; w = w->next) ++count;
  return count;
}

bool setWindowData(Window* window, void* data) {
  ScopedLock<Mutex> hold(desktopMutex);
  if (live(window) == nullptr || window->windowClass->extraBytes <= 0) return false;
  window->data = data;
  return true;
}

void* windowData(Window* window) {
  ScopedLock<Mutex> hold(desktopMutex);
  return live(window) != nullptr ? window->data : nullptr;
}

std::uint32_t windowStyle(Window* window) {
  ScopedLock<Mutex> hold(desktopMutex);
  return live(window) != nullptr ? window->style : 0;
}

Window* parentOf(Window* window) {
  ScopedLock<Mutex> hold(desktopMutex);
  return live(window) != nullptr ? window->parent : nullptr;
}

bool windowRect(Window* window, Rect* rect) {
  ScopedLock<Mutex> hold(desktopMutex);
  if (live(window) == nullptr) return false;
  *rect = window->rect;
  for (Window* w = window; (w->style & kStyleChild) != 0 && w->parent != nullptr; w = w->parent) {
    rect->left += w->parent->rect.left;
    rect->right += w->parent->rect.left;
    rect->top += w->parent->rect.top;
    rect->bottom += w->parent->rect.top;
  }
  return true;
}

bool clientRect(Window* window, Rect* rect) {
  ScopedLock<Mutex> hold(desktopMutex);
  if (live(window) == nullptr) return false;
  *rect = Rect{0, 0, window->rect.right - window->rect.left, window->rect.bottom - window->rect.top};
  return true;
}

bool setPosition(Window* window, Place place, std::int32_t x, std::int32_t y, std::int32_t width,
                 std::int32_t height, unsigned flags) {
  bool resized = false;
  {
    ScopedLock<Mutex> hold(desktopMutex);
    if (live(window) == nullptr) return false;
    Rect& r = window->rect;
    const std::int32_t oldWidth = r.right - r.left;
    const std::int32_t oldHeight = r.bottom - r.top;
    if ((flags & kKeepPosition) == 0) r = Rect{x, y, x + oldWidth, y + oldHeight};
    if ((flags & kKeepSize) == 0) {
      r.right = r.left + width;
      r.bottom = r.top + height;
      resized = width != oldWidth || height != oldHeight;
    }
    if (place == Place::kTopMost) window->topMost = true;
    if (place == Place::kNoTopMost) window->topMost = false;
    window->zStamp = ++nextStamp;
  }
  if (resized) {
    send(window, kMessageSize, 0,
         static_cast<std::intptr_t>((static_cast<std::uint32_t>(width) & kLowWord) |
                                    ((static_cast<std::uint32_t>(height) & kLowWord) << kLowWordBits)));
  }
  return true;
}

bool moveWindow(Window* window, std::int32_t x, std::int32_t y, std::int32_t width,
                std::int32_t height) {
  std::uint32_t stamp = 0;
  {
    ScopedLock<Mutex> hold(desktopMutex);
    if (live(window) == nullptr) return false;
    stamp = window->zStamp;
  }
  // A move keeps the Z order.
  const bool moved = setPosition(window, Place::kTop, x, y, width, height, 0);
  ScopedLock<Mutex> hold(desktopMutex);
  if (live(window) != nullptr) window->zStamp = stamp;
  return moved;
}

bool isTopMost(Window* window) {
  ScopedLock<Mutex> hold(desktopMutex);
  return live(window) != nullptr && window->topMost;
}

Window* topWindow(Window* parent) {
  ScopedLock<Mutex> hold(desktopMutex);
  Window* top = nullptr;
  for (Window* w = windows; w != nullptr; w = w->next) {
    if (w->parent == parent && (top == nullptr || w->zStamp > top->zStamp)) top = w;
  }
  return top;
}

void show(Window* window, bool visible) {
  ScopedLock<Mutex> hold(desktopMutex);
  if (live(window) == nullptr) return;
  window->style = visible ? window->style | kStyleVisible : window->style & ~kStyleVisible;
}

Window* focus() {
  ScopedLock<Mutex> hold(desktopMutex);
  return focused;
}

void setFocus(Window* window) {
  ScopedLock<Mutex> hold(desktopMutex);
  focused = live(window);
}

bool setProperty(Window* window, const unsigned char* name, std::uintptr_t value) {
  ScopedLock<Mutex> hold(desktopMutex);
  if (live(window) == nullptr) return false;
  Property* p = findProperty(window, name);
  if (p == nullptr) {
    p = static_cast<Property*>(host.malloc(sizeof(Property)));
    if (p == nullptr) return false;
    copyName(p->name, name);
    p->next = window->properties;
    window->properties = p;
  }
  p->value = value;
  return true;
}

std::uintptr_t property(Window* window, const unsigned char* name) {
  ScopedLock<Mutex> hold(desktopMutex);
  if (live(window) == nullptr) return 0;
  const Property* p = findProperty(window, name);
  return p != nullptr ? p->value : 0;
}

std::uintptr_t removeProperty(Window* window, const unsigned char* name) {
  ScopedLock<Mutex> hold(desktopMutex);
  if (live(window) == nullptr) return 0;
  for (Property** at = &window->properties; *at != nullptr; at = &(*at)->next) {
    if (sameName((*at)->name, name)) {
      Property* p = *at;
      const std::uintptr_t value = p->value;
      *at = p->next;
      host.free(p);
      return value;
    }
  }
  return 0;
}

std::intptr_t send(Window* window, unsigned message, std::uintptr_t wParam, std::intptr_t lParam) {
  Procedure procedure = nullptr;
  {
    ScopedLock<Mutex> hold(desktopMutex);
    if (live(window) == nullptr) return 0;
    if (window->edit != nullptr) return editMessage(window, message, wParam, lParam);
    procedure = window->windowClass->procedure;
  }
  return procedure != nullptr ? procedure(window, message, wParam, lParam) : 0;
}

unsigned setCursor(unsigned cursor) {
  ScopedLock<Mutex> hold(desktopMutex);
  const unsigned old = cursorShown;
  cursorShown = cursor;
  return old;
}

void screenSize(std::int32_t* width, std::int32_t* height) {
  ScopedLock<Mutex> hold(desktopMutex);
  if (!screenKnown) readScreenVariable();
  *width = screenWidth;
  *height = screenHeight;
}

void setScreenSize(std::int32_t width, std::int32_t height) {
  ScopedLock<Mutex> hold(desktopMutex);
  screenKnown = true;
  screenWidth = width;
  screenHeight = height;
}

void requestHelp(Window* window, const unsigned char* file, unsigned command, std::uint32_t data) {
  ScopedLock<Mutex> hold(desktopMutex);
  lastHelp.window = window;
  copyName(lastHelp.file, file);
  lastHelp.command = command;
  lastHelp.data = data;
  ++lastHelp.count;
}

HelpRequest lastHelpRequest() {
  ScopedLock<Mutex> hold(desktopMutex);
  return lastHelp;
}

}  // namespace zu::platform::desktop

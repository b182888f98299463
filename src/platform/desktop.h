// The headless desktop: windows kept as records (rectangle, parent, style,
// one data slot, named properties), multi-line edit controls holding their
// text in memory, a focus, a cursor, a screen of configurable size, and a
// help system that records the last request instead of showing anything.
// Nothing is drawn. The key queue is the DOS view's and always empty.
//
// A window is named by its record's address. Every call checks the address
// against the live windows first, so a destroyed or made-up window is a
// window that is not there: calls on it do nothing and answer 0 or false.
//
// All records come from the host's allocator; one mutex guards them, and it
// is never held while a window procedure runs.
#ifndef ZUUTL_PLATFORM_DESKTOP_H
#define ZUUTL_PLATFORM_DESKTOP_H

#include <cstddef>
#include <cstdint>

namespace zu::platform::desktop {

struct Window;

// A class's procedure: the messages that are not an edit control's own.
// What it returns is the message's answer.
typedef std::intptr_t (*Procedure)(Window* window, unsigned message, std::uintptr_t wParam,
                                   std::intptr_t lParam);

// Messages: their numbers are those the drivers' code was written with.
constexpr unsigned kMessageSize = 0x0005;       // lParam: width | height << 16
constexpr unsigned kMessageSetRedraw = 0x000B;  // wParam: 0 off, else on
constexpr unsigned kMessageGetText = 0x000D;    // wParam: buffer size, lParam: buffer
constexpr unsigned kMessageGetTextLength = 0x000E;
constexpr unsigned kEditSetSelection = 0x00B1;  // wParam start, lParam end; -1 end: to the end
constexpr unsigned kEditLineIndex = 0x00BB;     // wParam line (-1: the caret's); -1 if none
constexpr unsigned kEditGetLineCount = 0x00BA;
constexpr unsigned kEditReplaceSelection = 0x00C2;  // lParam: NUL-terminated text
constexpr unsigned kEditLimitText = 0x00C5;         // wParam: the limit, 0 the largest

// Styles the desktop itself looks at.
constexpr std::uint32_t kStyleChild = 0x40000000;
constexpr std::uint32_t kStyleMinimized = 0x20000000;
constexpr std::uint32_t kStyleVisible = 0x10000000;

// The position and size a top-level window may leave to the desktop.
constexpr std::int32_t kUseDefault = static_cast<std::int32_t>(0x80000000);

// Where setPosition puts a window in the Z order.
enum class Place { kTop, kTopMost, kNoTopMost };
constexpr unsigned kKeepSize = 1;
constexpr unsigned kKeepPosition = 2;

// Cursors, by the numbers of the system's own shapes.
constexpr unsigned kCursorArrow = 32512;
constexpr unsigned kCursorWait = 32514;

// The built-in class of edit controls.
constexpr const char* kEditClass = "Edit";
// An edit control holds at most this many characters until told otherwise.
constexpr std::uint32_t kEditDefaultLimit = 30000;

struct Rect {
  std::int32_t left, top, right, bottom;
};

// Registers a class under `name` (compared without regard to case); false
// when the name is taken or memory is short.
bool registerClass(const unsigned char* name, std::uint32_t classStyle, int extraBytes,
                   void* instance, Procedure procedure);
// Null when the class is unknown, the parent not there, or memory short.
// A child (kStyleChild) is placed within its parent's client area; any
// other window with a parent is owned by it and placed on the screen.
Window* createWindow(const unsigned char* className, std::uint32_t style, std::int32_t x,
                     std::int32_t y, std::int32_t width, std::int32_t height, Window* parent,
                     void* instance);
// Destroys the window and all its children.
void destroyWindow(Window* window);
// Live windows, for tests and tools.
std::uint32_t windowCount();

// The one data slot of a window whose class asked for extra bytes.
bool setWindowData(Window* window, void* data);
void* windowData(Window* window);
std::uint32_t windowStyle(Window* window);
Window* parentOf(Window* window);
// In screen coordinates.
bool windowRect(Window* window, Rect* rect);
// At 0,0, the size of the window: a headless window has no frame.
bool clientRect(Window* window, Rect* rect);
bool setPosition(Window* window, Place place, std::int32_t x, std::int32_t y, std::int32_t width,
                 std::int32_t height, unsigned flags);
bool moveWindow(Window* window, std::int32_t x, std::int32_t y, std::int32_t width,
                std::int32_t height);
bool isTopMost(Window* window);
// The window last brought to the top, among those of its parent.
Window* topWindow(Window* parent);
void show(Window* window, bool visible);

Window* focus();
void setFocus(Window* window);

// A property's value is pointer-sized; 0 means none.
bool setProperty(Window* window, const unsigned char* name, std::uintptr_t value);
std::uintptr_t property(Window* window, const unsigned char* name);
std::uintptr_t removeProperty(Window* window, const unsigned char* name);

// Edit controls answer their own messages; other windows hand them to their
// class's procedure. 0 for a window that is not there.
std::intptr_t send(Window* window, unsigned message, std::uintptr_t wParam, std::intptr_t lParam);

// The cursor shown; setCursor returns the one it replaces.
unsigned setCursor(unsigned cursor);

void screenSize(std::int32_t* width, std::int32_t* height);
// Taken from ZU_SCREEN ("1024x768") at first use, else 1024 by 768.
void setScreenSize(std::int32_t width, std::int32_t height);

// The help system: each request is recorded, the last one kept.
struct HelpRequest {
  Window* window;
  unsigned char file[256];
  unsigned command;
  std::uint32_t data;
  std::uint32_t count;  // requests since the process began
};
void requestHelp(Window* window, const unsigned char* file, unsigned command, std::uint32_t data);
HelpRequest lastHelpRequest();

}  // namespace zu::platform::desktop

#endif

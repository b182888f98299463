// The desktop's records, shared by its windows and its edit controls.
// Everything here is touched only with `desktopMutex` held.
#ifndef ZUUTL_PLATFORM_DESKTOP_RECORDS_H
#define ZUUTL_PLATFORM_DESKTOP_RECORDS_H

#include <cstdint>

#include "platform/desktop.h"
#include "platform/lock.h"

namespace zu::platform::desktop {

constexpr std::size_t kNameSize = 256;  // class and property names, cut with their NUL

struct WindowClass {
  WindowClass* next;
  unsigned char name[kNameSize];
  int extraBytes;
  Procedure procedure;  // null: the messages are answered with 0
  bool edit;            // the built-in edit class
};

struct Property {
  Property* next;
  unsigned char name[kNameSize];
  std::uintptr_t value;
};

// The text of an edit control: `length` characters and a NUL in `capacity`
// bytes; the selection runs from `selectionStart` to `selectionEnd`, both
// within the text and in order.
struct EditText {
  char* bytes;
  std::uint32_t length;
  std::uint32_t capacity;
  std::uint32_t limit;
  std::uint32_t selectionStart;
  std::uint32_t selectionEnd;
  bool redraw;
};

struct Window {
  Window* next;  // the chain of live windows
  WindowClass* windowClass;
  Window* parent;
  std::uint32_t style;
  Rect rect;  // a child's relative to its parent's client area, else the screen's
  void* data;
  std::uint32_t zStamp;  // higher is nearer the top among siblings
  bool topMost;
  Property* properties;
  EditText* edit;  // for edit controls only
};

extern Mutex desktopMutex;

// The window when it is live, else null.
Window* live(Window* window);

// The edit class's answer to a message; `window->edit` is set.
std::intptr_t editMessage(Window* window, unsigned message, std::uintptr_t wParam,
                          std::intptr_t lParam);
EditText* newEditText();
void freeEditText(EditText* edit);

}  // namespace zu::platform::desktop

#endif

// A client's HWND is the desktop's window record under an opaque name.
#ifndef ZUUTL_DESKTOP_WINDOW_HANDLE_H
#define ZUUTL_DESKTOP_WINDOW_HANDLE_H

#include "frame/handles.h"
#include "platform/desktop.h"

namespace zu::desktop {

inline platform::desktop::Window* toWindow(HWND window) {
  return reinterpret_cast<platform::desktop::Window*>(window);
}
inline HWND toHandle(platform::desktop::Window* window) { return reinterpret_cast<HWND>(window); }

}  // namespace zu::desktop

#endif

// Small helpers that the drivers' dialogs and set-up code share: keyboard
// accelerators for dialog labels, centring a dialog, the help system, a
// growing output buffer, a pointer kept on a window, a time stamp and the
// count of library initialisations. Window functions work on the library's
// headless desktop.
#ifndef ZUUTL_DESKTOP_HELPERS_H
#define ZUUTL_DESKTOP_HELPERS_H

#include <cstdint>

#include "frame/api.h"
#include "frame/handles.h"
#include "frame/status.h"

// `usedKeys` is a set of 256 bits (32 bytes), zeroed by the caller before
// the first label of a dialog; the bit of a character is that of its lower
// case. Marks the character behind the first '&' of `text` as taken.
ZU_API void setAcceleratorKey(unsigned char* usedKeys, unsigned char const* text);
// Puts a '&' before the first character of `text` (formatted with
// `argument` as its one %s, unless null) whose key is free, or before the
// first character when none is; a text with a '&' keeps it. `text` needs
// room for one character more than the result, which is at most 255.
ZU_API void makeDialogText(unsigned char* usedKeys, unsigned char* text,
                           unsigned char const* argument);
// Centres a window on its parent, or on the screen when it has none or its
// top-level ancestor is minimised, and keeps it on the screen.
ZU_API void winCenterBox(HWND window);
// Asks the help system, with the file named by catalogue row `helpFileId`,
// under the wait cursor. `spare` is not used.
ZU_API void butdohlp(HWND window, unsigned short helpFileId, unsigned short spare,
                     unsigned short command, std::uint32_t data);
// Makes room for `needed` bytes at *cursor in a buffer of *size bytes at
// *base (null: none yet), growing in steps of 512. The size is 16 bits and
// is not checked for overflow. After a failed growth *size already holds the
// larger size.
ZU_API ZuStatus butxpand(unsigned char** base, unsigned char** cursor, unsigned short* size,
                         unsigned short needed);
// A pointer kept on a window in its properties "Segm" and "Offset".
ZU_API void zuSetWinPointer(HWND window, void* pointer);
ZU_API void* zuGetWinPointer(HWND window);
ZU_API void zuRemoveWinPointer(HWND window);

class ZU_API ZuTime {
 public:
  // "HH:MM:SS.cc" in universal time, 11 bytes with no NUL; returns 11.
  static unsigned short getCurrentTimeStamp(unsigned char* buffer);
};

// Non-zero `increment`: adds one and returns the count before; 0: takes one
// off and returns the count after. 0 marks the first initialisation or the
// last termination of the task.
ZU_API unsigned short countZuInits(unsigned short increment);

#endif

// ZuTrace: text lines to a trace file, to a window on the desktop, or both.
// A line is gathered by writeString and goes out at writeEol, ending in
// CR LF. The window keeps the last 32767 characters of the trace in an edit
// control, dropping the oldest lines ten at a time to make room.
//
// Only writeLine takes lineSemaphore: lines written through it from many
// threads never mix. A caller who builds a line from several writeString
// calls keeps to one thread or guards the object itself.
#ifndef ZUUTL_DESKTOP_TRACE_H
#define ZUUTL_DESKTOP_TRACE_H

#include <cstdint>

#include "frame/api.h"
#include "frame/handles.h"
#include "frame/object.h"
#include "frame/semaphore.h"
#include "frame/status.h"
#include "strings/string.h"

inline constexpr std::uint32_t ZU_TRACE_TIMESTAMPS = 1;   // each line starts with a time stamp
inline constexpr std::uint32_t ZU_TRACE_TO_WINDOW = 2;    // lines go to the window
inline constexpr std::uint32_t ZU_TRACE_READY = 4;        // initialize has succeeded
inline constexpr std::uint32_t ZU_TRACE_LINE_START = 8;   // the next write begins a line
inline constexpr std::uint32_t ZU_TRACE_FLUSH_LINES = 16; // each line is forced to disk

class ZU_API ZuTrace : public ZuObject {
 public:
  ZuTrace();
  ~ZuTrace() override;

  // Opens `fileName` (a DOS name; null: no file) new or emptied, and makes
  // the window when `toWindow` is non-zero; lines go to it when bit 0 is
  // set. Time stamps start off and flushing on. Releases first whatever the
  // object still holds from an earlier initialize.
  ZuStatus initialize(HINSTANCE instance, unsigned int toWindow, unsigned char const* fileName);
  // Closes the file and destroys the window.
  void resetTrace();

  ZuStatus writeString(unsigned char const* text);
  ZuStatus writeString(unsigned char const* text, std::uint32_t length);
  ZuStatus writeString(ZuSubString const& text);
  // Ends the line and sends it out; ZU_ERROR when the file write failed
  // (the window still gets the line).
  ZuStatus writeEol();
  ZuStatus writeLine(unsigned char const* text);

  ZuStatus setTraceToWindow();
  void setTopMost();
  void resetTopMost();

  void setTimestamps(unsigned int on) {
    flags = on != 0 ? flags | ZU_TRACE_TIMESTAMPS : flags & ~ZU_TRACE_TIMESTAMPS;
  }
  void setFlushLines(unsigned int on) {
    flags = on != 0 ? flags | ZU_TRACE_FLUSH_LINES : flags & ~ZU_TRACE_FLUSH_LINES;
  }

  HINSTANCE instance;
  HWND traceWindow;
  HWND editWindow;
  HGLOBAL editMemory;
  ZuString line;
  std::uint32_t windowTextLength;  // characters in the edit control, as counted here
  std::int32_t fileHandle;
  ZuSemaphore lineSemaphore;
  std::uint32_t flags;

 private:
  ZuStatus createWindow();
  ZuStatus flushLine();
  void addLineToWindow();
};

#endif

// The trace window's constants, shared by the trace and its window code.
#ifndef ZUUTL_DESKTOP_TRACE_WINDOW_H
#define ZUUTL_DESKTOP_TRACE_WINDOW_H

#include <cstdint>

namespace zu::desktop {

// The most characters the window keeps, and the lines dropped at a time.
constexpr std::uint32_t kTraceWindowLimit = 32767;
constexpr std::uint32_t kLinesDroppedTogether = 10;

}  // namespace zu::desktop

#endif

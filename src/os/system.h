// Directory and drive walks, sister libraries, the date, the Esc key and a
// wait.
//
// A walk keeps its state behind one pointer that the caller holds: null
// before the first call, null again after the last. The walk frees that
// state at its natural end; a caller who stops early leaves it allocated.
#ifndef ZUUTL_OS_SYSTEM_H
#define ZUUTL_OS_SYSTEM_H

#include "frame/api.h"
#include "frame/handles.h"
#include "frame/status.h"

// UTC, day and month from 1, the full year.
struct os_time {
  unsigned short day;
  unsigned short month;
  unsigned short year;
  unsigned short hour;
  unsigned short minute;
  unsigned short second;
  unsigned short millisecond;
};

// First call: `name` is a pattern with * and ?. Each call that finds an
// entry writes its name into `name` (256 bytes); the call that finds none
// more leaves `name` alone and sets *context to null. Nothing is filtered.
ZU_API ZuStatus bosFindFiles(unsigned char** context, unsigned char* name);
// An empty walk: returns ZU_OK and changes nothing.
ZU_API ZuStatus bosGetDirectoryNames(void** context, unsigned char* name);
// Each call gives the next drive as one lower-case letter; an empty `name`
// and a null context end the walk.
ZU_API ZuStatus bosGetFileSystems(void** context, unsigned char* name);
// Loads the library of stem `name` (such as "ZUMDS") lying beside this one;
// null when there is none or it does not load. Records no error.
ZU_API HINSTANCE bosLoadLibrary(const unsigned char* name);
// Appends the library generation's suffix "04" to `name`.
ZU_API void bosdllname(unsigned char* name);
ZU_API void bosdate(os_time* time);
// 1 when Esc is among the calling thread's waiting keys, which are taken up
// to it, with a beep for each key but the arrows up and down.
ZU_API unsigned short bosabort();
// A busy wait, on the processor the whole time; ends early if the tick
// counter wraps.
ZU_API void bossleep(unsigned short milliseconds);

#endif

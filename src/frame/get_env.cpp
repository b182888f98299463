// The process environment, read in place by the platform's one reading.
#include "frame/semaphore.h"
#include "platform/environment.h"

unsigned char* bosGetEnv(const unsigned char* name) { return zu::platform::environmentValue(name); }

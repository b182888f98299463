// The one mapping of a failed system call's error class to a catalogue row.
#ifndef ZUUTL_OS_FILE_ERRORS_H
#define ZUUTL_OS_FILE_ERRORS_H

#include "platform/dos.h"

namespace zu::os {

// Records the row for `failure`; rows that name a file get `name`, null
// reading as an empty text.
void reportFileError(platform::ErrorClass failure, const unsigned char* name = nullptr);

}  // namespace zu::os

#endif

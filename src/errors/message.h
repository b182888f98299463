// Raising the catalogue's rows as errors. Internal: the library's own
// failures go through here, and clients read the numbers and texts off their
// error lists.
//
//   addMessageError(30042) << oldName << newName;
//   addMessageError(2704) << offset;  appendMessageToLastError(2706) << keyword;
#ifndef ZUUTL_ERRORS_MESSAGE_H
#define ZUUTL_ERRORS_MESSAGE_H

#include "errors/error.h"

// Loads row `id` into `buffer` of ZuMessageText::kSize bytes, cut and
// NUL-terminated; an unknown id leaves it empty.
void loadMessage(char* buffer, unsigned short id);

// One row, held on the stack for the length of one call.
class ZuMessageText {
 public:
  static constexpr int kSize = 512;

  explicit ZuMessageText(unsigned short id);
  const unsigned char* getText() const { return text_; }

 private:
  unsigned char text_[kSize];
};

// Adds a record of row `id` to the calling thread's current list. The row
// is loaded anew each time; an unknown id gives an empty text.
ZuError& addMessageError(unsigned short id);
// Appends row `id` to the last error; its markers number from 1.
ZuError& appendMessageToLastError(unsigned short id);

#endif

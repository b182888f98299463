// A thread record and a current error list for the length of a command or a
// stop of the tour, so that what the library refuses can be shown in the
// library's own words.
#ifndef ZU_TOOL_ERROR_SCOPE_H
#define ZU_TOOL_ERROR_SCOPE_H

#include <string>

#include <zuutl.h>

namespace zutool {

class ErrorScope {
 public:
  ErrorScope();
  ~ErrorScope();
  ErrorScope(const ErrorScope&) = delete;
  ErrorScope& operator=(const ErrorScope&) = delete;

  // The texts recorded so far, oldest first, joined by "; ", and the list
  // emptied. A pending out-of-memory condition reads as its catalogue row.
  std::string take();

 private:
  ZuErrorList list_;
};

}  // namespace zutool

#endif

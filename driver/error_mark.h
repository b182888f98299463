// Takes back the records the library added to the current list since a
// point, so that the driver can put its own SQLSTATE first and keep the
// library's words in its text.
#ifndef ZUCSV_ERROR_MARK_H
#define ZUCSV_ERROR_MARK_H

#include <zuutl.h>

#include <string>

namespace zucsv {

class ErrorMark {
 public:
  ErrorMark() : last_(ZuErrorKeeper::getLastError()) {}
  // The texts added since, oldest first, joined by a blank; they leave the list.
  std::string take();

 private:
  ZuError* last_;
};

}  // namespace zucsv

#endif

#include "error_mark.h"

namespace zucsv {

std::string ErrorMark::take() {
  std::string texts;
  for (;;) {
    ZuError* last = ZuErrorKeeper::getLastError();
    if (last == nullptr || last == last_ || last->isStatic() != 0) break;
    const std::string text = reinterpret_cast<const char*>(last->getText().getCString());
    texts = texts.empty() ? text : text + " " + texts;
    ZuErrorKeeper::clearLastError();
  }
  return texts;
}

}  // namespace zucsv

#include "error_scope.h"

#include "errors/catalogue.h"

namespace zutool {

namespace {
constexpr unsigned short kOutOfMemory = 30190;
constexpr const char* kJoin = "; ";
}  // namespace

ErrorScope::ErrorScope() {
  mdsPerThreadInit();
  ZuErrorKeeper::setErrorList(&list_);
}

ErrorScope::~ErrorScope() {
  ZuErrorKeeper::giveUpErrorList();
  while (ZuError* e = list_.removeFirstError()) {
    if (e->isStatic() == 0) delete e;
  }
  mdsPerThreadTerm();
}

std::string ErrorScope::take() {
  std::string all;
  const bool outOfMemory = list_.isMemoryPending() != 0;
  while (ZuError* e = list_.removeFirstError()) {
    if (e->isStatic() != 0) continue;
    if (!all.empty()) all += kJoin;
    all += reinterpret_cast<const char*>(e->text.getCString());
    delete e;
  }
  if (outOfMemory) {
    if (!all.empty()) all += kJoin;
    all += zu::catalogueRow(kOutOfMemory);
  }
  return all;
}

}  // namespace zutool

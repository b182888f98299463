// A test with a thread record and a current error list of its own, so that
// what the code under test records can be read back. Lists a test pushes
// on top are given up too when it ends.
#ifndef ZU_TESTS_SUPPORT_ERROR_FIXTURE_H
#define ZU_TESTS_SUPPORT_ERROR_FIXTURE_H

#include <gtest/gtest.h>

#include <string>

#include "errors/keeper.h"
#include "frame/thread.h"

namespace zutest {

class ErrorFixture : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(mdsPerThreadInit(), 1);
    ZuErrorKeeper::setErrorList(&list);
  }
  void TearDown() override {
    while (ZuErrorKeeper::giveUpErrorList() != nullptr) {
    }
    mdsPerThreadTerm();
  }
  static unsigned short lastError() { return ZuErrorKeeper::getLastErrorNumber(); }
  static std::string lastText() {
    ZuError* e = ZuErrorKeeper::getLastError();
    return e == nullptr ? "" : reinterpret_cast<const char*>(e->text.getCString());
  }
  ZuErrorList list;
};

}  // namespace zutest

#endif

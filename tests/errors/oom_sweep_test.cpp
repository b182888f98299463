// Every allocation on the way of recording an error, filling a template and
// growing a string refused in turn: each run fails cleanly or copes, the
// list shows the memory error, the heap stays sound, nothing is left behind.
#include <gtest/gtest.h>

#include <string>

#include "errors/keeper.h"
#include "errors/message.h"
#include "strings/param_string.h"
#include "strings/string.h"
#include "support/oom_sweep.h"

namespace {

const unsigned char* u(const char* text) { return reinterpret_cast<const unsigned char*>(text); }

TEST(OutOfMemorySweep, RecordingErrors) {
  zutest::SweepReport report;
  EXPECT_TRUE(zutest::sweepOutOfMemory(
      [] {
        // Enough records to need several segments.
        for (unsigned short i = 0; i < 12; ++i) {
          ZuError& e = addMessageError(2705) << 12 << u("a data source name");
          if (e.isStatic() != 0) return false;
          appendMessageToLastError(2707) << u("DSN") << u("FILEDSN");
          if (ZuErrorKeeper::getLastErrorNumber() != 2705) return false;
        }
        return true;
      },
      &report));
  EXPECT_GT(report.failures, 2u);
}

TEST(OutOfMemorySweep, FillingTemplates) {
  zutest::SweepReport report;
  EXPECT_TRUE(zutest::sweepOutOfMemory(
      [] {
        const std::string value(300, 'v');
        ZuParamString p;
        if (p.initialize(u("%s1 %s1 %n2 %s3 %s1")) != ZU_OK) return false;
        p << u(value.c_str()) << 42 << u(value.c_str());
        if (p.failed != 0) return false;
        return p.setQuotedParam(u("it's"), '\'') == ZU_OK && p.length == 4 * 300 + 2 + 4;
      },
      &report));
  EXPECT_GT(report.failures, 1u);
}

TEST(OutOfMemorySweep, GrowingStrings) {
  zutest::SweepReport report;
  EXPECT_TRUE(zutest::sweepOutOfMemory(
      [] {
        ZuString s;
        for (std::uint32_t i = 0; i < 2000; ++i) {
          const std::uint32_t before = s.length;
          if (s.concat(i) != ZU_OK) {
            EXPECT_EQ(s.length, before);  // a refused growth changes nothing
            return false;
          }
        }
        return true;
      },
      &report));
  EXPECT_GT(report.failures, 5u);
}

TEST(OutOfMemorySweep, JoiningErrorTexts) {
  EXPECT_TRUE(zutest::sweepOutOfMemory([] {
    ZuErrorList mine;
    ZuErrorKeeper::setErrorList(&mine);
    for (int i = 0; i < 6; ++i) addDatabaseError(7, i, u("a record of some length"), ZU_ERROR_TYPE_WARNING);
    const unsigned short pending = ZuErrorKeeper::getLastErrorNumber();
    ZuErrorKeeper::giveUpErrorList();
    // What failed on the inner list is the caller's to carry over.
    if (pending != 7) ZuErrorKeeper::addMemoryError();
    if (pending != 7) return false;
    ZuString joined;
    return mine.concatErrors(&joined, '\n') == ZU_OK;
  }));
}

}  // namespace

// Error lists and the keeper: which records a list takes, the pending memory
// error and what it hides, nesting of lists, joining texts, rows raised from
// the catalogue, and the records the string layer's refusals leave.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "errors/keeper.h"
#include "errors/message.h"
#include "frame/thread.h"
#include "strings/convert.h"
#include "strings/hex.h"
#include "strings/string.h"
#include "support/error_fixture.h"

namespace {

constexpr unsigned short kOutOfMemory = 30190;

const unsigned char* u(const char* text) { return reinterpret_cast<const unsigned char*>(text); }
std::string text(ZuError* e) { return reinterpret_cast<char*>(e->text.getCString()); }

ZuError* makeError(unsigned short number, const char* words,
                   ErrorType type = ZU_ERROR_TYPE_ERROR) {
  return new ZuError(number, u(words), type, 0, 0);
}

// Every test runs with a thread record and one current list.
using ErrorListTest = zutest::ErrorFixture;

TEST_F(ErrorListTest, ListThatKeepsOneErrorClosesAfterIt) {
  ZuErrorList one(nullptr, 0);
  ZuErrorKeeper::setErrorList(&one);
  ZuErrorKeeper::addError(makeError(1, "warn", ZU_ERROR_TYPE_WARNING));
  EXPECT_EQ(one.getErrorsMix(), ZU_MIX_WARNINGS);
  ZuError& first = ZuErrorKeeper::addError(makeError(2, "first %s1"));
  EXPECT_EQ(&first, one.getLastError());
  EXPECT_EQ(one.getErrorsMix(), ZU_MIX_BOTH);
  // Closed now, to errors and warnings alike.
  ZuError& turned = ZuErrorKeeper::addError(makeError(3, "second %s1"));
  EXPECT_EQ(turned.isNullError(), 1);
  turned << u("ignored");
  EXPECT_EQ(text(&turned), "");
  EXPECT_EQ(ZuErrorKeeper::addError(makeError(4, "w", ZU_ERROR_TYPE_WARNING)).isNullError(), 1);
  EXPECT_EQ(one.nodeCount, 2u);
  EXPECT_EQ(ZuErrorKeeper::getLastErrorNumber(), 2);
  ZuErrorKeeper::giveUpErrorList();
}

TEST_F(ErrorListTest, KeepAllHoldsEverythingInOrderAndJoinsTexts) {
  EXPECT_EQ(list.getErrorsMix(), ZU_MIX_NONE);
  ZuErrorKeeper::addError(makeError(1, "one"));
  ZuErrorKeeper::addError(makeError(2, "two", ZU_ERROR_TYPE_WARNING));
  addDatabaseError(3, -42, u("three %s1"), static_cast<ErrorType>(7)) << u("x");
  EXPECT_EQ(list.getErrorsMix(), ZU_MIX_BOTH);
  ZuError* last = list.getLastError();
  EXPECT_EQ(last->getNativeCode(), -42);
  EXPECT_EQ(last->isWarning(), 0);  // any type but a warning is an error
  EXPECT_EQ(std::string(last->getStateText()), "");
  ZuString out;
  ASSERT_EQ(out.concat(u(">")), ZU_OK);
  ASSERT_EQ(list.concatErrors(&out, 0x10A), ZU_OK);  // only the low byte is used
  EXPECT_EQ(std::string(reinterpret_cast<char*>(out.getCString())), ">one\ntwo\nthree x");
  ZuError* first = list.removeFirstError();
  EXPECT_EQ(first->getNumber(), 1);
  delete first;
  EXPECT_EQ(list.getErrorsMix(), ZU_MIX_BOTH);
}

TEST_F(ErrorListTest, PendingMemoryErrorStandsLastWithoutBeingOnTheList) {
  ZuErrorKeeper::addMemoryError();
  EXPECT_EQ(list.getErrorsMix(), ZU_MIX_NONE);
  EXPECT_EQ(ZuErrorKeeper::getLastErrorNumber(), kOutOfMemory);
  ZuError* memory = ZuErrorKeeper::getLastError();
  EXPECT_EQ(memory->isStatic(), 1);
  EXPECT_EQ(memory->isMemoryError(), 1);
  EXPECT_EQ(text(memory), "");
  // Records added meanwhile wait behind it; the flag does not add up.
  ZuErrorKeeper::addError(makeError(5, "five"));
  ZuErrorKeeper::addMemoryError();
  EXPECT_EQ(ZuErrorKeeper::getLastErrorNumber(), kOutOfMemory);
  EXPECT_EQ(list.removeFirstError(), memory);  // handed out, never to be deleted
  EXPECT_EQ(ZuErrorKeeper::getLastErrorNumber(), 5);
  ZuErrorKeeper::addMemoryError();
  ZuErrorKeeper::clearLastError();  // clears the flag, deletes nothing
  EXPECT_EQ(ZuErrorKeeper::getLastErrorNumber(), 5);
  ZuString out;
  ZuErrorKeeper::addMemoryError();
  ASSERT_EQ(list.concatErrors(&out, '\n'), ZU_OK);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(out.getCString())), "five");
  ZuErrorKeeper::clearLastError();
  ZuErrorKeeper::clearLastError();
  EXPECT_EQ(ZuErrorKeeper::getLastErrorNumber(), 0);
  ZuErrorKeeper::clearLastError();  // nothing left: no effect
  EXPECT_EQ(ZuErrorKeeper::getLastError(), nullptr);
}

TEST_F(ErrorListTest, MemoryErrorReplacesTheOneErrorOfAClosedList) {
  ZuErrorList one(nullptr, 0);
  ZuErrorKeeper::setErrorList(&one);
  ZuErrorKeeper::addError(makeError(9, "nine"));
  ZuErrorKeeper::addMemoryError();
  EXPECT_EQ(one.nodeCount, 0u);
  EXPECT_EQ(ZuErrorKeeper::getLastErrorNumber(), kOutOfMemory);
  // In a list that keeps all, the error stays behind it.
  ZuErrorKeeper::giveUpErrorList();
  ZuErrorKeeper::addError(makeError(9, "nine"));
  ZuErrorKeeper::addMemoryError();
  EXPECT_EQ(list.nodeCount, 1u);
  EXPECT_EQ(ZuErrorKeeper::getLastErrorNumber(), kOutOfMemory);
}

TEST_F(ErrorListTest, SharedRecordsIgnoreParametersAndText) {
  ZuError& null = ZuErrorKeeper::addError(nullptr);
  EXPECT_EQ(null.isNullError(), 1);
  EXPECT_EQ(&(null << u("a") << 1u << -1 << ZuSubString(u("b"), 1)), &null);
  EXPECT_EQ(text(&null), "");
  ZuErrorKeeper::addMemoryError();
  ZuError& memory = ZuErrorKeeper::appendTextToLastError(u(" more %s1"));
  memory << u("value");
  EXPECT_EQ(memory.isMemoryError(), 1);
  EXPECT_EQ(text(&memory), "");
  EXPECT_EQ(memory.text.paramCount, 0);
}

TEST_F(ErrorListTest, ListsNestAndUnwind) {
  int owner = 0;
  ZuErrorList a(&owner, 1), b;
  ZuErrorKeeper::setErrorList(&a);
  ZuErrorKeeper::setErrorList(&b);
  EXPECT_EQ(b.getPrevious(), &a);
  EXPECT_EQ(a.getPrevious(), &list);
  ZuErrorKeeper::addError(makeError(2, "in b"));
  EXPECT_EQ(ZuErrorKeeper::giveUpErrorList(), &b);
  EXPECT_EQ(b.getPrevious(), nullptr);
  EXPECT_EQ(ZuErrorKeeper::getOwnerOfList(), &owner);
  EXPECT_EQ(ZuErrorKeeper::getLastError(), nullptr);
  EXPECT_EQ(b.slotAddress, mdsGetPerThreadDataAddress(THREAD_DATA_ERROR_LIST));
  EXPECT_EQ(ZuErrorKeeper::giveUpErrorList(), &a);
  EXPECT_EQ(ZuErrorKeeper::getOwnerOfList(), nullptr);
}

TEST_F(ErrorListTest, CatalogueRowsTakeTheirParameters) {
  addMessageError(2705) << 12 << u("DSN");
  EXPECT_EQ(text(ZuErrorKeeper::getLastError()), "Error parsing DSN at offset 12.");
  addMessageError(2704) << 12;
  ZuError& same = appendMessageToLastError(2706) << u("UID");
  EXPECT_EQ(&same, list.getLastError());
  EXPECT_EQ(text(&same),
            "Error parsing connect string at offset 12.  Attribute 'UID' specified more than once.");
  addMessageError(1509) << u("");
  EXPECT_EQ(text(list.getLastError()), "File not found ''.");
  addMessageError(30042) << u("old") << u("new") << u("too many");
  EXPECT_EQ(text(list.getLastError()), "Cannot rename 'old' to 'new'.");
  // A parameter may carry the text far past the row buffer's 512 bytes.
  const std::string longName(1000, 'n');
  addMessageError(2701) << u(longName.c_str());
  EXPECT_EQ(text(list.getLastError()), "Number too large: " + longName);
  addMessageError(4242) << u("anything");
  EXPECT_EQ(ZuErrorKeeper::getLastErrorNumber(), 4242);
  EXPECT_EQ(text(list.getLastError()), "");
  EXPECT_EQ(list.nodeCount, 6u);
}

TEST_F(ErrorListTest, StringRefusalsLeaveTheirRecords) {
  std::uint32_t wide = 0;
  std::int32_t negative = 0;
  unsigned short narrow = 0;
  unsigned char out[4];
  unsigned char lent[4];
  ZuString s;
  s.initializeWithBuffer(lent, sizeof lent, 0);
  // The counted form quotes no further than its count.
  const std::pair<std::function<ZuStatus()>, const char*> cases[] = {
      {[&] { return convert(u(" +4294967296 "), &wide); }, "Number too large: 4294967296 "},
      {[&] { return convert(u("12z4"), &wide); }, "Number contains an invalid character: 12z4"},
      {[&] { return convert(u("-2147483649"), &negative); }, "Number too large: 2147483649"},
      {[&] { return convert(u(" 70000"), &narrow); }, "Number too large:  70000"},
      {[&] { return convert(u("99999 and more"), 5, &narrow); }, "Number too large: 99999"},
      {[&] { return dehexify(out, u("0G"), 2); },
       "Invalid hexidecimal character found during conversion."},
      {[&] { return s.concat(u("12345")); }, "Cannot handle strings larger than 65500 bytes."},
  };
  for (const auto& [refused, words] : cases) {
    SCOPED_TRACE(words);
    EXPECT_EQ(refused(), ZU_ERROR);
    EXPECT_EQ(text(list.getLastError()), words);
  }
  EXPECT_EQ(list.nodeCount, 7u);
}

TEST(ErrorKeeperWithoutRecord, AddingDoesNothingAndMakesNoRecord) {
  ASSERT_EQ(mdsIsThreadInit(), 0u);
  ZuError& r = addMessageError(2701) << u("x");
  EXPECT_EQ(r.isNullError(), 1);
  ZuErrorKeeper::addMemoryError();
  EXPECT_EQ(ZuErrorKeeper::getLastError(), nullptr);
  EXPECT_EQ(ZuErrorKeeper::getLastErrorNumber(), 0);
  EXPECT_EQ(appendMessageToLastError(2706).isNullError(), 1);
  EXPECT_EQ(ZuErrorKeeper::giveUpErrorList(), nullptr);
  EXPECT_EQ(mdsIsThreadInit(), 0u);
  // Setting a list makes the record on demand.
  ZuErrorList list;
  EXPECT_EQ(list.slotAddress, nullptr);
  ZuErrorKeeper::setErrorList(&list);
  EXPECT_EQ(mdsIsThreadInit(), 1u);
  addMessageError(2701) << u("x");
  EXPECT_EQ(ZuErrorKeeper::getLastErrorNumber(), 2701);
  ZuErrorKeeper::giveUpErrorList();
  mdsPerThreadTerm();
  EXPECT_EQ(mdsIsThreadInit(), 0u);
}

}  // namespace

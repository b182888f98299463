// The desktop helpers: accelerators over a run of labels against a set of
// taken keys kept beside them, the growing buffer's sizes, the time stamp
// from a fixed clock, the init count, centring on the headless desktop,
// the window pointer and the help request.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "desktop/helpers.h"
#include "desktop/window_handle.h"
#include "frame/task.h"
#include "memory/ram.h"
#include "platform/desktop.h"
#include "platform/dos.h"
#include "support/error_fixture.h"

namespace {

namespace dsk = zu::platform::desktop;
using zu::desktop::toHandle;

const unsigned char* u(const char* s) { return reinterpret_cast<const unsigned char*>(s); }

class Helpers : public zutest::ErrorFixture {};

// Each label in turn, in one dialog: the text it becomes.
TEST_F(Helpers, DialogLabelsTakeTheFirstFreeKey) {
  struct Step {
    const char* label;
    const char* argument;
    const char* expected;
  };
  const Step steps[] = {
      {"Name", nullptr, "&Name"},        {"name 2", nullptr, "n&ame 2"},
      {" Name", nullptr, " Na&me"},      {"E&xit", nullptr, "E&xit"},
      {"Server: %s", "db1", "&Server: db1"}, {"%-5s|%.2s|%%|%d", "abcd", "a&bcd ||%|%d"},
      {"NAMES", nullptr, "NAM&ES"},      {"\xC9t\xE9", nullptr, "&\xC9t\xE9"},
      {"ane", nullptr, "&ane"},          {"", nullptr, "&"},
  };
  unsigned char used[32] = {};
  for (const Step& step : steps) {
    unsigned char text[256];
    std::strcpy(reinterpret_cast<char*>(text), step.label);
    makeDialogText(used, text, step.argument == nullptr ? nullptr : u(step.argument));
    EXPECT_STREQ(reinterpret_cast<char*>(text), step.expected) << step.label;
  }
  // Folded keys: n a m x s b e and the accented e's lower case.
  for (int key : {int{'n'}, int{'a'}, int{'m'}, int{'x'}, int{'s'}, int{'b'}, int{'e'}, 0xE9}) {
    EXPECT_NE(used[key / 8] & (1 << (key % 8)), 0) << key;
  }
  unsigned char before[32];
  std::memcpy(before, used, sizeof used);
  setAcceleratorKey(used, u("no marker"));
  EXPECT_EQ(std::memcmp(before, used, sizeof used), 0);
  setAcceleratorKey(used, u("a&Z"));
  EXPECT_NE(used['z' / 8] & (1 << ('z' % 8)), 0);
}

TEST_F(Helpers, ButxpandGrowsInStepsOf512) {
  unsigned char* base = nullptr;
  unsigned char* cursor = nullptr;
  unsigned short size = 0;
  ASSERT_EQ(butxpand(&base, &cursor, &size, 600), ZU_OK);
  EXPECT_EQ(size, 1024);
  EXPECT_EQ(cursor, base);
  std::memset(base, 'x', 1000);
  cursor = base + 1000;
  ASSERT_EQ(butxpand(&base, &cursor, &size, 24), ZU_OK) << "room equal to the need";
  EXPECT_EQ(size, 1024);
  ASSERT_EQ(butxpand(&base, &cursor, &size, 25), ZU_OK);
  EXPECT_EQ(size, 1536);
  EXPECT_EQ(cursor, base + 1000);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(base), 1000), std::string(1000, 'x'));
  ramFree(base);
  base = nullptr;
  ASSERT_EQ(butxpand(&base, &cursor, &size, 100), ZU_OK);
  EXPECT_EQ(size, 512);
  ramFree(base);
}

TEST_F(Helpers, TimeStampCutsTheMilliseconds) {
  zu::platform::dos.utcNow = [](zu::platform::UtcTime* t) { *t = {24, 11, 2026, 9, 5, 7, 89}; };
  unsigned char buffer[12];
  std::memset(buffer, '#', sizeof buffer);
  EXPECT_EQ(ZuTime::getCurrentTimeStamp(buffer), 11);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer), 12), "09:05:07.08#");
  zu::platform::dos.utcNow = [](zu::platform::UtcTime* t) { *t = {1, 1, 2026, 23, 59, 59, 999}; };
  ZuTime::getCurrentTimeStamp(buffer);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer), 11), "23:59:59.99");
  zu::platform::dos = zu::platform::kDefaultDosCalls;
}

TEST_F(Helpers, InitCountMarksTheEdges) {
  void* saved = mdsGetPerTaskData(TASK_DATA_INIT_COUNT);
  mdsSetPerTaskData(TASK_DATA_INIT_COUNT, nullptr);
  EXPECT_EQ(countZuInits(1), 0);
  EXPECT_EQ(countZuInits(7), 1);
  EXPECT_EQ(countZuInits(0), 1);
  EXPECT_EQ(countZuInits(0), 0);
  EXPECT_EQ(mdsGetPerTaskData(TASK_DATA_INIT_COUNT), nullptr);
  mdsSetPerTaskData(TASK_DATA_INIT_COUNT, saved);
}

class DesktopWindows : public zutest::ErrorFixture {
 protected:
  void SetUp() override {
    ErrorFixture::SetUp();
    dsk::setScreenSize(1000, 800);
    windowsBefore_ = dsk::windowCount();
  }
  void TearDown() override {
    for (dsk::Window* w : made_) dsk::destroyWindow(w);
    EXPECT_EQ(dsk::windowCount(), windowsBefore_);
    ErrorFixture::TearDown();
  }
  dsk::Window* make(std::uint32_t style, int x, int y, int w, int h, dsk::Window* parent = nullptr) {
    dsk::Window* made = dsk::createWindow(u("Edit"), style, x, y, w, h, parent, nullptr);
    EXPECT_NE(made, nullptr);
    made_.push_back(made);
    return made;
  }
  static dsk::Rect rect(dsk::Window* w) {
    dsk::Rect r{};
    EXPECT_TRUE(dsk::windowRect(w, &r));
    return r;
  }

 private:
  std::vector<dsk::Window*> made_;
  std::uint32_t windowsBefore_ = 0;
};

TEST_F(DesktopWindows, CentringUsesParentOrScreenAndStaysOnIt) {
  dsk::Window* owner = make(0, 100, 50, 400, 300);
  dsk::Window* dialog = make(0, 0, 0, 200, 101, owner);
  winCenterBox(toHandle(dialog));
  EXPECT_EQ(rect(dialog).left, 200);
  EXPECT_EQ(rect(dialog).top, 149) << "(300 - 101) / 2 rounds toward zero";
  EXPECT_EQ(rect(dialog).right - rect(dialog).left, 200) << "the size is kept";
  EXPECT_EQ(dsk::topWindow(owner), dialog) << "the dialog comes to the top";

  dsk::Window* nearEdge = make(0, 0, 0, 500, 200, make(0, 800, 700, 100, 100));
  winCenterBox(toHandle(nearEdge));
  EXPECT_EQ(rect(nearEdge).left, 500) << "pulled back onto the screen";
  EXPECT_EQ(rect(nearEdge).top, 600);

  dsk::Window* minimised = make(dsk::kStyleMinimized, 0, 0, 50, 50);
  dsk::Window* inner = make(dsk::kStyleChild, 0, 0, 10, 10, minimised);
  dsk::Window* onScreen = make(0, 0, 0, 100, 100, inner);
  winCenterBox(toHandle(onScreen));
  EXPECT_EQ(rect(onScreen).left, 450) << "a minimised top-level ancestor: the screen";

  dsk::Window* wide = make(0, 0, 0, 1200, 900);
  winCenterBox(toHandle(wide));
  EXPECT_EQ(rect(wide).left, 0);
  EXPECT_EQ(rect(wide).top, 0);
}

TEST_F(DesktopWindows, PointerAndHelpLiveOnTheWindow) {
  dsk::Window* w = make(0, 0, 0, 10, 10);
  HWND handle = toHandle(w);
  EXPECT_EQ(zuGetWinPointer(handle), nullptr);
  int value = 0;
  zuSetWinPointer(handle, &value);
  EXPECT_EQ(zuGetWinPointer(handle), &value);
  EXPECT_EQ(dsk::property(w, u("offset")), reinterpret_cast<std::uintptr_t>(&value) & 0xFFFF);
  zuRemoveWinPointer(handle);
  EXPECT_EQ(zuGetWinPointer(handle), nullptr);

  const unsigned cursor = dsk::setCursor(dsk::kCursorArrow);
  const std::uint32_t asked = dsk::lastHelpRequest().count;
  butdohlp(handle, 2719, 0, 3, 77);
  const dsk::HelpRequest help = dsk::lastHelpRequest();
  EXPECT_EQ(help.count, asked + 1);
  EXPECT_EQ(help.window, w);
  EXPECT_STREQ(reinterpret_cast<const char*>(help.file), "Could not create trace window.");
  EXPECT_EQ(help.command, 3u);
  EXPECT_EQ(help.data, 77u);
  EXPECT_EQ(dsk::setCursor(cursor), dsk::kCursorArrow) << "the cursor is put back";
}

}  // namespace

// The DOS view and the handle table beneath the file functions: names
// matched to the host without regard to case, wildcard patterns, and region
// locks between handles.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <string>

#include "platform/dos.h"
#include "platform/dos_view.h"
#include "support/dos_world.h"

using zu::platform::dos;
using zu::platform::ErrorClass;
using zu::platform::kAccessDenied;
using zu::platform::kNoEntry;
using zu::platform::kNoFailure;
using zu::platform::view::Want;
using zutest::u;

namespace {
class DosView : public zutest::DosWorld {};
}  // namespace

TEST_F(DosView, NamesResolveWithoutRegardToCaseAndNeverAboveTheRoot) {
  ASSERT_EQ(mkdir(host("c/Mixed").c_str(), 0700), 0);
  writeHost("c/Mixed/Name.Txt", "m");
  writeHost("c/Mixed/twin", "lower");
  writeHost("c/Mixed/TWIN", "upper");
  struct Case {
    const char* name;
    Want want;
    ErrorClass failure;
    const char* path;  // relative to the world's root
  };
  const Case kCases[] = {
      {"..\\..\\MIXED\\.\\name.TXT", Want::kExisting, kNoFailure, "c/Mixed/Name.Txt"},
      {"C:\\mixed\\NAME.txt", Want::kExisting, kNoFailure, "c/Mixed/Name.Txt"},
      {"c:/Mixed//name.txt", Want::kExisting, kNoFailure, "c/Mixed/Name.Txt"},
      {"\\mixed\\Twin", Want::kExisting, kNoFailure, "c/Mixed/TWIN"},  // lowest in byte order
      {"\\mixed\\twin", Want::kExisting, kNoFailure, "c/Mixed/twin"},  // the exact name first
      {"/mixed/New.Txt", Want::kCreatable, kNoFailure, "c/Mixed/New.Txt"},
      {"D:", Want::kExisting, kNoFailure, "d"},
      {"/mixed/New.Txt", Want::kExisting, kNoEntry, nullptr},
      {"C:\\NONE\\X", Want::kCreatable, kNoEntry, nullptr},
      {"C:\\Mixed\\Name.Txt\\X", Want::kCreatable, kNoEntry, nullptr},
      {"E:\\X", Want::kCreatable, kNoEntry, nullptr},
      {"\\\\SERVER\\X", Want::kCreatable, kNoEntry, nullptr},
      {"", Want::kCreatable, kNoEntry, nullptr},
      {"1:\\X", Want::kCreatable, kNoEntry, nullptr},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.name);
    char path[zu::platform::view::kHostPathSize];
    ASSERT_EQ(zu::platform::view::resolve(u(c.name), c.want, path, sizeof path), c.failure);
    if (c.path != nullptr) {
      EXPECT_EQ(std::string(path), host(c.path));
    }
  }
}

TEST_F(DosView, WildcardsMatchAsDosPatternsDo) {
  struct Case {
    const char* pattern;
    const char* name;
    bool matches;
  };
  static constexpr Case kCases[] = {
      {"*.*", "readme", true},  // "*.*" takes names without an extension
      {"*.*", "a.b.c", true},     {"*", "", true},           {"*.TXT", "a.txt", true},
      {"*.TXT", "a.txt.bak", false}, {"A?C", "abc", true},   {"A?C", "ac", false},
      {"A?C", "abcd", false},     {"X.", "x", true},         {"X.", "x.y", false},
      {"a*b*c", "aXbYc", true},   {"a*b*c", "aXbY", false},  {"*b", "bbb", true},
      {"*.T?T", "F.TXT", true},   {"?", "", false},          {"\xE9*", "\xC9T\xC9", true},
      {"READ*.", "readme", true}, {"READ*.", "readme.txt", false},
  };
  for (const Case& c : kCases) {
    EXPECT_EQ(zu::platform::view::wildcardMatch(u(c.pattern), u(c.name)), c.matches)
        << c.pattern << " ~ " << c.name;
  }
}

TEST_F(DosView, RegionLocksBetweenHandles) {
  writeHost("c/lock.dat", std::string(64, 'l'));
  int first = 0, second = 0;
  ASSERT_EQ(dos.open(u("C:\\LOCK.DAT"), zu::platform::kOpenWrite, &first), kNoFailure);
  ASSERT_EQ(dos.open(u("C:\\LOCK.DAT"), zu::platform::kOpenWrite, &second), kNoFailure);
  enum Act { kLock, kUnlock, kRead, kWrite };
  struct Case {
    bool byFirst;
    Act act;
    std::uint32_t start, length;
    ErrorClass failure;
  };
  // The first handle holds [10, 20) once the first row has run.
  static constexpr Case kCases[] = {
      {true, kLock, 10, 10, kNoFailure},     {true, kLock, 19, 1, kAccessDenied},  // no stacking
      {false, kLock, 0, 11, kAccessDenied},  {false, kLock, 0, 10, kNoFailure},    // adjacent
      {false, kLock, 20, 0, kNoFailure},     {false, kRead, 15, 2, kAccessDenied},
      {false, kWrite, 19, 5, kAccessDenied}, {false, kRead, 30, 8, kNoFailure},
      {true, kRead, 12, 4, kNoFailure},      {true, kRead, 5, 4, kAccessDenied},  // the second's
      {false, kUnlock, 10, 10, kAccessDenied}, {true, kUnlock, 10, 9, kAccessDenied},
      {true, kUnlock, 10, 10, kNoFailure},   {false, kRead, 15, 2, kNoFailure},
      {false, kUnlock, 0, 10, kNoFailure},   {true, kLock, 0, 64, kNoFailure},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(testing::Message() << (c.byFirst ? "first " : "second ") << c.act << " at "
                                    << c.start << "+" << c.length);
    const int h = c.byFirst ? first : second;
    std::uint32_t position = 0;
    ASSERT_EQ(dos.seek(h, static_cast<std::int32_t>(c.start), 0, &position), kNoFailure);
    char buffer[64];
    std::uint32_t done = 0;
    switch (c.act) {
      case kLock:
      case kUnlock:
        EXPECT_EQ(dos.lockRegion(h, c.act == kUnlock, c.length), c.failure);
        break;
      case kRead:
        EXPECT_EQ(dos.read(h, buffer, c.length, &done), c.failure);
        break;
      case kWrite:
        EXPECT_EQ(dos.write(h, "wwwwwwww", c.length, &done), c.failure);
        break;
    }
  }
  EXPECT_EQ(dos.close(first), kNoFailure);
  EXPECT_EQ(dos.lockRegion(second, false, 1), kNoFailure) << "a close lets its regions go";
  EXPECT_EQ(dos.close(second), kNoFailure);
}

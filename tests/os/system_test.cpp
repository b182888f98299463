// Walks over files and drives, the DOS view beneath them, sister libraries,
// the date, the key check and the busy wait (on a tick the test drives).
#include <dlfcn.h>
#include <sys/stat.h>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "os/file.h"
#include "os/system.h"
#include "support/dos_world.h"
#include "platform/dos.h"
#include "platform/dos_view.h"

namespace {

using zu::platform::dos;
using zutest::s;
using zutest::u;

class System : public zutest::DosWorld {
 protected:
  std::vector<std::string> find(const char* pattern) {
    std::vector<std::string> names;
    unsigned char name[256];
    std::strcpy(reinterpret_cast<char*>(name), pattern);
    unsigned char* context = nullptr;
    do {
      EXPECT_EQ(bosFindFiles(&context, name), ZU_OK);
      if (context != nullptr) names.push_back(s(name));
    } while (context != nullptr);
    return names;
  }
  std::vector<std::string> drives() {
    std::vector<std::string> letters;
    unsigned char name[256];
    void* context = nullptr;
    do {
      EXPECT_EQ(bosGetFileSystems(&context, name), ZU_OK);
      letters.push_back(s(name));
    } while (context != nullptr);
    return letters;
  }
};

TEST_F(System, FindFilesMatchesWithoutRegardToCase) {
  for (const char* f : {"c/b.txt", "c/A.TXT", "c/readme", "c/TEMP/x.tmp"}) writeHost(f, "");
  EXPECT_EQ(find("*.TXT"), (std::vector<std::string>{"A.TXT", "b.txt"}));
  EXPECT_EQ(find("C:\\*.*"), (std::vector<std::string>{"A.TXT", "TEMP", "b.txt", "readme"}))
      << "no '.' or '..' at a drive's root";
  EXPECT_EQ(find("temp\\*"), (std::vector<std::string>{".", "..", "x.tmp"}));
  EXPECT_EQ(find("READ*."), std::vector<std::string>{"readme"});
  EXPECT_EQ(find("?.txt"), (std::vector<std::string>{"A.TXT", "b.txt"}));
  unsigned char name[256] = "*.none";
  unsigned char* context = nullptr;
  EXPECT_EQ(bosFindFiles(&context, name), ZU_OK);
  EXPECT_EQ(context, nullptr);
  EXPECT_EQ(s(name), "*.none") << "no match leaves the pattern";
  void* none = nullptr;
  EXPECT_EQ(bosGetDirectoryNames(&none, name), ZU_OK);
  EXPECT_EQ(none, nullptr);
}

TEST_F(System, DrivesComeFromTheMapAndTheTemporaryDirectoryStaysValid) {
  EXPECT_EQ(drives(), (std::vector<std::string>{"c", "d", ""}));
  setVariable(zu::platform::view::kDriveVariable, ("C=" + host("c") + ";C=;b=" + host("d")).c_str());
  // Later entries win and an empty one unmaps; the temporary directory, now
  // outside every drive, gets a drive of its own.
  EXPECT_EQ(drives(), (std::vector<std::string>{"b", "z", ""}));
  // So does one without an 8.3 path.
  ASSERT_EQ(mkdir(host("d/Long Temporary").c_str(), 0700), 0);
  setVariable(zu::platform::view::kDriveVariable, ("C=" + host("c") + ";D=" + host("d")).c_str());
  setVariable(zu::platform::view::kTempVariable, host("d/Long Temporary").c_str());
  unsigned char temp[256];
  dos.tempDirectory(temp, sizeof temp);
  EXPECT_EQ(s(temp), "Z:\\");
  EXPECT_EQ(drives(), (std::vector<std::string>{"c", "d", "z", ""}));
  unsigned char name[256] = "";
  int h = 0;
  ASSERT_EQ(bosFileOpen(name, ZU_OPEN_TEMP | ZU_OPEN_WRITE, &h), ZU_OK);
  EXPECT_EQ(s(name).substr(0, 5), "Z:\\ZU");
  EXPECT_EQ(bosFileClose(h), ZU_OK);
  EXPECT_EQ(hostNames("d/Long Temporary").size(), 1u);
}

TEST_F(System, SisterLibrariesLoadByStemFromTheLibrarysDirectory) {
  unsigned char stem[16] = "ABC";
  bosdllname(stem);
  EXPECT_EQ(s(stem), "ABC04");
  EXPECT_EQ(bosLoadLibrary(u("NOSUCH")), nullptr);
  dos.moduleFile = [](char* path, std::size_t size) {
    return std::snprintf(path, size, "%s/libzuutl04.so", ZU_TEST_LIBRARY_DIR) > 0;
  };
  HINSTANCE sister = bosLoadLibrary(u("ZUMDS"));
  ASSERT_NE(sister, nullptr);
  EXPECT_NE(dlsym(sister, "_Z14mdsGetTaskInfov"), nullptr);
  dlclose(sister);
  EXPECT_TRUE(takeErrors().empty());
}

TEST_F(System, DateIsUtcAndTheWaitFollowsTheTick) {
  const std::time_t before = std::time(nullptr);
  os_time now;
  bosdate(&now);
  const std::time_t after = std::time(nullptr);
  bool matched = false;
  for (std::time_t t = before; t <= after && !matched; ++t) {
    std::tm utc;
    gmtime_r(&t, &utc);
    matched = now.day == utc.tm_mday && now.month == utc.tm_mon + 1 && now.year == utc.tm_year + 1900 &&
              now.hour == utc.tm_hour && now.minute == utc.tm_min && now.second == utc.tm_sec;
  }
  EXPECT_TRUE(matched);
  EXPECT_LT(now.millisecond, 1000);

  static std::uint32_t tick, reads;
  dos.tickMs = [] {
    ++reads;
    return tick++;
  };
  tick = 100, reads = 0;
  bossleep(5);
  EXPECT_EQ(reads, 7u) << "until the tick is above start + 5";
  tick = 100, reads = 0;
  bossleep(0);
  EXPECT_EQ(reads, 2u);
  tick = 0xFFFFFFFE, reads = 0;
  bossleep(1);
  EXPECT_EQ(reads, 3u) << "a wrapping counter ends the wait";
}

TEST_F(System, AbortTakesKeysUpToEscapeAndBeepsAtOthers) {
  EXPECT_EQ(bosabort(), 0) << "a headless desktop has no keys";
  static std::vector<std::pair<unsigned, unsigned>> queue;
  static int beeps;
  queue = {{256, 'A'}, {257, 'A'}, {256, 38}, {256, 40}, {256, 27}, {256, 'B'}};
  beeps = 0;
  dos.nextKey = [](unsigned* message, unsigned* key) {
    if (queue.empty()) return false;
    *message = queue.front().first;
    *key = queue.front().second;
    queue.erase(queue.begin());
    return true;
  };
  dos.beep = [] { ++beeps; };
  EXPECT_EQ(bosabort(), 1);
  EXPECT_EQ(beeps, 1);
  EXPECT_EQ(bosabort(), 0);
  EXPECT_EQ(beeps, 2);
}

}  // namespace

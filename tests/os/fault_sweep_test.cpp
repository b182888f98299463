// Every file, path and system function that reaches the host, run with each
// host call it makes failing in turn: each ends with its catalogue row, or
// swallows the failure where that is the function's contract, and leaves no
// handle, descriptor or heap block behind.
#include <unistd.h>

#include <bitset>
#include <cstring>
#include <iostream>
#include <string>

#include "os/file.h"
#include "os/path.h"
#include "os/system.h"
#include "support/dos_world.h"
#include "support/fault_sweep.h"

namespace {

using zutest::u;

constexpr unsigned short kNoMemory = 30190;

class HostFaults : public zutest::DosWorld {
 protected:
  void SetUp() override {
    DosWorld::SetUp();
    writeHost("c/DATA.TXT", std::string(1000, 'd'));
    writeHost("c/TEMP/other.dat", "o");
  }
  void TearDown() override {
    std::cout << "[ tally    ] " << tally_.operations << " operations, "
              << std::bitset<64>(tally_.slotsSeen).count() << " slots in " << tally_.slots
              << " slot and errno pairs failed, " << tally_.runs << " runs, " << tally_.failures
              << " reported as failed\n";
    DosWorld::TearDown();
  }
  ::testing::AssertionResult sweep(const std::function<ZuStatus()>& operation,
                                   std::initializer_list<unsigned short> rows) {
    return zutest::sweepHostFaults(operation, rows, &tally_);
  }
  // Opens `given` with `flags`, runs `work` on the handle, and closes it.
  static ZuStatus withFile(const char* given, std::uint32_t flags, const std::function<ZuStatus(int)>& work) {
    unsigned char name[256];
    std::strcpy(reinterpret_cast<char*>(name), given);
    int h = 0;
    if (bosFileOpen(name, flags, &h) != ZU_OK) return ZU_ERROR;
    const ZuStatus worked = work(h);
    const ZuStatus closed = bosFileClose(h);
    return worked == ZU_OK ? closed : worked;
  }

 private:
  zutest::HostSweepTally tally_;
};

TEST_F(HostFaults, FilesEndWithTheirRows) {
  const auto nothing = [](int) { return ZU_OK; };
  EXPECT_TRUE(sweep(
      [&] {
        return withFile("DATA.TXT", 0, [](int h) {
          char buffer[100];
          std::uint32_t got = 0;
          return bosFileRead(h, 500, buffer, sizeof buffer, &got);
        });
      },
      {30040, 30041, 1503, 1507, 1508, 1509, 30045, kNoMemory}));
  EXPECT_TRUE(sweep(
      [&] {
        return withFile("C:\\OUT.DAT", ZU_OPEN_CREATE, [](int h) {
          static const std::string data(70000, 'w');
          return bosFileWrite(h, 0, data.data(), static_cast<std::uint32_t>(data.size()));
        });
      },
      {1501, 1506, 30041, 1503, 1507, 1508, 1509, 30045, kNoMemory}));
  EXPECT_TRUE(sweep(
      [&] {
        return withFile("DATA.TXT", ZU_OPEN_WRITE | ZU_OPEN_EXCLUSIVE, [](int h) {
          if (bosRegionLock(h, 0, 10, 20) != ZU_OK) return ZU_ERROR;
          bosupdir(h);
          return bosRegionLock(h, 1, 10, 20);
        });
      },
      {30040, 1512, 1503, 1507, 1508, 1509, 30041, 30045, kNoMemory}));
  EXPECT_TRUE(sweep(
      [&] {
        unsigned char name[256] = "";
        int h = 0;
        ZuStatus status = bosFileOpen(name, ZU_OPEN_TEMP | ZU_OPEN_CREATE, &h);
        if (status == ZU_OK) {
          bosFileClose(h);
          status = bosFileDelete(name);
        }
        // What a failed run left goes behind the library's back, so that
        // every run meets the same directory.
        for (const std::string& left : hostNames("c/TEMP")) {
          if (left != "other.dat") ::unlink(host("c/TEMP/" + left).c_str());
        }
        return status;
      },
      {1501, 1502, 30041, 30045, kNoMemory}));
  setVariable("PATH", (std::string("D:\\;") + host("c/TEMP")).c_str());
  EXPECT_TRUE(sweep([&] { return withFile("OTHER.DAT", ZU_OPEN_SEARCH_PATH, nothing); },
                    {30040, 30041, kNoMemory}));
  EXPECT_TRUE(sweep(
      [&] {
        writeHost("c/OLD.TXT", "r");
        const ZuStatus renamed = bosrname(u("OLD.TXT"), u("NEW.TXT"));
        const ZuStatus deleted = bosFileDelete(u(renamed == ZU_OK ? "NEW.TXT" : "OLD.TXT"));
        return renamed == ZU_OK ? deleted : renamed;
      },
      {30042, 1502, kNoMemory}));
}

TEST_F(HostFaults, PathsAndWalksSwallowWhatTheirContractsSwallow) {
  EXPECT_TRUE(sweep(
      [] {
        unsigned char buffer[256] = "sub\\..\\x.txt";
        bosfpath(buffer);
        bosgtcwd(buffer, 1);
        const ZuStatus moved = bosstcwd(u("C:\\TEMP"), 0);
        bosstcwd(u("C:\\"), 0);
        const unsigned short seen = bosfattr(u("DATA.TXT")) + bosexist(u("C:\\TEMP\\OTHER.DAT"));
        return moved == ZU_OK && seen <= ZU_ATTR_FILE + 1 ? ZU_OK : ZU_ERROR;
      },
      {}));
  EXPECT_TRUE(sweep(
      [] {
        unsigned char name[256] = "*.*";
        unsigned char* files = nullptr;
        ZuStatus status = ZU_OK;
        do {
          status = bosFindFiles(&files, name);
        } while (status == ZU_OK && files != nullptr);
        EXPECT_EQ(files, nullptr) << "a refused search ends the walk";
        // A walk that starts holds a context; a refused one holds none.
        void* drives = nullptr;
        const bool walked = bosGetFileSystems(&drives, name) == ZU_OK;
        EXPECT_EQ(walked, drives != nullptr);
        while (drives != nullptr) bosGetFileSystems(&drives, name);
        return walked ? status : ZU_ERROR;
      },
      {kNoMemory}));
  EXPECT_TRUE(sweep(
      [] {
        // Not bossleep: it reads the clock until the time has passed, as
        // often as the machine allows, so its calls have no last one.
        os_time now;
        bosdate(&now);
        HINSTANCE library = bosLoadLibrary(u("ZUMDS"));
        // A library that loads is never unloaded; none is left open but its mapping.
        return library != nullptr || now.year >= 1970 ? ZU_OK : ZU_ERROR;
      },
      {}));
}

}  // namespace

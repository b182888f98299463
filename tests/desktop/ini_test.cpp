// ZuIni: its states and row 2717, the forms of reading, every host failure
// of a write (the old file whole, nothing left beside it), and two
// processes writing one file at once.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "desktop/ini.h"
#include "errors/keeper.h"
#include "support/dos_world.h"
#include "support/fault_sweep.h"

namespace {

using zutest::u;

constexpr unsigned short kNotOpen = 2717;
constexpr unsigned short kOutOfMemory = 30190;

class Ini : public zutest::DosWorld {
 protected:
  // The buffer as read, NULs shown as '|', up to the list's end.
  static std::string get(ZuIni& ini, const char* section, const char* entry, unsigned short size = 256) {
    std::vector<unsigned char> buffer(size + 1u, 0xEE);
    EXPECT_EQ(ini.getEntry(u(section), u(entry), buffer.data(), size, u("(none)")), ZU_OK);
    EXPECT_EQ(buffer[size], 0xEE) << "written past the buffer";
    const std::size_t end = entry != nullptr
                                ? std::strlen(reinterpret_cast<char*>(buffer.data()))
                                : std::search_n(buffer.begin(), buffer.end(), 2, 0) - buffer.begin() + 2;
    std::string text(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(end));
    std::replace(text.begin(), text.end(), '\0', '|');
    return text;
  }
};

TEST_F(Ini, StatesRowAndReads) {
  ZuIni ini;
  EXPECT_EQ(ini.close(), ZU_OK);
  unsigned char buffer[8] = "keep";
  short value = 77;
  EXPECT_EQ(ini.getEntry(u("S"), u("E"), buffer, sizeof buffer, u("d")), ZU_ERROR);
  EXPECT_EQ(ini.getEntry(u("S"), u("E"), &value, 5), ZU_ERROR);
  EXPECT_EQ(ini.writeEntry(u("S"), u("E"), u("v")), ZU_ERROR);
  EXPECT_EQ(ini.deleteEntry(u("S"), u("E")), ZU_ERROR);
  EXPECT_EQ(ini.deleteSection(u("S")), ZU_ERROR);
  EXPECT_EQ(ini.open(nullptr), ZU_ERROR);
  const auto errors = takeErrors();
  ASSERT_EQ(errors.size(), 6u);
  for (const auto& e : errors)
    EXPECT_EQ(e, std::make_pair(kNotOpen, std::string("Initialization file is not open.")));
  EXPECT_STREQ(reinterpret_cast<char*>(buffer), "keep");
  EXPECT_EQ(value, 77);

  // Opening again moves to the new name; the file need not exist, and a
  // deletion does not make it.
  ASSERT_EQ(ini.open(u("C:\\FIRST.INI")), ZU_OK);
  ASSERT_EQ(ini.open(u("C:\\R.INI")), ZU_OK);
  ASSERT_EQ(ini.open(ini.fileName), ZU_OK) << "its own name";
  EXPECT_EQ(get(ini, "S", "E"), "(none)");
  EXPECT_EQ(ini.deleteSection(u("S")), ZU_OK);
  EXPECT_EQ(hostNames("c"), std::vector<std::string>{"TEMP"});

  writeHost("c/R.INI",
            "[Numbers]\r\nplain=42\r\nlead = 12abc\r\nwide=70000\r\nnone=abc\r\n[Text]\r\nlong = abcdef\r\n");
  const std::pair<const char*, short> kNumbers[] = {
      {"PLAIN", 42}, {"lead", 12}, {"wide", 70000 - 65536}, {"none", -1}, {"missing", -1}};
  for (const auto& [entry, number] : kNumbers) {
    EXPECT_EQ(ini.getEntry(u("numbers"), u(entry), &value, -1), ZU_OK);
    EXPECT_EQ(value, number) << entry;
  }
  EXPECT_EQ(get(ini, "text", "LONG", 4), "abc");
  EXPECT_EQ(get(ini, "Text", "missing", 4), "(no");
  // Lists: each name ends in a NUL and the list in one more; a list cut
  // short ends in two.
  EXPECT_EQ(get(ini, nullptr, nullptr), "Numbers|Text||");
  EXPECT_EQ(get(ini, nullptr, nullptr, 11), "Numbers|T||");
  EXPECT_EQ(get(ini, "nowhere", nullptr), "||");
  EXPECT_TRUE(takeErrors().empty());
}

// Every host call a write reaches, failed at each of its calls: the object
// reports nothing but a want of memory for the name, the file is the old
// one or the new one, whole, and nothing is left beside it.
TEST_F(Ini, EveryHostFailureOfAWriteLeavesTheOldFileWhole) {
  const std::string old = "; sources\n[Sales]\nDriver = old.so\nPort=1\n\n[Other]\nk=v\n";
  struct Case {
    const char* name;
    bool exists;  // whether the file is there before the write
    std::function<void(ZuIni&)> write;
    std::string after;
  };
  const Case kCases[] = {
      {"replace", true, [](ZuIni& i) { i.writeEntry(u("sales"), u("driver"), u("new.so")); },
       "; sources\n[Sales]\nDriver = new.so\nPort=1\n\n[Other]\nk=v\n"},
      {"add a section", true, [](ZuIni& i) { i.writeEntry(u("New"), u("a"), u("b")); },
       old + "\n[New]\na=b\n"},
      {"delete a section", true, [](ZuIni& i) { i.deleteSection(u("SALES")); }, "; sources\n[Other]\nk=v\n"},
      {"create", false, [](ZuIni& i) { i.writeEntry(u("New"), u("a"), u("b")); }, "[New]\na=b\n"},
  };
  zutest::HostSweepTally tally;
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.name);
    EXPECT_TRUE(zutest::sweepHostFaults(
        [&] {
          if (c.exists) {
            writeHost("c/DSN.INI", old);
          } else {
            std::remove(host("c/DSN.INI").c_str());
          }
          ZuIni ini;
          if (ini.open(u("C:\\DSN.INI")) != ZU_OK) return ZU_ERROR;
          c.write(ini);
          const bool whole = hostExists("c/DSN.INI") ? readHost("c/DSN.INI") == c.after ||
                                                           (c.exists && readHost("c/DSN.INI") == old)
                                                     : !c.exists;
          const std::vector<std::string> expected = hostExists("c/DSN.INI")
                                                        ? std::vector<std::string>{"DSN.INI", "TEMP"}
                                                        : std::vector<std::string>{"TEMP"};
          if (!whole || hostNames("c") != expected || ZuErrorKeeper::getLastErrorNumber() != 0) {
            ADD_FAILURE() << "the file is not whole, or something is left beside it";
            return ZU_ERROR;
          }
          return ZU_OK;
        },
        {kOutOfMemory}, &tally));
  }
  // The sweep reached the lock, the read, the new file, its flush and the rename.
  for (auto call :
       {zu::platform::HostCall::open, zu::platform::HostCall::fcntl, zu::platform::HostCall::pread,
        zu::platform::HostCall::write, zu::platform::HostCall::fsync, zu::platform::HostCall::rename}) {
    EXPECT_NE(tally.slotsSeen & (std::uint64_t{1} << static_cast<unsigned>(call)), 0u)
        << zu::platform::hostCallName(call);
  }
}

TEST_F(Ini, TwoProcessesWritingOneFileAtOnceLoseNoEntry) {
  constexpr int kEach = 60;
  const auto writeAll = [](const char* who) {
    ZuIni ini;
    if (ini.open(u("C:\\SHARED.INI")) != ZU_OK) return false;
    for (int i = 0; i < kEach; ++i) {
      const std::string section = "Section" + std::to_string(i % 3);
      const std::string entry = std::string(who) + std::to_string(i);
      if (ini.writeEntry(u(section), u(entry), u(entry + " value")) != ZU_OK) return false;
    }
    return true;
  };
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) _exit(writeAll("child") ? 0 : 1);
  EXPECT_TRUE(writeAll("parent"));
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  ZuIni ini;
  ASSERT_EQ(ini.open(u("C:\\SHARED.INI")), ZU_OK);
  int found = 0;
  for (const char* who : {"child", "parent"}) {
    for (int i = 0; i < kEach; ++i) {
      const std::string entry = std::string(who) + std::to_string(i);
      found +=
          get(ini, ("Section" + std::to_string(i % 3)).c_str(), entry.c_str()) == entry + " value" ? 1 : 0;
    }
  }
  EXPECT_EQ(found, 2 * kEach);
  EXPECT_EQ(get(ini, nullptr, nullptr), "Section0|Section1|Section2||") << "one heading each";
  EXPECT_EQ(hostNames("c"), (std::vector<std::string>{"SHARED.INI", "TEMP"}));
}

}  // namespace

// Files on a private drive: the DOS name rules and their messages, every
// open flag, the 65534-byte write chunks, region locks between handles,
// refusals made through the fault switch, delete and rename failures.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "os/file.h"
#include "support/dos_world.h"
#include "platform/dos.h"
#include "platform/host.h"

namespace {

using zu::platform::dos;
using zu::platform::HostCall;
using zutest::s;
using zutest::u;

// How many opens reach the system, and with which names.
std::vector<std::string> opened;
zu::platform::ErrorClass countingOpen(const unsigned char* name, unsigned mode, int* handle) {
  opened.push_back(s(name));
  return zu::platform::kDefaultDosCalls.open(name, mode, handle);
}

std::vector<std::uint32_t> chunks;
zu::platform::ErrorClass recordingWrite(int h, const void* b, std::uint32_t size, std::uint32_t* done) {
  chunks.push_back(size);
  return zu::platform::kDefaultDosCalls.write(h, b, size, done);
}
zu::platform::ErrorClass halfWrite(int h, const void* b, std::uint32_t size, std::uint32_t* done) {
  return zu::platform::kDefaultDosCalls.write(h, b, size / 2, done);
}

class Files : public zutest::DosWorld {
 protected:
  int open(const char* name, std::uint32_t flags) {
    unsigned char buffer[256];
    std::strcpy(reinterpret_cast<char*>(buffer), name);
    int handle = 0;
    return bosFileOpen(buffer, flags, &handle) == ZU_OK ? handle : 0;
  }
};

TEST_F(Files, NamesAreHeldToDosRulesBeforeTheSystemSeesThem) {
  dos.open = countingOpen;
  opened.clear();
  for (const char* bad : {"A B.TXT", "ABCDEFGHI.TXT", "ABC.DEFG", "C:\\LONGDIRNAME\\A.TXT", "A\tB"}) {
    int handle = 77;
    unsigned char name[256];
    std::strcpy(reinterpret_cast<char*>(name), bad);
    EXPECT_EQ(bosFileOpen(name, 0, &handle), ZU_ERROR) << bad;
    EXPECT_EQ(handle, 77) << "a refused name leaves the handle alone";
    EXPECT_EQ(onlyError(), std::string("30040 Cannot open file '") + bad + "'.");
  }
  EXPECT_EQ(open("a b.txt", ZU_OPEN_CREATE), 0);
  EXPECT_EQ(onlyError(), "1501 Cannot create file 'a b.txt'.");
  for (const char* reserved : {"CON", "con.txt", "DIR\\LPT1.DAT", "c:\\x\\com4"}) {
    EXPECT_EQ(open(reserved, ZU_OPEN_CREATE), 0);
    EXPECT_EQ(onlyError(), std::string("30047 Reserved file name cannot be opened '") + reserved + "'.");
  }
  EXPECT_TRUE(opened.empty());
  // Accepted by the check: they reach the system, which finds nothing.
  for (const char* fine : {"ABCDEFGH.TXT", "A.B.C", "CON\\A.TXT", "NUL", "lpt5"}) {
    int handle = 77;
    unsigned char name[256];
    std::strcpy(reinterpret_cast<char*>(name), fine);
    EXPECT_EQ(bosFileOpen(name, 0, &handle), ZU_ERROR);
    EXPECT_EQ(handle, -1);
    EXPECT_EQ(onlyError(), std::string("30040 Cannot open file '") + fine + "'.");
  }
  EXPECT_EQ(opened.size(), 5u);
  EXPECT_EQ(opened[0], "ABCDEFGH.TXT") << "names reach the system upper-cased";
}

TEST_F(Files, CreateWriteAndReadOnlyAccess) {
  writeHost("c/data.txt", "old contents");
  const int created = open("new.txt", ZU_OPEN_CREATE);
  ASSERT_NE(created, 0);
  EXPECT_EQ(hostNames("c"), (std::vector<std::string>{"NEW.TXT", "TEMP", "data.txt"}));
  EXPECT_EQ(bosFileWrite(created, -1, "abc", 3), ZU_OK);
  EXPECT_EQ(bosFileClose(created), ZU_OK);

  const int replaced = open("DATA.TXT", ZU_OPEN_CREATE);  // matched without regard to case
  ASSERT_NE(replaced, 0);
  EXPECT_EQ(readHost("c/data.txt"), "");
  EXPECT_EQ(bosFileWrite(replaced, 0, "0123456789", 10), ZU_OK);
  EXPECT_EQ(bosFileClose(replaced), ZU_OK);

  const int reader = open("Data.Txt", 0);
  ASSERT_NE(reader, 0);
  EXPECT_EQ(bosFileWrite(reader, 0, "x", 1), ZU_ERROR);
  EXPECT_EQ(onlyError(), "1507 Invalid file handle.");
  char buffer[16] = {};
  std::uint32_t got = 0;
  EXPECT_EQ(bosFileRead(reader, 4, buffer, sizeof buffer, &got), ZU_OK);
  EXPECT_EQ(std::string(buffer, got), "456789");
  EXPECT_EQ(bosFileRead(reader, -1, buffer, sizeof buffer, &got), ZU_OK);
  EXPECT_EQ(got, 0u) << "the end of the file is a success";
  EXPECT_EQ(bosFileSeek(reader, -3, 2), 7u);
  EXPECT_EQ(bosFileSeek(reader, 2, 1), 9u);
  EXPECT_EQ(bosFileSeek(reader, -1, 0), 0xFFFFFFFFu);
  EXPECT_EQ(bosFileSeek(reader, 0, 3), 0xFFFFFFFFu);
  EXPECT_TRUE(takeErrors().empty()) << "a seek records nothing";

  const int writer = open("DATA.TXT", ZU_OPEN_WRITE);
  ASSERT_NE(writer, 0);
  EXPECT_EQ(bosFileWrite(writer, 0, "AB", 2), ZU_OK);
  EXPECT_EQ(bosFileRead(reader, 0, buffer, 4, &got), ZU_OK);
  EXPECT_EQ(std::string(buffer, got), "AB23") << "both share reading and writing";
  for (int h : {reader, writer}) EXPECT_EQ(bosFileClose(h), ZU_OK);

  EXPECT_EQ(bosFileClose(0), ZU_OK);
  EXPECT_EQ(bosFileClose(reader), ZU_ERROR);
  EXPECT_EQ(bosFileRead(255, 0, buffer, 1, &got), ZU_ERROR);
  EXPECT_EQ(takeErrors().size(), 2u);

  chmod(host("c/data.txt").c_str(), 0444);
  EXPECT_EQ(open("DATA.TXT", ZU_OPEN_WRITE), 0);
  EXPECT_EQ(onlyError(), "30040 Cannot open file 'DATA.TXT'.");
}

TEST_F(Files, ExclusiveSharesWithNobody) {
  writeHost("c/one.dat", "1");
  const int only = open("ONE.DAT", ZU_OPEN_WRITE | ZU_OPEN_EXCLUSIVE);
  ASSERT_NE(only, 0);
  EXPECT_EQ(open("one.dat", 0), 0);
  EXPECT_EQ(open("ONE.DAT", ZU_OPEN_CREATE), 0);
  EXPECT_EQ(takeErrors().size(), 2u);
  EXPECT_EQ(readHost("c/one.dat"), "1") << "a refused create truncates nothing";
  EXPECT_EQ(bosFileClose(only), ZU_OK);
  const int shared = open("ONE.DAT", 0);
  EXPECT_EQ(open("ONE.DAT", ZU_OPEN_EXCLUSIVE), 0);
  EXPECT_EQ(onlyError(), "30040 Cannot open file 'ONE.DAT'.");
  EXPECT_EQ(bosFileClose(shared), ZU_OK);
}

TEST_F(Files, SearchPathTriesEachDirectoryInBothListForms) {
  ASSERT_EQ(mkdir(host("d/bin").c_str(), 0700), 0);
  writeHost("d/bin/tool.cfg", "found");
  setVariable("PATH", nullptr);
  EXPECT_EQ(open("TOOL.CFG", ZU_OPEN_SEARCH_PATH), 0);
  EXPECT_EQ(onlyError(), "30040 Cannot open file 'TOOL.CFG'.");
  dos.open = countingOpen;
  for (const char* list : {"C:\\NOPE;D:\\BIN", "/nope:D:\\BIN\\", "C:\\NOPE:D:/bin"}) {
    setVariable("PATH", list);
    opened.clear();
    const int h = open("tool.cfg", ZU_OPEN_SEARCH_PATH);
    ASSERT_NE(h, 0) << list;
    EXPECT_EQ(opened.size(), 3u) << list;
    EXPECT_EQ(bosFileClose(h), ZU_OK);
  }
  EXPECT_EQ(opened.back(), "D:/bin\\tool.cfg") << "the name is joined as the caller gave it";
  setVariable("PATH", "C:\\NOPE;;");
  EXPECT_EQ(open("TOOL.CFG", ZU_OPEN_SEARCH_PATH | ZU_OPEN_WRITE), 0);
  EXPECT_EQ(onlyError(), "30040 Cannot open file 'TOOL.CFG'.") << "one error for all directories";
}

TEST_F(Files, TemporaryNamesAndAnotherDrive) {
  unsigned char name[256] = "ignored";
  int h = 0;
  ASSERT_EQ(bosFileOpen(name, ZU_OPEN_TEMP | ZU_OPEN_WRITE, &h), ZU_OK);
  const std::string temp = s(name);
  ASSERT_EQ(temp.size(), std::strlen("C:\\TEMP\\ZUXXXX.TMP"));
  EXPECT_EQ(temp.substr(0, 10), "C:\\TEMP\\ZU");
  EXPECT_EQ(temp.substr(14), ".TMP");
  EXPECT_EQ(bosFileWrite(h, -1, "t", 1), ZU_OK);
  EXPECT_EQ(bosFileClose(h), ZU_OK);
  EXPECT_EQ(bosexist(name), 1);
  EXPECT_EQ(bosFileDelete(name), ZU_OK);

  ASSERT_EQ(bosFileOpen(name, ZU_OPEN_TEMP_OTHER_DRIVE | ZU_OPEN_WRITE, &h), ZU_OK);
  EXPECT_EQ(s(name).substr(0, 5), "D:\\ZU");
  EXPECT_TRUE(hostNames("c/TEMP").empty()) << "the first temporary file is gone";
  EXPECT_EQ(bosFileClose(h), ZU_OK);
  EXPECT_EQ(hostNames("d").size(), 1u);
  EXPECT_TRUE(takeErrors().empty());
}

TEST_F(Files, WritesGoOutInChunksOf65534) {
  dos.write = recordingWrite;
  const int h = open("BIG.DAT", ZU_OPEN_CREATE);
  ASSERT_NE(h, 0);
  const std::vector<std::pair<std::uint32_t, std::vector<std::uint32_t>>> cases = {
      {0, {}}, {65534, {65534}}, {65535, {65534, 1}}, {65536, {65534, 2}}};
  for (const auto& [size, expected] : cases) {
    std::string data(size, '\0');
    for (std::uint32_t i = 0; i < size; ++i) data[i] = static_cast<char>(i * 7 + size);
    chunks.clear();
    ASSERT_EQ(bosFileWrite(h, 0, data.data(), size), ZU_OK);
    EXPECT_EQ(chunks, expected) << size;
    std::string back(size + 1, '\0');
    std::uint32_t got = 0;
    ASSERT_EQ(bosFileRead(h, 0, back.data(), size + 1, &got), ZU_OK);
    EXPECT_EQ(got, size);
    if (size != 0) {
      EXPECT_EQ(back.substr(0, size), data);
    }
  }
  EXPECT_EQ(bosFileClose(h), ZU_OK);
}

// The handle keeps its own position: a read or a write at a place is one
// positioned call, a seek none, and the position moves past what moved.
TEST_F(Files, TransfersAtAPlaceCostOneCallEach) {
  const int h = open("AT.DAT", ZU_OPEN_CREATE);
  ASSERT_NE(h, 0);
  std::uint32_t calls = 0;
  const auto countCalls = [&](const std::function<void()>& work) {
    for (unsigned c = 0; c < zu::platform::kHostCallCount; ++c) zu::platform::hostFail(static_cast<HostCall>(c), 0, 0);
    work();
    calls = 0;
    for (unsigned c = 0; c < zu::platform::kHostCallCount; ++c) {
      const auto call = static_cast<HostCall>(c);
      // The table's own lock is taken in user space when nobody waits.
      if (call == HostCall::pthread_mutex_lock || call == HostCall::pthread_mutex_unlock) continue;
      calls += zu::platform::hostCalls(call);
    }
    zu::platform::hostRestoreAll();
  };
  countCalls([&] { EXPECT_EQ(bosFileWrite(h, 100, "0123456789", 10), ZU_OK); });
  EXPECT_EQ(calls, 1u);
  char buffer[4] = {};
  std::uint32_t got = 0;
  countCalls([&] { EXPECT_EQ(bosFileRead(h, 104, buffer, 3, &got), ZU_OK); });
  EXPECT_EQ(calls, 1u);
  EXPECT_EQ(std::string(buffer, got), "456");
  countCalls([&] { EXPECT_EQ(bosFileSeek(h, -2, 1), 105u); });
  EXPECT_EQ(calls, 0u);
  EXPECT_EQ(bosFileRead(h, -1, buffer, 4, &got), ZU_OK);
  EXPECT_EQ(std::string(buffer, got), "5678");
  EXPECT_EQ(bosFileSeek(h, 0, 2), 110u);
  EXPECT_EQ(bosFileSeek(h, -111, 2), 0xFFFFFFFFu);
  EXPECT_EQ(readHost("c/AT.DAT"), std::string(100, '\0') + "0123456789");
  EXPECT_EQ(bosFileClose(h), ZU_OK);
}

TEST_F(Files, FullDiskShortWritesAndFailedReadsGiveTheirRows) {
  const int h = open("FULL.DAT", ZU_OPEN_CREATE);
  ASSERT_NE(h, 0);
  const std::string data(65536, 'x');
  zu::platform::hostFail(HostCall::pwrite, 2, ENOSPC);
  EXPECT_EQ(bosFileWrite(h, 0, data.data(), 65536), ZU_ERROR);
  EXPECT_EQ(onlyError(), "1506 Insufficient disk space.");
  EXPECT_EQ(readHost("c/FULL.DAT").size(), 65534u) << "the first chunk went out";
  dos.write = halfWrite;
  EXPECT_EQ(bosFileWrite(h, 0, data.data(), 100), ZU_ERROR);
  EXPECT_EQ(onlyError(), "30041 Error on input or output to a file.");
  dos = zu::platform::kDefaultDosCalls;
  char buffer[8];
  std::uint32_t got = 99;
  zu::platform::hostFail(HostCall::pread, 1, EIO);
  EXPECT_EQ(bosFileRead(h, 0, buffer, sizeof buffer, &got), ZU_ERROR);
  EXPECT_EQ(onlyError(), "30041 Error on input or output to a file.");
  EXPECT_EQ(bosFileRead(h, 0, buffer, sizeof buffer, &got), ZU_OK) << "only the first read fails";
  zu::platform::hostFail(HostCall::open, 1, EMFILE);
  EXPECT_EQ(open("FULL.DAT", 0), 0);
  EXPECT_EQ(onlyError(), "30040 Cannot open file 'FULL.DAT'.");
  EXPECT_EQ(bosFileClose(h), ZU_OK);
}

TEST_F(Files, RegionLocksTakenByOneHandleAreRefusedToAnother) {
  writeHost("c/lock.dat", std::string(100, 'l'));
  const int first = open("LOCK.DAT", ZU_OPEN_WRITE);
  const int second = open("LOCK.DAT", ZU_OPEN_WRITE);
  ASSERT_TRUE(first != 0 && second != 0 && first != second);
  EXPECT_EQ(bosRegionLock(0, 0, 0, 10), ZU_OK);
  ASSERT_EQ(bosRegionLock(first, 0, 10, 20), ZU_OK);
  EXPECT_EQ(bosFileSeek(first, 0, 1), 10u) << "the file stays at the region";
  const std::string locked = "1512 Whole or part of the region has already been locked.";
  // Which overlaps are refused is the DOS view's test; here, the rows.
  EXPECT_EQ(bosRegionLock(second, 0, 29, 5), ZU_ERROR);
  EXPECT_EQ(onlyError(), locked);
  EXPECT_EQ(bosRegionLock(first, 1, 10, 19), ZU_ERROR) << "an unlock names the exact region";
  EXPECT_EQ(onlyError(), locked);
  char buffer[8];
  std::uint32_t got = 0;
  EXPECT_EQ(bosFileRead(second, 25, buffer, 8, &got), ZU_ERROR);
  EXPECT_EQ(onlyError(), "1508 Access to file denied ''.");
  EXPECT_EQ(bosFileWrite(second, 8, "wwwww", 5), ZU_ERROR);
  EXPECT_EQ(onlyError(), "1508 Access to file denied ''.");

  // Another process (a descriptor of its own) meets the lock too.
  const int fd = ::open(host("c/lock.dat").c_str(), O_RDWR | O_CLOEXEC);
  struct flock probe = {};
  probe.l_type = F_WRLCK;
  probe.l_whence = SEEK_SET;
  probe.l_start = 15;
  probe.l_len = 1;
  EXPECT_EQ(fcntl(fd, F_OFD_SETLK, &probe), -1);
  ::close(fd);

  zu::platform::hostFail(HostCall::fcntl, 1, EAGAIN);
  EXPECT_EQ(bosRegionLock(first, 0, 90, 1), ZU_ERROR);
  EXPECT_EQ(onlyError(), locked);
  EXPECT_EQ(bosRegionLock(first, 1, 10, 20), ZU_OK);
  EXPECT_EQ(bosRegionLock(second, 0, 10, 20), ZU_OK);
  for (int h : {first, second}) EXPECT_EQ(bosFileClose(h), ZU_OK);
  const int again = open("LOCK.DAT", ZU_OPEN_WRITE);
  EXPECT_EQ(bosRegionLock(again, 0, 10, 20), ZU_OK) << "closing a handle releases its regions";
  EXPECT_EQ(bosFileClose(again), ZU_OK);
}

TEST_F(Files, DeleteAndRenameFailures) {
  writeHost("c/keep.txt", "k");
  writeHost("c/other.txt", "o");
  EXPECT_EQ(bosFileDelete(u("GHOST.TXT")), ZU_OK) << "nothing there counts as deleted";
  const int h = open("KEEP.TXT", 0);
  EXPECT_EQ(bosFileDelete(u("keep.txt")), ZU_ERROR) << "open files are not shared for deleting";
  EXPECT_EQ(onlyError(), "1502 Cannot delete file: 'keep.txt'.");
  EXPECT_EQ(bosrname(u("KEEP.TXT"), u("MOVED.TXT")), ZU_ERROR);
  EXPECT_EQ(onlyError(), "30042 Cannot rename 'KEEP.TXT' to 'MOVED.TXT'.");
  EXPECT_EQ(bosFileClose(h), ZU_OK);
  EXPECT_EQ(bosFileDelete(u("TEMP")), ZU_ERROR);
  EXPECT_EQ(onlyError(), "1502 Cannot delete file: 'TEMP'.");
  chmod(host("c/other.txt").c_str(), 0444);
  EXPECT_EQ(bosFileDelete(u("OTHER.TXT")), ZU_ERROR);
  EXPECT_EQ(onlyError(), "1502 Cannot delete file: 'OTHER.TXT'.");

  for (const auto& [from, to] : std::vector<std::pair<const char*, const char*>>{
           {"GHOST.TXT", "X.TXT"}, {"KEEP.TXT", "OTHER.TXT"}, {"KEEP.TXT", "NODIR\\X.TXT"}}) {
    EXPECT_EQ(bosrname(u(from), u(to)), ZU_ERROR);
    EXPECT_EQ(onlyError(), std::string("30042 Cannot rename '") + from + "' to '" + to + "'.");
  }
  EXPECT_EQ(bosrname(u("keep.txt"), u("D:\\Kept.Txt")), ZU_OK);
  EXPECT_EQ(hostNames("d"), std::vector<std::string>{"KEPT.TXT"}) << "names reach the system upper-cased";
  EXPECT_EQ(bosFileDelete(u("d:\\kept.txt")), ZU_OK);
  EXPECT_TRUE(hostNames("d").empty());
}

TEST_F(Files, AttributesAndTheHandleTableLimit) {
  writeHost("c/plain.txt", "p");
  writeHost("c/fixed.txt", "f");
  chmod(host("c/fixed.txt").c_str(), 0444);
  EXPECT_EQ(bosfattr(u("..")), ZU_ATTR_DIRECTORY);
  EXPECT_EQ(bosfattr(u("q:x")), ZU_ATTR_DIRECTORY) << "a hard drive's root, not asked";
  EXPECT_EQ(bosfattr(u("A:\\")), 0) << "a floppy's root is asked, and A is not mapped";
  EXPECT_EQ(bosfattr(u("TEMP")), ZU_ATTR_DIRECTORY);
  EXPECT_EQ(bosexist(u("temp")), 0);
  EXPECT_EQ(bosfattr(u("Plain.TXT")), ZU_ATTR_FILE);
  EXPECT_EQ(bosfattr(u("FIXED.TXT")), ZU_ATTR_FILE | ZU_ATTR_READONLY);
  EXPECT_EQ(bosexist(u("FIXED.TXT")), 1);
  EXPECT_EQ(bosfattr(u("NONE.TXT")), 0);
  EXPECT_EQ(bosftest(u("\x01 anything")), 1);

  std::vector<int> handles;
  for (int h; (h = open("PLAIN.TXT", 0)) != 0;) handles.push_back(h);
  EXPECT_EQ(handles.size(), 255u) << "handles 1 to 255; 0 is never a file";
  EXPECT_EQ(onlyError(), "30040 Cannot open file 'PLAIN.TXT'.");
  for (int h : handles) EXPECT_EQ(bosFileClose(h), ZU_OK);
}

}  // namespace

// Paths as text: splitting, completing, relativising, the current
// directory, and lines of a text, at their edges and limits.
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "os/file.h"
#include "os/path.h"
#include "support/dos_world.h"

namespace {

using zutest::s;
using zutest::u;

class Paths : public zutest::DosWorld {
 protected:
  void SetUp() override {
    DosWorld::SetUp();
    ASSERT_EQ(mkdir(host("c/A").c_str(), 0700), 0);
    ASSERT_EQ(bosstcwd(u("C:\\A"), 0), ZU_OK);
  }
  std::string full(const std::string& path) {
    unsigned char buffer[256];
    std::strcpy(reinterpret_cast<char*>(buffer), path.c_str());
    bosfpath(buffer);
    return s(buffer);
  }
  std::string relative(const char* path) {
    unsigned char buffer[256];
    std::strcpy(reinterpret_cast<char*>(buffer), path);
    bosmpath(buffer);
    return s(buffer);
  }
  std::string built(const char* directory, const char* name, const char* extension) {
    unsigned char result[256];
    bospath(result, directory != nullptr ? u(directory) : nullptr, u(name),
            extension != nullptr ? u(extension) : nullptr);
    return s(result);
  }
};

TEST_F(Paths, SplitCutsBaseAndExtension) {
  struct Case {
    const char *path, *dir, *name, *extension;
  } cases[] = {{"C:\\DIR\\FILE.TXT", "C:\\DIR\\", "FILE", "TXT"},
               {"C:FILE", "C:", "FILE", ""},
               {"ABCDEFGHIJ.LONG", "", "ABCDEFGH", "LON"},
               {"A.B.C", "", "A", "B.C"},
               {"X\\.PROFILE", "X\\", "", "PRO"}};
  for (const Case& c : cases) {
    unsigned char path[256], name[9], extension[4];
    std::strcpy(reinterpret_cast<char*>(path), c.path);
    std::memset(name, '#', sizeof name);
    bospname(path, name, extension);
    EXPECT_EQ(s(path), c.dir);
    EXPECT_EQ(s(name), c.name);
    EXPECT_EQ(s(extension), c.extension);
  }
}

TEST_F(Paths, CompleteAgainstTheCurrentDirectory) {
  EXPECT_EQ(full("\\\\server\\share\\a.txt"), "\\\\SERVER\\SHARE\\A.TXT");
  EXPECT_EQ(full("abc:def"), "ABC:DEF");
  EXPECT_EQ(full("\\x"), "C:\\X");
  EXPECT_EQ(full("D:x"), "C:\\A\\X") << "a drive in a relative path selects nothing";
  EXPECT_EQ(full("d:\\a\\b\\..\\c"), "D:\\A\\C");
  EXPECT_EQ(full("C:\\..\\X"), "C:\\..\\X");
  EXPECT_EQ(full("C:\\A\\..\\..\\X"), "C:\\..\\X");
  EXPECT_EQ(full("C:\\A\\.\\B\\.."), "C:\\A\\.\\B\\..") << "'.' and a final '\\..' stay";
  EXPECT_EQ(full(""), "C:\\A\\");
  const std::string longTail(300, 'n');
  const std::string cut = full(longTail.substr(0, 255));
  EXPECT_EQ(cut.size(), 254u);
  EXPECT_EQ(cut, "C:\\A\\" + std::string(249, 'N'));
  EXPECT_EQ(full("\\" + std::string(254, 'r')).size(), 254u);

  EXPECT_EQ(built("D:\\X", "FILE.", "TXT"), "D:\\X\\FILE.TXT") << "the dot goes first";
  EXPECT_EQ(built(nullptr, "..", "TXT"), "C:\\A\\..");
  EXPECT_EQ(built("D:\\X\\", "dir\\file", "txt"), "C:\\A\\DIR\\FILE.TXT");
  EXPECT_EQ(built("D:\\X", "e:name \t ", nullptr), "C:\\A\\NAME");
  EXPECT_EQ(built("", "f.c", "h"), "C:\\F.C");
}

TEST_F(Paths, RelativeCutsWhatTheCurrentDirectoryShares) {
  EXPECT_EQ(relative("C:\\A\\B.TXT"), "B.TXT");
  EXPECT_EQ(relative("C:\\A\\SUB\\B.TXT"), "SUB\\B.TXT");
  EXPECT_EQ(relative("C:\\X\\B.TXT"), "\\X\\B.TXT");
  EXPECT_EQ(relative("D:\\B.TXT"), "D:\\B.TXT");
  EXPECT_EQ(relative("C:\\a\\B.TXT"), "\\a\\B.TXT") << "the comparison is exact";
}

TEST_F(Paths, CurrentDirectoryIsTheHostsAndIgnoresMissingOnes) {
  unsigned char buffer[256];
  ASSERT_EQ(mkdir(host("c/A/Sub").c_str(), 0700), 0);
  EXPECT_EQ(bosstcwd(u("sub"), 0), ZU_OK);
  bosgtcwd(buffer, 0);
  EXPECT_EQ(s(buffer), "C:\\A\\Sub") << "the host's own name";
  for (const char* ignored : {"", "C:\\NOWHERE", "Q:\\"}) {
    EXPECT_EQ(bosstcwd(u(ignored), 7), ZU_OK);
    bosgtcwd(buffer, 1);
    EXPECT_EQ(s(buffer), "C:\\A\\Sub\\");
  }
  EXPECT_EQ(bosstcwd(u("d:/"), 0), ZU_OK);
  bosgtcwd(buffer, 1);
  EXPECT_EQ(s(buffer), "D:\\");
}

TEST_F(Paths, TheCurrentDirectoryIsTheProcesssOwn) {
  ASSERT_EQ(mkdir(host("c/Work").c_str(), 0700), 0);
  writeHost("c/Work/data.txt", "w");
  unsigned char buffer[256];
  auto current = [&] {
    bosgtcwd(buffer, 0);
    return s(buffer);
  };
  auto opens = [](const char* given, std::uint32_t flags) {
    unsigned char name[256];
    std::strcpy(reinterpret_cast<char*>(name), given);
    int h = 0;
    const bool opened = bosFileOpen(name, flags, &h) == ZU_OK;
    if (opened) bosFileClose(h);
    return opened;
  };
  char cwd[4096];
  ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
  EXPECT_EQ(std::string(cwd), host("c/A")) << "bosstcwd moved the host's directory";

  ASSERT_EQ(chdir(host("c/Work").c_str()), 0);  // the client moves by itself
  EXPECT_EQ(current(), "C:\\Work");
  EXPECT_TRUE(opens("DATA.TXT", 0)) << "relative names follow at once";
  EXPECT_EQ(full("data.txt"), "C:\\WORK\\DATA.TXT");

  ASSERT_EQ(bosstcwd(u("D:\\"), 0), ZU_OK);
  ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
  EXPECT_EQ(std::string(cwd), host("d"));
  EXPECT_FALSE(opens("DATA.TXT", 0));

  // A directory removed under the process, or one that no drive reaches,
  // gives the root of the first drive.
  ASSERT_EQ(mkdir(host("d/Gone").c_str(), 0700), 0);
  ASSERT_EQ(bosstcwd(u("GONE"), 0), ZU_OK);
  EXPECT_EQ(current(), "D:\\Gone");
  ASSERT_EQ(rmdir(host("d/Gone").c_str()), 0);
  EXPECT_EQ(current(), "C:\\");
  EXPECT_TRUE(opens("NEW.TXT", ZU_OPEN_CREATE));
  EXPECT_TRUE(hostExists("c/NEW.TXT"));
  ASSERT_EQ(chdir("/"), 0);
  EXPECT_EQ(current(), "C:\\");
}

TEST_F(Paths, LinesOfATextWithQuotesCommentsAndLimits) {
  const unsigned char* text = u("one\r\n'a\nb' \"x'y'\nz\"\n;comment 'q\nlast\r");
  unsigned short offset = 0;
  unsigned char line[64];
  short result = 0;
  const char* expected[] = {"one", "'a\nb' \"x'y'\nz\"", ";", "last\r"};
  for (const char* want : expected) {
    bosgetbl(text, &offset, line, 63, &result);
    EXPECT_EQ(result, static_cast<short>(std::strlen(want)));
    EXPECT_EQ(s(line), want);
  }
  bosgetbl(text, &offset, line, 63, &result);
  EXPECT_EQ(result, -1);

  const unsigned char* exact = u("12345\nabcdef\n\x1Arest");
  offset = 0;
  bosgetbl(exact, &offset, line, 5, &result);
  EXPECT_EQ(result, 5);
  EXPECT_EQ(offset, 6);
  bosgetbl(exact, &offset, line, 5, &result);
  EXPECT_EQ(result, -2);
  EXPECT_EQ(s(line), "abcde");
  EXPECT_EQ(offset, 6) << "a line too long leaves the offset";
  offset = 13;
  bosgetbl(exact, &offset, line, 5, &result);
  EXPECT_EQ(result, -1) << "Ctrl-Z ends the text";
}

}  // namespace

#include "support/dos_world.h"

#include <dirent.h>
#include <ftw.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>

#include "errors/keeper.h"
#include "os/path.h"
#include "platform/dos_impl.h"
#include "platform/dos_view.h"
#include "platform/host.h"

namespace zutest {
namespace {
constexpr const char* kUnset = "\1";

int removeEntry(const char* path, const struct stat*, int, struct FTW*) {
  chmod(path, 0700);
  return remove(path);
}
}  // namespace

int openDescriptors() {
  DIR* dir = opendir("/proc/self/fd");
  if (dir == nullptr) return -1;
  int count = 0;
  while (readdir(dir) != nullptr) ++count;
  closedir(dir);
  return count;
}

void DosWorld::SetUp() {
  // The DOS current directory is the process's: the tests move it, so it is
  // put back at the end.
  char cwd[4096];
  ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
  cwd_ = cwd;
  char pattern[] = "/tmp/zuos.XXXXXX";
  ASSERT_NE(mkdtemp(pattern), nullptr);
  root_ = pattern;
  for (const char* d : {"c", "d", "c/TEMP"}) ASSERT_EQ(mkdir(host(d).c_str(), 0700), 0);
  setVariable(zu::platform::view::kDriveVariable, ("C=" + host("c") + ";D=" + host("d")).c_str());
  setVariable(zu::platform::view::kTempVariable, host("c/TEMP").c_str());
  bosstcwd(u("C:\\"), 0);
  ZuErrorKeeper::setErrorList(&list_);
  descriptors_ = openDescriptors();
}

void DosWorld::TearDown() {
  zu::platform::hostRestoreAll();
  EXPECT_EQ(chdir(cwd_.c_str()), 0);
  zu::platform::dos = zu::platform::kDefaultDosCalls;
  ZuErrorKeeper::giveUpErrorList();
  EXPECT_EQ(zu::platform::files::openHandleCount(), 0) << "a handle was left open";
  EXPECT_EQ(openDescriptors(), descriptors_) << "a descriptor leaked";
  for (auto it = saved_.rbegin(); it != saved_.rend(); ++it) {
    if (it->second == kUnset) {
      unsetenv(it->first.c_str());
    } else {
      setenv(it->first.c_str(), it->second.c_str(), 1);
    }
  }
  zu::platform::view::reset();
  nftw(root_.c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS);
}

void DosWorld::setVariable(const char* name, const char* value) {
  const char* old = getenv(name);
  saved_.emplace_back(name, old != nullptr ? old : kUnset);
  if (value != nullptr) {
    setenv(name, value, 1);
  } else {
    unsetenv(name);
  }
  zu::platform::view::reset();
}

void DosWorld::writeHost(const std::string& relative, const std::string& content) const {
  std::ofstream(host(relative), std::ios::binary) << content;
}

std::string DosWorld::readHost(const std::string& relative) const {
  std::ostringstream all;
  all << std::ifstream(host(relative), std::ios::binary).rdbuf();
  return all.str();
}

bool DosWorld::hostExists(const std::string& relative) const {
  struct stat info;
  return lstat(host(relative).c_str(), &info) == 0;
}

std::vector<std::string> DosWorld::hostNames(const std::string& relative) const {
  std::vector<std::string> names;
  if (DIR* dir = opendir(host(relative).c_str())) {
    while (struct dirent* e = readdir(dir)) {
      if (std::string(e->d_name) != "." && std::string(e->d_name) != "..") names.push_back(e->d_name);
    }
    closedir(dir);
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::pair<unsigned short, std::string>> DosWorld::takeErrors() {
  std::vector<std::pair<unsigned short, std::string>> all;
  while (ZuError* e = list_.removeFirstError()) {
    all.emplace_back(e->getNumber(), s(e->text.getCString()));
    if (e->isStatic() == 0) delete e;
  }
  return all;
}

std::string DosWorld::onlyError() {
  const auto all = takeErrors();
  return all.size() == 1 ? std::to_string(all[0].first) + " " + all[0].second : "";
}

}  // namespace zutest

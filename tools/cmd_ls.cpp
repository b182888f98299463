// zu ls DOSPATTERN: the names a directory walk finds, as the library walks
// (* and ?, without regard to case; "." and ".." come back like any name).
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <zuutl.h>

#include "command.h"
#include "error_scope.h"

namespace zutool {
namespace {

constexpr std::size_t kPathBuffer = 256;

// Every name of a walk, in the order found.
bool walk(const std::string& pattern, std::vector<std::string>* names, std::string* refusal) {
  ErrorScope errors;
  unsigned char name[kPathBuffer];
  std::memcpy(name, pattern.c_str(), pattern.size() + 1);
  unsigned char* context = nullptr;
  do {
    if (bosFindFiles(&context, name) != ZU_OK) {
      *refusal = errors.take();
      return false;
    }
    if (context != nullptr) names->push_back(reinterpret_cast<char*>(name));
  } while (context != nullptr);
  return true;
}

int runLs(const std::vector<std::string>& args) {
  if (args.size() != 1) return usageError("ls needs one DOS pattern, such as C:\\TMP\\*.*");
  if (args[0].size() >= kPathBuffer) return usageError("patterns have at most 255 characters");
  std::vector<std::string> names;
  std::string refusal;
  if (!walk(args[0], &names, &refusal)) {
    std::fprintf(stderr, "zu: %s\n", refusal.c_str());
    return kExitNo;
  }
  for (const std::string& n : names) std::printf("%s\n", n.c_str());
  return names.empty() ? kExitNo : kExitOk;
}

void demoFiles() {
  std::printf("== Files in the temporary directory\n");
  ErrorScope errors;
  unsigned char refused[kPathBuffer] = "LONG NAME.TEXT";
  int handle = 0;
  bosFileOpen(refused, ZU_OPEN_CREATE, &handle);
  std::printf("create \"LONG NAME.TEXT\": %s\n", errors.take().c_str());
  unsigned char reserved[kPathBuffer] = "c:\\dir\\con.txt";
  bosFileOpen(reserved, 0, &handle);
  std::printf("open c:\\dir\\con.txt: %s\n", errors.take().c_str());

  unsigned char name[kPathBuffer] = "";
  if (bosFileOpen(name, ZU_OPEN_TEMP | ZU_OPEN_WRITE, &handle) != ZU_OK) {
    std::printf("no temporary file: %s\n", errors.take().c_str());
    return;
  }
  std::printf("temporary file: %s\n", reinterpret_cast<char*>(name));
  const std::string big(70000, 'z');
  bosFileWrite(handle, 0, big.data(), static_cast<std::uint32_t>(big.size()));
  std::printf("wrote 70000 bytes in chunks of at most 65534; the file ends at %u\n",
              static_cast<unsigned>(bosFileSeek(handle, 0, 2)));
  int second = 0;
  bosFileOpen(name, ZU_OPEN_WRITE, &second);
  bosRegionLock(handle, 0, 100, 50);
  bosRegionLock(second, 0, 120, 10);
  std::printf("lock 100-149 with one handle, then 120-129 with another: %s\n", errors.take().c_str());
  char buffer[16];
  std::uint32_t got = 0;
  bosFileRead(second, 110, buffer, sizeof buffer, &got);
  std::printf("read 110-125 through the other handle: %s\n", errors.take().c_str());
  bosRegionLock(handle, 1, 100, 50);
  bosFileRead(second, 110, buffer, sizeof buffer, &got);
  std::printf("after the unlock the read gives %u bytes\n", static_cast<unsigned>(got));
  bosFileDelete(name);
  std::printf("delete while open: %s\n", errors.take().c_str());
  bosFileClose(second);
  bosFileClose(handle);
  std::vector<std::string> names;
  std::string pattern = reinterpret_cast<char*>(name);
  pattern.replace(pattern.rfind('\\') + 1, std::string::npos, "zu*.tmp");
  std::string refusal;
  walk(pattern, &names, &refusal);
  const std::string file = reinterpret_cast<char*>(name);
  const std::string wanted = file.substr(file.rfind('\\') + 1);
  bool listed = false;
  for (const std::string& n : names) {
    listed |= strCompareCi(reinterpret_cast<const unsigned char*>(n.c_str()),
                           reinterpret_cast<const unsigned char*>(wanted.c_str())) == 0;
  }
  std::printf("ls %s lists it: %s\n", pattern.c_str(), listed ? "yes" : "no");
  bosFileDelete(name);
  std::printf("deleted after closing: %s\n", bosexist(name) == 0 ? "yes" : "no");
}

Registration ls({"ls", "DOSPATTERN", "list the names a DOS pattern (* and ?) finds; exit 1 if none", runLs,
                 demoFiles, 62});

}  // namespace
}  // namespace zutool

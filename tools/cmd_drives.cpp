// zu drives: the DOS view in force, drive letters and the host directories
// behind them, with the current and temporary directories.
#include <cstdio>
#include <string>
#include <vector>

#include <zuutl.h>

#include "command.h"
#include "platform/dos.h"
#include "platform/dos_view.h"

namespace zutool {
namespace {

constexpr std::size_t kPathBuffer = 256;

void showDrives() {
  unsigned char name[kPathBuffer];
  void* walk = nullptr;
  const int tempDrive = zu::platform::view::tempDrive();
  do {
    if (bosGetFileSystems(&walk, name) != ZU_OK) return;
    if (walk == nullptr) break;
    const int index = name[0] - 'a';
    char root[zu::platform::view::kHostPathSize];
    if (!zu::platform::view::driveRoot(index, root, sizeof root)) continue;
    std::printf("%c: %s%s\n", 'A' + index, root, index == tempDrive ? "  (for the temporary directory)" : "");
  } while (walk != nullptr);
  unsigned char directory[kPathBuffer];
  bosgtcwd(directory, 0);
  std::printf("current directory: %s\n", reinterpret_cast<char*>(directory));
  zu::platform::dos.tempDirectory(directory, sizeof directory);
  std::printf("temporary directory: %s\n", reinterpret_cast<char*>(directory));
}

int runDrives(const std::vector<std::string>& args) {
  if (!args.empty()) return usageError("drives takes no arguments");
  showDrives();
  return kExitOk;
}

void demoDrives() {
  std::printf("== Drives (map others with %s, e.g. D=/srv/data;E=/mnt/e)\n",
              zu::platform::view::kDriveVariable);
  showDrives();
}

Registration drives({"drives", "", "the drive letters in force and the host directories behind them",
                     runDrives, demoDrives, 61});

}  // namespace
}  // namespace zutool

// zu path OP ARGS: the library's path operations on DOS names.
//   split PATH               directory, base name and extension
//   join DIR NAME [EXT]      a full path from a name and defaults ("-": none)
//   complete PATH            the full, upper-case path
//   relative PATH            what is left after the current directory
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <zuutl.h>

#include "command.h"

namespace zutool {
namespace {

// The caller's buffers of the path functions: 255 characters and a NUL,
// a base name of 8 and an extension of 3.
constexpr std::size_t kPathBuffer = 256;
constexpr std::size_t kNameBuffer = 9;
constexpr std::size_t kExtensionBuffer = 4;
constexpr const char* kNone = "-";

struct PathBuffer {
  unsigned char bytes[kPathBuffer] = {};
  explicit PathBuffer(const std::string& text) { std::memcpy(bytes, text.c_str(), text.size() + 1); }
  const char* text() const { return reinterpret_cast<const char*>(bytes); }
};

const unsigned char* orNull(const std::string& given) {
  return given == kNone ? nullptr : reinterpret_cast<const unsigned char*>(given.c_str());
}

void printSplit(const char* label, const std::string& given) {
  PathBuffer path(given);
  unsigned char name[kNameBuffer], extension[kExtensionBuffer];
  bospname(path.bytes, name, extension);
  std::printf("%sdirectory '%s', name '%s', extension '%s'\n", label, path.text(),
              reinterpret_cast<char*>(name), reinterpret_cast<char*>(extension));
}

std::string joined(const std::string& directory, const std::string& name, const std::string& extension) {
  PathBuffer result("");
  bospath(result.bytes, orNull(directory), reinterpret_cast<const unsigned char*>(name.c_str()),
          orNull(extension));
  return result.text();
}

std::string completed(const std::string& given) {
  PathBuffer path(given);
  bosfpath(path.bytes);
  return path.text();
}

std::string relativised(const std::string& given) {
  PathBuffer path(given);
  bosmpath(path.bytes);
  return path.text();
}

int runPath(const std::vector<std::string>& args) {
  if (args.empty()) return usageError("path needs an operation: split, join, complete or relative");
  for (const std::string& arg : args) {
    if (arg.size() >= kPathBuffer) return usageError("paths have at most 255 characters");
  }
  const std::string& op = args[0];
  const std::size_t operands = args.size() - 1;
  if (op == "split" && operands == 1) {
    printSplit("", args[1]);
  } else if (op == "join" && (operands == 2 || operands == 3)) {
    std::printf("%s\n", joined(args[1], args[2], operands == 3 ? args[3] : kNone).c_str());
  } else if (op == "complete" && operands == 1) {
    std::printf("%s\n", completed(args[1]).c_str());
  } else if (op == "relative" && operands == 1) {
    std::printf("%s\n", relativised(args[1]).c_str());
  } else {
    return usageError("path split PATH | join DIR NAME [EXT] | complete PATH | relative PATH");
  }
  return kExitOk;
}

void demoPaths() {
  std::printf("== DOS paths\n");
  unsigned char cwd[kPathBuffer];
  bosgtcwd(cwd, 1);
  std::printf("current directory, with its backslash: %s\n", reinterpret_cast<char*>(cwd));
  printSplit("split C:\\DIR\\FILE.TXT: ", "C:\\DIR\\FILE.TXT");
  printSplit("split ABCDEFGHIJ.LONG (cut to 8.3): ", "ABCDEFGHIJ.LONG");
  std::printf("join D:\\DATA + report. + TXT: %s\n", joined("D:\\DATA", "report.", "TXT").c_str());
  std::printf("join D:\\DATA + sub\\notes + TXT (own directory): %s\n",
              joined("D:\\DATA", "sub\\notes", "TXT").c_str());
  std::printf("complete c:\\a\\b\\..\\c: %s\n", completed("c:\\a\\b\\..\\c").c_str());
  std::printf("complete \\\\server\\share\\x (network, only upper-cased): %s\n",
              completed("\\\\server\\share\\x").c_str());
  const std::string here = completed("sub\\file.txt");
  std::printf("complete sub\\file.txt: %s\n", here.c_str());
  std::printf("relative of that (exact bytes, and the current directory keeps its case): %s\n",
              relativised(here).c_str());
}

Registration path({"path", "split|join|complete|relative ARGS",
                   "split, join, complete or relativise DOS paths as the library does", runPath,
                   demoPaths, 60});

}  // namespace
}  // namespace zutool

// zu: a command-line window onto the library.
#include <algorithm>
#include <charconv>
#include <cstdio>
#include <string>
#include <vector>

#include "command.h"

namespace zutool {

namespace {
std::vector<Command>& registry() {
  static std::vector<Command> all;
  return all;
}

constexpr const char* kVersion = "4.0.0";

void printHelp() {
  std::printf("usage: zu COMMAND [ARGS]\n\n");
  std::printf("  %-34s %s\n", "--help", "show this help");
  std::printf("  %-34s %s\n", "--version", "show the library version");
  std::printf("  %-34s %s\n", "demo", "a short tour of what the library can do");
  std::vector<Command> sorted = registry();
  std::sort(sorted.begin(), sorted.end(),
            [](const Command& a, const Command& b) { return std::string(a.name) < b.name; });
  for (const Command& c : sorted) {
    if (c.run == nullptr) continue;
    std::string line = std::string(c.name) + (c.usage[0] != '\0' ? " " : "") + c.usage;
    std::printf("  %-34s %s\n", line.c_str(), c.summary);
  }
}

int runDemo() {
  std::vector<Command> sorted = registry();
  std::sort(sorted.begin(), sorted.end(),
            [](const Command& a, const Command& b) { return a.demoOrder < b.demoOrder; });
  std::printf("zuutl04 %s: a tour\n", kVersion);
  for (const Command& c : sorted) {
    if (c.demo == nullptr) continue;
    std::printf("\n");
    c.demo();
  }
  return kExitOk;
}
}  // namespace

Registration::Registration(const Command& command) { registry().push_back(command); }

const std::vector<Command>& commands() { return registry(); }

int usageError(const std::string& message) {
  std::fprintf(stderr, "zu: %s (try 'zu --help')\n", message.c_str());
  return kExitUsage;
}

bool parseNumber(std::string_view text, std::uint64_t* value) {
  if (text.empty()) return false;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), *value);
  return error == std::errc() && end == text.data() + text.size();
}

int helpOrRun(const std::vector<std::string>& args, const char* help,
              int (*run)(const std::vector<std::string>& args)) {
  if (args.size() == 1 && (args[0] == "--help" || args[0] == "-h")) {
    std::fputs(help, stdout);
    return kExitOk;
  }
  return run(args);
}

}  // namespace zutool

int main(int argc, char** argv) {
  using namespace zutool;
  if (argc < 2) return usageError("no command given");
  std::string name = argv[1];
  std::vector<std::string> args(argv + 2, argv + argc);
  if (name == "--help" || name == "-h") {
    printHelp();
    return kExitOk;
  }
  if (name == "--version") {
    std::printf("zu (zuutl04) %s\n", kVersion);
    return kExitOk;
  }
  if (name == "demo") {
    if (!args.empty()) return usageError("demo takes no arguments");
    return runDemo();
  }
  for (const Command& c : commands()) {
    if (c.run != nullptr && name == c.name) return c.run(args);
  }
  return usageError("unknown command '" + name + "'");
}

// The commands of the zu tool. Each file defines one command and registers
// it with a static Registration; zu.cpp dispatches and runs the demo.
#ifndef ZU_TOOL_COMMAND_H
#define ZU_TOOL_COMMAND_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zutool {

// Exit codes of the tool.
constexpr int kExitOk = 0;
constexpr int kExitNo = 1;     // a well-formed question answered "no" or "not found"
constexpr int kExitUsage = 2;  // bad arguments

struct Command {
  const char* name;
  const char* usage;  // arguments after the name, for --help
  const char* summary;
  int (*run)(const std::vector<std::string>& args);  // null: demo only
  // Part of `zu demo`, in ascending order; null when the command has none.
  void (*demo)();
  int demoOrder;
};

struct Registration {
  explicit Registration(const Command& command);
};

const std::vector<Command>& commands();

// Prints "zu: <message>" on one line to standard error; returns kExitUsage.
int usageError(const std::string& message);

// A decimal number that fills all of `text`.
bool parseNumber(std::string_view text, std::uint64_t* value);

// `help` on standard output for a lone --help or -h; else runs the command.
int helpOrRun(const std::vector<std::string>& args, const char* help,
              int (*run)(const std::vector<std::string>& args));

}  // namespace zutool

#endif

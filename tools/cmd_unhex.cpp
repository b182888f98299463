// zu unhex HEX: the bytes that hexadecimal digits stand for, written as they
// are. An odd count leaves the last digit in the high half of a byte.
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include <zuutl.h>

#include "command.h"
#include "error_scope.h"

namespace zutool {
namespace {

int runUnhex(const std::vector<std::string>& args) {
  if (args.size() != 1) return usageError("unhex needs one HEX text");
  const std::string& digits = args[0];
  std::vector<unsigned char> bytes(digits.size() / 2 + 1);
  ErrorScope errors;
  if (dehexify(bytes.data(), reinterpret_cast<const unsigned char*>(digits.data()),
               static_cast<std::uint32_t>(digits.size())) != ZU_OK) {
    std::fprintf(stderr, "zu unhex: %s\n", errors.take().c_str());
    return kExitNo;
  }
  std::fwrite(bytes.data(), 1, (digits.size() + 1) / 2, stdout);
  // Bytes go out untouched into a pipe; a person at a terminal gets a line.
  if (isatty(STDOUT_FILENO)) std::printf("\n");
  return kExitOk;
}

Registration unhex({"unhex", "HEX",
                    "the bytes that HEX (digits of either case) stands for, written as they are",
                    runUnhex, nullptr, 0});

}  // namespace
}  // namespace zutool

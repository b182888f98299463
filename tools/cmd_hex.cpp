// zu hex TEXT: the bytes of TEXT as hexadecimal digits, two per byte.
#include <cstdio>
#include <string>
#include <vector>

#include <zuutl.h>

#include "command.h"

namespace zutool {
namespace {

constexpr std::size_t kDigitsPerByte = 2;

int runHex(const std::vector<std::string>& args) {
  if (args.size() != 1) return usageError("hex needs one TEXT");
  const std::string& text = args[0];
  std::vector<unsigned char> digits(text.size() * kDigitsPerByte + 1);
  const std::uint32_t count =
      hexify(digits.data(), reinterpret_cast<const unsigned char*>(text.data()),
             static_cast<std::uint32_t>(text.size()));
  std::fwrite(digits.data(), 1, count, stdout);
  std::printf("\n");
  return kExitOk;
}

Registration hex({"hex", "TEXT", "the bytes of TEXT as upper-case hexadecimal digits", runHex,
                  nullptr, 0});

}  // namespace
}  // namespace zutool

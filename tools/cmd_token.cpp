// zu token MODE TEXT [--truncate] [--allocate] [--keep-case]: the tokens of
// TEXT as the older tokenizer cuts them in MODE (0 to 6), one a line. A
// token moved to a block of its own is marked so.
#include <zuutl.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "command.h"
#include "error_scope.h"

namespace zutool {
namespace {

constexpr std::size_t kTokenSize = 80;
constexpr std::size_t kAddressAt = 2;
constexpr unsigned kLastMode = 6;

// The token buffer a mode needs: 80 bytes, or the whole text in the modes
// without a size limit.
std::size_t bufferSize(unsigned mode, const std::string& text) {
  const bool unlimited = mode == 4 || mode == 6;
  return unlimited && text.size() + 1 > kTokenSize ? text.size() + 1 : kTokenSize;
}

int runToken(const std::vector<std::string>& args) {
  if (args.size() < 2) return usageError("token needs MODE and TEXT");
  const std::string& modeText = args[0];
  if (modeText.size() != 1 || modeText[0] < '0' || modeText[0] > static_cast<char>('0' + kLastMode)) {
    return usageError("MODE is a digit from 0 to 6");
  }
  const unsigned mode = static_cast<unsigned>(modeText[0] - '0');
  unsigned flags = mode;
  for (std::size_t i = 2; i < args.size(); ++i) {
    if (args[i] == "--truncate") {
      flags |= BUT_TOKEN_TRUNCATE;
    } else if (args[i] == "--allocate") {
      flags |= BUT_TOKEN_ALLOCATE;
    } else if (args[i] == "--keep-case") {
      flags |= BUT_TOKEN_KEEP_CASE;
    } else {
      return usageError("unknown option '" + args[i] + "'");
    }
  }
  const std::string& text = args[1];
  int exitCode = kExitOk;
  mdsPerTaskInit();
  {
    ErrorScope errors;
    std::vector<unsigned char> token(bufferSize(mode, text));
    const auto* cursor = reinterpret_cast<const unsigned char*>(text.c_str());
    for (;;) {
      // Cleared, so that a moved token shows by the address behind token[1].
      std::memset(token.data(), 0, token.size());
      if (buttoken(token.data(), &cursor, static_cast<unsigned short>(flags)) != ZU_OK) {
        std::printf("error: %s\n", errors.take().c_str());
        exitCode = kExitNo;
        break;
      }
      if (token[0] == 0) break;
      unsigned char* block = nullptr;
      if (token.size() >= kAddressAt + sizeof block) std::memcpy(&block, token.data() + kAddressAt, sizeof block);
      if (token[1] == 0 && block != nullptr) {
        std::printf("%s  (moved to a block)\n", reinterpret_cast<char*>(block));
        ramFree(block);
      } else {
        std::printf("%s\n", reinterpret_cast<char*>(token.data()));
      }
    }
  }
  mdsPerTaskTerm();
  return exitCode;
}

Registration token({"token", "MODE TEXT [--truncate] [--allocate] [--keep-case]",
                    "the tokens of TEXT as the older tokenizer cuts them in MODE 0-6, one a line",
                    runToken, nullptr, 0});

}  // namespace
}  // namespace zutool

// zu errors [ID]: the message catalogue, every row or one.
#include <cstdio>
#include <cstdint>
#include <string>
#include <vector>

#include "command.h"
#include "errors/catalogue.h"

namespace zutool {
namespace {

constexpr std::uint32_t kLargestId = 0xFFFF;
constexpr std::uint32_t kRadix = 10;

// Decimal digits only, within 16 bits.
bool parseId(const std::string& given, std::uint16_t* id) {
  if (given.empty()) return false;
  std::uint32_t value = 0;
  for (char c : given) {
    if (c < '0' || c > '9') return false;
    value = value * kRadix + static_cast<std::uint32_t>(c - '0');
    if (value > kLargestId) return false;
  }
  *id = static_cast<std::uint16_t>(value);
  return true;
}

int runErrors(const std::vector<std::string>& args) {
  if (args.empty()) {
    for (const zu::CatalogueRow& row : zu::catalogueRows()) {
      std::printf("%u\t%s\n", static_cast<unsigned>(row.id), row.text);
    }
    return kExitOk;
  }
  if (args.size() > 1) return usageError("errors takes at most one id");
  std::uint16_t id = 0;
  if (!parseId(args[0], &id)) {
    return usageError("'" + args[0] + "' is not a message id (0 to 65535)");
  }
  const char* text = zu::catalogueRow(id);
  if (text == nullptr) {
    std::fprintf(stderr, "zu: no message with id %u\n", static_cast<unsigned>(id));
    return kExitNo;
  }
  std::printf("%s\n", text);
  return kExitOk;
}

Registration errors({"errors", "[ID]", "list the message catalogue, or show the row of one id",
                     runErrors, nullptr, 0});

}  // namespace
}  // namespace zutool

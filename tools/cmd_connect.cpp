// zu connect STRING [--rebuild] [--separator C] [--name NAME]: a connect
// string as the library's parser reads it, one keyword=value a line (values
// as they stood, quotes kept), or the written-back string with --rebuild.
// A refused string prints the library's error texts and exits 1. Control
// and high bytes are shown as \xNN, so that each pair keeps to its line.
#include <zuutl.h>

#include <cstdio>
#include <string>
#include <vector>

#include "command.h"
#include "error_scope.h"

namespace zutool {
namespace {

constexpr unsigned char kDefaultSeparator = ';';
constexpr unsigned char kFirstPrintable = ' ';
constexpr unsigned char kLastPrintable = '~';

const unsigned char* bytes(const std::string& s) {
  return reinterpret_cast<const unsigned char*>(s.c_str());
}
const unsigned char* bytes(const char* s) { return reinterpret_cast<const unsigned char*>(s); }

std::string shown(const ZuSubString* view) {
  std::string out;
  for (std::uint32_t i = 0; view != nullptr && i < view->length; ++i) {
    const unsigned char c = view->bytes[i];
    if (c < kFirstPrintable || c > kLastPrintable) {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\x%02X", c);
      out += escaped;
    } else {
      out += static_cast<char>(c);
    }
  }
  return out;
}

void printTable(ZuValueParser& parser, const char* indent) {
  for (unsigned short i = 0; const ZuSubString* key = parser.getAttributeKey(i); ++i) {
    // Read through the table's own order, not by key, so marks stay as they are.
    const auto* value = static_cast<const ZuSubString*>(parser.attributes.getPtrDataAtIndex(i));
    std::printf("%s%s=%s\n", indent, shown(key).c_str(), shown(value).c_str());
  }
}

int runConnect(const std::vector<std::string>& args) {
  const std::string* text = nullptr;
  const std::string* name = nullptr;
  bool rebuild = false, optionsDone = false;
  unsigned char separator = kDefaultSeparator;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    const bool hasValue = i + 1 < args.size();
    if (optionsDone || arg.size() < 2 || arg.compare(0, 2, "--") != 0) {
      if (text != nullptr) return usageError("connect takes one STRING; quote it for the shell");
      text = &arg;
    } else if (arg == "--") {
      optionsDone = true;
    } else if (arg == "--rebuild") {
      rebuild = true;
    } else if (arg == "--name" && hasValue) {
      name = &args[++i];
    } else if (arg == "--separator" && hasValue) {
      const std::string& given = args[++i];
      if (given.size() != 1) return usageError("--separator takes one byte, not '" + given + "'");
      separator = static_cast<unsigned char>(given[0]);
    } else {
      return usageError("unknown option or missing value: '" + arg +
                        "' (a STRING that starts with -- goes after --)");
    }
  }
  if (text == nullptr) return usageError("connect needs a STRING");
  int exitCode = kExitOk;
  mdsPerTaskInit();
  {
    ErrorScope errors;
    const ZuSubString view(bytes(*text), static_cast<std::uint32_t>(text->size()));
    ZuValueParser parser(&view, separator, name != nullptr ? bytes(*name) : nullptr);
    ZuString rebuilt;
    if (parser.initialize() != ZU_OK || (rebuild && parser.buildString(&rebuilt) != ZU_OK)) {
      std::fprintf(stderr, "zu connect: %s\n", errors.take().c_str());
      exitCode = kExitNo;
    } else if (rebuild) {
      std::printf("%s\n", shown(&rebuilt).c_str());
    } else {
      printTable(parser, "");
    }
  }
  mdsPerTaskTerm();
  return exitCode;
}

void showRefused(const char* text, const char* name, ErrorScope& errors) {
  const ZuSubString view(bytes(text));
  ZuValueParser parser(&view, kDefaultSeparator, name != nullptr ? bytes(name) : nullptr);
  const ZuStatus status = parser.initialize();
  std::printf("  %s%s%s\n    %s\n", text, name != nullptr ? "  as " : "", name != nullptr ? name : "",
              status == ZU_OK ? "accepted" : errors.take().c_str());
}

void tourConnect(ErrorScope& errors) {
  const char* text = "DRIVER={zu Driver};SERVER=db1;UID=admin;PWD='it''s';DATABASE=sales;"
                     "TIMEOUT=30;AppName = month end report";
  std::printf("Parsed: %s\n", text);
  const ZuSubString view(bytes(text));
  ZuValueParser parser(&view, kDefaultSeparator, nullptr);
  if (parser.initialize() != ZU_OK) {
    std::printf("  refused: %s\n", errors.take().c_str());
    return;
  }
  printTable(parser, "  ");

  const ZuSubString* server = parser.getAttributeValue(bytes("server"));
  std::printf("The driver asks for server (any case): %s\n", shown(server).c_str());
  const ZuSubString* password = nullptr;
  parser.getAttributeValue(bytes("PASSWORD"), bytes("PWD"), password);
  ZuString plain;
  if (password != nullptr) password->copyQuotedStr(&plain);
  std::printf("PASSWORD or PWD: %s, unquoted %s\n", shown(password).c_str(), shown(&plain).c_str());
  parser.getAttributeValue(bytes("UID"));
  parser.getAttributeValue(bytes("DRIVER"));
  std::printf("Not asked for (%u):", static_cast<unsigned>(parser.getUnusedCount()));
  while (const ZuSubString* key = parser.getUnusedAttribute()) std::printf(" %s", shown(key).c_str());
  std::printf("\n");

  parser.addAttribute(bytes("PASSWORD"), bytes("new;secret"), bytes("PWD"));
  parser.addAttribute(bytes("Charset"), bytes("WIN1252"), nullptr);
  parser.removeAttribute(bytes("appname"));
  ZuString rebuilt;
  if (parser.buildString(&rebuilt) == ZU_OK) {
    std::printf("New password through its alias, a charset added, AppName removed:\n  %s\n",
                shown(&rebuilt).c_str());
  }

  std::printf("Refused, with the offset of the token at fault:\n");
  showRefused("DSN=sales;UID=admin;uid=guest", nullptr, errors);
  showRefused("DSN=sales;;UID=admin", nullptr, errors);
  showRefused("DSN=sales;SERVER NAME=db1", "the data source", errors);
  showRefused("DSN==sales", nullptr, errors);
  const ZuSubString both(bytes("PWD=a;PASSWORD=b"));
  ZuValueParser twice(&both, kDefaultSeparator, nullptr);
  const ZuSubString* value = nullptr;
  if (twice.initialize() == ZU_OK &&
      twice.getAttributeValue(bytes("PASSWORD"), bytes("PWD"), value) != ZU_OK) {
    std::printf("  PWD=a;PASSWORD=b, asked for PASSWORD or PWD\n    %s\n", errors.take().c_str());
  }
}

void demoConnect() {
  std::printf("== Connect strings\n");
  mdsPerTaskInit();
  {
    ErrorScope errors;
    tourConnect(errors);
  }
  mdsPerTaskTerm();
}

Registration connect({"connect", "STRING [--rebuild] [--separator C] [--name NAME]",
                      "the keyword=value table of a connect string, one a line, or with "
                      "--rebuild the string written back from it",
                      runConnect, demoConnect, 45});

}  // namespace
}  // namespace zutool

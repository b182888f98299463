// zu tokens TEXT [options]: the tokens of TEXT as the library's scanner cuts
// them, one a line: kind (its number and name), offset, bytes. Control and
// high bytes are shown as \xNN, so that each token keeps to its line.
#include <zuutl.h>

#include <cstdio>
#include <string>
#include <vector>

#include "command.h"
#include "error_scope.h"

namespace zutool {
namespace {

const unsigned char* bytes(const std::string& s) {
  return reinterpret_cast<const unsigned char*>(s.c_str());
}
const unsigned char* bytes(const char* s) { return reinterpret_cast<const unsigned char*>(s); }

// Names of the token kinds, indexed by kind; anything from the first
// operator code on is an operator.
constexpr const char* kKindNames[] = {"none",         "end",    "word",  "quoted",
                                      "unterminated", "number", "bare",  "hash-name",
                                      "delimited",    "real",   "other", "comment"};
constexpr std::uint32_t kKindCount = sizeof kKindNames / sizeof kKindNames[0];
constexpr unsigned char kFirstPrintable = ' ';
constexpr unsigned char kLastPrintable = '~';

std::string shown(const ZuSubString& view) {
  std::string out;
  for (std::uint32_t i = 0; i < view.length; ++i) {
    const unsigned char c = view.bytes[i];
    char escaped[8];
    if (c == '\n') {
      out += "\\n";
    } else if (c == '\r') {
      out += "\\r";
    } else if (c == '\t') {
      out += "\\t";
    } else if (c < kFirstPrintable || c > kLastPrintable) {
      std::snprintf(escaped, sizeof escaped, "\\x%02X", c);
      out += escaped;
    } else {
      out += static_cast<char>(c);
    }
  }
  return out;
}

void printToken(const ZuToken& t, const char* indent) {
  const std::uint32_t type = t.getType();
  std::printf("%s%-6u %-13s %6u%s%s\n", indent, static_cast<unsigned>(type),
              type < kKindCount ? kKindNames[type] : "operator",
              static_cast<unsigned>(t.getOffset()), t.length != 0 ? "  " : "", shown(t).c_str());
}

// Every token to the end, the end token included.
void printAll(ZuScanner& scanner, SearchType type, const char* indent) {
  ZuToken t;
  do {
    scanner.getToken(t, type);
    printToken(t, indent);
  } while (t.getType() != ZU_TOKEN_END);
}

int runTokens(const std::vector<std::string>& args) {
  const std::string* text = nullptr;
  SearchType type = ZU_SEARCH_NORMAL;
  bool parens = false, braces = false, comments = false, optionsDone = false;
  std::string wordPart, delimiters;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    const bool hasValue = i + 1 < args.size();
    if (optionsDone || arg.size() < 2 || arg.compare(0, 2, "--") != 0) {
      if (text != nullptr) return usageError("tokens takes one TEXT; quote it to keep its blanks");
      text = &arg;
    } else if (arg == "--") {
      optionsDone = true;  // a TEXT may itself start with --
    } else if (arg == "--bare") {
      type = ZU_SEARCH_BARE;
    } else if (arg == "--hash-names") {
      type = ZU_SEARCH_HASH_NAME;
    } else if (arg == "--parens") {
      parens = true;
    } else if (arg == "--braces") {
      braces = true;
    } else if (arg == "--comments") {
      comments = true;
    } else if (arg == "--word-part" && hasValue) {
      wordPart = args[++i];
    } else if (arg == "--delimiters" && hasValue) {
      delimiters = args[++i];
    } else {
      return usageError("unknown option or missing value: '" + arg +
                        "' (a TEXT that starts with -- goes after --)");
    }
  }
  if (text == nullptr) return usageError("tokens needs a TEXT");
  mdsPerTaskInit();
  {
    ZuScanner scanner(bytes(*text), static_cast<std::uint32_t>(text->size()));
    scanner.parenBlocks = parens ? 1 : 0;
    scanner.braceBlocks = braces ? 1 : 0;
    scanner.comments = comments ? 1 : 0;
    if (!wordPart.empty()) scanner.wordPartChars.concat(bytes(wordPart));
    if (!delimiters.empty()) scanner.delimiterChars.concat(bytes(delimiters));
    printAll(scanner, type, "");
  }
  mdsPerTaskTerm();
  return kExitOk;
}

void showScan(const char* title, const char* text, bool comments, SearchType type) {
  std::printf("%s: %s\n", title, shown(ZuSubString(bytes(text))).c_str());
  ZuScanner scanner(bytes(text));
  scanner.comments = comments ? 1 : 0;
  printAll(scanner, type, "  ");
}

void tourScanner(ErrorScope& errors) {
  showScan("A statement, with comments on",
           "SELECT c.\"Name\", 'it''s' FROM t WHERE n >= 1.5 AND code <> ? -- open ones\n"
           "ORDER BY 2",
           true, ZU_SEARCH_NORMAL);
  showScan("Numbers: no sign, no exponent, real only at the very end", "-2 1e5 1.2.3 1.5", false,
           ZU_SEARCH_NORMAL);
  showScan("Odd bytes and a quote left open", "a[1] ~ 'abc", false, ZU_SEARCH_NORMAL);
  showScan("A file name, bare", "C:\\DATA\\ORDERS.DBF,2", false, ZU_SEARCH_BARE);

  ZuScanner blocks(bytes("{fn UCASE(name)} (a, ')', b) x"));
  blocks.braceBlocks = 1;
  blocks.parenBlocks = 1;
  std::printf("With brace and paren blocks:\n");
  printAll(blocks, ZU_SEARCH_NORMAL, "  ");

  ZuScanner phrases(bytes("SELECT a FROM t group   by a"));
  const unsigned found = phrases.isTokenWithinCi(bytes("GROUP BY"));
  std::printf("isTokenWithinCi(GROUP BY): %u, reading on at offset %u\n", found,
              static_cast<unsigned>(phrases.position));

  ZuScanner fields(bytes("  Server=db1 ; Pwd='a;b' ;;"));
  std::printf("Delimited fields at ';':\n");
  ZuToken t;
  do {
    fields.getDelimitedToken(t, ';');
    printToken(t, "  ");
    if (t.getType() == ZU_TOKEN_NONE) fields.getToken(t);  // the delimiter itself
  } while (t.getType() != ZU_TOKEN_END);

  ZuString sql;
  sql.initialize(bytes("UPDATE t SET name = ?, note = ? WHERE id = ?"));
  ZuScanner rewriter(&sql);
  const char* values[] = {"'O''Brien'", "NULL", "42"};
  std::size_t next = 0;
  while (rewriter.getToken(t), t.getType() != ZU_TOKEN_END) {
    if (t.getType() == '?' && next < std::size(values)) {
      rewriter.changeToken(&t, ZuSubString(bytes(values[next++])));
    }
  }
  std::printf("Markers rewritten in place: %s\n", reinterpret_cast<char*>(sql.getCString()));
  const std::string refused = errors.take();
  if (!refused.empty()) std::printf("  %s\n", refused.c_str());
}

void demoTokens() {
  std::printf("== Scanning SQL\n");
  mdsPerTaskInit();
  {
    ErrorScope errors;
    tourScanner(errors);
  }
  mdsPerTaskTerm();
}

Registration tokens({"tokens", "TEXT [options]",
                     "the tokens of TEXT, one a line: kind, offset, bytes; options --comments "
                     "--parens --braces --bare --hash-names --word-part S --delimiters S",
                     runTokens, demoTokens, 40});

}  // namespace
}  // namespace zutool

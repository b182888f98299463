// zu like PATTERN TEXT [--escape C] [--ci]: SQL LIKE as the library matches
// it, with % and _ as the wildcards.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <zuutl.h>

#include "command.h"

namespace zutool {
namespace {

constexpr unsigned char kAnyMany = '%';
constexpr unsigned char kAnyOne = '_';
// Arguments cannot hold a NUL, so a NUL escape escapes nothing.
constexpr unsigned char kNoEscape = 0;

const unsigned char* bytes(const std::string& s) {
  return reinterpret_cast<const unsigned char*>(s.data());
}
const unsigned char* bytes(const char* s) { return reinterpret_cast<const unsigned char*>(s); }

int runLike(const std::vector<std::string>& args) {
  std::vector<std::string> operands;
  unsigned char escape = kNoEscape;
  bool foldCase = false;
  bool optionsDone = false;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (optionsDone || arg.size() < 2 || arg.compare(0, 2, "--") != 0) {
      operands.push_back(arg);
    } else if (arg == "--") {
      optionsDone = true;
    } else if (arg == "--ci") {
      foldCase = true;
    } else if (arg == "--escape") {
      if (i + 1 == args.size()) return usageError("--escape needs a character");
      const std::string& given = args[++i];
      if (given.size() != 1) return usageError("--escape takes one character, not '" + given + "'");
      escape = static_cast<unsigned char>(given[0]);
    } else {
      return usageError("unknown option '" + arg + "'");
    }
  }
  if (operands.size() != 2) return usageError("like needs a PATTERN and a TEXT");
  const std::string& pattern = operands[0];
  const std::string& text = operands[1];
  const unsigned matched = strLike(bytes(text), static_cast<std::uint32_t>(text.size()),
                                   bytes(pattern), static_cast<std::uint32_t>(pattern.size()),
                                   kAnyMany, kAnyOne, escape, foldCase ? 0 : 1);
  std::printf("%s\n", matched != 0 ? "match" : "no match");
  return matched != 0 ? kExitOk : kExitNo;
}

void showLike(const char* text, const char* pattern, std::uint32_t exactCase) {
  std::printf("  '%s' LIKE '%s'%s: %u\n", text, pattern, exactCase != 0 ? "" : " (any case)",
              strLike(bytes(text), bytes(pattern), kAnyMany, kAnyOne, '\\', exactCase));
}

void demoBytes() {
  std::printf("== Bytes, comparison and LIKE\n");
  unsigned char buffer[64];
  unsigned char* end = BUTSTCPY(buffer, bytes("DRIVER="));
  end = BUTSTCPY(end, bytes("zu"));
  std::printf("BUTSTCPY chains through the NUL it returns: \"%s\", %u bytes\n",
              reinterpret_cast<char*>(buffer), static_cast<unsigned>(end - buffer));
  std::memcpy(buffer, "ab......", 9);
  BUTMEMCP(buffer + 2, buffer, 6);
  std::printf("BUTMEMCP two bytes up, overlapping, repeats what it copied: \"%s\"\n",
              reinterpret_cast<char*>(buffer));
  std::string big(70000, 'x');
  std::printf("BUTSTLEN of 70000 bytes counts in 16 bits: %u\n",
              static_cast<unsigned>(BUTSTLEN(bytes(big.c_str()))));
  strCopyQuoted(buffer, bytes("it's"), '\'');
  std::printf("strCopyQuoted(it's): %s\n", reinterpret_cast<char*>(buffer));
  std::printf(
      "strCompareCi of E-acute T E-acute with e-acute t e-acute (bytes C9 54 C9, E9 74 E9): %d\n",
      strCompareCi(bytes("\xC9T\xC9"), bytes("\xE9t\xE9")));
  std::printf("strComparePad(\"abc\", \"abc  \"): %d; with a tab instead: %d\n",
              strComparePad(bytes("abc"), bytes("abc  ")),
              strComparePad(bytes("abc"), bytes("abc\t")));
  const double minusZero = -0.0, plusZero = 0.0;
  unsigned char a[sizeof(double)], b[sizeof(double)];
  std::memcpy(a, &minusZero, sizeof a);
  std::memcpy(b, &plusZero, sizeof b);
  std::printf("floatCompare(-0.0, +0.0): %d\n", floatCompare(a, b));
  std::printf("strLike, %% and _ with \\ as the escape:\n");
  showLike("abcabd", "%abd", 1);
  showLike("abcabd", "%abc", 1);
  showLike("100%", "100\\%", 1);
  showLike("abc   ", "a_c", 1);
  showLike("ABC", "abc", 0);
}

Registration like({"like", "PATTERN TEXT [--escape C] [--ci]",
                   "SQL LIKE of TEXT against PATTERN (% and _); exit 0 on a match, 1 if none",
                   runLike, demoBytes, 20});

}  // namespace
}  // namespace zutool

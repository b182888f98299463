// `zu sort --lines` beside `LC_ALL=C sort`: the same lines must come out as
// the same bytes, both when the sort holds all it can and when it is held to
// two blocks, so that runs are spilled and merged.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

#ifdef ZU_TOOL_EMULATOR
// Under the emulator the tool runs many times slower: less data, but still
// more than the sort holds, so that both runs spill.
constexpr const char* kToolCommand = ZU_TOOL_EMULATOR " " ZU_TOOL_PATH;
constexpr std::size_t kRandomBytes = std::size_t{4} << 20;
constexpr std::size_t kFewValueLines = 40000;
#else
constexpr const char* kToolCommand = ZU_TOOL_PATH;
constexpr std::size_t kRandomBytes = std::size_t{10} << 20;
constexpr std::size_t kFewValueLines = 400000;
#endif

constexpr std::size_t kLongestLine = 200;
constexpr char kFirstPrintable = ' ';
constexpr char kLastPrintable = '~';
constexpr const char* kSpillingMemory = "--memory 2";

std::string quoted(const std::string& text) {
  std::string q = "'";
  for (char c : text) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return q + "'";
}

std::string readFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

void writeFile(const fs::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

bool onPath(const std::string& program) {
  const char* path = std::getenv("PATH");
  std::stringstream dirs(path != nullptr ? path : "");
  for (std::string dir; std::getline(dirs, dir, ':');) {
    if (!dir.empty() && ::access((dir + "/" + program).c_str(), X_OK) == 0) return true;
  }
  return false;
}

// Where two outputs first part, as a line number and the two lines.
std::string firstDifference(const std::string& want, const std::string& got) {
  std::size_t at = 0;
  while (at < want.size() && at < got.size() && want[at] == got[at]) ++at;
  const std::size_t lineStart = want.rfind('\n', at == 0 ? 0 : at - 1);
  const std::size_t from = lineStart == std::string::npos || at == 0 ? 0 : lineStart + 1;
  const auto lineAt = [from](const std::string& s) { return s.substr(from, s.find('\n', from) - from); };
  return "sizes " + std::to_string(want.size()) + " and " + std::to_string(got.size()) +
         ", first difference in line " +
         std::to_string(std::count(want.begin(), want.begin() + from, '\n') + 1) + ": sort has \"" +
         lineAt(want) + "\", zu has \"" + lineAt(got) + "\"";
}

class GnuSort : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!onPath("sort")) GTEST_SKIP() << "no sort on PATH to compare with";
    std::string pattern = (fs::temp_directory_path() / "zu-gnusort-XXXXXX").string();
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
    dir_ = pattern;
  }
  void TearDown() override {
    if (!dir_.empty()) fs::remove_all(dir_);
  }

  int shell(const std::string& command) {
    const int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  // Sorts `lines` with both, with and without a spill, and compares.
  void expectSameAsSort(const std::string& lines) {
    const fs::path input = dir_ / "input", want = dir_ / "want", got = dir_ / "got";
    writeFile(input, lines);
    ASSERT_EQ(shell("LC_ALL=C sort -o " + quoted(want) + " " + quoted(input)), 0);
    const std::string expected = readFile(want);
    for (const std::string memory : {"", kSpillingMemory}) {
      SCOPED_TRACE(memory.empty() ? "all blocks" : memory);
      const fs::path stats = dir_ / "stats";
      ASSERT_EQ(shell(std::string(kToolCommand) + " sort --lines --record-size " +
                      std::to_string(kLongestLine) + " --stats " + memory + " -o " + quoted(got) +
                      " " + quoted(input) + " 2>" + quoted(stats)),
                0)
          << readFile(stats);
      const std::string output = readFile(got);
      EXPECT_TRUE(output == expected) << firstDifference(expected, output);
      // Otherwise the merge went untested.
      if (!memory.empty()) {
        EXPECT_EQ(readFile(stats).find("runs     0\n"), std::string::npos);
      }
    }
  }

  fs::path dir_;
};

TEST_F(GnuSort, RandomPrintableLinesOfRandomLengths) {
  std::mt19937 rng(20240611);
  std::uniform_int_distribution<std::size_t> length(0, kLongestLine);
  std::uniform_int_distribution<int> byte(kFirstPrintable, kLastPrintable);
  std::string lines;
  lines.reserve(kRandomBytes + kLongestLine + 1);
  while (lines.size() < kRandomBytes) {
    for (std::size_t n = length(rng); n > 0; --n) lines += static_cast<char>(byte(rng));
    lines += '\n';
  }
  expectSameAsSort(lines);
}

// Long runs of equal lines, among them values that differ only in trailing
// NULs or in one high byte; the last line has no newline.
TEST_F(GnuSort, FewDistinctValuesRepeated) {
  const std::vector<std::string> values = {"",  "a",         std::string("a\0", 2), std::string("a\0\0", 3),
                                           std::string(1, '\0'), "b", "\xff", "a b", "a\xff"};
  std::mt19937 rng(7);
  std::uniform_int_distribution<std::size_t> pick(0, values.size() - 1);
  std::string lines;
  for (std::size_t i = 0; i < kFewValueLines; ++i) lines += values[pick(rng)] + "\n";
  lines += "b";
  expectSameAsSort(lines);
}

}  // namespace

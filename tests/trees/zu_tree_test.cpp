// `zu tree` over random lines beside `LC_ALL=C sort -u`: the tree's walk
// must give the same bytes, forward and (against `sort -ru`) backward; after
// --delete-every and from a point given by --from, the walk must give what a
// std::set of the same lines gives. The trees spill to their temporary file.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

#ifdef ZU_TOOL_EMULATOR
constexpr const char* kToolCommand = ZU_TOOL_EMULATOR " " ZU_TOOL_PATH;
constexpr std::size_t kLines = 8000;
#else
constexpr const char* kToolCommand = ZU_TOOL_PATH;
constexpr std::size_t kLines = 60000;
#endif

constexpr std::size_t kLongestLine = 40;
constexpr unsigned kDeleteEvery = 3;

std::string quoted(const fs::path& path) { return "'" + path.string() + "'"; }

std::string readFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

int shell(const std::string& command) {
  const int status = std::system(command.c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string joined(const std::vector<std::string>& lines) {
  std::string all;
  for (const std::string& line : lines) all += line + "\n";
  return all;
}

TEST(ZuTree, WalksAsSortUniqueDoes) {
  std::string pattern = (fs::temp_directory_path() / "zu-tree-XXXXXX").string();
  ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
  const fs::path dir = pattern;
  // Lines from a pool about half the input, so that many repeat; short
  // lines of few letters share prefixes and differ in trailing NULs' place.
  std::mt19937 rng(1414);
  std::vector<std::string> pool;
  for (std::size_t i = 0; i < kLines / 2; ++i) {
    std::string line(rng() % (kLongestLine + 1), '\0');
    const bool few = rng() % 4 == 0;
    for (char& c : line) c = static_cast<char>(few ? 'a' + rng() % 3 : ' ' + rng() % 95);
    pool.push_back(line);
  }
  std::vector<std::string> input;
  for (std::size_t i = 0; i < kLines; ++i) input.push_back(pool[rng() % pool.size()]);
  std::ofstream(dir / "input", std::ios::binary) << joined(input);

  const auto tool = [&](const std::string& options, const char* out) {
    return shell(std::string(kToolCommand) + " tree --key-length " + std::to_string(kLongestLine) + " " + options +
                 " " + quoted(dir / "input") + " > " + quoted(dir / out) + " 2> " + quoted(dir / "stats"));
  };
  ASSERT_EQ(shell("LC_ALL=C sort -u " + quoted(dir / "input") + " > " + quoted(dir / "want")), 0);
  ASSERT_EQ(shell("LC_ALL=C sort -ru " + quoted(dir / "input") + " > " + quoted(dir / "wantReverse")), 0);
  ASSERT_EQ(tool("--stats", "got"), 0) << readFile(dir / "stats");
  EXPECT_TRUE(readFile(dir / "got") == readFile(dir / "want"));
  EXPECT_EQ(readFile(dir / "stats").find("pages    0 "), std::string::npos) << "the tree never spilled";
  ASSERT_EQ(tool("--reverse", "gotReverse"), 0) << readFile(dir / "stats");
  EXPECT_TRUE(readFile(dir / "gotReverse") == readFile(dir / "wantReverse"));

  // The distinct lines in the order first seen; every third of them goes.
  std::set<std::string> kept;
  std::set<std::string> seen;
  for (const std::string& line : input) {
    if (seen.insert(line).second && seen.size() % kDeleteEvery != 0) kept.insert(line);
  }
  // A line of the few letters, so the shell takes it as it is.
  std::string from = "b";
  for (const std::string& line : pool) {
    if (!line.empty() && line.find_first_not_of("abc") == std::string::npos) {
      from = line;
      break;
    }
  }
  ASSERT_EQ(tool("--delete-every " + std::to_string(kDeleteEvery) + " --from '" + from + "'", "gotDeleted"), 0)
      << readFile(dir / "stats");
  EXPECT_TRUE(readFile(dir / "gotDeleted") == joined({kept.lower_bound(from), kept.end()}));
  fs::remove_all(dir);
}

}  // namespace

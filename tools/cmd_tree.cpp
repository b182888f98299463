// zu tree: keys into a ZuTree, which keeps its nodes in a scratch store that
// spills to temporary files, and out again in order.
//
//   zu tree words.txt --stats
//   zu tree --records --key-length 8 --data-length 8 data.bin > ordered.bin
//   zu tree words.txt --lookup apple pear
//
// A line becomes a key of --key-length bytes, NUL-padded, followed by its
// true length, big-endian, in kLengthBytes more bytes; so keys order as
// `LC_ALL=C sort` orders lines and equal lines are one key, and the lines
// come out as `LC_ALL=C sort -u` prints them. Records are their key and then
// their data; a record whose key is already there is dropped.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <zuutl.h>

#include "command.h"
#include "error_scope.h"
#include "stream_io.h"

namespace zutool {
namespace {

constexpr unsigned kLengthBytes = 2;
constexpr unsigned kByteBits = 8;
constexpr unsigned kByteMask = 0xFF;
constexpr unsigned kDefaultLineArea = 64;
// A triad holds a child pointer, the key, the data and a marker in one node
// of a 2048-byte page, with room for at least two keys.
constexpr unsigned kMaxKeyAndData = 1012;
constexpr unsigned kMarkerBytes = 1;
constexpr std::size_t kIoChunk = std::size_t{1} << 20;
constexpr int kStandardInput = 0;
constexpr int kStandardOutput = 1;
constexpr char kNewline = '\n';
constexpr std::uint32_t kReadOnly = 0;
constexpr unsigned short kFromEnd = 2;
constexpr std::uint32_t kSeekFailed = 0xFFFFFFFF;
constexpr std::size_t kDosNameRoom = 256;
// The store's offsets reach 128 MiB (65536 pages) and nothing past that is
// checked, so adds stop while one more insert, with a split at every level
// of the deepest path, still fits.
constexpr std::uint64_t kStorePages = 65536;
constexpr std::uint64_t kDeepestPath = 32;
constexpr std::uint64_t kStoreBytes = kStorePages * zu::storage::kPageSize;
constexpr std::uint64_t kStoreMargin = (kDeepestPath + 1) * zu::storage::kPageSize;

struct Options {
  bool records = false;
  unsigned keyLength = 0;  // 0 when not given
  unsigned dataLength = 0;
  bool reverse = false;
  bool hasFrom = false;
  std::string from;
  std::uint64_t deleteEvery = 0;  // 0: none
  bool lookup = false;
  std::vector<std::string> lookups;
  bool stats = false;
  std::string input;  // empty or "-": standard input
};

struct Stats {
  std::uint32_t entries = 0;
  unsigned depth = 0;        // levels from the root to the leaves
  unsigned deepestHit = 0;   // the deepest successful search so far
  unsigned nodes = 0;
  unsigned pagesOut = 0;
  std::uint64_t fileBytes = 0;
};

// Fills `options`; returns a usage complaint or "".
std::string parseOptions(const std::vector<std::string>& args, Options* options) {
  std::vector<std::string> operands;
  bool dataGiven = false;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    const bool hasValue = i + 1 < args.size();
    std::uint64_t n = 0;
    if (arg == "-" || arg.empty() || arg[0] != '-') {
      operands.push_back(arg);
    } else if (arg == "--records") {
      options->records = true;
    } else if (arg == "--reverse") {
      options->reverse = true;
    } else if (arg == "--stats") {
      options->stats = true;
    } else if (arg == "--key-length" || arg == "--data-length") {
      if (!hasValue || !parseNumber(args[++i], &n) || n > kMaxKeyAndData) {
        return arg + " needs a number up to " + std::to_string(kMaxKeyAndData);
      }
      if (arg == "--key-length") {
        if (n == 0) return "--key-length needs a number from 1";
        options->keyLength = static_cast<unsigned>(n);
      } else {
        options->dataLength = static_cast<unsigned>(n);
        dataGiven = true;
      }
    } else if (arg == "--from") {
      if (!hasValue) return "--from needs a KEY";
      options->hasFrom = true;
      options->from = args[++i];
    } else if (arg == "--delete-every") {
      if (!hasValue || !parseNumber(args[++i], &n) || n == 0) return "--delete-every needs a number from 1";
      options->deleteEvery = n;
    } else if (arg == "--lookup") {
      // Every argument after it is a key.
      options->lookup = true;
      options->lookups.assign(args.begin() + static_cast<std::ptrdiff_t>(i) + 1, args.end());
      if (options->lookups.empty()) return "--lookup needs at least one KEY";
      break;
    } else {
      return "unknown option '" + arg + "'";
    }
  }
  if (operands.size() > 1) return "tree takes one INPUT";
  if (!operands.empty()) options->input = operands[0];
  if (options->lookup && (options->hasFrom || options->reverse)) return "--lookup does not walk the tree";
  if (options->records) {
    if (options->keyLength == 0) return "--records needs --key-length";
  } else {
    if (dataGiven) return "--data-length goes with --records";
    if (options->keyLength == 0) options->keyLength = kDefaultLineArea;
  }
  const unsigned room = kMaxKeyAndData - (options->deleteEvery != 0 ? kMarkerBytes : 0);
  const unsigned used = options->keyLength + options->dataLength + (options->records ? 0 : kLengthBytes);
  if (used > room) {
    return "key" + std::string(options->records ? " and data" : "") + " of " + std::to_string(used) +
           " bytes; a tree holds at most " + std::to_string(room);
  }
  return "";
}

// Gives as many bytes as it has, up to the room; 0 at the end, -1 on failure.
using Source = std::function<long(char* into, std::size_t room)>;
// Takes all the bytes, or fails.
using Drain = std::function<bool(const char* bytes, std::size_t count)>;

// One tree of one input.
class Run {
 public:
  Run(const Options& options, ErrorScope* errors)
      : options_(options),
        errors_(errors),
        area_(options.keyLength),
        tree_(static_cast<unsigned short>(options.records ? area_ : area_ + kLengthBytes),
              static_cast<unsigned short>(options.dataLength), nullptr, options.deleteEvery != 0 ? 1 : 0),
        key_(tree_.keyLength, '\0'),
        data_(tree_.dataLength, '\0') {}

  // Each returns "" or what went wrong.
  std::string feed(const Source& source) {
    std::vector<char> buffer(kIoChunk);
    const std::size_t recordSize = std::size_t{tree_.keyLength} + tree_.dataLength;
    std::size_t held = 0;  // an unfinished line or record at the front
    for (;;) {
      const long got = source(buffer.data() + held, buffer.size() - held);
      if (got < 0) return std::string("cannot read the input: ") + std::strerror(errno);
      if (got == 0) break;
      const std::size_t end = held + static_cast<std::size_t>(got);
      std::size_t at = 0;
      while (at < end) {
        std::size_t stop = 0;
        if (options_.records) {
          if (end - at < recordSize) break;
          stop = at + recordSize;
        } else {
          const void* found = std::memchr(buffer.data() + at, kNewline, end - at);
          if (found == nullptr) break;
          stop = static_cast<std::size_t>(static_cast<const char*>(found) - buffer.data());
        }
        const std::string failure = options_.records ? addRecord(buffer.data() + at)
                                                     : addLine(std::string_view(buffer.data() + at, stop - at));
        if (!failure.empty()) return failure;
        at = options_.records ? stop : stop + 1;
      }
      held = end - at;
      std::memmove(buffer.data(), buffer.data() + at, held);
      if (!options_.records && held > area_) return tooLong(held);
    }
    if (held == 0) return "";
    if (options_.records) {
      return "the input ends " + std::to_string(held) + " bytes into a record of " +
             std::to_string(recordSize) + " bytes";
    }
    return addLine(std::string_view(buffer.data(), held));  // the last line had no newline
  }

  // Takes out the keys added n-th, 2n-th, ... as new ones.
  std::string deleteEvery() {
    for (const std::string& key : doomed_) {
      unsigned int found = 0;
      if (tree_.deleteKey(key.data(), &found) != ZU_OK) return errors_->take();
    }
    doomed_.clear();
    return "";
  }

  std::string drain(const Drain& drain) {
    std::string out;
    unsigned int found = 0;
    ZuStatus status = ZU_OK;
    if (options_.hasFrom) {
      std::string complaint;
      if (!makeKey(options_.from, &complaint)) return complaint;
      // The search leaves the tree's own iterator where the key is or would be.
      status = tree_.getData(key_.data(), data_.data(), &found);
      if (status == ZU_OK && found == 0) status = step(&found);
    } else {
      status = options_.reverse ? tree_.getLast(key_.data(), data_.data(), &found)
                                : tree_.getFirst(key_.data(), data_.data(), &found);
    }
    for (; status == ZU_OK && found != 0; status = step(&found)) {
      if (options_.records) {
        out.append(key_).append(data_);
      } else {
        out.append(key_.data(), lineLength(key_)).push_back(kNewline);
      }
      if (out.size() >= kIoChunk) {
        if (!drain(out.data(), out.size())) return std::string("cannot write the output: ") + std::strerror(errno);
        out.clear();
      }
    }
    if (status != ZU_OK) return errors_->take();
    if (!out.empty() && !drain(out.data(), out.size())) {
      return std::string("cannot write the output: ") + std::strerror(errno);
    }
    return "";
  }

  // Prints "found" or "not found" for each; *all whether each was found.
  std::string lookup(bool* all) {
    *all = true;
    for (const std::string& text : options_.lookups) {
      std::string complaint;
      if (!makeKey(text, &complaint)) return complaint;
      unsigned int found = 0;
      if (tree_.doesExist(key_.data(), &found) != ZU_OK) return errors_->take();
      std::printf("%s: %s\n", text.c_str(), found != 0 ? "found" : "not found");
      *all = *all && found != 0;
    }
    return "";
  }

  Stats stats() {
    Stats s;
    s.entries = tree_.keyCount;
    s.deepestHit = tree_.maxDepth;
    // Every leaf lies at the same depth: down the first children to one.
    // A node's first triad starts with its first child's offset.
    for (std::uint32_t node = tree_.root; node != 0; ++s.depth) {
      unsigned char* image = nullptr;
      unsigned short available = 0;
      if (tree_.store.tmpPointer(node, &image, &available, 0) != ZU_OK) {
        errors_->take();
        break;
      }
      std::memcpy(&node, image + sizeof(ZuTreeNode), sizeof node);
    }
    s.nodes = tree_.nodeCount;
    const ZuTmpFile& store = tree_.store;
    if (store.firstName != nullptr) s.pagesOut = store.highPage + 1u;
    s.fileBytes = fileSize(store.firstName) + fileSize(store.secondName);
    return s;
  }

 private:
  ZuStatus step(unsigned int* found) {
    return options_.reverse ? tree_.getPrevious(key_.data(), data_.data(), found)
                            : tree_.getNext(key_.data(), data_.data(), found);
  }

  // The size of a temporary file of the store, read through the library.
  static std::uint64_t fileSize(const unsigned char* name) {
    if (name == nullptr) return 0;
    unsigned char copy[kDosNameRoom] = {};
    std::strncpy(reinterpret_cast<char*>(copy), reinterpret_cast<const char*>(name), kDosNameRoom - 1);
    int handle = 0;
    if (bosFileOpen(copy, kReadOnly, &handle) != ZU_OK) return 0;
    const std::uint32_t size = bosFileSeek(handle, 0, kFromEnd);
    bosFileClose(handle);
    return size == kSeekFailed ? 0 : size;
  }

  // The key of a line, or of text given for a key, into key_.
  bool makeKey(std::string_view text, std::string* complaint) {
    if (text.size() > area_) {
      *complaint = "key '" + std::string(text) + "' is longer than the key length of " + std::to_string(area_);
      return false;
    }
    std::memcpy(key_.data(), text.data(), text.size());
    std::memset(key_.data() + text.size(), 0, area_ - text.size());
    if (!options_.records) {
      for (unsigned i = 0; i < kLengthBytes; ++i) {
        key_[area_ + i] = static_cast<char>((text.size() >> (kByteBits * (kLengthBytes - 1 - i))) & kByteMask);
      }
    }
    return true;
  }

  std::size_t lineLength(const std::string& key) const {
    std::size_t length = 0;
    for (unsigned i = 0; i < kLengthBytes; ++i) length = (length << kByteBits) | static_cast<unsigned char>(key[area_ + i]);
    return length;
  }

  std::string tooLong(std::size_t length) const {
    return "line " + std::to_string(lines_ + 1) + " has " + std::to_string(length) +
           " bytes, more than the key length of " + std::to_string(area_) + " (raise --key-length)";
  }

  std::string addLine(std::string_view line) {
    ++lines_;
    std::string complaint;
    if (line.size() > area_) return tooLong(line.size());
    makeKey(line, &complaint);
    return addKey();
  }

  std::string addRecord(const char* record) {
    std::memcpy(key_.data(), record, key_.size());
    std::memcpy(data_.data(), record + key_.size(), data_.size());
    return addKey();
  }

  std::string addKey() {
    if (tree_.store.nextOffset > kStoreBytes - kStoreMargin) {
      return "the tree has filled the " + std::to_string(kStoreBytes >> 20) + " MiB of its store after " +
             std::to_string(tree_.keyCount) + " keys";
    }
    unsigned int found = 0;
    if (tree_.add(key_.data(), data_.data(), &found) != ZU_OK) return errors_->take();
    if (found == 0 && options_.deleteEvery != 0 && ++added_ % options_.deleteEvery == 0) doomed_.push_back(key_);
    return "";
  }

  const Options& options_;
  ErrorScope* errors_;
  unsigned area_;  // the key, or with lines the part before the length
  ZuTree tree_;
  std::string key_;
  std::string data_;
  std::uint64_t lines_ = 0;
  std::uint64_t added_ = 0;
  std::vector<std::string> doomed_;
};

void printStats(const Stats& s) {
  std::fprintf(stderr,
               "entries  %u\ndepth    %u (deepest search hit %u)\nnodes    %u\npages    %u written out\n"
               "files    %llu bytes\n",
               s.entries, s.depth, s.deepestHit, s.nodes, s.pagesOut, static_cast<unsigned long long>(s.fileBytes));
}

// Builds the tree and answers; "" or what went wrong. *answer is kExitNo
// when a lookup missed.
std::string treeStream(const Options& options, const Source& source, const Drain& drain, int* answer,
                       Stats* stats) {
  ErrorScope errors;
  Run run(options, &errors);
  std::string failure = run.feed(source);
  if (failure.empty()) failure = run.deleteEvery();
  bool all = true;
  if (failure.empty()) failure = options.lookup ? run.lookup(&all) : run.drain(drain);
  *answer = all ? kExitOk : kExitNo;
  *stats = run.stats();
  return failure;
}

int runTree(const std::vector<std::string>& args) {
  Options options;
  const std::string complaint = parseOptions(args, &options);
  if (!complaint.empty()) return usageError(complaint);
  int in = kStandardInput;
  if (!options.input.empty() && options.input != "-") {
    in = ::open(options.input.c_str(), O_RDONLY);
    if (in < 0) {
      std::fprintf(stderr, "zu tree: cannot open %s: %s\n", options.input.c_str(), std::strerror(errno));
      return kExitNo;
    }
  }
  int answer = kExitOk;
  Stats stats;
  const std::string failure = treeStream(
      options, [in](char* into, std::size_t room) { return readSome(in, into, room); },
      [](const char* bytes, std::size_t count) { return writeAll(kStandardOutput, bytes, count); }, &answer,
      &stats);
  if (in != kStandardInput) ::close(in);
  if (!failure.empty()) {
    std::fprintf(stderr, "zu tree: %s\n", failure.c_str());
    return kExitNo;
  }
  if (options.stats) printStats(stats);
  return answer;
}

constexpr unsigned kDemoKeys = 20000;
constexpr unsigned kDemoWordLength = 10;
constexpr char kDemoKeyLength[] = "16";
constexpr char kDemoDeleteEvery[] = "3";
constexpr unsigned kDemoShown = 3;
// Seeds the tour's words, so it prints the same each time.
constexpr std::uint32_t kDemoSeed = 2718;

void demoTree() {
  std::printf("== B-tree over a scratch store\n");
  std::string text = demoWords(kDemoKeys, kDemoWordLength, kDemoSeed);
  Options options;
  std::string failure = parseOptions({"--key-length", kDemoKeyLength, "--delete-every", kDemoDeleteEvery}, &options);
  std::size_t offered = 0;
  std::string ordered;
  int answer = kExitOk;
  Stats stats;
  if (failure.empty()) {
    failure = treeStream(
        options,
        [&](char* into, std::size_t room) {
          const std::size_t n = std::min(room, text.size() - offered);
          std::memcpy(into, text.data() + offered, n);
          offered += n;
          return static_cast<long>(n);
        },
        [&](const char* bytes, std::size_t count) {
          ordered.append(bytes, count);
          return true;
        },
        &answer, &stats);
  }
  std::printf("%u random words as %u-byte keys, every %srd deleted again, in a tree whose store caches %u bytes\n",
              kDemoKeys, options.keyLength + kLengthBytes, kDemoDeleteEvery,
              static_cast<unsigned>(zu::storage::kDefaultCacheSize));
  if (!failure.empty()) {
    std::printf("refused: %s\n", failure.c_str());
    return;
  }
  std::vector<std::string> lines;
  for (std::size_t from = 0, at; (at = ordered.find(kNewline, from)) != std::string::npos; from = at + 1) {
    lines.push_back(ordered.substr(from, at - from));
  }
  bool inOrder = true;
  for (std::size_t i = 1; i < lines.size(); ++i) inOrder &= lines[i - 1] < lines[i];
  std::printf("first:");
  for (unsigned i = 0; i < kDemoShown && i < lines.size(); ++i) std::printf(" %s", lines[i].c_str());
  std::printf("\n%zu keys walked in order: %s\n", lines.size(), inOrder ? "yes" : "no");
  std::printf("entries %u, depth %u, %u nodes; %u pages written out, %llu bytes in the temporary file\n",
              stats.entries, stats.depth, stats.nodes, stats.pagesOut,
              static_cast<unsigned long long>(stats.fileBytes));
}

constexpr char kHelp[] =
    "usage: zu tree [OPTIONS] [INPUT|-] [--lookup KEY...]\n"
    "Adds the lines or records of INPUT (standard input when none or -) to a B-tree and\n"
    "prints them in key order; equal keys are kept once, as first given.\n"
    "  --key-length N    the key area of a line (64 by default; a line is at most that\n"
    "                    long), or the key of a record\n"
    "  --records         fixed-size records of --key-length bytes of key and\n"
    "                    --data-length bytes of data, printed as they came in\n"
    "  --data-length M   with --records, the data after each key\n"
    "  --reverse         descending order\n"
    "  --from KEY        starts the walk at KEY, or where it would stand\n"
    "  --delete-every N  deletes the N-th, 2N-th, ... key added before printing\n"
    "  --lookup KEY...   instead of printing, says whether each KEY is there; exit 1\n"
    "                    if one is not\n"
    "  --stats           reports entries, depth, nodes, pages written out and bytes in\n"
    "                    the temporary files to standard error\n";

int runTreeOrHelp(const std::vector<std::string>& args) { return helpOrRun(args, kHelp, runTree); }

Registration treeCommand({"tree", "[OPTIONS] [INPUT|-] [--lookup KEY...]",
                          "order lines or records in a B-tree that spills to temporary files; walk, "
                          "delete, look up (zu tree --help)",
                          runTreeOrHelp, demoTree, 75});

}  // namespace
}  // namespace zutool

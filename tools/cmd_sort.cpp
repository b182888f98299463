// zu sort: the library's external sort over a file of fixed-size records or
// of lines, into a file or standard output.
//
//   zu sort --record-size 100 --key 0:99 data.bin -o sorted.bin
//   zu sort --lines --record-size 200 --key 10:8:text:desc names.txt
//
// With --lines each line becomes one record: its bytes, NUL padding up to the
// line area of --record-size bytes, and then its true length, big-endian, in
// kLengthBytes more bytes that no key covers. Lines that tie on every key are
// ordered by their bytes and then their length, as `LC_ALL=C sort` orders
// them, so with no --key the output is that of `LC_ALL=C sort`.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <zuutl.h>

#include "command.h"
#include "error_scope.h"
#include "stream_io.h"
#include "platform/platform.h"

namespace zutool {
namespace {

constexpr std::uint32_t kBlockBytes = 65536;
constexpr unsigned kMinBlocks = 2;   // the sort always takes two
constexpr unsigned kMaxBlocks = 64;  // and never more than this
constexpr unsigned kMaxKeys = 64;
constexpr unsigned kMaxRecordSize = 65535;  // a record's size is 16 bits
constexpr unsigned kMaxCollatedLength = 512;
constexpr unsigned kLengthBytes = 2;
constexpr unsigned kByteBits = 8;
constexpr unsigned kByteMask = 0xFF;
constexpr unsigned kDefaultLineArea = 256;
constexpr std::uint64_t kKilo = 1024;
// Input is read and output written in pieces of this size.
constexpr std::size_t kIoChunk = std::size_t{1} << 20;
constexpr int kStandardInput = 0;
constexpr int kStandardOutput = 1;
constexpr mode_t kNewFileMode = 0666;
constexpr char kNewline = '\n';

struct KeyType {
  const char* name;
  unsigned short flag;
};

// Kinds of key; a key has one, bytes when none is named.
constexpr KeyType kKinds[] = {{"bytes", 0}, {"text", ZU_SORTKEY_COLLATED}};
// Modifiers, any number of them.
constexpr KeyType kModifiers[] = {{"desc", ZU_SORTKEY_DESCENDING}, {"empty", ZU_SORTKEY_EMPTY_FIXED}};

struct Options {
  unsigned recordSize = 0;  // 0 when not given
  bool lines = false;
  std::vector<ZuSortKey> keys;
  unsigned memoryBlocks = 0;  // 0: as much as the machine allows
  bool stats = false;
  std::string input;   // empty or "-": standard input
  std::string output;  // empty: standard output
};

struct Stats {
  std::uint64_t records = 0;
  unsigned runs = 0;
  std::uint64_t spilledBytes = 0;
  unsigned blocks = 0;
};

// Blocks, or a size in bytes with K or M after it.
bool parseMemory(const std::string& text, unsigned* blocks) {
  std::uint64_t scale = 0;
  std::string_view digits = text;
  if (!digits.empty() && (digits.back() == 'K' || digits.back() == 'k')) scale = kKilo;
  if (!digits.empty() && (digits.back() == 'M' || digits.back() == 'm')) scale = kKilo * kKilo;
  if (scale != 0) digits.remove_suffix(1);
  std::uint64_t n = 0;
  if (!parseNumber(digits, &n) || n > kMaxBlocks * kBlockBytes) return false;
  if (scale != 0) n = n * scale / kBlockBytes;
  if (n < kMinBlocks || n > kMaxBlocks) return false;
  *blocks = static_cast<unsigned>(n);
  return true;
}

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::size_t from = 0;
  for (std::size_t at; (at = text.find(separator, from)) != std::string::npos; from = at + 1) {
    parts.push_back(text.substr(from, at - from));
  }
  parts.push_back(text.substr(from));
  return parts;
}

// OFFSET:LENGTH[:TYPE][:desc][:empty]; the place is checked once the record
// size is known. An empty result means the key is good.
std::string parseKey(const std::string& text, ZuSortKey* key) {
  const std::vector<std::string> parts = split(text, ':');
  std::uint64_t offset = 0, length = 0;
  if (parts.size() < 2 || !parseNumber(parts[0], &offset) || !parseNumber(parts[1], &length)) {
    return "a key is OFFSET:LENGTH[:TYPE][:desc], not '" + text + "'";
  }
  if (length == 0 || offset + length > kMaxRecordSize) return "key '" + text + "' is out of range";
  unsigned short type = 0;
  bool kindNamed = false;
  for (std::size_t i = 2; i < parts.size(); ++i) {
    const std::string& word = parts[i];
    if (word == "object") {
      return "object keys compare objects in memory and cannot sort a file";
    }
    bool known = false;
    for (const KeyType& kind : kKinds) {
      if (word != kind.name) continue;
      if (kindNamed) return "key '" + text + "' names two types";
      kindNamed = known = true;
      type |= kind.flag;
    }
    for (const KeyType& modifier : kModifiers) {
      if (word != modifier.name) continue;
      known = true;
      type |= modifier.flag;
    }
    if (!known) return "unknown key type '" + word + "' (bytes, text, desc, empty)";
  }
  if ((type & ZU_SORTKEY_COLLATED) != 0 && length > kMaxCollatedLength) {
    return "a text key has at most " + std::to_string(kMaxCollatedLength) + " bytes";
  }
  *key = {type, static_cast<unsigned short>(offset), static_cast<unsigned short>(length)};
  return "";
}

// Fills `options` from the arguments; returns a usage complaint or "".
std::string parseOptions(const std::vector<std::string>& args, Options* options) {
  std::vector<std::string> operands;
  bool optionsDone = false;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    const bool hasValue = i + 1 < args.size();
    if (optionsDone || arg == "-" || arg.empty() || arg[0] != '-') {
      operands.push_back(arg);
    } else if (arg == "--") {
      optionsDone = true;
    } else if (arg == "--lines") {
      options->lines = true;
    } else if (arg == "--stats") {
      options->stats = true;
    } else if (arg == "--record-size") {
      std::uint64_t n = 0;
      if (!hasValue || !parseNumber(args[++i], &n) || n == 0 || n > kMaxRecordSize) {
        return "--record-size needs a number from 1 to " + std::to_string(kMaxRecordSize);
      }
      options->recordSize = static_cast<unsigned>(n);
    } else if (arg == "--key") {
      if (!hasValue) return "--key needs OFFSET:LENGTH[:TYPE][:desc]";
      ZuSortKey key{};
      const std::string complaint = parseKey(args[++i], &key);
      if (!complaint.empty()) return complaint;
      options->keys.push_back(key);
    } else if (arg == "--memory") {
      if (!hasValue || !parseMemory(args[++i], &options->memoryBlocks)) {
        return "--memory takes " + std::to_string(kMinBlocks) + " to " + std::to_string(kMaxBlocks) +
               " blocks of " + std::to_string(kBlockBytes / kKilo) + "K, or a size in K or M";
      }
    } else if (arg == "-o" || arg == "--output") {
      if (!hasValue) return arg + " needs a file name";
      options->output = args[++i];
    } else {
      return "unknown option '" + arg + "'";
    }
  }
  if (operands.size() > 1) return "sort takes one INPUT";
  if (!operands.empty()) options->input = operands[0];

  if (options->lines) {
    if (options->recordSize == 0) options->recordSize = kDefaultLineArea;
    if (options->recordSize + kLengthBytes > kMaxRecordSize) {
      return "with --lines the record size is at most " + std::to_string(kMaxRecordSize - kLengthBytes);
    }
  } else if (options->recordSize == 0) {
    return "sort needs --record-size, or --lines";
  }
  // Keys lie in the record, or with --lines in the line area.
  for (const ZuSortKey& key : options->keys) {
    if (key.offset + key.length > options->recordSize) {
      return "key " + std::to_string(key.offset) + ":" + std::to_string(key.length) +
             " reaches past the " + std::to_string(options->recordSize) + "-byte " +
             (options->lines ? "line area" : "record");
    }
  }
  // With --lines two keys more break ties.
  const unsigned room = options->lines ? kMaxKeys - 2 : kMaxKeys;
  if (options->keys.size() > room) return "at most " + std::to_string(room) + " keys";
  return "";
}

// Standing in for the platform's report of free memory, it says none is left
// once the capped sort holds its share of blocks, since the sort takes each
// block past the second only while memory is reported.
class MemoryCap {
 public:
  MemoryCap(const ZuSort* sort, unsigned blocks) {
    sort_ = sort;
    blocks_ = blocks;
    real_ = zu::platform::sys.memoryAvailable;
    zu::platform::sys.memoryAvailable = available;
  }
  ~MemoryCap() { zu::platform::sys.memoryAvailable = real_; }
  MemoryCap(const MemoryCap&) = delete;
  MemoryCap& operator=(const MemoryCap&) = delete;

 private:
  static std::uint64_t available() { return sort_->bufferCount >= blocks_ ? 0 : real_(); }

  // The platform table takes a plain function, so its state is static.
  static inline const ZuSort* sort_ = nullptr;
  static inline unsigned blocks_ = 0;
  static inline std::uint64_t (*real_)() = nullptr;
};

// Gives as many bytes as it has, up to the room; 0 at the end, -1 on failure.
using Source = std::function<long(char* into, std::size_t room)>;
// Takes all the bytes, or fails.
using Drain = std::function<bool(const char* bytes, std::size_t count)>;

class Writer {
 public:
  explicit Writer(Drain drain) : drain_(std::move(drain)) { buffer_.reserve(kIoChunk); }
  bool put(const void* bytes, std::size_t count) {
    if (buffer_.size() + count > kIoChunk && !flush()) return false;
    const char* p = static_cast<const char*>(bytes);
    buffer_.insert(buffer_.end(), p, p + count);
    return true;
  }
  bool flush() {
    const bool ok = buffer_.empty() || drain_(buffer_.data(), buffer_.size());
    buffer_.clear();
    return ok;
  }

 private:
  Drain drain_;
  std::vector<char> buffer_;
};

// One sort of one input: feeds it, then drains it in order.
class Run {
 public:
  Run(const Options& options, ErrorScope* errors)
      : options_(options),
        errors_(errors),
        area_(options.recordSize),
        sort_(static_cast<unsigned short>(options.lines ? area_ + kLengthBytes : area_)) {}

  // Each returns "" or what went wrong.
  std::string addKeys() {
    std::vector<ZuSortKey> keys = options_.keys;
    const auto area = static_cast<unsigned short>(area_);
    if (keys.empty() || options_.lines) keys.push_back({0, 0, area});
    // Lines equal but for trailing NULs: the shorter goes first.
    if (options_.lines) keys.push_back({0, area, static_cast<unsigned short>(kLengthBytes)});
    for (const ZuSortKey& k : keys) {
      if (sort_.addKey(k.type, k.offset, k.length) != ZU_OK) return errors_->take();
    }
    return "";
  }

  std::string feed(const Source& source) {
    std::vector<char> buffer(kIoChunk);
    std::size_t held = 0;  // bytes of an unfinished record or line at the front
    for (;;) {
      const long got = source(buffer.data() + held, buffer.size() - held);
      if (got < 0) return std::string("cannot read the input: ") + std::strerror(errno);
      if (got == 0) break;
      const std::size_t end = held + static_cast<std::size_t>(got);
      std::size_t used = 0;
      const std::string failure = options_.lines ? takeLines(buffer.data(), end, &used)
                                                 : takeRecords(buffer.data(), end, &used);
      if (!failure.empty()) return failure;
      held = end - used;
      std::memmove(buffer.data(), buffer.data() + used, held);
    }
    if (held == 0) return "";
    if (!options_.lines) {
      return "the input ends " + std::to_string(held) + " bytes into a record of " +
             std::to_string(area_) + " bytes";
    }
    return addLine(buffer.data(), held);  // the last line had no newline
  }

  std::string drain(Writer* writer) {
    std::string failure;
    void* record = nullptr;
    for (;;) {
      if (sort_.getSorted(&record) != ZU_OK) return errors_->take();
      if (record == nullptr) break;
      const auto* bytes = static_cast<const unsigned char*>(record);
      bool ok;
      if (options_.lines) {
        ok = writer->put(bytes, lineLength(bytes)) && writer->put(&kNewline, 1);
      } else {
        ok = writer->put(bytes, area_);
      }
      if (!ok) return std::string("cannot write the output: ") + std::strerror(errno);
    }
    if (!writer->flush()) return std::string("cannot write the output: ") + std::strerror(errno);
    return "";
  }

  Stats stats() const {
    Stats s;
    s.records = records_;
    s.runs = sort_.runCount;
    s.blocks = sort_.bufferCount;
    // Every run, the last too, goes to the run file as whole blocks.
    s.spilledBytes = std::uint64_t{sort_.runCount} * sort_.bufferCount * sort_.recordsPerBuffer * sort_.recordSize;
    return s;
  }

  ZuSort* sort() { return &sort_; }

 private:
  unsigned lineLength(const unsigned char* record) const {
    unsigned length = 0;
    for (unsigned i = 0; i < kLengthBytes; ++i) length = (length << kByteBits) | record[area_ + i];
    return length;
  }

  std::string takeRecords(const char* bytes, std::size_t end, std::size_t* used) {
    std::size_t at = 0;
    for (; at + area_ <= end; at += area_) {
      if (sort_.addRecord(const_cast<char*>(bytes + at)) != ZU_OK) return errors_->take();
      ++records_;
    }
    *used = at;
    return "";
  }

  std::string takeLines(const char* bytes, std::size_t end, std::size_t* used) {
    std::size_t at = 0;
    while (at < end) {
      const void* found = std::memchr(bytes + at, kNewline, end - at);
      if (found == nullptr) break;
      const std::size_t stop = static_cast<const char*>(found) - bytes;
      const std::string failure = addLine(bytes + at, stop - at);
      if (!failure.empty()) return failure;
      at = stop + 1;
    }
    *used = at;
    // Caught here, not at the end, so that the buffer always has room.
    if (end - at > area_) return tooLong();
    return "";
  }

  std::string tooLong() const {
    return "line " + std::to_string(records_ + 1) + " is longer than the record size of " +
           std::to_string(area_) + " bytes (raise --record-size)";
  }

  std::string addLine(const char* line, std::size_t length) {
    if (length > area_) return tooLong();
    void* slot = nullptr;
    if (sort_.nextSlot(&slot) != ZU_OK) return errors_->take();
    auto* record = static_cast<unsigned char*>(slot);
    std::memcpy(record, line, length);
    std::memset(record + length, 0, area_ - length);
    for (unsigned i = 0; i < kLengthBytes; ++i) {
      record[area_ + i] = static_cast<unsigned char>((length >> (kByteBits * (kLengthBytes - 1 - i))) & kByteMask);
    }
    ++records_;
    return "";
  }

  const Options& options_;
  ErrorScope* errors_;
  unsigned area_;  // the whole record, or with --lines the part before the length
  ZuSort sort_;
  std::uint64_t records_ = 0;
};

// Runs one sort from `source` to `drain`; "" or what went wrong.
std::string sortStream(const Options& options, const Source& source, const Drain& drain,
                       const std::function<bool()>& openOutput, Stats* stats) {
  ErrorScope errors;
  Run run(options, &errors);
  std::string failure = run.addKeys();
  if (!failure.empty()) return failure;
  {
    std::optional<MemoryCap> cap;
    if (options.memoryBlocks != 0) cap.emplace(run.sort(), options.memoryBlocks);
    failure = run.feed(source);
    // Opened only now, so that the output may be the input.
    if (failure.empty() && !openOutput()) failure = "cannot open the output: " + std::string(std::strerror(errno));
    Writer writer(drain);
    if (failure.empty()) failure = run.drain(&writer);
  }
  *stats = run.stats();
  return failure;
}

void printStats(const Stats& s, double seconds) {
  std::fprintf(stderr,
               "records  %llu\nruns     %u\nspilled  %llu bytes\nblocks   %u\nelapsed  %.3f s\n",
               static_cast<unsigned long long>(s.records), s.runs,
               static_cast<unsigned long long>(s.spilledBytes), s.blocks, seconds);
}

int runSort(const std::vector<std::string>& args) {
  Options options;
  const std::string complaint = parseOptions(args, &options);
  if (!complaint.empty()) return usageError(complaint);
  const auto started = std::chrono::steady_clock::now();

  int in = kStandardInput;
  if (!options.input.empty() && options.input != "-") {
    in = ::open(options.input.c_str(), O_RDONLY);
    if (in < 0) {
      std::fprintf(stderr, "zu sort: cannot open %s: %s\n", options.input.c_str(), std::strerror(errno));
      return kExitNo;
    }
  }
  int out = kStandardOutput;
  const auto openOutput = [&]() {
    if (options.output.empty()) return true;
    out = ::open(options.output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, kNewFileMode);
    return out >= 0;
  };
  Stats stats;
  const std::string failure = sortStream(
      options, [in](char* into, std::size_t room) { return readSome(in, into, room); },
      [&out](const char* bytes, std::size_t count) { return writeAll(out, bytes, count); }, openOutput,
      &stats);
  if (in != kStandardInput) ::close(in);
  const bool closed = out == kStandardOutput || ::close(out) == 0;
  if (!failure.empty() || !closed) {
    std::fprintf(stderr, "zu sort: %s\n", failure.empty() ? std::strerror(errno) : failure.c_str());
    return kExitNo;
  }
  if (options.stats) {
    printStats(stats, std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count());
  }
  return kExitOk;
}

constexpr unsigned kDemoLines = 5000;
constexpr unsigned kDemoWordLength = 8;
constexpr unsigned kDemoShown = 3;
constexpr char kDemoRecordSize[] = "62";
constexpr char kDemoBlocks[] = "2";  // so that the words fill three runs
// Seeds the tour's words, so it prints the same each time.
constexpr std::uint32_t kDemoSeed = 12345;

void demoSort() {
  std::printf("== External sort\n");
  std::string text = demoWords(kDemoLines, kDemoWordLength, kDemoSeed);
  Options options;
  const std::string complaint =
      parseOptions({"--lines", "--record-size", kDemoRecordSize, "--memory", kDemoBlocks}, &options);
  std::size_t offered = 0;
  std::string sorted;
  Stats stats;
  const std::string failure = complaint.empty() ? sortStream(
      options,
      [&](char* into, std::size_t room) {
        const std::size_t n = std::min(room, text.size() - offered);
        std::memcpy(into, text.data() + offered, n);
        offered += n;
        return static_cast<long>(n);
      },
      [&](const char* bytes, std::size_t count) {
        sorted.append(bytes, count);
        return true;
      },
      [] { return true; }, &stats) : complaint;
  std::printf("%u random words, one per %u-byte record, memory held to %u blocks of 64 KiB\n", kDemoLines,
              options.recordSize + kLengthBytes, options.memoryBlocks);
  if (!failure.empty()) {
    std::printf("refused: %s\n", failure.c_str());
    return;
  }
  const std::vector<std::string> lines = split(sorted, kNewline);  // the last is empty
  std::printf("first:");
  for (unsigned i = 0; i < kDemoShown; ++i) std::printf(" %s", lines[i].c_str());
  std::printf("\nlast: ");
  for (unsigned i = kDemoShown; i > 0; --i) std::printf(" %s", lines[lines.size() - 1 - i].c_str());
  bool ordered = true;
  for (std::size_t i = 1; i + 1 < lines.size(); ++i) ordered &= lines[i - 1] <= lines[i];
  std::printf("\n%llu records, %u runs spilled (%llu bytes) and merged; in order: %s\n",
              static_cast<unsigned long long>(stats.records), stats.runs,
              static_cast<unsigned long long>(stats.spilledBytes), ordered ? "yes" : "no");
}

constexpr char kHelp[] =
    "usage: zu sort [OPTIONS] [INPUT|-]\n"
    "Sorts INPUT (standard input when none or -) into OUTPUT (standard output when none).\n"
    "  --record-size N   records of N bytes; with --lines the longest line (256 by default)\n"
    "  --lines           one record per line; lines come out as they went in, each ending\n"
    "                    in a newline; with no key in the order of LC_ALL=C sort\n"
    "  --key OFFSET:LENGTH[:TYPE][:desc][:empty]\n"
    "                    a key, most significant first; TYPE is bytes (unsigned, the\n"
    "                    default) or text (the collation, at most 512 bytes); desc\n"
    "                    reverses it; empty keeps values starting with a NUL first\n"
    "                    when descending. No key: the whole record or line. With\n"
    "                    --lines, lines equal on every key are ordered by their bytes\n"
    "  --memory BLOCKS   holds the sort to BLOCKS blocks of 64 KiB (2 to 64), or a size\n"
    "                    such as 256K or 4M: it then writes sorted runs to a temporary\n"
    "                    file as soon as those blocks are full, and merges them at the end\n"
    "  --stats           reports records, runs, bytes spilled, blocks and time to\n"
    "                    standard error\n"
    "  -o, --output FILE the output; it may be the input\n";

int runSortOrHelp(const std::vector<std::string>& args) { return helpOrRun(args, kHelp, runSort); }

Registration sortCommand({"sort", "[OPTIONS] [INPUT|-]",
                          "sort fixed-size records or lines by keys, spilling runs to a temporary "
                          "file (zu sort --help)",
                          runSortOrHelp, demoSort, 70});

}  // namespace
}  // namespace zutool

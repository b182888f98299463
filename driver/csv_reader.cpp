#include "csv_reader.h"

#include <zuutl.h>

#include "call_scope.h"

namespace zucsv {
namespace {

constexpr std::size_t kWindowSize = 64 * 1024;
constexpr std::size_t kRandomWindowSize = 512;
constexpr int kEndOfFile = -1;
constexpr int kReadFailed = -2;

}  // namespace

CsvReader::CsvReader(void* pageCache, unsigned char delimiter)
    : fillSize_(kWindowSize), cache_(pageCache), delimiter_(delimiter) {}

CsvReader::~CsvReader() { close(); }

bool CsvReader::open(const std::string& dosPath, const std::string& shownName) {
  close();
  std::vector<unsigned char> name(dosPath.begin(), dosPath.end());
  name.resize(name.size() < 256 ? 256 : name.size() + 1, 0);
  int handle = 0;
  if (bosFileOpen(name.data(), 0, &handle) != ZU_OK) return false;
  file_ = handle;
  name_ = shownName;
  loaded_ = false;
  rewind();
  return true;
}

void CsvReader::close() {
  if (file_ > 0) bvmFileClose(cache_, file_);
  file_ = 0;
  loaded_ = false;
}

bool CsvReader::fill(std::uint32_t offset, std::size_t size) {
  window_.resize(size);
  std::uint32_t got = 0;
  if (bvmFileRead(cache_, file_, static_cast<std::int32_t>(offset), window_.data(),
                  static_cast<std::uint32_t>(size), &got, VM_HINT_NORMAL) != ZU_OK) {
    loaded_ = false;
    return false;
  }
  window_.resize(got);
  windowStart_ = offset;
  atEnd_ = got < size;
  loaded_ = true;
  return true;
}

int CsvReader::byteAt(std::uint32_t at, std::uint32_t recordStart) {
  if (loaded_ && at >= windowStart_ && at - windowStart_ < window_.size()) return window_[at - windowStart_];
  if (loaded_ && atEnd_ && at >= windowStart_) return kEndOfFile;
  // A record longer than the window gets a window twice as long.
  std::size_t size = fillSize_;
  while (size <= at - recordStart) size *= 2;
  if (!fill(recordStart, size)) return kReadFailed;
  if (at - windowStart_ < window_.size()) return window_[at - windowStart_];
  return kEndOfFile;
}

CsvReader::Result CsvReader::parse(std::uint32_t offset, Row* row, std::uint32_t* next, std::uint32_t* lines) {
  row->bytes.clear();
  row->fields.clear();
  std::uint32_t at = offset;
  *lines = 0;
  int c = byteAt(at, at);
  // Blank lines before the record are no records.
  while (c == '\r' || c == '\n') {
    if (c == '\n') ++*lines;
    ++at;
    c = byteAt(at, at);
  }
  if (c == kReadFailed) return kError;
  if (c == kEndOfFile) {
    *next = at;
    return kEnd;
  }
  const std::uint32_t start = at;
  row->offset = start;
  const std::uint32_t firstLine = *lines;
  for (;;) {
    Field field;
    field.start = static_cast<std::uint32_t>(row->bytes.size());
    c = byteAt(at, start);
    if (c == '"') {
      field.null = false;
      for (;;) {
        c = byteAt(++at, start);
        if (c == kReadFailed) return kError;
        if (c == kEndOfFile) {
          driverError("HY000", "File '" + name_ + "', line " + std::to_string(line_ + firstLine) +
                                   ": a quoted field is not closed before the end of the file.");
          return kError;
        }
        if (c == '"') {
          if (byteAt(at + 1, start) != '"') break;
          ++at;
        } else if (c == '\n') {
          ++*lines;
        }
        row->bytes += static_cast<char>(c);
      }
      c = byteAt(++at, start);
      if (c != delimiter_ && c != '\r' && c != '\n' && c != kEndOfFile) {
        if (c == kReadFailed) return kError;
        driverError("HY000", "File '" + name_ + "', line " + std::to_string(line_ + *lines) +
                                 ": text follows the closing quote of a field.");
        return kError;
      }
    } else {
      while (c != delimiter_ && c != '\r' && c != '\n' && c >= 0) {
        row->bytes += static_cast<char>(c);
        c = byteAt(++at, start);
      }
      if (c == kReadFailed) return kError;
      field.null = row->bytes.size() == field.start;
    }
    field.length = static_cast<std::uint32_t>(row->bytes.size()) - field.start;
    row->fields.push_back(field);
    if (c == delimiter_) {
      ++at;
      continue;
    }
    if (c == '\r') {
      if (byteAt(++at, start) == '\n') ++at;
      ++*lines;
    } else if (c == '\n') {
      ++at;
      ++*lines;
    }
    break;
  }
  row->line = line_ + firstLine;
  *next = at;
  return kRow;
}

CsvReader::Result CsvReader::readAt(std::uint32_t offset, Row* row, std::uint32_t* next) {
  const std::uint32_t savedLine = line_;
  line_ = 0;
  std::uint32_t lines = 0;
  fillSize_ = kRandomWindowSize;
  const Result result = parse(offset, row, next, &lines);
  fillSize_ = kWindowSize;
  line_ = savedLine;
  row->line = 0;
  return result;
}

CsvReader::Result CsvReader::next(Row* row) {
  std::uint32_t after = 0;
  std::uint32_t lines = 0;
  const Result result = parse(position_, row, &after, &lines);
  if (result == kError) return kError;
  position_ = after;
  line_ += lines;
  return result;
}

}  // namespace zucsv

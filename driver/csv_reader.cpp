#include "csv_reader.h"

#include <zuutl.h>

#include <algorithm>
#include <cstring>

#include "byte_scan.h"
#include "call_scope.h"

namespace zucsv {
namespace {

constexpr std::size_t kWindowSize = 64 * 1024;
constexpr std::size_t kRandomWindowSize = 512;

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

CsvReader::Step CsvReader::scan(std::uint32_t offset, Row* row, std::uint32_t* next, std::uint32_t* lines) {
  row->bytes.clear();
  row->fields.clear();
  *lines = 0;
  const unsigned char* const begin = window_.data();
  const unsigned char* const end = begin + window_.size();
  const unsigned char* p = begin + (offset - windowStart_);
  const auto offsetOf = [&](const unsigned char* at) {
    return windowStart_ + static_cast<std::uint32_t>(at - begin);
  };
  // Blank lines before the record are no records.
  while (p < end && (*p == '\r' || *p == '\n')) {
    if (*p == '\n') ++*lines;
    ++p;
  }
  if (p == end) {
    if (!atEnd_) return kShort;
    *next = offsetOf(p);
    return kStepEnd;
  }
  row->offset = offsetOf(p);
  const std::uint32_t firstLine = *lines;
  for (;;) {
    Field field;
    field.start = static_cast<std::uint32_t>(row->bytes.size());
    if (p < end && *p == '"') {
      field.null = false;
      ++p;
      for (;;) {
        const auto* quote = static_cast<const unsigned char*>(std::memchr(p, '"', static_cast<std::size_t>(end - p)));
        if (quote == nullptr) {
          if (!atEnd_) return kShort;
          driverError("HY000", "File '" + name_ + "', line " + std::to_string(line_ + firstLine) +
                                   ": a quoted field is not closed before the end of the file.");
          return kStepError;
        }
        // Whether a quote is doubled shows only in the byte after it.
        if (quote + 1 == end && !atEnd_) return kShort;
        *lines += static_cast<std::uint32_t>(std::count(p, quote, '\n'));
        row->bytes.append(reinterpret_cast<const char*>(p), static_cast<std::size_t>(quote - p));
        if (quote + 1 < end && quote[1] == '"') {
          row->bytes += '"';
          p = quote + 2;
          continue;
        }
        p = quote + 1;
        break;
      }
      if (p == end) {
        if (!atEnd_) return kShort;
      } else if (*p != delimiter_ && *p != '\r' && *p != '\n') {
        driverError("HY000", "File '" + name_ + "', line " + std::to_string(line_ + *lines) +
                                 ": text follows the closing quote of a field.");
        return kStepError;
      }
    } else {
      const unsigned char* stop = p + findAnyOf3(p, static_cast<std::size_t>(end - p), delimiter_, '\r', '\n');
      if (stop == end && !atEnd_) return kShort;
      row->bytes.append(reinterpret_cast<const char*>(p), static_cast<std::size_t>(stop - p));
      field.null = stop == p;
      p = stop;
    }
    field.length = static_cast<std::uint32_t>(row->bytes.size()) - field.start;
    row->fields.push_back(field);
    if (p < end && *p == delimiter_) {
      ++p;
      continue;
    }
    if (p < end && *p == '\r') {
      if (++p == end && !atEnd_) return kShort;
      if (p < end && *p == '\n') ++p;
      ++*lines;
    } else if (p < end && *p == '\n') {
      ++p;
      ++*lines;
    }
    break;
  }
  row->line = line_ + firstLine;
  *next = offsetOf(p);
  return kStepRow;
}

CsvReader::Result CsvReader::parse(std::uint32_t offset, Row* row, std::uint32_t* next, std::uint32_t* lines) {
  const bool held = loaded_ && offset >= windowStart_ &&
                    (offset - windowStart_ < window_.size() || (atEnd_ && offset - windowStart_ == window_.size()));
  if (!held && !fill(offset, fillSize_)) return kError;
  for (;;) {
    switch (scan(offset, row, next, lines)) {
      case kStepRow: return kRow;
      case kStepEnd: return kEnd;
      case kStepError: return kError;
      case kShort: break;
    }
    // The record runs past the window: a window from its start, twice as
    // long as needed so far if the usual size does not reach further.
    const std::size_t seen = window_.size() - (offset - windowStart_);
    std::size_t size = fillSize_;
    while (size <= seen) size *= 2;
    if (!fill(offset, size)) return kError;
  }
}

CsvReader::Result CsvReader::readAt(std::uint32_t offset, Row* row, std::uint32_t* next, bool readingOn) {
  const std::uint32_t savedLine = line_;
  line_ = 0;
  std::uint32_t lines = 0;
  fillSize_ = readingOn ? kWindowSize : kRandomWindowSize;
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

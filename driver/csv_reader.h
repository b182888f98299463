// Records of a CSV file, read through the task's bvm page cache. Fields are
// split on the delimiter outside double quotes; a quoted field may hold the
// delimiter, line breaks and doubled quotes. An empty unquoted field is
// NULL, "" is an empty text. Blank lines between records are skipped; LF
// and CR LF both end a record.
#ifndef ZUCSV_CSV_READER_H
#define ZUCSV_CSV_READER_H

#include <cstdint>
#include <string>
#include <vector>

namespace zucsv {

struct Field {
  std::uint32_t start = 0;  // in Row::bytes
  std::uint32_t length = 0;
  bool null = true;
};

struct Row {
  std::string bytes;  // every field's unquoted bytes, one after another
  std::vector<Field> fields;
  std::uint32_t offset = 0;  // where the record starts in the file
  std::uint32_t line = 0;    // its first line, from 1; 0 when not known
};

// Invariants: the window holds the file's bytes [windowStart_,
// windowStart_ + window_.size()); atEnd_ says the window reaches the end of
// the file. The file is the reader's, closed with it.
class CsvReader {
 public:
  enum Result { kRow, kEnd, kError };
  CsvReader(void* pageCache, unsigned char delimiter);
  ~CsvReader();
  CsvReader(const CsvReader&) = delete;
  CsvReader& operator=(const CsvReader&) = delete;

  // `shownName` names the file in messages. false with the library's reason.
  bool open(const std::string& dosPath, const std::string& shownName);
  void close();
  // The record at `offset`; *next gets the offset after it. `readingOn`:
  // the records after it come next, so the read reaches far ahead.
  Result readAt(std::uint32_t offset, Row* row, std::uint32_t* next, bool readingOn);
  // The next record from the current position, counting lines.
  Result next(Row* row);
  void rewind() {
    position_ = 0;
    line_ = 1;
  }
  int file() const { return file_; }

 private:
  // kShort: the window ends inside the record and the file goes on.
  enum Step { kStepRow, kStepEnd, kStepError, kShort };
  bool fill(std::uint32_t offset, std::size_t size);
  // Parses the record at `offset`, which the window holds, from the window.
  Step scan(std::uint32_t offset, Row* row, std::uint32_t* next, std::uint32_t* lines);
  // Reads the window again from `offset` (doubled while the record is
  // longer) until scan sees the whole record.
  Result parse(std::uint32_t offset, Row* row, std::uint32_t* next, std::uint32_t* lines);
  // How much a refill reads: much for a sequential read, little for a
  // record fetched by its offset, which is most often alone.
  std::size_t fillSize_;

  void* cache_;
  unsigned char delimiter_;
  int file_ = 0;
  std::string name_;
  std::vector<unsigned char> window_;
  std::uint32_t windowStart_ = 0;
  bool atEnd_ = false;
  bool loaded_ = false;
  std::uint32_t position_ = 0;
  std::uint32_t line_ = 1;
};

}  // namespace zucsv

#endif

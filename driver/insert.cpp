#include "insert.h"

#include <zuutl.h>

#include "call_scope.h"
#include "error_mark.h"
#include "expr.h"
#include "table.h"

namespace zucsv {
namespace {

// The byte every appender locks: far past any data, so readers are never
// in its way.
constexpr std::uint32_t kAppendLockOffset = 0x7FFFFFF0u;
constexpr int kLockAttempts = 5000;
constexpr unsigned short kLockPauseMs = 2;

std::string field(const Value& v, unsigned char delimiter) {
  if (v.null) return std::string();
  bool quote = v.text.empty();
  for (char c : v.text) {
    if (c == '"' || c == '\r' || c == '\n' || static_cast<unsigned char>(c) == delimiter) quote = true;
  }
  if (!quote) return v.text;
  std::string out = "\"";
  for (char c : v.text) {
    out += c;
    if (c == '"') out += '"';
  }
  return out + "\"";
}

// The record's text: the values in column order, NULL where none is given.
bool recordText(const TableDef& table, const ParsedStatement& s, const std::vector<Value>& parameters,
                unsigned char delimiter, std::string* line) {
  std::vector<int> targets;
  if (s.items.empty()) {
    for (std::size_t i = 0; i < table.columns.size(); ++i) targets.push_back(static_cast<int>(i));
  } else {
    for (const ColumnRef& ref : s.items) targets.push_back(ref.column);
  }
  if (targets.size() != s.values.size()) {
    driverError("21S01", "Insert value list does not match column list: " + std::to_string(s.values.size()) +
                             " values for " + std::to_string(targets.size()) + " columns.");
    return false;
  }
  std::vector<Value> row(table.columns.size());
  for (std::size_t i = 0; i < targets.size(); ++i) {
    const Value& given = constantValue(*s.values[i], parameters);
    const ColumnDef& column = table.columns[static_cast<std::size_t>(targets[i])];
    Value checked;
    if (!given.null && !typedValue(reinterpret_cast<const unsigned char*>(given.text.data()), given.text.size(),
                                   column.type, &checked)) {
      driverError("22018", "Invalid character value for cast: '" + given.text + "' is not a " +
                               typeName(column.type) + " value for column '" + column.name + "'.");
      return false;
    }
    row[static_cast<std::size_t>(targets[i])] = given;
  }
  line->clear();
  for (std::size_t i = 0; i < row.size(); ++i) {
    if (i > 0) *line += static_cast<char>(delimiter);
    *line += field(row[i], delimiter);
  }
  *line += "\r\n";
  return true;
}

bool lockForAppend(int file) {
  for (int attempt = 0; attempt < kLockAttempts; ++attempt) {
    ErrorMark mark;
    if (bosRegionLock(file, 0, kAppendLockOffset, 1) == ZU_OK) return true;
    const std::string why = mark.take();
    if (attempt + 1 == kLockAttempts) {
      driverError("HYT00", "Timeout expired waiting for the append lock. " + why);
      return false;
    }
    bossleep(kLockPauseMs);
  }
  return false;
}

bool append(void* cache, const TableDef& table, const std::string& line) {
  std::vector<unsigned char> name(table.path.begin(), table.path.end());
  name.resize(name.size() < 256 ? 256 : name.size() + 1, 0);
  int file = 0;
  if (bosFileOpen(name.data(), ZU_OPEN_WRITE, &file) != ZU_OK) return false;
  bool done = lockForAppend(file);
  if (done) {
    const std::uint32_t size = bosFileSeek(file, 0, 2);
    std::string text = line;
    unsigned char last = '\n';
    std::uint32_t got = 0;
    // A file whose last record has no line end gets one first.
    if (size > 0 && bosFileRead(file, static_cast<std::int32_t>(size - 1), &last, 1, &got) == ZU_OK && got == 1 &&
        last != '\n') {
      text = "\r\n" + text;
    }
    done = size != 0xFFFFFFFFu &&
           bvmFileWrite(cache, file, static_cast<std::int32_t>(size), text.data(),
                        static_cast<std::uint32_t>(text.size())) == ZU_OK;
    bosRegionLock(file, 1, kAppendLockOffset, 1);
  }
  bvmFileClose(cache, file);
  return done;
}

}  // namespace

bool executeInsert(void* pageCache, const ConnectOptions& options, ParsedStatement* statement,
                   const std::vector<Value>& parameters) {
  TableDef table;
  std::string line;
  {
    CsvReader reader(pageCache, options.delimiter);
    if (!openTable(options, statement->table, &table, &reader)) return false;
  }
  if (!bindStatement(statement, table)) return false;
  if (!recordText(table, *statement, parameters, options.delimiter, &line)) return false;
  return append(pageCache, table, line);
}

}  // namespace zucsv

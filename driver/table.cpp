#include "table.h"

#include <zuutl.h>

#include "call_scope.h"
#include "error_mark.h"
#include "schema.h"

namespace zucsv {
namespace {

const unsigned char* bytes(const std::string& s) { return reinterpret_cast<const unsigned char*>(s.c_str()); }

std::string fieldText(const Row& row, std::size_t i) {
  return row.bytes.substr(row.fields[i].start, row.fields[i].length);
}

}  // namespace

bool openTable(const ConnectOptions& options, const std::string& table, TableDef* def, CsvReader* reader) {
  if (!tableFileName(table, &def->fileName)) return false;
  def->name = table;
  def->path = options.directory + "\\" + def->fileName;
  Schema schema;
  if (!readSchema(options.directory, def->fileName, &schema)) return false;
  def->header = schema.hasHeader ? schema.header : options.header;
  ErrorMark mark;
  if (!reader->open(def->path, def->fileName)) {
    // The library's words on the failed open go into the driver's record,
    // which comes first so that clients see its state.
    const std::string why = mark.take();
    ErrorMark probe;
    const bool missing = bosexist(bytes(def->path)) == 0;
    probe.take();
    driverError(missing ? "42S02" : "HY000",
                (missing ? "Table '" + table + "' not found in '" + options.directory + "'." : std::string()) +
                    (why.empty() ? std::string() : (missing ? " " : "") + why));
    return false;
  }
  def->columns = schema.columns;
  if (!def->header && !def->columns.empty()) return true;
  Row first;
  const CsvReader::Result got = reader->next(&first);
  if (got == CsvReader::kError) return false;
  if (def->columns.empty()) {
    for (std::size_t i = 0; got == CsvReader::kRow && i < first.fields.size(); ++i) {
      ColumnDef column;
      column.name = def->header ? fieldText(first, i) : "F" + std::to_string(i + 1);
      def->columns.push_back(column);
    }
    if (def->columns.empty()) {
      driverError("HY000", "File '" + def->fileName + "' is empty: it names no column.");
      return false;
    }
  }
  if (!def->header) reader->rewind();
  return true;
}

}  // namespace zucsv

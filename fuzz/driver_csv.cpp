// The CSV driver's reader on arbitrary file contents, read as a table with
// and without a header row: through a plain SELECT, and through SELECT
// DISTINCT ... ORDER BY, which sorts and filters what it reads. Every run
// ends in the end of the rows or a failure with a reason, never a crash.
#include <zuutl.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "select_cursor.h"

namespace {

using namespace zucsv;

struct Setting {
  void* cache = nullptr;
  std::string directory;
  std::string table;
};

// One temporary file, rewritten for every input.
Setting& setting() {
  static Setting s = [] {
    Setting made;
    mdsPerTaskInit();
    mdsPerThreadInit();
    ZuErrorList list;
    ZuErrorKeeper::setErrorList(&list);
    made.cache = bvmInit(8);
    unsigned char name[256] = "";
    int file = 0;
    if (made.cache == nullptr || bosFileOpen(name, ZU_OPEN_TEMP | ZU_OPEN_WRITE, &file) != ZU_OK) std::abort();
    bosFileClose(file);
    const std::string path(reinterpret_cast<const char*>(name));
    const std::size_t slash = path.rfind('\\');
    made.directory = path.substr(0, slash);
    made.table = path.substr(slash + 1);
    ZuErrorKeeper::giveUpErrorList();
    return made;
  }();
  return s;
}

void clear(ZuErrorList& list) {
  while (ZuError* e = list.removeFirstError()) {
    if (e->isStatic() == 0) delete e;
  }
}

void runQuery(const Setting& s, bool header, const std::string& sql, ZuErrorList& list) {
  ConnectOptions options;
  options.directory = s.directory;
  options.header = header;
  ParsedStatement statement;
  if (!parseSql(sql, &statement)) std::abort();  // the queries here are well formed
  SelectCursor cursor(s.cache, options.delimiter, statement, {});
  if (cursor.open(options, &statement)) {
    std::vector<Value> values;
    CsvReader::Result got;
    while ((got = cursor.fetch(&values)) == CsvReader::kRow) {
      if (values.size() != cursor.columns.size()) std::abort();
    }
    if (got == CsvReader::kError && list.getLastError() == nullptr) std::abort();
  } else if (list.getLastError() == nullptr) {
    std::abort();
  }
  clear(list);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Setting& s = setting();
  mdsPerThreadInit();
  {
    ZuErrorList list;
    ZuErrorKeeper::setErrorList(&list);
    std::string path = s.directory + "\\" + s.table;
    unsigned char name[256] = "";
    std::memcpy(name, path.c_str(), path.size() + 1);
    int file = 0;
    if (bosFileOpen(name, ZU_OPEN_CREATE, &file) == ZU_OK) {
      if (size > 0) bvmFileWrite(s.cache, file, 0, data, static_cast<std::uint32_t>(size));
      bvmFileClose(s.cache, file);
      // The table's name has a dot, so it is quoted as a name.
      runQuery(s, true, "SELECT * FROM \"" + s.table + "\"", list);
      runQuery(s, false, "SELECT DISTINCT * FROM \"" + s.table + "\" ORDER BY F1 DESC, F1", list);
    }
    ZuErrorKeeper::giveUpErrorList();
    clear(list);
  }
  mdsPerThreadTerm();
  return 0;
}

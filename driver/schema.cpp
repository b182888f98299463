#include "schema.h"

#include <zuutl.h>

#include "call_scope.h"

namespace zucsv {
namespace {

constexpr const char* kSchemaFile = "SCHEMA.INI";
constexpr unsigned short kEntrySize = 512;
constexpr const char* kMissing = "\n";

const unsigned char* bytes(const std::string& s) { return reinterpret_cast<const unsigned char*>(s.c_str()); }

bool sameWord(const std::string& a, const char* b) {
  return strCompareCi(bytes(a), reinterpret_cast<const unsigned char*>(b)) == 0;
}

bool typeOf(const std::string& word, ColumnType* type) {
  if (sameWord(word, "Text") || sameWord(word, "Char") || sameWord(word, "Varchar")) {
    *type = ColumnType::kText;
  } else if (sameWord(word, "Integer") || sameWord(word, "Long") || sameWord(word, "Short") ||
             sameWord(word, "Int")) {
    *type = ColumnType::kInteger;
  } else if (sameWord(word, "Double") || sameWord(word, "Float") || sameWord(word, "Single") ||
             sameWord(word, "Real")) {
    *type = ColumnType::kDouble;
  } else if (sameWord(word, "Date")) {
    *type = ColumnType::kDate;
  } else {
    return false;
  }
  return true;
}

std::string read(ZuIni& ini, const std::string& section, const std::string& entry) {
  unsigned char buffer[kEntrySize];
  ini.getEntry(bytes(section), bytes(entry), buffer, sizeof buffer, reinterpret_cast<const unsigned char*>(kMissing));
  return reinterpret_cast<const char*>(buffer);
}

}  // namespace

bool readSchema(const std::string& directory, const std::string& fileName, Schema* schema) {
  ZuIni ini;
  if (ini.open(bytes(directory + "\\" + kSchemaFile)) != ZU_OK) return false;
  const std::string header = read(ini, fileName, "ColNameHeader");
  if (header != kMissing) {
    schema->hasHeader = true;
    schema->header = isTrueStr(bytes(header)) != 0;
  }
  for (int i = 1;; ++i) {
    const std::string entry = "Col" + std::to_string(i);
    const std::string text = read(ini, fileName, entry);
    if (text == kMissing) break;
    // "name type", the name possibly in double quotes.
    ColumnDef column;
    std::size_t at = 0;
    if (!text.empty() && text[0] == '"') {
      const std::size_t close = text.find('"', 1);
      column.name = text.substr(1, close == std::string::npos ? std::string::npos : close - 1);
      at = close == std::string::npos ? text.size() : close + 1;
    } else {
      at = text.find_first_of(" \t");
      column.name = text.substr(0, at);
    }
    std::string type;
    if (at < text.size()) {
      const std::size_t from = text.find_first_not_of(" \t", at);
      if (from != std::string::npos) type = text.substr(from, text.find_first_of(" \t", from) - from);
    }
    if (!type.empty() && !typeOf(type, &column.type)) {
      driverError("HY000", "schema.ini, [" + fileName + "] " + entry + ": unknown type '" + type +
                               "' (Text, Integer, Double or Date).");
      return false;
    }
    schema->columns.push_back(column);
  }
  return true;
}

}  // namespace zucsv

#include "connect_options.h"

#include <zuutl.h>

#include <cstdlib>
#include <vector>

#include "call_scope.h"

namespace zucsv {
namespace {

const unsigned char* bytes(const char* s) { return reinterpret_cast<const unsigned char*>(s); }
const unsigned char* bytes(const std::string& s) { return bytes(s.c_str()); }

// The keywords the driver reads; every other attribute is left alone.
const char* const kKeywords[] = {"DBQ", "DELIMITER", "HEADER", "TRACE", "TRACEFILE"};
constexpr unsigned short kIniValueSize = 1024;

// The odbc.ini files a data source may be in, the user's first.
std::vector<std::string> iniFiles() {
  std::vector<std::string> files;
  if (const char* user = std::getenv("ODBCINI"); user != nullptr && *user != '\0') {
    files.emplace_back(user);
  } else if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') {
    files.push_back(std::string(home) + "/.odbc.ini");
  }
  const char* system = std::getenv("ODBCSYSINI");
  files.push_back(std::string(system != nullptr && *system != '\0' ? system : "/etc") + "/odbc.ini");
  return files;
}

// The data source's value of `keyword`, from the first file that has the
// section; false when none has it.
bool dataSourceEntry(const std::string& dsn, const char* keyword, std::string* value) {
  static const char kMissing[] = "\n";  // no entry can hold a line break
  for (const std::string& file : iniFiles()) {
    ZuIni ini;
    if (ini.open(bytes(file)) != ZU_OK) continue;
    unsigned char list[kIniValueSize];
    ini.getEntry(bytes(dsn), nullptr, list, sizeof list, nullptr);
    if (list[0] == '\0') continue;  // no such section here
    unsigned char buffer[kIniValueSize];
    ini.getEntry(bytes(dsn), bytes(keyword), buffer, sizeof buffer, bytes(kMissing));
    std::string got(reinterpret_cast<const char*>(buffer));
    if (got == kMissing) return false;
    *value = got;
    return true;
  }
  return false;
}

// A parsed value without its quotes.
std::string unquoted(const ZuSubString* value) {
  if (value == nullptr || value->length == 0) return std::string();
  const unsigned char first = value->bytes[0];
  if (first == '\'' || first == '"' || first == '`') {
    std::vector<unsigned char> out(value->length + 1);
    value->getCopyUnquoted(out.data());
    return std::string(reinterpret_cast<const char*>(out.data()));
  }
  return std::string(reinterpret_cast<const char*>(value->bytes), value->length);
}

bool readDelimiter(const std::string& text, unsigned char* delimiter) {
  if (text.empty()) return true;
  if (text.size() == 1) {
    *delimiter = static_cast<unsigned char>(text[0]);
    return true;
  }
  if (strCompareCi(bytes(text), bytes("TAB")) == 0 || text == "\\t") {
    *delimiter = '\t';
    return true;
  }
  driverError("HY000", "DELIMITER must be one byte or TAB, not '" + text + "'.");
  return false;
}

}  // namespace

std::string dosName(const std::string& name) {
  if (name.empty() || name[0] != '/') return name;
  std::string dos = "C:";
  for (char c : name) dos += c == '/' ? '\\' : c;
  while (dos.size() > 3 && dos.back() == '\\') dos.pop_back();
  return dos;
}

bool readConnectOptions(const std::string& connectString, ConnectOptions* options, std::string* dataSource) {
  ZuSubString text(bytes(connectString), static_cast<std::uint32_t>(connectString.size()));
  ZuValueParser parser(&text, ';', nullptr);
  if (parser.initialize() != ZU_OK) return false;
  *dataSource = unquoted(parser.getAttributeValue(bytes("DSN")));
  if (!dataSource->empty()) {
    for (const char* keyword : kKeywords) {
      std::string value;
      if (parser.isAttributeValue(bytes(keyword)) == 0 && dataSourceEntry(*dataSource, keyword, &value) &&
          parser.addAttribute(bytes(keyword), bytes(value), nullptr) != ZU_OK) {
        return false;
      }
    }
  }
  options->directory = dosName(unquoted(parser.getAttributeValue(bytes("DBQ"))));
  if (options->directory.empty()) {
    driverError("08001", "The connect string names no directory: DBQ is missing.");
    return false;
  }
  while (options->directory.size() > 3 && (options->directory.back() == '\\' || options->directory.back() == '/')) {
    options->directory.pop_back();
  }
  if (!readDelimiter(unquoted(parser.getAttributeValue(bytes("DELIMITER"))), &options->delimiter)) return false;
  const ZuSubString* header = parser.getAttributeValue(bytes("HEADER"));
  if (header != nullptr) options->header = isTrueStr(bytes(unquoted(header))) != 0;
  const ZuSubString* trace = parser.getAttributeValue(bytes("TRACE"));
  if (trace != nullptr) options->trace = isTrueStr(bytes(unquoted(trace))) != 0;
  options->traceFile = dosName(unquoted(parser.getAttributeValue(bytes("TRACEFILE"))));
  return true;
}

}  // namespace zucsv

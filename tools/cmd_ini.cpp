// zu ini FILE get SECTION ENTRY | set SECTION ENTRY VALUE | delete SECTION [ENTRY]
//        | list [SECTION]
// Reads and writes an INI file through ZuIni, the way a driver reads its
// data sources; FILE may be a host path ("$HOME/.odbc.ini") or a DOS name.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <zuutl.h>

#include "command.h"
#include "error_scope.h"

namespace zutool {
namespace {

// The most a ZuIni read can deliver: its buffer size is 16 bits.
constexpr unsigned short kBufferSize = 0xFFFF;
// No value can be a line break, so this default marks a missing entry.
constexpr const char* kMissing = "\n";
constexpr std::size_t kPathBuffer = 256;

const unsigned char* bytes(const std::string& s) { return reinterpret_cast<const unsigned char*>(s.c_str()); }
const unsigned char* bytes(const char* s) { return reinterpret_cast<const unsigned char*>(s); }

// The entry's value; false when it is not there.
bool readEntry(ZuIni& ini, const char* section, const char* entry, std::string* value) {
  std::vector<unsigned char> buffer(kBufferSize);
  ini.getEntry(bytes(section), bytes(entry), buffer.data(), kBufferSize, bytes(kMissing));
  *value = reinterpret_cast<const char*>(buffer.data());
  return *value != kMissing;
}

// The names of a list (sections, or the entries of one), in file order.
std::vector<std::string> readList(ZuIni& ini, const char* section) {
  std::vector<unsigned char> buffer(kBufferSize);
  ini.getEntry(bytes(section), nullptr, buffer.data(), kBufferSize, nullptr);
  std::vector<std::string> names;
  for (const unsigned char* at = buffer.data(); *at != '\0';
       at += std::strlen(reinterpret_cast<const char*>(at)) + 1) {
    names.emplace_back(reinterpret_cast<const char*>(at));
  }
  return names;
}

std::string trim(const std::string& s) {
  const char* blanks = " \t\n\v\f\r";
  const std::size_t first = s.find_first_not_of(blanks);
  return first == std::string::npos ? std::string() : s.substr(first, s.find_last_not_of(blanks) - first + 1);
}

int runIni(const std::vector<std::string>& args) {
  if (args.size() < 2) return usageError("ini needs FILE and get, set, delete or list");
  const std::string& verb = args[1];
  const std::size_t n = args.size() - 2;
  const bool fits = (verb == "get" && n == 2) || (verb == "set" && n == 3) ||
                    (verb == "delete" && (n == 1 || n == 2)) || (verb == "list" && n <= 1);
  if (!fits)
    return usageError(
        "ini FILE get SECTION ENTRY | set SECTION ENTRY VALUE | delete SECTION [ENTRY] | list [SECTION]");
  ErrorScope errors;
  ZuIni ini;
  if (ini.open(bytes(args[0])) != ZU_OK) {
    std::fprintf(stderr, "zu: %s\n", errors.take().c_str());
    return kExitNo;
  }
  const char* section = n >= 1 ? args[2].c_str() : nullptr;
  const char* entry = n >= 2 ? args[3].c_str() : nullptr;
  std::string value;
  if (verb == "get") {
    if (!readEntry(ini, section, entry, &value)) return kExitNo;
    std::printf("%s\n", value.c_str());
  } else if (verb == "set") {
    ini.writeEntry(bytes(section), bytes(entry), bytes(args[4]));
    // ZuIni does not report a refused write; reading back tells.
    if (!readEntry(ini, section, entry, &value) || value != trim(args[4])) {
      std::fprintf(stderr, "zu: the write to %s was refused\n", args[0].c_str());
      return kExitNo;
    }
  } else if (verb == "delete") {
    if (entry != nullptr) {
      ini.deleteEntry(bytes(section), bytes(entry));
    } else {
      ini.deleteSection(bytes(section));
    }
    const bool gone =
        entry != nullptr ? !readEntry(ini, section, entry, &value) : readList(ini, section).empty();
    if (!gone) {
      std::fprintf(stderr, "zu: the write to %s was refused\n", args[0].c_str());
      return kExitNo;
    }
  } else {
    const std::vector<std::string> names = readList(ini, section);
    for (const std::string& name : names) std::printf("%s\n", name.c_str());
    return names.empty() ? kExitNo : kExitOk;
  }
  return kExitOk;
}

void showFile(const unsigned char* name) {
  int handle = 0;
  char text[kPathBuffer * 4] = "";
  std::uint32_t got = 0;
  if (bosFileOpen(const_cast<unsigned char*>(name), 0, &handle) == ZU_OK) {
    bosFileRead(handle, 0, text, sizeof text - 1, &got);
    bosFileClose(handle);
  }
  for (const char* line = text; line < text + got;) {
    const char* end =
        static_cast<const char*>(std::memchr(line, '\n', static_cast<std::size_t>(text + got - line)));
    if (end == nullptr) end = text + got;
    std::printf("    | %.*s\n", static_cast<int>(end - line), line);
    line = end + 1;
  }
}

void demoIni() {
  std::printf("== INI files\n");
  ErrorScope errors;
  unsigned char name[kPathBuffer] = "";
  int handle = 0;
  if (bosFileOpen(name, ZU_OPEN_TEMP | ZU_OPEN_WRITE, &handle) != ZU_OK) {
    std::printf("no temporary file: %s\n", errors.take().c_str());
    return;
  }
  const char* existing = "; data sources of the tour\n[ODBC Data Sources]\nSales = Sales driver\n";
  bosFileWrite(handle, 0, existing, static_cast<std::uint32_t>(std::strlen(existing)));
  bosFileClose(handle);
  ZuIni ini;
  short port = 0;
  ini.getEntry(bytes("Sales"), bytes("Port"), &port, 0);
  std::printf("getEntry on a closed ZuIni: %s\n", errors.take().c_str());
  ini.open(name);
  ini.writeEntry(bytes("sales"), bytes("Driver"), bytes("/opt/zu/lib/libzusales.so"));
  ini.writeEntry(bytes("SALES"), bytes("Port"), bytes("  5432  "));
  ini.writeEntry(bytes("Sales"), bytes("Scratch"), bytes("to be deleted"));
  ini.deleteEntry(bytes("Sales"), bytes("scratch"));
  std::printf("%s after three writes and a delete (names without regard to case):\n", name);
  showFile(name);
  std::string value;
  readEntry(ini, "SALES", "driver", &value);
  ini.getEntry(bytes("Sales"), bytes("Port"), &port, 0);
  std::printf("Driver is \"%s\"; Port reads as the number %d\n", value.c_str(), port);
  std::printf("a missing entry gives the default: \"%s\"\n",
              readEntry(ini, "Sales", "Host", &value) ? value.c_str() : "(default)");
  ini.close();
  bosFileDelete(name);
}

Registration ini({"ini", "FILE get|set|delete|list ARGS",
                  "read or write INI entries as ZuIni does; exit 1 if not there", runIni,
                  demoIni, 80});

}  // namespace
}  // namespace zutool

// ZuIni and unixODBC's driver manager on one odbc.ini: what either writes,
// the other reads with the same values. Runs where odbcinst is installed
// (scripts/setup installs it), with ODBCSYSINI and ODBCINI pointed into the
// test's own directory.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "desktop/ini.h"
#include "support/dos_world.h"

namespace {

using zutest::u;

std::string lower(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

class Odbcinst : public zutest::DosWorld {
 protected:
  void SetUp() override {
    DosWorld::SetUp();
    if (std::system("command -v odbcinst >/dev/null 2>&1") != 0) GTEST_SKIP() << "unixODBC's odbcinst is not installed";
  }
  // Runs odbcinst on the test's files; its standard output, and its exit
  // status in `status`.
  std::string odbcinst(const std::string& arguments, int* status = nullptr) {
    const std::string command = "ODBCSYSINI='" + host("c") + "' ODBCINI='" + host("c/odbc.ini") + "' odbcinst " +
                                arguments + " 2>&1";
    std::string out;
    if (FILE* pipe = popen(command.c_str(), "r")) {
      char chunk[256];
      for (std::size_t n; (n = std::fread(chunk, 1, sizeof chunk, pipe)) > 0;) out.append(chunk, n);
      const int result = pclose(pipe);
      if (status != nullptr) *status = result;
    }
    return out;
  }
  static std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> all;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) all.push_back(line);
    return all;
  }
  std::string get(ZuIni& ini, const std::string& section, const char* entry) {
    unsigned char buffer[256];
    EXPECT_EQ(ini.getEntry(u(section), entry != nullptr ? u(entry) : nullptr, buffer, sizeof buffer, u("(none)")),
              ZU_OK);
    if (entry != nullptr) return reinterpret_cast<char*>(buffer);
    std::string names;  // a list, as "a|b|"
    for (const unsigned char* at = buffer; *at != '\0'; at += std::strlen(reinterpret_cast<const char*>(at)) + 1) {
      names += std::string(reinterpret_cast<const char*>(at)) + "|";
    }
    return names;
  }
};

using Source = std::map<std::string, std::string>;  // entry (lower case) -> value

TEST_F(Odbcinst, ADataSourceWrittenByZuIniIsListedAndReadByTheDriverManager) {
  writeHost("c/odbc.ini", "; data sources of the test\n");
  const std::map<std::string, Source> kSources = {
      {"Zu Sales", {{"driver", "/opt/zu/lib/libzusales.so"}, {"description", "Sales; east and west"},
                    {"port", "5432"}, {"server", "db1.example.com"}}},
      {"Zu Other", {{"driver", "zuother"}, {"option", ""}}},
  };
  ZuIni ini;
  ASSERT_EQ(ini.open(u("C:\\odbc.ini")), ZU_OK);
  for (const auto& [name, entries] : kSources) {
    for (const auto& [entry, value] : entries) {
      // Names in another case land in the same section and entry.
      const std::string section = entry == "server" ? lower(name) : name;
      ASSERT_EQ(ini.writeEntry(u(section), u(entry), u("  " + value)), ZU_OK);
    }
  }
  ASSERT_EQ(ini.writeEntry(u("Zu Sales"), u("Port"), u("6543")), ZU_OK);
  Source sales = kSources.at("Zu Sales");
  sales["port"] = "6543";

  int status = -1;
  EXPECT_EQ(lines(odbcinst("-q -s", &status)), (std::vector<std::string>{"[Zu Other]", "[Zu Sales]"}));
  EXPECT_EQ(status, 0);
  for (const auto& [name, want] : std::map<std::string, Source>{{"Zu Sales", sales}, {"Zu Other", kSources.at("Zu Other")}}) {
    const std::vector<std::string> shown = lines(odbcinst("-q -s -n '" + name + "'", &status));
    EXPECT_EQ(status, 0);
    ASSERT_FALSE(shown.empty());
    EXPECT_EQ(shown[0], "[" + name + "]");
    Source got;
    for (std::size_t i = 1; i < shown.size(); ++i) {
      const std::size_t eq = shown[i].find('=');
      if (eq != std::string::npos) got[lower(shown[i].substr(0, eq))] = shown[i].substr(eq + 1);
    }
    EXPECT_EQ(got, want) << name;
  }
}

TEST_F(Odbcinst, ADataSourceInstalledByTheDriverManagerReadsBackThroughZuIni) {
  writeHost("c/template.ini",
            "[Zu Orders]\nDriver = /opt/zu/lib/libzuorders.so\nDescription = Orders; all of them\n"
            "Timeout = 30\nOption =\n\n[Zu Empty]\nDriver=x\n");
  int status = -1;
  const std::string said = odbcinst("-i -s -f '" + host("c/template.ini") + "'", &status);
  ASSERT_EQ(status, 0) << said;
  ASSERT_TRUE(hostExists("c/odbc.ini"));
  ZuIni ini;
  ASSERT_EQ(ini.open(u("C:\\ODBC.INI")), ZU_OK);
  unsigned char buffer[256];
  ASSERT_EQ(ini.getEntry(nullptr, nullptr, buffer, sizeof buffer, nullptr), ZU_OK);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer)), "Zu Orders");
  EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer) + 10), "Zu Empty");
  EXPECT_EQ(get(ini, "zu orders", nullptr), "Driver|Description|Timeout|Option|");
  EXPECT_EQ(get(ini, "Zu Orders", "driver"), "/opt/zu/lib/libzuorders.so");
  EXPECT_EQ(get(ini, "Zu Orders", "Description"), "Orders; all of them");
  EXPECT_EQ(get(ini, "Zu Orders", "Option"), "");
  short timeout = 0;
  EXPECT_EQ(ini.getEntry(u("Zu Orders"), u("TIMEOUT"), &timeout, -1), ZU_OK);
  EXPECT_EQ(timeout, 30);
  EXPECT_EQ(get(ini, "Zu Empty", "Driver"), "x");
}

}  // namespace

// ZuIni and unixODBC's driver manager on one odbc.ini: what either writes,
// the other reads with the same values. Runs where odbcinst is installed
// (scripts/setup installs it), with ODBCSYSINI and ODBCINI pointed into the
// test's own directory.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
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

using Source = std::map<std::string, std::string>;  // entry (lower case) -> value

class Odbcinst : public zutest::DosWorld {
 protected:
  void SetUp() override {
    DosWorld::SetUp();
    if (std::system("command -v odbcinst >/dev/null 2>&1") != 0)
      GTEST_SKIP() << "unixODBC's odbcinst is not installed";
  }
  // The lines odbcinst prints for `arguments` on the test's files; it must succeed.
  std::vector<std::string> odbcinst(const std::string& arguments) {
    const std::string command =
        "ODBCSYSINI='" + host("c") + "' ODBCINI='" + host("c/odbc.ini") + "' odbcinst " + arguments + " 2>&1";
    std::vector<std::string> lines;
    FILE* pipe = popen(command.c_str(), "r");
    char line[512];
    while (pipe != nullptr && std::fgets(line, sizeof line, pipe) != nullptr)
      lines.emplace_back(line, std::strcspn(line, "\n"));
    EXPECT_TRUE(pipe != nullptr && pclose(pipe) == 0) << command;
    return lines;
  }
};

TEST_F(Odbcinst, ADataSourceWrittenByZuIniIsListedAndReadByTheDriverManager) {
  writeHost("c/odbc.ini", "; data sources of the test\n");
  std::map<std::string, Source> sources = {
      {"Zu Sales",
       {{"driver", "/opt/zu/lib/libzusales.so"}, {"description", "Sales; east and west"}, {"port", "5432"}}},
      {"Zu Other", {{"driver", "zuother"}, {"option", ""}}},
  };
  ZuIni ini;
  ASSERT_EQ(ini.open(u("C:\\odbc.ini")), ZU_OK);
  for (const auto& [name, entries] : sources) {
    for (const auto& [entry, value] : entries)
      ASSERT_EQ(ini.writeEntry(u(name), u(entry), u("  " + value)), ZU_OK);
  }
  // Names in another case land in the same section and entry.
  ASSERT_EQ(ini.writeEntry(u("ZU SALES"), u("Port"), u("6543")), ZU_OK);
  sources["Zu Sales"]["port"] = "6543";
  EXPECT_EQ(odbcinst("-q -s"), (std::vector<std::string>{"[Zu Other]", "[Zu Sales]"}));
  for (const auto& [name, want] : sources) {
    const std::vector<std::string> shown = odbcinst("-q -s -n '" + name + "'");
    ASSERT_FALSE(shown.empty());
    EXPECT_EQ(shown[0], "[" + name + "]");
    Source got;
    for (const std::string& line : shown) {
      if (line.find('=') != std::string::npos)
        got[lower(line.substr(0, line.find('=')))] = line.substr(line.find('=') + 1);
    }
    EXPECT_EQ(got, want) << name;
  }
}

TEST_F(Odbcinst, ADataSourceInstalledByTheDriverManagerReadsBackThroughZuIni) {
  writeHost("c/template.ini",
            "[Zu Orders]\nDriver = /opt/zu/lib/libzuorders.so\nDescription = Orders; all of them\n"
            "Timeout = 30\nOption =\n\n[Zu Empty]\nDriver=x\n");
  odbcinst("-i -s -f '" + host("c/template.ini") + "'");
  ZuIni ini;
  ASSERT_EQ(ini.open(u("C:\\ODBC.INI")), ZU_OK);
  unsigned char buffer[256];
  const auto read = [&](const char* section, const char* entry) {
    EXPECT_EQ(ini.getEntry(u(section), u(entry), buffer, sizeof buffer, u("(none)")), ZU_OK);
    std::string text(reinterpret_cast<char*>(buffer), sizeof buffer);
    return entry != nullptr ? text.substr(0, text.find('\0'))
                            : text.substr(0, text.find(std::string(2, '\0')));
  };
  EXPECT_EQ(read(nullptr, nullptr), std::string("Zu Orders\0Zu Empty", 18));
  EXPECT_EQ(read("zu orders", nullptr), std::string("Driver\0Description\0Timeout\0Option", 33));
  EXPECT_EQ(read("Zu Orders", "driver"), "/opt/zu/lib/libzuorders.so");
  EXPECT_EQ(read("Zu Orders", "Description"), "Orders; all of them");
  EXPECT_EQ(read("Zu Orders", "Option"), "");
  EXPECT_EQ(read("Zu Empty", "DRIVER"), "x");
  short timeout = 0;
  EXPECT_EQ(ini.getEntry(u("Zu Orders"), u("TIMEOUT"), &timeout, -1), ZU_OK);
  EXPECT_EQ(timeout, 30);
}

}  // namespace

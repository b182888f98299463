// What a connection is told: the directory of CSV files and how to read
// them, and whether to trace. Read from a connect string through the
// library's attribute parser, with a data source's entries in odbc.ini
// (through ZuIni) filling in what the string leaves out.
#ifndef ZUCSV_CONNECT_OPTIONS_H
#define ZUCSV_CONNECT_OPTIONS_H

#include <string>

namespace zucsv {

struct ConnectOptions {
  std::string directory;  // DBQ as a DOS name, without a final backslash
  unsigned char delimiter = ',';
  bool header = true;
  bool trace = false;
  std::string traceFile;  // a DOS name; empty: none
};

// false with the reason recorded (the parser's own words for a string that
// does not parse). `dataSource` receives the DSN named, if any.
bool readConnectOptions(const std::string& connectString, ConnectOptions* options, std::string* dataSource);

// A host path ("/srv/csv") as the DOS name the library's file functions
// take ("C:\srv\csv"); a DOS name is left as it is.
std::string dosName(const std::string& name);

}  // namespace zucsv

#endif

// Table names that cannot leave the directory. Checked before any file is
// opened: a name is one plain file name, so the directory is the only one
// it can be looked for in.
#include <zuutl.h>

#include "call_scope.h"
#include "table.h"

namespace zucsv {

bool tableFileName(const std::string& table, std::string* fileName) {
  bool plain = !table.empty() && table[0] != '.' && table.find("..") == std::string::npos;
  for (char c : table) {
    if (c == '/' || c == '\\' || c == ':' || static_cast<unsigned char>(c) < ' ') plain = false;
  }
  if (!plain) {
    driverError("42S02", "Table '" + table + "' is not a file name inside the data directory; only plain names are.");
    return false;
  }
  *fileName = table.find('.') == std::string::npos ? table + ".csv" : table;
  return true;
}

int TableDef::findColumn(const std::string& column) const {
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const std::string& name = columns[i].name;
    if (strCompareCi(reinterpret_cast<const unsigned char*>(name.data()), static_cast<std::uint32_t>(name.size()),
                     reinterpret_cast<const unsigned char*>(column.data()),
                     static_cast<std::uint32_t>(column.size())) == 0) {
      return static_cast<int>(i);
    }
  }
  return -1;
}

}  // namespace zucsv

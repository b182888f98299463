// schema.ini in the data directory: a section per file, with
// ColNameHeader=True|False and Col1=name type, Col2=..., the types being
// Text (Char), Integer (Long, Short), Double (Float, Single) and Date.
#ifndef ZUCSV_SCHEMA_H
#define ZUCSV_SCHEMA_H

#include <string>
#include <vector>

#include "value.h"

namespace zucsv {

struct Schema {
  bool hasHeader = false;  // ColNameHeader was given
  bool header = true;
  std::vector<ColumnDef> columns;  // empty: not described
};

// false, with the offending entry named, for a type it does not know.
bool readSchema(const std::string& directory, const std::string& fileName, Schema* schema);

}  // namespace zucsv

#endif

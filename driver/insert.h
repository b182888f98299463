// INSERT: one record appended to the table's file, under a region lock
// that every appender takes, so appends from several connections and
// processes follow one another and none is lost.
#ifndef ZUCSV_INSERT_H
#define ZUCSV_INSERT_H

#include <vector>

#include "connect_options.h"
#include "sql_ast.h"
#include "value.h"

namespace zucsv {

bool executeInsert(void* pageCache, const ConnectOptions& options, ParsedStatement* statement,
                   const std::vector<Value>& parameters);

}  // namespace zucsv

#endif

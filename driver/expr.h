// Conditions bound to a table and evaluated on its rows, in SQL's three
// values: a comparison with NULL is unknown, and WHERE keeps true rows only.
#ifndef ZUCSV_EXPR_H
#define ZUCSV_EXPR_H

#include <vector>

#include "csv_reader.h"
#include "sql_ast.h"
#include "table.h"

namespace zucsv {

enum class Truth { kFalse, kTrue, kUnknown };

// Resolves every column name of the statement; false with 42S22 naming the
// first unknown one and its offset.
bool bindStatement(ParsedStatement* statement, const TableDef& table);

// The row's field `column` as a value of the column's type; false (22018,
// naming file and line) when the text is not of that type.
bool columnValue(const TableDef& table, const Row& row, int column, Value* out);

// Evaluates `expr` on `row`; false when a field could not be read.
bool evaluate(const Expr& expr, const TableDef& table, const Row& row, const std::vector<Value>& parameters,
              Truth* out);

// The value of a literal or marker.
const Value& constantValue(const Expr& expr, const std::vector<Value>& parameters);

// Negative, 0 or positive; numbers before texts, numbers by value, texts
// and dates by their bytes. Neither may be null.
int compareValues(const Value& a, const Value& b);

}  // namespace zucsv

#endif

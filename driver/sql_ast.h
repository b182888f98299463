// A parsed statement: SELECT or INSERT, with names as written and, once
// bound to a table, column indexes.
#ifndef ZUCSV_SQL_AST_H
#define ZUCSV_SQL_AST_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "value.h"

namespace zucsv {

enum class ExprKind { kColumn, kLiteral, kParameter, kCompare, kLike, kIsNull, kAnd, kOr, kNot };

// Comparison operators.
enum class CompareOp { kEqual, kNotEqual, kLess, kGreater, kLessEqual, kGreaterEqual };

struct Expr {
  ExprKind kind = ExprKind::kLiteral;
  std::uint32_t offset = 0;  // of its first token in the statement text
  std::string name;          // kColumn
  int column = -1;           // kColumn, once bound
  Value literal;             // kLiteral; a null value for NULL
  int parameter = -1;        // kParameter, from 0
  CompareOp op = CompareOp::kEqual;
  bool negated = false;      // NOT LIKE, IS NOT NULL
  std::unique_ptr<Expr> left, right, escape;
};

struct ColumnRef {
  std::string name;
  std::uint32_t offset = 0;
  int column = -1;
  bool descending = false;  // ORDER BY only
};

struct ParsedStatement {
  enum Kind { kSelect, kInsert } kind = kSelect;
  bool distinct = false;
  bool star = false;
  std::vector<ColumnRef> items;  // SELECT list, or INSERT's column list
  std::string table;
  std::uint32_t tableOffset = 0;
  std::unique_ptr<Expr> where;
  std::vector<ColumnRef> order;
  std::vector<std::unique_ptr<Expr>> values;  // INSERT: literals and markers
  int parameterCount = 0;
};

// false with 42000 and the offset of the token at fault.
bool parseSql(const std::string& text, ParsedStatement* out);

}  // namespace zucsv

#endif

#include "expr.h"

#include <zuutl.h>

#include <string_view>

#include "call_scope.h"

namespace zucsv {
namespace {

bool bindColumn(const TableDef& table, const std::string& name, std::uint32_t offset, int* column) {
  *column = table.findColumn(name);
  if (*column >= 0) return true;
  driverError("42S22", "Column '" + name + "' (offset " + std::to_string(offset) + ") not found in table '" +
                           table.name + "'.");
  return false;
}

bool bindExpr(Expr* e, const TableDef& table) {
  if (e == nullptr) return true;
  if (e->kind == ExprKind::kColumn && !bindColumn(table, e->name, e->offset, &e->column)) return false;
  return bindExpr(e->left.get(), table) && bindExpr(e->right.get(), table) && bindExpr(e->escape.get(), table);
}

bool isNumber(const Value& v) { return v.type == ColumnType::kInteger || v.type == ColumnType::kDouble; }

// A text read as a number where the other side is one, as a column of a
// numeric type gives its affinity to what it is compared with.
Value asNumberIfCan(const Value& v) {
  Value n;
  if (typedValue(reinterpret_cast<const unsigned char*>(v.text.data()), v.text.size(), ColumnType::kInteger, &n)) {
    return n;
  }
  if (typedValue(reinterpret_cast<const unsigned char*>(v.text.data()), v.text.size(), ColumnType::kDouble, &n)) {
    return n;
  }
  return v;
}

bool operandValue(const Expr& e, const TableDef& table, const Row& row, const std::vector<Value>& parameters,
                  Value* out) {
  if (e.kind == ExprKind::kColumn) return columnValue(table, row, e.column, out);
  *out = constantValue(e, parameters);
  return true;
}

// An operand of LIKE as its text, without a copy where it can be had in
// place: a text column's field in the row, a literal's or marker's own text.
// Columns of other types are read as their type first (and may fail so).
struct LikeOperand {
  bool null = true;
  std::string_view text;
  Value scratch;
};

bool likeOperand(const Expr& e, const TableDef& table, const Row& row, const std::vector<Value>& parameters,
                 LikeOperand* out) {
  if (e.kind != ExprKind::kColumn) {
    const Value& v = constantValue(e, parameters);
    out->null = v.null;
    out->text = v.text;
    return true;
  }
  const auto column = static_cast<std::size_t>(e.column);
  if (table.columns[column].type == ColumnType::kText) {
    const Field& field = row.fields[column];
    out->null = field.null;
    out->text = std::string_view(row.bytes.data() + field.start, field.length);
    return true;
  }
  if (!columnValue(table, row, e.column, &out->scratch)) return false;
  out->null = out->scratch.null;
  out->text = out->scratch.text;
  return true;
}

Truth fromBool(bool b) { return b ? Truth::kTrue : Truth::kFalse; }

bool compareOp(CompareOp op, int c) {
  switch (op) {
    case CompareOp::kEqual: return c == 0;
    case CompareOp::kNotEqual: return c != 0;
    case CompareOp::kLess: return c < 0;
    case CompareOp::kGreater: return c > 0;
    case CompareOp::kLessEqual: return c <= 0;
    case CompareOp::kGreaterEqual: return c >= 0;
  }
  return false;
}

}  // namespace

bool bindStatement(ParsedStatement* s, const TableDef& table) {
  for (ColumnRef& ref : s->items) {
    if (!bindColumn(table, ref.name, ref.offset, &ref.column)) return false;
  }
  for (ColumnRef& ref : s->order) {
    if (!bindColumn(table, ref.name, ref.offset, &ref.column)) return false;
  }
  return bindExpr(s->where.get(), table);
}

bool columnValue(const TableDef& table, const Row& row, int column, Value* out) {
  const Field& field = row.fields[static_cast<std::size_t>(column)];
  const ColumnType type = table.columns[static_cast<std::size_t>(column)].type;
  if (field.null) {
    *out = Value();
    out->type = type;
    return true;
  }
  const auto* bytes = reinterpret_cast<const unsigned char*>(row.bytes.data()) + field.start;
  if (typedValue(bytes, field.length, type, out)) return true;
  driverError("22018", "File '" + table.fileName + "'" +
                           (row.line != 0 ? ", line " + std::to_string(row.line) : std::string()) + ": '" +
                           out->text + "' in column '" + table.columns[static_cast<std::size_t>(column)].name +
                           "' is not a " + typeName(type) + " value.");
  return false;
}

const Value& constantValue(const Expr& e, const std::vector<Value>& parameters) {
  if (e.kind == ExprKind::kParameter) return parameters[static_cast<std::size_t>(e.parameter)];
  return e.literal;
}

int compareValues(const Value& a, const Value& b) {
  Value x = a;
  Value y = b;
  if (isNumber(x) && !isNumber(y)) y = asNumberIfCan(y);
  if (isNumber(y) && !isNumber(x)) x = asNumberIfCan(x);
  if (isNumber(x) != isNumber(y)) return isNumber(x) ? -1 : 1;
  if (isNumber(x)) {
    if (x.type == ColumnType::kInteger && y.type == ColumnType::kInteger) {
      return x.integer < y.integer ? -1 : x.integer > y.integer ? 1 : 0;
    }
    return x.real < y.real ? -1 : x.real > y.real ? 1 : 0;
  }
  return strCompare(reinterpret_cast<const unsigned char*>(x.text.data()), static_cast<std::uint32_t>(x.text.size()),
                    reinterpret_cast<const unsigned char*>(y.text.data()), static_cast<std::uint32_t>(y.text.size()));
}

bool evaluate(const Expr& e, const TableDef& table, const Row& row, const std::vector<Value>& parameters,
              Truth* out) {
  switch (e.kind) {
    case ExprKind::kAnd:
    case ExprKind::kOr: {
      Truth l, r;
      if (!evaluate(*e.left, table, row, parameters, &l)) return false;
      const Truth decided = e.kind == ExprKind::kAnd ? Truth::kFalse : Truth::kTrue;
      if (l == decided) {
        *out = decided;
        return true;
      }
      if (!evaluate(*e.right, table, row, parameters, &r)) return false;
      if (r == decided) *out = decided;
      else if (l == Truth::kUnknown || r == Truth::kUnknown) *out = Truth::kUnknown;
      else *out = l;
      return true;
    }
    case ExprKind::kNot: {
      Truth inner;
      if (!evaluate(*e.left, table, row, parameters, &inner)) return false;
      *out = inner == Truth::kUnknown ? inner : inner == Truth::kTrue ? Truth::kFalse : Truth::kTrue;
      return true;
    }
    case ExprKind::kIsNull: {
      Value v;
      if (!operandValue(*e.left, table, row, parameters, &v)) return false;
      *out = fromBool(v.null != e.negated);
      return true;
    }
    case ExprKind::kCompare: {
      Value a, b;
      if (!operandValue(*e.left, table, row, parameters, &a) || !operandValue(*e.right, table, row, parameters, &b)) {
        return false;
      }
      *out = a.null || b.null ? Truth::kUnknown : fromBool(compareOp(e.op, compareValues(a, b)));
      return true;
    }
    case ExprKind::kLike: {
      LikeOperand text, pattern, escape;
      if (!likeOperand(*e.left, table, row, parameters, &text) ||
          !likeOperand(*e.right, table, row, parameters, &pattern)) {
        return false;
      }
      unsigned char escapeByte = 0;
      if (e.escape) {
        if (!likeOperand(*e.escape, table, row, parameters, &escape)) return false;
        if (escape.null) {
          *out = Truth::kUnknown;
          return true;
        }
        if (escape.text.size() != 1) {
          driverError("22019", "Invalid escape character: ESCAPE takes one character, not '" +
                                   std::string(escape.text) + "'.");
          return false;
        }
        escapeByte = static_cast<unsigned char>(escape.text[0]);
      }
      if (text.null || pattern.null) {
        *out = Truth::kUnknown;
        return true;
      }
      const unsigned match = strLike(reinterpret_cast<const unsigned char*>(text.text.data()),
                                     static_cast<std::uint32_t>(text.text.size()),
                                     reinterpret_cast<const unsigned char*>(pattern.text.data()),
                                     static_cast<std::uint32_t>(pattern.text.size()), '%', '_', escapeByte, 0);
      *out = fromBool((match != 0) != e.negated);
      return true;
    }
    default: {
      // A bare operand as a condition: true when it is not null.
      Value v;
      if (!operandValue(e, table, row, parameters, &v)) return false;
      *out = v.null ? Truth::kUnknown : Truth::kTrue;
      return true;
    }
  }
}

}  // namespace zucsv

#include "select_cursor.h"

#include "call_scope.h"
#include "expr.h"

namespace zucsv {

SelectCursor::SelectCursor(void* pageCache, unsigned char delimiter, const ParsedStatement& statement,
                           std::vector<Value> parameters)
    : reader_(pageCache, delimiter), statement_(statement), parameters_(std::move(parameters)) {}

bool SelectCursor::open(const ConnectOptions& options, ParsedStatement* statement) {
  if (!openTable(options, statement->table, &table_, &reader_)) return false;
  if (!bindStatement(statement, table_)) return false;
  if (statement->star) {
    for (std::size_t i = 0; i < table_.columns.size(); ++i) projection_.push_back(static_cast<int>(i));
  } else {
    for (const ColumnRef& ref : statement->items) projection_.push_back(ref.column);
  }
  for (int column : projection_) {
    columns.push_back(describeColumn(table_.name, table_.columns[static_cast<std::size_t>(column)]));
  }
  if (statement->distinct) distinct_ = std::make_unique<DistinctFilter>();
  if (!statement->order.empty()) {
    order_ = std::make_unique<RowOrder>();
    if (!order_->build(&reader_, table_, statement->order, projection_,
                       [this](const Row& row, bool* keep) { return accept(row, keep); })) {
      return false;
    }
  }
  return true;
}

bool SelectCursor::accept(const Row& row, bool* keep) {
  if (row.fields.size() != table_.columns.size()) {
    driverError("HY000", "File '" + table_.fileName + "', line " + std::to_string(row.line) + ": " +
                             std::to_string(row.fields.size()) + " fields where the table has " +
                             std::to_string(table_.columns.size()) + " columns.");
    return false;
  }
  if (!statement_.where) {
    *keep = true;
    return true;
  }
  Truth truth;
  if (!evaluate(*statement_.where, table_, row, parameters_, &truth)) return false;
  *keep = truth == Truth::kTrue;
  return true;
}

CsvReader::Result SelectCursor::nextRow(Row* row) {
  if (order_) return order_->next(&reader_, row);
  for (;;) {
    const CsvReader::Result got = reader_.next(row);
    if (got != CsvReader::kRow) return got;
    bool keep = false;
    if (!accept(*row, &keep)) return CsvReader::kError;
    if (keep) return CsvReader::kRow;
  }
}

CsvReader::Result SelectCursor::fetch(std::vector<Value>* values) {
  for (;;) {
    const CsvReader::Result got = nextRow(&row_);
    if (got != CsvReader::kRow) return got;
    values->resize(projection_.size());
    for (std::size_t i = 0; i < projection_.size(); ++i) {
      if (!columnValue(table_, row_, projection_[i], &(*values)[i])) return CsvReader::kError;
    }
    if (!distinct_) return CsvReader::kRow;
    bool first = false;
    if (!distinct_->firstTime(*values, &first)) return CsvReader::kError;
    if (first) return CsvReader::kRow;
  }
}

}  // namespace zucsv

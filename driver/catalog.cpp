// SQLTables, SQLColumns and SQLGetTypeInfo: result sets made in memory. The
// tables are the *.csv files of the directory, found through the library's
// directory walk; their columns are read as a SELECT would read them.
#include <zuutl.h>

#include "call_scope.h"
#include "cursor.h"
#include "handles.h"
#include "odbc_out.h"
#include "table.h"
#include "value_out.h"

using namespace zucsv;

namespace {

constexpr std::size_t kNameBuffer = 256;
constexpr SQLULEN kNameSize = 128;
constexpr SQLSMALLINT kAllTypes = SQL_ALL_TYPES;

ResultColumn column(const char* name, SQLSMALLINT sqlType) {
  ResultColumn c;
  c.name = name;
  c.sqlType = sqlType;
  c.type = sqlType == SQL_VARCHAR ? ColumnType::kText : ColumnType::kInteger;
  c.size = sqlType == SQL_VARCHAR ? kNameSize : sqlType == SQL_SMALLINT ? 5 : 10;
  return c;
}

// A search pattern (% and _, \ escaping) against a name; an absent or
// empty pattern matches all.
bool matches(const std::string& pattern, const std::string& name) {
  if (pattern.empty() || pattern == "%") return true;
  return strLike(reinterpret_cast<const unsigned char*>(name.data()), static_cast<std::uint32_t>(name.size()),
                 reinterpret_cast<const unsigned char*>(pattern.data()), static_cast<std::uint32_t>(pattern.size()),
                 '%', '_', '\\', 0) != 0;
}

// The table names of the directory: its .csv files without the extension.
bool tableNames(const ConnectOptions& options, std::vector<std::string>* names) {
  unsigned char name[kNameBuffer] = {0};
  const std::string pattern = options.directory + "\\*.CSV";
  std::snprintf(reinterpret_cast<char*>(name), sizeof name, "%s", pattern.c_str());
  unsigned char* context = nullptr;
  for (;;) {
    if (bosFindFiles(&context, name) != ZU_OK) return false;
    if (context == nullptr) break;
    std::string file(reinterpret_cast<const char*>(name));
    const std::size_t dot = file.rfind('.');
    names->push_back(dot == std::string::npos ? file : file.substr(0, dot));
  }
  return true;
}

SQLRETURN tables(Statement* stmt, const std::string& tablePattern, const std::string& types) {
  auto cursor = std::make_unique<MemoryCursor>();
  for (const char* name : {"TABLE_CAT", "TABLE_SCHEM", "TABLE_NAME", "TABLE_TYPE", "REMARKS"}) {
    cursor->columns.push_back(column(name, SQL_VARCHAR));
  }
  const bool wantTables = types.empty() || types.find("TABLE") != std::string::npos || types == "%";
  std::vector<std::string> names;
  if (!tableNames(stmt->connection->options, &names)) return SQL_ERROR;
  for (const std::string& name : names) {
    if (!wantTables || !matches(tablePattern, name)) continue;
    cursor->rows.push_back({nullValue(), nullValue(), textValue(name), textValue("TABLE"), nullValue()});
  }
  stmt->cursor = std::move(cursor);
  return SQL_SUCCESS;
}

SQLRETURN columns(Statement* stmt, const std::string& tablePattern, const std::string& columnPattern) {
  auto cursor = std::make_unique<MemoryCursor>();
  const std::pair<const char*, SQLSMALLINT> layout[] = {
      {"TABLE_CAT", SQL_VARCHAR},       {"TABLE_SCHEM", SQL_VARCHAR},      {"TABLE_NAME", SQL_VARCHAR},
      {"COLUMN_NAME", SQL_VARCHAR},     {"DATA_TYPE", SQL_SMALLINT},       {"TYPE_NAME", SQL_VARCHAR},
      {"COLUMN_SIZE", SQL_INTEGER},     {"BUFFER_LENGTH", SQL_INTEGER},    {"DECIMAL_DIGITS", SQL_SMALLINT},
      {"NUM_PREC_RADIX", SQL_SMALLINT}, {"NULLABLE", SQL_SMALLINT},        {"REMARKS", SQL_VARCHAR},
      {"COLUMN_DEF", SQL_VARCHAR},      {"SQL_DATA_TYPE", SQL_SMALLINT},   {"SQL_DATETIME_SUB", SQL_SMALLINT},
      {"CHAR_OCTET_LENGTH", SQL_INTEGER}, {"ORDINAL_POSITION", SQL_INTEGER}, {"IS_NULLABLE", SQL_VARCHAR}};
  for (const auto& [name, type] : layout) cursor->columns.push_back(column(name, type));
  std::vector<std::string> names;
  const ConnectOptions& options = stmt->connection->options;
  if (!tableNames(options, &names)) return SQL_ERROR;
  for (const std::string& name : names) {
    if (!matches(tablePattern, name)) continue;
    TableDef def;
    CsvReader reader(stmt->connection->environment->pageCache, options.delimiter);
    if (!openTable(options, name, &def, &reader)) return SQL_ERROR;
    for (std::size_t i = 0; i < def.columns.size(); ++i) {
      if (!matches(columnPattern, def.columns[i].name)) continue;
      const ResultColumn r = describeColumn(name, def.columns[i]);
      const bool isText = r.sqlType == SQL_VARCHAR;
      const bool isDate = r.sqlType == SQL_TYPE_DATE;
      cursor->rows.push_back({nullValue(), nullValue(), textValue(name), textValue(r.name), integerValue(r.sqlType),
                              textValue(typeName(r.type)), integerValue(static_cast<std::int64_t>(r.size)),
                              integerValue(isDate ? 6 : r.sqlType == SQL_DOUBLE || r.sqlType == SQL_BIGINT ? 8
                                                                                                        : static_cast<std::int64_t>(r.size)),
                              r.sqlType == SQL_BIGINT ? integerValue(0) : nullValue(),
                              r.sqlType == SQL_BIGINT ? integerValue(10) : r.sqlType == SQL_DOUBLE ? integerValue(2) : nullValue(),
                              integerValue(SQL_NULLABLE), nullValue(), nullValue(),
                              integerValue(isDate ? SQL_DATETIME : r.sqlType), isDate ? integerValue(SQL_CODE_DATE) : nullValue(),
                              isText ? integerValue(static_cast<std::int64_t>(r.size)) : nullValue(),
                              integerValue(static_cast<std::int64_t>(i + 1)), textValue("YES")});
    }
  }
  stmt->cursor = std::move(cursor);
  return SQL_SUCCESS;
}

SQLRETURN typeInfo(Statement* stmt, SQLSMALLINT wanted) {
  auto cursor = std::make_unique<MemoryCursor>();
  const std::pair<const char*, SQLSMALLINT> layout[] = {
      {"TYPE_NAME", SQL_VARCHAR},       {"DATA_TYPE", SQL_SMALLINT},      {"COLUMN_SIZE", SQL_INTEGER},
      {"LITERAL_PREFIX", SQL_VARCHAR},  {"LITERAL_SUFFIX", SQL_VARCHAR},  {"CREATE_PARAMS", SQL_VARCHAR},
      {"NULLABLE", SQL_SMALLINT},       {"CASE_SENSITIVE", SQL_SMALLINT}, {"SEARCHABLE", SQL_SMALLINT},
      {"UNSIGNED_ATTRIBUTE", SQL_SMALLINT}, {"FIXED_PREC_SCALE", SQL_SMALLINT}, {"AUTO_UNIQUE_VALUE", SQL_SMALLINT},
      {"LOCAL_TYPE_NAME", SQL_VARCHAR}, {"MINIMUM_SCALE", SQL_SMALLINT},  {"MAXIMUM_SCALE", SQL_SMALLINT},
      {"SQL_DATA_TYPE", SQL_SMALLINT},  {"SQL_DATETIME_SUB", SQL_SMALLINT}, {"NUM_PREC_RADIX", SQL_INTEGER},
      {"INTERVAL_PRECISION", SQL_SMALLINT}};
  for (const auto& [name, type] : layout) cursor->columns.push_back(column(name, type));
  struct Type {
    ColumnType type;
    SQLSMALLINT sql;
  };
  // In the order of their SQL type numbers, as the function delivers them.
  const Type types[] = {{ColumnType::kInteger, SQL_BIGINT},
                        {ColumnType::kDouble, SQL_DOUBLE},
                        {ColumnType::kText, SQL_VARCHAR},
                        {ColumnType::kDate, SQL_TYPE_DATE}};
  for (const Type& t : types) {
    if (wanted != kAllTypes && wanted != t.sql) continue;
    const ResultColumn r = describeColumn("", ColumnDef{"", t.type});
    const bool quoted = t.sql == SQL_VARCHAR || t.sql == SQL_TYPE_DATE;
    cursor->rows.push_back({textValue(typeName(t.type)), integerValue(t.sql), integerValue(static_cast<std::int64_t>(r.size)),
                            quoted ? textValue("'") : nullValue(), quoted ? textValue("'") : nullValue(), nullValue(),
                            integerValue(SQL_NULLABLE), integerValue(t.sql == SQL_VARCHAR ? SQL_TRUE : SQL_FALSE),
                            integerValue(SQL_SEARCHABLE), quoted ? nullValue() : integerValue(SQL_FALSE),
                            integerValue(SQL_FALSE), quoted ? nullValue() : integerValue(SQL_FALSE), nullValue(),
                            nullValue(), nullValue(), integerValue(t.sql == SQL_TYPE_DATE ? SQL_DATETIME : t.sql),
                            t.sql == SQL_TYPE_DATE ? integerValue(SQL_CODE_DATE) : nullValue(),
                            t.sql == SQL_BIGINT ? integerValue(10) : t.sql == SQL_DOUBLE ? integerValue(2) : nullValue(),
                            nullValue()});
  }
  stmt->cursor = std::move(cursor);
  return SQL_SUCCESS;
}

Statement* ready(SQLHSTMT h) { return asStatement(h); }

}  // namespace

ZUCSV_EXPORT SQLRETURN SQL_API SQLTables(SQLHSTMT h, SQLCHAR* catalog, SQLSMALLINT catalogLength, SQLCHAR* schema,
                                       SQLSMALLINT schemaLength, SQLCHAR* table, SQLSMALLINT tableLength,
                                       SQLCHAR* type, SQLSMALLINT typeLength) {
  Statement* stmt = ready(h);
  if (stmt == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(stmt, "SQLTables");
  stmt->closeCursor();
  return scope.finish(tables(stmt, inText(table, tableLength), inText(type, typeLength)));
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLColumns(SQLHSTMT h, SQLCHAR* catalog, SQLSMALLINT catalogLength, SQLCHAR* schema,
                                        SQLSMALLINT schemaLength, SQLCHAR* table, SQLSMALLINT tableLength,
                                        SQLCHAR* column, SQLSMALLINT columnLength) {
  Statement* stmt = ready(h);
  if (stmt == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(stmt, "SQLColumns");
  stmt->closeCursor();
  return scope.finish(columns(stmt, inText(table, tableLength), inText(column, columnLength)));
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLGetTypeInfo(SQLHSTMT h, SQLSMALLINT dataType) {
  Statement* stmt = ready(h);
  if (stmt == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(stmt, "SQLGetTypeInfo");
  stmt->closeCursor();
  return scope.finish(typeInfo(stmt, dataType));
}

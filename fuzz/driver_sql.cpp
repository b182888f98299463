// The CSV driver's SQL on arbitrary text: every input is a statement or a
// refusal that says why (a record on the error list), never a crash. A
// statement is then bound to a fixed table of four typed columns and its
// condition evaluated on a few rows, with every marker given a value in
// turn NULL, a text and a number.
#include <zuutl.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "expr.h"
#include "sql_ast.h"
#include "table.h"

namespace {

using namespace zucsv;

TableDef fixedTable() {
  TableDef t;
  t.name = "t";
  t.fileName = "t.csv";
  t.columns = {{"a", ColumnType::kText}, {"b", ColumnType::kInteger}, {"c", ColumnType::kDouble},
               {"d", ColumnType::kDate}};
  return t;
}

Row makeRow(const char* a, const char* b, const char* c, const char* d) {
  Row row;
  for (const char* text : {a, b, c, d}) {
    Field f;
    f.start = static_cast<std::uint32_t>(row.bytes.size());
    f.null = text == nullptr;
    if (text != nullptr) row.bytes += text;
    f.length = static_cast<std::uint32_t>(row.bytes.size()) - f.start;
    row.fields.push_back(f);
  }
  return row;
}

void clear(ZuErrorList& list) {
  while (ZuError* e = list.removeFirstError()) {
    if (e->isStatic() == 0) delete e;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool ready = (mdsPerTaskInit(), true);
  (void)ready;
  mdsPerThreadInit();
  {
    ZuErrorList list;
    ZuErrorKeeper::setErrorList(&list);
    const std::string text(reinterpret_cast<const char*>(data), size);
    ParsedStatement statement;
    const bool parsed = parseSql(text, &statement);
    if (!parsed && list.getLastError() == nullptr) std::abort();  // refused without a reason
    const TableDef table = fixedTable();
    if (parsed && bindStatement(&statement, table) && statement.where) {
      const Row rows[] = {makeRow("abc", "7", "1.5", "2020-01-31"), makeRow(nullptr, nullptr, nullptr, nullptr),
                          makeRow("", "-3", "x", "not a date")};
      for (int variant = 0; variant < 3; ++variant) {
        std::vector<Value> parameters;
        for (int i = 0; i < statement.parameterCount; ++i) {
          parameters.push_back(variant == 0 ? nullValue() : variant == 1 ? textValue("a%_") : integerValue(i));
        }
        for (const Row& row : rows) {
          Truth truth;
          evaluate(*statement.where, table, row, parameters, &truth);
        }
      }
    }
    ZuErrorKeeper::giveUpErrorList();
    clear(list);
  }
  mdsPerThreadTerm();
  return 0;
}

// Scanner throughput over 1 MiB of SQL-like text: statements of words,
// qualified names, quoted literals and identifiers, numbers, operators,
// parameter markers, function calls and comments, as drivers pass them.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <string>

#include "parsing/scanner.h"
#include "parsing/value_parser.h"

namespace {

constexpr size_t kText = 1 << 20;

std::string sqlText() {
  const char* pieces[] = {
      "SELECT ",
      "o.order_id",
      ", ",
      "c.\"Customer Name\"",
      " FROM ",
      "orders o",
      " JOIN ",
      "customers c",
      " ON ",
      "o.cust_id = c.id",
      " WHERE ",
      "o.total >= ",
      "1250.75",
      " AND ",
      "c.region <> ",
      "'North'",
      " AND note = ",
      "'it''s due'",
      " OR qty < ",
      "42",
      " AND ",
      "UCASE(c.city)",
      " = ?",
      " /* recent */ ",
      " -- open ones\n",
      "ORDER BY ",
      "2",
      ";\n",
      "{fn NOW()}",
      " GROUP BY region",
  };
  std::mt19937 random(40);
  std::string text;
  while (text.size() < kText) text += pieces[random() % std::size(pieces)];
  text.resize(kText);
  return text;
}

const std::string& text() {
  static const std::string t = sqlText();
  return t;
}

void runScan(benchmark::State& state, bool commentsAndBlocks) {
  const std::string& sql = text();
  std::uint64_t tokens = 0;
  for (auto _ : state) {
    ZuScanner scanner(reinterpret_cast<const unsigned char*>(sql.data()),
                      static_cast<std::uint32_t>(sql.size()));
    scanner.comments = commentsAndBlocks ? 1 : 0;
    scanner.parenBlocks = commentsAndBlocks ? 1 : 0;
    scanner.braceBlocks = commentsAndBlocks ? 1 : 0;
    ZuToken token;
    do {
      scanner.getToken(token, ZU_SEARCH_NORMAL);
      ++tokens;
    } while (token.type != ZU_TOKEN_END);
    benchmark::DoNotOptimize(token.offset);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * sql.size());
  state.counters["tokens"] = benchmark::Counter(static_cast<double>(tokens) / state.iterations());
}

void ScanSql(benchmark::State& s) { runScan(s, false); }
void ScanSqlCommentsAndBlocks(benchmark::State& s) { runScan(s, true); }
BENCHMARK(ScanSql)->Unit(benchmark::kMillisecond);
BENCHMARK(ScanSqlCommentsAndBlocks)->Unit(benchmark::kMillisecond);

// Phrase matching on every token, as a statement classifier would do.
void ScanSqlMatchingPhrases(benchmark::State& state) {
  const std::string& sql = text();
  const auto* phrases = reinterpret_cast<const unsigned char*>("GROUP BY\0ORDER BY\0SELECT\0");
  std::uint64_t matched = 0;
  for (auto _ : state) {
    ZuScanner scanner(reinterpret_cast<const unsigned char*>(sql.data()),
                      static_cast<std::uint32_t>(sql.size()));
    ZuToken token;
    do {
      scanner.getToken(token, ZU_SEARCH_NORMAL);
      matched += scanner.isInSetCi(token, phrases);
    } while (token.type != ZU_TOKEN_END);
  }
  benchmark::DoNotOptimize(matched);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * sql.size());
}
BENCHMARK(ScanSqlMatchingPhrases)->Unit(benchmark::kMillisecond);

// A driver's connect string of 12 attributes, quoted and braced values
// among them: construct, parse, destroy, as a connect does.
void ParseConnectString12(benchmark::State& state) {
  static const unsigned char text[] =
      "DRIVER={zu Driver 4.0};SERVER=db1.example.com;PORT=5432;DATABASE=sales;"
      "UID=admin;PWD='it''s secret';TIMEOUT=30;APP=Month end report;"
      "CHARSET=WIN1252;READONLY=0;TRACE=1;TRACEFILE='C:\\TMP\\ZU.LOG'";
  const ZuSubString view(text, sizeof text - 1);
  for (auto _ : state) {
    ZuValueParser parser(&view, ';', nullptr);
    if (parser.initialize() != ZU_OK || parser.attributes.count != 12) {
      state.SkipWithError("the connect string did not parse to 12 attributes");
      break;
    }
    benchmark::DoNotOptimize(parser.getAttributeValue(reinterpret_cast<const unsigned char*>("pwd")));
  }
}
BENCHMARK(ParseConnectString12)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();

// The CSV driver through the unixODBC driver manager, beside sqlite3 on the
// same data in the same run: a table of ZU_BENCH_ROWS rows (default
// 1,000,000, about 100 MB of CSV) read whole, scanned with LIKE, and
// ordered on a text column. SQLite's times are for its table in memory,
// the import not counted. At the end each query's driver time is shown as
// a ratio to SQLite's.
#include <benchmark/benchmark.h>
#include <sql.h>
#include <sqlext.h>
#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <random>
#include <string>
#include <unistd.h>

namespace {

constexpr long kDefaultRows = 1000000;
constexpr int kColumns = 4;

struct Data {
  std::string directory;
  long rows = 0;
  sqlite3* lite = nullptr;
  SQLHENV env = SQL_NULL_HENV;
  SQLHDBC dbc = SQL_NULL_HDBC;
  bool ready = false;
};

std::string randomWord(std::mt19937& rng, int minLength, int maxLength) {
  std::uniform_int_distribution<int> length(minLength, maxLength);
  std::uniform_int_distribution<int> letter(0, 25);
  std::string word;
  for (int i = length(rng); i > 0; --i) word += static_cast<char>('a' + letter(rng));
  return word;
}

void fail(const char* what) {
  std::fprintf(stderr, "bench_driver: %s\n", what);
  std::exit(1);
}

Data& data() {
  static Data d = [] {
    Data made;
    const char* rowsText = std::getenv("ZU_BENCH_ROWS");
    made.rows = rowsText != nullptr ? std::atol(rowsText) : kDefaultRows;
    // Every component an 8.3 name: the library sees files through DOS names.
    char directory[] = "/tmp/zbXXXXXX";
    if (mkdtemp(directory) == nullptr) fail("no temporary directory");
    made.directory = directory;
    FILE* ini = std::fopen((made.directory + "/odbcinst.ini").c_str(), "w");
    if (ini == nullptr) fail("cannot write odbcinst.ini");
    std::fprintf(ini, "[ZuCSV]\nDriver=%s\n", ZU_DRIVER_PATH);
    std::fclose(ini);
    setenv("ODBCSYSINI", made.directory.c_str(), 1);
    setenv("ODBCINI", (made.directory + "/odbc.ini").c_str(), 1);

    std::mt19937 rng(16);
    if (sqlite3_open(":memory:", &made.lite) != SQLITE_OK) fail("sqlite3_open");
    sqlite3_exec(made.lite, "CREATE TABLE big (id INTEGER, name TEXT, city TEXT, note TEXT); BEGIN", nullptr,
                 nullptr, nullptr);
    sqlite3_stmt* insert = nullptr;
    sqlite3_prepare_v2(made.lite, "INSERT INTO big VALUES (?,?,?,?)", -1, &insert, nullptr);
    FILE* csv = std::fopen((made.directory + "/big.csv").c_str(), "w");
    if (csv == nullptr) fail("cannot write big.csv");
    std::fprintf(csv, "id,name,city,note\n");
    for (long i = 0; i < made.rows; ++i) {
      const std::string name = randomWord(rng, 8, 20);
      const std::string city = randomWord(rng, 4, 12);
      const std::string note = randomWord(rng, 40, 80);
      std::fprintf(csv, "%ld,%s,%s,%s\n", i, name.c_str(), city.c_str(), note.c_str());
      sqlite3_bind_int64(insert, 1, i);
      sqlite3_bind_text(insert, 2, name.c_str(), -1, SQLITE_TRANSIENT);
      sqlite3_bind_text(insert, 3, city.c_str(), -1, SQLITE_TRANSIENT);
      sqlite3_bind_text(insert, 4, note.c_str(), -1, SQLITE_TRANSIENT);
      sqlite3_step(insert);
      sqlite3_reset(insert);
    }
    std::fclose(csv);
    sqlite3_finalize(insert);
    sqlite3_exec(made.lite, "COMMIT", nullptr, nullptr, nullptr);
    FILE* schema = std::fopen((made.directory + "/schema.ini").c_str(), "w");
    std::fprintf(schema, "[big.csv]\nColNameHeader=True\nCol1=id Integer\nCol2=name Text\nCol3=city Text\nCol4=note Text\n");
    std::fclose(schema);

    SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &made.env);
    SQLSetEnvAttr(made.env, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
    SQLAllocHandle(SQL_HANDLE_DBC, made.env, &made.dbc);
    const std::string connect = "DRIVER={ZuCSV};DBQ=" + made.directory;
    if (!SQL_SUCCEEDED(SQLDriverConnect(made.dbc, nullptr, (SQLCHAR*)connect.c_str(), SQL_NTS, nullptr, 0, nullptr,
                                        SQL_DRIVER_NOPROMPT))) {
      fail("the driver does not connect");
    }
    made.ready = true;
    return made;
  }();
  return d;
}

// Runs the query through the driver and reads every column of every row.
long driverQuery(const char* sql) {
  Data& d = data();
  SQLHSTMT stmt = SQL_NULL_HSTMT;
  SQLAllocHandle(SQL_HANDLE_STMT, d.dbc, &stmt);
  if (!SQL_SUCCEEDED(SQLExecDirect(stmt, (SQLCHAR*)sql, SQL_NTS))) fail("the driver refused a query");
  SQLSMALLINT columns = 0;
  SQLNumResultCols(stmt, &columns);
  char buffer[256];
  SQLLEN length = 0;
  long rows = 0;
  while (SQL_SUCCEEDED(SQLFetch(stmt))) {
    for (SQLUSMALLINT c = 1; c <= columns; ++c) SQLGetData(stmt, c, SQL_C_CHAR, buffer, sizeof buffer, &length);
    ++rows;
  }
  SQLFreeHandle(SQL_HANDLE_STMT, stmt);
  return rows;
}

long sqliteQuery(const char* sql) {
  sqlite3_stmt* stmt = nullptr;
  sqlite3_prepare_v2(data().lite, sql, -1, &stmt, nullptr);
  const int columns = sqlite3_column_count(stmt);
  long rows = 0;
  while (sqlite3_step(stmt) == SQLITE_ROW) {
    for (int c = 0; c < columns; ++c) benchmark::DoNotOptimize(sqlite3_column_text(stmt, c));
    ++rows;
  }
  sqlite3_finalize(stmt);
  return rows;
}

// rows/s counts the table's rows each query goes through, returned or not.
void run(benchmark::State& state, long (*query)(const char*), const char* sql) {
  const long tableRows = data().rows;
  long returned = 0;
  for (auto _ : state) returned += query(sql);
  state.counters["rows/s"] =
      benchmark::Counter(static_cast<double>(tableRows) * static_cast<double>(state.iterations()),
                         benchmark::Counter::kIsRate);
  state.counters["returned"] = static_cast<double>(returned / static_cast<long>(state.iterations()));
}

const char* const kSelectAll = "SELECT * FROM big";
const char* const kLikeScan = "SELECT * FROM big WHERE name LIKE '%abc%'";
const char* const kOrderBy = "SELECT id, name FROM big ORDER BY name";

void BM_Driver_SelectAll(benchmark::State& s) { run(s, driverQuery, kSelectAll); }
void BM_Sqlite_SelectAll(benchmark::State& s) { run(s, sqliteQuery, kSelectAll); }
void BM_Driver_LikeScan(benchmark::State& s) { run(s, driverQuery, kLikeScan); }
void BM_Sqlite_LikeScan(benchmark::State& s) { run(s, sqliteQuery, kLikeScan); }
void BM_Driver_OrderBy(benchmark::State& s) { run(s, driverQuery, kOrderBy); }
void BM_Sqlite_OrderBy(benchmark::State& s) { run(s, sqliteQuery, kOrderBy); }

BENCHMARK(BM_Driver_SelectAll)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_Sqlite_SelectAll)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_Driver_LikeScan)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_Sqlite_LikeScan)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_Driver_OrderBy)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_Sqlite_OrderBy)->Unit(benchmark::kMillisecond)->Iterations(3);

// The console report, and then each driver time as a multiple of SQLite's.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) times_[run.benchmark_name()] = run.GetAdjustedRealTime();
    ConsoleReporter::ReportRuns(runs);
  }
  void Finalize() override {
    ConsoleReporter::Finalize();
    for (const char* query : {"SelectAll", "LikeScan", "OrderBy"}) {
      const std::string driver = std::string("BM_Driver_") + query + "/iterations:3";
      const std::string lite = std::string("BM_Sqlite_") + query + "/iterations:3";
      if (times_.count(driver) != 0 && times_.count(lite) != 0 && times_[lite] > 0) {
        std::printf("%-10s driver / sqlite = %.2f\n", query, times_[driver] / times_[lite]);
      }
    }
  }

 private:
  std::map<std::string, double> times_;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  Data& d = data();
  if (d.ready) {
    SQLDisconnect(d.dbc);
    SQLFreeHandle(SQL_HANDLE_DBC, d.dbc);
    SQLFreeHandle(SQL_HANDLE_ENV, d.env);
    sqlite3_close(d.lite);
    std::remove((d.directory + "/big.csv").c_str());
    std::remove((d.directory + "/schema.ini").c_str());
    std::remove((d.directory + "/odbcinst.ini").c_str());
    rmdir(d.directory.c_str());
  }
  return 0;
}

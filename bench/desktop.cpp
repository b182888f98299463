// The desktop's costs, each beside its peer where it has one.
//
// An INI lookup beside the driver manager's own, in one file of 1,000
// entries (100 data sources of 10 entries each):
//  - ZuIniLookup: ZuIni::getEntry of an entry in the last section, and of
//    one that is not there (the whole file is read either way).
//  - OdbcinstLookup: unixODBC's SQLGetPrivateProfileString of the same
//    entries, through ODBCINI pointed at the same file. Built where unixODBC's
//    development files are (scripts/setup installs them).
// And one write: ZuIniWrite replaces an entry's value, which reads the file,
// writes a new one beside it, flushes it and renames it over.
//
// Trace lines per second: 60-byte lines through writeLine to a trace file
// with each line forced to disk (the default) and without, to the window
// alone (where the oldest lines are dropped once it holds 32767
// characters), and to both. The file is C:\TMP\ZUBENCH.TRC in the DOS view
// (ZU_DRIVES may move C:), removed at the end.
#include <benchmark/benchmark.h>

#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

#include <zuutl.h>

#ifdef ZU_HAVE_ODBCINST
#include <odbcinst.h>
#endif

namespace {

constexpr int kSections = 100;
constexpr int kEntriesPerSection = 10;
constexpr unsigned short kValueBuffer = 256;

const unsigned char* u(const char* text) { return reinterpret_cast<const unsigned char*>(text); }

// The benchmark's odbc.ini, made once in a directory of its own.
const std::string& iniPath() {
  static const std::string path = [] {
    char pattern[] = "/tmp/zuini.XXXXXX";
    const std::string directory = mkdtemp(pattern) != nullptr ? pattern : "/tmp";
    const std::string file = directory + "/odbc.ini";
    std::ofstream out(file, std::ios::binary);
    out << "; 1,000 entries\n";
    for (int s = 0; s < kSections; ++s) {
      out << "[DSN " << s << "]\n";
      for (int e = 0; e < kEntriesPerSection; ++e) out << "Key" << e << " = value " << s << "." << e << "\n";
      out << "\n";
    }
    setenv("ODBCSYSINI", directory.c_str(), 1);
    setenv("ODBCINI", file.c_str(), 1);
    return file;
  }();
  return path;
}

const char* kLastSection = "DSN 99";
const char* kLastEntry = "Key9";
const char* kLastValue = "value 99.9";

void ZuIniLookup(benchmark::State& state) {
  ZuIni ini;
  ini.open(u(iniPath().c_str()));
  const bool missing = state.range(0) != 0;
  unsigned char buffer[kValueBuffer];
  ini.getEntry(u(kLastSection), u(kLastEntry), buffer, sizeof buffer, u(""));
  if (std::string(reinterpret_cast<char*>(buffer)) != kLastValue)
    state.SkipWithError("ZuIni does not read the file");
  for (auto _ : state) {
    ini.getEntry(u(kLastSection), u(missing ? "Nothing" : kLastEntry), buffer, sizeof buffer, u(""));
    benchmark::DoNotOptimize(buffer);
  }
  state.SetLabel(missing ? "missing entry" : "last entry");
}

#ifdef ZU_HAVE_ODBCINST
void OdbcinstLookup(benchmark::State& state) {
  iniPath();
  const bool missing = state.range(0) != 0;
  char buffer[kValueBuffer];
  SQLGetPrivateProfileString(kLastSection, kLastEntry, "", buffer, sizeof buffer, "odbc.ini");
  if (std::string(buffer) != kLastValue) state.SkipWithError("odbcinst does not read the file");
  for (auto _ : state) {
    SQLGetPrivateProfileString(kLastSection, missing ? "Nothing" : kLastEntry, "", buffer, sizeof buffer,
                               "odbc.ini");
    benchmark::DoNotOptimize(buffer);
  }
  state.SetLabel(missing ? "missing entry" : "last entry");
}
BENCHMARK(OdbcinstLookup)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);
#endif

void ZuIniWrite(benchmark::State& state) {
  ZuIni ini;
  ini.open(u(iniPath().c_str()));
  int n = 0;
  for (auto _ : state) {
    const std::string value = "value " + std::to_string(++n);
    ini.writeEntry(u("DSN 50"), u("Key5"), u(value.c_str()));
  }
}

BENCHMARK(ZuIniLookup)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(ZuIniWrite)->Unit(benchmark::kMicrosecond)->UseRealTime();

}  // namespace

namespace {

const unsigned char* bytes(const char* s) { return reinterpret_cast<const unsigned char*>(s); }

constexpr const char* kTraceFile = "C:\\TMP\\ZUBENCH.TRC";
const std::string kLine(60, 't');

void traceLines(benchmark::State& state, bool toFile, bool toWindow, bool flush) {
  ZuTrace trace;
  if (trace.initialize(nullptr, toWindow ? 1 : 0, toFile ? bytes(kTraceFile) : nullptr) != ZU_OK) {
    state.SkipWithError("the trace did not open");
    return;
  }
  trace.setFlushLines(flush ? 1 : 0);
  for (auto _ : state) {
    if (trace.writeLine(bytes(kLine.c_str())) != ZU_OK) {
      state.SkipWithError("a line was refused");
      break;
    }
  }
  state.SetItemsProcessed(state.iterations());
  trace.resetTrace();
  if (toFile) bosFileDelete(bytes(kTraceFile));
}

void FileFlushingEachLine(benchmark::State& state) { traceLines(state, true, false, true); }
void FileWithoutFlushing(benchmark::State& state) { traceLines(state, true, false, false); }
void WindowOnly(benchmark::State& state) { traceLines(state, false, true, false); }
void FileAndWindowWithoutFlushing(benchmark::State& state) { traceLines(state, true, true, false); }

}  // namespace

BENCHMARK(FileFlushingEachLine)->UseRealTime();
BENCHMARK(FileWithoutFlushing)->UseRealTime();
BENCHMARK(WindowOnly);
BENCHMARK(FileAndWindowWithoutFlushing)->UseRealTime();

int main(int argc, char** argv) {
  mdsPerTaskInit();
  mdsPerThreadInit();
  ZuErrorList errors;
  ZuErrorKeeper::setErrorList(&errors);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  ZuErrorKeeper::giveUpErrorList();
  mdsPerThreadTerm();
  mdsPerTaskTerm();
  return 0;
}

// Trace lines per second: 60-byte lines through writeLine to a trace file
// with each line forced to disk (the default) and without, to the window
// alone (where the oldest lines are dropped once it holds 32767
// characters), and to both. The file is C:\TMP\ZUBENCH.TRC in the DOS view
// (ZU_DRIVES may move C:), removed at the end.
#include <benchmark/benchmark.h>

#include <string>

#include <zuutl.h>

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

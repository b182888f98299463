// zu trace FILE [--timestamps] [--no-flush] [--tail N]: copies standard
// input, line by line, to the trace file FILE (a DOS name, such as
// C:\TMP\RUN.TRC) and to the trace window, then shows the last N lines
// (10 by default) that the window holds. The demo traces a few lines and
// gives a dialog its accelerators.
#include <zuutl.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "command.h"
#include "error_scope.h"
#include "platform/desktop.h"

namespace zutool {
namespace {

namespace dsk = zu::platform::desktop;

constexpr long kDefaultTail = 10;

const unsigned char* bytes(const std::string& s) { return reinterpret_cast<const unsigned char*>(s.c_str()); }
const unsigned char* bytes(const char* s) { return reinterpret_cast<const unsigned char*>(s); }

std::string windowText(const ZuTrace& trace) {
  auto* edit = reinterpret_cast<dsk::Window*>(trace.editWindow);
  std::string text(static_cast<std::size_t>(dsk::send(edit, dsk::kMessageGetTextLength, 0, 0)), '\0');
  dsk::send(edit, dsk::kMessageGetText, text.size() + 1, reinterpret_cast<std::intptr_t>(text.data()));
  return text;
}

// The last `count` CR LF lines of `text`, with their ends.
std::string lastLines(const std::string& text, long count) {
  std::size_t at = text.size();
  for (long n = 0; n <= count && at > 0; ++n) {
    const std::size_t found = text.rfind("\r\n", at - 1);
    if (n == count) return text.substr(found == std::string::npos ? 0 : found + 2);
    if (found == std::string::npos) return text;
    at = found;
  }
  return text.substr(at);
}

void printLines(const std::string& text, const char* indent) {
  for (std::size_t at = 0; at < text.size();) {
    std::size_t end = text.find("\r\n", at);
    if (end == std::string::npos) end = text.size();
    std::printf("%s%s\n", indent, text.substr(at, end - at).c_str());
    at = end + 2;
  }
}

int runTrace(const std::vector<std::string>& args) {
  const std::string* file = nullptr;
  bool stamps = false, flush = true;
  long tail = kDefaultTail;
  for (std::size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "--timestamps") {
      stamps = true;
    } else if (args[i] == "--no-flush") {
      flush = false;
    } else if (args[i] == "--tail" && i + 1 < args.size()) {
      char* end = nullptr;
      tail = std::strtol(args[++i].c_str(), &end, 10);
      if (*end != '\0' || tail < 0) return usageError("--tail takes a count");
    } else if (file == nullptr && args[i].compare(0, 2, "--") != 0) {
      file = &args[i];
    } else {
      return usageError("unknown option or second FILE: '" + args[i] + "'");
    }
  }
  if (file == nullptr) return usageError("trace needs a FILE (a DOS name such as C:\\TMP\\RUN.TRC)");
  int exitCode = kExitOk;
  mdsPerTaskInit();
  {
    ErrorScope errors;
    ZuTrace trace;
    if (trace.initialize(nullptr, 1, bytes(*file)) != ZU_OK) {
      std::fprintf(stderr, "zu: %s\n", errors.take().c_str());
      exitCode = kExitNo;
    } else {
      trace.setTimestamps(stamps ? 1 : 0);
      trace.setFlushLines(flush ? 1 : 0);
      std::string line;
      unsigned long count = 0;
      for (int c; (c = std::getchar()) != EOF;) {
        if (c != '\n') {
          line += static_cast<char>(c);
          continue;
        }
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (trace.writeLine(bytes(line)) != ZU_OK) exitCode = kExitNo;
        line.clear();
        ++count;
      }
      if (!line.empty()) {
        if (trace.writeLine(bytes(line)) != ZU_OK) exitCode = kExitNo;
        ++count;
      }
      const std::string shown = errors.take();
      if (!shown.empty()) std::fprintf(stderr, "zu: %s\n", shown.c_str());
      const std::string window = windowText(trace);
      std::printf("%lu lines traced to %s; the window holds %zu characters; its last lines:\n", count,
                  file->c_str(), window.size());
      printLines(lastLines(window, tail), "  ");
    }
  }
  mdsPerTaskTerm();
  return exitCode;
}

void demoTrace() {
  std::printf("== Trace and dialog helpers\n");
  mdsPerTaskInit();
  {
    ErrorScope errors;
    ZuTrace trace;
    trace.initialize(nullptr, 1, nullptr);  // the window only
    trace.writeLine(bytes("connect: DSN=sales"));
    trace.setTimestamps(1);
    trace.writeString(bytes("rows fetched: "));
    trace.writeString(bytes("1024"));
    trace.writeEol();
    trace.writeLine(bytes("disconnect"));
    std::printf("the trace window holds (time stamps are universal time):\n");
    printLines(windowText(trace), "  ");

    unsigned char used[32] = {};
    const char* labels[] = {"&OK", "Cancel", "Server: %s", "Schema", "Options"};
    std::printf("accelerators for one dialog:");
    for (const char* label : labels) {
      unsigned char text[256];
      std::strcpy(reinterpret_cast<char*>(text), label);
      makeDialogText(used, text, bytes("db1"));
      std::printf("  %s", reinterpret_cast<char*>(text));
    }
    std::printf("\n");
    const std::string refused = errors.take();
    if (!refused.empty()) std::printf("  %s\n", refused.c_str());
  }
  mdsPerTaskTerm();
}

Registration trace({"trace", "FILE [--timestamps] [--no-flush] [--tail N]",
                    "copy standard input to the trace file FILE and the trace window; show the "
                    "window's last N lines",
                    runTrace, demoTrace, 80});

}  // namespace
}  // namespace zutool

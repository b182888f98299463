// ZuTrace: what reaches the file and the window, line by line; the window's
// tail against the whole trace as a model; eight threads at once; and every
// host call of a trace's life failed in turn.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "desktop/trace.h"
#include "desktop/trace_window.h"
#include "desktop/window_handle.h"
#include "platform/desktop.h"
#include "platform/dos.h"
#include "support/dos_world.h"
#include "support/fault_sweep.h"

namespace {

namespace dsk = zu::platform::desktop;
using zu::desktop::kTraceWindowLimit;
using zu::desktop::toWindow;
using zutest::u;

constexpr const char* kTraceName = "C:\\TRACE.TXT";
constexpr const char* kTraceHost = "c/TRACE.TXT";

std::string windowText(const ZuTrace& trace) {
  dsk::Window* edit = toWindow(trace.editWindow);
  std::string text(static_cast<std::size_t>(dsk::send(edit, dsk::kMessageGetTextLength, 0, 0)), '\0');
  dsk::send(edit, dsk::kMessageGetText, text.size() + 1, reinterpret_cast<std::intptr_t>(text.data()));
  return text;
}

class Trace : public zutest::DosWorld {
 protected:
  void SetUp() override {
    DosWorld::SetUp();
    windowsBefore_ = dsk::windowCount();
  }
  void TearDown() override {
    EXPECT_EQ(dsk::windowCount(), windowsBefore_) << "a window was left";
    DosWorld::TearDown();
  }

 private:
  std::uint32_t windowsBefore_ = 0;
};

TEST_F(Trace, LinesReachFileAndWindowAlike) {
  writeHost(kTraceHost, "an old trace");
  ZuTrace trace;
  ASSERT_EQ(trace.initialize(nullptr, 1, u(kTraceName)), ZU_OK);
  EXPECT_EQ(readHost(kTraceHost), "") << "emptied";
  EXPECT_EQ(trace.flags, ZU_TRACE_TO_WINDOW | ZU_TRACE_READY | ZU_TRACE_LINE_START | ZU_TRACE_FLUSH_LINES);

  EXPECT_EQ(trace.writeString(u("ab")), ZU_OK);
  EXPECT_EQ(trace.writeString(u("cdx"), 2), ZU_OK);
  EXPECT_EQ(trace.writeString(ZuSubString(u("ef"))), ZU_OK);
  EXPECT_EQ(readHost(kTraceHost), "") << "nothing goes out before the end of the line";
  EXPECT_EQ(trace.writeEol(), ZU_OK);
  zu::platform::dos.utcNow = [](zu::platform::UtcTime* t) { *t = {24, 11, 2026, 9, 5, 7, 89}; };
  trace.setTimestamps(1);
  trace.writeString(u("x"));
  trace.writeString(u("y"));
  trace.writeEol();
  trace.writeEol();
  trace.setFlushLines(0);
  EXPECT_EQ(trace.writeLine(u("last")), ZU_OK);
  const std::string expected = "abcdef\r\n09:05:07.08 xy\r\n09:05:07.08 \r\n09:05:07.08 last\r\n";
  EXPECT_EQ(readHost(kTraceHost), expected);
  EXPECT_EQ(windowText(trace), expected);
  EXPECT_EQ(trace.windowTextLength, expected.size());

  // The window: on top and back, the edit control filling it, one window only.
  trace.setTopMost();
  EXPECT_TRUE(dsk::isTopMost(toWindow(trace.traceWindow)));
  trace.resetTopMost();
  EXPECT_FALSE(dsk::isTopMost(toWindow(trace.traceWindow)));
  dsk::setPosition(toWindow(trace.traceWindow), dsk::Place::kTop, 0, 0, 300, 200, dsk::kKeepPosition);
  dsk::Rect edit{};
  dsk::windowRect(toWindow(trace.editWindow), &edit);
  EXPECT_EQ(edit.right - edit.left, 300);
  EXPECT_EQ(edit.bottom - edit.top, 200);
  const std::uint32_t windows = dsk::windowCount();
  EXPECT_EQ(trace.setTraceToWindow(), ZU_OK);
  EXPECT_EQ(dsk::windowCount(), windows);

  const std::string huge(70000, 'z');
  EXPECT_EQ(trace.writeString(u(huge)), ZU_ERROR);
  EXPECT_EQ(onlyError(), "2716 Cannot handle strings larger than 65500 bytes.");

  trace.resetTrace();
  EXPECT_EQ(trace.traceWindow, nullptr);
  EXPECT_EQ(trace.flags & ZU_TRACE_READY, 0u);
  EXPECT_NE(trace.flags & ZU_TRACE_TO_WINDOW, 0u) << "survives until the next initialize";

  // Neither file nor window: lines are gathered and cleared.
  ASSERT_EQ(trace.initialize(nullptr, 0, nullptr), ZU_OK);
  EXPECT_EQ(trace.flags & ZU_TRACE_TIMESTAMPS, 0u);
  EXPECT_EQ(trace.writeLine(u("nowhere")), ZU_OK);
  EXPECT_EQ(trace.line.length, 0u);
  // A window, but lines not sent to it.
  ASSERT_EQ(trace.initialize(nullptr, 2, nullptr), ZU_OK);
  ASSERT_NE(trace.traceWindow, nullptr);
  trace.writeLine(u("unseen"));
  EXPECT_EQ(windowText(trace), "");
  ASSERT_EQ(trace.initialize(nullptr, 0, u("C:\\NO\\SUCH\\DIR.TXT")), ZU_ERROR);
  EXPECT_EQ(trace.fileHandle, 0);
  takeErrors();
}

// The window against the whole trace: always its tail, cut at a line
// start, never above the limit; the oldest lines go in groups of ten, and
// only when the new line would not fit.
TEST_F(Trace, WindowKeepsTheTailInGroupsOfTenLines) {
  ZuTrace trace;
  ASSERT_EQ(trace.initialize(nullptr, 1, nullptr), ZU_OK);
  std::string all;
  std::vector<std::size_t> starts;  // of each line in `all`
  std::size_t dropped = 0;          // lines gone from the window
  auto add = [&](const std::string& body) {
    const std::size_t before = trace.windowTextLength;
    ASSERT_EQ(trace.writeLine(u(body)), ZU_OK);
    starts.push_back(all.size());
    all += body + "\r\n";
    const std::string text = windowText(trace);
    ASSERT_LE(text.size(), kTraceWindowLimit);
    ASSERT_EQ(text.size(), trace.windowTextLength);
    ASSERT_EQ(all.compare(all.size() - text.size(), text.size(), text), 0) << "the tail of the trace";
    const std::size_t first = all.size() - text.size();
    if (body.size() + 2 > kTraceWindowLimit) {
      ASSERT_EQ(text.size(), kTraceWindowLimit) << "a line longer than the window: its end";
      dropped = starts.size() - 1;
      return;
    }
    std::size_t line = 0;
    while (line < starts.size() && starts[line] < first) ++line;
    ASSERT_TRUE(line < starts.size() && starts[line] == first) << "cut at a line start";
    const std::size_t gone = line - dropped;
    const bool full = before + body.size() + 2 > kTraceWindowLimit;
    EXPECT_EQ(gone != 0, full);
    if (gone != 0 && line != starts.size() - 1) {
      EXPECT_EQ(gone % 10, 0u) << "groups of ten";
    }
    dropped = line;
  };
  // To exactly the limit: nothing dropped; then one character more.
  for (int i = 0; i < 327; ++i) add(std::string(98, static_cast<char>('a' + i % 26)));
  add(std::string(65, '!'));
  EXPECT_EQ(trace.windowTextLength, kTraceWindowLimit);
  EXPECT_EQ(dropped, 0u);
  add("x");
  EXPECT_EQ(dropped, 10u);
  std::mt19937 rng(1124);
  for (int i = 0; i < 400; ++i) {
    const std::size_t size = rng() % 8 == 0 ? rng() % 6000 : rng() % 200;
    add(std::string(size, static_cast<char>('A' + i % 26)));
  }
  add(std::string(40000, 'L'));  // longer than the window: its end only
  add("after");
}

std::string threadLine(int thread, int index) {
  return "thread " + std::to_string(thread) + " line " + std::to_string(index) + " " +
         std::string(static_cast<std::size_t>(index * 7 % 90), static_cast<char>('a' + thread));
}

// Splits at CR LF and checks each line is one that a thread wrote, each
// thread's lines in their order; returns how many there were.
std::size_t checkLines(const std::string& text, std::vector<int>* next) {
  std::size_t count = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = text.find("\r\n", at);
    EXPECT_NE(end, std::string::npos) << "a line without its end";
    if (end == std::string::npos) break;
    const std::string line = text.substr(at, end - at);
    int thread = -1, index = -1;
    EXPECT_EQ(std::sscanf(line.c_str(), "thread %d line %d", &thread, &index), 2) << line;
    EXPECT_TRUE(thread >= 0 && thread < static_cast<int>(next->size()) && index >= (*next)[thread] &&
                line == threadLine(thread, index))
        << "not whole or out of order: " << line;
    if (thread >= 0 && thread < static_cast<int>(next->size())) (*next)[thread] = index + 1;
    ++count;
    at = end + 2;
  }
  return count;
}

TEST_F(Trace, TraceThreadsNeverMixTheirLines) {
  constexpr int kThreads = 8;
  constexpr int kLines = 150;
  ZuTrace trace;
  ASSERT_EQ(trace.initialize(nullptr, 1, u(kTraceName)), ZU_OK);
  std::atomic<int> running{kThreads};
  std::atomic<bool> overLimit{false};
  std::thread watcher([&] {
    while (running.load() > 0) {
      if (dsk::send(toWindow(trace.editWindow), dsk::kMessageGetTextLength, 0, 0) >
          static_cast<std::intptr_t>(kTraceWindowLimit)) {
        overLimit = true;
      }
      std::this_thread::yield();
    }
  });
  std::vector<std::thread> threads;
  std::atomic<int> failed{0};
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < kLines; ++i) {
        if (trace.writeLine(u(threadLine(t, i))) != ZU_OK) ++failed;
      }
      --running;
    });
  }
  for (std::thread& th : threads) th.join();
  watcher.join();
  EXPECT_EQ(failed.load(), 0);
  EXPECT_FALSE(overLimit.load());
  std::vector<int> next(kThreads, 0);
  EXPECT_EQ(checkLines(readHost(kTraceHost), &next), static_cast<std::size_t>(kThreads * kLines));
  for (int t = 0; t < kThreads; ++t) EXPECT_EQ(next[t], kLines) << "thread " << t;
  const std::string window = windowText(trace);
  EXPECT_LE(window.size(), kTraceWindowLimit);
  std::vector<int> windowNext(kThreads, 0);
  EXPECT_GT(checkLines(window, &windowNext), 0u);
}

TEST_F(Trace, EveryHostFailureEndsInItsRow) {
  {
    // The class is registered once per process, from the first attempt on:
    // that attempt must not be one the sweep fails.
    ZuTrace first;
    ASSERT_EQ(first.initialize(nullptr, 1, nullptr), ZU_OK);
  }
  const std::uint32_t windows = dsk::windowCount();
  zutest::HostSweepTally tally;
  EXPECT_TRUE(zutest::sweepHostFaults(
      [&] {
        ZuStatus status = ZU_ERROR;
        {
          ZuTrace trace;
          if (trace.initialize(nullptr, 1, u(kTraceName)) == ZU_OK) {
            status = ZU_OK;
            for (const char* text : {"one", "two", "three"}) {
              if (trace.writeLine(u(text)) != ZU_OK) status = ZU_ERROR;
            }
            trace.setFlushLines(0);
            if (trace.writeLine(u("four")) != ZU_OK) status = ZU_ERROR;
          }
        }
        EXPECT_EQ(dsk::windowCount(), windows) << "the trace's windows go with it";
        return status;
      },
      {2719, 1501, 1506, 1503, 1507, 1508, 1509, 30041, 30045, 30190}, &tally));
  EXPECT_GT(tally.failures, 0u);
}

}  // namespace

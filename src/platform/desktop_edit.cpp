// The edit control: a text buffer answering the messages of a multi-line,
// read-only control. Lines end in CR LF, and nothing wraps, so line n starts
// after the nth CR LF; a text ending in CR LF has an empty last line.
#include <cstring>
#include <utility>

#include "platform/desktop_records.h"
#include "platform/host.h"

namespace zu::platform::desktop {
namespace {

constexpr std::uint32_t kLargestLimit = 0x7FFFFFFE;
constexpr std::intptr_t kNone = -1;
constexpr char kCarriageReturn = '\r';
constexpr char kLineFeed = '\n';

// Offset of the start of `line`, or kNone when the text has fewer lines.
std::intptr_t lineStart(const EditText& e, std::uintptr_t line) {
  std::uint32_t at = 0;
  for (std::uintptr_t n = 0; n < line; ++n) {
    std::uint32_t i = at;
    while (i + 1 < e.length && !(e.bytes[i] == kCarriageReturn && e.bytes[i + 1] == kLineFeed)) ++i;
    if (i + 1 >= e.length) return kNone;
    at = i + 2;
  }
  return at;
}

std::uint32_t lineOf(const EditText& e, std::uint32_t offset) {
  std::uint32_t line = 0;
  for (std::uint32_t i = 0; i + 1 < e.length && i + 1 <= offset; ++i) {
    if (e.bytes[i] == kCarriageReturn && e.bytes[i + 1] == kLineFeed) ++line;
  }
  return line;
}

std::uint32_t lineCount(const EditText& e) {
  std::uint32_t count = 1;
  for (std::uint32_t i = 0; i + 1 < e.length; ++i) {
    if (e.bytes[i] == kCarriageReturn && e.bytes[i + 1] == kLineFeed) ++count;
  }
  return count;
}

void select(EditText& e, std::intptr_t start, std::intptr_t end) {
  if (start < 0) {  // no selection: the caret stays where it was
    e.selectionEnd = e.selectionStart;
    return;
  }
  auto clamp = [&](std::intptr_t at) {
    return at < 0 || static_cast<std::uintptr_t>(at) > e.length ? e.length
                                                                 : static_cast<std::uint32_t>(at);
  };
  std::uint32_t from = clamp(start), to = clamp(end);
  if (from > to) std::swap(from, to);
  e.selectionStart = from;
  e.selectionEnd = to;
}

// Cuts the new text to what the limit leaves room for, as the control does.
void replaceSelection(EditText& e, const char* text) {
  if (text == nullptr) text = "";
  const std::uint32_t selected = e.selectionEnd - e.selectionStart;
  const std::uint32_t kept = e.length - selected;
  const std::uint32_t room = e.limit > kept ? e.limit - kept : 0;
  std::size_t n = std::strlen(text);
  if (n > room) n = room;
  const std::uint32_t newLength = kept + static_cast<std::uint32_t>(n);
  if (newLength + 1 > e.capacity) {
    // Grows by half again, so a stream of small appends copies little.
    std::uint32_t capacity = newLength + 1 + newLength / 2;
    char* grown = static_cast<char*>(host.realloc(e.bytes, capacity));
    if (grown == nullptr) return;
    e.bytes = grown;
    e.capacity = capacity;
  }
  std::memmove(e.bytes + e.selectionStart + n, e.bytes + e.selectionEnd, e.length - e.selectionEnd);
  std::memcpy(e.bytes + e.selectionStart, text, n);
  e.length = newLength;
  e.bytes[e.length] = 0;
  e.selectionStart += static_cast<std::uint32_t>(n);
  e.selectionEnd = e.selectionStart;
}

std::intptr_t copyText(const EditText& e, std::uintptr_t size, char* buffer) {
  if (size == 0 || buffer == nullptr) return 0;
  const std::uint32_t n = e.length < size - 1 ? e.length : static_cast<std::uint32_t>(size - 1);
  if (n > 0) std::memcpy(buffer, e.bytes, n);
  buffer[n] = 0;
  return n;
}

}  // namespace

EditText* newEditText() {
  auto* e = static_cast<EditText*>(host.malloc(sizeof(EditText)));
  if (e == nullptr) return nullptr;
  *e = EditText{};
  e->limit = kEditDefaultLimit;
  e->redraw = true;
  return e;
}

void freeEditText(EditText* edit) {
  host.free(edit->bytes);
  host.free(edit);
}

std::intptr_t editMessage(Window* window, unsigned message, std::uintptr_t wParam,
                          std::intptr_t lParam) {
  EditText& e = *window->edit;
  switch (message) {
    case kMessageSetRedraw:
      e.redraw = wParam != 0;
      return 0;
    case kMessageGetText:
      return copyText(e, wParam, reinterpret_cast<char*>(lParam));
    case kMessageGetTextLength:
      return e.length;
    case kEditSetSelection:
      select(e, static_cast<std::intptr_t>(wParam), lParam);
      return 0;
    case kEditLineIndex:
      if (static_cast<std::intptr_t>(wParam) == kNone) return lineStart(e, lineOf(e, e.selectionStart));
      return lineStart(e, wParam);
    case kEditGetLineCount:
      return lineCount(e);
    case kEditReplaceSelection:
      replaceSelection(e, reinterpret_cast<const char*>(lParam));
      return 0;
    case kEditLimitText:
      e.limit = wParam == 0 || wParam > kLargestLimit ? kLargestLimit : static_cast<std::uint32_t>(wParam);
      return 0;
    default:
      return 0;
  }
}

}  // namespace zu::platform::desktop

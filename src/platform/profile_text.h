// The profile format as pure work on bytes: lines read and classified,
// names looked up, and the edit of one write computed into a new text. No
// host call here; profile.cpp brings the bytes and takes them away.
#ifndef ZUUTL_PLATFORM_PROFILE_TEXT_H
#define ZUUTL_PLATFORM_PROFILE_TEXT_H

#include <cstddef>
#include <cstdint>

namespace zu::platform::profile {

// A text of `size` bytes; null only when empty.
struct Text {
  const unsigned char* bytes = nullptr;
  std::size_t size = 0;
};

// A trimmed name or value, pointing into the caller's or the file's text.
struct Span {
  const unsigned char* bytes = nullptr;
  std::size_t size = 0;
};

enum class LineKind { kBlank, kComment, kSection, kEntry, kOther };

// One line: [start, contentEnd) is its text without the line end,
// [contentEnd, end) the LF or CR LF (empty on an unterminated last line).
// `name` is the section's or the entry's name; an entry's value is
// [valueStart, valueEnd), valueStart being where a new value would go
// (after the '=' and the blanks behind it).
struct Line {
  std::size_t start = 0, contentEnd = 0, end = 0;
  LineKind kind = LineKind::kBlank;
  Span name;
  std::size_t valueStart = 0, valueEnd = 0;
};

// The line that begins at `at`, which is below text.size.
Line readLine(const Text& text, std::size_t at);

// A caller's NUL-terminated name or value, trimmed.
Span trimmed(const unsigned char* text);
bool sameName(const Span& a, const Span& b);

// The first entry `entry` under a heading of `section`.
bool findEntry(const Text& text, const Span& section, const Span& entry, Line* found);

// Hands each distinct name of the list to `take` (which returns false to
// stop): the sections with `section` null, else the entries of `section`,
// in the order of first appearance and the spelling of it.
void listNames(const Text& text, const Span* section, bool (*take)(void* context, const Span& name),
               void* context);

// One write: `entry` null removes the section; `value` null the entry.
struct Edit {
  Span section;
  const Span* entry = nullptr;
  const Span* value = nullptr;
};

// Whether the names and value of an edit can be written and read back.
bool writable(const Edit& edit);

// The most bytes apply() can add to a text.
std::size_t growthBound(const Edit& edit);

// Writes the edited text into `out`, which has room for text.size plus
// growthBound(edit) bytes, and returns its size.
std::size_t apply(const Text& text, const Edit& edit, unsigned char* out);

}  // namespace zu::platform::profile

#endif

#include "platform/profile_text.h"

#include <cstring>

#include "platform/dos_names.h"

namespace zu::platform::profile {
namespace {

constexpr unsigned char kLineFeed = '\n';
constexpr unsigned char kReturn = '\r';
constexpr unsigned char kHeadingOpen = '[';
constexpr unsigned char kHeadingClose = ']';
constexpr unsigned char kAssign = '=';
constexpr unsigned char kComment = ';';
constexpr unsigned char kHashComment = '#';
// Brackets and '=' of the lines an edit adds, and at most four line ends
// of two bytes: one closing an unterminated last line, a blank line, the
// heading's and the entry's.
constexpr std::size_t kAddedPunctuation = 3;
constexpr std::size_t kAddedLineEnds = 4 * 2;

Span span(const unsigned char* from, const unsigned char* to) {
  while (from < to && isDosSpace(*from)) ++from;
  while (to > from && isDosSpace(to[-1])) --to;
  return Span{from, static_cast<std::size_t>(to - from)};
}

bool contains(const Span& s, unsigned char c) {
  return s.size != 0 && std::memchr(s.bytes, c, s.size) != nullptr;
}

bool hasLineBreak(const Span& s) { return contains(s, kLineFeed) || contains(s, kReturn); }

// Walks the lines of a text, keeping whether they stand under a heading of
// one section.
class Walk {
 public:
  Walk(const Text& text, const Span* section) : text_(text), section_(section) {}

  bool next(Line* line) {
    if (at_ >= text_.size) return false;
    *line = readLine(text_, at_);
    at_ = line->end;
    if (line->kind == LineKind::kSection) inSection_ = section_ != nullptr && sameName(line->name, *section_);
    return true;
  }
  // Whether the line last read is a heading of the section or under one.
  bool inSection() const { return inSection_; }

 private:
  const Text& text_;
  const Span* section_;
  std::size_t at_ = 0;
  bool inSection_ = false;
};

// A name of the list that `section` asks for (see listNames).
bool listed(const Line& line, const Walk& walk, const Span* section) {
  const LineKind kind = section == nullptr ? LineKind::kSection : LineKind::kEntry;
  return line.kind == kind && line.name.size != 0 && (section == nullptr || walk.inSection());
}

// Whether a line before `before` already gave `name` to the list.
bool listedBefore(const Text& text, const Span* section, std::size_t before, const Span& name) {
  Walk walk(text, section);
  Line line;
  while (walk.next(&line) && line.start < before) {
    if (listed(line, walk, section) && sameName(line.name, name)) return true;
  }
  return false;
}

class Writer {
 public:
  explicit Writer(unsigned char* out) : out_(out) {}
  void put(const unsigned char* bytes, std::size_t size) {
    if (size != 0) std::memcpy(out_ + size_, bytes, size);
    size_ += size;
  }
  void put(const Span& s) { put(s.bytes, s.size); }
  void put(unsigned char c) { out_[size_++] = c; }
  void copy(const Text& text, std::size_t from, std::size_t to) { put(text.bytes + from, to - from); }
  std::size_t size() const { return size_; }

 private:
  unsigned char* out_;
  std::size_t size_ = 0;
};

// New lines end as the file's first line does: CR LF or LF.
Span lineEndOf(const Text& text) {
  static constexpr unsigned char kCrLf[] = {kReturn, kLineFeed};
  const Line first = text.size != 0 ? readLine(text, 0) : Line();
  return first.end - first.contentEnd == sizeof kCrLf ? Span{kCrLf, 2} : Span{kCrLf + 1, 1};
}

void putEntry(Writer& w, const Edit& edit, const Span& lineEnd) {
  w.put(*edit.entry);
  w.put(kAssign);
  w.put(*edit.value);
  w.put(lineEnd);
}

// Every line but those under a heading of the section (entry null) or the
// section's entries of that name.
std::size_t removeLines(const Text& text, const Edit& edit, Writer& w) {
  Walk walk(text, &edit.section);
  Line line;
  while (walk.next(&line)) {
    const bool gone = edit.entry == nullptr ? walk.inSection()
                                            : walk.inSection() && line.kind == LineKind::kEntry &&
                                                  sameName(line.name, *edit.entry);
    if (!gone) w.copy(text, line.start, line.end);
  }
  return w.size();
}

// After the last entry under the section's first heading, or after the
// heading itself; false when the section has no heading.
bool insertionPoint(const Text& text, const Span& section, Line* after) {
  Walk walk(text, &section);
  Line line;
  bool found = false;
  while (walk.next(&line)) {
    if (line.kind == LineKind::kSection) {
      if (found) break;
      if (!walk.inSection()) continue;
      found = true;
      *after = line;
    } else if (found && line.kind == LineKind::kEntry) {
      *after = line;
    }
  }
  return found;
}

std::size_t setEntry(const Text& text, const Edit& edit, Writer& w) {
  const Span lineEnd = lineEndOf(text);
  Line line;
  if (findEntry(text, edit.section, *edit.entry, &line)) {
    w.copy(text, 0, line.valueStart);
    w.put(*edit.value);
    w.copy(text, line.contentEnd, text.size);
    return w.size();
  }
  if (insertionPoint(text, edit.section, &line)) {
    w.copy(text, 0, line.end);
    if (line.end == line.contentEnd) w.put(lineEnd);
    putEntry(w, edit, lineEnd);
    w.copy(text, line.end, text.size);
    return w.size();
  }
  w.copy(text, 0, text.size);
  if (text.size != 0) {
    Walk walk(text, nullptr);
    while (walk.next(&line)) {
    }
    if (line.end == line.contentEnd) w.put(lineEnd);
    if (line.kind != LineKind::kBlank) w.put(lineEnd);
  }
  w.put(kHeadingOpen);
  w.put(edit.section);
  w.put(kHeadingClose);
  w.put(lineEnd);
  putEntry(w, edit, lineEnd);
  return w.size();
}

// The start of the first heading line at or after `at`, a line's start;
// text.size when there is none. Outside a wanted section only headings
// matter, so this looks for '[' and not at every line.
std::size_t nextHeading(const Text& text, std::size_t at) {
  const unsigned char* bytes = text.bytes;
  for (std::size_t from = at; from < text.size;) {
    const void* open = std::memchr(bytes + from, kHeadingOpen, text.size - from);
    if (open == nullptr) break;
    std::size_t start = static_cast<std::size_t>(static_cast<const unsigned char*>(open) - bytes);
    from = start + 1;
    while (start > at && bytes[start - 1] != kLineFeed && isDosSpace(bytes[start - 1])) --start;
    if (start == at || bytes[start - 1] == kLineFeed) return start;
  }
  return text.size;
}

}  // namespace

Line readLine(const Text& text, std::size_t at) {
  const unsigned char* bytes = text.bytes;
  Line line;
  line.start = at;
  const void* lf = std::memchr(bytes + at, kLineFeed, text.size - at);
  const std::size_t e = lf != nullptr ? static_cast<std::size_t>(static_cast<const unsigned char*>(lf) - bytes) : text.size;
  line.end = e < text.size ? e + 1 : e;
  line.contentEnd = e < text.size && e > at && bytes[e - 1] == kReturn ? e - 1 : e;
  std::size_t p = at;
  while (p < line.contentEnd && isDosSpace(bytes[p])) ++p;
  const unsigned char* end = bytes + line.contentEnd;
  if (p == line.contentEnd) {
    line.kind = LineKind::kBlank;
  } else if (bytes[p] == kComment || bytes[p] == kHashComment) {
    line.kind = LineKind::kComment;
  } else if (bytes[p] == kHeadingOpen) {
    line.kind = LineKind::kSection;
    const unsigned char* close =
        static_cast<const unsigned char*>(std::memchr(bytes + p + 1, kHeadingClose, line.contentEnd - p - 1));
    line.name = span(bytes + p + 1, close != nullptr ? close : end);
  } else if (const void* assign = std::memchr(bytes + p, kAssign, line.contentEnd - p)) {
    const unsigned char* eq = static_cast<const unsigned char*>(assign);
    line.kind = LineKind::kEntry;
    line.name = span(bytes + p, eq);
    const Span value = span(eq + 1, end);
    line.valueStart = value.size != 0 ? static_cast<std::size_t>(value.bytes - bytes) : line.contentEnd;
    line.valueEnd = line.valueStart + value.size;
  } else {
    line.kind = LineKind::kOther;
  }
  return line;
}

Span trimmed(const unsigned char* text) {
  return span(text, text + std::strlen(reinterpret_cast<const char*>(text)));
}

bool sameName(const Span& a, const Span& b) {
  return a.size == b.size && (a.size == 0 || platform::sameName(a.bytes, b.bytes, a.size));
}

bool findEntry(const Text& text, const Span& section, const Span& entry, Line* found) {
  std::size_t at = 0;
  while ((at = nextHeading(text, at)) < text.size) {
    *found = readLine(text, at);
    at = found->end;
    if (!sameName(found->name, section)) continue;
    // Under the heading: each line up to the next heading.
    while (at < text.size) {
      *found = readLine(text, at);
      if (found->kind == LineKind::kSection) break;
      at = found->end;
      if (found->kind == LineKind::kEntry && sameName(found->name, entry)) return true;
    }
  }
  return false;
}

void listNames(const Text& text, const Span* section, bool (*take)(void* context, const Span& name),
               void* context) {
  Walk walk(text, section);
  Line line;
  while (walk.next(&line)) {
    if (!listed(line, walk, section) || listedBefore(text, section, line.start, line.name)) continue;
    if (!take(context, line.name)) return;
  }
}

bool writable(const Edit& edit) {
  if (edit.section.size == 0 || hasLineBreak(edit.section) || contains(edit.section, kHeadingClose)) {
    return false;
  }
  if (edit.entry != nullptr) {
    const Span& e = *edit.entry;
    if (e.size == 0 || hasLineBreak(e) || contains(e, kAssign) || e.bytes[0] == kHeadingOpen ||
        e.bytes[0] == kComment || e.bytes[0] == kHashComment) {
      return false;
    }
  }
  return edit.value == nullptr || !hasLineBreak(*edit.value);
}

std::size_t growthBound(const Edit& edit) {
  return edit.section.size + (edit.entry != nullptr ? edit.entry->size : 0) +
         (edit.value != nullptr ? edit.value->size : 0) + kAddedPunctuation + kAddedLineEnds;
}

std::size_t apply(const Text& text, const Edit& edit, unsigned char* out) {
  Writer w(out);
  if (edit.entry == nullptr || edit.value == nullptr) return removeLines(text, edit, w);
  return setEntry(text, edit, w);
}

}  // namespace zu::platform::profile

// The INI text rules on arbitrary bytes: a file, and one write of a section,
// an entry and a value cut from the input. The file lies in a heap buffer of
// exactly its size, and the edited text in one of exactly the size the edit
// may need, so the sanitizer reports any access past either. Every line
// must lie inside the text, and after the edit a lookup must give what was
// written, or nothing after a removal.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "platform/profile_text.h"

namespace {

using zu::platform::profile::Edit;
using zu::platform::profile::Line;
using zu::platform::profile::Span;
using zu::platform::profile::Text;

constexpr std::size_t kHeader = 4;  // the kind of write and three lengths
constexpr unsigned kNameLimit = 9;

void check(bool holds) {
  if (!holds) std::abort();
}

bool inside(const Span& s, const Text& text) {
  return s.size == 0 || (s.bytes >= text.bytes && s.bytes + s.size <= text.bytes + text.size);
}

void checkLines(const Text& text) {
  for (std::size_t at = 0; at < text.size;) {
    const Line line = zu::platform::profile::readLine(text, at);
    check(line.start == at && line.contentEnd <= line.end && line.end <= text.size && line.end > at);
    check(inside(line.name, text) && line.valueStart <= line.valueEnd && line.valueEnd <= line.contentEnd);
    at = line.end;
  }
}

bool takeAny(void* context, const Span& name) {
  check(inside(name, *static_cast<const Text*>(context)));
  return true;
}

bool isSection(void* context, const Span& name) {
  check(!zu::platform::profile::sameName(name, *static_cast<const Span*>(context)));
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < kHeader) return 0;
  std::string parts[3];
  std::size_t at = kHeader;
  for (int p = 0; p < 3; ++p) {
    const std::size_t n = std::min<std::size_t>(data[1 + p] % kNameLimit, size - at);
    parts[p].assign(reinterpret_cast<const char*>(data + at), n);
    at += n;
  }
  std::vector<unsigned char> file(data + at, data + size);
  const Text text{file.empty() ? nullptr : file.data(), file.size()};
  checkLines(text);
  zu::platform::profile::listNames(text, nullptr, takeAny, const_cast<Text*>(&text));

  const unsigned kind = data[0] % 3;  // set, remove the entry, remove the section
  const Span section = zu::platform::profile::trimmed(reinterpret_cast<const unsigned char*>(parts[0].c_str()));
  const Span entry = zu::platform::profile::trimmed(reinterpret_cast<const unsigned char*>(parts[1].c_str()));
  const Span value = zu::platform::profile::trimmed(reinterpret_cast<const unsigned char*>(parts[2].c_str()));
  zu::platform::profile::listNames(text, &section, takeAny, const_cast<Text*>(&text));
  Edit edit;
  edit.section = section;
  edit.entry = kind == 2 ? nullptr : &entry;
  edit.value = kind == 0 ? &value : nullptr;
  if (!zu::platform::profile::writable(edit)) return 0;

  std::vector<unsigned char> out(text.size + zu::platform::profile::growthBound(edit));
  const Text edited{out.data(), zu::platform::profile::apply(text, edit, out.data())};
  check(edited.size <= out.size());
  checkLines(edited);
  Line found;
  const bool there = zu::platform::profile::findEntry(edited, section, entry, &found);
  if (kind == 0) {
    check(there && found.valueEnd - found.valueStart == value.size &&
          std::memcmp(edited.bytes + found.valueStart, value.bytes, value.size) == 0);
  } else {
    check(!there);
  }
  if (kind == 2) zu::platform::profile::listNames(edited, nullptr, isSection, const_cast<Span*>(&section));
  return 0;
}

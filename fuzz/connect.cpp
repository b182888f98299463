// The connect-string parser on arbitrary bytes. The first byte picks the
// separator (';' or ','); the rest is the string, in a heap buffer of
// exactly its size so that the sanitizer reports any read past it. After
// the parse every key and value must lie inside the string, each key must
// be found again and marked, the unused walk must agree with the count,
// and adding, replacing, removing and writing back must hold together.
// Once the parser and its errors are gone, the heap must hold no more
// blocks than before.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "errors/error_list.h"
#include "errors/keeper.h"
#include "frame/thread.h"
#include "memory/heap.h"
#include "parsing/value_parser.h"

namespace {

constexpr unsigned char kSeparators[] = {';', ','};
// Added keys and values are cut from the string, at most this long.
constexpr size_t kSliceLimit = 24;

void check(bool holds) {
  if (!holds) std::abort();
}

std::uint32_t blocksInUse() {
  std::uint32_t n = 0;
  for (zu::heap::RamSegment* s = zu::heap::head(); s != nullptr; s = s->nextSegment) {
    n += s->blocksInUse;
  }
  return n;
}

bool inside(const ZuSubString* view, const unsigned char* text, size_t size) {
  return view != nullptr && view->length <= size &&
         (view->length == 0 || (view->bytes >= text && view->bytes + view->length <= text + size));
}

// A NUL-terminated copy of up to kSliceLimit bytes of the string from
// `start`; a NUL inside ends it early.
std::string slice(const unsigned char* text, size_t size, size_t start) {
  if (start >= size) return std::string();
  const size_t n = std::min(kSliceLimit, size - start);
  return std::string(reinterpret_cast<const char*>(text + start), n).c_str();
}

const unsigned char* u(const std::string& s) {
  return reinterpret_cast<const unsigned char*>(s.c_str());
}

void exercise(ZuValueParser& p, const unsigned char* text, size_t size, bool parsed) {
  const unsigned short count = p.attributes.count;
  check(p.getUnusedCount() == count);
  for (unsigned short i = 0; i < count; ++i) {
    const ZuSubString* key = p.getAttributeKey(i);
    check(inside(key, text, size));
    check(inside(static_cast<const ZuSubString*>(p.attributes.getPtrDataAtIndex(i)), text, size));
    check(p.isAttributeValue(key) == 1);
    check(p.getAttributeValue(key) == p.attributes.getPtrDataAtIndex(i));
  }
  // Keys are unique, so each read marked its own; without bits none is.
  check(p.getUnusedCount() == (parsed ? 0 : count));
  unsigned short walked = 0;
  while (p.getUnusedAttribute() != nullptr) ++walked;
  check(walked == (parsed ? 0 : count));
  check(p.getAttributeKey(count) == nullptr);
  if (count >= 2) {
    std::string k1(reinterpret_cast<const char*>(p.getAttributeKey(0)->bytes), p.getAttributeKey(0)->length);
    std::string k2(reinterpret_cast<const char*>(p.getAttributeKey(1)->bytes), p.getAttributeKey(1)->length);
    const ZuSubString* value = nullptr;
    check(p.getAttributeValue(u(k1), u(k2), value) == ZU_ERROR && value == nullptr);
  }

  // Added from slices of the string; the first may hit an existing key.
  const std::string key = slice(text, size, 0);
  const std::string value = slice(text, size, size / 2);
  const std::string alias = slice(text, size, size / 3);
  const std::uint32_t before = p.attributes.count;
  if (p.addAttribute(u(key), u(value), alias.empty() ? nullptr : u(alias)) == ZU_OK) {
    check(p.attributes.count == before || p.attributes.count == before + 1);
    check(p.addAttribute(u(std::string("Added")), u(value), nullptr) == ZU_OK);
  }
  const ZuSubString* added = p.getAttributeValue(u(std::string("added")));
  check(added != nullptr && added->length >= value.size());
  ZuString built;
  if (p.buildString(&built) == ZU_OK) {
    std::uint32_t expected = 0;
    for (unsigned short i = 0; i < p.attributes.count; ++i) {
      expected += (i != 0 ? 2 : 1) + p.getAttributeKey(i)->length +
                  static_cast<const ZuSubString*>(p.attributes.getPtrDataAtIndex(i))->length;
    }
    check(built.length == expected);
  }
  p.removeAttribute(u(key));
  p.removeAttribute(u(std::string("ADDED")));
  check(p.isAttributeValue(u(std::string("added"))) == 0);
  p.getUnusedCount();
  while (p.getUnusedAttribute() != nullptr) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  static const bool threadReady = mdsPerThreadInit() == 1;
  check(threadReady);
  const unsigned char separator = kSeparators[data[0] % sizeof kSeparators];
  const size_t textSize = size - 1;
  auto* text = static_cast<unsigned char*>(std::malloc(textSize != 0 ? textSize : 1));
  if (textSize != 0) std::memcpy(text, data + 1, textSize);
  const std::uint32_t blocksBefore = blocksInUse();
  {
    ZuErrorList errors;
    ZuErrorKeeper::setErrorList(&errors);
    {
      const ZuSubString view(text, static_cast<std::uint32_t>(textSize));
      ZuValueParser p(&view, separator, data[0] & 2 ? nullptr : reinterpret_cast<const unsigned char*>("fuzz"));
      const bool parsed = p.initialize() == ZU_OK;
      check(parsed || ZuErrorKeeper::getLastError() != nullptr);
      exercise(p, text, textSize, parsed);
    }
    ZuErrorKeeper::giveUpErrorList();
  }
  check(blocksInUse() == blocksBefore);
  std::free(text);
  return 0;
}

// Collation through glibc: the bytes become wide characters by their code
// points, and the locale's wide collation orders them. In the C locale that
// is code point order, so the result does not depend on the machine.
#include "platform/collation.h"

#include <atomic>

#include "platform/charset.h"
#include "platform/host.h"

namespace zu::platform {
namespace {

// Set by setCollationLocale; null means the user's locale.
std::atomic<locale_t> chosen{nullptr};

locale_t openCollation(const char* name) {
  return host.newlocale(LC_COLLATE_MASK, name, static_cast<locale_t>(nullptr));
}

locale_t active() {
  locale_t picked = chosen.load(std::memory_order_acquire);
  if (picked != nullptr) return picked;
  // An environment naming a locale that is not installed falls back to C.
  static const locale_t user = [] {
    locale_t l = openCollation("");
    return l != nullptr ? l : openCollation("C");
  }();
  return user;
}

void widen(const unsigned char* text, std::uint32_t length, wchar_t* wide) {
  std::uint32_t i = 0;
  for (; i < length && text[i] != 0; ++i) wide[i] = static_cast<wchar_t>(codePoint(text[i]));
  wide[i] = L'\0';
}

}  // namespace

int collate(const unsigned char* a, std::uint32_t lengthA, const unsigned char* b,
            std::uint32_t lengthB) {
  wchar_t wideA[kCollateMaxLength + 1];
  wchar_t wideB[kCollateMaxLength + 1];
  widen(a, lengthA, wideA);
  widen(b, lengthB, wideB);
  locale_t locale = active();
  return locale != nullptr ? host.wcscoll_l(wideA, wideB, locale) : wcscmp(wideA, wideB);
}

bool setCollationLocale(const char* name) {
  locale_t next = openCollation(name);
  if (next == nullptr) return false;
  locale_t old = chosen.exchange(next, std::memory_order_acq_rel);
  if (old != nullptr) host.freelocale(old);
  return true;
}

}  // namespace zu::platform

#include "odbc_out.h"

#include <cstring>

#include "call_scope.h"

namespace zucsv {
namespace {

template <typename Length>
bool put(const std::string& text, SQLPOINTER buffer, SQLLEN size, Length* length) {
  if (length != nullptr) *length = static_cast<Length>(text.size());
  if (buffer == nullptr || size <= 0) return text.empty() || buffer == nullptr;
  const std::size_t room = static_cast<std::size_t>(size) - 1;
  const std::size_t n = text.size() < room ? text.size() : room;
  std::memcpy(buffer, text.data(), n);
  static_cast<char*>(buffer)[n] = '\0';
  if (n < text.size()) {
    driverWarning("01004", "String data, right truncated.");
    return false;
  }
  return true;
}

}  // namespace

bool putText(const std::string& t, SQLPOINTER b, SQLLEN s, SQLSMALLINT* l) { return put(t, b, s, l); }
bool putText(const std::string& t, SQLPOINTER b, SQLLEN s, SQLINTEGER* l) { return put(t, b, s, l); }
bool putText(const std::string& t, SQLPOINTER b, SQLLEN s, SQLLEN* l) { return put(t, b, s, l); }

std::string inText(const SQLCHAR* text, SQLINTEGER length) {
  if (text == nullptr) return std::string();
  const char* p = reinterpret_cast<const char*>(text);
  if (length == SQL_NTS) return std::string(p);
  if (length < 0) return std::string();
  return std::string(p, static_cast<std::size_t>(length));
}

}  // namespace zucsv

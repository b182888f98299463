// Handing texts and numbers back through ODBC output buffers.
#ifndef ZUCSV_ODBC_OUT_H
#define ZUCSV_ODBC_OUT_H

#include <sql.h>
#include <sqlext.h>

#include <string>

namespace zucsv {

// Copies `text` into `buffer` of `size` bytes, cut to fit with a NUL, and
// its full length into *length. false (and a 01004 warning) when cut.
bool putText(const std::string& text, SQLPOINTER buffer, SQLLEN size, SQLSMALLINT* length);
bool putText(const std::string& text, SQLPOINTER buffer, SQLLEN size, SQLINTEGER* length);
bool putText(const std::string& text, SQLPOINTER buffer, SQLLEN size, SQLLEN* length);

// A NUL-terminated or counted ODBC input text.
std::string inText(const SQLCHAR* text, SQLINTEGER length);

}  // namespace zucsv

#endif

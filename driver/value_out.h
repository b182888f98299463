// A value delivered into a client's buffer as the C type it asks for.
#ifndef ZUCSV_VALUE_OUT_H
#define ZUCSV_VALUE_OUT_H

#include <sql.h>
#include <sqlext.h>

#include <cstddef>

#include "value.h"

namespace zucsv {

// The C type SQL_C_DEFAULT stands for with a value of this type.
SQLSMALLINT defaultCType(ColumnType type);

// Writes `v` as `target` into `buffer` (`size` bytes). Texts (character,
// wide, binary) are written from byte *offset of the value on, and *offset
// moves past what was written: a value cut short gives
// SQL_SUCCESS_WITH_INFO with 01004, and the next piece continues there.
// SQL_ERROR with the reason for a conversion that cannot be made.
SQLRETURN putValue(const Value& v, SQLSMALLINT target, SQLPOINTER buffer, SQLLEN size, SQLLEN* indicator,
                   std::size_t* offset);

}  // namespace zucsv

#endif

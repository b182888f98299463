// SQLGetDiagRec and SQLGetDiagField: the records the handle's last call
// gathered from its error list, read under the handle's call lock.
#include <cstring>

#include "call_scope.h"
#include "handles.h"
#include "odbc_out.h"

using namespace zucsv;

namespace {

Handle* anyHandle(SQLSMALLINT type, SQLHANDLE h) { return asHandle(type, h); }

}  // namespace

ZUCSV_EXPORT SQLRETURN SQL_API SQLGetDiagRec(SQLSMALLINT handleType, SQLHANDLE h, SQLSMALLINT recNumber,
                                           SQLCHAR* state, SQLINTEGER* native, SQLCHAR* message,
                                           SQLSMALLINT bufferLength, SQLSMALLINT* textLength) {
  Handle* handle = anyHandle(handleType, h);
  if (handle == nullptr) return SQL_INVALID_HANDLE;
  CallLockHold hold(handle);
  if (recNumber < 1 || bufferLength < 0) return SQL_ERROR;
  if (static_cast<std::size_t>(recNumber) > handle->diagnostics.size()) return SQL_NO_DATA;
  const DiagRecord& diag = handle->diagnostics[static_cast<std::size_t>(recNumber) - 1];
  if (state != nullptr) std::memcpy(state, diag.state.c_str(), 6);
  if (native != nullptr) *native = diag.native;
  if (textLength != nullptr) *textLength = static_cast<SQLSMALLINT>(diag.text.size());
  if (message == nullptr || bufferLength == 0) return SQL_SUCCESS;
  const std::size_t n = diag.text.size() < static_cast<std::size_t>(bufferLength) - 1
                            ? diag.text.size()
                            : static_cast<std::size_t>(bufferLength) - 1;
  std::memcpy(message, diag.text.data(), n);
  message[n] = '\0';
  return n < diag.text.size() ? SQL_SUCCESS_WITH_INFO : SQL_SUCCESS;
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLGetDiagField(SQLSMALLINT handleType, SQLHANDLE h, SQLSMALLINT recNumber,
                                             SQLSMALLINT identifier, SQLPOINTER info, SQLSMALLINT bufferLength,
                                             SQLSMALLINT* stringLength) {
  Handle* handle = anyHandle(handleType, h);
  if (handle == nullptr) return SQL_INVALID_HANDLE;
  CallLockHold hold(handle);
  switch (identifier) {
    case SQL_DIAG_NUMBER:
      if (info != nullptr) *static_cast<SQLINTEGER*>(info) = static_cast<SQLINTEGER>(handle->diagnostics.size());
      return SQL_SUCCESS;
    case SQL_DIAG_RETURNCODE:
      if (info != nullptr) *static_cast<SQLRETURN*>(info) = SQL_SUCCESS;
      return SQL_SUCCESS;
    case SQL_DIAG_ROW_COUNT:
      if (handleType != SQL_HANDLE_STMT) return SQL_ERROR;
      if (info != nullptr) *static_cast<SQLLEN*>(info) = static_cast<Statement*>(handle)->rowCount;
      return SQL_SUCCESS;
    case SQL_DIAG_CURSOR_ROW_COUNT:
    case SQL_DIAG_DYNAMIC_FUNCTION_CODE:
      if (info != nullptr) *static_cast<SQLINTEGER*>(info) = 0;
      return SQL_SUCCESS;
    case SQL_DIAG_DYNAMIC_FUNCTION:
      putText("", info, bufferLength, stringLength);
      return SQL_SUCCESS;
    default:
      break;
  }
  if (recNumber < 1) return SQL_ERROR;
  if (static_cast<std::size_t>(recNumber) > handle->diagnostics.size()) return SQL_NO_DATA;
  const DiagRecord& diag = handle->diagnostics[static_cast<std::size_t>(recNumber) - 1];
  switch (identifier) {
    case SQL_DIAG_SQLSTATE:
      return putText(diag.state, info, bufferLength, stringLength) ? SQL_SUCCESS : SQL_SUCCESS_WITH_INFO;
    case SQL_DIAG_MESSAGE_TEXT:
      return putText(diag.text, info, bufferLength, stringLength) ? SQL_SUCCESS : SQL_SUCCESS_WITH_INFO;
    case SQL_DIAG_NATIVE:
      if (info != nullptr) *static_cast<SQLINTEGER*>(info) = diag.native;
      return SQL_SUCCESS;
    case SQL_DIAG_CLASS_ORIGIN:
    case SQL_DIAG_SUBCLASS_ORIGIN:
      return putText(diag.state.compare(0, 2, "IM") == 0 ? "ODBC 3.0" : "ISO 9075", info, bufferLength,
                     stringLength)
                 ? SQL_SUCCESS
                 : SQL_SUCCESS_WITH_INFO;
    case SQL_DIAG_CONNECTION_NAME:
    case SQL_DIAG_SERVER_NAME:
      putText("", info, bufferLength, stringLength);
      return SQL_SUCCESS;
    case SQL_DIAG_COLUMN_NUMBER:
    case SQL_DIAG_ROW_NUMBER:
      if (info != nullptr) *static_cast<SQLLEN*>(info) = SQL_NO_COLUMN_NUMBER;
      return SQL_SUCCESS;
    default:
      return SQL_ERROR;
  }
}

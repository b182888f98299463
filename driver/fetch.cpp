// SQLBindCol, SQLFetch, SQLFetchScroll (forward only) and SQLGetData, which
// hands a long value out in pieces.
#include <limits>

#include "call_scope.h"
#include "cursor.h"
#include "handles.h"
#include "value_out.h"

using namespace zucsv;

namespace {

constexpr std::size_t kPiecesDone = std::numeric_limits<std::size_t>::max();

bool needCursor(Statement* stmt) {
  if (stmt->cursor) return true;
  driverError("24000", "Invalid cursor state: no result set is open.");
  return false;
}

SQLRETURN fetch(Statement* stmt) {
  if (!needCursor(stmt)) return SQL_ERROR;
  stmt->onRow = false;
  stmt->pieceColumn = 0;
  if (stmt->rowsFetched != nullptr) *stmt->rowsFetched = 0;
  if (stmt->maxRows != 0 && stmt->rowsSoFar >= stmt->maxRows) return SQL_NO_DATA;
  const CsvReader::Result got = stmt->cursor->fetch(&stmt->row);
  if (got == CsvReader::kError) return SQL_ERROR;
  if (got == CsvReader::kEnd) return SQL_NO_DATA;
  stmt->onRow = true;
  ++stmt->rowsSoFar;
  if (stmt->rowsFetched != nullptr) *stmt->rowsFetched = 1;
  SQLRETURN rc = SQL_SUCCESS;
  for (std::size_t c = 0; c < stmt->columns.size() && c < stmt->row.size(); ++c) {
    const ColumnBinding& b = stmt->columns[c];
    if (!b.bound) continue;
    std::size_t offset = 0;
    const SQLRETURN one = putValue(stmt->row[c], b.targetType, b.value, b.bufferLength, b.lengthOrIndicator, &offset);
    if (one == SQL_ERROR) return SQL_ERROR;
    if (one == SQL_SUCCESS_WITH_INFO) rc = one;
  }
  if (stmt->rowStatus != nullptr) stmt->rowStatus[0] = rc == SQL_SUCCESS ? SQL_ROW_SUCCESS : SQL_ROW_SUCCESS_WITH_INFO;
  return rc;
}

}  // namespace

ZUCSV_EXPORT SQLRETURN SQL_API SQLBindCol(SQLHSTMT h, SQLUSMALLINT column, SQLSMALLINT targetType, SQLPOINTER value,
                                        SQLLEN bufferLength, SQLLEN* lengthOrIndicator) {
  Statement* stmt = asStatement(h);
  if (stmt == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(stmt, "SQLBindCol");
  if (column < 1) {
    driverError("07009", "Invalid descriptor index: bookmarks are not supported.");
    return scope.finish(SQL_ERROR);
  }
  if (stmt->columns.size() < column) stmt->columns.resize(column);
  ColumnBinding& b = stmt->columns[column - 1u];
  b.bound = value != nullptr || lengthOrIndicator != nullptr;
  b.targetType = targetType;
  b.value = value;
  b.bufferLength = bufferLength;
  b.lengthOrIndicator = lengthOrIndicator;
  return scope.finish(SQL_SUCCESS);
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLFetch(SQLHSTMT h) {
  Statement* stmt = asStatement(h);
  if (stmt == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(stmt, "SQLFetch");
  return scope.finish(fetch(stmt));
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLFetchScroll(SQLHSTMT h, SQLSMALLINT orientation, SQLLEN offset) {
  Statement* stmt = asStatement(h);
  if (stmt == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(stmt, "SQLFetchScroll");
  if (orientation != SQL_FETCH_NEXT) {
    driverError("HY106", "Fetch type out of range: the cursor only goes forward.");
    return scope.finish(SQL_ERROR);
  }
  return scope.finish(fetch(stmt));
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLGetData(SQLHSTMT h, SQLUSMALLINT column, SQLSMALLINT targetType, SQLPOINTER value,
                                        SQLLEN bufferLength, SQLLEN* lengthOrIndicator) {
  Statement* stmt = asStatement(h);
  if (stmt == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(stmt, "SQLGetData");
  if (!needCursor(stmt)) return scope.finish(SQL_ERROR);
  if (!stmt->onRow) {
    driverError("24000", "Invalid cursor state: the cursor is not on a row.");
    return scope.finish(SQL_ERROR);
  }
  if (column < 1 || column > stmt->row.size()) {
    driverError("07009", "Invalid descriptor index: column " + std::to_string(column) + ".");
    return scope.finish(SQL_ERROR);
  }
  if (stmt->pieceColumn != column) {
    stmt->pieceColumn = column;
    stmt->pieceOffset = 0;
  } else if (stmt->pieceOffset == kPiecesDone) {
    return scope.finish(SQL_NO_DATA);
  }
  std::size_t offset = stmt->pieceOffset;
  const SQLRETURN rc = putValue(stmt->row[column - 1u], targetType, value, bufferLength, lengthOrIndicator, &offset);
  stmt->pieceOffset = rc == SQL_SUCCESS_WITH_INFO ? offset : kPiecesDone;
  return scope.finish(rc);
}

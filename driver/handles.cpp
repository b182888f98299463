#include "handles.h"

#include "cursor.h"
#include "sql_ast.h"

namespace zucsv {
namespace {

constexpr unsigned kMagicEnvironment = 0x5A43454E;  // "ZCEN"
constexpr unsigned kMagicConnection = 0x5A434443;   // "ZCDC"
constexpr unsigned kMagicStatement = 0x5A435354;    // "ZCST"

unsigned magicOf(SQLSMALLINT kind) {
  switch (kind) {
    case SQL_HANDLE_ENV: return kMagicEnvironment;
    case SQL_HANDLE_DBC: return kMagicConnection;
    case SQL_HANDLE_STMT: return kMagicStatement;
    default: return 0;
  }
}

}  // namespace

Handle::Handle(SQLSMALLINT k) : kind(k), magic(magicOf(k)) {}

Handle::~Handle() {
  magic = 0;
  // The list deletes its records itself; nothing is current on it now.
}

Environment::Environment() : Handle(SQL_HANDLE_ENV) { callLock = &calls; }

Connection::Connection(Environment* env) : Handle(SQL_HANDLE_DBC), environment(env) { callLock = &calls; }

Connection::~Connection() { delete trace; }

Statement::Statement(Connection* dbc) : Handle(SQL_HANDLE_STMT), connection(dbc) { dbc->statements.push_back(this); }

Statement::~Statement() {
  closeCursor();
  auto& list = connection->statements;
  for (std::size_t i = 0; i < list.size(); ++i) {
    if (list[i] == this) {
      list.erase(list.begin() + static_cast<std::ptrdiff_t>(i));
      break;
    }
  }
}

void Statement::closeCursor() {
  cursor.reset();
  onRow = false;
  rowsSoFar = 0;
  pieceColumn = 0;
  pieceOffset = 0;
}

Handle* asHandle(SQLSMALLINT kind, SQLHANDLE h) {
  auto* handle = static_cast<Handle*>(h);
  if (handle == nullptr || handle->magic != magicOf(kind) || handle->kind != kind) return nullptr;
  return handle;
}

Environment* asEnvironment(SQLHANDLE h) { return static_cast<Environment*>(asHandle(SQL_HANDLE_ENV, h)); }
Connection* asConnection(SQLHANDLE h) { return static_cast<Connection*>(asHandle(SQL_HANDLE_DBC, h)); }
Statement* asStatement(SQLHANDLE h) { return static_cast<Statement*>(asHandle(SQL_HANDLE_STMT, h)); }

}  // namespace zucsv

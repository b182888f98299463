// SQLAllocHandle, SQLFreeHandle and SQLFreeStmt. An environment brings up
// the library's task and takes one use of its page cache; freeing it gives
// both back.
#include "call_scope.h"
#include "handles.h"
#include "cursor.h"
#include "sql_ast.h"

using namespace zucsv;

namespace {

// 64 KiB blocks of the page cache: 2 MiB of CSV pages at most.
constexpr unsigned short kCacheBlocks = 32;

SQLRETURN allocEnvironment(SQLHANDLE* out) {
  mdsPerTaskInit();
  auto* env = new Environment;
  SQLRETURN rc;
  {
    CallScope scope(env, "SQLAllocHandle");
    env->pageCache = bvmInit(kCacheBlocks);
    rc = scope.finish(env->pageCache != nullptr ? SQL_SUCCESS : SQL_ERROR);
  }
  if (rc == SQL_ERROR) {
    delete env;
    mdsPerTaskTerm();
    *out = SQL_NULL_HENV;
    return SQL_ERROR;
  }
  *out = env;
  return SQL_SUCCESS;
}

SQLRETURN freeEnvironment(Environment* env) {
  if (env->connections > 0) {
    CallScope scope(env, "SQLFreeHandle");
    driverError("HY010", "Function sequence error: the environment still has connections.");
    return scope.finish(SQL_ERROR);
  }
  {
    CallScope scope(env, "SQLFreeHandle");
    bvmTerm(env->pageCache);
    scope.finish(SQL_SUCCESS);
  }
  delete env;
  mdsPerTaskTerm();
  return SQL_SUCCESS;
}

SQLRETURN freeConnection(Connection* dbc) {
  if (dbc->connected) {
    CallScope scope(dbc, "SQLFreeHandle");
    driverError("HY010", "Function sequence error: the connection is still open.");
    return scope.finish(SQL_ERROR);
  }
  {
    CallScope scope(dbc, "SQLFreeHandle");
    --dbc->environment->connections;
    delete dbc->trace;
    dbc->trace = nullptr;
    scope.finish(SQL_SUCCESS);
  }
  delete dbc;
  return SQL_SUCCESS;
}

}  // namespace

ZUCSV_EXPORT SQLRETURN SQL_API SQLAllocHandle(SQLSMALLINT type, SQLHANDLE input, SQLHANDLE* output) {
  if (output == nullptr) return SQL_ERROR;
  switch (type) {
    case SQL_HANDLE_ENV:
      return allocEnvironment(output);
    case SQL_HANDLE_DBC: {
      Environment* env = asEnvironment(input);
      if (env == nullptr) return SQL_INVALID_HANDLE;
      CallScope scope(env, "SQLAllocHandle");
      auto* dbc = new Connection(env);
      ++env->connections;
      *output = dbc;
      return scope.finish(SQL_SUCCESS);
    }
    case SQL_HANDLE_STMT: {
      Connection* dbc = asConnection(input);
      if (dbc == nullptr) return SQL_INVALID_HANDLE;
      CallScope scope(dbc, "SQLAllocHandle");
      if (!dbc->connected) {
        driverError("08003", "Connection not open.");
        return scope.finish(SQL_ERROR);
      }
      *output = new Statement(dbc);
      return scope.finish(SQL_SUCCESS);
    }
    default:
      return SQL_ERROR;
  }
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLFreeHandle(SQLSMALLINT type, SQLHANDLE h) {
  switch (type) {
    case SQL_HANDLE_ENV: {
      Environment* env = asEnvironment(h);
      return env == nullptr ? SQL_INVALID_HANDLE : freeEnvironment(env);
    }
    case SQL_HANDLE_DBC: {
      Connection* dbc = asConnection(h);
      return dbc == nullptr ? SQL_INVALID_HANDLE : freeConnection(dbc);
    }
    case SQL_HANDLE_STMT: {
      Statement* stmt = asStatement(h);
      if (stmt == nullptr) return SQL_INVALID_HANDLE;
      {
        // The cursor's files and sort are released inside a call scope, so
        // whatever they record has a list to go to.
        CallScope scope(stmt, "SQLFreeHandle");
        stmt->closeCursor();
        stmt->prepared.reset();
        scope.finish(SQL_SUCCESS);
      }
      // Leaving the connection's list of statements is a change to the
      // connection, made under its lock.
      CallLockHold hold(stmt->connection);
      delete stmt;
      return SQL_SUCCESS;
    }
    default:
      return SQL_ERROR;
  }
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLFreeStmt(SQLHSTMT h, SQLUSMALLINT option) {
  Statement* stmt = asStatement(h);
  if (stmt == nullptr) return SQL_INVALID_HANDLE;
  if (option == SQL_DROP) return SQLFreeHandle(SQL_HANDLE_STMT, h);
  CallScope scope(stmt, "SQLFreeStmt");
  switch (option) {
    case SQL_CLOSE:
      stmt->closeCursor();
      break;
    case SQL_UNBIND:
      stmt->columns.clear();
      break;
    case SQL_RESET_PARAMS:
      stmt->parameters.clear();
      break;
    default:
      driverError("HY092", "Invalid attribute/option identifier.");
      return scope.finish(SQL_ERROR);
  }
  return scope.finish(SQL_SUCCESS);
}

ZUCSV_EXPORT SQLRETURN SQL_API SQLCloseCursor(SQLHSTMT h) {
  Statement* stmt = asStatement(h);
  if (stmt == nullptr) return SQL_INVALID_HANDLE;
  CallScope scope(stmt, "SQLCloseCursor");
  if (!stmt->cursor) {
    driverError("24000", "Invalid cursor state: no cursor is open.");
    return scope.finish(SQL_ERROR);
  }
  stmt->closeCursor();
  return scope.finish(SQL_SUCCESS);
}

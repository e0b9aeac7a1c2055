#include "FileScanner/MultimediaQueryMgr.h"

#include "FileScanner/LockWaiting.h"
#include "FileScanner/SqlConnection.h"

std::vector<std::string> MultimediaQueryMgr::vdata;
std::vector<std::string> MultimediaQueryMgr::vcol_head;
char** MultimediaQueryMgr::result = nullptr;

// The first look is read-only, so that no database is made.  The handle that a failed look leaves
// is kept, and the object counts as connected.
int MultimediaQueryMgr::ConnectDB(const char* fileName) {
  if (fileName == nullptr || connection_ != nullptr) return 0;
  if (sqlite3_open_v2(fileName, &connection_, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) return 0;
  sqlite3_close(connection_);
  connection_ = nullptr;
  if (orx::OpenConnection(fileName, &connection_) != SQLITE_OK) return 0;
  orx::WaitForLocks(connection_);
  return 1;
}

void MultimediaQueryMgr::DisconnectDB() {
  if (!Connected()) return;
  sqlite3_close(connection_);
  disconnected_ = true;
}

int MultimediaQueryMgr::ExecSqlStatmentNoValueReturn(const char* sql) {
  if (sql == nullptr || !Connected()) return 0;
  return sqlite3_exec(connection_, sql, nullptr, nullptr, nullptr) == SQLITE_OK ? 1 : 0;
}

int MultimediaQueryMgr::ExecSqlStatment(const char* sql) {
  return orx::FetchTable(Connected() ? connection_ : nullptr, sql,
                         {&nLastResult, &nRows, &nColumns, &vcol_head, &vdata});
}

int MultimediaQueryMgr::GetAutoCommit() {
  return Connected() ? sqlite3_get_autocommit(connection_) : 0;
}

int MultimediaQueryMgr::SetAutoCommit() {
  return ExecSqlStatmentNoValueReturn("Begin Transaction");
}

#include "FileScanner/MultimediaQueryMgr.h"

#include <new>

#include "FileScanner/DatabasePath.h"
#include "FileScanner/LockWaiting.h"
#include "FileScanner/SqlConnection.h"
#include "OSAL/Fault.h"
#include "OSAL/GuardedFiles.h"

std::vector<std::string> MultimediaQueryMgr::vdata;
std::vector<std::string> MultimediaQueryMgr::vcol_head;
char** MultimediaQueryMgr::result = nullptr;

namespace {

// Opening with this file system fails without touching the file.
constexpr char kNoFileSystem[] = "none";

// A look that makes no database, and opens what has bytes alone.
int Probe(const char* fileName, sqlite3** connection) {
  auto found = orx::DatabasePath::kRefused;
  orx::Guarded(__func__, [&] { found = orx::LookAtDatabase(fileName); });
  const bool refused = found == orx::DatabasePath::kRefused;
  return sqlite3_open_v2(fileName, connection, SQLITE_OPEN_READONLY,
                         refused ? kNoFileSystem : nullptr);
}

}  // namespace

// The handle that a failed first look leaves is kept, and the object counts as connected.
int MultimediaQueryMgr::ConnectDB(const char* fileName) {
  if (fileName == nullptr || connection_ != nullptr) return 0;
  if (Probe(fileName, &connection_) != SQLITE_OK) return 0;
  sqlite3_close(connection_);
  if (orx::OpenConnection(fileName, &connection_, SQLITE_OPEN_READWRITE) != SQLITE_OK) return 0;
  orx::WaitForLocks(connection_);
  guarded_ = new (std::nothrow) orx::GuardedDatabase;
  if (guarded_ != nullptr) guarded_->Hold(sqlite3_db_filename(connection_, "main"));
  return 1;
}

void MultimediaQueryMgr::DisconnectDB() {
  if (!Connected()) return;
  sqlite3_close(connection_);
  disconnected_ = true;
  delete guarded_;
  guarded_ = nullptr;
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

// What a failing statement means for the scan or the item that is being written.
#include <string>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/MediaMetaData.h"
#include "FileScanner/SqlStatement.h"
#include "FileScanner/WriteTransaction.h"
#include "OSAL/Fault.h"
#include "OSAL/ORXLog.h"

using Kind = orx::Writing::Kind;

namespace {

bool InTransaction(sqlite3* connection) {
  return connection != nullptr && sqlite3_get_autocommit(connection) == 0;
}

// Statements of the library's own, which nobody has asked for and the log does not show.
bool RunQuietly(sqlite3* connection, const char* sql) {
  return sqlite3_exec(connection, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

std::string ItemKey(const MediaMetaData& record) {
  return std::string("item ") + (record.GetFullPath() != nullptr ? record.GetFullPath() : "");
}

}  // namespace

bool DataBaseMgr::GivenUp() const { return writing_->Stopped() || writing_->again != SQLITE_OK; }

void DataBaseMgr::FailWriting(int code) {
  if (writing_->kind != Kind::kNothing && writing_->failure == SQLITE_OK) writing_->failure = code;
}

void DataBaseMgr::OutOfMemory(const char* where) {
  orx::NoteOutOfMemory(where);
  FailWriting(SQLITE_NOMEM);
}

// Damage ends a transaction, as SQLite takes no more writes in it; a statement that stands alone
// has failed alone.
void DataBaseMgr::NoteFailedWrite(int code, const std::string& sql) {
  if (orx::IsMachineCode(code)) return FailWriting(code);
  if (!orx::IsDamageCode(code)) return;
  if (writing_->kind == Kind::kPair) return FailWriting(code);
  if (writing_->kind == Kind::kTransaction) RunAgain(code, sql);
}

// A query that fails ends the walk that asked, and the scan goes on, unless SQLite has ended the
// transaction and taken back what was written in it.
void DataBaseMgr::NoteFailedQuery(int code, const std::string& sql) {
  const bool inScan = writing_->kind == Kind::kTransaction || writing_->kind == Kind::kStepByStep;
  if (!inScan || !orx::IsUnanswered(code)) return;
  ORX_LOG_ERROR("Error : a question to the database failed, [%s]: %s", sqlite3_errstr(code),
                sql.c_str());
  if (writing_->kind == Kind::kStepByStep) return;
  if (orx::IsDamageCode(code)) return RunAgain(code, sql);
  if (InTransaction(ppDataBase)) return;
  const bool nothingLost = sqlite3_total_changes(ppDataBase) == writing_->changesBefore;
  if (nothingLost && RunQuietly(ppDataBase, "BEGIN;")) return;
  RunAgain(code, sql);
}

// A transaction that has only read cannot write while another connection does, and while it holds
// its read lock the other one cannot finish: neither would get on.  Nothing is lost by beginning
// anew.
bool DataBaseMgr::GiveUpReadLock(int code) {
  if ((code & 0xFF) != SQLITE_BUSY || writing_->kind != Kind::kTransaction) return false;
  if (sqlite3_txn_state(ppDataBase, nullptr) != SQLITE_TXN_READ) return false;
  return RunQuietly(ppDataBase, "ROLLBACK;") && RunQuietly(ppDataBase, "BEGIN;");
}

// Where SQLite has ended the transaction of a pair at the failure of its first statement, the
// second one must not stand alone.
void DataBaseMgr::ReopenPair() {
  if (writing_->kind == Kind::kPair && !InTransaction(ppDataBase)) RunQuietly(ppDataBase, "BEGIN;");
}

bool DataBaseMgr::MetDamage(const orx::SqlStatement& statement) const {
  return !writing_->damaged.empty() && MetDamage(statement.Printed());
}

bool DataBaseMgr::MetDamage(const std::string& sql) const {
  return writing_->damaged.count(sql) > 0;
}

// The scan is undone and runs once more, without what it has met.
void DataBaseMgr::RunAgain(int code, const std::string& without) {
  if (writing_->again == SQLITE_OK) writing_->again = code;
  writing_->damaged.insert(without);
}

bool DataBaseMgr::IsLeftOut(const MediaMetaData& record) const {
  if (writing_->damaged.empty() || writing_->damaged.count(ItemKey(record)) == 0) return false;
  ORX_LOG_ERROR("Error : [%s] is left out, as the database is damaged where it belongs",
                record.GetFullPath() != nullptr ? record.GetFullPath() : "");
  return true;
}

void DataBaseMgr::NoteDamagedItem(const MediaMetaData& record) {
  if (writing_->again != SQLITE_OK) writing_->damaged.insert(ItemKey(record));
}

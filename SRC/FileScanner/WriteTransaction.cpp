#include "FileScanner/WriteTransaction.h"

#include "FileScanner/DataBaseMgr.h"
#include "OSAL/ORXLog.h"

namespace orx {

WriteTransaction::WriteTransaction(DataBaseMgr* database) : database_(database) {
  database_->writing_ = DataBaseMgr::Writing::kInTransaction;
  database_->ExecSqlStatmentNoValueReturn("BEGIN;");
}

bool WriteTransaction::Failed() noexcept {
  return DataBaseMgr::mpThisInstance != nullptr && DataBaseMgr::mpThisInstance->WritingFailed();
}

bool WriteTransaction::End() noexcept {
  if (database_ == nullptr) return false;
  DataBaseMgr& database = *database_;
  database_ = nullptr;
  const bool failed = database.WritingFailed();
  database.writing_ = DataBaseMgr::Writing::kPlain;
  if (!failed && database.ExecSqlStatmentNoValueReturn("COMMIT;") == 1) return true;
  if (failed) ORX_LOG_ERROR("Error : what was written is undone");
  if (sqlite3_get_autocommit(DataBaseMgr::ppDataBase) == 0)
    database.ExecSqlStatmentNoValueReturn("ROLLBACK;");
  return false;
}

bool WriteTransaction::IsOpen(const DataBaseMgr& database) noexcept {
  return database.writing_ != DataBaseMgr::Writing::kPlain ||
         sqlite3_get_autocommit(DataBaseMgr::ppDataBase) == 0;
}

WritePair::WritePair(DataBaseMgr* database) {
  if (DataBaseMgr::ppDataBase != nullptr && !WriteTransaction::IsOpen(*database))
    transaction_.emplace(database);
}

void RevocableRemoval::Begin() noexcept {
  if (begun_ || database_.writing_ != DataBaseMgr::Writing::kInTransaction) return;
  begun_ = database_.ExecSqlStatmentNoValueReturn("SAVEPOINT RemovedFolder;") == 1;
}

void RevocableRemoval::Undo() noexcept {
  if (begun_) database_.ExecSqlStatmentNoValueReturn("ROLLBACK TO RemovedFolder;");
  End();
}

void RevocableRemoval::End() noexcept {
  if (begun_) database_.ExecSqlStatmentNoValueReturn("RELEASE RemovedFolder;");
  begun_ = false;
}

}  // namespace orx

#include "FileScanner/WriteTransaction.h"

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/SqlStatement.h"
#include "OSAL/Fault.h"
#include "OSAL/ORXLog.h"

namespace orx {
namespace {

constexpr char kBegin[] = "BEGIN;";
constexpr char kCommit[] = "COMMIT;";
constexpr char kRollback[] = "ROLLBACK;";

bool InTransaction() {
  return DataBaseMgr::ppDataBase != nullptr && sqlite3_get_autocommit(DataBaseMgr::ppDataBase) == 0;
}

}  // namespace

bool IsMachineCode(int code) {
  switch (code & 0xFF) {
    case SQLITE_NOMEM:
    case SQLITE_FULL:
    case SQLITE_IOERR:
    case SQLITE_CANTOPEN:
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_PROTOCOL:
    case SQLITE_INTERRUPT:
    case SQLITE_ABORT:
    case SQLITE_INTERNAL:
      return true;
    default:  // what the statement itself asked for
      return false;
  }
}

bool IsDamageCode(int code) { return (code & 0xFF) == SQLITE_CORRUPT; }

// ---- a scan ------------------------------------------------------------------------------------

void ScanTransaction::Run(DataBaseMgr* database, int* status, Walking scan) {
  const int before = status != nullptr ? *status : 0;
  for (const auto kind :
       {Writing::Kind::kTransaction, Writing::Kind::kTransaction, Writing::Kind::kStepByStep}) {
    const Outcome outcome = RunOnce(database, kind, scan);
    if (outcome == Outcome::kKept) break;
    if (status != nullptr) *status = before;
    if (outcome == Outcome::kUndone) break;
  }
  database->writing_->damaged.clear();
}

ScanTransaction::Outcome ScanTransaction::RunOnce(DataBaseMgr* database, Writing::Kind kind,
                                                  Walking scan) {
  Writing& writing = *database->writing_;
  writing.kind = kind;
  writing.failure = writing.again = SQLITE_OK;
  if (kind == Writing::Kind::kTransaction) {
    Begin(database);
    writing.changesBefore = sqlite3_total_changes(DataBaseMgr::ppDataBase);
  }
  if (!writing.Stopped()) Guarded(__func__, [&scan] { scan.run(scan.walk); });
  return End(database);
}

// What is written without a transaction could not be undone.
void ScanTransaction::Begin(DataBaseMgr* database) {
  int code = SQLITE_OK;
  if (database->Exec(kBegin, &code) == 0 && IsMachineCode(code)) database->FailWriting(code);
}

ScanTransaction::Outcome ScanTransaction::End(DataBaseMgr* database) {
  Writing& writing = *database->writing_;
  const auto kind = writing.kind;
  writing.kind = Writing::Kind::kNothing;
  database->statements_->Clear();
  int failure = writing.failure;
  const int again = writing.again;
  writing.failure = writing.again = SQLITE_OK;  // what the host does next is not given up
  if (failure == SQLITE_OK && again != SQLITE_OK) {
    ORX_LOG_ERROR("Error : [%s] in the database, the scan is run once more without what met it",
                  sqlite3_errstr(again));
    if (InTransaction()) database->Exec(kRollback);
    return Outcome::kAgain;
  }
  if (kind == Writing::Kind::kTransaction && failure == SQLITE_OK) {
    if (database->Exec(kCommit, &failure) == 1) return Outcome::kKept;
  }
  if (failure == SQLITE_OK) return Outcome::kKept;
  const char* what = kind == Writing::Kind::kStepByStep ? "written last" : "written";
  ORX_LOG_ERROR("Error : what was %s is undone, [%s]", what, sqlite3_errstr(failure));
  if (InTransaction()) database->Exec(kRollback);
  return Outcome::kUndone;
}

bool ScanTransaction::GivenUp() {
  return DataBaseMgr::mpThisInstance != nullptr && DataBaseMgr::mpThisInstance->GivenUp();
}

void ScanTransaction::MendOrphans(DataBaseMgr* database, const char* directory,
                                  bool hasMediaTables) {
  database->MendOrphans(directory, hasMediaTables);
}

// ---- the rows of one item ----------------------------------------------------------------------

WritePair::WritePair(DataBaseMgr* database) : database_(nullptr) {
  Writing& writing = *database->writing_;
  outer_ = writing.kind;
  const bool alone = outer_ == Writing::Kind::kNothing || outer_ == Writing::Kind::kStepByStep;
  if (!alone || DataBaseMgr::ppDataBase == nullptr || InTransaction()) return;
  database_ = database;
  writing.kind = Writing::Kind::kPair;
  writing.failure = SQLITE_OK;
  database->Exec(kBegin);
}

bool WritePair::EndAtDamage() {
  if (database_ == nullptr || !IsDamageCode(database_->writing_->failure)) return false;
  End();
  return true;
}

// What is undone was said of each statement that failed.
bool WritePair::End() {
  if (database_ == nullptr) return true;
  DataBaseMgr& database = *database_;
  database_ = nullptr;
  Writing& writing = *database.writing_;
  writing.kind = outer_;
  const int failure = writing.failure;
  const bool stopsTheScan = outer_ == Writing::Kind::kStepByStep && !IsDamageCode(failure);
  if (!stopsTheScan) writing.failure = SQLITE_OK;
  if (failure == SQLITE_OK) {
    int code = SQLITE_OK;
    if (database.Exec(kCommit, &code) == 1) return true;
    database.FailWriting(code);
  }
  if (InTransaction()) database.Exec(kRollback);
  return false;
}

// ---- a new database ----------------------------------------------------------------------------

WriteTransaction::WriteTransaction(DataBaseMgr* database) : database_(database) {
  Writing& writing = *database->writing_;
  writing.kind = Writing::Kind::kTransaction;
  writing.failure = writing.again = SQLITE_OK;
  ScanTransaction::Begin(database);
}

bool WriteTransaction::End() {
  if (database_ == nullptr) return false;
  DataBaseMgr* database = database_;
  database_ = nullptr;
  return ScanTransaction::End(database) == ScanTransaction::Outcome::kKept;
}

}  // namespace orx

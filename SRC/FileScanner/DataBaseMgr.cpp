// The instance, its connection and the two ways of running SQL.
#include "FileScanner/DataBaseMgr.h"

#include <atomic>
#include <string>

#include "FileScanner/DataBaseGuard.h"
#include "FileScanner/ResultRows.h"
#include "FileScanner/SqlConnection.h"
#include "FileScanner/SqlStatement.h"
#include "OSAL/Fault.h"
#include "OSAL/ORXAString.h"
#include "OSAL/ORXCString.h"
#include "OSAL/ORXLog.h"

DataBaseMgr* DataBaseMgr::mpThisInstance = nullptr;
sqlite3* DataBaseMgr::ppDataBase = nullptr;
std::vector<std::string> DataBaseMgr::vdata;
std::vector<std::string> DataBaseMgr::vcol_head;
char** DataBaseMgr::result = nullptr;

namespace {

constexpr char kNotOpen[] = "no database is open";

}  // namespace

char* GetUniqueId() {
  static std::atomic<int> counter{0};
  return ORXCString::DupCopy(std::to_string(++counter).c_str());
}

DataBaseMgr* DataBaseMgr::GetInstance() {
  if (mpThisInstance == nullptr) orx::Guarded(__func__, [] { mpThisInstance = new DataBaseMgr; });
  return mpThisInstance;
}

void DataBaseMgr::DestroyInstance() {
  delete mpThisInstance;
  mpThisInstance = nullptr;
}

DataBaseMgr::DataBaseMgr() : statements_(std::make_unique<orx::StatementCache>()) {}

DataBaseMgr::~DataBaseMgr() {
  CloseDatabase();
  bInvalidateAllItemsCancelFlag = 0;
}

// A statement that another instance compiled keeps the connection alive until it is done with it.
void DataBaseMgr::CloseDatabase() {
  statements_->Clear();
  sqlite3_close_v2(ppDataBase);
  ppDataBase = nullptr;
}

void DataBaseMgr::FailWriting() {
  if (writing_ == Writing::kInTransaction) writing_ = Writing::kFailed;
}

void DataBaseMgr::OutOfMemory(const char* where) {
  orx::NoteOutOfMemory(where);
  FailWriting();
}

void DataBaseMgr::NoteCode(int code) {
  switch (code & 0xFF) {
    case SQLITE_NOMEM:
    case SQLITE_FULL:
    case SQLITE_IOERR:
    case SQLITE_CANTOPEN:
    case SQLITE_CORRUPT:
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_PROTOCOL:
    case SQLITE_INTERRUPT:
    case SQLITE_ABORT:
    case SQLITE_INTERNAL:
      return FailWriting();
    default:  // what the statement itself asked for
      return;
  }
}

void DataBaseMgr::LogFailedStatement(const char* sql, int code, const char* message) {
  orx::WriteLogLine(orx::LogLevel::kError, orx::SourceName(__FILE__),
                    "ExecSqlStatmentNoValueReturn", __LINE__,
                    "[DataBaseMgr::ExecSqlStatmentNoValueReturn]\n\tquery : %s\n\texec failed "
                    "[%d]\n\terrmsg : [%s]",
                    sql, code, message);
}

int DataBaseMgr::ExecSqlStatmentNoValueReturn(const char* sql) {
  if (sql == nullptr) return 0;
  if (ppDataBase == nullptr) {
    LogFailedStatement(sql, SQLITE_MISUSE, kNotOpen);
    return 0;
  }
  if (WritingFailed()) return 0;
  char* message = nullptr;
  const int code = sqlite3_exec(ppDataBase, sql, nullptr, nullptr, &message);
  if (code == SQLITE_OK) return 1;
  NoteCode(code);
  LogFailedStatement(sql, code, message != nullptr ? message : "");
  sqlite3_free(message);
  return 0;
}

int DataBaseMgr::ExecSqlStatment(const char* sql) {
  if (WritingFailed()) {
    orx::ClearResult(Result(), SQLITE_ABORT);
    return 0;
  }
  return Guard(this).Run(__func__, 0, [&] {
    const int fetched = orx::FetchTable(ppDataBase, sql, Result());
    NoteCode(nLastResult);
    return fetched;
  });
}

// Does for a statement with bound values what ExecSqlStatmentNoValueReturn does for a text.
int DataBaseMgr::Run(const orx::SqlStatement& statement) {
  if (WritingFailed()) return 0;
  return Guard(this).Run(__func__, 0, [&] { return RunCompiled(statement); });
}

int DataBaseMgr::RunCompiled(const orx::SqlStatement& statement) {
  std::string reason;
  if (ppDataBase == nullptr || !statement.Accepted(&reason)) {
    LogRefusedStatement(statement.Printed(), reason);
    return 0;
  }
  int code = SQLITE_OK;
  if (sqlite3_stmt* compiled = statements_->Get(ppDataBase, statement, &code);
      compiled != nullptr) {
    const orx::StatementUse use(compiled);
    if (statement.BindTo(compiled)) {
      do {
        code = sqlite3_step(compiled);
      } while (code == SQLITE_ROW);
      if (code == SQLITE_DONE) return 1;
    }
    code = sqlite3_errcode(ppDataBase);
  }
  NoteCode(code);
  LogFailedStatement(statement.Printed().c_str(), code, sqlite3_errmsg(ppDataBase));
  return 0;
}

// Says what SQLite thinks of the printed text, which is compiled for that and never run; the text
// may be one that it would take, and then the reason of the refusal is given.
void DataBaseMgr::LogRefusedStatement(const std::string& printed, const std::string& reason) {
  if (ppDataBase == nullptr) return LogFailedStatement(printed.c_str(), SQLITE_MISUSE, kNotOpen);
  sqlite3_stmt* compiled = nullptr;
  const int code = sqlite3_prepare_v2(ppDataBase, printed.c_str(), -1, &compiled, nullptr);
  if (code != SQLITE_OK) {
    LogFailedStatement(printed.c_str(), code, sqlite3_errmsg(ppDataBase));
  } else {
    LogFailedStatement(printed.c_str(), SQLITE_ERROR, reason.c_str());
  }
  sqlite3_finalize(compiled);
}

orx::QueryResult DataBaseMgr::Result() {
  return {&nLastResult, &nRows, &nColumns, &vcol_head, &vdata};
}

// Does for a statement with bound values what ExecSqlStatment does for a text.
int DataBaseMgr::Query(const orx::SqlStatement& statement, orx::ResultRows* rows) {
  if (WritingFailed()) {
    orx::ClearResult(Result(), SQLITE_ABORT);
    return 0;
  }
  const orx::FaultWatch watch;
  const int queried = Guard(this).Run(__func__, 0, [&] { return QueryCompiled(statement, rows); });
  if (watch.OutOfMemory()) orx::ClearResult(Result(), SQLITE_NOMEM);
  NoteCode(nLastResult);
  return queried;
}

int DataBaseMgr::QueryCompiled(const orx::SqlStatement& statement, orx::ResultRows* rows) {
  orx::ClearResult(Result(), ppDataBase != nullptr ? SQLITE_ERROR : SQLITE_MISUSE);
  std::string reason;
  if (ppDataBase == nullptr || !statement.Accepted(&reason)) return 0;
  sqlite3_stmt* compiled = statements_->Get(ppDataBase, statement, &nLastResult);
  if (compiled == nullptr) return 0;

  const orx::StatementUse use(compiled);
  int code = SQLITE_ERROR;
  if (statement.BindTo(compiled))
    while ((code = sqlite3_step(compiled)) == SQLITE_ROW) AddRow(compiled, rows);
  if (code != SQLITE_DONE) {
    orx::ClearResult(Result(), code);
    return 0;
  }
  nLastResult = SQLITE_OK;
  return 1;
}

void DataBaseMgr::AddRow(sqlite3_stmt* row, orx::ResultRows* rows) {
  nColumns = sqlite3_column_count(row);
  for (int i = 0; i < nColumns; ++i) {
    if (nRows == 0) vcol_head.emplace_back(sqlite3_column_name(row, i));
    auto* cell = reinterpret_cast<const char*>(sqlite3_column_text(row, i));
    if (cell == nullptr && sqlite3_errcode(ppDataBase) == SQLITE_NOMEM) throw std::bad_alloc();
    if (cell == nullptr) cell = "";
    if (rows != nullptr) {
      rows->AddCell(cell);
    } else {
      vdata.emplace_back(cell);
    }
  }
  ++nRows;
}

void DataBaseMgr::DropTable(const TChar* tableName) {
  if (tableName != nullptr) Run(orx::SqlStatement("Drop table %s").Name(tableName));
}

int DataBaseMgr::DestroyTables() {
  ExecSqlStatmentNoValueReturn("Drop table ObjectTable");
  ExecSqlStatmentNoValueReturn("Drop table ContainerTable");
  ExecSqlStatmentNoValueReturn("Drop table AudioTable");
  ExecSqlStatmentNoValueReturn("Drop table VideoTable");
  return ExecSqlStatmentNoValueReturn("Drop table ImageTable");
}

bool DataBaseMgr::NeedToDeleteDB(const char* directoryPath) {
  if (directoryPath == nullptr) return false;
  return Guard(this).Run(__func__, false, [&] {
    // Without an index: the answer looks at the first row in id order.
    const std::string prefix = std::string(directoryPath) + "%";
    Query(orx::SqlStatement("select id from ObjectTable not indexed where FullPath not like '%s'")
              .Text(prefix));
    if (vdata.empty()) return false;
    const int id = ORXAString::Integer(vdata[0].c_str());
    vdata.clear();
    return id >= 1;
  });
}

int DataBaseMgr::NeedToDeleteDBforSorting() {
  return ExecSqlStatmentNoValueReturn(
      "select count(*) from VideoTable where SortIndex is not null");
}

void DataBaseMgr::CancelInvalidateAllItems() { bInvalidateAllItemsCancelFlag = 1; }

void DataBaseMgr::InsertDIRintoDB(const char* /*directoryPath*/) {}

void DataBaseMgr::SetPath() {}

// Whoever takes the address may close the connection or put another in its place; a compiled
// statement left behind would keep the old one from closing.
sqlite3** DataBaseMgr::getPpDataBase() {
  statements_->Clear();
  return &ppDataBase;
}

void DataBaseMgr::setPpDataBase(sqlite3** handle) {
  if (handle == nullptr) return;
  statements_->Clear();
  ppDataBase = *handle;
}

// The instance, its connection and the two ways of running SQL.
#include "FileScanner/DataBaseMgr.h"

#include <atomic>
#include <string>
#include <utility>

#include "FileScanner/CancelRequests.h"
#include "FileScanner/DataBaseGuard.h"
#include "FileScanner/DirectoryScanner.h"
#include "FileScanner/LockWaiting.h"
#include "FileScanner/ResultRows.h"
#include "FileScanner/SqlConnection.h"
#include "FileScanner/SqlStatement.h"
#include "FileScanner/WriteTransaction.h"
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

// The host may ask from another thread; the instances belong to this one.
bool StopAsked() {
  const DirectoryScanner* scanner = DirectoryScanner::singleInstance;
  const DataBaseMgr* database = DataBaseMgr::mpThisInstance;
  return (scanner != nullptr && scanner->bDirectoryScanCancelFlag) ||
         (database != nullptr && database->bInvalidateAllItemsCancelFlag != 0);
}

// A NULL cell is the empty text.
const char* CellText(sqlite3_stmt* row, int column) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row, column));
  if (text == nullptr && sqlite3_errcode(sqlite3_db_handle(row)) == SQLITE_NOMEM)
    throw std::bad_alloc();
  return text != nullptr ? text : "";
}

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

DataBaseMgr::DataBaseMgr()
    : statements_(std::make_unique<orx::StatementCache>()),
      writing_(std::make_unique<orx::Writing>()) {
  vdata.clear();
  vcol_head.clear();
}

DataBaseMgr::~DataBaseMgr() {
  CloseDatabase();
  bInvalidateAllItemsCancelFlag = 0;
  orx::CancelRequests::ofDatabase = false;
}

// As long-lived as the class-wide connection, which may outlive its manager in the hands of a host.
orx::LockWaiting& DataBaseMgr::Waiting() {
  static orx::LockWaiting waiting(StopAsked);
  return waiting;
}

int DataBaseMgr::Connect(const char* fileName, int flags) {
  const int code = orx::OpenConnection(fileName, &ppDataBase, flags);
  if (code == SQLITE_OK) Waiting().Install(ppDataBase);
  return code;
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
  if (GivenUp()) return 0;
  int code = SQLITE_OK;
  if (Exec(sql, &code) == 1) return 1;
  return orx::Guarded(__func__, 0, [&] {
    NoteFailedWrite(code, sql);
    return 0;
  });
}

int DataBaseMgr::Exec(const char* sql, int* outcome) {
  char* message = nullptr;
  const int code = sqlite3_exec(ppDataBase, sql, nullptr, nullptr, &message);
  if (outcome != nullptr) *outcome = code;
  if (code == SQLITE_OK) {
    Waiting().NoteSuccess();
    return 1;
  }
  LogFailedStatement(sql, code, message != nullptr ? message : "");
  sqlite3_free(message);
  return 0;
}

int DataBaseMgr::ExecSqlStatment(const char* sql) {
  if (writing_->Stopped()) {
    orx::ClearResult(Result(), SQLITE_ABORT);
    return 0;
  }
  const int fetched = orx::FetchTable(ppDataBase, sql, Result());
  if (nLastResult != SQLITE_OK && sql != nullptr)
    orx::Guarded(__func__, [&] { NoteFailedQuery(nLastResult, sql); });
  return fetched;
}

// ---- statements with bound values --------------------------------------------------------------

// Does for a statement with bound values what ExecSqlStatmentNoValueReturn does for a text.
int DataBaseMgr::Run(const orx::SqlStatement& statement) {
  if (GivenUp()) return 0;
  return Guard(this).Run(__func__, 0, [&] {
    std::string reason;
    if (ppDataBase != nullptr && statement.Accepted(&reason)) return RunAccepted(statement);
    LogRefusedStatement(statement.Printed(), reason);
    return 0;
  });
}

int DataBaseMgr::RunAccepted(const orx::SqlStatement& statement) {
  if (MetDamage(statement)) {
    ORX_LOG_ERROR("Error : left out, as the database is damaged there: %s",
                  statement.Printed().c_str());
    return 0;
  }
  ReopenPair();
  int code = Execute(statement);
  if (GiveUpReadLock(code)) code = Execute(statement);
  if (code == SQLITE_OK) {
    Waiting().NoteSuccess();
    return 1;
  }
  const std::string printed = statement.Printed();
  LogFailedStatement(printed.c_str(), code, sqlite3_errmsg(ppDataBase));
  NoteFailedWrite(code, printed);
  return 0;
}

// SQLite's code, SQLITE_OK when the statement has run.
int DataBaseMgr::Execute(const orx::SqlStatement& statement) {
  int code = SQLITE_OK;
  const orx::CompiledStatement compiled = Compile(statement, &code);
  if (compiled.get() == nullptr) return code;
  if (!statement.BindTo(compiled.get())) return sqlite3_errcode(ppDataBase);
  do {
    code = sqlite3_step(compiled.get());
  } while (code == SQLITE_ROW);
  return code == SQLITE_DONE ? SQLITE_OK : sqlite3_errcode(ppDataBase);
}

// Compiled statements are kept while a scan runs, and never longer, as one that is left keeps the
// host from closing the connection.
orx::CompiledStatement DataBaseMgr::Compile(const orx::SqlStatement& statement, int* code) {
  if (writing_->kind != orx::Writing::Kind::kTransaction)
    return orx::CompiledStatement::New(ppDataBase, statement.CompiledText(), code);
  return statements_->Get(ppDataBase, statement, code);
}

// Says what SQLite thinks of the printed text, which is compiled for that and never run; the text
// may be one that it would take, and then the reason of the refusal is given.
void DataBaseMgr::LogRefusedStatement(const std::string& printed, const std::string& reason) {
  if (ppDataBase == nullptr) return LogFailedStatement(printed.c_str(), SQLITE_MISUSE, kNotOpen);
  int code = SQLITE_OK;
  const auto compiled = orx::CompiledStatement::New(ppDataBase, printed, &code);
  if (code != SQLITE_OK) {
    LogFailedStatement(printed.c_str(), code, sqlite3_errmsg(ppDataBase));
  } else {
    LogFailedStatement(printed.c_str(), SQLITE_ERROR, reason.c_str());
  }
}

orx::QueryResult DataBaseMgr::Result() {
  return {&nLastResult, &nRows, &nColumns, &vcol_head, &vdata};
}

// Does for a statement with bound values what ExecSqlStatment does for a text.  The members are
// filled at the end: until then a hook of the host's may run queries of its own.
int DataBaseMgr::Query(const orx::SqlStatement& statement) {
  int code = SQLITE_OK;
  int rows = 0;
  int columns = 0;
  std::vector<std::string> names = std::move(vcol_head);
  std::vector<std::string> cells = std::move(vdata);
  const int answered = Read(statement, {&code, &rows, &columns, &names, &cells}, [&](auto* row) {
    columns = sqlite3_column_count(row);
    for (int i = 0; i < columns; ++i) {
      if (rows == 0) names.emplace_back(sqlite3_column_name(row, i));
      cells.emplace_back(CellText(row, i));
    }
    ++rows;
  });
  nLastResult = code;
  nRows = rows;
  nColumns = columns;
  vcol_head = std::move(names);
  vdata = std::move(cells);
  return answered;
}

orx::ResultRows DataBaseMgr::Fetch(const orx::SqlStatement& statement) {
  orx::ResultRows fetched;
  int code = SQLITE_OK;
  fetched.ok = Read(statement, {&code, &fetched.rows, &fetched.columns, nullptr, nullptr},
                    [&](sqlite3_stmt* row) {
                      fetched.columns = sqlite3_column_count(row);
                      for (int i = 0; i < fetched.columns; ++i) fetched.AddCell(CellText(row, i));
                      ++fetched.rows;
                    }) == 1;
  nLastResult = code;
  if (!fetched.ok) return {};  // nor what was read before the failure
  return fetched;
}

template <typename AddRow>
int DataBaseMgr::Read(const orx::SqlStatement& statement, const orx::QueryResult& to,
                      const AddRow& addRow) {
  orx::ClearResult(to, ppDataBase != nullptr ? SQLITE_ERROR : SQLITE_MISUSE);
  if (writing_->Stopped()) *to.code = SQLITE_ABORT;
  if (ppDataBase == nullptr || writing_->Stopped()) return 0;
  if (!orx::Guarded(__func__, [&] { *to.code = ReadAccepted(statement, addRow); }))
    *to.code = SQLITE_NOMEM;
  if (const int code = *to.code; code != SQLITE_OK) orx::ClearResult(to, code);
  if (*to.code == SQLITE_OK) {
    Waiting().NoteSuccess();
    return 1;
  }
  orx::Guarded(__func__, [&] { NoteFailedQuery(*to.code, statement.Printed()); });
  return 0;
}

// SQLite's code, SQLITE_OK when all rows were read.
template <typename AddRow>
int DataBaseMgr::ReadAccepted(const orx::SqlStatement& statement, const AddRow& addRow) {
  std::string reason;
  if (!statement.Accepted(&reason)) return SQLITE_ERROR;
  if (MetDamage(statement)) return SQLITE_CORRUPT;
  int code = SQLITE_OK;
  const orx::CompiledStatement compiled = Compile(statement, &code);
  if (compiled.get() == nullptr) return code;
  if (!statement.BindTo(compiled.get())) return SQLITE_ERROR;
  while ((code = sqlite3_step(compiled.get())) == SQLITE_ROW) addRow(compiled.get());
  return code == SQLITE_DONE ? SQLITE_OK : code;
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
  return orx::Guarded(__func__, false, [&] {
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

void DataBaseMgr::CancelInvalidateAllItems() {
  bInvalidateAllItemsCancelFlag = 1;
  orx::CancelRequests::ofDatabase = true;
}

void DataBaseMgr::InsertDIRintoDB(const char* /*directoryPath*/) {}

void DataBaseMgr::SetPath() {}

sqlite3** DataBaseMgr::getPpDataBase() { return &ppDataBase; }

void DataBaseMgr::setPpDataBase(sqlite3** handle) {
  if (handle != nullptr) ppDataBase = *handle;
}

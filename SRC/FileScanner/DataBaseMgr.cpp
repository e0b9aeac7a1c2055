// The connection, the tables and the two ways of running SQL.
#include "FileScanner/DataBaseMgr.h"

#include <sys/stat.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "FileScanner/DataBaseGuard.h"
#include "FileScanner/DataBaseSchema.h"
#include "FileScanner/ResultRows.h"
#include "FileScanner/SqlConnection.h"
#include "FileScanner/SqlStatement.h"
#include "FileScanner/UnfinishedFile.h"
#include "FileScanner/WriteTransaction.h"
#include "OSAL/Fault.h"
#include "OSAL/ORXAString.h"
#include "OSAL/ORXCString.h"
#include "OSAL/ORXLog.h"
#include "OSAL/ORXMemory.h"
#include "Platform/CameraPlatform.h"

DataBaseMgr* DataBaseMgr::mpThisInstance = nullptr;
sqlite3* DataBaseMgr::ppDataBase = nullptr;
std::vector<std::string> DataBaseMgr::vdata;
std::vector<std::string> DataBaseMgr::vcol_head;
char** DataBaseMgr::result = nullptr;

namespace {

// Lookups by path and by parent would otherwise read a whole table for every file of a scan.
struct IndexedColumn {
  const char* table;
  const char* column;
};
constexpr IndexedColumn kIndexedColumns[] = {{"ObjectTable", "FullPath"},
                                             {"ObjectTable", "parentID"},
                                             {"AudioTable", "FullPath"},
                                             {"VideoTable", "FullPath"},
                                             {"ImageTable", "FullPath"}};

// A table of the database with the label under which its statement is logged.
struct LabelledTable {
  const char* label;
  const orx::TableLayout& layout;
};
const LabelledTable kObjectOnlyTables[] = {{"object", orx::kObjectTableObjectOnly}};
const LabelledTable kBackupTables[] = {{"object", orx::kObjectTableBackup}};
const LabelledTable kAllTables[] = {{"object", orx::kObjectTable},
                                    {"container", orx::kContainerTable},
                                    {"audio", orx::kAudioTable},
                                    {"video", orx::kVideoTable},
                                    {"image", orx::kImageTable}};

constexpr char kNotOpen[] = "no database is open";

// Whether the path names a file, not a database in memory or SQLite's own kinds of name, that is
// still to be made.
bool IsNewFile(const char* fileName) {
  const bool special = *fileName == '\0' || *fileName == ':' || strncmp(fileName, "file:", 5) == 0;
  struct stat64 status = {};
  return !special && stat64(fileName, &status) != 0 && errno == ENOENT;
}

// Whether there is a database already, even if it does not open.
bool HoldsData(const char* fileName) {
  struct stat64 status = {};
  return stat64(fileName, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0;
}

std::string BoundedText(const char* text, size_t size) {
  return std::string(text, strnlen(text, size));
}

std::string ColumnDefinition(const TableColumn& column) {
  const std::string type = BoundedText(column.szType, sizeof column.szType);
  std::string definition = BoundedText(column.szName, sizeof column.szName) + " " + type;
  if (type == "VARCHAR") definition += "(" + std::to_string(column.nSize) + ")";
  return definition + " " + BoundedText(column.szConstraint, sizeof column.szConstraint);
}

int CreateTable(DataBaseMgr* database, const char* label, const orx::TableLayout& table) {
  char* sql = GetCreatTblSqlStmt(table.name, table.count, table.columns);
  if (sql != nullptr) ORX_LOG_INFO("%s :\n%s\n", label, sql);
  const int created = database->ExecSqlStatmentNoValueReturn(sql);
  ORXMemory::Free(sql);
  return created;
}

void CreateIndexes(DataBaseMgr* database, const char* table) {
  for (const IndexedColumn& indexed : kIndexedColumns) {
    if (strcmp(indexed.table, table) != 0) continue;
    const std::string sql = std::string("create index ") + table + "_" + indexed.column + " on " +
                            table + " (" + indexed.column + ");";
    database->ExecSqlStatmentNoValueReturn(sql.c_str());
  }
}

// A failing statement does not stop the rest.  Indexes come after all the tables, and only for
// those that are new.
template <size_t kCount>
void CreateAll(DataBaseMgr* database, const LabelledTable (&tables)[kCount]) {
  bool created[kCount];
  for (size_t i = 0; i < kCount; ++i)
    created[i] = CreateTable(database, tables[i].label, tables[i].layout) == 1;
  for (size_t i = 0; i < kCount; ++i)
    if (created[i]) CreateIndexes(database, tables[i].layout.name);
}

}  // namespace

char* GetCreatTblSqlStmt(const char* tableName, int count, const TableColumn* columns) {
  if (tableName == nullptr || (count > 0 && columns == nullptr)) return nullptr;
  return orx::Guarded(__func__, static_cast<char*>(nullptr), [&] {
    std::string sql = std::string("create table ") + tableName + " (";
    for (int i = 0; i < count; ++i) {
      if (i > 0) sql += ',';
      sql += ColumnDefinition(columns[i]);
    }
    sql += ");";
    return ORXCString::DupCopy(sql.c_str());
  });
}

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

int DataBaseMgr::OpenDB(const char* fileName) {
  if (fileName == nullptr) return 0;
  if (ppDataBase != nullptr) return 1;

  const bool exists =
      sqlite3_open_v2(fileName, &ppDataBase, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK;
  if (sqlite3_close(ppDataBase) != SQLITE_OK)
    ORX_LOG_INFO("[DataBaseMgr::OpenDB] closing DB failed");
  ppDataBase = nullptr;
  if (exists || HoldsData(fileName)) {
    const int code = orx::OpenConnection(fileName, &ppDataBase);
    if (code == SQLITE_OK) return 1;
    ORX_LOG_ERROR("[DataBaseMgr::OpenDB] sqlite3_open error = [%d]", code);
    return 0;
  }

  if (CreateDbmsSystem(fileName) == 1) return 1;
  ORX_LOG_INFO("[DataBaseMgr::OpenDB] CreateDbmsSystem failed");
  return 0;
}

int DataBaseMgr::CreateDbmsSystem(const char* fileName) {
  if (fileName == nullptr) return 0;
  return Guard(this).Run(__func__, 0, [&] {
    if (!IsNewFile(fileName)) {
      if (CreateDB(fileName) == 0) return 0;
      CreateTables();
      return 1;
    }
    // A file without its tables, left behind by a power cut, would never get any.
    const orx::UnfinishedFile unfinished(fileName);
    if (CreateDB(unfinished.path()) == 0) return 0;
    orx::WriteTransaction creation(this);
    CreateTables();
    const bool complete = creation.End();
    CloseDatabase();
    if (!complete || !unfinished.Finish()) return 0;
    return CreateDB(fileName);
  });
}

int DataBaseMgr::CreateDB(const char* fileName) {
  if (fileName == nullptr) return 0;
  CloseDatabase();
  const int code = orx::OpenConnection(fileName, &ppDataBase);
  if (code == SQLITE_OK) return 1;
  ORX_LOG_ERROR("[DataBaseMgr::CreateDB] sqlite3_open error = [%d]", code);
  return 0;
}

void DataBaseMgr::CreateTables() try {
  const Guard guard(this);
  const int mode = GetTandemixMode();
  ORX_LOG_INFO("[DataBaseMgr::CreateTables] DLNA Mode type - %d\n", mode);
  if (mode == orx::kObjectOnlyMode) return CreateAll(this, kObjectOnlyTables);
  if (mode == orx::kBackupMode) return CreateAll(this, kBackupTables);
  printf("---> TANDEMIXMode = %d \n", GetTandemixMode());
  CreateAll(this, kAllTables);
} catch (const std::exception&) {
  OutOfMemory(__func__);
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

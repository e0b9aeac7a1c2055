// The connection, the tables and the two ways of running SQL.
#include "FileScanner/DataBaseMgr.h"

#include <atomic>
#include <cstdio>
#include <cstring>
#include <string>

#include "FileScanner/DataBaseSchema.h"
#include "FileScanner/SqlStatement.h"
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
constexpr IndexedColumn kObjectIndexes[] = {{"ObjectTable", "FullPath"},
                                            {"ObjectTable", "parentID"}};
constexpr IndexedColumn kMediaIndexes[] = {
    {"AudioTable", "FullPath"}, {"VideoTable", "FullPath"}, {"ImageTable", "FullPath"}};

std::string BoundedText(const char* text, size_t size) {
  return std::string(text, strnlen(text, size));
}

// Values in double quotes are texts, whatever SQLite was built to think of them.
void AllowDoubleQuotedText(sqlite3* connection) {
  sqlite3_db_config(connection, SQLITE_DBCONFIG_DQS_DML, 1, nullptr);
  sqlite3_db_config(connection, SQLITE_DBCONFIG_DQS_DDL, 1, nullptr);
}

int OpenConnection(const char* fileName, sqlite3** connection) {
  const int code = sqlite3_open(fileName, connection);
  if (code == SQLITE_OK) {
    AllowDoubleQuotedText(*connection);
  } else {
    sqlite3_close(*connection);
    *connection = nullptr;
  }
  return code;
}

void CreateTable(DataBaseMgr* database, const char* label, const orx::TableLayout& table) {
  char* sql = GetCreatTblSqlStmt(table.name, table.count, table.columns);
  if (sql != nullptr) ORX_LOG_INFO("%s :\n%s\n", label, sql);
  database->ExecSqlStatmentNoValueReturn(sql);
  ORXMemory::Free(sql);
}

template <size_t kCount>
void CreateIndexes(DataBaseMgr* database, const IndexedColumn (&columns)[kCount]) {
  for (const IndexedColumn& indexed : columns) {
    const std::string sql = std::string("create index ") + indexed.table + "_" + indexed.column +
                            " on " + indexed.table + " (" + indexed.column + ");";
    database->ExecSqlStatmentNoValueReturn(sql.c_str());
  }
}

}  // namespace

char* GetCreatTblSqlStmt(const char* tableName, int count, const TableColumn* columns) {
  if (tableName == nullptr || (count > 0 && columns == nullptr)) return nullptr;
  std::string sql = std::string("create table ") + tableName + " (";
  for (int i = 0; i < count; ++i) {
    const TableColumn& column = columns[i];
    const std::string type = BoundedText(column.szType, sizeof column.szType);
    if (i > 0) sql += ',';
    sql += BoundedText(column.szName, sizeof column.szName) + " " + type;
    if (type == "VARCHAR") sql += "(" + std::to_string(column.nSize) + ")";
    sql += " " + BoundedText(column.szConstraint, sizeof column.szConstraint);
  }
  sql += ");";
  return ORXCString::DupCopy(sql.c_str());
}

char* GetUniqueId() {
  static std::atomic<int> counter{0};
  return ORXCString::DupCopy(std::to_string(++counter).c_str());
}

DataBaseMgr* DataBaseMgr::GetInstance() {
  if (mpThisInstance == nullptr) mpThisInstance = new DataBaseMgr;
  return mpThisInstance;
}

void DataBaseMgr::DestroyInstance() {
  delete mpThisInstance;
  mpThisInstance = nullptr;
}

DataBaseMgr::DataBaseMgr() : statements_(std::make_unique<orx::StatementCache>()) {}

DataBaseMgr::~DataBaseMgr() {
  statements_->Clear();
  if (ppDataBase != nullptr) {
    sqlite3_close(ppDataBase);
    ppDataBase = nullptr;
  }
  bInvalidateAllItemsCancelFlag = 0;
}

int DataBaseMgr::OpenDB(const char* fileName) {
  if (fileName == nullptr) return 0;
  if (ppDataBase != nullptr) return 1;

  const bool exists =
      sqlite3_open_v2(fileName, &ppDataBase, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK;
  if (sqlite3_close(ppDataBase) != SQLITE_OK)
    ORX_LOG_INFO("[DataBaseMgr::OpenDB] closing DB failed");
  ppDataBase = nullptr;
  if (exists) return OpenConnection(fileName, &ppDataBase) == SQLITE_OK ? 1 : 0;

  if (CreateDbmsSystem(fileName) == 1) return 1;
  ORX_LOG_INFO("[DataBaseMgr::OpenDB] CreateDbmsSystem failed");
  return 0;
}

int DataBaseMgr::CreateDbmsSystem(const char* fileName) {
  if (CreateDB(fileName) == 0) return 0;
  CreateTables();
  return 1;
}

int DataBaseMgr::CreateDB(const char* fileName) {
  if (fileName == nullptr) return 0;
  const int code = OpenConnection(fileName, &ppDataBase);
  if (code == SQLITE_OK) return 1;
  ORX_LOG_ERROR("[DataBaseMgr::CreateDB] sqlite3_open error = [%d]", code);
  return 0;
}

void DataBaseMgr::CreateTables() {
  const int mode = GetTandemixMode();
  ORX_LOG_INFO("[DataBaseMgr::CreateTables] DLNA Mode type - %d\n", mode);
  if (mode == orx::kObjectOnlyMode || mode == orx::kBackupMode) {
    CreateTable(this, "object",
                mode == orx::kBackupMode ? orx::kObjectTableBackup : orx::kObjectTableObjectOnly);
    CreateIndexes(this, kObjectIndexes);
    return;
  }

  printf("---> TANDEMIXMode = %d \n", GetTandemixMode());
  CreateTable(this, "object", orx::kObjectTable);
  CreateTable(this, "container", orx::kContainerTable);
  CreateTable(this, "audio", orx::kAudioTable);
  CreateTable(this, "video", orx::kVideoTable);
  CreateTable(this, "image", orx::kImageTable);
  CreateIndexes(this, kObjectIndexes);
  CreateIndexes(this, kMediaIndexes);
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
    LogFailedStatement(sql, SQLITE_MISUSE, "no database is open");
    return 0;
  }
  char* message = nullptr;
  const int code = sqlite3_exec(ppDataBase, sql, nullptr, nullptr, &message);
  if (code == SQLITE_OK) return 1;
  LogFailedStatement(sql, code, message != nullptr ? message : "");
  sqlite3_free(message);
  return 0;
}

int DataBaseMgr::ExecSqlStatment(const char* sql) {
  vcol_head.clear();
  vdata.clear();
  nRows = 0;
  nColumns = 0;
  nLastResult = SQLITE_MISUSE;
  if (sql == nullptr || ppDataBase == nullptr) return 0;

  char** cells = nullptr;
  char* message = nullptr;
  nLastResult = sqlite3_get_table(ppDataBase, sql, &cells, &nRows, &nColumns, &message);
  sqlite3_free(message);
  const std::unique_ptr<char*, FreeTable> table(cells);
  if (nLastResult != SQLITE_OK || cells == nullptr) return nLastResult == SQLITE_OK ? 1 : 0;

  const size_t columns = static_cast<size_t>(nColumns);
  const size_t total = columns * (static_cast<size_t>(nRows) + 1);
  for (size_t i = 0; i < total; ++i) {
    const char* cell = cells[i] != nullptr ? cells[i] : "";
    (i < columns ? vcol_head : vdata).emplace_back(cell);
  }
  return 1;
}

// Does for a statement with bound values what ExecSqlStatmentNoValueReturn does for a text.
int DataBaseMgr::Run(const orx::SqlStatement& statement) {
  std::string sql;
  std::string reason;
  int code = SQLITE_ERROR;
  if (ppDataBase == nullptr) {
    code = SQLITE_MISUSE;
    reason = "no database is open";
  } else if (statement.Compilable(&sql, &reason)) {
    if (sqlite3_stmt* compiled = statements_->Get(ppDataBase, sql, &code); compiled != nullptr) {
      const orx::StatementUse use(compiled);
      code = SQLITE_ERROR;
      if (statement.BindTo(compiled)) {
        do {
          code = sqlite3_step(compiled);
        } while (code == SQLITE_ROW);
      }
      if (code == SQLITE_DONE) return 1;
      code = sqlite3_errcode(ppDataBase);
    }
    reason = sqlite3_errmsg(ppDataBase);
  }
  LogFailedStatement(statement.Printed().c_str(), code, reason.c_str());
  return 0;
}

// Does for a statement with bound values what ExecSqlStatment does for a text.
int DataBaseMgr::Query(const orx::SqlStatement& statement) {
  vcol_head.clear();
  vdata.clear();
  nRows = 0;
  nColumns = 0;
  nLastResult = SQLITE_ERROR;
  std::string sql;
  std::string reason;
  if (ppDataBase == nullptr) nLastResult = SQLITE_MISUSE;
  if (ppDataBase == nullptr || !statement.Compilable(&sql, &reason)) return 0;
  sqlite3_stmt* compiled = statements_->Get(ppDataBase, sql, &nLastResult);
  if (compiled == nullptr) return 0;

  const orx::StatementUse use(compiled);
  nLastResult = SQLITE_ERROR;
  if (!statement.BindTo(compiled)) return 0;
  while ((nLastResult = sqlite3_step(compiled)) == SQLITE_ROW) {
    const int columns = sqlite3_column_count(compiled);
    for (int i = 0; i < columns; ++i) {
      if (nRows == 0) vcol_head.emplace_back(sqlite3_column_name(compiled, i));
      const auto* cell = reinterpret_cast<const char*>(sqlite3_column_text(compiled, i));
      vdata.emplace_back(cell != nullptr ? cell : "");
    }
    nColumns = columns;
    ++nRows;
  }
  if (nLastResult == SQLITE_DONE) {
    nLastResult = SQLITE_OK;
    return 1;
  }
  vcol_head.clear();
  vdata.clear();
  nRows = 0;
  nColumns = 0;
  return 0;
}

void DataBaseMgr::DropTable(const TChar* tableName) {
  Run(orx::SqlStatement("Drop table %s").Name(tableName));
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
  // Without an index: the answer looks at the first row in id order.
  const std::string prefix = std::string(directoryPath) + "%";
  Query(orx::SqlStatement("select id from ObjectTable not indexed where FullPath not like '%s'")
            .Text(prefix));
  if (vdata.empty()) return false;
  const int id = ORXAString::Integer(vdata[0].c_str());
  vdata.clear();
  return id >= 1;
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

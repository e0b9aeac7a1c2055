// Opening a database and making a new one: the tables and their indexes.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include "FileScanner/DataBaseGuard.h"
#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DataBaseSchema.h"
#include "FileScanner/DatabasePath.h"
#include "FileScanner/SqlConnection.h"
#include "FileScanner/SqlStatement.h"
#include "FileScanner/UnfinishedFile.h"
#include "FileScanner/WriteTransaction.h"
#include "OSAL/Fault.h"
#include "OSAL/GuardedFiles.h"
#include "OSAL/ORXCString.h"
#include "OSAL/ORXLog.h"
#include "OSAL/ORXMemory.h"
#include "Platform/CameraPlatform.h"

namespace {

// Lookups by path and by parent would otherwise read a whole table for every file of a scan, and
// the removal of what is marked as stale for every folder that is gone.
struct IndexedColumn {
  const char* table;
  const char* column;
  const char* rows;  // which ones are in the index; all when it is empty
};
constexpr IndexedColumn kIndexedColumns[] = {{"ObjectTable", "FullPath", ""},
                                             {"ObjectTable", "parentID", ""},
                                             {"ObjectTable", "Valid", " where Valid = 1"},
                                             {"AudioTable", "FullPath", ""},
                                             {"VideoTable", "FullPath", ""},
                                             {"ImageTable", "FullPath", ""}};

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

using orx::DatabasePath;

constexpr int kExisting = SQLITE_OPEN_READWRITE;  // nothing is made

// What ppDataBase is connected to.
orx::GuardedDatabase guarded;

int Opened() {
  guarded.Hold(sqlite3_db_filename(DataBaseMgr::ppDataBase, "main"));
  return 1;
}

int LogOpenError(int code) {
  orx::WriteLogLine(orx::LogLevel::kError, orx::SourceName(__FILE__), "CreateDB", __LINE__,
                    "[DataBaseMgr::CreateDB] sqlite3_open error = [%d]", code);
  return 0;
}

// Whether the file is there and can be opened.
bool Probe(const char* fileName) {
  sqlite3* connection = nullptr;
  const int code = sqlite3_open_v2(fileName, &connection, SQLITE_OPEN_READONLY, nullptr);
  if (sqlite3_close(connection) != SQLITE_OK)
    ORX_LOG_INFO("[DataBaseMgr::OpenDB] closing DB failed");
  return code == SQLITE_OK;
}

// Ends the waiting for another process that makes the same database.
bool MakingCancelled() {
  const DataBaseMgr* database = DataBaseMgr::mpThisInstance;
  return database != nullptr && database->bInvalidateAllItemsCancelFlag != 0;
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

bool HasColumn(const orx::TableLayout& table, const char* column) {
  return std::any_of(table.columns, table.columns + table.count,
                     [column](const TableColumn& own) { return strcmp(own.szName, column) == 0; });
}

void CreateIndexes(DataBaseMgr* database, const orx::TableLayout& layout) {
  for (const IndexedColumn& indexed : kIndexedColumns) {
    if (strcmp(indexed.table, layout.name) != 0 || !HasColumn(layout, indexed.column)) continue;
    const std::string sql = std::string("create index ") + layout.name + "_" + indexed.column +
                            " on " + layout.name + " (" + indexed.column + ")" + indexed.rows + ";";
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
    if (created[i]) CreateIndexes(database, tables[i].layout);
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

// A statement that another instance compiled keeps the connection alive until it is done with it.
void DataBaseMgr::CloseDatabase() {
  statements_->Clear();
  sqlite3_close_v2(ppDataBase);
  ppDataBase = nullptr;
  isNew_ = false;
  guarded.Release();
}

// What is at the path already is opened as it is; it never gets tables.
int DataBaseMgr::OpenDB(const char* fileName) {
  if (fileName == nullptr) return 0;
  if (ppDataBase != nullptr) return Opened();
  return Guard(this).Run(__func__, 0, [&] {
    const DatabasePath found = orx::LookAtDatabase(fileName);
    const int flags = found == DatabasePath::kSpecial ? kExisting | SQLITE_OPEN_CREATE : kExisting;
    if (found != DatabasePath::kRefused && Probe(fileName))
      return Connect(fileName, flags) == SQLITE_OK ? Opened() : 0;
    const bool exists = found == DatabasePath::kFile;
    if ((exists ? OpenLogged(fileName, flags) : CreateDbmsSystem(fileName)) == 1) return 1;
    ORX_LOG_INFO("[DataBaseMgr::OpenDB] CreateDbmsSystem failed");
    return 0;
  });
}

int DataBaseMgr::CreateDbmsSystem(const char* fileName) {
  if (fileName == nullptr) return 0;
  return Guard(this).Run(__func__, 0, [&] {
    if (orx::LookAtDatabase(fileName) == DatabasePath::kMissing) return MakeDatabase(fileName);
    if (CreateDB(fileName) == 0) return 0;
    CreateTables();
    return 1;
  });
}

// A file without its tables, left behind by a power cut, would never get any.
int DataBaseMgr::MakeDatabase(const char* fileName) {
  using Start = orx::UnfinishedFile::Start;
  CloseDatabase();
  orx::UnfinishedFile unfinished(orx::BehindLinks(fileName));
  const Start start = unfinished.Begin(MakingCancelled);
  if (start == Start::kLocked) return LogOpenError(SQLITE_BUSY);
  if (start == Start::kRefused) return LogOpenError(SQLITE_CANTOPEN);
  if (start == Start::kBegun) {
    if (CreateDB(unfinished.path()) == 0) return 0;
    orx::WriteTransaction creation(this);
    CreateTables();
    const bool complete = creation.End();
    CloseDatabase();
    if (!complete || !unfinished.Finish()) return 0;
  }
  const int opened = OpenLogged(fileName, kExisting);
  isNew_ = start == Start::kBegun;
  return opened;
}

int DataBaseMgr::CreateDB(const char* fileName) {
  return fileName != nullptr ? OpenLogged(fileName, kExisting | SQLITE_OPEN_CREATE) : 0;
}

int DataBaseMgr::OpenLogged(const char* fileName, int flags) {
  CloseDatabase();
  const int code = Connect(fileName, flags);
  return code == SQLITE_OK ? Opened() : LogOpenError(code);
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

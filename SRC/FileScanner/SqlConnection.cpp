#include "FileScanner/SqlConnection.h"

#include "FileScanner/DatabasePath.h"
#include "OSAL/Fault.h"

namespace orx {
namespace {

// Values in double quotes are texts, whatever SQLite was built to think of them.
void AllowDoubleQuotedText(sqlite3* connection) {
  sqlite3_db_config(connection, SQLITE_DBCONFIG_DQS_DML, 1, nullptr);
  sqlite3_db_config(connection, SQLITE_DBCONFIG_DQS_DDL, 1, nullptr);
}

// The file may be a stranger's, and whoever writes a row of it must not run what that left there.
void RunNothingOfTheFile(sqlite3* connection) {
  for (const int code : {SQLITE_DBCONFIG_ENABLE_TRIGGER, SQLITE_DBCONFIG_ENABLE_VIEW,
                         SQLITE_DBCONFIG_TRUSTED_SCHEMA})
    sqlite3_db_config(connection, code, 0, nullptr);
}

}  // namespace

int OpenConnection(const char* fileName, sqlite3** connection, int flags) {
  *connection = nullptr;
  DatabasePath found = DatabasePath::kRefused;
  if (!Guarded(__func__, [&] { found = LookAtDatabase(fileName); })) return SQLITE_NOMEM;
  if (found == DatabasePath::kRefused) return SQLITE_CANTOPEN;
  const int code = sqlite3_open_v2(fileName, connection, flags, nullptr);
  if (code == SQLITE_OK) {
    AllowDoubleQuotedText(*connection);
    RunNothingOfTheFile(*connection);
  } else {
    sqlite3_close(*connection);
    *connection = nullptr;
  }
  return code;
}

void ClearResult(const QueryResult& result, int code) {
  *result.code = code;
  *result.rows = 0;
  *result.columns = 0;
  if (result.names != nullptr) result.names->clear();
  if (result.cells != nullptr) result.cells->clear();
}

int FetchTable(sqlite3* connection, const char* sql, const QueryResult& result) {
  char** raw = nullptr;
  int code = SQLITE_MISUSE;
  int rows = 0;
  int columns = 0;
  if (connection != nullptr && sql != nullptr)
    code = sqlite3_get_table(connection, sql, &raw, &rows, &columns, nullptr);
  const RawTable table(raw);
  ClearResult(result, code);
  *result.rows = rows;
  *result.columns = columns;
  if (code != SQLITE_OK || table == nullptr) return code == SQLITE_OK ? 1 : 0;

  const size_t width = static_cast<size_t>(columns);
  const size_t total = width * (static_cast<size_t>(rows) + 1);  // the header is the first row
  const bool copied = Guarded(__func__, [&] {
    for (size_t i = 0; i < total; ++i) {
      const char* cell = raw[i] != nullptr ? raw[i] : "";
      (i < width ? result.names : result.cells)->emplace_back(cell);
    }
  });
  if (copied) return 1;
  ClearResult(result, SQLITE_NOMEM);  // no rows without their cells
  return 0;
}

}  // namespace orx

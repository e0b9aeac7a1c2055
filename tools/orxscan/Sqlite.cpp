#include "Sqlite.h"

#include <filesystem>

#include "Output.h"

namespace orxscan {
namespace {

constexpr int kPatience = 2000;  // milliseconds to wait for another program

std::string Problem(sqlite3* connection) {
  // A reader may not roll back what a program that died had begun.
  const int code = sqlite3_extended_errcode(connection);
  if (code == SQLITE_READONLY_ROLLBACK || code == SQLITE_READONLY_RECOVERY)
    return "a program that was writing it did not end properly; the next scan repairs it";
  return sqlite3_errmsg(connection);
}

// SQLite opens these as well, and would wait for the other end of a FIFO.
void CheckSideFiles(const std::string& path, const std::string& name) {
  std::error_code error;
  const std::filesystem::path behindLinks = std::filesystem::canonical(path, error);
  const std::string place = error ? path : behindLinks.string();
  for (const char* ending : {"-journal", "-wal", "-shm"}) {
    const auto status = std::filesystem::symlink_status(place + ending, error);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
      throw Failure("database {}: the file {} beside it is not a regular file", name, ending);
  }
}

// The database may be a stranger's: what it stores is data.
void RunNothingOfTheFile(sqlite3* connection) {
  for (const int code : {SQLITE_DBCONFIG_ENABLE_TRIGGER, SQLITE_DBCONFIG_ENABLE_VIEW,
                         SQLITE_DBCONFIG_TRUSTED_SCHEMA})
    sqlite3_db_config(connection, code, 0, nullptr);
}

}  // namespace

Connection OpenSqlite(const std::string& path, const std::string& name, int flags) {
  CheckSideFiles(path, name);
  sqlite3* raw = nullptr;
  const int code = sqlite3_open_v2(path.c_str(), &raw, flags, nullptr);
  Connection connection(raw);
  if (code != SQLITE_OK) throw Failure("database {}: {}", name, sqlite3_errstr(code));
  sqlite3_busy_timeout(raw, kPatience);
  RunNothingOfTheFile(raw);
  return connection;
}

Statement Prepare(sqlite3* connection, const std::string& name, const std::string& sql) {
  sqlite3_stmt* raw = nullptr;
  if (sqlite3_prepare_v2(connection, sql.c_str(), -1, &raw, nullptr) != SQLITE_OK)
    throw Failure("database {}: {}", name, Problem(connection));
  return Statement(raw);
}

bool NextRow(sqlite3_stmt* statement, const std::string& name) {
  const int code = sqlite3_step(statement);
  if (code != SQLITE_ROW && code != SQLITE_DONE)
    throw Failure("database {}: {}", name, Problem(sqlite3_db_handle(statement)));
  return code == SQLITE_ROW;
}

std::string CellText(sqlite3_stmt* statement, int column) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
  return text == nullptr
             ? ""
             : std::string(text, static_cast<size_t>(sqlite3_column_bytes(statement, column)));
}

std::vector<std::string> ColumnNames(sqlite3_stmt* statement) {
  std::vector<std::string> names(static_cast<size_t>(sqlite3_column_count(statement)));
  for (size_t i = 0; i < names.size(); ++i)
    if (const char* name = sqlite3_column_name(statement, static_cast<int>(i))) names[i] = name;
  return names;
}

std::string QuotedIdentifier(const std::string& identifier) {
  std::string quoted = "\"";
  for (const char c : identifier) quoted.append(c == '"' ? 2 : 1, c);
  return quoted + "\"";
}

}  // namespace orxscan

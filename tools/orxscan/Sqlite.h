// SQLite as the command uses it: handles that release themselves, errors that end the command.
#pragma once

#include <sqlite3.h>

#include <memory>
#include <string>
#include <vector>

namespace orxscan {

struct CloseConnection {
  void operator()(sqlite3* connection) const { sqlite3_close(connection); }
};
using Connection = std::unique_ptr<sqlite3, CloseConnection>;

struct FinalizeStatement {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

// `name` is the database as messages call it, quoted; all three throw a Failure.
Connection OpenSqlite(const std::string& path, const std::string& name, int flags);
Statement Prepare(sqlite3* connection, const std::string& name, const std::string& sql);
bool NextRow(sqlite3_stmt* statement, const std::string& name);  // false behind the last one

// The text of a cell, empty for NULL.
std::string CellText(sqlite3_stmt* statement, int column);

std::vector<std::string> ColumnNames(sqlite3_stmt* statement);

// `identifier` in double quotes, fit to stand in a statement.
std::string QuotedIdentifier(const std::string& identifier);

}  // namespace orxscan

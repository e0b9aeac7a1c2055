// A media database that is there already, opened for reading.
#pragma once

#include <string>
#include <vector>

#include "Sqlite.h"

namespace orxscan {

// Which tables a database has.  The sharing mode in which it was made decides.
enum class Layout {
  kFull,        // the object table and the media tables
  kObjectOnly,  // the object table of sharing mode 8 alone
  kBackup       // that of sharing mode 6 alone
};

// "the tables of sharing mode 8"
const char* Described(Layout layout);

// The layout of an open database.  Throws a Failure when it is not a media database.
Layout LayoutOf(sqlite3* connection, const std::string& name);

// The absolute path of a database; SQLite takes none for a name of its own (":memory:", "file:x").
// Throws a Failure when the name is empty.
std::string AbsoluteDatabasePath(const std::string& path);
// The same without links, as far as the path exists.
std::string CanonicalDatabasePath(const std::string& path);

class DatabaseFile {
 public:
  // Throws a Failure when there is no such file, or when it is not a media database.
  explicit DatabaseFile(const std::string& path);

  const std::string& path() const { return path_; }  // absolute
  const std::string& name() const { return name_; }  // as the user wrote it, quoted
  Layout layout() const { return layout_; }
  sqlite3* connection() const { return connection_.get(); }  // for reading

  // The tables of the layout, the object table first.
  std::vector<std::string> Tables() const;
  // The name of the table as the database spells it.  Throws a Failure, in terms of the layout,
  // when the table is missing.
  std::string Require(const std::string& table) const;

  Statement Select(const std::string& sql) const;
  bool Next(const Statement& row) const { return NextRow(row.get(), name_); }
  long long Number(const std::string& sql) const;  // the first cell of the first row

 private:
  std::string path_;
  std::string name_;
  Connection connection_;
  Layout layout_ = Layout::kFull;
};

}  // namespace orxscan

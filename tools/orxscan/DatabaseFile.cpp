#include "DatabaseFile.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "Output.h"

namespace orxscan {
namespace {

// In the order in which they are shown.
constexpr const char* kTables[] = {"ObjectTable", "ImageTable", "VideoTable", "AudioTable",
                                   "ContainerTable"};
constexpr int kTableCount = sizeof kTables / sizeof *kTables;

int Count(sqlite3* connection, const std::string& name, const std::string& sql) {
  const Statement count = Prepare(connection, name, sql);
  return NextRow(count.get(), name) ? sqlite3_column_int(count.get(), 0) : 0;
}

bool HasObjectColumn(sqlite3* connection, const std::string& name, const std::string& column) {
  return Count(connection, name,
               "SELECT count(*) FROM pragma_table_info('ObjectTable') WHERE name = '" + column +
                   "'") != 0;
}

void CheckReadable(const std::string& path, const std::string& name) {
  struct stat64 status = {};
  if (stat64(path.c_str(), &status) != 0) throw Failure("database {}: {}", name, strerror(errno));
  if (S_ISDIR(status.st_mode)) throw Failure("database {} is a folder", name);
  if (!S_ISREG(status.st_mode)) throw Failure("database {} is not a regular file", name);
  if (status.st_size == 0) throw Failure("database {} is an empty file", name);
}

}  // namespace

const char* Described(Layout layout) {
  switch (layout) {
    case Layout::kObjectOnly:
      return "the tables of sharing mode 8";
    case Layout::kBackup:
      return "the tables of sharing mode 6";
    case Layout::kFull:
      break;
  }
  return "the tables of a full scan";
}

Layout LayoutOf(sqlite3* connection, const std::string& name) {
  std::string names;
  for (const char* table : kTables) names += std::string(names.empty() ? "'" : ", '") + table + "'";
  if (Count(connection, name,
            "SELECT count(*) FROM sqlite_master WHERE type = 'table' AND name IN (" + names +
                ")") == kTableCount)
    return Layout::kFull;
  if (HasObjectColumn(connection, name, "IsBackup") &&
      HasObjectColumn(connection, name, "MimeType"))
    return Layout::kBackup;
  if (HasObjectColumn(connection, name, "uri") && HasObjectColumn(connection, name, "SortIndex"))
    return Layout::kObjectOnly;
  throw Failure("{} is not a media database", name);
}

std::string AbsoluteDatabasePath(const std::string& path) {
  if (path.empty()) throw Failure("the name of the database is empty");
  return std::filesystem::absolute(path).string();
}

std::string CanonicalDatabasePath(const std::string& path) {
  std::error_code error;
  const std::filesystem::path canonical = std::filesystem::canonical(path, error);
  if (!error) return canonical.string();
  const std::filesystem::path whole(path);
  const std::filesystem::path folder = std::filesystem::canonical(whole.parent_path(), error);
  return error ? path : (folder / whole.filename()).string();
}

DatabaseFile::DatabaseFile(const std::string& path)
    : path_(AbsoluteDatabasePath(path)), name_(Quoted(path)) {
  CheckReadable(path_, name_);
  connection_ = OpenSqlite(path_, name_, SQLITE_OPEN_READONLY);
  layout_ = LayoutOf(connection_.get(), name_);
}

std::vector<std::string> DatabaseFile::Tables() const {
  if (layout_ == Layout::kFull) return {std::begin(kTables), std::end(kTables)};
  return {kTables[0]};
}

std::string DatabaseFile::Require(const std::string& table) const {
  const Statement found =
      Select("SELECT name FROM sqlite_master WHERE type = 'table' AND name = ? COLLATE NOCASE");
  sqlite3_bind_text(found.get(), 1, table.c_str(), static_cast<int>(table.size()),
                    SQLITE_TRANSIENT);
  if (!Next(found))
    throw Failure("database {} has no table {}: it has {}", name_, Quoted(table),
                  Described(layout_));
  return CellText(found.get(), 0);
}

Statement DatabaseFile::Select(const std::string& sql) const {
  return Prepare(connection_.get(), name_, sql);
}

long long DatabaseFile::Number(const std::string& sql) const {
  const Statement row = Select(sql);
  return Next(row) ? sqlite3_column_int64(row.get(), 0) : 0;
}

}  // namespace orxscan

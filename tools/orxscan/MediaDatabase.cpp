#include "MediaDatabase.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <tuple>

#include "DatabaseFile.h"
#include "LibraryErrors.h"
#include "Output.h"
#include "Sqlite.h"

namespace orxscan {
namespace {

// Whether the file is a media database of the layout and not locked for good.
void CheckExisting(const std::string& path, const std::string& name, Layout wanted) {
  const Connection connection = OpenSqlite(path, name, SQLITE_OPEN_READWRITE);
  const Layout found = LayoutOf(connection.get(), name);
  if (found != wanted)
    throw Failure("database {} has {}, not {}", name, Described(found), Described(wanted));
  if (sqlite3_db_readonly(connection.get(), "main") == 1)
    throw Failure("database {} cannot be written", name);
  // Takes the lock that a scan will take, and gives it back.
  if (sqlite3_exec(connection.get(), "BEGIN IMMEDIATE", nullptr, nullptr, nullptr) != SQLITE_OK)
    throw Failure("database {}: {}", name, sqlite3_errmsg(connection.get()));
  sqlite3_exec(connection.get(), "ROLLBACK", nullptr, nullptr, nullptr);
}

// SQLite writes a journal beside the database, so the folder has to be writable in any case.
void CheckFolder(const std::string& path, const std::string& name) {
  const std::string folder = std::filesystem::path(path).parent_path().string();
  struct stat64 status = {};
  if (stat64(folder.c_str(), &status) != 0)
    throw Failure("database {}: folder {}: {}", name, Quoted(folder), strerror(errno));
  if (!S_ISDIR(status.st_mode))
    throw Failure("database {}: {} is not a folder", name, Quoted(folder));
  if (access(folder.c_str(), W_OK | X_OK) != 0)
    throw Failure("database {}: folder {}: {}", name, Quoted(folder), strerror(errno));
}

constexpr char kHasMedium[] =
    "(class = 0"
    " OR EXISTS (SELECT 1 FROM ImageTable WHERE id = CAST(o.id AS TEXT))"
    " OR EXISTS (SELECT 1 FROM AudioTable WHERE id = CAST(o.id AS TEXT))"
    " OR EXISTS (SELECT 1 FROM VideoTable WHERE id = CAST(o.id AS TEXT)))";

}  // namespace

bool ObjectRow::operator<(const ObjectRow& other) const {
  return std::tie(id, mediaClass, path) < std::tie(other.id, other.mediaClass, other.path);
}

std::set<std::string> PathsOf(const std::vector<ObjectRow>& rows) {
  std::set<std::string> paths;
  for (const ObjectRow& row : rows) paths.insert(row.path);
  return paths;
}

MediaDatabase::MediaDatabase(const std::string& path, Layout layout)
    : path_(AbsoluteDatabasePath(path)), name_(Quoted(path)), layout_(layout) {
  struct stat64 status = {};
  if (stat64(path_.c_str(), &status) != 0) {
    if (errno != ENOENT) throw Failure("database {}: {}", name_, strerror(errno));
    if (path_.back() == '/') throw Failure("database {}: this is the name of a folder", name_);
    CheckFolder(path_, name_);
    return;
  }
  existed_ = true;
  if (S_ISDIR(status.st_mode)) throw Failure("database {} is a folder", name_);
  if (!S_ISREG(status.st_mode)) throw Failure("database {} is not a regular file", name_);
  if (status.st_size == 0) throw Failure("database {} is an empty file; delete it first", name_);
  if (access(path_.c_str(), W_OK) != 0) throw Failure("database {}: {}", name_, strerror(errno));
  CheckFolder(path_, name_);
  CheckExisting(path_, name_, layout_);
}

std::vector<ObjectRow> MediaDatabase::Select(const std::string& condition,
                                             const std::string* value) const {
  std::vector<ObjectRow> rows;
  if (access(path_.c_str(), F_OK) != 0) return rows;
  const Connection connection = OpenSqlite(path_, name_, SQLITE_OPEN_READONLY);
  const Statement statement =
      Prepare(connection.get(), name_,
              std::string("SELECT id, class, FullPath FROM ObjectTable AS o WHERE ") +
                  (layout_ == Layout::kFull ? kHasMedium : "1") + " " + condition + " ORDER BY id");
  if (value != nullptr)
    sqlite3_bind_text(statement.get(), 1, value->c_str(), static_cast<int>(value->size()),
                      SQLITE_TRANSIENT);
  while (NextRow(statement.get(), name_))
    rows.push_back({sqlite3_column_int64(statement.get(), 0),
                    sqlite3_column_int(statement.get(), 1), CellText(statement.get(), 2)});
  return rows;
}

std::vector<ObjectRow> MediaDatabase::Objects() const { return Select("", nullptr); }

std::vector<ObjectRow> MediaDatabase::ObjectsAt(const std::string& fullPath) const {
  return Select("AND FullPath = ?", &fullPath);
}

std::vector<ObjectRow> MediaDatabase::ObjectsWithId(const std::string& id) const {
  return Select("AND id = ?", &id);
}

std::vector<ProfileCount> MediaDatabase::Profiles() const {
  std::vector<ProfileCount> profiles;
  if (layout_ != Layout::kFull || access(path_.c_str(), F_OK) != 0) return profiles;
  const Connection connection = OpenSqlite(path_, name_, SQLITE_OPEN_READONLY);
  const Statement statement =
      Prepare(connection.get(), name_,
              "SELECT DLNAProfile, MimeType, count(*) AS n FROM ("
              "SELECT DLNAProfile, MimeType FROM ImageTable UNION ALL "
              "SELECT DLNAProfile, MimeType FROM VideoTable UNION ALL "
              "SELECT DLNAProfile, MimeType FROM AudioTable) "
              "GROUP BY DLNAProfile, MimeType ORDER BY n DESC, DLNAProfile, MimeType");
  while (NextRow(statement.get(), name_))
    profiles.push_back({CellText(statement.get(), 0), CellText(statement.get(), 1),
                        sqlite3_column_int64(statement.get(), 2)});
  return profiles;
}

void MediaDatabase::CheckWritten(const LibraryErrors& errors) const {
  if (errors.database().empty()) return;
  throw Failure("database {}: {}{}", name_, errors.database(),
                errors.undone() ? "; nothing in it was changed" : "");
}

}  // namespace orxscan

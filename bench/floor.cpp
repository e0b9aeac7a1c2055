// The floor: what a program that knows nothing of media has to do to keep the same database.
//
// usage: floor DIRECTORY DATABASE
//
// It opens every file that it has a row for, and drops the row when the file is gone, cannot be
// read or has another size.  Then it lists the directories and stats every entry.  A file without a
// row it opens, reads 16 KiB of and records in two rows, in tables with the columns and indexes of
// the library's, with statements that are prepared once and one transaction.
#include <dirent.h>
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "Usage.h"

namespace {

constexpr size_t kReadSize = 16 * 1024;

constexpr char kCreate[] =
    "create table if not exists Objects (id INTEGER PRIMARY KEY, class INTEGER, date VARCHAR,"
    " parent INTEGER, path VARCHAR, valid INTEGER, backup INTEGER, isBackup INTEGER);"
    "create table if not exists Media (id VARCHAR(16) PRIMARY KEY, title VARCHAR, class INTEGER,"
    " date VARCHAR, size INTEGER, path VARCHAR, mime VARCHAR, profile VARCHAR, height INTEGER,"
    " width INTEGER, thumbOffset INTEGER, thumbLength INTEGER, thumbHeight INTEGER,"
    " thumbWidth INTEGER, description VARCHAR, uri VARCHAR, thumbUri VARCHAR,"
    " screenOffset INTEGER, screenLength INTEGER, screenHeight INTEGER, screenWidth INTEGER,"
    " screenUri VARCHAR, share INTEGER, sortIndex INTEGER);"
    "create index if not exists Objects_path on Objects (path);"
    "create index if not exists Objects_parent on Objects (parent);"
    "create index if not exists Media_path on Media (path);";

void Check(bool good, const char* what, sqlite3* database = nullptr) {
  if (good) return;
  if (database != nullptr) {
    fprintf(stderr, "floor: %s: %s\n", what, sqlite3_errmsg(database));
  } else {
    perror(what);
  }
  exit(1);
}

class Statement {
 public:
  Statement(sqlite3* database, const char* sql) : database_(database) {
    Check(sqlite3_prepare_v3(database, sql, -1, SQLITE_PREPARE_PERSISTENT, &compiled_, nullptr) ==
              SQLITE_OK,
          sql, database);
  }
  ~Statement() { sqlite3_finalize(compiled_); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  Statement& Bind(int place, const std::string& text) {
    sqlite3_bind_text64(compiled_, place, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8);
    return *this;
  }
  Statement& Bind(int place, const char* text) {
    sqlite3_bind_text(compiled_, place, text, -1, SQLITE_STATIC);
    return *this;
  }
  Statement& Bind(int place, int number) { return Bind(place, static_cast<long long>(number)); }
  Statement& Bind(int place, long long number) {
    sqlite3_bind_int64(compiled_, place, number);
    return *this;
  }
  bool Row() { return sqlite3_step(compiled_) == SQLITE_ROW; }
  long long Number(int column) { return sqlite3_column_int64(compiled_, column); }
  const char* Text(int column) {
    return reinterpret_cast<const char*>(sqlite3_column_text(compiled_, column));
  }
  void Reset() { sqlite3_reset(compiled_); }
  void Run() {
    Check(sqlite3_step(compiled_) == SQLITE_DONE, "insert", database_);
    Reset();
  }

 private:
  sqlite3* database_;
  sqlite3_stmt* compiled_ = nullptr;
};

class Floor {
 public:
  explicit Floor(sqlite3* database)
      : database_(database),
        find_(database, "select 1 from Media where path = ?"),
        recorded_(database, "select id, path, size from Media"),
        findFolder_(database, "select id from Objects where path = ?"),
        insertObject_(database, "insert into Objects values (NULL, ?, ?, ?, ?, 0, 0, 0)"),
        insertMedium_(database,
                      "insert into Media values (?1, ?2, 1, '2026-11-21', ?3, ?4, 'image/jpeg',"
                      " 'JPEG_LRG', 3000, 4000, 2048, 4096, 120, 160, ' ', ?5, ?6, 0, 0, 0, 0, ?7,"
                      " 1, '1000001')"),
        deleteObject_(database, "delete from Objects where id = ?"),
        deleteMedium_(database, "delete from Media where id = ?") {}

  void Purge() {
    std::vector<long long> gone;
    while (recorded_.Row())
      if (!IsThere(recorded_.Text(1), recorded_.Number(2))) gone.push_back(recorded_.Number(0));
    recorded_.Reset();
    for (const long long id : gone) {
      deleteObject_.Bind(1, id).Run();
      deleteMedium_.Bind(1, id).Run();
    }
  }

  void Walk(const std::string& folder, long long parent) {
    const long long id = FolderId(folder, parent);
    DIR* directory = opendir(folder.c_str());
    Check(directory != nullptr, folder.c_str());
    while (const dirent* entry = readdir(directory)) {
      if (entry->d_name[0] == '.') continue;
      const std::string path = folder + "/" + entry->d_name;
      struct stat status = {};
      if (stat(path.c_str(), &status) != 0) continue;
      if (S_ISDIR(status.st_mode)) {
        Walk(path, id);
      } else {
        Visit(path, entry->d_name, status.st_size, id);
      }
    }
    closedir(directory);
  }

 private:
  long long FolderId(const std::string& folder, long long parent) {
    findFolder_.Bind(1, folder);
    const bool known = findFolder_.Row();
    const long long id = known ? findFolder_.Number(0) : 0;
    findFolder_.Reset();
    return known ? id : InsertObject(0, folder, parent);
  }

  static bool IsThere(const char* path, long long size) {
    const int descriptor = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) return false;
    struct stat status = {};
    const bool same = fstat(descriptor, &status) == 0 && status.st_size == size;
    close(descriptor);
    return same;
  }

  void Visit(const std::string& path, const char* title, long long size, long long parent) {
    find_.Bind(1, path);
    const bool known = find_.Row();
    find_.Reset();
    if (known) return;
    Read(path);
    InsertMedium(InsertObject(1, path, parent), path, title, size);
  }

  void Read(const std::string& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    Check(descriptor >= 0, path.c_str());
    Check(read(descriptor, bytes_, sizeof bytes_) >= 0, path.c_str());
    close(descriptor);
  }

  long long InsertObject(int kind, const std::string& path, long long parent) {
    insertObject_.Bind(1, kind).Bind(2, "2026-11-21").Bind(3, parent).Bind(4, path).Run();
    return sqlite3_last_insert_rowid(database_);
  }

  void InsertMedium(long long id, const std::string& path, const char* title, long long size) {
    insertMedium_.Bind(1, id)
        .Bind(2, title)
        .Bind(3, size)
        .Bind(4, path)
        .Bind(5, "/orx000010.JPG")
        .Bind(6, "/orxthumb000020.JPG")
        .Bind(7, "/orxscreen000030.JPG")
        .Run();
  }

  sqlite3* database_;
  char bytes_[kReadSize];
  Statement find_, recorded_, findFolder_, insertObject_, insertMedium_, deleteObject_,
      deleteMedium_;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    fprintf(stderr, "usage: floor DIRECTORY DATABASE\n");
    return 2;
  }
  const orx_bench::Usage usage;
  sqlite3* database = nullptr;
  Check(sqlite3_open(argv[2], &database) == SQLITE_OK, argv[2], database);
  const auto run = [database](const char* sql) {
    Check(sqlite3_exec(database, sql, nullptr, nullptr, nullptr) == SQLITE_OK, sql, database);
  };
  run("begin");
  run(kCreate);
  {
    Floor floor(database);
    floor.Purge();
    floor.Walk(argv[1], 0);
  }
  run("commit");
  sqlite3_close(database);
  usage.Print();
  return 0;
}

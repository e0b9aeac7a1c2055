// The purge of a directory tree, which asks for the sizes of a directory's files at once, against
// the same purge written down statement by statement.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
#include "OSAL/ORXAString.h"
#include "OSAL/ORXFSHandler.h"
#include "support/FakePlatform.h"
#include "support/TempDir.h"
#include "support/TestDatabase.h"

namespace {

using orx_test::FakePlatform;
using orx_test::TempDir;
using orx_test::TestDatabase;

// A result table as SQLite gives it.
struct Table {
  explicit Table(const std::string& sql) {
    code =
        sqlite3_get_table(DataBaseMgr::ppDataBase, sql.c_str(), &cells, &rows, &columns, nullptr);
    DataBaseMgr::GetInstance()->nLastResult = code;
  }
  ~Table() { sqlite3_free_table(cells); }
  Table(const Table&) = delete;
  Table& operator=(const Table&) = delete;
  const char* Cell(int row, int column) const {
    const char* cell = cells[(row + 1) * columns + column];
    return cell != nullptr ? cell : "";
  }

  int code = 0, rows = 0, columns = 0;
  char** cells = nullptr;
};

class LiteralPurge {
 public:
  void Run(const std::string& directory) {
    DataBaseMgr* database = DataBaseMgr::GetInstance();
    char* idText = database->GetUniqueIdForPath(directory.c_str());
    if (idText == nullptr) return;
    const std::string id = idText;
    free(idText);
    if (!visited_.insert(id).second) return;  // a container is walked once
    ORXFSHandler files;
    if (files.OpenDir(directory.c_str()) == 0) database->RemoveIdFromTables(id.c_str(), 0);
    const Table children("select class, FullPath, id from ObjectTable where parentID = \"" + id +
                         "\"");
    if (children.rows * children.columns < 1) return;
    for (int row = 0; row < children.rows; ++row)
      if (!CheckRow(directory, children, row)) return;
  }

 private:
  // 32 bits; what is larger is the largest of them.
  static unsigned long SizeOf(const char* text, int mediaClass) {
    if (mediaClass == 3) return std::min<unsigned long>(ORXAString::Ulong(text), UINT32_MAX);
    return static_cast<uint32_t>(std::min<long long>(strtol(text, nullptr, 10), UINT32_MAX));
  }

  std::set<std::string> visited_;

  // False when the call ends at once.
  bool CheckRow(const std::string& directory, const Table& children, int row) {
    const int mediaClass = ORXAString::Integer(children.Cell(row, 0));
    const std::string path = children.Cell(row, 1);
    if (mediaClass == 0) {
      Run(path);
      return true;
    }
    unsigned long size = 0;
    if (mediaClass == 1 || mediaClass == 3) {
      const std::string table = mediaClass == 1 ? "ImageTable" : "VideoTable";
      const Table sizes("select size from " + table + " where FullPath = \"" + path + "\"");
      if (sizes.cells == nullptr || sizes.code != SQLITE_OK) return false;
      if (sizes.rows > 0) size = SizeOf(sizes.Cell(0, 0), mediaClass);
    }
    ORXFSHandler files;
    const bool valid =
        files.IsValidFile(path.c_str(), size) && path.substr(0, path.rfind('/')) == directory;
    if (!valid) DataBaseMgr::GetInstance()->RemoveIdFromTables(children.Cell(row, 2), mediaClass);
    return true;
  }
};

std::string Quoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("''") : std::string(1, c);
  return quoted + "'";
}

// Random rows over a card of a few files and directories.
class PurgeSizesTest : public testing::Test {
 protected:
  PurgeSizesTest() {
    for (const char* directory : {"", "sub/", "sub/deep/", "other/"})
      for (int size = 0; size < 4; ++size)
        card_.Write(std::string(directory) + "file" + std::to_string(size),
                    std::string(static_cast<size_t>(size), 'x'));
    card_.Write("it's", "xx");
  }

  unsigned Random(unsigned limit) { return static_cast<unsigned>(random_()) % limit; }
  std::string RandomPath() {
    const char* const names[] = {
        "/file0",     "/file1",          "/file2", "/file3",    "/sub/file1", "/sub/file2",
        "/sub/file3", "/sub/deep/file2", "/gone",  "/sub/gone", "/it's",      "/a\"b",
        "/sub",       "/sub/deep",       "/other", "/vanished", "",           "/other/file1"};
    return card_.path() + names[Random(sizeof names / sizeof *names)];
  }
  std::string RandomSize() {
    const char* const sizes[] = {"0", "1", "2", "3", "2", "-1", "4294967298", "'x'", "'2x'", "1.5"};
    return sizes[Random(sizeof sizes / sizeof *sizes)];
  }
  std::string RandomClass() {
    const char* const classes[] = {"0", "1", "1", "1", "2", "3", "3", "4", "'1x'", "'x'", "1.5"};
    return classes[Random(sizeof classes / sizeof *classes)];
  }
  void FillAtRandom() {
    const auto object = [this](int id, const std::string& parent, const std::string& mediaClass,
                               const std::string& path) {
      statements_.push_back(
          "insert or ignore into ObjectTable (id,class,date,parentID,FullPath) "
          "values (" +
          std::to_string(id) + "," + mediaClass + ",'d'," + Quoted(parent) + "," + Quoted(path) +
          ")");
    };
    statements_.clear();
    object(1, "0", "0", card_.path());
    object(2, "1", "0", card_.path() + "/sub");
    object(3, "2", "0", card_.path() + "/sub/deep");
    for (int id = 4; id < 30; ++id)
      object(id, std::to_string(1 + Random(5)), RandomClass(), RandomPath());
    for (const char* table : {"ImageTable", "VideoTable"}) {
      for (unsigned count = 10 + Random(30); count > 0; --count)
        statements_.push_back("insert or ignore into " + std::string(table) +
                              " (id,class,date,size,FullPath) values ('" +
                              std::to_string(4 + Random(26)) + "',1,'d'," + RandomSize() + "," +
                              Quoted(RandomPath()) + ")");
      // The media rows of most objects, as the library writes them.
      for (int i = 0; i < 2; ++i)
        statements_.push_back("insert or ignore into " + std::string(table) +
                              " (id,class,date,size,FullPath) select id,1,'d'," + RandomSize() +
                              ",FullPath from ObjectTable where id % 3 = " + std::to_string(i));
      if (Random(12) == 0) statements_.push_back("drop table " + std::string(table));
    }
  }
  // What is left of the tables, and what was logged.
  template <typename Purge>
  std::vector<std::string> ResultOf(const Purge& purge) {
    const TestDatabase database;
    for (const std::string& sql : statements_) database.Run(sql);
    FakePlatform::Get().log.clear();
    purge(database.manager());
    std::vector<std::string> result;
    for (const auto& line : FakePlatform::Get().log)
      result.push_back(std::to_string(line.priority) + line.message);
    result.push_back("code " + std::to_string(database->nLastResult));
    for (const char* table : {"ObjectTable", "ImageTable", "VideoTable", "ContainerTable"}) {
      if (database.Select("select 1 from sqlite_master where name = '" + std::string(table) + "'")
              .empty())
        continue;
      for (const auto& row :
           database.Select("select id, FullPath from " + std::string(table) + " order by id"))
        result.push_back(std::string(table) + " " + row[0] + " " + row[1]);
    }
    return result;
  }

  TempDir card_;
  std::minstd_rand random_{20261122};
  std::vector<std::string> statements_;
};

TEST_F(PurgeSizesTest, PurgesLikeOneQuestionARow) {
  const int rounds = getenv("ORXSCAN_SOAK") != nullptr ? 20000 : 60;
  for (int round = 0; round < rounds; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    FillAtRandom();
    const auto expected =
        ResultOf([&](DataBaseMgr* /*database*/) { LiteralPurge().Run(card_.path()); });
    const auto found = ResultOf(
        [&](DataBaseMgr* database) { database->DeleteInvalidItemsInDB(card_.path().c_str()); });
    for (size_t i = 0; i < found.size() && i < expected.size() && found != expected; ++i)
      ASSERT_EQ(found[i], expected[i]);
    ASSERT_EQ(found, expected);
  }
}

TEST_F(PurgeSizesTest, DoesNotTakeAPictureOf4GiBForASmallFile) {
  const TestDatabase database;
  database.Run("insert into ObjectTable (id,class,date,parentID,FullPath) values (1,0,'d','0'," +
               Quoted(card_.path()) + "), (2,1,'d','1'," + Quoted(card_.path() + "/file3") + ")");
  database.Run(
      "insert into ImageTable (id,class,date,size,FullPath) values ('2',1,'d',4294967299," +
      Quoted(card_.path() + "/file3") + ")");
  database->DeleteInvalidItemsInDB(card_.path().c_str());
  EXPECT_EQ(database.Cell("select count(*) from ObjectTable where id = 2"), "0");
}

}  // namespace

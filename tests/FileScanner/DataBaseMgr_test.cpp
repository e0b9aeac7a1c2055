#include "FileScanner/DataBaseMgr.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <limits>
#include <string>

#include "FileScanner/DataBaseSchema.h"
#include "OSAL/ORXMemory.h"
#include "support/FakePlatform.h"
#include "support/TempDir.h"
#include "support/TestDatabase.h"

namespace {

using orx_test::FakePlatform;
using orx_test::Rows;
using orx_test::Select;
using orx_test::TempDir;
using orx_test::TestDatabase;

constexpr char kObjectSql[] =
    "create table ObjectTable (id INTEGER PRIMARY KEY,class INTEGER NOT NULL,date VARCHAR(64) NOT "
    "NULL,parentID VARCHAR(16) NOT NULL,FullPath VARCHAR(600) NOT NULL,Valid INTEGER DEFAULT "
    "0,BackupID VARCHAR(128) DEFAULT 0,IsBackup INTEGER DEFAULT 0);";
constexpr char kObjectOnlySql[] =
    "create table ObjectTable (id INTEGER PRIMARY KEY,Title VARCHAR(256) DEFAULT ' ',class INTEGER "
    "NOT NULL,date VARCHAR(64) NOT NULL,size INTEGER NOT NULL,parentID VARCHAR(16) NOT "
    "NULL,FullPath VARCHAR(600) NOT NULL,uri VARCHAR(600) DEFAULT ' ',Thumbnailuri VARCHAR(600) "
    "DEFAULT ' ',Screennailuri VARCHAR(600) DEFAULT ' ',Height INTEGER DEFAULT 0,Width INTEGER "
    "DEFAULT 0,VideoFrameRate INTEGER DEFAULT 0,VideoBitrate INTEGER DEFAULT 0,SortIndex "
    "VARCHAR(16) DEFAULT ' ');";
constexpr char kBackupSql[] =
    "create table ObjectTable (id INTEGER PRIMARY KEY,Title VARCHAR(256) DEFAULT ' ',class INTEGER "
    "NOT NULL,date VARCHAR(64) NOT NULL,size INTEGER NOT NULL,parentID VARCHAR(16) NOT "
    "NULL,FullPath VARCHAR(600) NOT NULL,MimeType VARCHAR(32) DEFAULT ' ',SortIndex VARCHAR(16) "
    "DEFAULT ' ',Valid INTEGER DEFAULT 0,BackupID VARCHAR(128) DEFAULT 0,IsBackup INTEGER DEFAULT "
    "0);";
constexpr char kContainerSql[] =
    "create table ContainerTable (id VARCHAR(16) PRIMARY KEY,class INTEGER NOT NULL,date "
    "VARCHAR(64) NOT NULL,FullPath VARCHAR(600) NOT NULL,searchable INTEGER DEFAULT 0,writeStatus "
    "INTEGER DEFAULT 0);";
constexpr char kAudioSql[] =
    "create table AudioTable (id VARCHAR(16) PRIMARY KEY,Title VARCHAR(256) DEFAULT ' ',class "
    "INTEGER NOT NULL,date VARCHAR(64) NOT NULL,size INTEGER NOT NULL,FullPath VARCHAR(600) NOT "
    "NULL,MimeType VARCHAR(32) DEFAULT ' ',DLNAProfile VARCHAR(64) DEFAULT ' ',Duration "
    "VARCHAR(64) DEFAULT ' ',AlbumTitle VARCHAR(256) DEFAULT ' ',AlbumArtist VARCHAR(256) DEFAULT "
    "' ',Artist VARCHAR(256) DEFAULT ' ',Channel INTEGER DEFAULT 0,Bitrate INTEGER DEFAULT "
    "0,Frequency INTEGER DEFAULT 0,AlbumArtOffset INTEGER DEFAULT 0,AlbumArtLength INTEGER DEFAULT "
    "0,uri VARCHAR(600) DEFAULT ' ');";
constexpr char kVideoSql[] =
    "create table VideoTable (id VARCHAR(16) PRIMARY KEY,Title VARCHAR(256) DEFAULT ' ',class "
    "INTEGER NOT NULL,date VARCHAR(64) NOT NULL,size INTEGER NOT NULL,FullPath VARCHAR(600) NOT "
    "NULL,MimeType VARCHAR(32) DEFAULT ' ',DLNAProfile VARCHAR(64) DEFAULT ' ',Duration "
    "VARCHAR(64) DEFAULT ' ',Height INTEGER DEFAULT 0,Width INTEGER DEFAULT 0,VideoFrameRate "
    "INTEGER DEFAULT 0,VideoBitrate INTEGER DEFAULT 0,VideoLevel INTEGER DEFAULT 0,AlbumArtOffset "
    "INTEGER DEFAULT 0,AlbumArtLength INTEGER DEFAULT 0,AudioDuration VARCHAR(64) DEFAULT ' "
    "',AudioAlbumTitle VARCHAR(256) DEFAULT ' ',AudioAlbumArtist VARCHAR(256) DEFAULT ' "
    "',AudioArtist VARCHAR(256) DEFAULT ' ',AudioChannel INTEGER DEFAULT 0,AudioBitrate INTEGER "
    "DEFAULT 0,AudioFrequency INTEGER DEFAULT 0,uri VARCHAR(600) DEFAULT ' ',ThumbnailOffset "
    "INTEGER DEFAULT 0,ThumbnailLength INTEGER DEFAULT 0,ThumbnailHeight INTEGER DEFAULT "
    "0,ThumbnailWidth INTEGER DEFAULT 0,Thumbnailuri VARCHAR(600) DEFAULT ' ',Share INTEGER "
    "DEFAULT 0,SortIndex VARCHAR(16) DEFAULT ' ');";
constexpr char kImageSql[] =
    "create table ImageTable (id VARCHAR(16) PRIMARY KEY,Title VARCHAR(256) DEFAULT ' ',class "
    "INTEGER NOT NULL,date VARCHAR(64) NOT NULL,size INTEGER NOT NULL,FullPath VARCHAR(600) NOT "
    "NULL,MimeType VARCHAR(32) DEFAULT ' ',DLNAProfile VARCHAR(64) DEFAULT ' ',Height INTEGER "
    "DEFAULT 0,Width INTEGER DEFAULT 0,ThumbnailOffset INTEGER DEFAULT 0,ThumbnailLength INTEGER "
    "DEFAULT 0,ThumbnailHeight INTEGER DEFAULT 0,ThumbnailWidth INTEGER DEFAULT 0,Description "
    "VARCHAR(512) DEFAULT ' ',uri VARCHAR(600) DEFAULT ' ',Thumbnailuri VARCHAR(600) DEFAULT ' "
    "',ScreennailOffset INTEGER DEFAULT 0,ScreennailLength INTEGER DEFAULT 0,ScreennailHeight "
    "INTEGER DEFAULT 0,ScreennailWidth INTEGER DEFAULT 0,Screennailuri VARCHAR(600) DEFAULT ' "
    "',Share INTEGER DEFAULT 0,SortIndex VARCHAR(16) DEFAULT ' ');";

// No instance at the start and at the end, a directory for files, and output that is kept.
class DataBaseMgrTest : public testing::Test {
 protected:
  DataBaseMgrTest() {
    FakePlatform::Reset();
    DataBaseMgr::DestroyInstance();
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
  }
  ~DataBaseMgrTest() override {
    DataBaseMgr::DestroyInstance();
    testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
  }

  DataBaseMgr* manager() const { return DataBaseMgr::GetInstance(); }
  int Open(const std::string& path) { return manager()->OpenDB(path.c_str()); }
  int OpenNew(int sharingMode) {
    FakePlatform::Get().sharingMode = sharingMode;
    return Open(directory_.Path("media.db"));
  }
  std::string Statement(const char* table, const orx::TableLayout& layout) {
    char* sql = GetCreatTblSqlStmt(table, layout.count, layout.columns);
    const std::string text = sql != nullptr ? sql : "(null)";
    ORXMemory::Free(sql);
    return text;
  }
  // Names of the tables in the file, in the order of their creation.
  Rows Tables() const {
    return Select(directory_.Path("media.db"),
                  "select name from sqlite_master where type = 'table' order by rowid");
  }
  static std::vector<std::string> Messages() { return FakePlatform::Get().Messages(); }

  TempDir directory_;
};

// ---- the instance ----

TEST_F(DataBaseMgrTest, IsCreatedOnFirstUseAndOnce) {
  EXPECT_EQ(DataBaseMgr::mpThisInstance, nullptr);
  DataBaseMgr* first = DataBaseMgr::GetInstance();
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(DataBaseMgr::GetInstance(), first);
  EXPECT_EQ(DataBaseMgr::mpThisInstance, first);
}

TEST_F(DataBaseMgrTest, StartsWithEveryMemberEmpty) {
  EXPECT_FALSE(manager()->getIsDbExists());
  EXPECT_EQ(manager()->getPszDbName(), nullptr);
  EXPECT_EQ(manager()->getPszDirectoryPath(), nullptr);
  EXPECT_EQ(manager()->nLastResult, 0);
  EXPECT_EQ(manager()->nRows, 0);
  EXPECT_EQ(manager()->nColumns, 0);
  EXPECT_EQ(manager()->bInvalidateAllItemsCancelFlag, 0);
  EXPECT_EQ(*manager()->getPpDataBase(), nullptr);
  EXPECT_EQ(DataBaseMgr::result, nullptr);
}

TEST_F(DataBaseMgrTest, ClosesTheDatabaseWhenItIsDestroyed) {
  ASSERT_EQ(OpenNew(0), 1);
  manager()->IsInDB("/a");  // leaves a compiled statement
  DataBaseMgr::DestroyInstance();
  EXPECT_EQ(DataBaseMgr::mpThisInstance, nullptr);
  EXPECT_EQ(DataBaseMgr::ppDataBase, nullptr);
  DataBaseMgr::DestroyInstance();
  EXPECT_EQ(DataBaseMgr::mpThisInstance, nullptr);
}

TEST_F(DataBaseMgrTest, ClosesTheDatabaseThatTwoInstancesUsed) {
  ASSERT_EQ(OpenNew(0), 1);
  manager()->IsInDB("/a");
  {
    DataBaseMgr other;
    EXPECT_FALSE(other.IsInDB("/a"));
  }
  EXPECT_EQ(DataBaseMgr::ppDataBase, nullptr);
  EXPECT_FALSE(manager()->IsInDB("/a"));
  EXPECT_EQ(manager()->nLastResult, SQLITE_MISUSE);
  EXPECT_EQ(Open(directory_.Path("media.db")), 1);
  EXPECT_FALSE(manager()->IsInDB("/a"));
  EXPECT_EQ(manager()->nLastResult, SQLITE_OK);
}

TEST_F(DataBaseMgrTest, ReturnsWhatItsOwnerSet) {
  char name[] = "name", path[] = "path";
  manager()->setIsDbExists(true);
  manager()->setPszDbName(name);
  manager()->setPszDirectoryPath(path);
  EXPECT_TRUE(manager()->getIsDbExists());
  EXPECT_EQ(manager()->getPszDbName(), name);
  EXPECT_EQ(manager()->getPszDirectoryPath(), path);
  DataBaseMgr* instance = manager();
  DataBaseMgr::setMpThisInstance(nullptr);
  EXPECT_EQ(DataBaseMgr::mpThisInstance, nullptr);
  DataBaseMgr::setMpThisInstance(instance);
}

TEST_F(DataBaseMgrTest, TakesOverTheHandleItIsGiven) {
  sqlite3* handle = nullptr;
  ASSERT_EQ(sqlite3_open(":memory:", &handle), SQLITE_OK);
  manager()->setPpDataBase(&handle);
  EXPECT_EQ(DataBaseMgr::ppDataBase, handle);
  EXPECT_EQ(manager()->getPpDataBase(), &DataBaseMgr::ppDataBase);
  EXPECT_EQ(manager()->ExecSqlStatmentNoValueReturn("create table T (a)"), 1);
}

TEST_F(DataBaseMgrTest, LetsTheOwnerOfTheHandleCloseIt) {
  ASSERT_EQ(OpenNew(0), 1);
  manager()->IsInDB("/a");
  sqlite3** handle = manager()->getPpDataBase();
  EXPECT_EQ(sqlite3_close(*handle), SQLITE_OK);
  *handle = nullptr;
  EXPECT_FALSE(manager()->IsInDB("/a"));
}

TEST_F(DataBaseMgrTest, IsCancelledUntilItIsCreatedAnew) {
  manager()->CancelInvalidateAllItems();
  EXPECT_EQ(manager()->bInvalidateAllItemsCancelFlag, 1);
  EXPECT_TRUE(decltype(manager()->bInvalidateAllItemsCancelFlag)::is_always_lock_free);
  DataBaseMgr::DestroyInstance();
  EXPECT_EQ(manager()->bInvalidateAllItemsCancelFlag, 0);
}

TEST_F(DataBaseMgrTest, KeepsEntryPointsThatDoNothing) {
  manager()->InsertDIRintoDB("/a");
  manager()->InsertDIRintoDB(nullptr);
  manager()->SetPath();
  EXPECT_TRUE(Messages().empty());
}

// ---- opening ----

TEST_F(DataBaseMgrTest, CreatesAFileThatIsMissing) {
  EXPECT_EQ(OpenNew(0), 1);
  EXPECT_TRUE(std::filesystem::exists(directory_.Path("media.db")));
  EXPECT_NE(DataBaseMgr::ppDataBase, nullptr);
}

TEST_F(DataBaseMgrTest, OpensNothingWithoutAName) {
  EXPECT_EQ(manager()->OpenDB(nullptr), 0);
  EXPECT_EQ(manager()->CreateDbmsSystem(nullptr), 0);
  EXPECT_EQ(manager()->CreateDB(nullptr), 0);
  EXPECT_EQ(DataBaseMgr::ppDataBase, nullptr);
}

TEST_F(DataBaseMgrTest, KeepsTheOpenConnectionWhateverFileIsAskedFor) {
  ASSERT_EQ(OpenNew(0), 1);
  sqlite3* first = DataBaseMgr::ppDataBase;
  EXPECT_EQ(Open(directory_.Path("other.db")), 1);
  EXPECT_EQ(DataBaseMgr::ppDataBase, first);
  EXPECT_FALSE(std::filesystem::exists(directory_.Path("other.db")));
}

TEST_F(DataBaseMgrTest, LeavesTheTablesOfAnExistingFileAsTheyAre) {
  ASSERT_EQ(OpenNew(8), 1);
  DataBaseMgr::DestroyInstance();
  const Rows before = Select(directory_.Path("media.db"), "select * from sqlite_master");
  FakePlatform::Get().log.clear();
  EXPECT_EQ(OpenNew(0), 1);
  EXPECT_EQ(Select(directory_.Path("media.db"), "select * from sqlite_master"), before);
  EXPECT_TRUE(Messages().empty());
}

TEST_F(DataBaseMgrTest, OpensAnEmptyFileWithoutMakingTables) {
  EXPECT_EQ(Open(directory_.Write("media.db", "")), 1);
  EXPECT_EQ(manager()->ExecSqlStatment("select name from sqlite_master"), 1);
  EXPECT_TRUE(DataBaseMgr::vdata.empty());
  EXPECT_TRUE(Messages().empty());
}

TEST_F(DataBaseMgrTest, OpensAnExistingFileForWriting) {
  ASSERT_EQ(OpenNew(0), 1);
  DataBaseMgr::DestroyInstance();
  ASSERT_EQ(OpenNew(0), 1);
  EXPECT_EQ(manager()->ExecSqlStatmentNoValueReturn("delete from ObjectTable"), 1);
}

TEST_F(DataBaseMgrTest, FailsWhereNoFileCanBeMade) {
  EXPECT_EQ(Open(directory_.Path("no/such/folder/media.db")), 0);
  EXPECT_EQ(Messages(),
            (std::vector<std::string>{"[DataBaseMgr::CreateDB] sqlite3_open error = [14]",
                                      "[DataBaseMgr::OpenDB] CreateDbmsSystem failed"}));
  EXPECT_EQ(FakePlatform::Get().log[0].priority, 6);
  EXPECT_EQ(FakePlatform::Get().log[1].priority, 4);
  EXPECT_EQ(DataBaseMgr::ppDataBase, nullptr);
}

TEST_F(DataBaseMgrTest, WritesAFailedCreationToStandardErrorOnce) {
  testing::internal::GetCapturedStderr();
  testing::internal::CaptureStderr();
  EXPECT_EQ(manager()->CreateDB(directory_.Path("no/media.db").c_str()), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "[DLNA      ] \x1b[31m[DataBaseMgr::CreateDB] sqlite3_open error = [14]\x1b[m\n");
  testing::internal::CaptureStderr();
}

TEST_F(DataBaseMgrTest, OpensAfterAFailure) {
  EXPECT_EQ(Open(directory_.Path("no/media.db")), 0);
  EXPECT_EQ(OpenNew(0), 1);
}

TEST_F(DataBaseMgrTest, CreatesAFileWithoutTablesBelowTheFullSystem) {
  EXPECT_EQ(manager()->CreateDB(directory_.Path("media.db").c_str()), 1);
  EXPECT_EQ(manager()->ExecSqlStatmentNoValueReturn("create table T (a)"), 1);
  EXPECT_EQ(Tables(), (Rows{{"T"}}));
}

TEST_F(DataBaseMgrTest, ClosesTheEarlierFileWhenItCreatesAnother) {
  EXPECT_EQ(manager()->CreateDbmsSystem(directory_.Path("media.db").c_str()), 1);
  manager()->IsInDB("/a");
  EXPECT_EQ(manager()->CreateDbmsSystem(directory_.Path("second.db").c_str()), 1);
  EXPECT_FALSE(manager()->IsInDB("/a"));
  EXPECT_EQ(manager()->nLastResult, SQLITE_OK);
}

// ---- the schema ----

TEST_F(DataBaseMgrTest, BuildsTheStatementOfEveryTable) {
  EXPECT_EQ(Statement("ObjectTable", orx::kObjectTable), kObjectSql);
  EXPECT_EQ(Statement("ObjectTable", orx::kObjectTableObjectOnly), kObjectOnlySql);
  EXPECT_EQ(Statement("ObjectTable", orx::kObjectTableBackup), kBackupSql);
  EXPECT_EQ(Statement("ContainerTable", orx::kContainerTable), kContainerSql);
  EXPECT_EQ(Statement("AudioTable", orx::kAudioTable), kAudioSql);
  EXPECT_EQ(Statement("VideoTable", orx::kVideoTable), kVideoSql);
  EXPECT_EQ(Statement("ImageTable", orx::kImageTable), kImageSql);
  EXPECT_EQ(Statement("VideoTable", orx::kVideoTable).size(), 1009u);
}

TEST_F(DataBaseMgrTest, BuildsAStatementWithoutColumns) {
  EXPECT_EQ(Statement("T", {"", 0, nullptr}), "create table T ();");
  EXPECT_EQ(Statement("T", {"", -3, nullptr}), "create table T ();");
}

TEST_F(DataBaseMgrTest, GivesOnlyTheTypeVarcharASize) {
  const TableColumn columns[] = {
      {"a", "VARCHAR", -5, "NOT NULL"}, {"b", "INTEGER", 7, ""}, {"c", "varchar", 7, "UNIQUE"}};
  EXPECT_EQ(Statement("T", {"", 3, columns}),
            "create table T (a VARCHAR(-5) NOT NULL,b INTEGER ,c varchar UNIQUE);");
}

TEST_F(DataBaseMgrTest, BuildsAStatementFromFieldsThatAreFull) {
  TableColumn column;
  memset(&column, 'x', sizeof column);
  column.nSize = 0;
  EXPECT_EQ(Statement("T", {"", 1, &column}), "create table T (" + std::string(30, 'x') + " " +
                                                  std::string(10, 'x') + " " +
                                                  std::string(16, 'x') + ");");
}

TEST_F(DataBaseMgrTest, BuildsAStatementOfAnyLength) {
  const std::vector<TableColumn> columns(500, {"aColumnWithALongName", "VARCHAR", 256, "NOT NULL"});
  const std::string sql = Statement("T", {"", 500, columns.data()});
  EXPECT_EQ(sql.size(), strlen("create table T ();") + 499 +
                            500 * strlen("aColumnWithALongName VARCHAR(256) NOT NULL"));
}

TEST_F(DataBaseMgrTest, BuildsNoStatementWithoutNameOrColumns) {
  EXPECT_EQ(GetCreatTblSqlStmt(nullptr, 0, nullptr), nullptr);
  EXPECT_EQ(GetCreatTblSqlStmt("T", 1, nullptr), nullptr);
}

TEST_F(DataBaseMgrTest, MakesAllTablesInTheDefaultLayout) {
  for (const int mode : {0, 2, 7, 9, -1}) {
    ASSERT_EQ(OpenNew(mode), 1);
    EXPECT_EQ(
        Tables(),
        (Rows{
            {"ObjectTable"}, {"ContainerTable"}, {"AudioTable"}, {"VideoTable"}, {"ImageTable"}}));
    DataBaseMgr::DestroyInstance();
    std::filesystem::remove(directory_.Path("media.db"));
  }
}

TEST_F(DataBaseMgrTest, MakesTheObjectTableAloneInTheOtherLayouts) {
  for (const int mode : {6, 8}) {
    ASSERT_EQ(OpenNew(mode), 1);
    EXPECT_EQ(Tables(), (Rows{{"ObjectTable"}}));
    manager()->ExecSqlStatment("pragma table_info(ObjectTable)");
    EXPECT_EQ(manager()->nRows, mode == 8 ? 15 : 12);
    DataBaseMgr::DestroyInstance();
    std::filesystem::remove(directory_.Path("media.db"));
  }
}

TEST_F(DataBaseMgrTest, LogsTheStatementsOfTheDefaultLayout) {
  testing::internal::GetCapturedStdout();
  testing::internal::CaptureStdout();
  ASSERT_EQ(OpenNew(3), 1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "---> TANDEMIXMode = 3 \n");
  testing::internal::CaptureStdout();
  const auto cut = [](const std::string& message) { return message.substr(0, 247); };
  EXPECT_EQ(Messages(), (std::vector<std::string>{"[DataBaseMgr::CreateTables] DLNA Mode type - 3",
                                                  cut(std::string("object :\n") + kObjectSql),
                                                  cut(std::string("container :\n") + kContainerSql),
                                                  cut(std::string("audio :\n") + kAudioSql),
                                                  cut(std::string("video :\n") + kVideoSql),
                                                  cut(std::string("image :\n") + kImageSql)}));
  for (const auto& line : FakePlatform::Get().log) EXPECT_EQ(line.priority, 4);
}

TEST_F(DataBaseMgrTest, LogsTheStatementOfTheOtherLayouts) {
  testing::internal::GetCapturedStdout();
  testing::internal::CaptureStdout();
  for (const int mode : {6, 8}) {
    FakePlatform::Get().log.clear();
    ASSERT_EQ(OpenNew(mode), 1);
    EXPECT_EQ(Messages(),
              (std::vector<std::string>{
                  "[DataBaseMgr::CreateTables] DLNA Mode type - " + std::to_string(mode),
                  (std::string("object :\n") + (mode == 6 ? kBackupSql : kObjectOnlySql))
                      .substr(0, 247)}));
    DataBaseMgr::DestroyInstance();
    std::filesystem::remove(directory_.Path("media.db"));
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  testing::internal::CaptureStdout();
}

TEST_F(DataBaseMgrTest, MakesTheRemainingTablesWhenOneIsThere) {
  ASSERT_EQ(manager()->CreateDB(directory_.Path("media.db").c_str()), 1);
  manager()->ExecSqlStatmentNoValueReturn("create table AudioTable (a)");
  FakePlatform::Get().log.clear();
  manager()->CreateTables();
  EXPECT_EQ(Tables().size(), 5u);
  int failures = 0;
  for (const auto& line : FakePlatform::Get().log) failures += line.priority == 6 ? 1 : 0;
  EXPECT_EQ(failures, 1);
}

TEST_F(DataBaseMgrTest, LeavesATransactionThatIsOpenToItsOwner) {
  ASSERT_EQ(manager()->CreateDB(directory_.Path("media.db").c_str()), 1);
  manager()->ExecSqlStatmentNoValueReturn("begin");
  FakePlatform::Get().log.clear();
  manager()->CreateTables();
  for (const auto& line : FakePlatform::Get().log) EXPECT_EQ(line.priority, 4) << line.message;
  manager()->ExecSqlStatment("select count(*) from sqlite_master where type = 'table'");
  EXPECT_EQ(DataBaseMgr::vdata, std::vector<std::string>{"5"});
  EXPECT_EQ(manager()->ExecSqlStatmentNoValueReturn("rollback"), 1);
  EXPECT_EQ(Tables().size(), 0u);
}

TEST_F(DataBaseMgrTest, LogsEveryStatementThatFailsWhenNoneCanBeRun) {
  const std::string path = directory_.Path("media.db");
  ASSERT_EQ(manager()->CreateDB(path.c_str()), 1);
  manager()->ExecSqlStatmentNoValueReturn("create table Other (a)");
  manager()->ExecSqlStatmentNoValueReturn("pragma query_only = 1");
  FakePlatform::Get().log.clear();
  manager()->CreateTables();
  int failures = 0;
  for (const auto& line : FakePlatform::Get().log) failures += line.priority == 6 ? 1 : 0;
  EXPECT_EQ(failures, 5);
}

TEST_F(DataBaseMgrTest, AddsNothingToTablesThatAreThere) {
  ASSERT_EQ(manager()->CreateDB(directory_.Path("media.db").c_str()), 1);
  manager()->ExecSqlStatmentNoValueReturn(kObjectSql);
  FakePlatform::Get().sharingMode = 8;
  manager()->CreateTables();
  EXPECT_EQ(Select(directory_.Path("media.db"), "select type, name from sqlite_master"),
            (Rows{{"table", "ObjectTable"}}));
}

// A query that reads a whole table says SCAN, one that uses an index says SEARCH.
TEST_F(DataBaseMgrTest, FindsPathsAndParentsWithoutReadingWholeTables) {
  ASSERT_EQ(OpenNew(0), 1);
  for (const char* query : {"select id from ObjectTable where FullPath = 'a'",
                            "select class from ObjectTable where parentID = '1'",
                            "select size from ImageTable where FullPath = 'a'",
                            "select size from VideoTable where FullPath = 'a'",
                            "select DLNAProfile from AudioTable where FullPath = 'a'"}) {
    manager()->ExecSqlStatment((std::string("explain query plan ") + query).c_str());
    ASSERT_EQ(DataBaseMgr::vdata.size(), 4u);
    EXPECT_EQ(DataBaseMgr::vdata[3].compare(0, 6, "SEARCH"), 0) << DataBaseMgr::vdata[3];
  }
}

TEST_F(DataBaseMgrTest, FindsMarkedRowsWithoutReadingTheWholeTable) {
  for (const int mode : {0, 6}) {
    DataBaseMgr::DestroyInstance();
    std::filesystem::remove(directory_.Path("media.db"));
    ASSERT_EQ(OpenNew(mode), 1);
    manager()->ExecSqlStatment("explain query plan select * from ObjectTable where Valid = 1");
    ASSERT_EQ(DataBaseMgr::vdata.size(), 4u);
    EXPECT_NE(DataBaseMgr::vdata[3].find("ObjectTable_Valid"), std::string::npos);
  }
}

TEST_F(DataBaseMgrTest, GivesRowsOfOnePathInTheOrderOfTheirIds) {
  ASSERT_EQ(OpenNew(0), 1);
  manager()->ExecSqlStatmentNoValueReturn(
      "insert into ObjectTable (id, class, date, parentID, FullPath) values "
      "(5, 1, '', '', 'p'), (2, 1, '', '', 'p'), (9, 1, '', '', 'p')");
  manager()->ExecSqlStatment("select id from ObjectTable where FullPath = \"p\"");
  EXPECT_EQ(DataBaseMgr::vdata, (std::vector<std::string>{"2", "5", "9"}));
}

// ---- statements ----

TEST_F(DataBaseMgrTest, RunsAStatement) {
  ASSERT_EQ(OpenNew(0), 1);
  FakePlatform::Get().log.clear();
  EXPECT_EQ(manager()->ExecSqlStatmentNoValueReturn("create table T (a); insert into T values (1)"),
            1);
  EXPECT_EQ(Select(directory_.Path("media.db"), "select a from T"), (Rows{{"1"}}));
  EXPECT_TRUE(Messages().empty());
}

TEST_F(DataBaseMgrTest, TakesDoubleQuotedTexts) {
  ASSERT_EQ(OpenNew(0), 1);
  EXPECT_EQ(
      manager()->ExecSqlStatmentNoValueReturn(
          "insert into ObjectTable (class,date,parentID,FullPath) values (1,\"d\",\"\",\"p\")"),
      1);
  EXPECT_EQ(manager()->ExecSqlStatment("select id from ObjectTable where FullPath=\"p\""), 1);
  EXPECT_EQ(DataBaseMgr::vdata, (std::vector<std::string>{"1"}));
}

TEST_F(DataBaseMgrTest, LogsAStatementThatFails) {
  ASSERT_EQ(OpenNew(0), 1);
  FakePlatform::Get().log.clear();
  testing::internal::GetCapturedStderr();
  testing::internal::CaptureStderr();
  EXPECT_EQ(manager()->ExecSqlStatmentNoValueReturn("delete from Nowhere"), 0);
  const std::string message =
      "[DataBaseMgr::ExecSqlStatmentNoValueReturn]\n\tquery : delete from Nowhere\n\texec failed "
      "[1]\n\terrmsg : [no such table: Nowhere]";
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "[DLNA      ] \x1b[31m" + message + "\x1b[m\n");
  testing::internal::CaptureStderr();
  ASSERT_EQ(FakePlatform::Get().log.size(), 1u);
  const auto& line = FakePlatform::Get().log[0];
  EXPECT_EQ(line.message, message);
  EXPECT_EQ(line.priority, 6);
  EXPECT_EQ(line.tag, "DLNA");
  EXPECT_EQ(line.source, "DataBaseMgr.cpp");
  EXPECT_EQ(line.function, "ExecSqlStatmentNoValueReturn");
}

TEST_F(DataBaseMgrTest, CutsALongStatementInTheLog) {
  ASSERT_EQ(OpenNew(0), 1);
  FakePlatform::Get().log.clear();
  const std::string sql = "delete from " + std::string(5000, 'n');
  EXPECT_EQ(manager()->ExecSqlStatmentNoValueReturn(sql.c_str()), 0);
  EXPECT_EQ(Messages(),
            (std::vector<std::string>{
                ("[DataBaseMgr::ExecSqlStatmentNoValueReturn]\n\tquery : " + sql).substr(0, 245)}));
}

TEST_F(DataBaseMgrTest, PrintsPercentSignsOfAStatementAsTheyAre) {
  ASSERT_EQ(OpenNew(0), 1);
  FakePlatform::Get().log.clear();
  EXPECT_EQ(manager()->ExecSqlStatmentNoValueReturn("%s%n%d"), 0);
  EXPECT_EQ(Messages()[0].find("[DataBaseMgr::ExecSqlStatmentNoValueReturn]\n\tquery : %s%n%d\n"),
            0u);
}

TEST_F(DataBaseMgrTest, RunsNoNullText) {
  EXPECT_EQ(manager()->ExecSqlStatmentNoValueReturn(nullptr), 0);
  EXPECT_EQ(manager()->ExecSqlStatment(nullptr), 0);
  ASSERT_EQ(OpenNew(0), 1);
  FakePlatform::Get().log.clear();
  EXPECT_EQ(manager()->ExecSqlStatmentNoValueReturn(nullptr), 0);
  EXPECT_EQ(manager()->ExecSqlStatment(nullptr), 0);
  EXPECT_TRUE(Messages().empty());
}

TEST_F(DataBaseMgrTest, RunsNothingWithoutADatabase) {
  EXPECT_EQ(manager()->ExecSqlStatmentNoValueReturn("select 1"), 0);
  EXPECT_EQ(Messages(), (std::vector<std::string>{
                            "[DataBaseMgr::ExecSqlStatmentNoValueReturn]\n\tquery : select 1\n\t"
                            "exec failed [21]\n\terrmsg : [no database is open]"}));
  FakePlatform::Get().log.clear();
  DataBaseMgr::vdata = {"old"};
  DataBaseMgr::vcol_head = {"old"};
  EXPECT_EQ(manager()->ExecSqlStatment("select 1"), 0);
  EXPECT_EQ(manager()->nLastResult, SQLITE_MISUSE);
  EXPECT_TRUE(DataBaseMgr::vdata.empty());
  EXPECT_TRUE(DataBaseMgr::vcol_head.empty());
  EXPECT_FALSE(manager()->NeedToDeleteDB("/a"));
  EXPECT_TRUE(Messages().empty());
}

// ---- queries ----

TEST_F(DataBaseMgrTest, LeavesTheResultOfAQueryRowAfterRow) {
  ASSERT_EQ(OpenNew(0), 1);
  EXPECT_EQ(manager()->ExecSqlStatment(
                "select 1 as a, 'x' as b union all select 2.5, NULL union all select '', 'z'"),
            1);
  EXPECT_EQ(DataBaseMgr::vcol_head, (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(DataBaseMgr::vdata, (std::vector<std::string>{"1", "x", "2.5", "", "", "z"}));
  EXPECT_EQ(manager()->nRows, 3);
  EXPECT_EQ(manager()->nColumns, 2);
  EXPECT_EQ(manager()->nLastResult, SQLITE_OK);
}

TEST_F(DataBaseMgrTest, LeavesNothingOfAQueryWithoutRows) {
  ASSERT_EQ(OpenNew(0), 1);
  DataBaseMgr::vdata = {"old"};
  DataBaseMgr::vcol_head = {"old"};
  EXPECT_EQ(manager()->ExecSqlStatment("select * from ObjectTable"), 1);
  EXPECT_TRUE(DataBaseMgr::vdata.empty());
  EXPECT_TRUE(DataBaseMgr::vcol_head.empty());
  EXPECT_EQ(manager()->nRows, 0);
  EXPECT_EQ(manager()->nColumns, 0);
}

TEST_F(DataBaseMgrTest, LeavesNothingOfAQueryThatFails) {
  ASSERT_EQ(OpenNew(0), 1);
  FakePlatform::Get().log.clear();
  for (const char* sql : {"select * from Nowhere", "selec", "select 1; select * from Nowhere"}) {
    DataBaseMgr::vdata = {"old"};
    DataBaseMgr::vcol_head = {"old"};
    EXPECT_EQ(manager()->ExecSqlStatment(sql), 0) << sql;
    EXPECT_EQ(manager()->nLastResult, SQLITE_ERROR);
    EXPECT_EQ(manager()->nRows, 0);
    EXPECT_TRUE(DataBaseMgr::vdata.empty());
    EXPECT_TRUE(DataBaseMgr::vcol_head.empty());
  }
  EXPECT_TRUE(Messages().empty());
}

TEST_F(DataBaseMgrTest, RunsAQueryThatIsACellOfTheLastResult) {
  ASSERT_EQ(OpenNew(0), 1);
  manager()->ExecSqlStatment("select 'select 42 as answer, 43 as next'");
  EXPECT_EQ(manager()->ExecSqlStatment(DataBaseMgr::vdata[0].c_str()), 1);
  EXPECT_EQ(DataBaseMgr::vdata, (std::vector<std::string>{"42", "43"}));
}

TEST_F(DataBaseMgrTest, LeavesTheSameResultForItsOwnQueries) {
  ASSERT_EQ(OpenNew(0), 1);
  manager()->ExecSqlStatmentNoValueReturn(
      "insert into ObjectTable (class, date, parentID, FullPath, Valid) "
      "values (1, '', '3', 'p', NULL), (3, 'd', '3', 'p', 2.5)");
  manager()->ExecSqlStatment("select * from ObjectTable where FullPath=\"p\"");
  const auto data = DataBaseMgr::vdata;
  const auto head = DataBaseMgr::vcol_head;
  EXPECT_TRUE(manager()->IsInDB("p"));
  EXPECT_EQ(DataBaseMgr::vdata, data);
  EXPECT_EQ(DataBaseMgr::vcol_head, head);
  EXPECT_EQ(manager()->nRows, 2);
  EXPECT_EQ(manager()->nColumns, 8);
  EXPECT_FALSE(manager()->IsInDB("q"));
  EXPECT_TRUE(DataBaseMgr::vcol_head.empty());
  EXPECT_EQ(manager()->nRows, 0);
  EXPECT_EQ(manager()->nColumns, 0);
  EXPECT_EQ(manager()->nLastResult, SQLITE_OK);
  EXPECT_FALSE(manager()->IsInDB("\""));
  EXPECT_EQ(manager()->nLastResult, SQLITE_ERROR);
}

// ---- ids ----

TEST_F(DataBaseMgrTest, CountsIdsUp) {
  int numbers[3];
  for (int& number : numbers) {
    char* id = GetUniqueId();
    number = atoi(id);
    EXPECT_EQ(std::to_string(number), id);
    ORXMemory::Free(id);
  }
  EXPECT_GE(numbers[0], 1);
  EXPECT_EQ(numbers[1], numbers[0] + 1);
  EXPECT_EQ(numbers[2], numbers[0] + 2);
}

// ---- dropping tables ----

TEST_F(DataBaseMgrTest, DropsATable) {
  ASSERT_EQ(OpenNew(0), 1);
  manager()->DropTable("AudioTable");
  EXPECT_EQ(Tables(), (Rows{{"ObjectTable"}, {"ContainerTable"}, {"VideoTable"}, {"ImageTable"}}));
}

TEST_F(DataBaseMgrTest, LogsATableThatIsNotThere) {
  ASSERT_EQ(OpenNew(0), 1);
  FakePlatform::Get().log.clear();
  manager()->DropTable("Nowhere");
  EXPECT_EQ(Messages(), (std::vector<std::string>{
                            "[DataBaseMgr::ExecSqlStatmentNoValueReturn]\n\tquery : Drop table "
                            "Nowhere\n\texec failed [1]\n\terrmsg : [no such table: Nowhere]"}));
}

TEST_F(DataBaseMgrTest, DropsNoTableWhoseNameIsNoIdentifier) {
  ASSERT_EQ(OpenNew(0), 1);
  for (const char* name :
       {"", "AudioTable; drop table ImageTable", "AudioTable --", "\"AudioTable\"",
        "main.AudioTable", " AudioTable", "if exists AudioTable"}) {
    FakePlatform::Get().log.clear();
    manager()->DropTable(name);
    EXPECT_EQ(FakePlatform::Get().log.size(), 1u) << name;
  }
  FakePlatform::Get().log.clear();
  manager()->DropTable(nullptr);
  EXPECT_TRUE(Messages().empty());
  EXPECT_EQ(Tables().size(), 5u);
}

TEST_F(DataBaseMgrTest, DropsAllTablesInTheirOrder) {
  ASSERT_EQ(OpenNew(0), 1);
  FakePlatform::Get().log.clear();
  EXPECT_EQ(manager()->DestroyTables(), 1);
  EXPECT_TRUE(Tables().empty());
  EXPECT_TRUE(Messages().empty());
  EXPECT_EQ(manager()->DestroyTables(), 0);
  std::vector<std::string> expected;
  for (const char* table :
       {"ObjectTable", "ContainerTable", "AudioTable", "VideoTable", "ImageTable"})
    expected.push_back(
        std::string("[DataBaseMgr::ExecSqlStatmentNoValueReturn]\n\tquery : Drop table ") + table +
        "\n\texec failed [1]\n\terrmsg : [no such table: " + table + "]");
  EXPECT_EQ(Messages(), expected);
}

TEST_F(DataBaseMgrTest, AnswersForTheLastTableAlone) {
  ASSERT_EQ(OpenNew(0), 1);
  manager()->DropTable("ObjectTable");
  EXPECT_EQ(manager()->DestroyTables(), 1);
  ASSERT_EQ(manager()->ExecSqlStatmentNoValueReturn(kObjectSql), 1);
  EXPECT_EQ(manager()->DestroyTables(), 0);
}

// ---- what is to be deleted ----

class NeedToDelete : public DataBaseMgrTest {
 protected:
  void SetUp() override { ASSERT_EQ(OpenNew(0), 1); }
  void Add(const std::string& path) {
    const std::string sql =
        "insert into ObjectTable (class, date, parentID, FullPath) values (1, '', '', '" + path +
        "')";
    ASSERT_EQ(manager()->ExecSqlStatmentNoValueReturn(sql.c_str()), 1);
  }
};

TEST_F(NeedToDelete, IsFalseForAnEmptyTable) {
  EXPECT_FALSE(manager()->NeedToDeleteDB("/mnt/mmc/DCIM"));
}

TEST_F(NeedToDelete, IsFalseWhenEveryRowLiesInTheDirectory) {
  Add("/mnt/mmc/DCIM");
  Add("/mnt/mmc/DCIM/100PHOTO/a.jpg");
  EXPECT_FALSE(manager()->NeedToDeleteDB("/mnt/mmc/DCIM"));
  EXPECT_TRUE(DataBaseMgr::vdata.empty());
}

TEST_F(NeedToDelete, IsTrueForARowOutsideTheDirectory) {
  Add("/mnt/mmc/DCIM/100PHOTO/a.jpg");
  Add("/mnt/usb/a.jpg");
  EXPECT_TRUE(manager()->NeedToDeleteDB("/mnt/mmc/DCIM"));
  EXPECT_TRUE(DataBaseMgr::vdata.empty());
}

TEST_F(NeedToDelete, ReadsOnlyTheFirstIdOutsideTheDirectory) {
  Add("/mnt/usb/a.jpg");
  Add("/aaa.jpg");
  manager()->ExecSqlStatmentNoValueReturn("update ObjectTable set id = 0 where id = 1");
  EXPECT_FALSE(manager()->NeedToDeleteDB("/mnt/mmc/DCIM"));
  manager()->ExecSqlStatmentNoValueReturn("update ObjectTable set id = -1 where id = 2");
  EXPECT_FALSE(manager()->NeedToDeleteDB("/mnt/mmc/DCIM"));
  manager()->ExecSqlStatmentNoValueReturn("update ObjectTable set id = 3 where id = -1");
  EXPECT_FALSE(manager()->NeedToDeleteDB("/mnt/mmc/DCIM"));
}

TEST_F(NeedToDelete, TakesThePathAsAPrefixOfAPattern) {
  Add("/mnt/mmc/DCIM2/a.jpg");
  EXPECT_FALSE(manager()->NeedToDeleteDB("/mnt/mmc/DCIM"));
  EXPECT_FALSE(manager()->NeedToDeleteDB("/MNT/MMC"));
  EXPECT_FALSE(manager()->NeedToDeleteDB("/mnt/___/"));
  EXPECT_FALSE(manager()->NeedToDeleteDB("%DCIM"));
  EXPECT_FALSE(manager()->NeedToDeleteDB(""));
  EXPECT_TRUE(manager()->NeedToDeleteDB("/mnt/mmc/DCIM/"));
}

TEST_F(NeedToDelete, TakesADoubleQuoteAsText) {
  Add("/a\"b/c.jpg");
  EXPECT_FALSE(manager()->NeedToDeleteDB("/a\"b"));
  EXPECT_TRUE(manager()->NeedToDeleteDB("/a\"c"));
}

TEST_F(NeedToDelete, IsFalseForAPathWithASingleQuote) {
  Add("/mnt/usb/a.jpg");
  for (const char* path : {"it's", "'", "x''y", "x' or '1'='1", "x'; drop table ObjectTable; --"}) {
    EXPECT_FALSE(manager()->NeedToDeleteDB(path)) << path;
    EXPECT_TRUE(DataBaseMgr::vdata.empty());
  }
  EXPECT_EQ(Tables().size(), 5u);
}

TEST_F(NeedToDelete, IsFalseWithoutAPath) { EXPECT_FALSE(manager()->NeedToDeleteDB(nullptr)); }

TEST_F(NeedToDelete, TakesAPathOfAnyLength) {
  Add("/mnt/usb/a.jpg");
  EXPECT_TRUE(manager()->NeedToDeleteDB(("/" + std::string(4000, 'x')).c_str()));
}

TEST_F(NeedToDelete, KnowsAFileWithSortingColumns) {
  EXPECT_EQ(manager()->NeedToDeleteDBforSorting(), 1);
}

TEST_F(NeedToDelete, KnowsAFileWithoutSortingColumns) {
  manager()->DropTable("VideoTable");
  FakePlatform::Get().log.clear();
  EXPECT_EQ(manager()->NeedToDeleteDBforSorting(), 0);
  EXPECT_EQ(Messages(), (std::vector<std::string>{
                            "[DataBaseMgr::ExecSqlStatmentNoValueReturn]\n\tquery : select "
                            "count(*) from VideoTable where SortIndex is not null\n\texec failed "
                            "[1]\n\terrmsg : [no such table: VideoTable]"}));
  manager()->ExecSqlStatmentNoValueReturn("create table VideoTable (id)");
  EXPECT_EQ(manager()->NeedToDeleteDBforSorting(), 0);
}

}  // namespace

// How a new database comes to its place, and what is refused or left alone on the way.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/MultimediaQueryMgr.h"
#include "support/FakePlatform.h"
#include "support/TempDir.h"
#include "support/TestDatabase.h"

namespace {

namespace fs = std::filesystem;

using orx_test::FakePlatform;
using orx_test::Rows;
using orx_test::Select;
using orx_test::TempDir;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr char kUnfinished[] = ".media.db.orxscan-new";
constexpr unsigned kTooLong = 20;  // seconds: whoever hangs is ended by a signal
constexpr char kCantOpen[] = "[DataBaseMgr::CreateDB] sqlite3_open error = [14]";
constexpr char kNotMade[] = "[DataBaseMgr::OpenDB] CreateDbmsSystem failed";

// What the authorizer of every connection made meanwhile refuses.
int deniedAction = 0;
const char* deniedName = nullptr;

int Authorize(void* /*unused*/, int action, const char* name, const char* /*unused*/,
              const char* /*unused*/, const char* /*unused*/) {
  const bool denied = action == deniedAction && name != nullptr && strcmp(name, deniedName) == 0;
  return denied ? SQLITE_DENY : SQLITE_OK;
}

int SetAuthorizer(sqlite3* connection, char** /*message*/, const void* /*routines*/) {
  return sqlite3_set_authorizer(connection, Authorize, nullptr);
}

using EntryPoint = void (*)();
const auto kAuthorizer = reinterpret_cast<EntryPoint>(SetAuthorizer);

class DatabaseCreation : public testing::Test {
 protected:
  DatabaseCreation() {
    FakePlatform::Reset();
    DataBaseMgr::DestroyInstance();
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    alarm(kTooLong);
  }
  ~DatabaseCreation() override {
    alarm(0);
    sqlite3_cancel_auto_extension(kAuthorizer);
    DataBaseMgr::DestroyInstance();
    testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
  }

  static int Open(const std::string& path) {
    return DataBaseMgr::GetInstance()->OpenDB(path.c_str());
  }
  static int OpenAndClose(const std::string& path) {
    const int opened = Open(path);
    DataBaseMgr::DestroyInstance();
    return opened;
  }
  static Rows Tables(const std::string& path) {
    return Select(path, "select name from sqlite_master where type = 'table' order by rowid");
  }
  static void ExpectAllTables(const std::string& path) {
    EXPECT_EQ(
        Tables(path),
        (Rows{
            {"ObjectTable"}, {"ContainerTable"}, {"AudioTable"}, {"VideoTable"}, {"ImageTable"}}));
  }
  static void Deny(int action, const char* name) {
    deniedAction = action;
    deniedName = name;
    sqlite3_auto_extension(kAuthorizer);
  }
  std::set<std::string> Names() const {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(directory_.path()))
      names.insert(entry.path().filename().string());
    return names;
  }
  std::string Content(const std::string& name) const {
    std::ifstream file(directory_.Path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }
  // Leaves the journal of a database with a thousand rows whose writer died, and not the database.
  void LeaveOldJournal(const char* mode, const char* ending) const {
    sqlite3* writer = nullptr;
    ASSERT_EQ(sqlite3_open(directory_.Path("old.db").c_str(), &writer), SQLITE_OK);
    const std::string sql =
        std::string("pragma journal_mode=") + mode +
        "; pragma cache_size=1; create table Old (a); begin; with recursive n(i) as (select 1 "
        "union "
        "all select i+1 from n where i<1000) insert into Old select zeroblob(1000) from n; commit; "
        "begin; update Old set a=1;";
    EXPECT_EQ(sqlite3_exec(writer, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
    fs::copy_file(directory_.Path(std::string("old.db") + ending), path_ + ending);
    sqlite3_exec(writer, "rollback", nullptr, nullptr, nullptr);
    sqlite3_close(writer);
    for (const char* old : {"old.db", "old.db-journal", "old.db-wal", "old.db-shm"})
      fs::remove(directory_.Path(old));
  }

  TempDir directory_;
  const std::string path_ = directory_.Path("media.db");
};

// ---- the new file ----

TEST_F(DatabaseCreation, LeavesNothingBesideTheDatabase) {
  EXPECT_EQ(OpenAndClose(path_), 1);
  EXPECT_EQ(Names(), (std::set<std::string>{"media.db"}));
  ExpectAllTables(path_);
}

TEST_F(DatabaseCreation, HappensBehindALinkThatLeadsNowhere) {
  directory_.MakeDir("card");
  fs::create_symlink("card/real.db", path_);
  EXPECT_EQ(OpenAndClose(path_), 1);
  EXPECT_TRUE(fs::is_symlink(path_));
  ExpectAllTables(directory_.Path("card/real.db"));
  EXPECT_EQ(Names(), (std::set<std::string>{"card", "media.db"}));
}

TEST_F(DatabaseCreation, HappensBehindAChainOfLinks) {
  const std::string target = directory_.MakeDir("card") + "/real.db";
  fs::create_symlink(target, directory_.Path("card/second"));
  fs::create_symlink("card/second", directory_.Path("first"));
  fs::create_symlink("first", path_);
  EXPECT_EQ(OpenAndClose(path_), 1);
  EXPECT_TRUE(fs::is_symlink(path_));
  EXPECT_TRUE(fs::is_symlink(directory_.Path("card/second")));
  ExpectAllTables(target);
}

TEST_F(DatabaseCreation, TakesANameAsLongAsSqlitesJournalAllows) {
  const std::string name(240, 'n');
  EXPECT_EQ(OpenAndClose(directory_.Path(name)), 1);
  EXPECT_EQ(Names(), (std::set<std::string>{name}));
  ExpectAllTables(directory_.Path(name));
}

TEST_F(DatabaseCreation, TakesANameInTheCurrentFolder) {
  const fs::path before = fs::current_path();
  fs::current_path(directory_.path());
  EXPECT_EQ(OpenAndClose("media.db"), 1);
  fs::current_path(before);
  EXPECT_EQ(Names(), (std::set<std::string>{"media.db"}));
}

TEST_F(DatabaseCreation, LogsAFailedIndexAndGoesOn) {
  Deny(SQLITE_CREATE_INDEX, "VideoTable_FullPath");
  EXPECT_EQ(OpenAndClose(path_), 1);
  EXPECT_THAT(FakePlatform::Get().Messages(),
              Contains(HasSubstr("query : create index VideoTable_FullPath")));
  ExpectAllTables(path_);
  EXPECT_EQ(Select(path_, "select count(*) from sqlite_master where name like '%Path'"),
            (Rows{{"3"}}));
}

TEST_F(DatabaseCreation, LogsAFailedTableAndGoesOn) {
  Deny(SQLITE_CREATE_TABLE, "AudioTable");
  EXPECT_EQ(OpenAndClose(path_), 1);
  EXPECT_THAT(FakePlatform::Get().Messages(), Contains(HasSubstr("query : create table AudioT")));
  EXPECT_EQ(Tables(path_),
            (Rows{{"ObjectTable"}, {"ContainerTable"}, {"VideoTable"}, {"ImageTable"}}));
}

TEST_F(DatabaseCreation, LeavesNoFileWhenItCannotBeCommitted) {
  Deny(SQLITE_TRANSACTION, "COMMIT");
  EXPECT_EQ(OpenAndClose(path_), 0);
  EXPECT_EQ(Names(), std::set<std::string>{});
  EXPECT_EQ(FakePlatform::Get().Messages().back(), kNotMade);
}

// ---- what is beside it ----

TEST_F(DatabaseCreation, KeepsAnOldJournalOutOfTheNewFile) {
  LeaveOldJournal("delete", "-journal");
  EXPECT_EQ(OpenAndClose(path_), 1);
  ExpectAllTables(path_);
  EXPECT_EQ(Select(path_, "pragma integrity_check"), (Rows{{"ok"}}));
  EXPECT_EQ(Names(), (std::set<std::string>{"media.db"}));
}

TEST_F(DatabaseCreation, KeepsAnOldWriteAheadLogOutOfTheNewFile) {
  LeaveOldJournal("wal", "-wal");
  directory_.Write("media.db-shm", std::string(32768, '\1'));
  EXPECT_EQ(OpenAndClose(path_), 1);
  ExpectAllTables(path_);
  EXPECT_EQ(Select(path_, "pragma integrity_check"), (Rows{{"ok"}}));
  EXPECT_EQ(Names(), (std::set<std::string>{"media.db"}));
}

TEST_F(DatabaseCreation, KeepsAnOldJournalOfALinksTargetOutOfTheNewFile) {
  LeaveOldJournal("delete", "-journal");
  fs::create_symlink("media.db", directory_.Path("link.db"));
  EXPECT_EQ(OpenAndClose(directory_.Path("link.db")), 1);
  ExpectAllTables(path_);
  EXPECT_EQ(Select(path_, "pragma integrity_check"), (Rows{{"ok"}}));
}

TEST_F(DatabaseCreation, KeepsTheJournalOfAFileThatIsThere) {
  ASSERT_EQ(OpenAndClose(path_), 1);
  directory_.Write("media.db-journal", "");
  EXPECT_EQ(OpenAndClose(path_), 1);
  EXPECT_EQ(Names(), (std::set<std::string>{"media.db", "media.db-journal"}));
}

TEST_F(DatabaseCreation, LeavesAFileOfTheHostsAlone) {
  directory_.Write("media.db-new", "the host's");
  EXPECT_EQ(OpenAndClose(path_), 1);
  EXPECT_EQ(Content("media.db-new"), "the host's");
}

TEST_F(DatabaseCreation, LeavesAFolderOfTheHostsAlone) {
  directory_.MakeDir("media.db-new");
  EXPECT_EQ(OpenAndClose(path_), 1);
  EXPECT_TRUE(fs::is_directory(directory_.Path("media.db-new")));
}

TEST_F(DatabaseCreation, TakesAnotherNameWhereItsOwnIsNotItsOwn) {
  directory_.MakeDir(kUnfinished);
  directory_.Write(std::string(kUnfinished) + "1", "somebody's");
  directory_.Write(std::string(kUnfinished) + "2-lock", "somebody's");
  directory_.Write(std::string(kUnfinished) + "3-journal", "somebody's");
  fs::create_symlink("nowhere", directory_.Path(std::string(kUnfinished) + "4"));
  mkfifo(directory_.Path(std::string(kUnfinished) + "5").c_str(), 0600);
  mkfifo(directory_.Path(std::string(kUnfinished) + "6-lock").c_str(), 0600);
  std::set<std::string> names = Names();
  EXPECT_EQ(OpenAndClose(path_), 1);
  names.insert("media.db");
  EXPECT_EQ(Names(), names);
  EXPECT_EQ(Content(std::string(kUnfinished) + "1"), "somebody's");
  ExpectAllTables(path_);
}

TEST_F(DatabaseCreation, RemovesWhatAKilledMakerLeft) {
  directory_.Write(kUnfinished, "SQLite format 3 and what comes next");
  directory_.Write(std::string(kUnfinished) + "-journal", "\xd9\xd5\x05\xf9");
  directory_.Write(std::string(kUnfinished) + "-lock", "");
  EXPECT_EQ(OpenAndClose(path_), 1);
  EXPECT_EQ(Names(), (std::set<std::string>{"media.db"}));
}

// ---- what is no file ----

class NoDatabase : public DatabaseCreation {
 protected:
  void ExpectRefused(const std::string& path) {
    FakePlatform::Get().log.clear();
    EXPECT_EQ(OpenAndClose(path), 0) << path;
    EXPECT_THAT(FakePlatform::Get().Messages(), ElementsAre(kCantOpen, kNotMade)) << path;
    MultimediaQueryMgr reader;
    EXPECT_EQ(reader.ConnectDB(path.c_str()), 0) << path;
    EXPECT_EQ(reader.ConnectDB(path.c_str()), 0);
    EXPECT_EQ(reader.ExecSqlStatment("select 1"), 0);
    reader.DisconnectDB();
  }
  void MakeFifo(const std::string& name) {
    ASSERT_EQ(mkfifo(directory_.Path(name).c_str(), 0600), 0);
  }
};

TEST_F(NoDatabase, IsAFifo) {
  MakeFifo("media.db");
  ExpectRefused(path_);
}

TEST_F(NoDatabase, IsAFolder) { ExpectRefused(directory_.MakeDir("media.db")); }

TEST_F(NoDatabase, IsADevice) {
  ExpectRefused("/dev/null");
  fs::create_symlink("/dev/null", path_);
  ExpectRefused(path_);
}

TEST_F(NoDatabase, IsAFileWithAFifoBesideIt) {
  ASSERT_EQ(OpenAndClose(path_), 1);
  for (const char* ending : {"-journal", "-wal", "-shm"}) {
    MakeFifo(std::string("media.db") + ending);
    ExpectRefused(path_);
    fs::remove(path_ + ending);
  }
  EXPECT_EQ(OpenAndClose(path_), 1);
}

TEST_F(NoDatabase, IsALinkToAFileWithAFifoBesideIt) {
  ASSERT_EQ(OpenAndClose(path_), 1);
  MakeFifo("media.db-journal");
  fs::create_symlink("media.db", directory_.Path("link.db"));
  ExpectRefused(directory_.Path("link.db"));
}

// SQLite would write where the link leads.
TEST_F(NoDatabase, IsAFileWithALinkAsItsJournal) {
  ASSERT_EQ(OpenAndClose(path_), 1);
  directory_.Write("letter.txt", "dear reader");
  fs::create_symlink("letter.txt", path_ + "-journal");
  ExpectRefused(path_);
}

TEST_F(NoDatabase, IsMadeBesideAFifo) {
  for (const char* ending : {"-journal", "-wal", "-shm"}) {
    MakeFifo(std::string("media.db") + ending);
    ExpectRefused(path_);
    EXPECT_EQ(Names(), (std::set<std::string>{std::string("media.db") + ending}));
    fs::remove(path_ + ending);
  }
}

TEST_F(NoDatabase, IsMadeByTheReader) {
  MultimediaQueryMgr reader;
  EXPECT_EQ(reader.ConnectDB(path_.c_str()), 0);
  EXPECT_EQ(Names(), std::set<std::string>{});
  reader.DisconnectDB();
}

// ---- an existing file ----

TEST_F(DatabaseCreation, FailsAsStatedForAFileThatCannotBeOpened) {
  ASSERT_EQ(OpenAndClose(path_), 1);
  FakePlatform::Get().log.clear();
  struct rlimit before = {};
  getrlimit(RLIMIT_NOFILE, &before);
  struct rlimit none = before;
  none.rlim_cur = 3;
  DataBaseMgr* manager = DataBaseMgr::GetInstance();
  setrlimit(RLIMIT_NOFILE, &none);
  const int opened = manager->OpenDB(path_.c_str());
  setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_EQ(opened, 0);
  EXPECT_THAT(FakePlatform::Get().Messages(), ElementsAre(kCantOpen, kNotMade));
  EXPECT_EQ(FakePlatform::Get().log[0].function, "CreateDB");
}

TEST_F(DatabaseCreation, MakesNoTablesInAnEmptyFileThatIsThere) {
  EXPECT_EQ(OpenAndClose(directory_.Write("media.db", "")), 1);
  EXPECT_EQ(fs::file_size(path_), 0u);
}

TEST_F(DatabaseCreation, MakesTheTablesOfAnEmptyFileWhenAskedForThem) {
  directory_.Write("media.db", "");
  EXPECT_EQ(DataBaseMgr::GetInstance()->CreateDbmsSystem(path_.c_str()), 1);
  ExpectAllTables(path_);
}

TEST_F(DatabaseCreation, OpensADatabaseInMemory) {
  EXPECT_EQ(Open(":memory:"), 1);
  EXPECT_EQ(DataBaseMgr::GetInstance()->ExecSqlStatmentNoValueReturn("create table T (a)"), 1);
}

// ---- what a stranger's file says is data ----

class StrangersDatabase : public DatabaseCreation {
 protected:
  void Prepare(const std::string& sql) {
    ASSERT_EQ(OpenAndClose(path_), 1);
    sqlite3* stranger = nullptr;
    ASSERT_EQ(sqlite3_open(path_.c_str(), &stranger), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(stranger, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(stranger);
    sqlite3_close(stranger);
  }
};

constexpr char kRow[] =
    "insert into ObjectTable (class, date, parentID, FullPath) values (1,'d','0','/p');";

TEST_F(StrangersDatabase, RunsNoTrigger) {
  Prepare(std::string(kRow) +
          "create trigger t after update on ObjectTable begin delete from ObjectTable; end;");
  ASSERT_EQ(Open(path_), 1);
  EXPECT_EQ(DataBaseMgr::GetInstance()->ValidateItemInDB("/p"), 1);
  EXPECT_TRUE(DataBaseMgr::GetInstance()->IsInDB("/p"));
}

TEST_F(StrangersDatabase, RunsNoTriggerWithoutAnEnd) {
  Prepare(
      "create table T (a); create trigger t after insert on ObjectTable begin insert into T with "
      "recursive n(i) as (select 1 union all select i+1 from n) select i from n; end;");
  ASSERT_EQ(Open(path_), 1);
  EXPECT_EQ(DataBaseMgr::GetInstance()->ExecSqlStatmentNoValueReturn(kRow), 1);
}

TEST_F(StrangersDatabase, AsksNoView) {
  Prepare(
      "drop table ObjectTable; create view ObjectTable as with recursive n(id) as (select 1 union "
      "all select id+1 from n) select id, 1 as class, '' as date, '0' as parentID, '/p' as "
      "FullPath "
      "from n;");
  ASSERT_EQ(Open(path_), 1);
  EXPECT_FALSE(DataBaseMgr::GetInstance()->IsInDB("/p"));
  EXPECT_EQ(DataBaseMgr::GetInstance()->nLastResult, SQLITE_ERROR);
  MultimediaQueryMgr reader;
  ASSERT_EQ(reader.ConnectDB(path_.c_str()), 1);
  EXPECT_EQ(reader.ExecSqlStatment("select * from ObjectTable"), 0);
  reader.DisconnectDB();
}

TEST_F(StrangersDatabase, RunsNoTriggerForTheReader) {
  Prepare(std::string(kRow) +
          "create trigger t after update on ObjectTable begin delete from ObjectTable; end;");
  MultimediaQueryMgr reader;
  ASSERT_EQ(reader.ConnectDB(path_.c_str()), 1);
  EXPECT_EQ(reader.ExecSqlStatmentNoValueReturn("update ObjectTable set Valid=1"), 1);
  reader.DisconnectDB();
  EXPECT_EQ(Select(path_, "select count(*) from ObjectTable"), (Rows{{"1"}}));
}

}  // namespace

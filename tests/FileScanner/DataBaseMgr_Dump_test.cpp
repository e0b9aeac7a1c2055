#include <gtest/gtest.h>

#include <string>

#include "FileScanner/DataBaseMgr.h"
#include "support/FakePlatform.h"
#include "support/TestDatabase.h"

namespace {

using orx_test::FakePlatform;
using orx_test::TestDatabase;
using Lines = std::vector<std::string>;

class DatabaseDump : public testing::Test {
 protected:
  // One newline at the end of a message is not logged.
  Lines Messages() const { return FakePlatform::Get().Messages(); }
  TestDatabase database_;
};

TEST_F(DatabaseDump, LogsNamesThenRowsCellByCell) {
  database_->ExecAndPrint("select 1 as a, 'x' as b union all select NULL, ''");
  EXPECT_EQ(Messages(),
            (Lines{"a    ", "b    ", "", "\n", "1    ", "x    ", "\n", "    ", "    "}));
  for (const auto& line : FakePlatform::Get().log) EXPECT_EQ(line.priority, 4);
}

TEST_F(DatabaseDump, LeavesTheResultVectorsEmpty) {
  DataBaseMgr::vdata = {"old"};
  DataBaseMgr::vcol_head = {"old"};
  database_->ExecAndPrint("select 1");
  EXPECT_TRUE(DataBaseMgr::vdata.empty());
  EXPECT_TRUE(DataBaseMgr::vcol_head.empty());
}

TEST_F(DatabaseDump, TakesAStatementThatIsACellOfTheLastResult) {
  database_->ExecSqlStatment("select 'select 42 as [a rather long name for an answer]'");
  database_->ExecAndPrint(DataBaseMgr::vdata[0].c_str());
  EXPECT_EQ(Messages(), (Lines{"a rather long name for an answer    ", "", "\n", "42    "}));
}

TEST_F(DatabaseDump, LogsOneEmptyLineForATableWithoutRows) {
  database_->ExecAndPrint("select * from ObjectTable");
  EXPECT_EQ(Messages(), (Lines{""}));
}

TEST_F(DatabaseDump, LogsNothingOfAQueryThatFailsAndKeepsItsCode) {
  database_->ExecAndPrint("select * from Nowhere");
  EXPECT_TRUE(Messages().empty());
  EXPECT_EQ(database_->nLastResult, SQLITE_ERROR);
  database_->ExecAndPrint("select 1");
  EXPECT_EQ(database_->nLastResult, SQLITE_OK);
  EXPECT_EQ(Messages().size(), 4u);
}

TEST_F(DatabaseDump, LogsNothingWithoutTextOrDatabase) {
  database_->ExecAndPrint(nullptr);
  DataBaseMgr::DestroyInstance();
  database_->ExecAndPrint("select 1");
  database_->DisplayDatabase();
  EXPECT_TRUE(Messages().empty());
}

TEST_F(DatabaseDump, PrintsPercentSignsAsTheyAreAndCutsLongCells) {
  database_->ExecAndPrint(("select '%s%n' as a, '" + std::string(400, 'x') + "' as b").c_str());
  EXPECT_EQ(Messages(), (Lines{"a    ", "b    ", "", "\n", "%s%n    ", std::string(247, 'x')}));
}

TEST_F(DatabaseDump, LogsATableAfterAnEmptyLine) {
  database_.Run("insert into ContainerTable (id, class, date, FullPath) values ('1', 0, 'd', 'p')");
  database_->DisplayTable("ContainerTable");
  EXPECT_EQ(Messages(), (Lines{"", "id    ", "class    ", "date    ", "FullPath    ",
                               "searchable    ", "writeStatus    ", "", "\n", "1    ", "0    ",
                               "d    ", "p    ", "0    ", "0    "}));
}

TEST_F(DatabaseDump, LogsNoTableWhoseNameIsNoIdentifier) {
  for (const char* name : {"Nowhere", "", "ObjectTable; drop table ObjectTable", "ObjectTable--"}) {
    FakePlatform::Get().log.clear();
    database_->DisplayTable(name);
    EXPECT_EQ(Messages(), (Lines{""})) << name;
  }
  FakePlatform::Get().log.clear();
  database_->DisplayTable(nullptr);
  EXPECT_EQ(Messages(), (Lines{""}));
  EXPECT_EQ(database_.Select("select name from sqlite_master where type = 'table'").size(), 5u);
}

TEST_F(DatabaseDump, LogsFourTablesOfTheDatabaseInOrder) {
  database_.Run("alter table ObjectTable rename to ObjectWide");
  database_.Run("create table ObjectTable (o); insert into ObjectTable values ('object')");
  for (const char* table : {"ContainerTable", "AudioTable", "VideoTable", "ImageTable"}) {
    const std::string name(table);
    database_.Run("drop table " + name);
    database_.Run("create table " + name + " (c); insert into " + name + " values ('" + name +
                  "')");
  }
  database_->DisplayDatabase();
  EXPECT_EQ(Messages(),
            (Lines{"o    ", "", "\n", "object    ", "c    ", "", "\n", "ImageTable    ", "c    ",
                   "", "\n", "AudioTable    ", "c    ", "", "\n", "VideoTable    "}));
}

TEST(DatabaseDumpOfTheObjectTableAlone, LogsNothingOfTheMissingTables) {
  TestDatabase database(8);
  database.Run(
      "insert into ObjectTable (class, date, size, parentID, FullPath) "
      "values (1, 'd', 2, '0', 'p')");
  database->DisplayDatabase();
  EXPECT_EQ(FakePlatform::Get().log.size(), 15u + 1 + 1 + 15);
  EXPECT_EQ(database->nLastResult, SQLITE_ERROR);
}

}  // namespace

#include "FileScanner/MultimediaQueryMgr.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/FakePlatform.h"
#include "support/TempDir.h"
#include "support/TestDatabase.h"

namespace {

using orx_test::FakePlatform;
using orx_test::Rows;
using orx_test::TempDir;
using orx_test::TestDatabase;
using Texts = std::vector<std::string>;

// A media database, and a query manager that is disconnected at the end.
class MultimediaQueryMgrTest : public testing::Test {
 protected:
  ~MultimediaQueryMgrTest() override { manager_.DisconnectDB(); }
  int Connect() { return manager_.ConnectDB(database_.path().c_str()); }

  TestDatabase database_;
  MultimediaQueryMgr manager_;
};

TEST_F(MultimediaQueryMgrTest, StartsWithEveryMemberZero) {
  EXPECT_EQ(manager_.nReserved, 0);
  EXPECT_EQ(manager_.nLastResult, 0);
  EXPECT_EQ(manager_.nRows, 0);
  EXPECT_EQ(manager_.nColumns, 0);
  EXPECT_EQ(MultimediaQueryMgr::result, nullptr);
}

TEST_F(MultimediaQueryMgrTest, ConnectsToAnExistingFile) {
  EXPECT_EQ(Connect(), 1);
  EXPECT_EQ(manager_.ExecSqlStatment("select 1"), 1);
}

TEST_F(MultimediaQueryMgrTest, MakesNoFileThatIsMissing) {
  TempDir directory;
  const std::string path = directory.Path("missing.db");
  EXPECT_EQ(manager_.ConnectDB(path.c_str()), 0);
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_TRUE(FakePlatform::Get().log.empty());
}

TEST_F(MultimediaQueryMgrTest, CountsAsConnectedAfterAFailedConnection) {
  TempDir directory;
  EXPECT_EQ(manager_.ConnectDB(directory.Path("missing.db").c_str()), 0);
  EXPECT_EQ(Connect(), 0);
  EXPECT_EQ(manager_.ExecSqlStatment("select 1"), 0);
  EXPECT_EQ(manager_.ExecSqlStatmentNoValueReturn("select 1"), 0);
  EXPECT_EQ(manager_.SetAutoCommit(), 0);
}

TEST_F(MultimediaQueryMgrTest, ConnectsWithoutANameToNothing) {
  EXPECT_EQ(manager_.ConnectDB(nullptr), 0);
  EXPECT_EQ(Connect(), 1);
}

TEST_F(MultimediaQueryMgrTest, ConnectsOnce) {
  EXPECT_EQ(Connect(), 1);
  EXPECT_EQ(Connect(), 0);
  EXPECT_EQ(manager_.ExecSqlStatment("select 1"), 1);
}

TEST_F(MultimediaQueryMgrTest, StillCountsAsConnectedWhenItIsDisconnected) {
  ASSERT_EQ(Connect(), 1);
  manager_.DisconnectDB();
  manager_.DisconnectDB();
  EXPECT_EQ(Connect(), 0);
  MultimediaQueryMgr another;
  EXPECT_EQ(another.ConnectDB(database_.path().c_str()), 1);
  another.DisconnectDB();
}

TEST_F(MultimediaQueryMgrTest, FailsInEveryOperationWhenItIsDisconnected) {
  ASSERT_EQ(Connect(), 1);
  ASSERT_EQ(manager_.ExecSqlStatment("select 1"), 1);
  manager_.DisconnectDB();
  EXPECT_EQ(manager_.ExecSqlStatmentNoValueReturn("select 1"), 0);
  EXPECT_EQ(manager_.ExecSqlStatment("select 1"), 0);
  EXPECT_TRUE(MultimediaQueryMgr::vdata.empty());
  EXPECT_TRUE(MultimediaQueryMgr::vcol_head.empty());
  EXPECT_NE(manager_.nLastResult, SQLITE_OK);
  EXPECT_EQ(manager_.nRows, 0);
  EXPECT_EQ(manager_.nColumns, 0);
  EXPECT_EQ(manager_.GetAutoCommit(), 0);
  EXPECT_EQ(manager_.SetAutoCommit(), 0);
}

TEST_F(MultimediaQueryMgrTest, FailsInEveryOperationBeforeItIsConnected) {
  manager_.DisconnectDB();
  EXPECT_EQ(manager_.ExecSqlStatmentNoValueReturn("select 1"), 0);
  EXPECT_EQ(manager_.ExecSqlStatment("select 1"), 0);
  EXPECT_EQ(manager_.GetAutoCommit(), 0);
  EXPECT_EQ(manager_.SetAutoCommit(), 0);
  EXPECT_EQ(Connect(), 1);
}

TEST_F(MultimediaQueryMgrTest, RunsStatements) {
  ASSERT_EQ(Connect(), 1);
  EXPECT_EQ(manager_.ExecSqlStatmentNoValueReturn("create table T (a); insert into T values (7)"),
            1);
  EXPECT_EQ(database_.Select("select a from T"), (Rows{{"7"}}));
}

TEST_F(MultimediaQueryMgrTest, IsSilentAboutStatementsAndQueriesThatFail) {
  ASSERT_EQ(Connect(), 1);
  testing::internal::CaptureStderr();
  EXPECT_EQ(manager_.ExecSqlStatmentNoValueReturn("delete from Nowhere"), 0);
  EXPECT_EQ(manager_.ExecSqlStatment("select * from Nowhere"), 0);
  EXPECT_EQ(manager_.ExecSqlStatmentNoValueReturn(nullptr), 0);
  EXPECT_EQ(manager_.ExecSqlStatment(nullptr), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_TRUE(FakePlatform::Get().log.empty());
}

TEST_F(MultimediaQueryMgrTest, LeavesTheResultOfAQueryRowAfterRow) {
  ASSERT_EQ(Connect(), 1);
  EXPECT_EQ(manager_.ExecSqlStatment("select 1 as a, NULL as b union all select 'x', 2.5"), 1);
  EXPECT_EQ(MultimediaQueryMgr::vcol_head, (Texts{"a", "b"}));
  EXPECT_EQ(MultimediaQueryMgr::vdata, (Texts{"1", "", "x", "2.5"}));
  EXPECT_EQ(manager_.nRows, 2);
  EXPECT_EQ(manager_.nColumns, 2);
  EXPECT_EQ(manager_.nLastResult, SQLITE_OK);
}

TEST_F(MultimediaQueryMgrTest, LeavesNothingOfAQueryWithoutRowsOrThatFails) {
  ASSERT_EQ(Connect(), 1);
  manager_.ExecSqlStatment("select 1");
  EXPECT_EQ(manager_.ExecSqlStatment("select * from ObjectTable"), 1);
  EXPECT_TRUE(MultimediaQueryMgr::vdata.empty());
  EXPECT_TRUE(MultimediaQueryMgr::vcol_head.empty());
  EXPECT_EQ(manager_.nRows, 0);
  manager_.ExecSqlStatment("select 1");
  EXPECT_EQ(manager_.ExecSqlStatment("select * from Nowhere"), 0);
  EXPECT_EQ(manager_.nLastResult, SQLITE_ERROR);
  EXPECT_TRUE(MultimediaQueryMgr::vdata.empty());
  EXPECT_TRUE(MultimediaQueryMgr::vcol_head.empty());
}

TEST_F(MultimediaQueryMgrTest, KeepsItsResultApartFromTheDatabaseManagers) {
  ASSERT_EQ(Connect(), 1);
  database_->ExecSqlStatment("select 'manager'");
  manager_.ExecSqlStatment("select 'reader'");
  EXPECT_EQ(DataBaseMgr::vdata, (Texts{"manager"}));
  EXPECT_EQ(MultimediaQueryMgr::vdata, (Texts{"reader"}));
}

TEST_F(MultimediaQueryMgrTest, SeesWhatTheDatabaseManagerWrites) {
  ASSERT_EQ(Connect(), 1);
  database_.Run("insert into ObjectTable (class, date, parentID, FullPath) values (1,'','','p')");
  manager_.ExecSqlStatment("select FullPath from ObjectTable where FullPath=\"p\"");
  EXPECT_EQ(MultimediaQueryMgr::vdata, (Texts{"p"}));
}

TEST_F(MultimediaQueryMgrTest, OpensATransactionByItsOddName) {
  ASSERT_EQ(Connect(), 1);
  EXPECT_NE(manager_.GetAutoCommit(), 0);
  EXPECT_EQ(manager_.SetAutoCommit(), 1);
  EXPECT_EQ(manager_.GetAutoCommit(), 0);
  EXPECT_EQ(manager_.SetAutoCommit(), 0);
  EXPECT_EQ(manager_.ExecSqlStatmentNoValueReturn("commit"), 1);
  EXPECT_NE(manager_.GetAutoCommit(), 0);
}

}  // namespace

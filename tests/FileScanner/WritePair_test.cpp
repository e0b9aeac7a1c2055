// The two rows of one item outside a scan: both statements run, and they stay or go together.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DirectoryScanner.h"
#include "FileScanner/ImageMetaData.h"
#include "FileScanner/MediaMetaData.h"
#include "support/FakePlatform.h"
#include "support/JpegBuilder.h"
#include "support/RecordBuilder.h"
#include "support/ScannerFixture.h"
#include "support/TestDatabase.h"

namespace {

using orx_test::FakePlatform;
using orx_test::LogLine;
using orx_test::MakeImageAt;
using orx_test::ScannerTest;
using orx_test::TestDatabase;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

std::vector<std::string> Errors() {
  std::vector<std::string> errors;
  for (const LogLine& line : FakePlatform::Get().log)
    if (line.priority == 6) errors.push_back(line.message);
  return errors;
}

class WritePairTest : public testing::Test {
 protected:
  WritePairTest() {
    MediaMetaData* first = picture_.get();
    manager()->InsertMetaData(first);
    FakePlatform::Get().log.clear();
  }
  static DataBaseMgr* manager() { return DataBaseMgr::GetInstance(); }
  static sqlite3* connection() { return *manager()->getPpDataBase(); }
  std::string Rows() const {
    return database_.Cell(
        "select (select count(*) from ObjectTable) || ' objects, ' || "
        "(select count(*) from ImageTable) || ' pictures'");
  }
  // The statements that SQLite was given, by their first word and table.
  std::vector<std::string>& Trace() {
    sqlite3_trace_v2(
        connection(), SQLITE_TRACE_STMT,
        [](unsigned, void* to, void* statement, void*) {
          const std::string sql = sqlite3_sql(static_cast<sqlite3_stmt*>(statement));
          static_cast<std::vector<std::string>*>(to)->push_back(sql.substr(0, 22));
          return 0;
        },
        &trace_);
    return trace_;
  }

  TestDatabase database_;
  std::unique_ptr<ImageMetaData> picture_ = MakeImageAt("/card/first.JPG");
  std::vector<std::string> trace_;
};

TEST_F(WritePairTest, IsOneTransactionWhenItIsRemoved) {
  Trace();
  EXPECT_EQ(manager()->RemoveIdFromTables("1", 1), 1);
  EXPECT_THAT(trace_,
              ElementsAre("BEGIN;", "delete from ImageTable", "delete from ObjectTabl", "COMMIT;"));
  EXPECT_EQ(Rows(), "0 objects, 0 pictures");
}

// A hook that stops one statement when it begins; SQLite ends the transaction.
void InterruptAt(sqlite3* connection, const std::string& start) {
  static std::string wanted;
  static bool strikes;
  wanted = start;
  strikes = false;
  sqlite3_trace_v2(
      connection, SQLITE_TRACE_STMT,
      [](unsigned, void*, void* statement, void*) {
        const std::string sql = sqlite3_sql(static_cast<sqlite3_stmt*>(statement));
        strikes = sql.compare(0, wanted.size(), wanted) == 0;
        return 0;
      },
      nullptr);
  sqlite3_progress_handler(
      connection, 1, [](void*) { return strikes ? 1 : 0; }, nullptr);
}

TEST_F(WritePairTest, RunsItsSecondDeleteWhenTheFirstIsInterrupted) {
  InterruptAt(connection(), "delete from ImageTable");
  EXPECT_EQ(manager()->RemoveIdFromTables("1", 1), 0);
  EXPECT_THAT(Errors(), ElementsAre(HasSubstr("query : delete from ImageTable where id=1\n\texec "
                                              "failed [9]\n\terrmsg : [interrupted]")));
  EXPECT_EQ(Rows(), "1 objects, 1 pictures");
}

TEST_F(WritePairTest, TakesItsFirstDeleteBackWhenTheSecondFails) {
  InterruptAt(connection(), "delete from ObjectTable");
  EXPECT_EQ(manager()->RemoveIdFromTables("1", 1), 0);
  EXPECT_THAT(Errors(), ElementsAre(HasSubstr("query : delete from ObjectTable where id=1")));
  EXPECT_EQ(Rows(), "1 objects, 1 pictures");
}

TEST_F(WritePairTest, KeepsWhatIsLeftWhenSqliteRefusesItsFirstDelete) {
  database_.Run("drop table ImageTable");
  EXPECT_EQ(manager()->RemoveIdFromTables("1", 1), 1);
  EXPECT_THAT(Errors(), ElementsAre(HasSubstr("no such table: ImageTable")));
  EXPECT_EQ(database_.Cell("select count(*) from ObjectTable"), "0");
}

TEST_F(WritePairTest, StaysInTheTransactionOfTheHost) {
  database_.Run("begin");
  Trace();
  EXPECT_EQ(manager()->RemoveIdFromTables("1", 1), 1);
  EXPECT_THAT(trace_, ElementsAre("delete from ImageTable", "delete from ObjectTabl"));
  sqlite3_trace_v2(connection(), 0, nullptr, nullptr);
  database_.Run("rollback");
  EXPECT_EQ(Rows(), "1 objects, 1 pictures");
}

// ---- inserts -----------------------------------------------------------------------------------

void RefuseCommits(sqlite3* connection, bool refuse) {
  sqlite3_commit_hook(connection, refuse ? +[](void*) { return 1; } : nullptr, nullptr);
}

std::vector<std::string> Failures() {
  std::vector<std::string> failures;
  for (const std::string& message : FakePlatform::Get().Messages())
    if (message.find("nsertion ") != std::string::npos) failures.push_back(message);
  return failures;
}

TEST_F(WritePairTest, LeavesTheRecordNoIdWhenItsCommitFails) {
  for (void (DataBaseMgr::*insert)(MediaMetaData*) :
       {&DataBaseMgr::InsertMetaData, &DataBaseMgr::InsertMetaData2}) {
    FakePlatform::Get().log.clear();
    const auto picture = MakeImageAt("/card/second.JPG");
    picture->SetTitle("second");
    RefuseCommits(connection(), true);
    (manager()->*insert)(picture.get());
    RefuseCommits(connection(), false);
    EXPECT_EQ(picture->GetUniqueID(), nullptr);
    EXPECT_THAT(Errors(), ElementsAre(HasSubstr("query : COMMIT;\n\texec failed [19]")));
    EXPECT_THAT(Failures(), ElementsAre(StartsWith("[DataBaseMgr::InsertPhotoMetaData] Media file "
                                                   "[second] insertion ")));
    EXPECT_EQ(Rows(), "1 objects, 1 pictures");
  }
}

TEST_F(WritePairTest, GivesTheNextRecordAnIdOfItsOwnAfterAFailedCommit) {
  const auto second = MakeImageAt("/card/second.JPG"), third = MakeImageAt("/card/third.JPG");
  RefuseCommits(connection(), true);
  manager()->InsertMetaData(second.get());
  RefuseCommits(connection(), false);
  manager()->InsertMetaData(third.get());
  ASSERT_NE(third->GetUniqueID(), nullptr);
  manager()->InsertMetaData(second.get());
  ASSERT_NE(second->GetUniqueID(), nullptr);
  EXPECT_STRNE(second->GetUniqueID(), third->GetUniqueID());
  EXPECT_THAT(database_.Select("select o.FullPath from ObjectTable o join ImageTable i on o.id = "
                               "i.id and o.FullPath = i.FullPath order by o.id"),
              SizeIs(3));
}

TEST_F(WritePairTest, LeavesARecordTheIdThatItBrought) {
  const auto picture = MakeImageAt("/card/second.JPG");
  picture->SetUniqueID("77");
  RefuseCommits(connection(), true);
  manager()->InsertMetaData(picture.get());
  RefuseCommits(connection(), false);
  EXPECT_STREQ(picture->GetUniqueID(), "77");
  EXPECT_EQ(Rows(), "1 objects, 1 pictures");
}

TEST_F(WritePairTest, NamesARecordOnceWhoseStatementFailed) {
  for (const char* statement : {"insert into ObjectTable", "insert into ImageTable"}) {
    FakePlatform::Get().log.clear();
    const auto picture = MakeImageAt("/card/second.JPG");
    picture->SetTitle("second");
    InterruptAt(connection(), statement);
    manager()->InsertMetaData(picture.get());
    InterruptAt(connection(), "none");
    EXPECT_EQ(picture->GetUniqueID(), nullptr);
    EXPECT_THAT(Failures(), ElementsAre(HasSubstr("Media file [second] insertion failed")));
    EXPECT_EQ(Rows(), "1 objects, 1 pictures");
  }
}

TEST_F(WritePairTest, LeavesNoRowWithoutAnIdWhenTheIdCannotBeAskedFor) {
  const auto picture = MakeImageAt("/card/second.JPG");
  InterruptAt(connection(), "select id from ObjectTable where FullPath");
  manager()->InsertMetaData(picture.get());
  EXPECT_EQ(picture->GetUniqueID(), nullptr);
  EXPECT_EQ(Rows(), "1 objects, 1 pictures");
}

// ---- the registration of one file --------------------------------------------------------------

class RegisteredFileTest : public ScannerTest {};

TEST_F(RegisteredFileTest, AnswersItsTypeAlsoWhenItsRowsCouldNotBeKept) {
  const std::string picture = Write("a.JPG", orx_test::MakeJpeg());
  Open();
  RefuseCommits(*DataBaseMgr::GetInstance()->getPpDataBase(), true);
  EXPECT_EQ(scanner()->ParseAndRegisterFile(db_.c_str(), picture.c_str(), nullptr), 1);
  EXPECT_THAT(Select("select * from ObjectTable"), IsEmpty());
  EXPECT_THAT(Failures(), ElementsAre(HasSubstr("Media file [a] insertion failed")));
}

// ---- damage ------------------------------------------------------------------------------------

class DamagedPairTest : public ScannerTest {
 protected:
  DamagedPairTest() {
    for (int i = 0; i < 5; ++i) Write("IMGA000" + std::to_string(i) + ".JPG", orx_test::MakeJpeg());
    Scan();
    FakePlatform::Get().log.clear();
  }
  void Damage(const std::string& table) const {
    const std::string root =
        Cell("select rootpage from sqlite_master where name = '" + table + "'");
    std::fstream file(db_, std::ios::binary | std::ios::in | std::ios::out);
    file.seekp((std::stol(root) - 1) * 4096);
    file << std::string(4096, '\xFF');
  }
};

TEST_F(DamagedPairTest, LosesItsObjectWhenThePictureIsDamaged) {
  Damage("ImageTable");
  Open();
  EXPECT_EQ(DataBaseMgr::GetInstance()->RemoveIdFromTables("3", 1), 1);
  EXPECT_THAT(Errors(), ElementsAre(HasSubstr("query : delete from ImageTable where id=3\n\texec "
                                              "failed [11]")));
  EXPECT_EQ(Cell("select count(*) from ObjectTable"), "5");
}

TEST_F(DamagedPairTest, LosesItsPictureWhenTheObjectIsDamaged) {
  Damage("ObjectTable");
  Open();
  EXPECT_EQ(DataBaseMgr::GetInstance()->RemoveIdFromTables("3", 1), 0);
  EXPECT_THAT(Errors(), ElementsAre(HasSubstr("query : delete from ObjectTable where id=3\n\texec "
                                              "failed [11]")));
  EXPECT_EQ(Cell("select count(*) from ImageTable"), "4");
}

TEST_F(DamagedPairTest, IsInsertedWholeOrNotAtAll) {
  Damage("ImageTable");
  Open();
  const auto picture = MakeImageAt("/card/second.JPG");
  picture->SetTitle("second");
  DataBaseMgr::GetInstance()->InsertMetaData(picture.get());
  EXPECT_EQ(picture->GetUniqueID(), nullptr);
  EXPECT_THAT(Failures(), ElementsAre(HasSubstr("Media file [second] insertion failed")));
  EXPECT_EQ(Cell("select count(*) from ObjectTable"), "6");
}

}  // namespace

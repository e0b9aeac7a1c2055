// The statements of scans of every kind, and what becomes of a scan whose writes fail.
#include <gmock/gmock.h>
#include <sqlite3.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DcfFileInfoVector.h"
#include "FileScanner/DirectoryScanner.h"
#include "robustness/Card.h"
#include "robustness/Injection.h"
#include "robustness/Observed.h"
#include "support/CardMount.h"
#include "support/JpegBuilder.h"

namespace orx_test {
namespace {

using testing::AnyOf;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using Statements = std::vector<std::string>;

class ScanTransactionTest : public CardTest, public testing::WithParamInterface<ScanKind> {
 protected:
  ScanTransactionTest() : CardTest(GetParam()) {}
  void SetUp() override {
    if (card_.empty()) GTEST_SKIP() << CardMount::Problem();
  }

  // The platform's list follows the card.
  int ScanAnew(int status = 0) const {
    ForgetList();
    return ScanAgain(status);
  }
  int ScanAgain(int status = 0) const {
    const auto onLine = QuietPlatform::Get().onLine;
    ResetPlatform().onLine = onLine;
    return Scan(status);
  }
  // The statements of one scan: "CARD" for its folder, the values of inserts left out.
  Statements StatementsOfScan() const {
    const ObservedStatements observed(db_);
    ScanAnew();
    Statements statements;
    for (std::string text : observed.all()) {
      if (text.compare(0, 15, "with recursive ") == 0) text = "(count of orphans)";
      if (text.compare(0, 12, "select case ") == 0) text = "(sizes)";
      text = text.substr(0, text.find(" values ("));
      if (text.compare(0, 11, "insert into") == 0) text = text.substr(0, text.find(" ("));
      for (size_t at = 0; (at = text.find(card_, at)) != std::string::npos;)
        text.replace(at, card_.size(), "CARD");
      statements.push_back(text);
    }
    return statements;
  }
  std::string IdOf(const std::string& name) const {
    DataBaseMgr* database = DataBaseMgr::GetInstance();
    database->OpenDB(db_.c_str());
    const std::unique_ptr<char, void (*)(void*)> id(
        database->GetUniqueIdForPath(InCard(name).c_str()), free);
    DataBaseMgr::DestroyInstance();
    return id != nullptr ? id.get() : "";
  }
  bool hasMediaTables() const { return kind_ == ScanKind::kFolder || kind_ == ScanKind::kFull; }
};

const char kCount[] = "(count of orphans)";
const char kRootId[] = "select id from  ObjectTable where FullPath='CARD'";
const char kRootRow[] = "select * from ObjectTable where FullPath='CARD'";
const char kFolderId[] = "select id from  ObjectTable where FullPath='CARD/100PHOTO'";
const char kFolderRow[] = "select * from ObjectTable where FullPath='CARD/100PHOTO'";
const char kInsert[] = "insert into ObjectTable";

TEST_P(ScanTransactionTest, RunsNothingButItsStatementsInAFirstScan) {
  Write("100PHOTO/IMGA0001.JPG", MakeJpeg());
  Statements expected = {"BEGIN;", kRootId, kRootRow,
                         kRootId,  kInsert, "select id from ObjectTable where FullPath = 'CARD'"};
  if (kind_ == ScanKind::kFolder)
    expected.emplace_back("select FullPath from ObjectTable where parentID = '1'");
  for (const char* next :
       {kFolderRow, kInsert, "select id from ObjectTable where FullPath = 'CARD/100PHOTO'",
        "select FullPath from ObjectTable where parentID = '2'", kInsert,
        "select id from ObjectTable where FullPath = "
        "'CARD/100PHOTO/IMGA0001.JPG'"})
    expected.emplace_back(next);
  if (hasMediaTables()) expected.emplace_back("insert into ImageTable");
  expected.emplace_back("COMMIT;");
  EXPECT_THAT(StatementsOfScan(), ElementsAreArray(expected));
}

TEST_P(ScanTransactionTest, RunsNothingButItsStatementsAndOneCountInALaterScan) {
  Write("100PHOTO/IMGA0002.JPG", MakeJpeg());
  // A list without files would have no folders either; in a walk the disk's order would count.
  if (kind_ != ScanKind::kFolder) Write("100PHOTO/IMGA0001.JPG", MakeJpeg());
  ScanAnew();
  std::filesystem::remove(InCard("100PHOTO/IMGA0002.JPG"));
  const std::string gone = IdOf("100PHOTO/IMGA0002.JPG");
  Statements expected = {"BEGIN;", kCount, kRootId,
                         "select class, FullPath, id from ObjectTable where parentID = '1'",
                         kFolderId};
  switch (kind_) {
    case ScanKind::kFolder:
      expected.emplace_back("select class, FullPath, id from ObjectTable where parentID = '2'");
      expected.emplace_back("(sizes)");
      break;
    case ScanKind::kFull:
      expected.emplace_back("select id, size, FullPath, SortIndex from ImageTable");
      break;
    default:
      expected.emplace_back(
          "select id, size, FullPath, SortIndex from ObjectTable where class != 0");
  }
  if (hasMediaTables()) expected.push_back("delete from ImageTable where id=" + gone);
  expected.push_back("delete from ObjectTable where id=" + gone);
  if (kind_ == ScanKind::kFull)
    expected.emplace_back("select id, size, FullPath, SortIndex from VideoTable");
  for (const char* next : {kRootRow, kRootId}) expected.emplace_back(next);
  if (kind_ == ScanKind::kFolder)
    expected.emplace_back("select FullPath from ObjectTable where parentID = '1'");
  for (const char* next :
       {kFolderRow, kFolderId, "select FullPath from ObjectTable where parentID = '2'", "COMMIT;"})
    expected.emplace_back(next);
  EXPECT_THAT(StatementsOfScan(), ElementsAreArray(expected));
}

TEST_P(ScanTransactionTest, TakesNothingBackWhenItIsCancelled) {
  WriteSmallCard();
  ScanAnew();
  const std::string bytes = DatabaseBytes();
  ChangeSmallCard();
  const bool cancelsDatabase[] = {false, true};
  for (int line = 1, lines = 1; line <= lines; ++line)
    for (const bool database : cancelsDatabase) {
      SCOPED_TRACE("line " + std::to_string(line));
      RestoreDatabase(bytes);
      ForgetList();
      ResetPlatform();
      ObservedLog log;
      const ObservedStatements statements(db_);
      int seen = 0;
      log.At("", [&] {
        if (++seen != line) return;
        DirectoryScanner::GetInstance()->CancelScanDirectory();
        if (database) DataBaseMgr::GetInstance()->CancelInvalidateAllItems();
      });
      Scan();
      lines = std::max(lines, seen);
      if (statements.all().empty()) continue;  // before it began
      EXPECT_EQ(statements.Count("SAVEPOINT") + statements.Count("RELEASE"), 0);
      EXPECT_EQ(statements.Count("ROLLBACK"), 0);
      EXPECT_EQ(statements.all().front(), "BEGIN;");
      EXPECT_EQ(statements.all().back(), "COMMIT;");
      EXPECT_THAT(log.Errors(), IsEmpty());
    }
}

// At every call that SQLite makes to its files: a scan is there whole, or it says that it is not.
TEST_P(ScanTransactionTest, IsUndoneAndSaysSoOnceWhenTheDiskFails) {
  WriteSmallCard();
  ScanAnew();
  const std::string bytes = DatabaseBytes();
  const std::vector<std::string> before = Contents();
  ChangeSmallCard();
  struct {
    Behaviour behaviour;
    int error;
  } const disks[] = {{Behaviour::kFailOnce, EIO}, {Behaviour::kFailFromThere, ENOSPC}};
  int undone = 0;
  for (const auto& disk : disks) {
    bool struck = true;
    for (long call = 1; struck; ++call) {
      SCOPED_TRACE("call " + std::to_string(call));
      RestoreDatabase(bytes);
      const ObservedLog log;
      Injection::Arm(Layer::kDisk, call, disk.behaviour, disk.error);
      const int status = ScanAnew(7);
      struck = Injection::Disarm();
      const int said = log.Count("what was written is undone, [");
      EXPECT_LE(said, 1);
      EXPECT_EQ(log.Count("ancel") + log.Count("reak in"), 0);
      if (said == 0) continue;
      ++undone;
      EXPECT_EQ(status, 7);
      EXPECT_EQ(Difference(Contents(), before), "");
      EXPECT_THAT(log.Errors(),
                  Contains(AnyOf(HasSubstr("undone, [disk I/O error]"),
                                 HasSubstr("undone, [database or disk is full]"),
                                 HasSubstr("undone, [unable to open database file]"))));
      EXPECT_THAT(log.Errors(),
                  Contains(HasSubstr("[DataBaseMgr::ExecSqlStatmentNoValueReturn]\n\tquery : ")));
    }
  }
  EXPECT_GT(undone, 10);
}

TEST_P(ScanTransactionTest, IsUndoneWhenTheHostsHookRefusesTheCommit) {
  WriteSmallCard();
  ScanAnew();
  const std::vector<std::string> before = Contents();
  ChangeSmallCard();
  const ObservedLog log;
  DataBaseMgr* database = DataBaseMgr::GetInstance();
  ASSERT_EQ(database->OpenDB(db_.c_str()), 1);
  sqlite3_commit_hook(
      *database->getPpDataBase(), [](void*) { return 1; }, nullptr);
  EXPECT_EQ(ScanAnew(7), 7);
  EXPECT_EQ(Difference(Contents(), before), "");
  ASSERT_THAT(log.Errors(), SizeIs(2));
  EXPECT_THAT(log.Errors()[0],
              HasSubstr("query : COMMIT;\n\texec failed [19]\n\terrmsg : [constr"));
  EXPECT_THAT(log.Errors()[1], HasSubstr("what was written is undone, [constraint failed]"));
}

TEST_P(ScanTransactionTest, IsUndoneWhenItCannotBegin) {
  WriteSmallCard();
  ScanAnew();
  const std::vector<std::string> before = Contents();
  ChangeSmallCard();
  const ObservedLog log;
  DataBaseMgr* database = DataBaseMgr::GetInstance();
  ASSERT_EQ(database->OpenDB(db_.c_str()), 1);
  // Memory fails at the very statement.
  sqlite3_set_authorizer(
      *database->getPpDataBase(),
      [](void*, int action, const char* operation, const char*, const char*, const char*) {
        if (action == SQLITE_TRANSACTION && std::string(operation) == "BEGIN")
          Injection::Arm(Layer::kMemory, 1, Behaviour::kFailOnce, ENOMEM);
        return SQLITE_OK;
      },
      nullptr);
  EXPECT_EQ(ScanAnew(7), 7);
  EXPECT_TRUE(Injection::Disarm());
  EXPECT_EQ(Difference(Contents(), before), "");
  EXPECT_EQ(log.Count("query : BEGIN;"), 1);
  EXPECT_EQ(log.Count("what was written is undone, [out of memory]"), 1);
}

INSTANTIATE_TEST_SUITE_P(Scans, ScanTransactionTest, testing::ValuesIn(kScanKinds),
                         [](const auto& test) { return std::string(NameOf(test.param)); });

}  // namespace
}  // namespace orx_test

// Scans and operations beside other connections that read and write: threads and processes.
#include <gmock/gmock.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DirectoryScanner.h"
#include "FileScanner/MultimediaQueryMgr.h"
#include "robustness/Card.h"
#include "robustness/Observed.h"
#include "support/CardMount.h"
#include "support/JpegBuilder.h"

namespace orx_test {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr milliseconds kASecond{1000};

// What another connection does to be in the way.
enum class Holder { kReader, kWriter, kExclusiveWriter };

void Hold(OtherConnection* other, Holder holder) {
  if (holder == Holder::kReader) return other->BeginReading();
  EXPECT_EQ(other->Run(holder == Holder::kWriter ? "BEGIN IMMEDIATE" : "BEGIN EXCLUSIVE"),
            SQLITE_OK);
}

void LetGo(OtherConnection* other, Holder holder) {
  if (holder == Holder::kReader) return other->EndReading();
  EXPECT_EQ(other->Run("COMMIT"), SQLITE_OK);
}

// In the way from a thread of its own, for a time or until it is told to let go.
class InTheWay {
 public:
  InTheWay(const std::string& db, Holder holder, milliseconds time = milliseconds(60000)) {
    thread_ = std::thread([this, db, holder, time] {
      OtherConnection other(db);
      Hold(&other, holder);
      held_ = true;
      const auto end = std::chrono::steady_clock::now() + time;
      while (!over_ && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(milliseconds(1));
      LetGo(&other, holder);
    });
    while (!held_) std::this_thread::yield();
  }
  ~InTheWay() {
    over_ = true;
    thread_.join();
  }
  InTheWay(const InTheWay&) = delete;
  InTheWay& operator=(const InTheWay&) = delete;

 private:
  std::atomic<bool> held_{false};
  std::atomic<bool> over_{false};
  std::thread thread_;
};

class LockWaitingTest : public CardTest, public testing::WithParamInterface<ScanKind> {
 protected:
  LockWaitingTest() : CardTest(GetParam()) {}
  void SetUp() override {
    if (card_.empty()) GTEST_SKIP() << CardMount::Problem();
  }
  void MakeDatabase() const {
    ResetPlatform();
    EXPECT_EQ(DataBaseMgr::GetInstance()->OpenDB(db_.c_str()), 1);
    DataBaseMgr::DestroyInstance();
  }
  int ScanAnew(int status = 0) const {
    const auto onLine = QuietPlatform::Get().onLine;
    ForgetList();
    ResetPlatform().onLine = onLine;
    return Scan(status);
  }
  // What undisturbed scans leave: a first one, and one after the card has changed.
  void ExpectToWaitFor(Holder holder, milliseconds time) {
    for (const bool first : {true, false}) {
      if (first) {
        WriteSmallCard();
      } else {
        ChangeSmallCard();
      }
      const std::string bytes = DatabaseBytes();
      ScanAnew();
      const std::vector<std::string> expected = Contents();
      RestoreDatabase(bytes);
      if (first) MakeDatabase();
      const ObservedLog log;
      int status = 0;
      const double seconds = [&] {
        const InTheWay inTheWay(db_, holder, time);
        return Seconds([&] { status = ScanAnew(); });
      }();
      EXPECT_EQ(Difference(Contents(), expected), "");
      EXPECT_EQ(status, 1 - static_cast<int>(!first && kind_ == ScanKind::kFolder));
      EXPECT_THAT(log.Errors(), IsEmpty());
      EXPECT_GT(seconds, static_cast<double>(time.count()) / 2000);  // it was in the way
    }
  }
};

TEST_P(LockWaitingTest, LetsAReaderOfASecondFinish) {
  ExpectToWaitFor(Holder::kReader, kind_ == ScanKind::kFolder ? kASecond : kASecond / 4);
}

TEST_P(LockWaitingTest, LetsAWriterOfASecondFinish) {
  ExpectToWaitFor(Holder::kWriter, kind_ == ScanKind::kFolder ? kASecond : kASecond / 4);
}

TEST_P(LockWaitingTest, LetsAnExclusiveWriterOfASecondFinish) {
  ExpectToWaitFor(Holder::kExclusiveWriter, kind_ == ScanKind::kFolder ? kASecond : kASecond / 4);
}

TEST_P(LockWaitingTest, LetsAnotherProcessFinish) {
  WriteSmallCard();
  ScanAnew();
  ChangeSmallCard();
  const std::string bytes = DatabaseBytes();
  ScanAnew();
  const std::vector<std::string> expected = Contents();
  RestoreDatabase(bytes);
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  const pid_t child = fork();
  if (child == 0) {
    OtherConnection other(db_);
    other.BeginReading();
    if (write(ready[1], "r", 1) != 1) _exit(1);
    usleep(300000);
    other.EndReading();
    _exit(0);
  }
  char byte = 0;
  ASSERT_EQ(read(ready[0], &byte, 1), 1);
  const ObservedLog log;
  ScanAnew();
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(Difference(Contents(), expected), "");
  EXPECT_THAT(log.Errors(), IsEmpty());
  close(ready[0]);
  close(ready[1]);
}

TEST_P(LockWaitingTest, EndsAtEitherCancelAndUndoesTheScan) {
  WriteSmallCard();
  ScanAnew();
  const std::vector<std::string> before = Contents();
  ChangeSmallCard();
  for (const Holder holder : {Holder::kReader, Holder::kWriter})
    for (const bool ofDatabase : {false, true}) {
      const ObservedLog log;
      const InTheWay inTheWay(db_, holder);
      DataBaseMgr* database = DataBaseMgr::GetInstance();
      DirectoryScanner* scanner = DirectoryScanner::GetInstance();
      const After cancel(milliseconds(200), [=] {
        if (ofDatabase) {
          database->CancelInvalidateAllItems();
        } else {
          scanner->CancelScanDirectory();
        }
      });
      int status = 0;
      EXPECT_LT(Seconds([&] { status = ScanAnew(7); }), 1.5);
      EXPECT_EQ(status, 7);
      EXPECT_EQ(Difference(Contents(), before), "");
      EXPECT_EQ(log.Count("what was written is undone, [database is locked]"), 1);
      EXPECT_EQ(log.Count("break in") + log.Count("Break in") + log.Count("CancelFlag"), 0);
    }
}

// The other one has its own write under way and cannot finish it before the scan stops reading; the
// scan cannot write before the other one has finished.
TEST_P(LockWaitingTest, GivesUpWhatItHasReadSoThatAWriterCanFinish) {
  for (const bool wal : {false, true}) {
    SCOPED_TRACE(wal ? "with a log" : "with a journal");
    RestoreDatabase("");
    WriteSmallCard();
    ScanAnew();
    const std::vector<std::string> expected = Contents();
    RestoreDatabase("");
    MakeDatabase();
    OtherConnection other(db_);
    other.Run(wal ? "pragma journal_mode=wal" : "pragma journal_mode=delete");
    other.Run("create table Notes (note text); pragma busy_timeout=4000;");
    std::thread writer;
    int code = -1;
    ObservedLog log;
    log.At("Start Scanning Directories", [&] {  // behind the purge, which has read
      if (writer.joinable()) return;
      EXPECT_EQ(other.Run("BEGIN IMMEDIATE; insert into Notes values ('a');"), SQLITE_OK);
      writer = std::thread([&] { code = other.Run("COMMIT"); });
      std::this_thread::sleep_for(milliseconds(100));
    });
    int status = 0;
    EXPECT_LT(Seconds([&] { status = ScanAnew(); }), 3);
    ASSERT_TRUE(writer.joinable());
    writer.join();
    EXPECT_EQ(code, SQLITE_OK);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(Difference(Contents(), expected), "");
    EXPECT_THAT(log.Errors(), IsEmpty());
  }
}

INSTANTIATE_TEST_SUITE_P(Scans, LockWaitingTest, testing::ValuesIn(kScanKinds),
                         [](const auto& test) { return std::string(NameOf(test.param)); });

// A scan of a folder beside somebody who never lets go.
class EndlessLockTest : public CardTest, public testing::WithParamInterface<Holder> {};

TEST_P(EndlessLockTest, UndoesAScanAfterFiveSeconds) {
  if (GetParam() == Holder::kWriter && !IsSoak()) GTEST_SKIP() << "left to the long version";
  WriteSmallCard();
  Scan();
  const std::vector<std::string> before = Contents();
  ChangeSmallCard();
  Write("IMGA0007.JPG", MakeJpeg());  // sets the status
  const ObservedLog log;
  int status = 0;
  const double seconds = [&] {
    const InTheWay inTheWay(db_, GetParam());
    return Seconds([&] { status = Scan(7); });
  }();
  EXPECT_GT(seconds, 4);
  EXPECT_LT(seconds, 9);
  EXPECT_EQ(status, 7);
  EXPECT_EQ(Difference(Contents(), before), "");
  ASSERT_THAT(log.Errors(), SizeIs(2));
  EXPECT_THAT(log.Errors()[0],
              HasSubstr("[DataBaseMgr::ExecSqlStatmentNoValueReturn]\n\tquery : "));
  EXPECT_THAT(log.Errors()[1], HasSubstr("what was written is undone, [database is locked]"));
  EXPECT_EQ(log.Count("break in") + log.Count("CancelFlag"), 0);
}

INSTANTIATE_TEST_SUITE_P(Locks, EndlessLockTest, testing::Values(Holder::kReader, Holder::kWriter),
                         [](const auto& test) {
                           return test.param == Holder::kReader ? "Reader" : "Writer";
                         });

// Outside scans.
class LockedOperationTest : public CardTest {
 protected:
  LockedOperationTest() {
    WriteSmallCard();
    Scan();
  }
};

TEST_F(LockedOperationTest, LeavesAScanNothingToDoBesideAnExclusiveWriterThatNeverLetsGo) {
  if (!IsSoak()) GTEST_SKIP() << "left to the long version";
  const std::vector<std::string> before = Contents();
  ChangeSmallCard();
  const ObservedLog log;
  int status = 0;
  const double seconds = [&] {
    const InTheWay inTheWay(db_, Holder::kExclusiveWriter);
    return Seconds([&] { status = Scan(7); });
  }();
  EXPECT_GT(seconds, 4);
  EXPECT_LT(seconds, 9);
  EXPECT_EQ(status, 7);
  EXPECT_EQ(Difference(Contents(), before), "");
  EXPECT_GE(log.Count("[database is locked]"), 1);
}

TEST_F(LockedOperationTest, WaitsOnceForTheTwoRowsOfAnItem) {
  const std::vector<std::string> before = Contents();
  DataBaseMgr* database = DataBaseMgr::GetInstance();
  ASSERT_EQ(database->OpenDB(db_.c_str()), 1);
  const ObservedLog log;
  const double seconds = [&] {
    const InTheWay inTheWay(db_, Holder::kWriter);
    return Seconds([&] { EXPECT_EQ(database->RemoveIdFromTables("3", 1), 0); });
  }();
  EXPECT_GT(seconds, 4);
  EXPECT_LT(seconds, 9);
  ASSERT_THAT(log.Errors(), SizeIs(2));
  EXPECT_THAT(log.Errors()[0], HasSubstr("query : delete from ImageTable where id=3\n\texec failed "
                                         "[5]\n\terrmsg : [database is locked]"));
  EXPECT_THAT(log.Errors()[1], HasSubstr("query : delete from ObjectTable where id=3\n\texec "
                                         "failed [5]\n\terrmsg : [database is locked]"));
  EXPECT_EQ(Difference(Contents(), before), "");
  EXPECT_EQ(database->RemoveIdFromTables("3", 1), 1);  // when nobody is in the way any more
  EXPECT_NE(Difference(Contents(), before), "");
}

TEST_F(LockedOperationTest, WaitsAnewWhenSomethingHasWorkedInBetween) {
  DataBaseMgr* database = DataBaseMgr::GetInstance();
  ASSERT_EQ(database->OpenDB(db_.c_str()), 1);
  for (int i = 0; i < 2; ++i) {
    const InTheWay inTheWay(db_, Holder::kWriter, milliseconds(200));
    EXPECT_EQ(database->RemoveIdFromTables("3", 1), 1);
  }
}

TEST_F(LockedOperationTest, MakesTheQueryManagerWait) {
  MultimediaQueryMgr query;
  ASSERT_EQ(query.ConnectDB(db_.c_str()), 1);
  const InTheWay inTheWay(db_, Holder::kExclusiveWriter, milliseconds(500));
  EXPECT_EQ(query.ExecSqlStatment("select id from ObjectTable"), 1);
  EXPECT_GT(query.nRows, 5);
  query.DisconnectDB();
}

TEST_F(LockedOperationTest, MakesTheQueryManagerWaitNoLongerThanToACancel) {
  DataBaseMgr* database = DataBaseMgr::GetInstance();
  MultimediaQueryMgr query;
  ASSERT_EQ(query.ConnectDB(db_.c_str()), 1);
  for (const bool ofDatabase : {false, true}) {
    const InTheWay inTheWay(db_, Holder::kExclusiveWriter);
    {
      const After cancel(milliseconds(200), [=] {
        if (ofDatabase) {
          database->CancelInvalidateAllItems();
        } else {
          DirectoryScanner::GetInstance()->CancelScanDirectory();
        }
      });
      EXPECT_LT(Seconds([&] { EXPECT_EQ(query.ExecSqlStatment("select id from ObjectTable"), 0); }),
                1.5);
    }
    EXPECT_EQ(query.nLastResult, SQLITE_BUSY);
    DirectoryScanner::DestroyInstance();
  }
  query.DisconnectDB();
}

TEST_F(LockedOperationTest, WritesWithTheQueryManagerWhenAReaderHasFinished) {
  MultimediaQueryMgr query;
  ASSERT_EQ(query.ConnectDB(db_.c_str()), 1);
  const InTheWay inTheWay(db_, Holder::kReader, milliseconds(300));
  EXPECT_EQ(query.ExecSqlStatmentNoValueReturn("update ObjectTable set Valid = 1"), 1);
  query.DisconnectDB();
}

}  // namespace
}  // namespace orx_test

// A question to the database that fails ends the walk that asked it; the scan goes on, registers
// what is new and nothing twice, and a calm scan leaves what it would have left anyway.
#include <gmock/gmock.h>
#include <sqlite3.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
#include "robustness/Card.h"
#include "robustness/Injection.h"
#include "robustness/Observed.h"
#include "support/CardMount.h"
#include "support/JpegBuilder.h"

namespace orx_test {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

bool BeginsWith(const std::string& text, const std::string& start) {
  return text.compare(0, start.size(), start) == 0;
}

// Lets the n-th question of a scan fail, on the library's connection.
class FailingQuestion {
 public:
  using Kind = void (*)(FailingQuestion* self, sqlite3* connection);

  FailingQuestion(const std::string& db, int number, Kind kind) : number_(number) {
    EXPECT_EQ(DataBaseMgr::GetInstance()->OpenDB(db.c_str()), 1);
    kind(this, *DataBaseMgr::GetInstance()->getPpDataBase());
  }

  // The statement is interrupted while it runs.
  static void Interrupt(FailingQuestion* self, sqlite3* connection) {
    sqlite3_trace_v2(
        connection, SQLITE_TRACE_STMT,
        [](unsigned, void* to, void* statement, void*) {
          static_cast<FailingQuestion*>(to)->Begin(static_cast<sqlite3_stmt*>(statement));
          return 0;
        },
        self);
    sqlite3_progress_handler(
        connection, 1,
        [](void* from) { return static_cast<FailingQuestion*>(from)->struckNow_ ? 1 : 0; }, self);
  }
  // It is not allowed.
  static void Forbid(FailingQuestion* self, sqlite3* connection) {
    sqlite3_set_authorizer(
        connection,
        [](void* from, int action, const char*, const char*, const char*, const char*) {
          auto* question = static_cast<FailingQuestion*>(from);
          if (action != SQLITE_SELECT || ++question->asked_ != question->number_) return SQLITE_OK;
          question->struck_ = true;
          return SQLITE_DENY;
        },
        self);
  }
  // Its first read of the file fails.
  static void BreakRead(FailingQuestion* self, sqlite3* connection) {
    sqlite3_exec(connection, "pragma cache_size=1", nullptr, nullptr, nullptr);
    self->breaksRead_ = true;
    Interrupt(self, connection);
  }

  bool reached() const { return struck_; }             // there was such a question
  bool struck() const { return struck_ && !missed_; }  // and it failed
  const std::string& text() const { return text_; }
  void EndRead() {
    if (breaksRead_ && struck_ && !ended_) missed_ = !Injection::Disarm();
    ended_ = ended_ || struck_;
  }

 private:
  void Begin(sqlite3_stmt* statement) {
    struckNow_ = false;
    EndRead();
    const std::string sql = sqlite3_sql(statement);
    const bool question = BeginsWith(sql, "select") || BeginsWith(sql, "with");
    if (!question || ++asked_ != number_) return;
    text_ = sql;
    struck_ = true;
    if (breaksRead_) {
      Injection::Arm(Layer::kDisk, 1, Behaviour::kFailOnce, EIO);
    } else {
      struckNow_ = true;
    }
  }

  int number_;
  int asked_ = 0;
  bool breaksRead_ = false;
  bool struckNow_ = false;
  bool struck_ = false;
  bool missed_ = false;  // it read nothing from the file
  bool ended_ = false;
  std::string text_;
};

class FailedQueryTest : public CardTest, public testing::WithParamInterface<ScanKind> {
 protected:
  FailedQueryTest() : CardTest(GetParam()) {}
  void SetUp() override {
    if (card_.empty()) GTEST_SKIP() << CardMount::Problem();
    WriteSmallCard();
    ScanAnew();
    before_ = DatabaseBytes();
    ChangeSmallCard();
    Write("101PHOTO/IMGA0003.JPG", MakeJpeg());
    ScanAnew();
    expected_ = Contents();
  }
  int ScanAnew(int status = 0) const {
    const auto onLine = QuietPlatform::Get().onLine;
    ForgetList();
    ResetPlatform().onLine = onLine;
    return Scan(status);
  }
  // The paths of the object table, sorted.
  std::vector<std::string> Paths() const {
    std::vector<std::string> paths;
    const OtherConnection other(db_);
    sqlite3_exec(
        other.get(), "select FullPath from ObjectTable order by FullPath",
        [](void* to, int, char** cells, char**) {
          static_cast<std::vector<std::string>*>(to)->emplace_back(cells[0]);
          return 0;
        },
        &paths, nullptr);
    return paths;
  }
  void LetEveryQuestionFail(FailingQuestion::Kind kind) {
    int failed = 0;
    for (int number = 1;; ++number) {
      RestoreDatabase(before_);
      ObservedLog log;
      FailingQuestion question(db_, number, kind);
      bool walking = false, inPurge = false;
      log.At("Start Scanning Directories", [&] {
        inPurge = inPurge || (!walking && question.reached());
        walking = true;
      });
      ScanAnew();
      question.EndRead();
      SCOPED_TRACE("question " + std::to_string(number) + " " + question.text());
      if (!question.reached()) break;
      if (!question.struck()) continue;
      ++failed;
      const std::vector<std::string> paths = Paths();
      EXPECT_EQ(std::adjacent_find(paths.begin(), paths.end()), paths.end())
          << *std::adjacent_find(paths.begin(), paths.end());
      EXPECT_TRUE(Contents() == expected_ || !log.Errors().empty())
          << Difference(Contents(), expected_);
      if (inPurge) {
        EXPECT_THAT(paths, Contains(InCard("103PHOTO/IMGA0009.JPG")));
        EXPECT_THAT(paths, Contains(InCard("101PHOTO/IMGA0003.JPG")));
      }
      ScanAnew();
      EXPECT_EQ(Difference(Contents(), expected_), "");
      if (HasFailure()) return;
    }
    EXPECT_GT(failed, 3);
  }

  std::string before_;
  std::vector<std::string> expected_;
};

TEST_P(FailedQueryTest, EndsAWalkWhenItIsInterrupted) {
  LetEveryQuestionFail(FailingQuestion::Interrupt);
}

TEST_P(FailedQueryTest, EndsAWalkWhenItIsForbidden) {
  LetEveryQuestionFail(FailingQuestion::Forbid);
}

TEST_P(FailedQueryTest, EndsAWalkWhenTheFileCannotBeRead) {
  LetEveryQuestionFail(FailingQuestion::BreakRead);
}

TEST_P(FailedQueryTest, StoresItsCode) {
  RestoreDatabase(before_);
  ResetPlatform();
  const FailingQuestion question(db_, 1, FailingQuestion::Interrupt);
  DataBaseMgr* database = DataBaseMgr::GetInstance();
  database->InvalidateAllItemsInDB(card_.c_str());
  EXPECT_EQ(database->nLastResult, SQLITE_INTERRUPT);
}

TEST_P(FailedQueryTest, NamesTheFolderWhoseFilesAreLeftToTheNextScan) {
  RestoreDatabase(before_);
  const ObservedLog log;
  DataBaseMgr* database = DataBaseMgr::GetInstance();
  ASSERT_EQ(database->OpenDB(db_.c_str()), 1);
  static bool strikes;
  strikes = false;
  sqlite3_trace_v2(
      *database->getPpDataBase(), SQLITE_TRACE_STMT,
      [](unsigned, void*, void* statement, void*) {
        char* sql = sqlite3_expanded_sql(static_cast<sqlite3_stmt*>(statement));
        strikes = BeginsWith(sql, "select FullPath from ObjectTable where parentID = ");
        sqlite3_free(sql);
        return 0;
      },
      nullptr);
  sqlite3_progress_handler(
      *database->getPpDataBase(), 1, [](void*) { return strikes ? 1 : 0; }, nullptr);
  ScanAnew();
  const std::string folder = kind_ == ScanKind::kFolder ? card_ : InCard("101PHOTO");
  EXPECT_THAT(log.Errors(), Contains(HasSubstr("Error : [" + folder +
                                               "] is left to the next scan, interrupted")));
}

INSTANTIATE_TEST_SUITE_P(Scans, FailedQueryTest, testing::ValuesIn(kScanKinds),
                         [](const auto& test) { return std::string(NameOf(test.param)); });

}  // namespace
}  // namespace orx_test

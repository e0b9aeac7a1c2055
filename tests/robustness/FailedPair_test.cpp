// The two rows of one item outside a scan, when the disk or the memory fails at one of them.
#include <gmock/gmock.h>
#include <sqlite3.h>

#include <cerrno>
#include <string>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
#include "robustness/Card.h"
#include "robustness/Injection.h"
#include "robustness/Observed.h"

namespace orx_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class FailedPairTest : public CardTest, public testing::WithParamInterface<Layer> {
 protected:
  FailedPairTest() {
    WriteSmallCard();
    Scan();
    EXPECT_EQ(manager()->OpenDB(db_.c_str()), 1);
    sqlite3_exec(connection(), "pragma cache_size=1", nullptr, nullptr, nullptr);
  }
  static DataBaseMgr* manager() { return DataBaseMgr::GetInstance(); }
  static sqlite3* connection() { return *manager()->getPpDataBase(); }
  // Keeps the statements and lets the machine fail in the first that begins like `start`.
  void FailAt(const std::string& start) {
    start_ = start;
    sqlite3_trace_v2(
        connection(), SQLITE_TRACE_STMT,
        [](unsigned, void* self, void* statement, void*) {
          static_cast<FailedPairTest*>(self)->Begin(
              sqlite3_sql(static_cast<sqlite3_stmt*>(statement)));
          return 0;
        },
        this);
  }

  std::vector<std::string> statements_;

 private:
  void Begin(const std::string& sql) {
    Injection::Disarm();
    statements_.push_back(sql.substr(0, 23));
    if (start_.empty() || sql.compare(0, start_.size(), start_) != 0) return;
    Injection::Arm(GetParam(), 1, Behaviour::kFailOnce, EIO);
    start_.clear();
  }

  std::string start_;
};

TEST_P(FailedPairTest, RunsItsSecondDeleteWhenTheFirstFails) {
  const std::vector<std::string> before = Contents();
  const ObservedLog log;
  FailAt("delete from ImageTable");
  EXPECT_EQ(manager()->RemoveIdFromTables("3", 1), 0);
  Injection::Disarm();
  EXPECT_THAT(log.Errors(),
              ElementsAre(HasSubstr("query : delete from ImageTable where id=3\n\texec failed [")));
  ASSERT_GE(statements_.size(), 4u);
  EXPECT_EQ(statements_[statements_.size() - 2], "delete from ObjectTable");
  EXPECT_EQ(statements_.back(), "ROLLBACK;");
  EXPECT_EQ(Difference(Contents(), before), "");
  EXPECT_EQ(manager()->RemoveIdFromTables("3", 1), 1);
}

TEST_P(FailedPairTest, TakesItsFirstDeleteBackWhenTheSecondFails) {
  const std::vector<std::string> before = Contents();
  const ObservedLog log;
  FailAt("delete from ObjectTable");
  EXPECT_EQ(manager()->RemoveIdFromTables("3", 1), 0);
  Injection::Disarm();
  EXPECT_THAT(
      log.Errors(),
      ElementsAre(HasSubstr("query : delete from ObjectTable where id=3\n\texec failed [")));
  EXPECT_EQ(Difference(Contents(), before), "");
}

INSTANTIATE_TEST_SUITE_P(Machine, FailedPairTest, testing::Values(Layer::kDisk, Layer::kMemory),
                         [](const auto& test) {
                           return test.param == Layer::kDisk ? "Disk" : "Memory";
                         });

}  // namespace
}  // namespace orx_test

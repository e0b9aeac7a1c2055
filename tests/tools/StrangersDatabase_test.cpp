// A database that somebody else made, with what stands beside it.
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tools/CommandTest.h"

namespace {

using orx_test::ProcessResult;

constexpr unsigned kTooLong = 20;  // seconds: a command that hangs is ended by a signal

class StrangersDatabase : public orx_test::CommandTest {
 protected:
  static ProcessResult RunInTime(const std::vector<std::string>& arguments) {
    return orx_test::RunProcess(CommandLine(arguments), {}, [] { alarm(kTooLong); });
  }
  std::vector<std::vector<std::string>> Commands() const {
    return {{"show", database_},
            {"query", database_, "SELECT 1"},
            {"share", database_},
            {"backup-list", database_},
            {"dump", database_},
            {"check", database_, card_},
            {"diff", database_, database_},
            {"scan", card_, database_},
            {"register", Picture(), database_},
            {"sheet", database_, dir_.Path("page.html")}};
  }
};

TEST_F(StrangersDatabase, IsRefusedByEveryCommandWhenAFifoStandsBesideIt) {
  Scan();
  for (const std::string ending : {"-journal", "-wal", "-shm"}) {
    ASSERT_EQ(mkfifo((database_ + ending).c_str(), 0600), 0);
    for (const auto& command : Commands()) {
      const ProcessResult result = RunInTime(command);
      EXPECT_EQ(result.status, command[0] == "diff" ? 2 : 1) << command[0] << ": " << result.errors;
      EXPECT_TRUE(
          Contains(result.errors, "the file " + ending + " beside it is not a regular file"))
          << command[0] << ": " << result.errors;
    }
    std::filesystem::remove(database_ + ending);
  }
}

TEST_F(StrangersDatabase, IsNotMadeBesideAFifo) {
  ASSERT_EQ(mkfifo((database_ + "-journal").c_str(), 0600), 0);
  const ProcessResult result = RunInTime({"scan", card_, database_});
  EXPECT_EQ(result.status, 1) << result.errors;
  EXPECT_FALSE(DatabaseExists());
}

TEST_F(StrangersDatabase, HasNoViewInThePlaceOfATable) {
  Scan();
  Execute(
      "DROP TABLE ImageTable; CREATE VIEW ImageTable AS WITH RECURSIVE n(id) AS (SELECT 1 UNION ALL"
      " SELECT id + 1 FROM n) SELECT id, ' ' AS FullPath FROM n");
  for (const char* command : {"show", "dump"})
    EXPECT_NE(RunInTime({command, database_, "ImageTable"}).status, 128 + SIGALRM) << command;
  EXPECT_NE(RunInTime({"query", database_, "SELECT count(*) FROM ImageTable"}).status, 0);
}

TEST_F(StrangersDatabase, HasNoTriggerThatRunsInAScan) {
  Scan();
  Execute(
      "CREATE TRIGGER t AFTER INSERT ON ImageTable BEGIN DELETE FROM AudioTable; DELETE FROM "
      "VideoTable; END; UPDATE ImageTable SET size = 1; UPDATE ObjectTable SET Valid = 1");
  const std::string films = Cell("SELECT count(*) FROM VideoTable");
  std::filesystem::copy_file(Picture(), card_ + "/another.jpg");
  Scan();
  EXPECT_EQ(Cell("SELECT count(*) FROM VideoTable"), films);
  EXPECT_EQ(Cell("SELECT count(*) FROM ImageTable WHERE FullPath LIKE '%another%'"), "1");
}

}  // namespace

#include "LibraryErrors.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using orxscan::LibraryErrors;

std::string Statement(const std::string& sql, const std::string& end) {
  return "[DataBaseMgr::ExecSqlStatmentNoValueReturn]\n\tquery : " + sql + end;
}
std::string Failed(int code, const std::string& message) {
  return "\n\texec failed [" + std::to_string(code) + "]\n\terrmsg : [" + message + "]";
}
LibraryErrors After(const std::string& line) {
  LibraryErrors errors;
  errors.Add(line);
  return errors;
}

TEST(LibraryErrors, TakeAStatementThatATextMadeInvalidForHarmless) {
  const LibraryErrors errors =
      After(Statement("insert into ImageTable values (\"undone COMMIT; out of memory [\")",
                      Failed(1, "near \"undone\": syntax error")));
  EXPECT_TRUE(errors.any());
  EXPECT_TRUE(errors.insertFailed());
  EXPECT_EQ(errors.database(), "");
  EXPECT_FALSE(errors.undone());
  EXPECT_FALSE(errors.outOfMemory());
  EXPECT_TRUE(errors.failures().empty());
}

TEST(LibraryErrors, TellWhyAScanWasUndone) {
  const LibraryErrors errors = After("Error : what was written is undone, [disk I/O error]");
  EXPECT_TRUE(errors.undone());
  EXPECT_EQ(errors.database(), "disk I/O error");
}

TEST(LibraryErrors, TellWhyACommitFailedBehindAnyNumberOfOtherLines) {
  LibraryErrors errors;
  for (int i = 0; i < 20000; ++i)
    errors.Add("Error : open [/card/" + std::to_string(i) + "] failed, errno 5");
  errors.Add(Statement("COMMIT;", Failed(5, "database is locked")));
  EXPECT_TRUE(errors.undone());
  EXPECT_EQ(errors.database(), "database is locked");
  EXPECT_EQ(errors.failures().size() + errors.furtherFailures(), 20000u);
}

TEST(LibraryErrors, NameTheFileThatCouldNotBeRead) {
  const std::string path = "/card/undone] failed, errno 2.jpg";
  EXPECT_EQ(After("Error : read [" + path + "] failed, errno 5").failures().at(path),
            "Input/output error");
  EXPECT_EQ(After("Error : [" + path + "] is left to the next scan, errno 5").failures().at(path),
            "Input/output error");
}

TEST(LibraryErrors, NameWhatALongPathLeavesOfALine) {
  const std::string path(230, 'x');
  EXPECT_EQ(After("Error : open [/" + path).failures().count("/" + path + "..."), 1u);
}

TEST(LibraryErrors, TellThatTheDatabaseIsDamagedWhileTheScanGoesOn) {
  for (const char* line :
       {"Error : [database disk image is malformed] in the database, the scan is run once more "
        "without what met it",
        "Error : a question to the database failed, [database disk image is malformed]: select 1",
        "Error : left out, as the database is damaged there: delete from ImageTable"}) {
    const LibraryErrors errors = After(line);
    EXPECT_EQ(errors.database(), "") << line;
    EXPECT_EQ(errors.failures().at(""), "database disk image is malformed") << line;
  }
}

TEST(LibraryErrors, TellWhatTheCodeOfALineMeansThatWasCutBehindIt) {
  EXPECT_EQ(After(Statement("delete from ImageTable", "\n\texec failed [13]\n\terrmsg : [datab"))
                .failures()
                .at(""),
            "database or disk is full");
}

TEST(LibraryErrors, TellThatMemoryRanOut) {
  EXPECT_TRUE(After("Error : out of memory in HandleFile (malloc)").outOfMemory());
  LibraryErrors errors;
  errors.AddLost();
  EXPECT_TRUE(errors.any());
  EXPECT_TRUE(errors.outOfMemory());
}

TEST(LibraryErrors, TellThatADatabaseCannotBeMade) {
  EXPECT_EQ(After("Error : OpenDB fail").database(), "it cannot be opened");
  EXPECT_EQ(After("Error : [/card/media.db] cannot be moved to its place, errno 28").database(),
            "No space left on device");
}

}  // namespace

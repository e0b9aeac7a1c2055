#include <unistd.h>

#include "tools/CommandTest.h"

namespace {

using orx_test::ProcessResult;

class Command : public orx_test::CommandTest {
 protected:
  static void ExpectUsageError(const std::vector<std::string>& arguments, const std::string& part) {
    const ProcessResult result = Run(arguments);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors.find("orxscan: "), 0u) << result.errors;
    EXPECT_EQ(result.errors.find('\n'), result.errors.size() - 1) << result.errors;
    EXPECT_NE(result.errors.find(part), std::string::npos) << result.errors;
  }
};

TEST_F(Command, ShowsHelp) {
  const ProcessResult result = Run({"--help"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
  for (const char* word : {"scan", "card", "register", "info", "show", "query", "share",
                           "backup-list", "dump", "check", "diff", "130 cancelled"})
    EXPECT_NE(result.output.find(word), std::string::npos) << result.output;
  EXPECT_NE(Run({"scan", "--help"}).output.find("--profiles"), std::string::npos);
}

TEST_F(Command, ShowsAnExampleInTheHelpOfEveryCommand) {
  for (const std::string name : {"scan", "card", "register", "info", "show", "query", "share",
                                 "backup-list", "dump", "check", "diff"}) {
    const ProcessResult result = Run({name, "--help"});
    EXPECT_EQ(result.status, 0) << name;
    EXPECT_EQ(result.errors, "") << name;
    EXPECT_TRUE(Contains(result.output, "Example: orxscan " + name + " ")) << result.output;
  }
}

TEST_F(Command, TellsItsVersion) {
  const ProcessResult result = Run({"--version"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output.find("orxscan "), 0u);
}

TEST_F(Command, RefusesBadArgumentsWithOneLine) {
  ExpectUsageError({}, "subcommand is required");
  ExpectUsageError({"polish"}, "there is no command 'polish'");
  ExpectUsageError({"scan"}, "DIR is required");
  ExpectUsageError({"scan", card_}, "DB is required");
  ExpectUsageError({"scan", card_, database_, "third"}, "third");
  ExpectUsageError({"scan", card_, database_, "--fast"}, "--fast");
  ExpectUsageError({"scan", card_, database_, "--profiles"}, "--profiles");
  ExpectUsageError({"register", Picture()}, "DB is required");
  ExpectUsageError({"info"}, "FILE is required");
  for (const char* name : {"show", "query", "share", "backup-list", "dump", "check"})
    ExpectUsageError({name}, "DB is required");
  ExpectUsageError({"query", database_}, "SQL is required");
  ExpectUsageError({"show", database_, "--limit", "-1"}, "--limit");
  EXPECT_FALSE(DatabaseExists());
}

TEST_F(Command, TakesNoEmptyTextForAnArgumentThatIsLeftOut) {
  Scan();
  ExpectFailure({"share", database_, ""}, "LIST: the text is empty (see orxscan --help)");
  ExpectFailure({"show", database_, ""}, "TABLE: the text is empty (see orxscan --help)");
  ExpectFailure({"check", database_, ""}, "DIR: the text is empty (see orxscan --help)");
  ExpectFailure({"register", Picture(), database_, "--parent", ""},
                "--parent: the text is empty (see orxscan --help)");
  ExpectFailure({"card", card_, database_, "--mode", "0", "--list", ""},
                "--list: the text is empty (see orxscan --help)");
}

// ---- with standard streams closed ----

class ClosedStreams : public Command, public testing::WithParamInterface<int> {
 protected:
  // Bit 0 stands for standard input, bit 1 for output, bit 2 for errors.
  ProcessResult RunClosed(const std::vector<std::string>& arguments) const {
    return orx_test::RunProcess(CommandLine(arguments), {}, [] {
      for (int stream = 0; stream < 3; ++stream)
        if ((GetParam() >> stream & 1) != 0) close(stream);
    });
  }
  static bool OutputIsClosed() { return (GetParam() & 2) != 0; }
};
INSTANTIATE_TEST_SUITE_P(Streams, ClosedStreams, testing::Range(1, 8));

TEST_P(ClosedStreams, LeaveAQuietScanAsItIs) {
  const ProcessResult result = RunClosed({"scan", card_, database_, "--quiet"});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(Cell("SELECT count(*) FROM ImageTable"), "4");
  EXPECT_EQ(Cell("PRAGMA integrity_check"), "ok");
}

TEST_P(ClosedStreams, FailWhatHasToBeSaid) {
  const ProcessResult result = RunClosed({"scan", card_, database_});
  EXPECT_EQ(result.status, OutputIsClosed() ? 1 : 0) << result.errors;
  EXPECT_EQ(Cell("PRAGMA integrity_check"), "ok");
  EXPECT_EQ(RunClosed({"query", database_, "SELECT hex(zeroblob(100000))"}).status,
            OutputIsClosed() ? 1 : 0);
  EXPECT_EQ(RunClosed({"info", card_ + "/README.TXT"}).status, 1);
  EXPECT_EQ(RunClosed({"polish"}).status, 1);
}

TEST_F(Command, LetsNoControlCharactersOfAnArgumentThrough) {
  ExpectUsageError({"scan", card_, database_, "\x1b[2J\n"}, "\\x1b[2J\\x0a");
}

TEST_F(Command, SaysWhenAnotherProgramHoldsTheDatabase) {
  Scan();
  sqlite3* connection = nullptr;
  ASSERT_EQ(sqlite3_open(database_.c_str(), &connection), SQLITE_OK);
  sqlite3_exec(connection, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
  ExpectFailure({"show", database_}, "database '" + database_ + "': database is locked");
  sqlite3_close(connection);
}

// ---- the commands that need a database ----

class ReadingCommand : public Command, public testing::WithParamInterface<const char*> {
 protected:
  std::vector<std::string> On(const std::string& database) const {
    std::vector<std::string> arguments = {GetParam(), database};
    if (arguments[0] == "query") arguments.emplace_back("SELECT * FROM ObjectTable");
    return arguments;
  }
};

INSTANTIATE_TEST_SUITE_P(Commands, ReadingCommand,
                         testing::Values("show", "query", "share", "backup-list", "dump", "check"),
                         [](const auto& test) {
                           const std::string name = test.param;
                           return name == "backup-list" ? "backupList" : name;
                         });

TEST_P(ReadingCommand, RefusesAMissingFile) {
  ExpectFailure(On(database_), "database '" + database_ + "': No such file or directory");
  EXPECT_FALSE(DatabaseExists());
  ExpectFailure(On(""), "the name of the database is empty");
}

TEST_P(ReadingCommand, RefusesAFileThatIsNoDatabase) {
  const std::string letter = dir_.Write("letter.txt", "Dear database, this is a letter to you.\n");
  ExpectFailure(On(letter), "database '" + letter + "': file is not a database");
  ExpectFailure(On(dir_.path()), "database '" + dir_.path() + "' is a folder");
  ExpectFailure(On("/dev/null"), "database '/dev/null' is not a regular file");
  const std::string empty = dir_.Write("empty.db", "");
  ExpectFailure(On(empty), "database '" + empty + "' is an empty file");
  EXPECT_EQ(std::filesystem::file_size(empty), 0u);
}

TEST_P(ReadingCommand, RefusesADatabaseOfSomethingElse) {
  Execute("CREATE TABLE Songs(id)");
  ExpectFailure(On(database_), "'" + database_ + "' is not a media database");
}

TEST_P(ReadingCommand, SaysWhenAProgramDiedWhileItWrote) {
  Scan();
  sqlite3* connection = nullptr;
  ASSERT_EQ(sqlite3_open(database_.c_str(), &connection), SQLITE_OK);
  sqlite3_exec(connection,
               "PRAGMA cache_size = 1; BEGIN; UPDATE ImageTable SET Title = 'half';"
               "UPDATE ObjectTable SET Valid = 1; UPDATE VideoTable SET Title = 'x'",
               nullptr, nullptr, nullptr);
  sqlite3_db_cacheflush(connection);
  const std::string left = dir_.Path("left.db");  // what such a program leaves
  std::filesystem::copy(database_, left);
  std::filesystem::copy(database_ + "-journal", left + "-journal");
  sqlite3_close(connection);
  ExpectFailure(On(left), "database '" + left +
                              "': a program that was writing it did not end properly; the next "
                              "scan repairs it");
  EXPECT_EQ(Run({"scan", card_, left, "--quiet"}).status, 0);
  EXPECT_EQ(Run(On(left)).status, 0);
}

TEST_P(ReadingCommand, LetsNoControlCharactersOfItsNameThrough) {
  ExpectFailure(On(dir_.Path("\x1b[2J")),
                "database '" + dir_.Path("\\x1b[2J") + "': No such file or directory");
}

TEST_P(ReadingCommand, TakesNoNameForOneOfSqlitesOwn) {
  ExpectFailure(On(":memory:"), "database ':memory:': No such file or directory");
}

}  // namespace

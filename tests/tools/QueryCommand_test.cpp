#include <sys/resource.h>
#include <unistd.h>

#include "tools/CommandTest.h"

namespace {

using nlohmann::json;
using orx_test::kSanitized;
using orx_test::ProcessResult;

class QueryCommand : public orx_test::CommandTest {
 protected:
  std::string Query(const std::string& sql, std::vector<std::string> more = {}) const {
    std::vector<std::string> arguments = {"query", database_, sql};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const ProcessResult result = Run(arguments);
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    return result.output;
  }
  void ExpectRefused(const std::string& sql, const std::string& message) const {
    SCOPED_TRACE(sql);
    ExpectFailure({"query", database_, sql}, message);
  }
};

constexpr char kReadsOnly[] = "the statement is refused: query only reads";

TEST_F(QueryCommand, PrintsTheAnswer) {
  MakeBackupDatabase();
  EXPECT_EQ(Query("SELECT id, Title AS name FROM ObjectTable WHERE class = 1"),
            "  id  name\n"
            "  --  --------\n"
            "   2  ORXA0001\n");
}

TEST_F(QueryCommand, AnswersAsJson) {
  MakeBackupDatabase();
  EXPECT_EQ(json::parse(Query("SELECT id, Title, size FROM ObjectTable WHERE id = 2", {"--json"})),
            (json{{"columns", {"id", "Title", "size"}}, {"rows", {{"2", "ORXA0001", ""}}}}));
}

TEST_F(QueryCommand, SaysWhenThereAreNoRows) {
  MakeBackupDatabase();
  EXPECT_EQ(Query("SELECT * FROM ObjectTable WHERE 0"), "no rows\n");
  EXPECT_EQ(json::parse(Query("SELECT id FROM ObjectTable WHERE 0", {"--json"})),
            (json{{"columns", {"id"}}, {"rows", json::array()}}));
}

TEST_F(QueryCommand, ReadsInManyWays) {
  Scan();
  for (const char* sql :
       {"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n LIMIT 3) SELECT * FROM n",
        "SELECT count(*) FROM ImageTable JOIN ObjectTable USING (id)", "VALUES (1), (2)",
        "EXPLAIN QUERY PLAN SELECT * FROM ImageTable", "PRAGMA table_info(ImageTable)",
        "PRAGMA user_version", "PRAGMA integrity_check", "SELECT * FROM sqlite_master",
        "SELECT Title FROM ImageTable WHERE DLNAProfile = \"JPEG_SM\"",
        "SELECT 1; -- and a remark\n ;"})
    EXPECT_NE(Query(sql), "no rows\n") << sql;
}

TEST_F(QueryCommand, RefusesWhateverWouldWrite) {
  Scan();
  const std::string before = Cell("SELECT group_concat(id || class || FullPath) FROM ObjectTable");
  for (const char* sql : {"DELETE FROM ImageTable",
                          "INSERT INTO ObjectTable (class) VALUES (1)",
                          "UPDATE ImageTable SET Share = 0",
                          "UPDATE ImageTable SET Share = 0 RETURNING id",
                          "REPLACE INTO ImageTable (id) VALUES (1)",
                          "DROP TABLE ImageTable",
                          "CREATE TABLE t (x)",
                          "CREATE TEMP TABLE t (x)",
                          "CREATE TEMP VIEW v AS SELECT 1",
                          "CREATE INDEX i ON ImageTable (Title)",
                          "ALTER TABLE ImageTable RENAME TO t",
                          "CREATE TRIGGER t DELETE ON ImageTable BEGIN SELECT 1; END",
                          "VACUUM",
                          "VACUUM INTO 'copy.db'",
                          "REINDEX",
                          "ANALYZE",
                          "BEGIN",
                          "BEGIN IMMEDIATE",
                          "COMMIT",
                          "ROLLBACK",
                          "SAVEPOINT s",
                          "ATTACH 'other.db' AS other",
                          "DETACH main",
                          "PRAGMA user_version = 5",
                          "PRAGMA journal_mode = WAL",
                          "PRAGMA journal_mode(DELETE)",
                          "PRAGMA writable_schema = 1",
                          "PRAGMA optimize",
                          "PRAGMA wal_checkpoint",
                          "PRAGMA incremental_vacuum",
                          "PRAGMA temp_store_directory = '/'",
                          "EXPLAIN DELETE FROM ImageTable",
                          "WITH x AS (SELECT 1) DELETE FROM ImageTable"})
    ExpectRefused(sql, kReadsOnly);
  EXPECT_EQ(Cell("SELECT group_concat(id || class || FullPath) FROM ObjectTable"), before);
  EXPECT_EQ(Cell("PRAGMA user_version"), "0");
  EXPECT_EQ(Cell("PRAGMA journal_mode"), "delete");
  EXPECT_FALSE(std::filesystem::exists("copy.db"));
  EXPECT_FALSE(std::filesystem::exists("other.db"));
}

TEST_F(QueryCommand, LoadsNoExtensions) {
  MakeBackupDatabase();
  ExpectRefused("SELECT load_extension('x.so')",
                "the statement is refused: not authorized to use function: load_extension");
}

TEST_F(QueryCommand, RefusesMoreThanOneStatement) {
  MakeBackupDatabase();
  ExpectRefused("SELECT 1; SELECT 2", "query runs one statement, not several");
  ExpectRefused("SELECT 1; DELETE FROM ObjectTable", kReadsOnly);
}

TEST_F(QueryCommand, RefusesWhatIsNoStatement) {
  MakeBackupDatabase();
  ExpectRefused("", "there is no statement to run");
  ExpectRefused("/* nothing */ ;", "there is no statement to run");
  ExpectRefused("SELEC 1", "the statement is refused: near \"SELEC\": syntax error");
  ExpectRefused("SELECT * FROM Songs", "the statement is refused: no such table: Songs");
}

TEST_F(QueryCommand, SaysThatALayoutLacksTheTable) {
  MakeObjectOnlyDatabase();
  ExpectRefused("SELECT * FROM ImageTable", "the statement is refused: no such table: ImageTable");
}

TEST_F(QueryCommand, SaysWhyAStatementFailsWhileItRuns) {
  MakeBackupDatabase();
  ExpectRefused("SELECT abs(-9223372036854775808)",
                "database '" + database_ + "': integer overflow");
}

// ---- answers without end ----

constexpr char kEndless[] =
    "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT i, 'row ' || i FROM n";

// The first lines of the answer; the command is given little memory, and loses its reader then.
std::string FirstLines(const std::string& database, const std::string& sql, int lines,
                       const std::string& options = "") {
  const ProcessResult result =
      orx_test::RunProcess({"/bin/sh", "-c",
                            "'" ORXSCAN_COMMAND "' query '" + database + "' \"" + sql + "\" " +
                                options + " | head -n " + std::to_string(lines) + " | tail -n 1"},
                           {}, [] {
                             if (kSanitized) return;  // it needs more
                             const rlimit limit = {128 << 20, 128 << 20};
                             setrlimit(RLIMIT_AS, &limit);
                           });
  EXPECT_EQ(result.errors, "");
  return result.output;
}

TEST_F(QueryCommand, PrintsRowsAsTheyCome) {
  MakeBackupDatabase();
  EXPECT_EQ(FirstLines(database_, kEndless, 3), "     1  row 1\n");
  EXPECT_EQ(FirstLines(database_, kEndless, 100002), "  100000  row 100000\n");
}

TEST_F(QueryCommand, AnswersRowsAsJsonAsTheyCome) {
  MakeBackupDatabase();
  EXPECT_EQ(FirstLines(database_, kEndless, 100003, "--json"),
            "    [\"100000\",\"row 100000\"],\n");
}

TEST_F(QueryCommand, EndsWhenItIsInterrupted) {
  MakeBackupDatabase();
  bool sent = false;
  const ProcessResult result =
      orx_test::RunOnTerminal(CommandLine({"query", database_, kEndless}),
                              [&](const std::string&, orx_test::Terminal terminal) {
                                if (sent) return;
                                EXPECT_EQ(write(terminal.descriptor, "\x03", 1), 1);  // Ctrl-C
                                sent = true;
                              });
  EXPECT_EQ(result.status, 130);
}

TEST_F(QueryCommand, RefusesCellsOfAnySize) {
  MakeBackupDatabase();
  for (const char* sql : {"SELECT zeroblob(1000000000)", "SELECT 1, hex(zeroblob(16000000))"})
    ExpectRefused(sql, "database '" + database_ + "': string or blob too big");
  EXPECT_TRUE(Contains(Query("SELECT hex(zeroblob(1000000)) || 'end'"), "000end\n"));
}

TEST_F(QueryCommand, LetsNoControlCharactersThrough) {
  MakeBackupDatabase();
  const std::string text = Query("SELECT char(27) || '[2J' AS \"a\x1b\"");
  EXPECT_FALSE(Contains(text, "\x1b"));
  EXPECT_TRUE(Contains(text, "a\\x1b"));
  EXPECT_TRUE(Contains(text, "\\x1b[2J"));
}

}  // namespace

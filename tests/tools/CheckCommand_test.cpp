#include <fstream>

#include "tools/CommandTest.h"

namespace {

using nlohmann::json;
using orx_test::ProcessResult;

class CheckCommand : public orx_test::CommandTest {
 protected:
  void ExpectFindings(const std::vector<std::string>& arguments, int status,
                      const std::string& output) const {
    std::vector<std::string> all = {"check", database_};
    all.insert(all.end(), arguments.begin(), arguments.end());
    const ProcessResult result = Run(all);
    EXPECT_EQ(result.status, status);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, output);
  }
  static std::string Findings(const std::string& folder, const std::string& sorting,
                              const std::string& rows) {
    return "layout     the tables of a full scan\n" + folder + "sorting    " + sorting +
           "\nintegrity  ok\nrows       " + rows + "\n";
  }
};

constexpr char kAllRows[] = "every medium has its object, and the other way round";

TEST_F(CheckCommand, FindsAFreshDatabaseGood) {
  Scan();
  ExpectFindings({}, 0, Findings("", "current", kAllRows));
}

TEST_F(CheckCommand, TellsWhetherTheDatabaseIsOfAFolder) {
  Scan();
  ExpectFindings(
      {card_ + "//"}, 0,
      Findings("folder     current: nothing lies outside " + card_ + "\n", "current", kAllRows));
  const std::string other = dir_.MakeDir("other");
  ExpectFindings({other}, 1,
                 Findings("folder     to be deleted: something lies outside " + other + "\n",
                          "current", kAllRows));
}

TEST_F(CheckCommand, TakesACardsFolderThatIsNotThere) {
  MakeObjectOnlyDatabase();
  ExpectFindings({"/mnt/mmc-of-no-machine/../mmc/DCIM/"}, 0,
                 "layout     the tables of sharing mode 8\n"
                 "folder     current: nothing lies outside /mnt/mmc/DCIM\n"
                 "integrity  ok\n"
                 "rows       there are no media tables to compare\n");
  ExpectFailure({"check", database_, "gone/folder"},
                "folder 'gone/folder': No such file or directory");
}

TEST_F(CheckCommand, RefusesAFolderThatCannotBeLookedUp) {
  MakeBackupDatabase();
  const std::string folder = dir_.MakeDir("it's");
  ExpectFailure({"check", database_, folder},
                "folder '" + folder + "': a path with a single quote in it cannot be looked up");
}

TEST_F(CheckCommand, TellsADatabaseFromBeforeTheSortNumbers) {
  Scan();
  Execute("ALTER TABLE VideoTable DROP COLUMN SortIndex");
  ExpectFindings({}, 1,
                 Findings("", "to be deleted: it is from before the sort numbers", kAllRows));
}

TEST_F(CheckCommand, FindsRowsWithoutTheirCounterpart) {
  Scan();
  const std::string picture =
      Cell("SELECT id FROM ImageTable WHERE FullPath = '" + Picture() + "'");
  const std::string film = Cell("SELECT id FROM VideoTable WHERE FullPath = '" + Film() + "'");
  const std::string sound = Cell("SELECT id FROM AudioTable WHERE FullPath = '" + Sound() + "'");
  Execute("DELETE FROM ImageTable WHERE id = '" + picture +
          "'; DELETE FROM ObjectTable WHERE id = " + film +
          "; UPDATE ObjectTable SET class = 7 WHERE id = " + sound);
  ExpectFindings(
      {}, 1,
      Findings("", "current",
               "4 problems\n"
               "  ObjectTable row " +
                   sound + " is of no known class: " + Sound() + "\n  ObjectTable row " + picture +
                   " has no ImageTable row: " + Picture() + "\n  AudioTable row " + sound +
                   " has no ObjectTable row: " + Sound() + "\n  VideoTable row " + film +
                   " has no ObjectTable row: " + Film()));
}

TEST_F(CheckCommand, WritesJson) {
  Scan();
  Execute("DELETE FROM ImageTable WHERE FullPath = '" + Picture() + "'");
  const ProcessResult result = Run({"check", database_, card_, "--json"});
  EXPECT_EQ(result.status, 1);
  const json findings = json::parse(result.output);
  EXPECT_EQ(findings["good"], false);
  EXPECT_EQ(findings["layout"], "the tables of a full scan");
  EXPECT_EQ(findings["folder"], card_);
  EXPECT_EQ(findings["folderCurrent"], true);
  EXPECT_EQ(findings["sortingCurrent"], true);
  EXPECT_EQ(findings["damage"], json::array());
  EXPECT_EQ(findings["mismatches"].size(), 1u);
}

TEST_F(CheckCommand, CutsALongListOfProblems) {
  Scan();
  Execute(
      "WITH RECURSIVE n(i) AS (SELECT 1001 UNION ALL SELECT i + 1 FROM n LIMIT 150) "
      "INSERT INTO ObjectTable (id, class, date, parentID, FullPath) "
      "SELECT i, 1, ' ', ' ', '/' || i FROM n");
  const ProcessResult result = Run({"check", database_});
  EXPECT_TRUE(Contains(result.output, "rows       150 problems\n")) << result.output;
  EXPECT_TRUE(Contains(result.output, "  and 50 more (--json lists them all)\n"));
}

TEST_F(CheckCommand, FindsDamage) {
  Scan();
  // The page after the schema's, where the first table has its rows.
  const std::string page = Cell("SELECT rootpage FROM sqlite_master WHERE name = 'ImageTable'");
  std::fstream file(database_, std::ios::in | std::ios::out | std::ios::binary);
  file.seekp((std::stol(page) - 1) * std::stol(Cell("PRAGMA page_size")));
  file << std::string(200, '\xff') << std::flush;
  file.close();
  const ProcessResult result = Run({"check", database_});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errors, "");
  EXPECT_TRUE(Contains(result.output, "integrity  ")) << result.output;
  EXPECT_TRUE(Contains(result.output, "problem")) << result.output;
  EXPECT_FALSE(Contains(result.output, "rows "));
}

TEST_F(CheckCommand, LetsNoControlCharactersThrough) {
  Scan();
  Execute("UPDATE ObjectTable SET FullPath = '/' || char(27) || '[2J', class = 9 WHERE class = 2");
  const ProcessResult result = Run({"check", database_});
  EXPECT_FALSE(Contains(result.output, "\x1b"));
  EXPECT_TRUE(Contains(result.output, "/\\x1b[2J")) << result.output;
}

}  // namespace

#include <filesystem>

#include "tools/CommandTest.h"

namespace {

using nlohmann::json;
using orx_test::ProcessResult;

class DiffCommand : public orx_test::CommandTest {
 protected:
  // The card is scanned and the database kept as it was; `database_` is the one that changes.
  void ScanAndKeep() const {
    Scan();
    std::filesystem::copy(database_, before_);
  }
  ProcessResult Diff(std::vector<std::string> more = {}) const {
    std::vector<std::string> arguments = {"diff", before_, database_};
    arguments.insert(arguments.end(), more.begin(), more.end());
    ProcessResult result = Run(arguments);
    EXPECT_EQ(result.errors, "");
    return result;
  }
  void ExpectText(const std::string& output, int status = 1) const {
    const ProcessResult result = Diff();
    EXPECT_EQ(result.output, output);
    EXPECT_EQ(result.status, status);
  }
  json DiffAsJson(std::vector<std::string> more = {}) const {
    more.emplace_back("--json");
    return json::parse(Diff(more).output);
  }
  static void ExpectTrouble(const std::vector<std::string>& arguments, const std::string& message) {
    const ProcessResult result = Run(arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "orxscan: " + message + "\n");
  }

  const std::string before_ = dir_.Path("before.db");
};

TEST_F(DiffCommand, FindsACopyTheSame) {
  ScanAndKeep();
  ExpectText("0 added, 0 removed, 0 changed, 0 registered anew, 14 the same\n", 0);
}

TEST_F(DiffCommand, FindsAScanThatFoundNothingNewTheSame) {
  ScanAndKeep();
  Scan();
  EXPECT_EQ(Diff({"--content"}).status, 0);
}

TEST_F(DiffCommand, ListsWhatARescanAddedAndRemoved) {
  ScanAndKeep();
  std::filesystem::copy(Picture(), card_ + "/DCIM/100ORXSC/ORXA0009.JPG");
  std::filesystem::remove(Film());
  Scan();
  const json found = DiffAsJson();
  ASSERT_EQ(found["added"].size(), 1u);
  EXPECT_EQ(found["added"][0]["path"], card_ + "/DCIM/100ORXSC/ORXA0009.JPG");
  EXPECT_EQ(found["added"][0]["kind"], "picture");
  EXPECT_FALSE(found["added"][0].contains("idBefore"));
  ASSERT_EQ(found["removed"].size(), 1u);
  EXPECT_EQ(found["removed"][0]["path"], Film());
  EXPECT_EQ(found["removed"][0]["kind"], "film");
  EXPECT_FALSE(found["removed"][0].contains("idAfter"));
  EXPECT_EQ(found["same"], false);
}

TEST_F(DiffCommand, TellsWhichFieldsChanged) {
  ScanAndKeep();
  Execute("UPDATE ImageTable SET Title = 'Dusk', Share = 0 WHERE FullPath = '" + Picture() + "'");
  ExpectText("Changed:\n  picture  " + Picture() +
             "\n             Title: 'ORXA0001' -> 'Dusk'\n             Share: '1' -> '0'\n\n"
             "0 added, 0 removed, 1 changed, 0 registered anew, 13 the same\n");
  const json found = DiffAsJson()["changed"][0];
  EXPECT_EQ(found["registeredAnew"], false);
  EXPECT_EQ(found["changes"][0],
            (json{{"field", "Title"}, {"before", "ORXA0001"}, {"after", "Dusk"}}));
}

TEST_F(DiffCommand, KeepsWhatWasRegisteredAnewApart) {
  ScanAndKeep();
  const std::string id = Cell("SELECT id FROM ImageTable WHERE FullPath = '" + Picture() + "'");
  Execute("UPDATE ObjectTable SET id = 99 WHERE id = " + id +
          "; UPDATE ImageTable SET id = '99', uri = '/orx00990.JPG' WHERE id = '" + id + "'");
  ExpectText("Registered anew:\n  picture  " + Picture() + "  (id " + id +
             " -> 99)\n\n0 added, 0 removed, 0 changed, 1 registered anew, 13 the same\n");
  const ProcessResult content = Diff({"--content"});
  EXPECT_EQ(content.status, 0);
  EXPECT_EQ(content.output, "0 added, 0 removed, 0 changed, 0 registered anew, 14 the same\n");
}

TEST_F(DiffCommand, ComparesResourceNamesByTheirKind) {
  ScanAndKeep();
  Execute("UPDATE ImageTable SET uri = '/orx9990.JPG' WHERE FullPath = '" + Picture() + "'");
  ExpectText("Registered anew:\n  picture  " + Picture() +
             "  (other resource names)\n\n"
             "0 added, 0 removed, 0 changed, 1 registered anew, 13 the same\n");
  Execute("UPDATE ImageTable SET uri = '/orx9990.MPO' WHERE FullPath = '" + Picture() + "'");
  EXPECT_EQ(DiffAsJson()["changed"][0]["changes"][0]["field"], "uri");
}

TEST_F(DiffCommand, ComparesTheParentByItsPath) {
  ScanAndKeep();
  // The folders get other ids, and what is in them goes with them.
  Execute(
      "UPDATE ObjectTable SET parentID = parentID + 100 WHERE parentID <> '0';"
      "UPDATE ObjectTable SET id = id + 100 WHERE class = 0");
  json found = DiffAsJson();
  EXPECT_EQ(found["changed"], json::array());
  EXPECT_EQ(found["registeredAnew"].size(), 5u);
  Execute("UPDATE ObjectTable SET parentID = '777' WHERE FullPath = '" + Sound() + "'");
  found = DiffAsJson()["changed"][0]["changes"][0];
  EXPECT_EQ(found["field"], "parent");
  EXPECT_EQ(found["before"], card_ + "/MUSIC");
  EXPECT_EQ(found["after"], "missing object 777");
}

TEST_F(DiffCommand, TellsThatAMediumLostItsRow) {
  ScanAndKeep();
  Execute("DELETE FROM AudioTable WHERE FullPath = '" + Sound() + "'");
  ExpectText("Changed:\n  sound    " + Sound() +
             "\n             medium: 'there' -> 'missing'\n\n"
             "0 added, 0 removed, 1 changed, 0 registered anew, 13 the same\n");
}

TEST_F(DiffCommand, FindsAChangeOfEitherTable) {
  ScanAndKeep();
  Execute("UPDATE ObjectTable SET date = '1999-01-01' WHERE FullPath = '" + Picture() + "'");
  const json change = DiffAsJson()["changed"][0]["changes"][0];
  EXPECT_EQ(
      change,
      (json{{"field", "date"}, {"before", "2026-03-14"}, {"after", "1999-01-01 | 2026-03-14"}}));
}

TEST_F(DiffCommand, ComparesDatabasesWithoutMediaTables) {
  MakeBackupDatabase();
  std::filesystem::copy(database_, before_);
  Execute("UPDATE ObjectTable SET IsBackup = 1 WHERE class = 1");
  ExpectText(
      "Changed:\n  picture  /mnt/mmc/DCIM/100ORXSC/ORXA0001.JPG\n"
      "             IsBackup: '0' -> '1'\n\n"
      "0 added, 0 removed, 1 changed, 0 registered anew, 1 the same\n");
}

TEST_F(DiffCommand, ComparesTwoLayoutsByWhatBothHave) {
  MakeBackupDatabase();
  std::filesystem::rename(database_, before_);
  MakeObjectOnlyDatabase();
  ExpectText("'" + before_ + "' has the tables of sharing mode 6, '" + database_ +
                 "' has the tables of sharing mode 8: compared by what both have\n"
                 "not compared: BackupID, Height, IsBackup, MimeType, Screennailuri, Thumbnailuri, "
                 "Valid, VideoBitrate, VideoFrameRate, Width, uri\n\n"
                 "0 added, 0 removed, 0 changed, 0 registered anew, 2 the same\n",
             0);
  const json found = DiffAsJson();
  EXPECT_EQ(found["layouts"]["before"], "the tables of sharing mode 6");
  EXPECT_EQ(found["notCompared"].size(), 11u);
}

TEST_F(DiffCommand, LetsNoControlCharactersThrough) {
  ScanAndKeep();
  Execute(
      "UPDATE ImageTable SET Title = char(27) || '[2J' || char(8238), Share = 1;"
      "UPDATE ObjectTable SET FullPath = '/' || char(10) || char(27) WHERE class = 2");
  const ProcessResult result = Diff();
  EXPECT_FALSE(Contains(result.output, "\x1b"));
  EXPECT_TRUE(Contains(result.output, "-> '\\x1b[2J\\u202e'\n")) << result.output;
  EXPECT_TRUE(Contains(result.output, "  sound    /\\x0a\\x1b\n")) << result.output;
}

TEST_F(DiffCommand, CutsALongList) {
  ScanAndKeep();
  Execute(
      "WITH RECURSIVE n(i) AS (SELECT 1001 UNION ALL SELECT i + 1 FROM n LIMIT 10000) "
      "INSERT INTO ObjectTable (id, class, date, parentID, FullPath) "
      "SELECT i, 0, ' ', '0', '/' || i FROM n");
  const ProcessResult result = Diff();
  EXPECT_TRUE(Contains(result.output, "  and 9900 more (--json lists them all)\n"));
  EXPECT_TRUE(Contains(result.output, "10000 added, 0 removed")) << result.output;
  EXPECT_EQ(DiffAsJson()["added"].size(), 10000u);
}

TEST_F(DiffCommand, HasAStatusOfItsOwnForTrouble) {
  Scan();
  ExpectTrouble({"diff", before_, database_},
                "database '" + before_ + "': No such file or directory");
  ExpectTrouble({"diff", database_, before_},
                "database '" + before_ + "': No such file or directory");
  ExpectTrouble({"diff", database_}, "DB2 is required (see orxscan --help)");
}

}  // namespace

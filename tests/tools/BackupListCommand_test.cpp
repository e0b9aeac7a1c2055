#include "tools/CommandTest.h"

namespace {

using nlohmann::json;
using orx_test::ProcessResult;

class BackupListCommand : public orx_test::CommandTest {
 protected:
  std::string List(std::vector<std::string> more = {}) const {
    std::vector<std::string> arguments = {"backup-list", database_};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const ProcessResult result = Run(arguments);
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    return result.output;
  }
};

TEST_F(BackupListCommand, ListsTheFilesInDescendingOrderOfPaths) {
  Scan();
  const std::string text = List();
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 9);
  EXPECT_EQ(text.find(card_ + "/MUSIC/VOICE01.AAC\n" + Sound() + "\n"), 0u) << text;
  EXPECT_EQ(text.find(Picture() + "\n"), text.size() - Picture().size() - 1);
}

TEST_F(BackupListCommand, LeavesOutWhatIsABackup) {
  MakeBackupDatabase();
  EXPECT_EQ(List(), "/mnt/mmc/DCIM/100ORXSC/ORXA0001.JPG\n");
  Execute("UPDATE ObjectTable SET IsBackup = 1");
  EXPECT_EQ(List(), "no files to back up\n");
}

TEST_F(BackupListCommand, WritesJson) {
  MakeBackupDatabase();
  EXPECT_EQ(
      json::parse(List({"--json"})),
      (json{{"candidates", 1},
            {"files",
             {{{"title", "ORXA0001.JPG"}, {"path", "/mnt/mmc/DCIM/100ORXSC/ORXA0001.JPG"}}}}}));
}

TEST_F(BackupListCommand, ListsAThousandFilesAtMost) {
  MakeBackupDatabase();
  Execute(
      "WITH RECURSIVE n(i) AS (SELECT 1001 UNION ALL SELECT i + 1 FROM n LIMIT 1500) "
      "INSERT INTO ObjectTable (class, FullPath, IsBackup) SELECT 1, '/z/' || i || '.JPG', 0 "
      "FROM n");
  const std::string text = List();
  EXPECT_EQ(text.find("/z/2500.JPG\n"), 0u);
  EXPECT_TRUE(Contains(text, "/z/1501.JPG\nand 501 more, which a backup considers later\n"));
  EXPECT_EQ(json::parse(List({"--json"}))["files"].size(), 1000u);
  EXPECT_EQ(json::parse(List({"--json"}))["candidates"], 1501);
}

TEST_F(BackupListCommand, LetsNoControlCharactersThrough) {
  MakeBackupDatabase();
  Execute("UPDATE ObjectTable SET FullPath = '/' || char(27) || '[2J'");
  EXPECT_EQ(List(), "/\\x1b[2J\n");
}

TEST_F(BackupListCommand, RefusesALayoutWithoutBackupMarks) {
  MakeObjectOnlyDatabase();
  ExpectFailure(
      {"backup-list", database_},
      "database '" + database_ + "' keeps no backup marks: it has the tables of sharing mode 8");
}

}  // namespace

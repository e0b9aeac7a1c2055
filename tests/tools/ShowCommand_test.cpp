#include "tools/CommandTest.h"

namespace {

using nlohmann::json;
using orx_test::ProcessResult;

class ShowCommand : public orx_test::CommandTest {
 protected:
  std::string Show(std::vector<std::string> more = {}) const {
    std::vector<std::string> arguments = {"show", database_};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const ProcessResult result = Run(arguments);
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    return result.output;
  }
};

TEST_F(ShowCommand, ShowsEveryTable) {
  Scan();
  const std::string text = Show();
  size_t at = 0;
  for (const char* head :
       {"ObjectTable: 14 rows\n", "\nImageTable: 4 rows\n", "\nVideoTable: 3 rows\n",
        "\nAudioTable: 2 rows\n", "\nContainerTable: no rows\n"}) {
    const size_t found = text.find(head);
    ASSERT_NE(found, std::string::npos) << head;
    EXPECT_GE(found, at);
    at = found;
  }
  EXPECT_TRUE(Contains(text, Picture()));
  EXPECT_TRUE(Contains(text, "Harbour at dawn"));
}

TEST_F(ShowCommand, AlignsTheCells) {
  MakeBackupDatabase();
  Execute(
      "DELETE FROM ObjectTable; INSERT INTO ObjectTable (id, Title, class, FullPath) VALUES"
      " (1, 'a', 0, '/\xc3\xa9'), (10, 'long title', 1, '/b')");
  EXPECT_EQ(Show({"ObjectTable"}),
            "ObjectTable: 2 rows\n"
            "  id  Title       class  date  size  parentID  FullPath  MimeType  SortIndex  Valid  "
            "BackupID  IsBackup\n"
            "  --  ----------  -----  ----  ----  --------  --------  --------  ---------  -----  "
            "--------  --------\n"
            "   1  a               0                        /\xc3\xa9\n"
            "  10  long title      1                        /b\n");
}

TEST_F(ShowCommand, ShowsOneTableWhateverTheCaseOfItsName) {
  Scan();
  const std::string text = Show({"imagetable"});
  EXPECT_EQ(text.find("ImageTable: 4 rows\n"), 0u);
  EXPECT_FALSE(Contains(text, "VideoTable"));
}

TEST_F(ShowCommand, ShowsNoMoreThanTheLimit) {
  Scan();
  const std::string text = Show({"ImageTable", "--limit", "1"});
  EXPECT_TRUE(Contains(text, "ImageTable: 4 rows\n"));
  EXPECT_TRUE(Contains(text, "\n  and 3 more\n"));
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 5);
  EXPECT_FALSE(Contains(Show({"ImageTable", "--limit", "4"}), "more"));
  EXPECT_EQ(json::parse(Show({"ImageTable", "--limit", "1", "--json"}))["ImageTable"].size(), 1u);
  EXPECT_EQ(json::parse(Show({"ImageTable", "--limit", "0", "--json"}))["ImageTable"],
            json::array());
}

TEST_F(ShowCommand, WritesJson) {
  Scan();
  const json tables = json::parse(Show({"--json"}));
  EXPECT_EQ(tables.size(), 5u);
  EXPECT_EQ(tables["ObjectTable"].size(), 14u);
  EXPECT_EQ(tables["ContainerTable"], json::array());
  const json& film = tables["VideoTable"][0];
  EXPECT_EQ(film["class"], 3);
  EXPECT_TRUE(film["VideoFrameRate"].is_number());
  EXPECT_TRUE(film["Title"].is_string());
  EXPECT_EQ(film.size(), 31u);
}

TEST_F(ShowCommand, ShowsTheTablesOfTheOtherSharingModes) {
  MakeObjectOnlyDatabase();
  EXPECT_EQ(Show().find("ObjectTable: 2 rows\n"), 0u);
  EXPECT_EQ(json::parse(Show({"--json"})).size(), 1u);
  EXPECT_EQ(json::parse(Show({"--json"}))["ObjectTable"][0]["uri"], nullptr);
  std::filesystem::remove(database_);
  MakeBackupDatabase();
  EXPECT_TRUE(Contains(Show(), "BackupID"));
}

TEST_F(ShowCommand, LetsNoControlCharactersOfACellThrough) {
  MakeBackupDatabase();
  Execute("UPDATE ObjectTable SET Title = char(27) || '[2J' || char(10) || char(8238) || 'x'");
  const std::string text = Show();
  EXPECT_FALSE(Contains(text, "\x1b"));
  EXPECT_TRUE(Contains(text, "\\x1b[2J\\x0a\\u202ex"));
  EXPECT_EQ(json::parse(Show({"--json"}))["ObjectTable"][0]["Title"], "\x1b[2J\n\xe2\x80\xaex");
}

TEST_F(ShowCommand, WritesValidJsonWhateverTheCells) {
  MakeBackupDatabase();
  Execute("UPDATE ObjectTable SET Title = CAST(x'ff41' AS TEXT), size = 9e999, date = 1.5");
  const json row = json::parse(Show({"--json"}))["ObjectTable"][0];
  EXPECT_EQ(row["Title"], "\xEF\xBF\xBD\x41");
  EXPECT_EQ(row["size"], nullptr);
  EXPECT_EQ(row["date"], 1.5);
}

TEST_F(ShowCommand, PrintsLongCellsWhole) {
  MakeBackupDatabase();
  Execute("UPDATE ObjectTable SET Title = printf('%.1000c', 'x') WHERE id = 1");
  const std::string text = Show();
  EXPECT_TRUE(Contains(text, std::string(1000, 'x')));
  EXPECT_FALSE(Contains(text, std::string(81, '-')));
}

TEST_F(ShowCommand, RefusesATableThatTheLayoutLacks) {
  MakeObjectOnlyDatabase();
  ExpectFailure({"show", database_, "ImageTable"},
                "database '" + database_ +
                    "' has no table 'ImageTable': it has the tables of sharing mode 8");
  ExpectFailure({"show", database_, "x\" WHERE 1 --"},
                "database '" + database_ +
                    "' has no table 'x\" WHERE 1 --': it has the tables of sharing mode 8");
}

TEST_F(ShowCommand, ChangesNothing) {
  Scan();
  const auto before = std::filesystem::last_write_time(database_);
  Show();
  EXPECT_EQ(std::filesystem::last_write_time(database_), before);
}

}  // namespace

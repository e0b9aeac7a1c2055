#include <sys/stat.h>
#include <unistd.h>

#include "tools/CommandTest.h"

namespace {

using nlohmann::json;
using orx_test::ProcessResult;

class ShareCommand : public orx_test::CommandTest {
 protected:
  ShareCommand() { Scan(); }

  std::string Share(const std::string& list) const {
    const ProcessResult result = Run({"share", database_, dir_.Write("list.txt", list)});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    return result.output;
  }
  std::string Shared() const {
    return Cell(
        "SELECT group_concat(FullPath, ' ') FROM (SELECT FullPath FROM ImageTable WHERE Share = 1 "
        "UNION SELECT FullPath FROM VideoTable WHERE Share = 1 ORDER BY 1)");
  }
};

TEST_F(ShareCommand, SharesTheListAndHidesTheRest) {
  const std::string mpo = card_ + "/DCIM/100ORXSC/ORXA0004.MPO";
  EXPECT_EQ(Share(Film() + "\r\n\n" + mpo + "\n" + Picture()),
            "Shared: 2 of 4 pictures, 1 of 3 films\n");
  EXPECT_EQ(Shared(), Picture() + " " + mpo + " " + Film());
}

TEST_F(ShareCommand, SharesAllWithoutAList) {
  Share("");
  const ProcessResult result = Run({"share", database_});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(result.output, "Shared: 4 of 4 pictures, 3 of 3 films\n");
}

TEST_F(ShareCommand, HidesAllForAnEmptyList) {
  EXPECT_EQ(Share("\n"), "Shared: 0 of 4 pictures, 0 of 3 films\n");
  EXPECT_EQ(Shared(), "NULL");
}

TEST_F(ShareCommand, TellsWhichEntriesItRefuses) {
  const std::string text = Share(Picture() + "\n" + card_ + "/a.jpg\n" + Sound() + "\nnoext\n" +
                                 card_ + "/GONE.JPG\n/it's.MP4\n" + Film() + "\n");
  EXPECT_EQ(text, "Refused:\n  " + card_ + "/a.jpg: only .JPG, .MPO and .MP4 files are shared by " +
                      "name\n  " + Sound() +
                      ": only .JPG, .MPO and .MP4 files are shared by name\n"
                      "  noext: only .JPG, .MPO and .MP4 files are shared by name\n  " +
                      card_ +
                      "/GONE.JPG: not in the database\n"
                      "  /it's.MP4: its path has a single quote in it\n\n"
                      "Shared: 1 of 4 pictures, 1 of 3 films\n");
  EXPECT_EQ(Shared(), Picture() + " " + Film());  // an entry without an extension ends nothing
}

TEST_F(ShareCommand, WritesJson) {
  const std::string list = dir_.Write("list.txt", Picture() + "\nx.JPG\n");
  const ProcessResult result = Run({"share", database_, list, "--json"});
  EXPECT_EQ(json::parse(result.output),
            (json{{"pictures", {{"shared", 1}, {"total", 4}}},
                  {"films", {{"shared", 0}, {"total", 3}}},
                  {"refused", {{{"path", "x.JPG"}, {"reason", "not in the database"}}}}}));
}

TEST_F(ShareCommand, RefusesAListThatIsNone) {
  ExpectFailure({"share", database_, dir_.Path("gone")},
                "file '" + dir_.Path("gone") + "': No such file or directory");
  ExpectFailure({"share", database_, card_}, "'" + card_ + "' is a folder, not a file");
  const std::string binary = dir_.Write("binary", std::string("a\0b", 3));
  ExpectFailure({"share", database_, binary}, "'" + binary + "' is not a text file");
  EXPECT_EQ(Cell("SELECT count(*) FROM ImageTable WHERE Share = 1"), "4");
}

TEST_F(ShareCommand, RefusesALayoutWithoutMediaTables) {
  std::filesystem::remove(database_);
  MakeObjectOnlyDatabase();
  ExpectFailure({"share", database_},
                "database '" + database_ +
                    "' has no table 'ImageTable': it has the tables of sharing mode 8");
}

TEST_F(ShareCommand, RefusesADatabaseThatCannotBeWritten) {
  if (geteuid() == 0) GTEST_SKIP() << "root may write everywhere";
  ASSERT_EQ(chmod(database_.c_str(), 0400), 0);
  ExpectFailure({"share", database_}, "database '" + database_ + "': Permission denied");
}

}  // namespace

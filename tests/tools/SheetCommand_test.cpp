#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tools/CommandTest.h"

namespace {

using orx_test::ProcessResult;

class SheetCommand : public orx_test::CommandTest {
 protected:
  static std::string FileText(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
  }
  std::string Sheet(std::vector<std::string> more = {}) const {
    std::vector<std::string> arguments = {"sheet", database_, page_};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const ProcessResult result = Run(arguments);
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    return FileText(page_);
  }
  static std::vector<std::string> Everything(const std::string& text, const std::string& start,
                                             const std::string& end) {
    std::vector<std::string> found;
    for (size_t at = 0; (at = text.find(start, at)) != std::string::npos;) {
      at += start.size();
      found.push_back(text.substr(at, text.find(end, at) - at));
    }
    return found;
  }
  static std::string Decoded(const std::string& base64) {
    const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    unsigned bits = 0;
    int count = 0;
    for (const char c : base64) {
      const size_t digit = digits.find(c);
      if (digit == std::string::npos) break;
      bits = bits << 6 | static_cast<unsigned>(digit);
      count += 6;
      if (count >= 8) bytes += static_cast<char>(bits >> (count -= 8) & 0xFF);
    }
    return bytes;
  }
  std::string RecordedThumbnail() const {
    const std::string of = " FROM ImageTable WHERE FullPath = '" + Picture() + "'";
    const std::string offset = Cell("SELECT ThumbnailOffset" + of);
    return FileText(Picture()).substr(std::stoul(offset),
                                      std::stoul(Cell("SELECT ThumbnailLength" + of)));
  }

  const std::string page_ = dir_.Path("page.html");
};

TEST_F(SheetCommand, ShowsFoldersByPathAndItemsBySortNumber) {
  Scan();
  const std::string page = Sheet();
  EXPECT_EQ(Everything(page, "<h3><bdi>", "</bdi>"),
            (std::vector<std::string>{"ORXA0001", "ORXA0002", "ORXA0003", "ORXA0004", "ORXA0001",
                                      "ORXA0002", "ORXA0003", "TRACK01", "VOICE01"}));
  EXPECT_EQ(Everything(page, "<span class=\"parents\">", "</span>").size(), 5u);
}

TEST_F(SheetCommand, CutsTheThumbnailsWhereTheDatabaseSaysTheyAre) {
  Scan();
  const auto thumbnails = Everything(Sheet(), "id=\"thumbnail-1\">", "</script>");
  ASSERT_EQ(thumbnails.size(), 1u);
  EXPECT_EQ(Decoded(thumbnails[0]), RecordedThumbnail());
}

TEST_F(SheetCommand, WritesTheThumbnailsBesideThePageOnDemand) {
  Scan();
  const std::string page = Sheet({"--thumbnails-beside"});
  EXPECT_FALSE(Contains(page, "text/plain"));
  const auto names = Everything(page, "src=\"page_thumbnails/", "\"");
  ASSERT_EQ(names.size(), 4u);
  EXPECT_EQ(FileText(dir_.Path("page_thumbnails/" + names[0])), RecordedThumbnail());
}

TEST_F(SheetCommand, LeavesAFolderOfOtherFilesAlone) {
  Scan();
  std::filesystem::create_directory(dir_.Path("page_thumbnails"));
  dir_.Write("page_thumbnails/mine.jpg", "x");
  ExpectFailure(
      {"sheet", database_, page_, "--thumbnails-beside"},
      "folder '" + dir_.Path("page_thumbnails") + "' holds other files; it is left alone");
  EXPECT_FALSE(std::filesystem::exists(page_));
}

TEST_F(SheetCommand, EscapesEveryText) {
  Scan();
  Execute(
      "UPDATE ImageTable SET Title = '<script>alert(1)</script><!-- \"''&', DLNAProfile = "
      "'\" onload=\"x', uri = '</noscript><b>', Description = CAST(x'ff41e280a8' AS TEXT)");
  const std::string page = Sheet();
  EXPECT_FALSE(Contains(page, "<script>alert"));
  EXPECT_TRUE(Contains(page, "&lt;script&gt;alert(1)&lt;/script&gt;&lt;!-- &quot;&#39;&amp;"));
  EXPECT_FALSE(Contains(page, "\" onload"));
  EXPECT_FALSE(Contains(page, "</noscript><b>"));
  EXPECT_TRUE(Contains(page, "\\xffA\\u2028"));
}

TEST_F(SheetCommand, AsksNothingOfTheNetwork) {
  Scan();
  const std::string page = Sheet();
  EXPECT_TRUE(Contains(page, "content=\"default-src 'none'; style-src 'sha256-"));
  EXPECT_FALSE(Contains(page, "unsafe-inline"));
  EXPECT_FALSE(Contains(page, "http:"));
  EXPECT_FALSE(Contains(page, "https:"));
}

TEST_F(SheetCommand, MarksMissingFilesAndWrongPlaces) {
  Scan();
  std::filesystem::remove(Film());
  Execute("UPDATE ImageTable SET ThumbnailLength = 4294967295 WHERE Title = 'ORXA0001'");
  Execute(
      "UPDATE ImageTable SET ThumbnailOffset = 1, ThumbnailLength = 9, size = 1 WHERE Title = "
      "'ORXA0002'");
  const std::string page = Sheet();
  EXPECT_TRUE(Contains(page, "data-marks=\"gone\""));
  EXPECT_TRUE(Contains(page, "data-marks=\"thumbnail-outside\""));
  EXPECT_TRUE(Contains(page, "data-marks=\"size-differs thumbnail-no-picture\""));
}

TEST_F(SheetCommand, ReadsNoThumbnailBeyondAMegabyte) {
  Scan();
  std::filesystem::resize_file(Picture(), 3 << 20);
  Execute(
      "UPDATE ImageTable SET ThumbnailOffset = 1, ThumbnailLength = 1048577 WHERE FullPath = '" +
      Picture() + "'");
  EXPECT_TRUE(Contains(Sheet(), "thumbnail-too-large\""));
}

TEST_F(SheetCommand, ShowsTheOtherLayouts) {
  MakeObjectOnlyDatabase();
  EXPECT_TRUE(Contains(Sheet(), "data-id=\"2\" data-kind=\"picture\""));
  std::filesystem::remove(database_);
  MakeBackupDatabase();
  const std::string page = Sheet();
  EXPECT_TRUE(Contains(page, "The database has the tables of sharing mode 6."));
  EXPECT_TRUE(Contains(page, "aria-label=\"picture, no thumbnail\""));
}

TEST_F(SheetCommand, FindsTheFilesOfACardWhereItIs) {
  MakeBackupDatabase();
  EXPECT_TRUE(Contains(Sheet(), "data-marks=\"gone\""));
  EXPECT_FALSE(Contains(Sheet({"--card", card_}), "data-marks=\"gone\""));
}

TEST_F(SheetCommand, MarksWhatIsDifferentFromAnEarlierDatabase) {
  Scan();
  const std::string before = dir_.Path("before.db");
  std::filesystem::copy(database_, before);
  std::filesystem::copy(Picture(), card_ + "/DCIM/100ORXSC/ORXA0009.JPG");
  std::filesystem::remove(Film());
  Scan();
  const std::string page = Sheet({"--before", before});
  EXPECT_TRUE(Contains(page, "1 added, 1 removed"));
  EXPECT_TRUE(Contains(page, "data-marks=\"added\""));
  EXPECT_TRUE(Contains(page, "data-marks=\"removed gone\""));
}

TEST_F(SheetCommand, ReplacesAPageButNoOtherFile) {
  Scan();
  Sheet();
  Sheet();
  std::ofstream(page_) << "mine";
  ExpectFailure({"sheet", database_, page_},
                "'" + page_ + "' is there and not a page of this command; --force replaces it");
  EXPECT_EQ(FileText(page_), "mine");
  EXPECT_TRUE(Contains(Sheet({"--force"}), "ORXA0001"));
  ExpectFailure({"sheet", database_, database_, "--force"},
                "page '" + database_ + "' is the database");
}

TEST_F(SheetCommand, LeavesNothingWhereItCannotWrite) {
  Scan();
  ExpectFailure({"sheet", database_, dir_.Path("no/page.html")},
                "page '" + dir_.Path("no/page.html") + "': No such file or directory");
  ExpectFailure({"sheet", database_, card_}, "page '" + card_ + "' is a folder");
}

TEST_F(SheetCommand, LeavesTheDatabaseAsItIs) {
  Scan();
  const std::string before = FileText(database_);
  Sheet();
  EXPECT_EQ(FileText(database_), before);
}

}  // namespace

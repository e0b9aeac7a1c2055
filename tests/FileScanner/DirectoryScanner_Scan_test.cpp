// The scan of a directory tree, end to end.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "OSAL/TextPtr.h"
#include "support/JpegBuilder.h"
#include "support/Mp4Builder.h"
#include "support/ScannerFixture.h"

namespace {

using orx_test::FakePlatform;
using orx_test::LogLine;
using orx_test::MakeJpeg;
using orx_test::Rows;
using orx_test::SmallFilm;
using orx_test::SmallSong;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class ScanTest : public orx_test::ScannerTest {
 protected:
  // Scans without letting the errors of the library's own making reach the test's output.
  int QuietScan() {
    testing::internal::CaptureStderr();
    const int status = Scan();
    testing::internal::GetCapturedStderr();
    return status;
  }
  std::vector<std::string> Paths(const std::string& table) {
    return Column("select FullPath from " + table + " order by FullPath");
  }
  std::string Everything() {
    std::string all;
    for (const char* table :
         {"ObjectTable", "ContainerTable", "ImageTable", "AudioTable", "VideoTable"})
      for (const auto& row : Select(std::string("select * from ") + table + " order by id"))
        for (const std::string& cell : row) all += cell + "|";
    return all;
  }
};

TEST_F(ScanTest, RecordsFilesOfEveryKind) {
  Write("100ORXSC/ORXA0001.JPG", MakeJpeg(640, 480));
  Write("100ORXSC/ORXA0002.MP4", SmallFilm());
  Write("100ORXSC/ORXA0003.M4A", SmallSong());
  EXPECT_EQ(QuietScan(), 1);
  EXPECT_THAT(Paths("ObjectTable"),
              ElementsAre(card_, InCard("100ORXSC"), InCard("100ORXSC/ORXA0001.JPG"),
                          InCard("100ORXSC/ORXA0002.MP4"), InCard("100ORXSC/ORXA0003.M4A")));
  EXPECT_THAT(Paths("ImageTable"), ElementsAre(InCard("100ORXSC/ORXA0001.JPG")));
  EXPECT_THAT(Paths("VideoTable"), ElementsAre(InCard("100ORXSC/ORXA0002.MP4")));
  EXPECT_THAT(Paths("AudioTable"), ElementsAre(InCard("100ORXSC/ORXA0003.M4A")));
}

TEST_F(ScanTest, ObjectAndMediaRowsShareTheirId) {
  Write("a.jpg", MakeJpeg());
  Write("b.mp4", SmallFilm());
  Write("c.m4a", SmallSong());
  QuietScan();
  EXPECT_EQ(Cell("select count(*) from ObjectTable o, ImageTable i where o.id = i.id and "
                 "o.FullPath = i.FullPath"),
            "1");
  EXPECT_EQ(Cell("select count(*) from ObjectTable o, VideoTable v where o.id = v.id and "
                 "o.FullPath = v.FullPath"),
            "1");
  EXPECT_EQ(Cell("select count(*) from ObjectTable o, AudioTable a where o.id = a.id and "
                 "o.FullPath = a.FullPath"),
            "1");
}

TEST_F(ScanTest, HangsEveryRowUnderItsDirectory) {
  Write("sub/deeper/a.jpg", MakeJpeg());
  QuietScan();
  EXPECT_EQ(Select("select p.FullPath, c.FullPath from ObjectTable c join ObjectTable p on "
                   "c.parentID = p.id order by c.FullPath"),
            (Rows{{card_, InCard("sub")},
                  {InCard("sub"), InCard("sub/deeper")},
                  {InCard("sub/deeper"), InCard("sub/deeper/a.jpg")}}));
  EXPECT_EQ(Cell("select parentID from ObjectTable where FullPath = '" + card_ + "'"), "0");
}

TEST_F(ScanTest, NamesTheResourceAfterCounterAndExtension) {
  Write("a.jpg", MakeJpeg());
  QuietScan();
  const std::string uri = Cell("select uri from ImageTable");
  EXPECT_EQ(uri.substr(0, 4), "/orx");
  EXPECT_EQ(uri.substr(uri.size() - 4), ".jpg");
}

TEST_F(ScanTest, LogsItsStepsInOrder) {
  Write("sub/a.jpg", MakeJpeg());
  QuietScan();
  const std::string bar(45, '=');
  std::vector<std::string> steps;
  for (const std::string& message : platform().Messages("DLNA"))
    if (message[0] == '=' || message.find("Scan") != std::string::npos) steps.push_back(message);
  EXPECT_THAT(steps, ElementsAre(bar, "Scanning Directory is [" + card_ + "], to db (" + db_ + ")",
                                 bar, "[DirectoryScanner::ScanDir] Before Invalidate",
                                 "[DirectoryScanner::_ScanDir] Start Scanning Directories",
                                 "[DirectoryScanner::_ScanDir] DIRECTORY '" + InCard("sub") + "'",
                                 "[DirectoryScanner::_ScanDir] Start Scanning Directories"));
  for (const LogLine& line : platform().log)
    if (line.message == bar) {
      EXPECT_EQ(line.priority, 4);
    }
}

TEST_F(ScanTest, DestroysTheDatabaseManagerAtItsEnd) {
  QuietScan();
  EXPECT_EQ(DataBaseMgr::mpThisInstance, nullptr);
  EXPECT_EQ(DataBaseMgr::ppDataBase, nullptr);
}

TEST_F(ScanTest, SaysWhenTheDatabaseCannotBeOpened) {
  int status = 0;
  testing::internal::CaptureStderr();
  scanner()->ScanDir(card_.c_str(), "/nonexistent/folder/media.db", &status);
  const std::string errors = testing::internal::GetCapturedStderr();
  const LogLine* line = platform().Find("Error : OpenDB fail");
  ASSERT_NE(line, nullptr);
  EXPECT_EQ(line->priority, 6);
  EXPECT_NE(errors.find("\x1b[31mError : OpenDB fail\x1b[m\n"), std::string::npos);
  EXPECT_FALSE(platform().Logged("[DirectoryScanner::ScanDir] Before Invalidate"));
  EXPECT_EQ(status, 0);
  EXPECT_EQ(DataBaseMgr::mpThisInstance, nullptr);
}

TEST_F(ScanTest, ANullDatabasePathFailsToOpen) {
  testing::internal::CaptureStderr();
  scanner()->ScanDir(card_.c_str(), nullptr, nullptr);
  testing::internal::GetCapturedStderr();
  EXPECT_TRUE(platform().Logged("Error : OpenDB fail"));
}

TEST_F(ScanTest, ANullDirectoryOpensBeginsAndCommitsOnly) {
  int status = 0;
  scanner()->ScanDir(nullptr, db_.c_str(), &status);
  EXPECT_EQ(platform().Messages("DLNA").back(),
            "[DirectoryScanner::_ScanDir] Start Scanning Directories");
  EXPECT_EQ(status, 0);
  EXPECT_EQ(Cell("select count(*) from ObjectTable"), "0");
}

TEST_F(ScanTest, WorksWithoutAStatus) {
  Write("a.jpg", MakeJpeg());
  testing::internal::CaptureStderr();
  scanner()->ScanDir(card_.c_str(), db_.c_str(), nullptr);
  testing::internal::GetCapturedStderr();
  EXPECT_THAT(Paths("ImageTable"), ElementsAre(InCard("a.jpg")));
}

TEST_F(ScanTest, ASecondScanChangesNothing) {
  Write("sub/a.jpg", MakeJpeg());
  Write("sub/b.mp4", SmallFilm());
  Write("c.jpg", MakeJpeg());
  QuietScan();
  const std::string before = Everything();
  EXPECT_EQ(QuietScan(), 0);
  EXPECT_EQ(Everything(), before);
}

TEST_F(ScanTest, SoundRowsAreMadeAnewByEveryScan) {
  // The purge knows the sizes of pictures and films only; any other file counts as changed.
  Write("c.m4a", SmallSong());
  QuietScan();
  EXPECT_EQ(QuietScan(), 1);
  EXPECT_THAT(Paths("AudioTable"), ElementsAre(InCard("c.m4a")));
  EXPECT_EQ(Cell("select count(*) from ObjectTable where class = 2"), "1");
}

TEST_F(ScanTest, AddsANewFile) {
  Write("a.jpg", MakeJpeg());
  QuietScan();
  Write("b.jpg", MakeJpeg());
  EXPECT_EQ(QuietScan(), 1);
  EXPECT_THAT(Paths("ImageTable"), ElementsAre(InCard("a.jpg"), InCard("b.jpg")));
}

TEST_F(ScanTest, RemovesAVanishedFile) {
  const std::string gone = Write("a.jpg", MakeJpeg());
  Write("b.mp4", SmallFilm());
  QuietScan();
  unlink(gone.c_str());
  QuietScan();
  EXPECT_THAT(Paths("ImageTable"), IsEmpty());
  EXPECT_THAT(Paths("ObjectTable"), ElementsAre(card_, InCard("b.mp4")));
}

TEST_F(ScanTest, ReplacesAFileOfAnotherSize) {
  Write("a.jpg", MakeJpeg(640, 480));
  QuietScan();
  const std::string before = Cell("select id from ImageTable");
  const std::string changed = orx_test::JpegBuilder().Size(800, 600).Padding(500).Build();
  Write("a.jpg", changed);
  EXPECT_EQ(QuietScan(), 1);
  EXPECT_EQ(Select("select size, Width from ImageTable"),
            (Rows{{std::to_string(changed.size()), "800"}}));
  EXPECT_EQ(Cell("select count(*) from ObjectTable where class = 1"), "1");
}

TEST_F(ScanTest, DoesNotParseAKnownFileAgainThoughItsContentChanged) {
  const std::string content = MakeJpeg(640, 480);
  Write("a.jpg", content);
  QuietScan();
  std::string changed = MakeJpeg(320, 240);
  ASSERT_EQ(changed.size(), content.size());
  Write("a.jpg", changed);
  EXPECT_EQ(QuietScan(), 0);
  EXPECT_EQ(Cell("select Width from ImageTable"), "640");
}

TEST_F(ScanTest, RemovesAVanishedSubdirectory) {
  Write("sub/a.jpg", MakeJpeg());
  Write("keep/b.jpg", MakeJpeg());
  QuietScan();
  std::filesystem::remove_all(InCard("sub"));
  QuietScan();
  EXPECT_THAT(Paths("ImageTable"), ElementsAre(InCard("keep/b.jpg")));
  EXPECT_THAT(Paths("ObjectTable"), ElementsAre(card_, InCard("keep"), InCard("keep/b.jpg")));
}

TEST_F(ScanTest, RemovesEverythingWhenTheDirectoryItselfVanished) {
  Write("sub/a.jpg", MakeJpeg());
  Write("b.jpg", MakeJpeg());
  QuietScan();
  std::filesystem::remove_all(card_);
  QuietScan();
  EXPECT_TRUE(platform().Logged("_ScanDir : '" + card_ + "' : Not Directory"));
  EXPECT_THAT(Paths("ImageTable"), IsEmpty());
}

TEST_F(ScanTest, AFileOfTheTopDirectorySetsTheStatus) {
  QuietScan();
  Write("a.jpg", MakeJpeg());
  EXPECT_EQ(QuietScan(), 1);
}

TEST_F(ScanTest, AFileOfASubdirectoryDoesNotSetTheStatus) {
  Write("sub/a.jpg", MakeJpeg());
  QuietScan();
  Write("sub/b.jpg", MakeJpeg());
  EXPECT_EQ(QuietScan(), 0);
  EXPECT_THAT(Paths("ImageTable"), ElementsAre(InCard("sub/a.jpg"), InCard("sub/b.jpg")));
}

TEST_F(ScanTest, TheStatusIsNeverReset) {
  QuietScan();
  int status = 1;
  scanner()->ScanDir(card_.c_str(), db_.c_str(), &status);
  EXPECT_EQ(status, 1);
}

TEST_F(ScanTest, LogsAFileThatNoParserTakes) {
  Write("a.jpg", "no picture");
  QuietScan();
  EXPECT_TRUE(
      platform().Logged("[DirectoryScanner::HandleFile] Media file [a.jpg] parsing failed"));
  EXPECT_EQ(Cell("select count(*) from ObjectTable where class != 0"), "0");
}

TEST_F(ScanTest, LogsAFileThatTheServerDoesNotServe) {
  scanner()->SetDlnaProfiles("http-get:*:audio/mpeg:*");
  Write("a.jpg", MakeJpeg());
  QuietScan();
  EXPECT_TRUE(platform().Logged("[DirectoryScanner::HandleFile] Unsupported media file [a.jpg]"));
  EXPECT_EQ(Cell("select count(*) from ObjectTable where class != 0"), "0");
}

TEST_F(ScanTest, SkipsHiddenEntries) {
  Write(".hidden.jpg", MakeJpeg());
  Write(".folder/a.jpg", MakeJpeg());
  QuietScan();
  EXPECT_THAT(Paths("ObjectTable"), ElementsAre(card_));
}

TEST_F(ScanTest, ACancelBeforeTheScanReadsNoDirectoryButCommits) {
  Write("a.jpg", MakeJpeg());
  scanner()->CancelScanDirectory();
  EXPECT_EQ(QuietScan(), 0);
  EXPECT_TRUE(platform().Logged("[DirectoryScanner::ScanDir] Before Invalidate"));
  EXPECT_FALSE(platform().Logged("[DirectoryScanner::_ScanDir] Start Scanning Directories"));
  EXPECT_EQ(Cell("select count(*) from ObjectTable"), "0");
}

TEST_F(ScanTest, ACancelledScanStillPurges) {
  const std::string gone = Write("a.jpg", MakeJpeg());
  QuietScan();
  unlink(gone.c_str());
  scanner()->CancelScanDirectory();
  QuietScan();
  EXPECT_EQ(Cell("select count(*) from ImageTable"), "0");
}

TEST_F(ScanTest, ACancelDuringTheScanKeepsWhatWasDone) {
  for (int i = 0; i < 10; ++i) Write("a" + std::to_string(i) + ".jpg", MakeJpeg());
  static int parsed;
  parsed = 0;
  platform().onLog = [](const LogLine& line) {
    if (line.message.find("Parse Success") != std::string::npos && ++parsed == 3)
      DirectoryScanner::GetInstance()->CancelScanDirectory();
  };
  QuietScan();
  platform().onLog = nullptr;
  EXPECT_EQ(Cell("select count(*) from ImageTable"), "3");
  DirectoryScanner::DestroyInstance();
  scanner()->SetDlnaProfiles(pProfiles);
  QuietScan();
  EXPECT_EQ(Cell("select count(*) from ImageTable"), "10");
}

// A directory below the card whose path has exactly `length` characters.
std::string DirectoryOfLength(const std::string& base, size_t length) {
  std::string path = base;
  while (path.size() < length) {
    const size_t left = length - path.size() - 1;
    const size_t part = left > 252 ? 200 : left;
    path += "/" + std::string(part, 'd');
  }
  std::filesystem::create_directories(path);
  return path;
}

TEST_F(ScanTest, ScansADirectoryPathOf510Characters) {
  const std::string dir = DirectoryOfLength(card_, 510);
  EXPECT_EQ(dir.size(), 510u);
  QuietScan();
  EXPECT_THAT(Paths("ObjectTable"), Contains(dir));
  EXPECT_FALSE(platform().Logged("[DirectoryScanner::_ScanDir] Directory path is too big"));
}

TEST_F(ScanTest, RefusesADirectoryPathOf511CharactersAfterInsertingItsRow) {
  const std::string dir = DirectoryOfLength(card_, 511);
  std::filesystem::create_directories(dir + "/below");
  QuietScan();
  EXPECT_THAT(Paths("ObjectTable"), Contains(dir));
  EXPECT_THAT(Paths("ObjectTable"), testing::Not(Contains(dir + "/below")));
  EXPECT_TRUE(platform().Logged("[DirectoryScanner::_ScanDir] Directory path is too big"));
}

TEST_F(ScanTest, SkipsAPathThatDoesNotFitAndGoesOn) {
  const std::string dir = DirectoryOfLength(card_, 500);
  std::filesystem::create_directories(dir);
  // Made through the directory: the whole paths are longer than the library's buffer.
  ASSERT_EQ(chdir(dir.c_str()), 0);
  for (const char* name : {"12345678901.jpg", "1.jpg"}) {
    FILE* file = fopen(name, "wb");
    const std::string jpeg = MakeJpeg();
    fwrite(jpeg.data(), 1, jpeg.size(), file);
    fclose(file);
  }
  ASSERT_EQ(chdir("/"), 0);
  QuietScan();
  EXPECT_TRUE(
      platform().Logged("[DirectoryScanner::_ScanDir] Path of '12345678901.jpg' is too big"));
  EXPECT_THAT(Paths("ImageTable"), ElementsAre(dir + "/1.jpg"));
}

TEST_F(ScanTest, DoesNotEnterADirectoryThatIsItsOwnAncestor) {
  Write("sub/a.jpg", MakeJpeg());
  ASSERT_EQ(symlink("..", InCard("sub/up").c_str()), 0);
  ASSERT_EQ(symlink(card_.c_str(), InCard("sub/again").c_str()), 0);
  QuietScan();
  EXPECT_THAT(Paths("ObjectTable"), ElementsAre(card_, InCard("sub"), InCard("sub/a.jpg")));
}

TEST_F(ScanTest, FollowsALinkToADirectoryElsewhere) {
  temp_.Write("elsewhere/a.jpg", MakeJpeg());
  ASSERT_EQ(symlink(temp_.Path("elsewhere").c_str(), InCard("link").c_str()), 0);
  QuietScan();
  EXPECT_THAT(Paths("ImageTable"), ElementsAre(InCard("link/a.jpg")));
}

TEST_F(ScanTest, IgnoresADanglingLinkAndAFifo) {
  Write("a.jpg", MakeJpeg());
  ASSERT_EQ(symlink("nowhere.jpg", InCard("b.jpg").c_str()), 0);
  ASSERT_EQ(mkfifo(InCard("c.jpg").c_str(), 0600), 0);
  QuietScan();
  EXPECT_THAT(Paths("ImageTable"), ElementsAre(InCard("a.jpg")));
}

TEST_F(ScanTest, RefusesNamesWithADoubleQuoteAndRecordsTheirNeighbours) {
  Write("a\"b.jpg", MakeJpeg());
  Write("it's.jpg", MakeJpeg());
  QuietScan();
  EXPECT_THAT(Paths("ImageTable"), ElementsAre(InCard("it's.jpg")));
  EXPECT_THAT(Paths("ObjectTable"), ElementsAre(card_, InCard("it's.jpg")));
}

TEST_F(ScanTest, TakesADirectoryWithATrailingSlash) {
  Write("a.jpg", MakeJpeg());
  testing::internal::CaptureStderr();
  scanner()->ScanDir((card_ + "/").c_str(), db_.c_str(), nullptr);
  testing::internal::GetCapturedStderr();
  EXPECT_THAT(Paths("ImageTable"), ElementsAre(InCard("a.jpg")));
}

TEST_F(ScanTest, TakesARelativeDirectory) {
  Write("sub/a.jpg", MakeJpeg());
  ASSERT_EQ(chdir(temp_.path().c_str()), 0);
  testing::internal::CaptureStderr();
  int status = 0;
  scanner()->ScanDir("card", db_.c_str(), &status);
  testing::internal::GetCapturedStderr();
  ASSERT_EQ(chdir("/"), 0);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(Cell("select parentID from ObjectTable where FullPath = 'card'"), "0");
  EXPECT_THAT(Paths("ObjectTable"), ElementsAre("card", "card/sub", "card/sub/a.jpg"));
}

TEST_F(ScanTest, AFileInPlaceOfTheDirectoryIsNotRecorded) {
  const std::string path = Write("a.jpg", MakeJpeg());
  int status = 0;
  scanner()->ScanDir(path.c_str(), db_.c_str(), &status);
  EXPECT_TRUE(platform().Logged("_ScanDir : '" + path + "' : Not Directory"));
  EXPECT_EQ(status, 0);
  EXPECT_THAT(Paths("ObjectTable"), IsEmpty());
}

TEST_F(ScanTest, ADirectoryThatBecameAFileLeavesNoRowsBelowIt) {
  Write("sub/a.jpg", MakeJpeg());
  QuietScan();
  std::filesystem::remove_all(InCard("sub"));
  Write("sub", "no directory");
  QuietScan();
  EXPECT_THAT(Paths("ImageTable"), IsEmpty());
  EXPECT_THAT(Paths("ObjectTable"), testing::Not(Contains(InCard("sub/a.jpg"))));
}

TEST_F(ScanTest, LogsOneFailureForTheContainerRowOfEachNewDirectory) {
  Write("one/a.jpg", MakeJpeg());
  Write("two/b.jpg", MakeJpeg());
  const auto errors = [] {
    int count = 0;
    for (const LogLine& line : platform().log)
      if (line.priority == 6) {
        ++count;
        EXPECT_EQ(
            line.message.rfind("[DataBaseMgr::ExecSqlStatmentNoValueReturn]\n\tquery : insert "
                               "into ContainerTable values (",
                               0),
            0u)
            << line.message;
      }
    return count;
  };
  QuietScan();
  EXPECT_EQ(errors(), 3);
  platform().log.clear();
  QuietScan();
  EXPECT_EQ(errors(), 0);
}

TEST_F(ScanTest, RecordsNamesOfEveryOtherKindAsTheyAreAndKnowsThemAgain) {
  const std::vector<std::string> names = {"%s%n%d.jpg",   "'); drop table ObjectTable; --.jpg",
                                          "FullPath.jpg", "a\\b.jpg",
                                          "a\nb.jpg",     "a%_b.jpg",
                                          " .jpg",        "\xff\xfe.jpg",
                                          "\x83\x5c.jpg", "caf\xc3\xa9.jpg",
                                          "?1.jpg",       "-.jpg"};
  std::vector<std::string> expected;
  for (const std::string& name : names) expected.push_back(Write("100%d'x/" + name, MakeJpeg()));
  QuietScan();
  EXPECT_THAT(Paths("ImageTable"), testing::UnorderedElementsAreArray(expected));
  expected.insert(expected.end(), {card_, InCard("100%d'x")});
  EXPECT_THAT(Paths("ObjectTable"), testing::UnorderedElementsAreArray(expected));

  const std::string before = Everything();
  EXPECT_EQ(QuietScan(), 0);
  EXPECT_EQ(Everything(), before);
}

TEST_F(ScanTest, ADirectoryWhoseRowCannotBeWrittenLeavesNothingOfItsTree) {
  Write("in\"ch/a.jpg", MakeJpeg());
  Write("in\"ch/sub/b.jpg", MakeJpeg());
  Write("other/c.jpg", MakeJpeg());
  QuietScan();
  QuietScan();
  EXPECT_THAT(Paths("ObjectTable"), ElementsAre(card_, InCard("other"), InCard("other/c.jpg")));
  EXPECT_THAT(Paths("ImageTable"), ElementsAre(InCard("other/c.jpg")));
}

TEST_F(ScanTest, WalksATreeToTheDeepestPathThatFits) {
  std::string deepest = card_;
  std::vector<std::string> expected = {card_};
  while (deepest.size() + 2 <= 510) expected.push_back(deepest += "/d");
  std::filesystem::create_directories(deepest);
  QuietScan();
  EXPECT_GT(expected.size(), 200u);
  EXPECT_EQ(Column("select FullPath from ObjectTable order by id"), expected);
  EXPECT_EQ(Cell("select count(*) from ObjectTable child, ObjectTable above where child.parentID = "
                 "above.id and child.FullPath = above.FullPath || '/d'"),
            std::to_string(expected.size() - 1));
  EXPECT_EQ(QuietScan(), 0);
}

}  // namespace

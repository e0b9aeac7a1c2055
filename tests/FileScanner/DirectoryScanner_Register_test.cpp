// The registration of files: the four handlers and ParseAndRegisterFile.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <string>
#include <vector>

#include "OSAL/TextPtr.h"
#include "support/JpegBuilder.h"
#include "support/Mp4Builder.h"
#include "support/ScannerFixture.h"

namespace {

using orx_test::LogLine;
using orx_test::MakeJpeg;
using orx_test::Rows;
using orx_test::SmallFilm;
using orx_test::SmallSong;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

std::string Today() {
  const time_t now = time(nullptr);
  char text[12];
  struct tm local;
  strftime(text, sizeof text, "%Y-%m-%d", localtime_r(&now, &local));
  return text;
}

class RegisterTest : public orx_test::ScannerTest {
 protected:
  using Handler = int (DirectoryScanner::*)(const char*, const char*, const char*, const char*, int,
                                            int, int);
  int Call(Handler handler, const std::string& name, int sortIndex = 1000001) {
    testing::internal::CaptureStderr();
    const int result = (scanner()->*handler)(card_.c_str(), "5", name.c_str(), InCard(name).c_str(),
                                             3, sortIndex, 1);
    errors_ = testing::internal::GetCapturedStderr();
    return result;
  }
  int HandleFile(const std::string& name) {
    return scanner()->HandleFile(card_.c_str(), "5", name.c_str(), InCard(name).c_str());
  }
  void ExpectInfo(const std::string& message) {
    const LogLine* line = platform().Find(message);
    ASSERT_NE(line, nullptr) << message;
    EXPECT_EQ(line->priority, 4);
  }
  std::string errors_;
};

// ---- HandleFile ----

TEST_F(RegisterTest, HandleFileWritesObjectAndMediaRow) {
  Open();
  Write("ORXA0001.JPG", MakeJpeg(640, 480));
  EXPECT_EQ(HandleFile("ORXA0001.JPG"), 1);
  EXPECT_EQ(Select("select class, parentID, FullPath from ObjectTable"),
            (Rows{{"1", "5", InCard("ORXA0001.JPG")}}));
  EXPECT_EQ(Select("select Title, DLNAProfile, MimeType from ImageTable"),
            (Rows{{"ORXA0001", "JPEG_SM", "image/jpeg"}}));
  EXPECT_THAT(Cell("select uri from ImageTable"), MatchesRegex("/orx0001[0-9]+\\.JPG"));
}

TEST_F(RegisterTest, HandleFileLogsAFileThatNoParserTakes) {
  Open();
  Write("a.jpg", "no picture");
  EXPECT_EQ(HandleFile("a.jpg"), 0);
  ExpectInfo("[DirectoryScanner::HandleFile] Media file [a.jpg] parsing failed");
  EXPECT_EQ(Cell("select count(*) from ObjectTable"), "0");
}

TEST_F(RegisterTest, HandleFileLogsAFileThatTheServerDoesNotServe) {
  Open();
  scanner()->SetDlnaProfiles("http-get:*:audio/mpeg:*");
  Write("a.jpg", MakeJpeg());
  EXPECT_EQ(HandleFile("a.jpg"), 0);
  ExpectInfo("[DirectoryScanner::HandleFile] Unsupported media file [a.jpg]");
  EXPECT_EQ(Cell("select count(*) from ObjectTable"), "0");
}

TEST_F(RegisterTest, HandleFileNamesAFileWithoutExtensionBin) {
  Open();
  Write("noext", MakeJpeg());
  EXPECT_EQ(HandleFile("noext"), 1);
  EXPECT_THAT(Cell("select uri from ImageTable"), MatchesRegex(".*\\.bin"));
}

TEST_F(RegisterTest, HandleFileLogsANameWithConversionsAsItIs) {
  Open();
  Write("100%s%n%d.jpg", "no picture");
  EXPECT_EQ(HandleFile("100%s%n%d.jpg"), 0);
  ExpectInfo("[DirectoryScanner::HandleFile] Media file [100%s%n%d.jpg] parsing failed");
}

TEST_F(RegisterTest, EveryHandlerRefusesNullTexts) {
  Open();
  EXPECT_EQ(scanner()->HandleFile(nullptr, nullptr, nullptr, nullptr), 0);
  ExpectInfo("[DirectoryScanner::HandleFile] Media file [] parsing failed");
  EXPECT_EQ(scanner()->HandleFile2(nullptr, nullptr, nullptr, nullptr, 0, 0, 0), 0);
  ExpectInfo("[DirectoryScanner::HandleFile] Media file [] parsing failed.");
  testing::internal::CaptureStderr();
  EXPECT_EQ(scanner()->HandleFileXQ(nullptr, nullptr, nullptr, nullptr, 0, 0, 0), 0);
  EXPECT_EQ(scanner()->HandleFileAutoBackup(nullptr, nullptr, nullptr, nullptr, 0, 0, 0), 0);
  testing::internal::GetCapturedStderr();
  ExpectInfo("[DirectoryScanner::HandleFileAutoBackup] Failed to extract date and size []");
  EXPECT_EQ(Cell("select count(*) from ObjectTable"), "0");
}

TEST_F(RegisterTest, NothingIsParsedWithoutAParserChain) {
  const std::string path = Write("a.jpg", MakeJpeg());
  Open();
  scanner()->_CleanUpRelations();
  EXPECT_EQ(HandleFile("a.jpg"), 0);
  EXPECT_EQ(Call(&DirectoryScanner::HandleFile2, "a.jpg"), 0);
  EXPECT_EQ(scanner()->ParseAndGetFileInfo(path.c_str()), nullptr);
  EXPECT_EQ(scanner()->ParseAndRegisterFile(db_.c_str(), path.c_str(), nullptr), -1);
  EXPECT_EQ(Cell("select count(*) from ObjectTable"), "0");
}

// ---- HandleFile2 ----

TEST_F(RegisterTest, HandleFile2TakesThePlatformsAttributesAndTheSortIndex) {
  Open();
  platform().fileAttributeSucceeds = true;
  platform().fileAttribute.nFileSize = 1234;
  platform().fileAttribute.nWidth = 640;
  platform().fileAttribute.nHeight = 480;
  snprintf(platform().fileAttribute.szDate, sizeof platform().fileAttribute.szDate, "2026-11-20");
  Write("ORXA0001.JPG", MakeJpeg(2000, 1000));
  EXPECT_EQ(Call(&DirectoryScanner::HandleFile2, "ORXA0001.JPG", 1000007), 1);
  EXPECT_EQ(Select("select date, size, Width, Height, SortIndex, DLNAProfile from ImageTable"),
            (Rows{{"2026-11-20", "1234", "640", "480", "1000007", "JPEG_SM"}}));
  EXPECT_THAT(Cell("select uri from ImageTable"), MatchesRegex("/orx0001[0-9]{6}1000007\\.JPG"));
  EXPECT_THAT(Cell("select Thumbnailuri from ImageTable"),
              MatchesRegex("/orxthumb0002[0-9]{6}1000007\\.JPG"));
}

TEST_F(RegisterTest, HandleFile2LogsAFileThatNoParserTakes) {
  Open();
  Write("a.mp3", "ID3");
  EXPECT_EQ(Call(&DirectoryScanner::HandleFile2, "a.mp3"), 0);
  ExpectInfo("[DirectoryScanner::HandleFile] Media file [a.mp3] parsing failed.");
}

TEST_F(RegisterTest, HandleFile2LogsAFileThatTheServerDoesNotServe) {
  Open();
  scanner()->SetDlnaProfiles("http-get:*:audio/mpeg:*");
  platform().fileAttributeSucceeds = true;
  platform().fileAttribute.nWidth = 640;
  platform().fileAttribute.nHeight = 480;
  Write("a.jpg", MakeJpeg());
  EXPECT_EQ(Call(&DirectoryScanner::HandleFile2, "a.jpg"), 0);
  ExpectInfo("[DirectoryScanner::HandleFile] Unsupported media file [a.jpg]");
  EXPECT_EQ(Cell("select count(*) from ObjectTable"), "0");
}

// ---- HandleFileXQ ----

class HandleFileXQTest : public RegisterTest {
 protected:
  HandleFileXQTest() {
    platform().sharingMode = 8;
    Open();
  }
  int HandleXQ(const std::string& name) { return Call(&DirectoryScanner::HandleFileXQ, name); }
};

TEST_F(HandleFileXQTest, RegistersAPictureWithSizeAndDateOfTheFileAlone) {
  const std::string content = MakeJpeg(2000, 1000);
  Write("ORXA0001.JPG", content);
  EXPECT_EQ(HandleXQ("ORXA0001.JPG"), 1);
  EXPECT_EQ(Select("select Title, class, date, size, parentID, FullPath, Height, Width, "
                   "VideoFrameRate, VideoBitrate, SortIndex from ObjectTable"),
            (Rows{{"ORXA0001", "1", Today(), std::to_string(content.size()), "5",
                   InCard("ORXA0001.JPG"), "0", "0", "0", "0", "1000001"}}));
  EXPECT_TRUE(platform().attributePaths.empty());
}

TEST_F(HandleFileXQTest, KeepsTheExtensionAsFoundInTheResourceName) {
  Write("ORXA0001.JPG", "x");
  HandleXQ("ORXA0001.JPG");
  EXPECT_THAT(Cell("select uri from ObjectTable"), MatchesRegex("/orx[0-9]+1000001\\.JPG"));
}

TEST_F(HandleFileXQTest, RegistersAFilmWithThePlatformsAttributes) {
  platform().videoAttributeSucceeds = true;
  platform().videoAttribute.nWidth = 1920;
  platform().videoAttribute.nHeight = 1080;
  platform().videoAttribute.dFrameRate = 29.97;
  Write("ORXA0002.MP4", "x");
  EXPECT_EQ(HandleXQ("ORXA0002.MP4"), 1);
  EXPECT_EQ(Select("select class, size, Height, Width, VideoFrameRate, Screennailuri from "
                   "ObjectTable"),
            (Rows{{"3", "1", "1080", "1920", "29.97", " "}}));
}

TEST_F(HandleFileXQTest, SkipsMpoAndOtherFilesSilently) {
  Write("a.mpo", "x");
  Write("b.txt", "x");
  EXPECT_EQ(HandleXQ("a.mpo"), 0);
  EXPECT_EQ(HandleXQ("b.txt"), 0);
  EXPECT_TRUE(platform().log.empty() ||
              platform().log.back().message.find("HandleFile") == std::string::npos);
  EXPECT_EQ(Cell("select count(*) from ObjectTable"), "0");
}

TEST_F(HandleFileXQTest, RefusesANameWithoutExtension) {
  Write("noext", "x");
  EXPECT_EQ(HandleXQ("noext"), 0);
  ExpectInfo("\n[DirectoryScanner::HandleFile] [noext] is not a valid file with extension ");
}

TEST_F(HandleFileXQTest, RefusesAFileThatCannotBeOpenedThoughThePlatformKnowsIt) {
  platform().fileAttributeSucceeds = true;
  EXPECT_EQ(HandleXQ("gone.jpg"), 0);
  EXPECT_TRUE(platform().Logged(
      "[DirectoryScanner::__ExtractFileSizeAndDateFromName] Cannot Open the File  [" +
      InCard("gone.jpg") + "]"));
  EXPECT_EQ(Cell("select count(*) from ObjectTable"), "0");
}

// ---- HandleFileAutoBackup ----

class HandleFileAutoBackupTest : public RegisterTest {
 protected:
  HandleFileAutoBackupTest() {
    platform().sharingMode = 6;
    Open();
  }
  int HandleBackup(const std::string& name) {
    return Call(&DirectoryScanner::HandleFileAutoBackup, name);
  }
};

TEST_F(HandleFileAutoBackupTest, RegistersPicturesOfEveryKindAndFilms) {
  for (const char* name : {"a.jpg", "b.JPEG", "c.MPO", "d.KRZ", "e.mp4"}) {
    Write(name, "x");
    EXPECT_EQ(HandleBackup(name), 1) << name;
  }
  EXPECT_EQ(Select("select Title, class, MimeType, SortIndex from ObjectTable order by id"),
            (Rows{{"a", "1", "image/jpeg", "1000001"},
                  {"b", "1", "image/jpeg", "1000001"},
                  {"c", "1", "image/jpeg", "1000001"},
                  {"d", "1", "image/jpeg", "1000001"},
                  {"e", "3", "video/mp4", "1000001"}}));
}

TEST_F(HandleFileAutoBackupTest, LogsAnExtensionInNoList) {
  Write("a.txt", "x");
  EXPECT_EQ(HandleBackup("a.txt"), 0);
  ExpectInfo(
      "[DirectoryScanner::HandleFileAutoBackup] Media file [a.txt] parsing failed.. Unsupported "
      "Extension ");
}

TEST_F(HandleFileAutoBackupTest, LogsAFileThatCannotBeOpened) {
  EXPECT_EQ(HandleBackup("gone.jpg"), 0);
  ExpectInfo("[DirectoryScanner::HandleFileAutoBackup] Failed to extract date and size [" +
             InCard("gone.jpg") + "]");
}

TEST_F(HandleFileAutoBackupTest, LogsANameWithoutExtension) {
  Write("noext", "x");
  EXPECT_EQ(HandleBackup("noext"), 0);
  ExpectInfo(
      "\n[DirectoryScanner::HandleFileAutoBackup] [noext] is not a valid file with extension ");
}

// ---- ParseAndRegisterFile ----

class ParseAndRegisterFileTest : public RegisterTest {
 protected:
  int Register(const char* path, const char* parent = nullptr) {
    testing::internal::CaptureStderr();
    const int type = scanner()->ParseAndRegisterFile(db_.c_str(), path, parent);
    errors_ = testing::internal::GetCapturedStderr();
    return type;
  }
};

TEST_F(ParseAndRegisterFileTest, ReturnsTheMediaTypeAndWritesTheRow) {
  EXPECT_EQ(Register(Write("a.jpg", MakeJpeg()).c_str()), 1);
  EXPECT_EQ(Register(Write("b.m4a", SmallSong()).c_str()), 2);
  EXPECT_EQ(Register(Write("c.mp4", SmallFilm()).c_str()), 3);
  EXPECT_EQ(Select("select class, parentID from ObjectTable order by id"),
            (Rows{{"1", "0"}, {"2", "0"}, {"3", "0"}}));
  EXPECT_TRUE(
      platform().Logged("[DirectoryScanner::ParseAndRegisterFile] File [" + InCard("a.jpg") + "]"));
  EXPECT_EQ(DataBaseMgr::mpThisInstance, nullptr);
}

TEST_F(ParseAndRegisterFileTest, SetsNoResourceNameWithoutAParent) {
  Register(Write("a.jpg", MakeJpeg()).c_str());
  EXPECT_EQ(Cell("select uri from ImageTable"), " ");
}

TEST_F(ParseAndRegisterFileTest, FillsTheRowOfAClientsItem) {
  Open()->ExecSqlStatmentNoValueReturn(
      "insert into ObjectTable values (9, 1, \"-\", \"0\", \"-\", 0, 0, 0)");
  DataBaseMgr::GetInstance()->ExecSqlStatmentNoValueReturn(
      "insert into ImageTable (id, class, date, size, FullPath) values (\"9\", 1, \"-\", 0, "
      "\"-\")");
  DataBaseMgr::DestroyInstance();
  EXPECT_EQ(Register(Write("a.jpg", MakeJpeg()).c_str(), "9"), 1);
  EXPECT_EQ(Select("select Title, FullPath from ImageTable where id = '9'"),
            (Rows{{"a", InCard("a.jpg")}}));
  EXPECT_THAT(Cell("select uri from ImageTable"), MatchesRegex("/orx0001[0-9]+\\.jpg"));
}

TEST_F(ParseAndRegisterFileTest, FailsForAnIdThatIsNotThere) {
  Open();
  DataBaseMgr::DestroyInstance();
  EXPECT_EQ(Register(Write("a.jpg", MakeJpeg()).c_str(), "9"), -1);
  EXPECT_TRUE(platform().Logged("File [" + InCard("a.jpg") + "] failed to register"));
  EXPECT_EQ(DataBaseMgr::mpThisInstance, nullptr);
}

TEST_F(ParseAndRegisterFileTest, FailsForAnIdThatIsNoNumberAndChangesNothing) {
  Open()->ExecSqlStatmentNoValueReturn(
      "insert into ObjectTable values (9, 1, \"-\", \"0\", \"-\", 0, 0, 0)");
  DataBaseMgr::GetInstance()->ExecSqlStatmentNoValueReturn(
      "insert into ImageTable (id, class, date, size, FullPath) values (\"9\", 1, \"-\", 0, "
      "\"-\")");
  DataBaseMgr::DestroyInstance();
  const std::string path = Write("a.jpg", MakeJpeg());
  for (const char* id : {"", "nine", "9\"", "9'", "9 or 1=1", "9\" or \"1\"=\"1",
                         "9; drop table ObjectTable", "%s%n"}) {
    EXPECT_EQ(Register(path.c_str(), id), -1) << id;
    ExpectInfo("[DataBaseMgr::UpdateDBForNewItem] Media class not found");
  }
  EXPECT_EQ(Select("select id, FullPath from ObjectTable"), (Rows{{"9", "-"}}));
  EXPECT_EQ(Select("select id, FullPath from ImageTable"), (Rows{{"9", "-"}}));
}

TEST_F(ParseAndRegisterFileTest, FailsForAnIdOfAnotherMediaType) {
  Open()->ExecSqlStatmentNoValueReturn(
      "insert into ObjectTable values (9, 3, \"-\", \"0\", \"-\", 0, 0, 0)");
  DataBaseMgr::DestroyInstance();
  EXPECT_EQ(Register(Write("a.jpg", MakeJpeg()).c_str(), "9"), -1);
  ExpectInfo("File [" + InCard("a.jpg") + "] failed to register");
}

TEST_F(ParseAndRegisterFileTest, RefusesAFileThatTheServerDoesNotServe) {
  scanner()->SetDlnaProfiles("http-get:*:audio/mpeg:*");
  EXPECT_EQ(Register(Write("a.jpg", MakeJpeg()).c_str()), -1);
  EXPECT_EQ(DataBaseMgr::mpThisInstance, nullptr);
}

TEST_F(ParseAndRegisterFileTest, FailsForAPathThatIsNullOrHasNoSlash) {
  EXPECT_EQ(Register(nullptr), -1);
  EXPECT_EQ(Register("a.jpg"), -1);
}

TEST_F(ParseAndRegisterFileTest, FailsForAFileThatNoParserTakesAndOpensNoDatabase) {
  EXPECT_EQ(Register(Write("a.jpg", "no picture").c_str()), -1);
  EXPECT_EQ(DataBaseMgr::mpThisInstance, nullptr);
  EXPECT_NE(access(db_.c_str(), F_OK), 0);
}

TEST_F(ParseAndRegisterFileTest, FailsWhenTheDatabaseCannotBeOpened) {
  const std::string path = Write("a.jpg", MakeJpeg());
  testing::internal::CaptureStderr();
  EXPECT_EQ(scanner()->ParseAndRegisterFile("/nonexistent/folder/db", path.c_str(), nullptr), -1);
  EXPECT_EQ(scanner()->ParseAndRegisterFile(nullptr, path.c_str(), nullptr), -1);
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(DataBaseMgr::mpThisInstance, nullptr);
}

}  // namespace

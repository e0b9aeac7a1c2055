// Single files: display records, and records built from the platform's attributes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <utime.h>

#include <cstring>
#include <memory>
#include <string>

#include "FileScanner/FileParser.h"
#include "FileScanner/FileParserFramework.h"
#include "FileScanner/ImageMetaData.h"
#include "FileScanner/MediaFileInfos.h"
#include "FileScanner/VideoMetaData.h"
#include "OSAL/TextPtr.h"
#include "support/JpegBuilder.h"
#include "support/Mp4Builder.h"
#include "support/OpenWatch.h"
#include "support/ScannerFixture.h"
#include "support/TimeZone.h"

namespace {

using orx::TextPtr;
using orx_test::LogLine;
using orx_test::MakeJpeg;
using orx_test::SmallFilm;
using orx_test::SmallSong;
using testing::MatchesRegex;

class FileInfoTest : public orx_test::ScannerTest {
 protected:
  ~FileInfoTest() override { MediaFileInfos::DestroyInstance(); }

  struct FreeInfo {
    void operator()(MediaFileDisplayInfo* info) const { FreeMediaFileDisplayInfo(info); }
  };
  std::unique_ptr<MediaFileDisplayInfo, FreeInfo> Display(const std::string& path) {
    return std::unique_ptr<MediaFileDisplayInfo, FreeInfo>(
        scanner()->ParseAndGetFileInfo(path.c_str()));
  }
  void SetPictureAttributes(int width, int height) {
    platform().fileAttributeSucceeds = true;
    platform().fileAttribute.nFileSize = 4321;
    platform().fileAttribute.nWidth = static_cast<unsigned short>(width);
    platform().fileAttribute.nHeight = static_cast<unsigned short>(height);
    strcpy(platform().fileAttribute.szDate, "2026-11-20");
  }
  void SetFilmAttributes() {
    platform().videoAttributeSucceeds = true;
    platform().videoAttribute.nFileSize = 5000000000LL;
    platform().videoAttribute.nWidth = 1920;
    platform().videoAttribute.nHeight = 1080;
    platform().videoAttribute.nDuration = 61500;
    platform().videoAttribute.dFrameRate = 29.97;
    strcpy(platform().videoAttribute.szDate, "2026-11-19");
  }
};

// ---- ParseAndGetFileInfo ----

TEST_F(FileInfoTest, DisplaysAPicture) {
  const std::string content = MakeJpeg(640, 480);
  const auto info = Display(Write("ORXA0001.JPG", content));
  ASSERT_NE(info, nullptr);
  EXPECT_STREQ(info->Title, "ORXA0001");
  EXPECT_STREQ(info->Date, "2026-11-21");
  EXPECT_EQ(info->ObjectType, 1);
  EXPECT_EQ(info->Duration, 0u);
  EXPECT_EQ(info->Artist, nullptr);
  EXPECT_EQ(info->AlbumTitle, nullptr);
  ASSERT_NE(info->Res, nullptr);
  EXPECT_STREQ(info->Res->Protocol, "http");
  EXPECT_STREQ(info->Res->MimeType, "image/jpeg");
  EXPECT_EQ(info->Res->Size, std::to_string(content.size()));
  EXPECT_STREQ(info->Res->Resolution, "640x480");
  EXPECT_EQ(info->Res->FrameRate, nullptr);
  EXPECT_EQ(info->Res->BitRate, nullptr);
  EXPECT_STREQ(info->Res->AdditionalInfo, "DLNA.ORG_PN=JPEG_SM;DLNA.ORG_OP=01");
}

TEST_F(FileInfoTest, DisplaysAFilm) {
  const auto info = Display(Write("film.mp4", SmallFilm()));
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->ObjectType, 3);
  EXPECT_STREQ(info->Res->FrameRate, "14");  // 14.99 frames per second, cut
  EXPECT_EQ(info->Res->Resolution, nullptr);
  EXPECT_EQ(info->Res->BitRate, nullptr);
  EXPECT_EQ(info->Artist, nullptr);
}

TEST_F(FileInfoTest, DisplaysASong) {
  orx_test::Mp4File song;
  song.video = false;
  song.brand = "M4A ";
  song.artist = "Ann";
  song.album = "Best";
  const auto info = Display(Write("song.m4a", MakeMp4(song)));
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->ObjectType, 2);
  EXPECT_STREQ(info->Artist, "Ann");
  EXPECT_STREQ(info->AlbumTitle, "Best");
  EXPECT_STREQ(info->Res->BitRate, "128500");
  EXPECT_STREQ(info->Res->MimeType, "audio/mp4");
  EXPECT_EQ(info->Res->Resolution, nullptr);
  EXPECT_EQ(info->Res->FrameRate, nullptr);
}

TEST_F(FileInfoTest, ReadsTheLeadingNumberOfTheDurationTextAsDuration) {
  orx_test::Mp4File film;
  film.timescale = 1;
  film.duration = 3 * 3600;  // the +500 of the reader adds eight minutes at this timescale
  const auto info = Display(Write("long.mp4", MakeMp4(film)));
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->Duration, 3u);  // "3:08:20"
}

// A parser whose records are of no known kind, with the wildcard profile.
class PlainParser : public FileParser {
 public:
  MediaMetaData* ParseFIle(const FileInfomation*) override { return new MediaMetaData; }
  MediaMetaData* ParseFIle2(const FileInfomation*) override { return nullptr; }
};

TEST_F(FileInfoTest, RefusesARecordOfNoKnownKind) {
  PlainParser parser;
  scanner()->_GetFMParserFramework()->_SetFirstFileParser(&parser);
  EXPECT_EQ(Display("/d/x.jpg"), nullptr);
  EXPECT_TRUE(
      platform().Logged("[ORXMediaPaser::ExtractMetadata] Invalid Content Type!!! /d/x.jpg"));
}

TEST_F(FileInfoTest, SaysTheWildcardWithoutAProfileName) {
  const auto info = Display(Write("a.jpg", MakeJpeg(0, 480)));
  ASSERT_NE(info, nullptr);
  EXPECT_STREQ(info->Res->AdditionalInfo, "DLNA.ORG_OP=01");
}

TEST_F(FileInfoTest, DisplayFailsForAPathWithoutSlash) {
  EXPECT_EQ(Display("a.jpg"), nullptr);
  EXPECT_TRUE(platform().Logged("[DirectoryScanner::ParseAndGetFileInfo] pTmpStr is NULL!!!"));
}

TEST_F(FileInfoTest, DisplayFailsForAPathWithoutFileName) {
  EXPECT_EQ(Display("/a/"), nullptr);
  EXPECT_TRUE(platform().Logged("pMedia File Path Name [/a/] Not Found File Name"));
}

TEST_F(FileInfoTest, DisplayFailsForANullPath) {
  EXPECT_EQ(scanner()->ParseAndGetFileInfo(nullptr), nullptr);
  EXPECT_TRUE(platform().Logged("pMedia File Path Not Found []"));
}

TEST_F(FileInfoTest, DisplayFailsForAFileThatNoParserTakes) {
  EXPECT_EQ(Display(Write("a.jpg", "no picture")), nullptr);
  EXPECT_EQ(Display(InCard("gone.jpg")), nullptr);
}

TEST_F(FileInfoTest, FreeingANullDisplayRecordIsHarmless) {
  FreeMediaFileDisplayInfo(nullptr);
  FreeMediaFileDisplayInfo(new MediaFileDisplayInfo());  // without resource part
}

// ---- ParseAndGetMediaFileInfo ----

TEST_F(FileInfoTest, FillsTheSingletonForAPicture) {
  SetPictureAttributes(1024, 768);
  MediaFileInfos* infos = scanner()->ParseAndGetMediaFileInfo("/d/ORXA0001.MPO");
  ASSERT_EQ(infos, MediaFileInfos::mpThisInstance);
  ASSERT_NE(infos, nullptr);
  EXPECT_STREQ(infos->getFilePath(), "/d/ORXA0001.MPO");
  EXPECT_STREQ(infos->getTitle(), "ORXA0001");
  EXPECT_STREQ(infos->getDate(), "2026-11-20");
  EXPECT_STREQ(infos->getMimeType(), "image/jpeg");
  EXPECT_STREQ(infos->getFileSize(), "4321");
  EXPECT_STREQ(infos->getDlnaProfile(), "JPEG_MED");
  EXPECT_EQ(infos->getObjectType(), 1);
  EXPECT_STREQ(infos->getResolution(), "1024x768");
  EXPECT_EQ(infos->getBitRate(), nullptr);
  EXPECT_EQ(infos->getDuration(), 0u);
  EXPECT_TRUE(platform().Logged(
      "[DirectoryScanner::ParseAndGetMediaFileInfo] Filled All Details to FileInfo"));
}

TEST_F(FileInfoTest, FillsTheSingletonForAFilm) {
  SetFilmAttributes();
  MediaFileInfos* infos = scanner()->ParseAndGetMediaFileInfo("/d/ORXA0002.MP4");
  ASSERT_NE(infos, nullptr);
  EXPECT_STREQ(infos->getMimeType(), "video/mp4");
  EXPECT_STREQ(infos->getFileSize(), "5000000000");
  EXPECT_STREQ(infos->getDlnaProfile(), "*");
  EXPECT_EQ(infos->getObjectType(), 3);
  EXPECT_EQ(infos->getDuration(), 61500u);
  EXPECT_STREQ(infos->getBitRate(), "29");
  EXPECT_STREQ(infos->getResolution(), "1920x1080");
}

TEST_F(FileInfoTest, RefusesAnExtensionInNoList) {
  EXPECT_EQ(scanner()->ParseAndGetMediaFileInfo("/d/a.krz"), nullptr);
  EXPECT_TRUE(platform().Logged(
      "[DirectoryScanner::ParseAndGetMediaFileInfo]  [a.krz] Extension not supported"));
  EXPECT_EQ(MediaFileInfos::mpThisInstance, nullptr);
}

TEST_F(FileInfoTest, RefusesANameWithoutExtension) {
  for (const char* path : {"/d.x/noext", "noslash.jpg"}) {
    EXPECT_EQ(scanner()->ParseAndGetMediaFileInfo(path), nullptr);
    EXPECT_TRUE(platform().Logged("\n[DirectoryScanner::ParseAndGetMediaFileInfo] [" +
                                  std::string(path) + "] is not a valid file with extension "));
  }
  EXPECT_EQ(scanner()->ParseAndGetMediaFileInfo(nullptr), nullptr);
}

TEST_F(FileInfoTest, AFailedFilmAttributeCallFillsZeros) {
  MediaFileInfos* infos = scanner()->ParseAndGetMediaFileInfo("/d/a.avi");
  ASSERT_NE(infos, nullptr);
  EXPECT_STREQ(infos->getFileSize(), "0");
  EXPECT_STREQ(infos->getResolution(), "0x0");
  EXPECT_STREQ(infos->getBitRate(), "0");
  EXPECT_EQ(infos->getDuration(), 0u);
}

// ---- __ExtractFileSizeAndDateFromName ----

class SizeAndDateTest : public FileInfoTest {
 protected:
  int Extract(const std::string& path) {
    testing::internal::CaptureStderr();
    const int result = scanner()->__ExtractFileSizeAndDateFromName(path.c_str(), &size_, date_);
    errors_ = testing::internal::GetCapturedStderr();
    return result;
  }
  void SetModified(const std::string& path, time_t when) {
    const utimbuf times = {when, when};
    ASSERT_EQ(utime(path.c_str(), &times), 0);
  }
  long long size_ = -1;
  char date_[12] = "";
  std::string errors_;
};

TEST_F(SizeAndDateTest, ReadsTheFilesStatus) {
  const std::string path = Write("a.jpg", "12345");
  SetModified(path, 1000000000);  // 2001-09-09
  EXPECT_EQ(Extract(path), 1);
  EXPECT_EQ(size_, 5);
  EXPECT_STREQ(date_, "2001-09-09");
}

TEST_F(SizeAndDateTest, FailsForAFileThatCannotBeOpened) {
  EXPECT_EQ(Extract("/nonexistent.jpg"), 0);
  const LogLine* line = platform().Find(
      "[DirectoryScanner::__ExtractFileSizeAndDateFromName] Cannot Open the File  "
      "[/nonexistent.jpg]");
  ASSERT_NE(line, nullptr);
  EXPECT_EQ(line->priority, 6);
  EXPECT_NE(errors_, "");
}

TEST_F(SizeAndDateTest, FailsForAFifoWithoutOpeningIt) {
  const std::string path = InCard("fifo.jpg");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const orx_test::OpenWatch watch(path);
  EXPECT_EQ(Extract(path), 0);
  EXPECT_FALSE(watch.Opened());
}

TEST_F(SizeAndDateTest, FollowsTheZoneThatTheHostSetMeanwhile) {
  const orx_test::TimeZone before("UTC0");
  const std::string path = Write("a.jpg", "x");
  SetModified(path, 1700000000);  // 22:13 UTC
  EXPECT_EQ(Extract(path), 1);
  EXPECT_STREQ(date_, "2023-11-14");
  setenv("TZ", "JST-9", 1);
  EXPECT_EQ(Extract(path), 1);
  EXPECT_STREQ(date_, "2023-11-15");
}

TEST_F(SizeAndDateTest, FailsForAFileOfNoTime) {
  const std::string path = Write("a.jpg", "x");
  SetModified(path, -1);
  EXPECT_EQ(Extract(path), 0);
  EXPECT_TRUE(platform().Logged(
      "[DirectoryScanner::__ExtractFileSizeAndDateFromName] Failed to get the date"));
}

TEST_F(SizeAndDateTest, FailsForNull) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(scanner()->__ExtractFileSizeAndDateFromName(nullptr, &size_, date_), 0);
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(scanner()->__ExtractFileSizeAndDateFromName("/a", nullptr, date_), 0);
  EXPECT_EQ(scanner()->__ExtractFileSizeAndDateFromName("/a", &size_, nullptr), 0);
}

// ---- records from the platform ----

TEST_F(FileInfoTest, AnEmptyImageRecordIsPreparedForServedPreviews) {
  const std::unique_ptr<ImageMetaData> image(scanner()->__ExtractImageMetadata());
  ASSERT_NE(image, nullptr);
  EXPECT_THAT(image->GetThumbnailURI(), MatchesRegex("/orxthumb0001[0-9]+\\.jpg"));
  EXPECT_THAT(image->GetScreennailURI(), MatchesRegex("/orxscreen0002[0-9]+\\.jpg"));
  EXPECT_EQ(image->GetThumbnailWidth(), 160);
  EXPECT_EQ(image->GetThumbnailHeight(), 120);
  EXPECT_EQ(image->GetThumbnailLength(), 1);
  EXPECT_EQ(image->GetThumbnailOffset(), 1);
  EXPECT_EQ(image->GetScreennailLength(), 1);
  EXPECT_EQ(image->GetScreennailOffset(), 1);
  EXPECT_EQ(image->GetScreennailWidth(), 0);
  EXPECT_EQ(image->GetType(), 0u);
  EXPECT_EQ(image->GetTitle(), nullptr);
}

TEST_F(FileInfoTest, AnImageRecordTakesThePlatformsAttributes) {
  SetPictureAttributes(641, 480);
  const std::unique_ptr<ImageMetaData> image(scanner()->__ExtractImageMetadata("/d/ORXA0001.JPG"));
  ASSERT_NE(image, nullptr);
  EXPECT_TRUE(
      platform().Logged("[DirectoryScanner::__ExtractImageMetadata] Parsing [/d/ORXA0001.JPG]"));
  EXPECT_STREQ(image->GetDate(), "2026-11-20");
  EXPECT_EQ(image->GetSize(), 4321);
  EXPECT_EQ(image->GetWidth(), 641);
  EXPECT_EQ(image->GetHeight(), 480);
  EXPECT_STREQ(image->GetDLNAProfile(), "JPEG_MED");
  EXPECT_EQ(image->GetType(), 1u);
  EXPECT_STREQ(image->GetMimeType(), "image/jpeg");
  EXPECT_STREQ(image->GetTitle(), "ORXA0001");
  EXPECT_EQ(image->GetThumbnailWidth(), 160);
  EXPECT_EQ(image->GetThumbnailHeight(), 120);
  EXPECT_EQ(image->GetThumbnailLength(), 1);
  EXPECT_EQ(image->GetThumbnailOffset(), 1);
}

TEST_F(FileInfoTest, AnImageRecordWithoutAttributesTakesTheSizeOfTheFile) {
  platform().fileSizeFromDisk = false;
  platform().fileSize = 77;
  testing::internal::CaptureStderr();
  const std::unique_ptr<ImageMetaData> image(scanner()->__ExtractImageMetadata("/d/a.jpg"));
  testing::internal::GetCapturedStderr();
  ASSERT_NE(image, nullptr);
  const LogLine* line =
      platform().Find("[FileParser_JPEG::__ExtractMetadata2] UILWifi_getFileAttribute Error!!!");
  ASSERT_NE(line, nullptr);
  EXPECT_EQ(line->priority, 6);
  EXPECT_EQ(image->GetSize(), 77);
  EXPECT_STREQ(image->GetDate(), "0000-00-00");
  EXPECT_EQ(image->GetWidth(), 0);
  EXPECT_STREQ(image->GetDLNAProfile(), "*");
}

TEST_F(FileInfoTest, ADateThatFillsItsFieldIsReadBounded) {
  SetPictureAttributes(1, 1);
  memset(platform().fileAttribute.szDate, 'd', sizeof platform().fileAttribute.szDate);
  const std::unique_ptr<ImageMetaData> image(scanner()->__ExtractImageMetadata("/d/a.jpg"));
  EXPECT_EQ(image->GetDate(), std::string(20, 'd'));
  SetFilmAttributes();
  memset(platform().videoAttribute.szDate, 'e', sizeof platform().videoAttribute.szDate);
  const std::unique_ptr<VideoMetaData> video(scanner()->__ExtractVideoMetadata("/d/a.mp4"));
  EXPECT_EQ(video->GetDate(), std::string(16, 'e'));
}

TEST_F(FileInfoTest, AVideoRecordTakesThePlatformsAttributes) {
  SetFilmAttributes();
  const std::unique_ptr<VideoMetaData> video(scanner()->__ExtractVideoMetadata("/d/ORXA2.MP4"));
  ASSERT_NE(video, nullptr);
  EXPECT_THAT(video->GetThumbnailURI(), MatchesRegex("/orxthumbvideo0001[0-9]+\\.jpg"));
  EXPECT_STREQ(video->GetDate(), "2026-11-19");
  EXPECT_EQ(video->GetSize(), 5000000000LL);
  EXPECT_STREQ(video->GetDuration(), "61500");
  EXPECT_EQ(video->GetWidth(), 1920);
  EXPECT_EQ(video->GetHeight(), 1080);
  EXPECT_EQ(video->GetVideoFrameRate(), 29.97);
  EXPECT_STREQ(video->GetTitle(), "ORXA2");
  EXPECT_EQ(video->GetThumbnailWidth(), 160);
  EXPECT_EQ(video->GetThumbnailHeight(), 120);
  EXPECT_EQ(video->GetThumbnailLength(), 1);
  EXPECT_EQ(video->GetThumbnailOffset(), 1);
  EXPECT_EQ(video->GetType(), 0u);
}

TEST_F(FileInfoTest, AVideoRecordWithoutAttributesIsEmpty) {
  const std::unique_ptr<VideoMetaData> video(scanner()->__ExtractVideoMetadata("/d/a.mp4"));
  ASSERT_NE(video, nullptr);
  const LogLine* line = platform().Find(
      "[DirectoryScanner::__ExtractVideoMetadata] QUILWifi_getVideoAttribute Error!!!");
  ASSERT_NE(line, nullptr);
  EXPECT_EQ(line->priority, 4);
  EXPECT_EQ(video->GetSize(), 0);
  EXPECT_STREQ(video->GetDuration(), "0");
  EXPECT_EQ(video->GetWidth() + video->GetHeight(), 0);
}

TEST_F(FileInfoTest, NoPathGivesNoRecord) {
  EXPECT_EQ(scanner()->__ExtractImageMetadata(nullptr), nullptr);
  EXPECT_EQ(scanner()->__ExtractVideoMetadata(nullptr), nullptr);
}

TEST_F(FileInfoTest, NamesTheJpegProfileOfASize) {
  const auto profile = [](int height, int width) {
    const TextPtr name(scanner()->__GetJPEGProfile(height, width));
    return std::string(name != nullptr ? name.get() : "(null)");
  };
  EXPECT_EQ(profile(0, 480), "(null)");
  EXPECT_EQ(profile(480, 0), "(null)");
  EXPECT_EQ(profile(480, 640), "JPEG_SM");
  EXPECT_EQ(profile(480, 641), "JPEG_MED");
  EXPECT_EQ(profile(481, 640), "JPEG_MED");
  EXPECT_EQ(profile(640, 480), "JPEG_MED");
  EXPECT_EQ(profile(768, 1024), "JPEG_MED");
  EXPECT_EQ(profile(768, 1025), "JPEG_LRG");
  EXPECT_EQ(profile(769, 1024), "JPEG_LRG");
  EXPECT_EQ(profile(4097, 4097), "JPEG_LRG");
  EXPECT_EQ(profile(-1, -1), "JPEG_SM");
}

}  // namespace

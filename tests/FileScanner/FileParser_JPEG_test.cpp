#include "FileScanner/FileParser_JPEG.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

#include "FileScanner/FileInfomation.h"
#include "FileScanner/ImageMetaData.h"
#include "OSAL/CharsetConverter.h"
#include "OSAL/TextPtr.h"
#include "support/FakePlatform.h"
#include "support/JpegBuilder.h"
#include "support/TempDir.h"

namespace {

using namespace orx_test;

using RecordPtr = std::unique_ptr<MediaMetaData>;
using ImagePtr = std::unique_ptr<ImageMetaData>;

std::string TextOf(const char* text) { return text != nullptr ? text : "(null)"; }

class FileParserJpeg : public testing::Test {
 protected:
  FileParserJpeg() : platform_(FakePlatform::Reset()) { platform_.fileAttributeSucceeds = true; }

  // The record of one of the two operations for a file that is there or not.
  RecordPtr Parse(const std::string& path) {
    const FileInfomation file("", path.substr(path.rfind('/') + 1).c_str(), path.c_str());
    return RecordPtr(parser_.ParseFIle(&file));
  }
  RecordPtr Parse2(const std::string& path) {
    const FileInfomation file("", path.substr(path.rfind('/') + 1).c_str(), path.c_str(), 3,
                              1000001, 1);
    return RecordPtr(parser_.ParseFIle2(&file));
  }
  ImagePtr Extract(const std::string& path) {
    return ImagePtr(parser_.__ExtractMetadata(path.c_str()));
  }
  ImagePtr Extract2(const std::string& path) {
    return ImagePtr(parser_.__ExtractMetadata2(path.c_str(), 3, 1000001, 1));
  }
  std::string Profile(int width, int height) {
    return TextOf(orx::TextPtr(parser_.__GetJPEGProfile(height, width)).get());
  }

  FakePlatform& platform_;
  TempDir directory_;
  FileParser_JPEG parser_;
};

// ---- Which files are its own ----

TEST_F(FileParserJpeg, TakesPicturesByTheirExtension) {
  for (const char* name : {"a.jpg", "a.jpeg", "a.mpo", "a.krz", "a.JPG", "a.Mpo"}) {
    EXPECT_NE(Parse(directory_.Write(name, MakeJpeg())), nullptr) << name;
    EXPECT_NE(Parse2(directory_.Path(name)), nullptr) << name;
  }
}

TEST_F(FileParserJpeg, TakesAFragmentOfItsExtensions) {
  for (const char* name : {"a.pe", "a.g", "a."}) {
    EXPECT_NE(Parse(directory_.Write(name, MakeJpeg())), nullptr) << name;
    EXPECT_NE(Parse2(directory_.Path(name)), nullptr) << name;
  }
}

TEST_F(FileParserJpeg, DeclinesTheExtensionsOfOtherMediaWithoutAWord) {
  for (const char* name : {"a.mp3", "a.mp4", "a.avi", "a.WAV", "a.4"}) {
    EXPECT_EQ(Parse(directory_.Write(name, MakeJpeg())), nullptr) << name;
    EXPECT_EQ(Parse2(directory_.Path(name)), nullptr) << name;
  }
  EXPECT_TRUE(platform_.log.empty());
}

TEST_F(FileParserJpeg, TriesAFileWithAnUnknownExtensionOrNone) {
  for (const char* name : {"a.xyz", "a"}) {
    EXPECT_NE(Parse(directory_.Write(name, MakeJpeg())), nullptr) << name;
    EXPECT_NE(Parse2(directory_.Path(name)), nullptr) << name;
  }
}

TEST_F(FileParserJpeg, KeepsTheExtensionAsItWasFound) {
  EXPECT_EQ(TextOf(Parse(directory_.Write("a.JpG", MakeJpeg()))->GetEXT()), "JpG");
  EXPECT_EQ(TextOf(Parse2(directory_.Path("a.JpG"))->GetEXT()), "JpG");
  EXPECT_EQ(TextOf(Parse(directory_.Write("a", MakeJpeg()))->GetEXT()), "(null)");
}

TEST_F(FileParserJpeg, DeclinesWhatIsNoFile) {
  EXPECT_EQ(parser_.ParseFIle(nullptr), nullptr);
  EXPECT_EQ(parser_.ParseFIle2(nullptr), nullptr);
  const FileInfomation pathless("/a", "a.jpg", nullptr);
  EXPECT_EQ(parser_.ParseFIle(&pathless), nullptr);
  EXPECT_EQ(parser_.ParseFIle2(&pathless), nullptr);
  EXPECT_EQ(parser_.__ExtractMetadata(nullptr), nullptr);
  EXPECT_EQ(parser_.__ExtractMetadata2(nullptr, 0, 0, 0), nullptr);
  EXPECT_TRUE(platform_.log.empty());
}

// ---- The file's own data ----

TEST_F(FileParserJpeg, FillsTheRecordFromTheFile) {
  const std::string content =
      JpegBuilder().Size(4000, 3000).Description("A red bridge").Thumbnail(160, 120).Build();
  const std::string path = directory_.Write("DCIM/100PHOTO/IMGA0001.JPG", content);
  const ImagePtr record = Extract(path);
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->GetType(), 1u);
  EXPECT_EQ(TextOf(record->GetFullPath()), path);
  EXPECT_EQ(TextOf(record->GetTitle()), "IMGA0001");
  EXPECT_EQ(TextOf(record->GetSortIndex()), "1000001");
  EXPECT_EQ(TextOf(record->GetDate()), "2026-11-21");
  EXPECT_EQ(record->GetSize(), static_cast<long long>(content.size()));
  EXPECT_EQ(TextOf(record->GetMimeType()), "image/jpeg");
  EXPECT_EQ(TextOf(record->GetDescription()), "A red bridge");
  EXPECT_EQ(record->GetWidth(), 4000);
  EXPECT_EQ(record->GetHeight(), 3000);
  EXPECT_EQ(record->GetThumbnailOffset(), static_cast<int>(content.find("\xFF\xD8", 2)));
  EXPECT_EQ(record->GetThumbnailLength(), 104);
  EXPECT_EQ(record->GetThumbnailWidth(), 160);
  EXPECT_EQ(record->GetThumbnailHeight(), 120);
  EXPECT_EQ(TextOf(record->GetDLNAProfile()), "JPEG_LRG");
}

TEST_F(FileParserJpeg, LeavesWhatTheFileDoesNotHoldUnset) {
  const ImagePtr record = Extract(directory_.Write("a.jpg", MakeJpeg()));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->GetDescription(), nullptr);
  EXPECT_EQ(record->GetThumbnailOffset(), 0);
  EXPECT_EQ(record->GetThumbnailLength(), 0);
  EXPECT_EQ(record->GetURI(), nullptr);
  EXPECT_EQ(record->GetThumbnailURI(), nullptr);
  EXPECT_EQ(record->GetScreennailURI(), nullptr);
  EXPECT_EQ(record->GetUniqueID(), nullptr);
  EXPECT_EQ(record->GetDirectoryID(), nullptr);
  EXPECT_EQ(record->GetEXT(), nullptr);
}

TEST_F(FileParserJpeg, HasNoSortIndexForANameThatIsNoDcfName) {
  EXPECT_EQ(Extract(directory_.Write("100PHOTO/a.jpg", MakeJpeg()))->GetSortIndex(), nullptr);
}

TEST_F(FileParserJpeg, TakesTitleAndSortIndexFromTheNameInTheDevicesCodePage) {
  if (!orx::CharsetConverter("UTF-8", "EUC-KR").ok())
    GTEST_SKIP() << "this system's converter does not know EUC-KR";
  // "한글" in EUC-KR; the path of the record stays as it was handed in.
  const std::string path = directory_.Write("100PHOTO/\xC7\xD1\xB1\xDB.jpg", MakeJpeg());
  const ImagePtr record = Extract(path);
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(TextOf(record->GetTitle()), "\xED\x95\x9C\xEA\xB8\x80");
  EXPECT_EQ(TextOf(record->GetFullPath()), path);
  EXPECT_EQ(TextOf(Extract2(path)->GetTitle()), "\xED\x95\x9C\xEA\xB8\x80");
}

TEST_F(FileParserJpeg, LogsStartAndSuccess) {
  platform_.sharingMode = 6;
  const std::string path = directory_.Write("a.jpg", MakeJpeg());
  ASSERT_NE(Extract(path), nullptr);
  const std::vector<std::string> expected = {
      "[FileParser_JPEG::__ExtractMetadata] Parsing [" + path + "]",
      "[" + path + "] Parse Success"};
  EXPECT_EQ(platform_.Messages(), expected);
  for (const LogLine& line : platform_.log) {
    EXPECT_EQ(line.priority, 4);
    EXPECT_EQ(line.tag, "DLNA");
    EXPECT_EQ(line.source, "FileParser_JPEG.cpp");
  }
}

TEST_F(FileParserJpeg, HasNoRecordForAFileThatCannotBeRead) {
  for (const std::string& path :
       {directory_.Path("missing.jpg"), directory_.Write("plain.jpg", "plain text, no picture"),
        directory_.Write("jfif.jpg", JpegBuilder().NoExif().Build())}) {
    FakePlatform::Reset();
    EXPECT_EQ(Parse(path), nullptr);
    const std::vector<std::string> expected = {
        "[FileParser_JPEG::__ExtractMetadata] Parsing [" + path + "]",
        "[FileParser_JPEG::__ExtractMetadata] Parsing [" + path + "] failed"};
    EXPECT_EQ(platform_.Messages(), expected);
    EXPECT_EQ(platform_.log.back().priority, 4);
    EXPECT_TRUE(platform_.screennailPaths.empty());
  }
}

TEST_F(FileParserJpeg, HasNoRecordForAThumbnailOfOneByte) {
  const std::string tiff = TiffBuilder().Long(513, 100).Long(514, 1).Build();
  EXPECT_EQ(Parse(directory_.Write("a.jpg", StartOfImage() + ExifSegment(tiff) +
                                                FrameHeader(640, 480) + EndOfImage())),
            nullptr);
}

TEST_F(FileParserJpeg, HasTheWildcardProfileWithoutASize) {
  const std::string tiff = TiffBuilder().Text(306, "2026:11:21 09:34:26").Build();
  const ImagePtr record = Extract(directory_.Write("a.jpg", StartOfImage() + ExifSegment(tiff)));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->GetWidth(), 0);
  EXPECT_EQ(TextOf(record->GetDLNAProfile()), "*");
}

TEST_F(FileParserJpeg, TakesPercentSignsInAPathForText) {
  platform_.sharingMode = 6;
  const std::string path = directory_.Write("100%s%n.jpg", MakeJpeg());
  ASSERT_NE(Extract(path), nullptr);
  EXPECT_TRUE(platform_.Logged("[" + path + "] Parse Success"));
}

// ---- Screennail ----

TEST_F(FileParserJpeg, AsksThePlatformForTheScreennail) {
  platform_.screennailResult = 1;
  platform_.screennailWidth = 1920;
  platform_.screennailHeight = 1080;
  platform_.screennailOffset = 0xABCDE;
  platform_.screennailLength = 54321;
  const std::string path = directory_.Write("a.jpg", MakeJpeg());
  const ImagePtr record = Extract(path);
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(platform_.screennailPaths, std::vector<std::string>{path});
  EXPECT_EQ(record->GetScreennailWidth(), 1920);
  EXPECT_EQ(record->GetScreennailHeight(), 1080);
  EXPECT_EQ(record->GetScreennailOffset(), 0xABCDE);
  EXPECT_EQ(record->GetScreennailLength(), 54321);
  const std::vector<std::string> expected = {
      "[FileParser_JPEG::__ExtractMetadata] Parsing [" + path + "]",
      "input => strFileName = " + path + " ",
      "output retVal = 1, nScreenWidth = 1920, nScreenHeight = 1080, nScreenOffset = 0xabcde, "
      "nScreenLen = 54321 ",
      "[" + path + "] Parse Success"};
  EXPECT_EQ(platform_.Messages(), expected);
}

TEST_F(FileParserJpeg, LeavesTheScreennailAtZeroWhenThePlatformFindsNone) {
  for (const int result : {0, -1, 2}) {
    FakePlatform::Reset();
    platform_.screennailResult = result;
    platform_.screennailWidth = platform_.screennailHeight = 7;
    platform_.screennailOffset = platform_.screennailLength = 7;
    const std::string path = directory_.Write("a.jpg", MakeJpeg());
    const ImagePtr record = Extract(path);
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->GetScreennailWidth(), 0);
    EXPECT_EQ(record->GetScreennailHeight(), 0);
    EXPECT_EQ(record->GetScreennailOffset(), 0);
    EXPECT_EQ(record->GetScreennailLength(), 0);
    const std::vector<std::string> expected = {
        "[FileParser_JPEG::__ExtractMetadata] Parsing [" + path + "]",
        "input => strFileName = " + path + " ",
        "output retVal = " + std::to_string(result) +
            ", nScreenWidth = 7, nScreenHeight = 7, nScreenOffset = 0x7, nScreenLen = 7 ",
        "[__ExtractMetadata] NPL_GetJPEGScreennailInfo Fail!! ", "[" + path + "] Parse Success"};
    EXPECT_EQ(platform_.Messages(), expected);
  }
}

TEST_F(FileParserJpeg, DoesNotAskForTheScreennailInSharingModeSixAlone) {
  const std::string path = directory_.Write("a.jpg", MakeJpeg());
  for (const int mode : {0, 1, 2, 5, 6, 7, 8}) {
    FakePlatform::Reset();
    platform_.sharingMode = mode;
    platform_.screennailResult = 1;
    platform_.screennailLength = 7;
    const ImagePtr record = Extract(path);
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(platform_.screennailPaths.empty(), mode == 6) << mode;
    EXPECT_EQ(record->GetScreennailLength(), mode == 6 ? 0 : 7) << mode;
  }
}

// ---- The platform's data ----

TEST_F(FileParserJpeg, FillsTheRecordFromThePlatformsAttributes) {
  platform_.fileAttribute.nFileSize = 5000000000;
  platform_.fileAttribute.nWidth = 6000;
  platform_.fileAttribute.nHeight = 65535;
  strcpy(platform_.fileAttribute.szDate, "2026-11-21");
  const std::string path = "/mnt/mmc/DCIM/100PHOTO/IMGA0042.JPG";
  const ImagePtr record = Extract2(path);
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(platform_.attributePaths, std::vector<std::string>{path});
  EXPECT_EQ(record->GetType(), 1u);
  EXPECT_EQ(TextOf(record->GetFullPath()), path);
  EXPECT_EQ(TextOf(record->GetTitle()), "IMGA0042");
  EXPECT_EQ(TextOf(record->GetSortIndex()), "1000001");  // as handed in, not from the path
  EXPECT_EQ(TextOf(record->GetDate()), "2026-11-21");
  EXPECT_EQ(record->GetSize(), 5000000000);
  EXPECT_EQ(TextOf(record->GetMimeType()), "image/jpeg");
  EXPECT_EQ(record->GetWidth(), 6000);
  EXPECT_EQ(record->GetHeight(), 65535);
  EXPECT_EQ(TextOf(record->GetDLNAProfile()), "JPEG_LRG");
  EXPECT_EQ(record->GetDescription(), nullptr);
  EXPECT_EQ(record->GetThumbnailLength(), 0);
  EXPECT_EQ(record->GetScreennailLength(), 0);
  EXPECT_TRUE(platform_.screennailPaths.empty());
  const std::vector<std::string> expected = {
      "[FileParser_JPEG::__ExtractMetadata] Parsing [" + path + "]",
      "[" + path + "] Parse Success"};
  EXPECT_EQ(platform_.Messages(), expected);
}

TEST_F(FileParserJpeg, TakesTheSortIndexOfTheFileRecord) {
  EXPECT_EQ(TextOf(Parse2("/a/b.jpg")->GetSortIndex()), "1000001");
  const ImagePtr negative(parser_.__ExtractMetadata2("/a/b.jpg", 0, -5, 0));
  EXPECT_EQ(TextOf(negative->GetSortIndex()), "-5");
}

TEST_F(FileParserJpeg, ReadsADateThatFillsItsFieldNoFurther) {
  memset(platform_.fileAttribute.szDate, 'd', sizeof platform_.fileAttribute.szDate);
  EXPECT_EQ(TextOf(Extract2("/a/b.jpg")->GetDate()), std::string(20, 'd'));
}

TEST_F(FileParserJpeg, FallsBackToTheFileSizeWithoutThePlatformsAttributes) {
  platform_.fileAttributeSucceeds = false;
  platform_.fileSizeFromDisk = false;
  platform_.fileSize = 4321;
  platform_.fileAttribute.nWidth = 640;
  testing::internal::CaptureStderr();
  const ImagePtr record = Extract2("/a/b.jpg");
  testing::internal::GetCapturedStderr();
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->GetSize(), 4321);
  EXPECT_EQ(TextOf(record->GetDate()), "0000-00-00");
  EXPECT_EQ(record->GetWidth(), 0);
  EXPECT_EQ(record->GetHeight(), 0);
  EXPECT_EQ(TextOf(record->GetDLNAProfile()), "*");
  const LogLine* line =
      platform_.Find("[FileParser_JPEG::__ExtractMetadata2] UILWifi_getFileAttribute Error!!!");
  ASSERT_NE(line, nullptr);
  EXPECT_EQ(line->priority, 6);
}

// ---- Profile ----

TEST_F(FileParserJpeg, ChoosesTheProfileBySize) {
  EXPECT_EQ(Profile(1, 1), "JPEG_SM");
  EXPECT_EQ(Profile(640, 480), "JPEG_SM");
  EXPECT_EQ(Profile(641, 480), "JPEG_MED");
  EXPECT_EQ(Profile(640, 481), "JPEG_MED");
  EXPECT_EQ(Profile(1024, 768), "JPEG_MED");
  EXPECT_EQ(Profile(1025, 768), "JPEG_LRG");
  EXPECT_EQ(Profile(1024, 769), "JPEG_LRG");
  EXPECT_EQ(Profile(4096, 4096), "JPEG_LRG");
  EXPECT_EQ(Profile(4097, 5000), "JPEG_LRG");
}

TEST_F(FileParserJpeg, HoldsAPortraitAgainstTheLimitsOfALandscape) {
  EXPECT_EQ(Profile(480, 640), "JPEG_MED");
  EXPECT_EQ(Profile(768, 1024), "JPEG_LRG");
}

TEST_F(FileParserJpeg, HasNoProfileWithoutASize) {
  EXPECT_EQ(Profile(0, 480), "(null)");
  EXPECT_EQ(Profile(640, 0), "(null)");
  EXPECT_EQ(Profile(-640, 480), "JPEG_SM");
}

}  // namespace

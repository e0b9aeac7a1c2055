#include "FileScanner/FileParserFramework.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "FileScanner/FileInfomation.h"
#include "FileScanner/FileParser.h"
#include "FileScanner/FileParser_JPEG.h"
#include "FileScanner/FileParser_MP4.h"
#include "FileScanner/MediaMetaData.h"
#include "support/FakePlatform.h"
#include "support/TempDir.h"

namespace {

// A parser that takes every file or none, and counts.
class FakeParser : public FileParser {
 public:
  explicit FakeParser(bool takes, int* destroyed = nullptr)
      : takes_(takes), destroyed_(destroyed) {}
  ~FakeParser() override {
    if (destroyed_ != nullptr) ++*destroyed_;
  }
  MediaMetaData* ParseFIle(const FileInfomation*) override {
    ++calls;
    return takes_ ? new MediaMetaData : nullptr;
  }
  MediaMetaData* ParseFIle2(const FileInfomation*) override {
    ++calls2;
    return takes_ ? new MediaMetaData : nullptr;
  }
  int calls = 0, calls2 = 0;

 private:
  bool takes_;
  int* destroyed_;
};

const FileInfomation& AnyFile() {
  static const FileInfomation file("/d", "n.jpg", "/d/n.jpg");
  return file;
}

TEST(FileParser, SetNextParserReturnsItsArgument) {
  FakeParser first(false), second(false);
  EXPECT_EQ(first.GetNextParser(), nullptr);
  EXPECT_EQ(first.SetNextParser(&second), &second);
  EXPECT_EQ(first.GetNextParser(), &second);
}

TEST(FileParser, TheFirstParserThatTakesTheFileWins) {
  FakeParser first(true), second(true);
  first.SetNextParser(&second);
  const std::unique_ptr<MediaMetaData> record(first.Parse(&AnyFile()));
  EXPECT_NE(record, nullptr);
  EXPECT_EQ(first.calls, 1);
  EXPECT_EQ(second.calls, 0);
}

TEST(FileParser, ADeclinedFileGoesToTheNextParser) {
  FakeParser first(false), second(true);
  first.SetNextParser(&second);
  const std::unique_ptr<MediaMetaData> record(first.Parse2(&AnyFile()));
  EXPECT_NE(record, nullptr);
  EXPECT_EQ(first.calls2, 1);
  EXPECT_EQ(second.calls2, 1);
  EXPECT_EQ(first.calls + second.calls, 0);
}

TEST(FileParser, AFileThatNobodyTakesGivesNull) {
  FakeParser first(false), second(false);
  first.SetNextParser(&second);
  EXPECT_EQ(first.Parse(&AnyFile()), nullptr);
  EXPECT_EQ(second.calls, 1);
}

TEST(FileParserFramework, ChainsMp4BeforeJpeg) {
  const FileParserFramework framework;
  FileParser* first = framework._GetFirstFileParser();
  EXPECT_NE(dynamic_cast<FileParser_MP4*>(first), nullptr);
  ASSERT_NE(first, nullptr);
  EXPECT_NE(dynamic_cast<FileParser_JPEG*>(first->GetNextParser()), nullptr);
  ASSERT_NE(first->GetNextParser(), nullptr);
  EXPECT_EQ(first->GetNextParser()->GetNextParser(), nullptr);
}

TEST(FileParserFramework, ANullFileGivesNull) {
  FileParserFramework framework;
  EXPECT_EQ(framework.HandleFile(nullptr), nullptr);
  EXPECT_EQ(framework.HandleFile2(nullptr), nullptr);
}

TEST(FileParserFramework, HandleFileAndHandleFile2UseTheirOwnOperation) {
  FileParserFramework framework;
  FakeParser parser(true);
  framework._SetFirstFileParser(&parser);
  const std::unique_ptr<MediaMetaData> one(framework.HandleFile(&AnyFile()));
  EXPECT_EQ(parser.calls, 1);
  EXPECT_EQ(parser.calls2, 0);
  const std::unique_ptr<MediaMetaData> two(framework.HandleFile2(&AnyFile()));
  EXPECT_EQ(parser.calls, 1);
  EXPECT_EQ(parser.calls2, 1);
}

TEST(FileParserFramework, IgnoresNullParsers) {
  FileParserFramework framework;
  FileParser* first = framework._GetFirstFileParser();
  framework._SetFirstFileParser(nullptr);
  framework._AddFileParser(nullptr);
  EXPECT_EQ(framework._GetFirstFileParser(), first);
}

TEST(FileParserFramework, DeletesTheParsersItWasGiven) {
  int destroyed = 0;
  {
    FileParserFramework framework;
    framework._AddFileParser(new FakeParser(false, &destroyed));
    framework._ClearFileParserList();
    EXPECT_EQ(destroyed, 1);
    framework._AddFileParser(new FakeParser(false, &destroyed));
  }
  EXPECT_EQ(destroyed, 2);
}

TEST(FileParserFramework, ParsesNothingWithADeletedParser) {
  FileParserFramework framework;
  FileParser* first = framework._GetFirstFileParser();
  framework._TerminateParsers();
  EXPECT_EQ(framework._GetFirstFileParser(), first);
  EXPECT_EQ(framework.HandleFile(&AnyFile()), nullptr);
  FakeParser parser(true);
  framework._SetFirstFileParser(&parser);
  const std::unique_ptr<MediaMetaData> record(framework.HandleFile(&AnyFile()));
  EXPECT_NE(record, nullptr);
}

TEST(FileParserFramework, AnMp3IsDeclinedByBothParsers) {
  orx_test::FakePlatform& platform = orx_test::FakePlatform::Reset();
  const orx_test::TempDir dir;
  const std::string path = dir.Write("song.mp3", "ID3");
  FileParserFramework framework;
  const FileInfomation file(dir.path().c_str(), "song.mp3", path.c_str());
  EXPECT_EQ(framework.HandleFile(&file), nullptr);
  EXPECT_TRUE(platform.log.empty());  // neither parser opened it
}

}  // namespace

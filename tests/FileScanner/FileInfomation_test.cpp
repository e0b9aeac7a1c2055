#include "FileScanner/FileInfomation.h"

#include <gtest/gtest.h>

namespace {

TEST(FileInfomation, KeepsDirectoryNameAndFullPath) {
  const FileInfomation file("/card/100", "IMGA0001.JPG", "/card/100/IMGA0001.JPG");
  EXPECT_STREQ(file.GetFilePath(), "/card/100");
  EXPECT_STREQ(file.GetFileName(), "IMGA0001.JPG");
  EXPECT_STREQ(file.GetFullFileName(), "/card/100/IMGA0001.JPG");
  EXPECT_STREQ(file.GetExtension(), "JPG");
  EXPECT_EQ(file.GetDcfIndex(), 0);
  EXPECT_EQ(file.GetSortIndex(), 0);
  EXPECT_EQ(file.GetFileType(), 0);
}

TEST(FileInfomation, KeepsTheNumbersOfASharedFile) {
  const FileInfomation file("/d", "n.jpg", "/d/n.jpg", 4, 1000001, 7);
  EXPECT_EQ(file.GetDcfIndex(), 4);
  EXPECT_EQ(file.GetSortIndex(), 1000001);
  EXPECT_EQ(file.GetFileType(), 7);
  EXPECT_STREQ(file.GetExtension(), "jpg");
}

TEST(FileInfomation, TakesTheExtensionAfterTheLastDot) {
  const FileInfomation file("/d", "a.b.mp4", "/d/a.b.mp4");
  EXPECT_STREQ(file.GetExtension(), "mp4");
}

TEST(FileInfomation, HasNoExtensionWithoutADot) {
  const FileInfomation file("/d.x", "name", "/d.x/name");
  EXPECT_EQ(file.GetExtension(), nullptr);
}

TEST(FileInfomation, HasAnEmptyExtensionAfterATrailingDot) {
  const FileInfomation file("/d", "name.", "/d/name.");
  EXPECT_STREQ(file.GetExtension(), "");
}

TEST(FileInfomation, NeverHasALocalTime) {
  FileInfomation file("/d", "n", "/d/n");
  file.SetLocalTime(stdin);
  EXPECT_EQ(file.GetLocalTime(), nullptr);
}

TEST(FileInfomation, LeavesOutWhatIsNull) {
  FileInfomation file(nullptr, nullptr, nullptr);
  EXPECT_EQ(file.GetFilePath(), nullptr);
  EXPECT_EQ(file.GetFileName(), nullptr);
  EXPECT_EQ(file.GetFullFileName(), nullptr);
  EXPECT_EQ(file.GetExtension(), nullptr);
  file.SetExtension(nullptr);
  EXPECT_EQ(file.GetExtension(), nullptr);
}

TEST(FileInfomation, SettersReplaceWhatIsRead) {
  FileInfomation file("/d", "n.a", "/d/n.a");
  file.SetDirPath("/e");
  file.SetFileName("m.b");
  file.SetFullFileName("/e/m.b");
  file.SetExtension("m.b");
  EXPECT_STREQ(file.GetFilePath(), "/e");
  EXPECT_STREQ(file.GetFileName(), "m.b");
  EXPECT_STREQ(file.GetFullFileName(), "/e/m.b");
  EXPECT_STREQ(file.GetExtension(), "b");
  file.SetFileName(nullptr);
  file.SetExtension("nodot");
  EXPECT_STREQ(file.GetFileName(), "m.b");
  EXPECT_STREQ(file.GetExtension(), "b");
}

}  // namespace

#include "FileScanner/DcfUri.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "support/SharedFiles.h"

namespace {

constexpr char kUri[] = "/mnt/mmc/DCIM/100PHOTO/IMGA0123.JPG";

// A copy without a byte to spare, so that the sanitizer sees one byte too far.
struct ExactCopy {
  explicit ExactCopy(const std::string& text) : bytes(new char[text.size() + 1]) {
    text.copy(bytes.get(), text.size());
    bytes[text.size()] = '\0';
  }
  std::unique_ptr<char[]> bytes;
};

TEST(ParseDcfUri, TakesThePiecesFromTheirPositions) {
  const orx::DcfEntry entry = orx::ParseDcfUri(kUri);
  EXPECT_EQ(entry.path, "/DCIM/100PHOTO/IMGA0123.JPG");
  EXPECT_EQ(entry.directoryName, "100PHOTO");
  EXPECT_EQ(entry.sortNumber, 1000123);
}

TEST(ParseDcfUri, ReadsNumbersAsDecimalWithLeadingZeros) {
  EXPECT_EQ(orx::ParseDcfUri("/mnt/mmc/DCIM/010PHOTO/IMGA0008.JPG").sortNumber, 100008);
  EXPECT_EQ(orx::ParseDcfUri("/mnt/mmc/DCIM/999PHOTO/IMGA9999.JPG").sortNumber, 9999999);
  EXPECT_EQ(orx::ParseDcfUri("/mnt/mmc/DCIM/ABCPHOTO/IMGAWXYZ.JPG").sortNumber, 0);
}

TEST(ParseDcfUri, GivesEmptyPiecesAndNoNumberForEveryTruncation) {
  const std::string whole = kUri;
  for (size_t size = 0; size < whole.size(); ++size) {
    SCOPED_TRACE(size);
    const ExactCopy cut(whole.substr(0, size));
    const orx::DcfEntry entry = orx::ParseDcfUri(cut.bytes.get());
    EXPECT_EQ(entry.path, size > 8 ? whole.substr(8, size - 8) : "");
    EXPECT_EQ(entry.directoryName, size >= 22 ? "100PHOTO" : "");
    EXPECT_EQ(entry.sortNumber, size >= 31 ? 1000123 : 0);
    EXPECT_STREQ(orx::DcfUriExtension(cut.bytes.get()),
                 size > 31 ? whole.substr(31, size - 31).c_str() : "");
  }
}

TEST(DcfUriExtension, IsEverythingBehindTheFileNumber) {
  EXPECT_STREQ(orx::DcfUriExtension(kUri), ".JPG");
  EXPECT_STREQ(orx::DcfUriExtension("/mnt/mmc/DCIM/100PHOTO/IMGA0123.JPG.BAK"), ".JPG.BAK");
}

TEST(ReplaceUriEnding, OverwritesTheLastCharactersInPlace) {
  const ExactCopy uri(kUri);
  orx::ReplaceUriEnding(uri.bytes.get(), "MPO");
  EXPECT_STREQ(uri.bytes.get(), "/mnt/mmc/DCIM/100PHOTO/IMGA0123.MPO");
}

TEST(ReplaceUriEnding, LeavesATextThatIsTooShortAlone) {
  const ExactCopy uri("JP");
  orx::ReplaceUriEnding(uri.bytes.get(), "MPO");
  EXPECT_STREQ(uri.bytes.get(), "JP");
}

TEST(DcfPath, HasADirectoryNameAndAFileName) {
  EXPECT_EQ(orx::DirectoryNameInDcfPath("/DCIM/100PHOTO/IMGA0123.JPG"), "100PHOTO");
  EXPECT_EQ(orx::FileNameInDcfPath("/DCIM/100PHOTO/IMGA0123.JPG"), "IMGA0123.JPG");
}

TEST(DcfPath, HasEmptyPiecesWhenItIsTooShort) {
  EXPECT_EQ(orx::DirectoryNameInDcfPath("/DCIM/100PHOT"), "");
  EXPECT_EQ(orx::FileNameInDcfPath("/DCIM/100PHOTO/"), "");
  EXPECT_EQ(orx::DirectoryNameInDcfPath(""), "");
  EXPECT_EQ(orx::FileNameInDcfPath(""), "");
}

}  // namespace

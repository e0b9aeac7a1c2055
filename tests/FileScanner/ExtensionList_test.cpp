#include "FileScanner/ExtensionList.h"

#include <gtest/gtest.h>

#include "FileScanner/DirectoryScanner.h"

namespace {

TEST(ExtensionList, ExportsTheFiveLists) {
  EXPECT_STREQ(All_Supported_Extensions,
               "m4a, adts, m4b, mp4, 3gp, aac, ac3, m4v, mov, jpg, jpeg, mp3, avi, wmv, wma, wav, "
               "mpeg, mpg, mpo, krz");
  EXPECT_STREQ(MP4_Extension, "mp4, avi");
  EXPECT_STREQ(PC_JPEG_Extension, "jpg, jpeg,mpo, krz");
  EXPECT_STREQ(MRCP_JPEG_Extension, "jpg, jpeg,mpo");
  EXPECT_STREQ(JPEG_Extension, "jpg, jpeg");
}

TEST(ExtensionList, FindsAnExtensionInEitherCase) {
  EXPECT_TRUE(orx::ListHasExtension(JPEG_Extension, "jpg"));
  EXPECT_TRUE(orx::ListHasExtension(JPEG_Extension, "JPEG"));
  EXPECT_FALSE(orx::ListHasExtension(JPEG_Extension, "mpo"));
}

TEST(ExtensionList, CountsEveryFragmentAsListed) {
  EXPECT_TRUE(orx::ListHasExtension(JPEG_Extension, "pe"));
  EXPECT_TRUE(orx::ListHasExtension(MP4_Extension, "4"));
  EXPECT_TRUE(orx::ListHasExtension(PC_JPEG_Extension, "g,m"));
  EXPECT_TRUE(orx::ListHasExtension(JPEG_Extension, ""));
}

TEST(ExtensionList, FindsNothingForNull) {
  EXPECT_FALSE(orx::ListHasExtension(JPEG_Extension, nullptr));
  EXPECT_FALSE(orx::ListHasExtension(nullptr, "jpg"));
}

TEST(ExtensionList, LowerCasesACopy) {
  const char extension[] = "JpG";
  EXPECT_EQ(orx::LowerCaseExtension(extension), "jpg");
  EXPECT_STREQ(extension, "JpG");
  EXPECT_EQ(orx::LowerCaseExtension(nullptr), "");
}

TEST(ExtensionList, LeavesASupportedExtensionThatIsNotItsOwnToAnotherParser) {
  EXPECT_TRUE(orx::BelongsToAnotherParser(JPEG_Extension, "mp3"));
  EXPECT_FALSE(orx::BelongsToAnotherParser(JPEG_Extension, "jpg"));
  EXPECT_FALSE(orx::BelongsToAnotherParser(JPEG_Extension, "xyz"));
  EXPECT_FALSE(orx::BelongsToAnotherParser(JPEG_Extension, nullptr));
}

}  // namespace

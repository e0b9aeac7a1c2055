#include "OSAL/StringUtiltiy.h"

#include <gtest/gtest.h>

#include <string>

#include "OSAL/CharsetConverter.h"
#include "support/NoConverter.h"
#include "support/Text.h"

namespace {

using orx_test::Exact;
using orx_test::Taken;

TEST(StringUtiltiy, CopiesBetweenPlatformTextCharAndUtf8) {
  const auto text = Exact("a\xC3\xA9");
  EXPECT_EQ(Taken(StringUtiltiy::GetTcharFromChar(text.get())), "a\xC3\xA9");
  EXPECT_EQ(Taken(StringUtiltiy::GetCharFromTChar(text.get())), "a\xC3\xA9");
  EXPECT_EQ(Taken(StringUtiltiy::GetUtf8FromTChar(text.get())), "a\xC3\xA9");
}

TEST(StringUtiltiy, CopiesNullAsNull) {
  EXPECT_EQ(StringUtiltiy::GetTcharFromChar(nullptr), nullptr);
  EXPECT_EQ(StringUtiltiy::GetCharFromTChar(nullptr), nullptr);
  EXPECT_EQ(StringUtiltiy::GetUtf8FromTChar(nullptr), nullptr);
}

TEST(StringUtiltiy, LowersTheCaseInPlace) {
  char text[] = "IMG_0012.JpG\xC9";
  EXPECT_EQ(StringUtiltiy::LowerCase(text), text);
  EXPECT_STREQ(text, "img_0012.jpg\xC9");
  EXPECT_EQ(StringUtiltiy::LowerCase(nullptr), nullptr);
}

std::string FromMultiByte(const std::string& text) {
  return Taken(StringUtiltiy::GetUtf8FromMultiByteStr(Exact(text).get()));
}

class FromEucKr : public testing::Test {
 protected:
  void SetUp() override {
    if (!orx::CharsetConverter("UTF-8", "EUC-KR").ok())
      GTEST_SKIP() << "this system's converter does not know EUC-KR";
  }
};

TEST_F(FromEucKr, GivesUtf8) {
  EXPECT_EQ(FromMultiByte("\xB0\xA1.jpg"), "\xEA\xB0\x80.jpg");
  EXPECT_EQ(FromMultiByte("\xC8\xFE"), "\xED\x9E\x9D");
}

TEST_F(FromEucKr, GivesALongTextWhole) {
  std::string text, expected;
  for (int i = 0; i < 1000; ++i) text += "\xB0\xA1", expected += "\xEA\xB0\x80";
  EXPECT_EQ(FromMultiByte(text), expected);
}

TEST_F(FromEucKr, IsNullForWhatIsNotEucKr) {
  EXPECT_EQ(FromMultiByte("a\xFF\xFF"), "(null)");
  EXPECT_EQ(FromMultiByte("a\xB0"), "(null)");
}

TEST_F(FromEucKr, GivesANewTextForAscii) {
  const auto text = Exact("IMG_0012.JPG");
  char* result = StringUtiltiy::GetUtf8FromMultiByteStr(text.get());
  EXPECT_NE(result, text.get());
  EXPECT_EQ(Taken(result), "IMG_0012.JPG");
  EXPECT_EQ(FromMultiByte(""), "");
}

TEST(FromMultiByte, AsksForNoConverterForAscii) {
  const int before = orx_test::ConvertersOpened();
  EXPECT_EQ(FromMultiByte("IMG_0012.JPG"), "IMG_0012.JPG");
  EXPECT_EQ(orx_test::ConvertersOpened(), before);
}

TEST(FromMultiByte, NeedsNoConverterForAscii) {
  const orx_test::NoConverter none;
  for (int c = 1; c < 128; ++c) {
    const std::string byte(1, static_cast<char>(c));
    EXPECT_EQ(FromMultiByte(byte), byte);
  }
}

TEST(FromMultiByte, IsNullWithoutAConverter) {
  const orx_test::NoConverter none;
  EXPECT_EQ(FromMultiByte("\xB0\xA1"), "(null)");
}

TEST(FromMultiByte, IsItsArgumentForNull) {
  EXPECT_EQ(StringUtiltiy::GetUtf8FromMultiByteStr(nullptr), nullptr);
}

}  // namespace

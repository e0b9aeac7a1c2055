#include "Texts.h"

#include <gmock/gmock.h>

namespace {

using namespace orxserve;

TEST(AppendXml, EscapesWhatXmlGivesAMeaning) {
  EXPECT_EQ(XmlText("a<b>&\"c\""), "a&lt;b&gt;&amp;&quot;c&quot;");
}
TEST(AppendXml, EscapesTwiceWhatIsEmbedded) {
  std::string out;
  AppendXml(&out, "a<b & \"c\"", XmlLevel::kEmbedded);
  EXPECT_EQ(out, "a&amp;lt;b &amp;amp; &amp;quot;c&amp;quot;");
}
TEST(AppendXml, KeepsLettersOfAllScripts) { EXPECT_EQ(XmlText("é한😀"), "é한😀"); }
TEST(AppendXml, ReplacesControlCharacters) {
  EXPECT_EQ(XmlText("a\x01"
                    "b\x7f"
                    "c"),
            "a\uFFFDb\uFFFDc");
}
TEST(AppendXml, TurnsLineEndsIntoBlanks) { EXPECT_EQ(XmlText("a\r\nb\tc"), "a  b c"); }
TEST(AppendXml, ReplacesBytesThatAreNoUtf8) {
  EXPECT_EQ(XmlText("\xff"
                    "a\xc0\x80"
                    "b\xe2\x82"),
            "\uFFFDa\uFFFD\uFFFDb\uFFFD\uFFFD");
}
TEST(AppendXml, ReplacesSurrogatesAndOverlongForms) {
  EXPECT_EQ(XmlText("\xed\xa0\x80"), "\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(XmlText("\xe0\x80\xaf"), "\uFFFD\uFFFD\uFFFD");
}
TEST(AppendXml, ReplacesCharactersThatXmlDoesNotHave) {
  EXPECT_EQ(XmlText("\xef\xbf\xbe\xc2\x85"), "\uFFFD\uFFFD");
}
TEST(CleanText, EscapesNothing) { EXPECT_EQ(CleanText("a<b>&\"\x02"), "a<b>&\"\uFFFD"); }
TEST(CutText, DoesNotEndWithinACharacter) {
  EXPECT_EQ(CutText("ab한", 4), "ab");
  EXPECT_EQ(CutText("ab한", 5), "ab한");
}
TEST(AppendJson, IsFitForAScriptElement) {
  std::string out;
  AppendJson(&out, "</script>\"\\");
  EXPECT_EQ(out, "\"\\u003c/script\\u003e\\u0022\\u005c\"");
}
TEST(ParseNumber, RefusesWhatIsNotAllDigits) {
  uint64_t number = 0;
  for (const char* text : {"", "-1", "+1", " 1", "1x", "99999999999999999999"})
    EXPECT_FALSE(ParseNumber(text, &number)) << text;
  EXPECT_TRUE(ParseNumber("18446744073709551615", &number));
}
TEST(TakePart, TakesTrimmedPartsOffTheFront) {
  std::string_view rest = " a , b";
  EXPECT_EQ(TakePart(&rest, ','), "a");
  EXPECT_EQ(TakePart(&rest, ','), "b");
  EXPECT_EQ(rest, "");
}

}  // namespace

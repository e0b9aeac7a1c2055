#include <gtest/gtest.h>

#include <string>

#include "UpnpUtil/upnp_util.h"
#include "support/Text.h"

namespace {

using orx_test::Taken;

std::string Base64(const char* text) { return Taken(string_to_base64(text)); }

std::string Parameter(const char* request, const char* name) {
  return Taken(get_cgi_param(request, name));
}

TEST(StringToBase64, AppendsTwoSignsWhenOneByteIsLeftOver) {
  EXPECT_EQ(Base64("M"), "TQ==");
  EXPECT_EQ(Base64("pleasure"
                   "xy"),
            "cGxlYXN1cmV4eQ==");
}

TEST(StringToBase64, AppendsNothingWhenTwoBytesAreLeftOver) {
  EXPECT_EQ(Base64("Ma"), "TWE");
  EXPECT_EQ(Base64("pleasure"), "cGxlYXN1cmU");
}

TEST(StringToBase64, AppendsNothingToWholeGroups) {
  EXPECT_EQ(Base64("Man"), "TWFu");
  EXPECT_EQ(Base64("ManMan"), "TWFuTWFu");
}

TEST(StringToBase64, IsEmptyForAnEmptyText) { EXPECT_EQ(Base64(""), ""); }

TEST(StringToBase64, IsNullForNull) { EXPECT_EQ(string_to_base64(nullptr), nullptr); }

TEST(StringFromBase64, ReadsWhatStringToBase64Writes) {
  std::string text;
  for (int i = 0; i < 70; ++i) {
    EXPECT_EQ(Taken(string_from_base64(Base64(text.c_str()).c_str())), text);
    text += static_cast<char>(255 - 3 * i);
  }
}

TEST(StringFromBase64, TakesTextsWithAndWithoutPadding) {
  EXPECT_EQ(Taken(string_from_base64("TWE")), "Ma");
  EXPECT_EQ(Taken(string_from_base64("TWE=")), "Ma");
  EXPECT_EQ(Taken(string_from_base64("TQ==")), "M");
}

TEST(StringFromBase64, EndsAtWhatIsNoDigit) {
  EXPECT_EQ(Taken(string_from_base64("TWFu*TWFu")), "Man");
  EXPECT_EQ(Taken(string_from_base64("")), "");
  EXPECT_EQ(string_from_base64(nullptr), nullptr);
}

TEST(StringToBase64, TakesBytesAbove127AsTheyAre) {
  EXPECT_EQ(Base64("\xff\xfe\xfd"), "//79");
  EXPECT_EQ(Base64("\xfb\xef\xbe"), "++++");
}

TEST(StringToBase64, TerminatesTheTextOfEveryLength) {
  std::string text;
  for (size_t length = 0; length < 64; ++length, text += 'q') {
    SCOPED_TRACE(length);
    const size_t tail = length % 3 == 0 ? 0 : (length % 3 == 1 ? 4 : 3);
    EXPECT_EQ(Base64(text.c_str()).size(), length / 3 * 4 + tail);
  }
}

TEST(GetCgiParam, GivesTheValueUpToTheNextSeparator) {
  EXPECT_EQ(Parameter("/path?id=7&x=1", "id"), "7");
  EXPECT_EQ(Parameter("/path?id=7?x=1", "id"), "7");
}

TEST(GetCgiParam, GivesTheLastValueUpToTheEnd) { EXPECT_EQ(Parameter("/path?id=7&x=1", "x"), "1"); }

TEST(GetCgiParam, DoesNotTakeTheStartOfALongerName) {
  EXPECT_EQ(get_cgi_param("/path?id=7&x=1", "i"), nullptr);
  EXPECT_EQ(get_cgi_param("/path?id=7&x=1", "d"), nullptr);
}

TEST(GetCgiParam, TakesTheFirstOfSeveral) { EXPECT_EQ(Parameter("?a=1&a=2", "a"), "1"); }

TEST(GetCgiParam, TakesThePartBeforeTheQuestionMarkAsASegmentToo) {
  EXPECT_EQ(Parameter("id=7&x=1", "id"), "7");
  EXPECT_EQ(Parameter("id=7?x=1", "id"), "7");
}

TEST(GetCgiParam, LeavesTheValueAsItStands) {
  EXPECT_EQ(Parameter("?q=a%20b=c+d&e", "q"), "a%20b=c+d");
  EXPECT_EQ(Parameter("?q=&e=1", "q"), "");
  EXPECT_EQ(Parameter("?q=", "q"), "");
}

TEST(GetCgiParam, LeavesTheRequestAsItWas) {
  std::string request = "/path?id=7&x=1";
  Parameter(request.data(), "id");
  EXPECT_EQ(request, "/path?id=7&x=1");
}

TEST(GetCgiParam, IsNullWithoutAMatch) {
  EXPECT_EQ(get_cgi_param("", "id"), nullptr);
  EXPECT_EQ(get_cgi_param("?&?&", "id"), nullptr);
  EXPECT_EQ(get_cgi_param("?id", "id"), nullptr);
  EXPECT_EQ(get_cgi_param("?ID=7", "id"), nullptr);
  EXPECT_EQ(get_cgi_param(nullptr, "id"), nullptr);
  EXPECT_EQ(get_cgi_param("?id=7", nullptr), nullptr);
}

TEST(IsRomanNumber, AcceptsTheLettersUpToTheEnd) {
  EXPECT_EQ(isRomanNumber("XIV"), 1);
  EXPECT_EQ(isRomanNumber("xiv"), 1);
  EXPECT_EQ(isRomanNumber("iIvVxX"), 1);
}

TEST(IsRomanNumber, AcceptsTheLettersUpToASpace) {
  EXPECT_EQ(isRomanNumber("II "), 1);
  EXPECT_EQ(isRomanNumber("II at sea"), 1);
  EXPECT_EQ(isRomanNumber(" at sea"), 1);
}

TEST(IsRomanNumber, RefusesEveryOtherCharacter) {
  EXPECT_EQ(isRomanNumber("XIL"), 0);
  EXPECT_EQ(isRomanNumber("CX"), 0);
  EXPECT_EQ(isRomanNumber("II\t"), 0);
  EXPECT_EQ(isRomanNumber("4"), 0);
}

TEST(IsRomanNumber, AcceptsAnEmptyWord) { EXPECT_EQ(isRomanNumber(""), 1); }

TEST(IsRomanNumber, RefusesNull) { EXPECT_EQ(isRomanNumber(nullptr), 0); }

}  // namespace

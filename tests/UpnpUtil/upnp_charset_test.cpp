#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "OSAL/CharsetConverter.h"
#include "UpnpUtil/ksx1001_table.h"
#include "UpnpUtil/upnp_string.h"
#include "support/NoConverter.h"
#include "support/Text.h"

namespace {

using orx_test::Exact;
using orx_test::ExactBytes;
using orx_test::Taken;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

std::string ToUtf8(const std::string& text) { return Taken(strdup_to_utf8(Exact(text).get())); }

std::string FromUtf8(const std::string& text) { return Taken(strdup_from_utf8(Exact(text).get())); }

bool HasConverter(const char* from) { return orx::CharsetConverter("UTF-8", from).ok(); }

TEST(ToUtf8, CopiesAscii) {
  EXPECT_EQ(ToUtf8(""), "");
  EXPECT_EQ(ToUtf8("abc\x7f\x01"), "abc\x7f\x01");
}

TEST(ToUtf8, EncodesLatin1) {
  EXPECT_EQ(ToUtf8("\xE9"), "\xC3\xA9");
  EXPECT_EQ(ToUtf8("\x80\xBF"), "\xC2\x80\xC2\xBF");
  EXPECT_EQ(ToUtf8("\xC0z\xFF"), "\xC3\x80z\xC3\xBF");
}

TEST(ToUtf8, EncodesEveryLatin1Byte) {
  for (int c = 0x80; c <= 0xFF; ++c) {
    SCOPED_TRACE(c);
    const std::string expected = {static_cast<char>(c < 0xC0 ? 0xC2 : 0xC3),
                                  static_cast<char>(c < 0xC0 ? c : c - 64)};
    EXPECT_EQ(ToUtf8(std::string(1, static_cast<char>(c))), expected);
  }
}

TEST(ToUtf8, LeavesSequencesOfTwoToSixBytes) {
  for (const std::string text :
       {"\xC3\xA9", "\xDF\xBF", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\xF8\x88\x80\x80\x80",
        "\xFC\x84\x80\x80\x80\x80", "a\xE2\x82\xAC\xC3\xA9z"})
    EXPECT_EQ(ToUtf8(text), text);
}

TEST(ToUtf8, TakesABrokenSequenceAsLatin1) {
  EXPECT_EQ(ToUtf8("\xE2\x82"), "\xC3\xA2\xC2\x82");
  EXPECT_EQ(ToUtf8("\xE2"
                   "a\xAC"),
            "\xC3\xA2"
            "a\xC2\xAC");
  EXPECT_EQ(ToUtf8("\xC3\xC3\xA9"), "\xC3\x83\xC3\xA9");
  EXPECT_EQ(ToUtf8("\xFE\x80\xFF"), "\xC3\xBE\xC2\x80\xC3\xBF");
}

TEST(ToUtf8, FitsATextThatDoublesAtEveryByte) {
  EXPECT_EQ(ToUtf8(std::string(1000, '\xE9')).size(), 2000u);
}

TEST(ToUtf8, IsNullForNull) { EXPECT_EQ(strdup_to_utf8(nullptr), nullptr); }

// Texts of up to 40 bytes, the same ones in every run, in which lead and continuation bytes abound.
std::vector<std::string> BrokenTexts() {
  static constexpr unsigned char kBytes[] = {'a',  0x7F, 0x80, 0xA0, 0xBF, 0xC2, 0xC3, 0xC4, 0xDF,
                                             0xE0, 0xE2, 0xEF, 0xF0, 0xF8, 0xFC, 0xFE, 0xFF};
  std::mt19937 random(1);
  std::vector<std::string> texts(5000);
  for (std::string& text : texts)
    for (auto left = random() % 41; left > 0; --left)
      text += static_cast<char>(kBytes[random() % sizeof kBytes]);
  return texts;
}

TEST(ToUtf8, LeavesWhatItGave) {
  for (const std::string& text : BrokenTexts()) {
    const std::string once = ToUtf8(text);
    EXPECT_LE(once.size(), 2 * text.size());
    EXPECT_EQ(ToUtf8(once), once);
  }
}

TEST(FromUtf8, NeverGivesMoreThanItTook) {
  for (const std::string& text : BrokenTexts()) EXPECT_LE(FromUtf8(text).size(), text.size());
}

TEST(FromUtf8, CopiesAscii) {
  EXPECT_EQ(FromUtf8(""), "");
  EXPECT_EQ(FromUtf8("abc\x7f"), "abc\x7f");
}

TEST(FromUtf8, GivesBackEveryLatin1Byte) {
  for (int c = 0x80; c <= 0xFF; ++c) {
    const std::string byte(1, static_cast<char>(c));
    EXPECT_EQ(FromUtf8(ToUtf8(byte)), byte);
  }
}

TEST(FromUtf8, GivesOneQuestionMarkForALongerSequence) {
  EXPECT_EQ(FromUtf8("\xE2\x82\xAC"), "?");
  EXPECT_EQ(FromUtf8("a\xF0\x9F\x98\x80z"), "a?z");
  EXPECT_EQ(FromUtf8("\xF8\x88\x80\x80\x80z"), "?z");
  EXPECT_EQ(FromUtf8("\xFC\x84\x80\x80\x80\x80z"), "?z");
}

TEST(FromUtf8, DropsWhatLatin1DoesNotHaveInTwoBytes) {
  EXPECT_EQ(FromUtf8("a\xC4\x80z"), "az");
  EXPECT_EQ(FromUtf8("a\xDF\xBFz"), "az");
}

TEST(FromUtf8, DropsStrayBytes) { EXPECT_EQ(FromUtf8("a\x80\xBF\xFE\xFFz"), "az"); }

TEST(FromUtf8, EndsAtALeadByteThatEndsTheText) {
  EXPECT_EQ(FromUtf8("a\xC2"), "a");
  EXPECT_EQ(FromUtf8("a\xC3"), "a");
  EXPECT_EQ(FromUtf8("a\xDF"), "a");
}

TEST(FromUtf8, GivesAQuestionMarkForALongerSequenceThatTheEndCutsOff) {
  for (const std::string whole :
       {"\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\xF8\x88\x80\x80\x80", "\xFC\x84\x80\x80\x80\x80"})
    for (size_t size = 1; size < whole.size(); ++size)
      EXPECT_EQ(FromUtf8("a" + whole.substr(0, size)), "a?");
}

TEST(FromUtf8, IsNullForNull) { EXPECT_EQ(strdup_from_utf8(nullptr), nullptr); }

std::string FromUtf16ByName(const std::string& text) {
  CaptureStdout();
  const std::string result = Taken(upnp_string_utf16_to_utf8(Exact(text).get()));
  EXPECT_EQ(GetCapturedStdout(), "\nupnp_string_utf16_to_utf8 called ");
  return result;
}

TEST(StringUtf16ToUtf8, EncodesEveryByteAbove127AsTwo) {
  EXPECT_EQ(FromUtf16ByName("a\x7f\x80\xE9\xFF"), "a\x7f\xC2\x80\xC3\xA9\xC3\xBF");
  EXPECT_EQ(FromUtf16ByName("\xC3\xA9"), "\xC3\x83\xC2\xA9");
  EXPECT_EQ(FromUtf16ByName(""), "");
}

TEST(StringUtf16ToUtf8, IsNullForNull) {
  CaptureStdout();
  EXPECT_EQ(upnp_string_utf16_to_utf8(nullptr), nullptr);
  EXPECT_EQ(GetCapturedStdout(), "\nupnp_string_utf16_to_utf8 called ");
}

std::string ToUtf16ByName(const std::string& text) {
  return Taken(upnp_string_utf8_to_utf16(Exact(text).get()));
}

TEST(StringUtf8ToUtf16, GivesTheLowEightBitsOfEachCharacter) {
  EXPECT_EQ(ToUtf16ByName("a\x7f"), "a\x7f");
  EXPECT_EQ(ToUtf16ByName("\xC3\xA9\xC5\x81"), "\xE9\x41");
  EXPECT_EQ(ToUtf16ByName("\xE2\x82\xAC\xE3\x81\x82z"), "\xAC\x42z");
}

TEST(StringUtf8ToUtf16, DropsWhatIsNoSuchSequence) {
  EXPECT_EQ(ToUtf16ByName("a\x80\xBF\xFEz"), "az");
  EXPECT_EQ(ToUtf16ByName("a\xF0\x9F\x98\x80z"), "az");
}

TEST(StringUtf8ToUtf16, EndsAtASequenceThatTheEndCutsOff) {
  EXPECT_EQ(ToUtf16ByName("a\xC3"), "a");
  EXPECT_EQ(ToUtf16ByName("a\xE2"), "a");
  EXPECT_EQ(ToUtf16ByName("a\xE2\x82"), "a");
  EXPECT_EQ(ToUtf16ByName("a\xF0\x9F\x98"), "a");
}

TEST(StringUtf8ToUtf16, IsNullForNull) { EXPECT_EQ(upnp_string_utf8_to_utf16(nullptr), nullptr); }

TEST(Wcslen, CountsBytesUpToTheFirstZero) {
  EXPECT_EQ(upnp_wcslen(Exact("abc").get()), 3);
  EXPECT_EQ(upnp_wcslen("a\xC3\xA9\0z"), 3);
  EXPECT_EQ(upnp_wcslen(""), 0);
  EXPECT_EQ(upnp_wcslen(nullptr), 0);
}

// The first position by looking at one after the other.
int PositionByWalk(unsigned unit) {
  const auto* end = orx::kKsx1001Table + orx::kKsx1001Positions;
  const auto* found = std::find(orx::kKsx1001Table, end, unit);
  return found == end ? -1 : static_cast<int>(found - orx::kKsx1001Table);
}

// Converts units from a block without a unit to spare.
std::string MultiByte(const std::vector<unsigned short>& units) {
  const auto exact = std::make_unique<unsigned short[]>(units.size());
  std::copy(units.begin(), units.end(), exact.get());
  return Taken(UnicodeToMultiByte(exact.get(), static_cast<int>(units.size())));
}

TEST(Ksx1001Table, AgreesWithTheSystemsConverterAtEveryPosition) {
  if (!HasConverter("EUC-KR")) GTEST_SKIP() << "this system's converter does not know EUC-KR";
  for (size_t i = 0; i < orx::kKsx1001Positions; ++i) {
    const orx::CharsetConverter converter("UTF-16LE", "EUC-KR");
    const char pair[] = {static_cast<char>(0xA1 + i / orx::kKsx1001Columns),
                         static_cast<char>(0xA1 + i % orx::kKsx1001Columns)};
    unsigned char unit[4] = {};
    const char* in = pair;
    char* out = reinterpret_cast<char*>(unit);
    size_t inLeft = sizeof pair, outLeft = sizeof unit;
    const bool assigned = converter.Convert(&in, &inLeft, &out, &outLeft) && outLeft == 2;
    EXPECT_EQ(orx::kKsx1001Table[i], assigned ? unit[0] + 256 * unit[1] : 0) << i;
  }
}

TEST(UnicodeToMultiByte, FindsTheFirstPositionOfEveryUnit) {
  for (unsigned unit = 1; unit <= 0xFFFF; ++unit) {
    const int position = PositionByWalk(unit);
    std::string expected;
    if (unit <= 127)
      expected = std::string(1, static_cast<char>(unit));
    else if (position >= 0)
      expected = {static_cast<char>(0xA1 + position / 94), static_cast<char>(0xA1 + position % 94)};
    ASSERT_EQ(MultiByte({static_cast<unsigned short>(unit)}), expected) << unit;
  }
}

TEST(UnicodeToMultiByte, WritesOneByteForAsciiAndTwoForKsx1001) {
  EXPECT_EQ(MultiByte({'a', 0x3000, 0xAC00, 0xD79D, 'z'}), "a\xA1\xA1\xB0\xA1\xC8\xFEz");
}

TEST(UnicodeToMultiByte, LeavesOutWhatTheTableDoesNotHave) {
  EXPECT_EQ(MultiByte({'a', 0x0080, 0x00E9, 0xD83D, 0xDE00, 0xFFFF, 'z'}), "az");
}

TEST(UnicodeToMultiByte, StopsAtAZeroUnit) { EXPECT_EQ(MultiByte({'a', 0, 'z'}), "a"); }

TEST(UnicodeToMultiByte, StopsAtItsCount) {
  const unsigned short units[] = {'a', 'b', 'c', 0};
  EXPECT_EQ(Taken(UnicodeToMultiByte(units, 2)), "ab");
}

TEST(UnicodeToMultiByte, IsNullForNothing) {
  const unsigned short units[] = {'a', 0};
  EXPECT_EQ(UnicodeToMultiByte(nullptr, 1), nullptr);
  EXPECT_EQ(UnicodeToMultiByte(units, 0), nullptr);
  EXPECT_EQ(UnicodeToMultiByte(units, -1), nullptr);
}

std::string FromEucKr(const std::string& bytes) {
  return Taken(convert_MB_to_UTF8(ExactBytes(bytes).get(), static_cast<int>(bytes.size())));
}

TEST(ConvertMbToUtf8, ConvertsEucKr) {
  if (!HasConverter("EUC-KR")) GTEST_SKIP() << "this system's converter does not know EUC-KR";
  EXPECT_EQ(FromEucKr("a\xB0\xA1\xA1\xA1z"), "a\xEA\xB0\x80\xE3\x80\x80z");
  EXPECT_EQ(FromEucKr(""), "");
}

TEST(ConvertMbToUtf8, AgreesWithTheConverterOnAscii) {
  const orx::CharsetConverter converter("UTF-8", "EUC-KR");
  if (!converter.ok()) GTEST_SKIP() << "this system's converter does not know EUC-KR";
  for (int c = 1; c < 128; ++c) {
    const char byte = static_cast<char>(c);
    char converted[4] = {};
    const char* in = &byte;
    char* out = converted;
    size_t inLeft = 1, outLeft = 3;
    ASSERT_TRUE(converter.Convert(&in, &inLeft, &out, &outLeft));
    EXPECT_EQ(FromEucKr(std::string(1, byte)), converted);
  }
}

TEST(ConvertMbToUtf8, StopsAtItsCount) { EXPECT_EQ(Taken(convert_MB_to_UTF8("abc", 2)), "ab"); }

TEST(ConvertMbToUtf8, StopsAtATerminator) {
  EXPECT_EQ(Taken(convert_MB_to_UTF8(Exact("ab").get(), 1000)), "ab");
  EXPECT_EQ(FromEucKr(std::string("ab\0\xFF", 4)), "ab");
}

TEST(ConvertMbToUtf8, IsNullForWhatIsNotEucKr) {
  EXPECT_EQ(FromEucKr("a\xFF\xFFz"), "(null)");
  EXPECT_EQ(FromEucKr("a\xB0"), "(null)");
  EXPECT_EQ(convert_MB_to_UTF8(nullptr, 1), nullptr);
  EXPECT_EQ(convert_MB_to_UTF8("a", -1), nullptr);
}

TEST(ConvertMbToUtf8, IsNullWithoutAConverter) {
  const orx_test::NoConverter none;
  EXPECT_EQ(FromEucKr("\xB0\xA1"), "(null)");
}

TEST(ConvertMbToUtf8, NeedsNoConverterForAscii) {
  const orx_test::NoConverter none;
  EXPECT_EQ(FromEucKr("IMG_\\~0012"), "IMG_\\~0012");
  EXPECT_EQ(FromEucKr(""), "");
  EXPECT_EQ(Taken(getUTF8FromMB("abc", 2)), "ab");
}

TEST(ConvertUtf16ToUtf8, NeedsNoConverterForAscii) {
  const orx_test::NoConverter none;
  const unsigned short units[] = {'I', '\\', '~', 0};
  EXPECT_EQ(Taken(upnp_convert_utf16_to_utf8(nullptr, units, 4)), "I\\~");
}

TEST(GetUtf8FromMb, IsTheSameConversion) {
  if (!HasConverter("EUC-KR")) GTEST_SKIP() << "this system's converter does not know EUC-KR";
  EXPECT_EQ(Taken(getUTF8FromMB("\xB0\xA1z", 2)), "\xEA\xB0\x80");
  EXPECT_EQ(getUTF8FromMB("\xFF\xFF", 2), nullptr);
}

TEST(ConvertUtf16ToUtf8, GoesByWayOfEucKr) {
  if (!HasConverter("EUC-KR")) GTEST_SKIP() << "this system's converter does not know EUC-KR";
  const unsigned short units[] = {'a', 0xAC00, 0x00E9, 'z', 0, 'y'};
  EXPECT_EQ(Taken(upnp_convert_utf16_to_utf8(nullptr, units, 6)), "a\xEA\xB0\x80z");
  EXPECT_EQ(Taken(upnp_convert_utf16_to_utf8(nullptr, units, 1)), "a");
}

TEST(ConvertUtf16ToUtf8, GivesBackEveryCharacterOfKsx1001) {
  if (!HasConverter("EUC-KR")) GTEST_SKIP() << "this system's converter does not know EUC-KR";
  for (size_t i = 0; i < orx::kKsx1001Positions; ++i) {
    const unsigned short unit = orx::kKsx1001Table[i];
    if (unit == 0) continue;
    std::string utf8;  // all have two or three bytes
    if (unit < 0x800)
      utf8 = {static_cast<char>(0xC0 | unit >> 6), static_cast<char>(0x80 | (unit & 63))};
    else
      utf8 = {static_cast<char>(0xE0 | unit >> 12), static_cast<char>(0x80 | (unit >> 6 & 63)),
              static_cast<char>(0x80 | (unit & 63))};
    ASSERT_EQ(Taken(upnp_convert_utf16_to_utf8(nullptr, &unit, 1)), utf8) << i;
  }
}

TEST(ConvertUtf16ToUtf8, IsEmptyWhenNothingIsLeft) {
  const unsigned short units[] = {0x00E9, 0};
  EXPECT_EQ(Taken(upnp_convert_utf16_to_utf8(nullptr, units, 2)), "");
}

TEST(ConvertUtf16ToUtf8, IsNullForNothing) {
  const unsigned short units[] = {'a', 0};
  EXPECT_EQ(upnp_convert_utf16_to_utf8(nullptr, nullptr, 1), nullptr);
  EXPECT_EQ(upnp_convert_utf16_to_utf8(nullptr, units, 0), nullptr);
}

std::string FromShiftJis(const std::string& text) {
  return Taken(upnp_util_convert_shift_jis_to_utf8(Exact(text).get()));
}

class ShiftJis : public testing::Test {
 protected:
  void SetUp() override {
    if (!HasConverter("CP932")) GTEST_SKIP() << "this system's converter does not know CP932";
  }
};

TEST_F(ShiftJis, IsConvertedToUtf8) {
  EXPECT_EQ(FromShiftJis("a\x82\xA0z"), "a\xE3\x81\x82z");
  EXPECT_EQ(FromShiftJis("\x93\xFA\x96\x7B"), "\xE6\x97\xA5\xE6\x9C\xAC");
}

TEST_F(ShiftJis, HasTheAsciiCharactersOfItsConverter) {
  const orx::CharsetConverter converter("UTF8", "CP932");
  for (int c = 1; c < 128; ++c) {
    const char byte = static_cast<char>(c);
    char converted[4] = {};
    const char* in = &byte;
    char* out = converted;
    size_t inLeft = 1, outLeft = 3;
    ASSERT_TRUE(converter.Convert(&in, &inLeft, &out, &outLeft));
    EXPECT_EQ(FromShiftJis(std::string(1, byte)), converted);
  }
}

TEST_F(ShiftJis, IsConvertedUpToWhatCannotBe) {
  EXPECT_EQ(FromShiftJis("a\x82\xA0\xFF\xFFz"), "a\xE3\x81\x82");
  EXPECT_EQ(FromShiftJis("ab\x82"), "ab");
  EXPECT_EQ(FromShiftJis("\xFF\xFF"), "");
}

TEST_F(ShiftJis, IsConvertedUpToTwiceItsLength) {
  // Half-width katakana have one byte here and three in UTF-8.
  EXPECT_EQ(FromShiftJis("\xB1\xB2\xB3"), "\xEF\xBD\xB1\xEF\xBD\xB2");
  EXPECT_EQ(FromShiftJis("\xB1"), "");
}

TEST_F(ShiftJis, IsNullForNothing) {
  EXPECT_EQ(upnp_util_convert_shift_jis_to_utf8(nullptr), nullptr);
  EXPECT_EQ(upnp_util_convert_shift_jis_to_utf8(""), nullptr);
}

TEST(ShiftJisWithoutConverter, IsCopied) {
  const orx_test::NoConverter none;
  EXPECT_EQ(FromShiftJis("a\x82\xA0z"), "a\x82\xA0z");
}

TEST(ShiftJisWithoutConverter, IsTheSameForAscii) {
  const orx_test::NoConverter none;
  for (int c = 1; c < 128; ++c) {
    const std::string byte(1, static_cast<char>(c));
    EXPECT_EQ(FromShiftJis(byte), byte);
  }
}

TEST(IsShiftJis, SaysYesAtAnyByteFrom81To9F) {
  EXPECT_EQ(upnp_util_is_shift_jis("\x82"), 1);
  EXPECT_EQ(upnp_util_is_shift_jis("\x82"
                                   "plain text behind it"),
            1);
  EXPECT_EQ(upnp_util_is_shift_jis("plain text before it\x81"), 1);
  EXPECT_EQ(upnp_util_is_shift_jis("plain text before it\x9F"), 1);
}

TEST(IsShiftJis, SaysYesWhenMostBytesAreAbove80) {
  EXPECT_EQ(upnp_util_is_shift_jis("\xB1\xB2z"), 1);
  EXPECT_EQ(upnp_util_is_shift_jis("\xB1\xB2yz"), 0);
  EXPECT_EQ(upnp_util_is_shift_jis("\xB1\xB2xyz"), 0);
  EXPECT_EQ(upnp_util_is_shift_jis("\xB1"), 1);
  EXPECT_EQ(upnp_util_is_shift_jis("\xA0"), 1);
}

TEST(IsShiftJis, DoesNotCount80Itself) { EXPECT_EQ(upnp_util_is_shift_jis("\x80\x80"), 0); }

TEST(IsShiftJis, SaysNoForNothing) {
  EXPECT_EQ(upnp_util_is_shift_jis(nullptr), 0);
  EXPECT_EQ(upnp_util_is_shift_jis(""), 0);
  EXPECT_EQ(upnp_util_is_shift_jis("plain"), 0);
}

}  // namespace

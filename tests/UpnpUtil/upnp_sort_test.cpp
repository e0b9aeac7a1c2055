#include <gtest/gtest.h>

#include <string>

#include "UpnpUtil/upnp_string.h"
#include "support/Text.h"

namespace {

using orx_test::Exact;

int Compare(const std::string& a, const std::string& b) {
  return utf8_stricmp(Exact(a).get(), Exact(b).get());
}

// The base letter by ranges of codes, '\0' where there is none.
char BaseLetter(int code) {
  struct Range {
    int first, last;
    char letter;
  };
  constexpr Range kRanges[] = {{192, 196, 'A'}, {197, 197, 'Z'}, {198, 198, 'A'}, {199, 199, 'C'},
                               {200, 203, 'E'}, {204, 207, 'I'}, {209, 209, 'N'}, {210, 216, 'O'},
                               {217, 220, 'U'}, {224, 228, 'A'}, {229, 229, 'Z'}, {230, 230, 'A'},
                               {231, 231, 'C'}, {232, 235, 'E'}, {236, 239, 'I'}, {241, 241, 'N'},
                               {242, 248, 'O'}, {249, 252, 'U'}};
  for (const Range& range : kRanges)
    if (code >= range.first && code <= range.last) return range.letter;
  return '\0';
}

TEST(SortChar, FoldsEveryLetterBehindC3) {
  for (int second = 0; second < 256; ++second) {
    SCOPED_TRACE(second);
    const char base = BaseLetter((second + 64) % 256);
    EXPECT_EQ(get_urf8_sortchar(0xC3, static_cast<unsigned char>(second)),
              base != '\0' ? base : 0xC3);
  }
}

TEST(SortChar, FoldsTheCodeItselfBehindC2) {
  for (int second = 0; second < 256; ++second) {
    SCOPED_TRACE(second);
    const char base = BaseLetter(second);
    EXPECT_EQ(get_urf8_sortchar(0xC2, static_cast<unsigned char>(second)),
              base != '\0' ? base : 0xC2);
  }
}

TEST(SortChar, LeavesEveryOtherFirstByte) {
  for (int first = 0; first < 256; ++first) {
    if (first == 0xC2 || first == 0xC3) continue;
    EXPECT_EQ(get_urf8_sortchar(static_cast<unsigned char>(first), 0x89), first);
  }
}

TEST(Stricmp, IgnoresTheCaseOfAsciiLetters) {
  EXPECT_EQ(Compare("Sunset", "sUNSET"), 0);
  EXPECT_EQ(Compare("a", "B"), -1);
  EXPECT_EQ(Compare("b", "A"), 1);
}

TEST(Stricmp, FoldsTheFirstByteOfALetterToItsBase) {
  EXPECT_EQ(Compare("\xC3\x89", "D"), 1);
  EXPECT_EQ(Compare("\xC3\x89", "F"), -1);
  EXPECT_EQ(Compare("\xC3\xA9", "\xC3\xA8"), 1);  // the second bytes still differ
  EXPECT_EQ(Compare("\xC3\x89", "E"), 1);         // equal but for the byte left over
}

TEST(Stricmp, ComparesTheSecondByteOfAFoldedLetterToo) {
  EXPECT_EQ(Compare("\xC3\x89t\xC3\xA9", "Ete"), 1);
  EXPECT_EQ(Compare("\xC3\x89t\xC3\xA9", "E\x89t\xC3\xA9"), 0);
}

TEST(Stricmp, SortsAWithRingBehindEveryPlainLetter) {
  EXPECT_EQ(Compare("\xC3\x85", "Z"), 1);
  EXPECT_EQ(Compare("\xC3\xA5", "z"), 1);
  EXPECT_EQ(Compare("\xC3\x85", "Y"), 1);
}

TEST(Stricmp, ComparesOtherBytesAsUnsigned) {
  EXPECT_EQ(Compare("\xE2", "z"), 1);
  EXPECT_EQ(Compare("z", "\xE2"), -1);
}

TEST(Stricmp, SortsTheShorterTextFirst) {
  EXPECT_EQ(Compare("abc", "abcd"), -1);
  EXPECT_EQ(Compare("abcd", "abc"), 1);
  EXPECT_EQ(Compare("", "a"), -1);
  EXPECT_EQ(Compare("", ""), 0);
}

TEST(Stricmp, SortsNullFirst) {
  EXPECT_EQ(utf8_stricmp(nullptr, ""), -1);
  EXPECT_EQ(utf8_stricmp("", nullptr), 1);
  EXPECT_EQ(utf8_stricmp(nullptr, nullptr), 0);
}

TEST(Stricmp, LooksNoFurtherThanALeadByteAtTheEnd) {
  EXPECT_EQ(Compare("a\xC3", "a\xC3"), 0);
  EXPECT_EQ(Compare("a\xC2", "a\xC3"), -1);
}

TEST(Istrstr, FindsTheFirstPlaceWhateverTheCase) {
  const char text[] = "A bus, a Bus";
  EXPECT_EQ(istrstr(text, "BUS"), text + 2);
  EXPECT_EQ(istrstr(text, "a bus"), text);
  EXPECT_EQ(istrstr(text, "a b"), text);
  EXPECT_EQ(istrstr(text, "s"), text + 4);
}

TEST(Istrstr, IsNullWhenThereIsNone) {
  EXPECT_EQ(istrstr(Exact("bus").get(), "buses"), nullptr);
  EXPECT_EQ(istrstr("bus", "x"), nullptr);
  EXPECT_EQ(istrstr("", "x"), nullptr);
  EXPECT_EQ(istrstr(nullptr, "x"), nullptr);
  EXPECT_EQ(istrstr("bus", nullptr), nullptr);
}

TEST(Istrstr, FindsAnEmptyNeedleAtTheFirstPositionThereIs) {
  const char text[] = "bus";
  EXPECT_EQ(istrstr(text, ""), text);
  EXPECT_EQ(istrstr("", ""), nullptr);
}

}  // namespace

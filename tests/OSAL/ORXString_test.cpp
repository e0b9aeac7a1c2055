#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "OSAL/ORXAString.h"
#include "OSAL/ORXCString.h"
#include "OSAL/ORXMemory.h"
#include "OSAL/ORXUString.h"
#include "support/Text.h"

namespace {

using orx_test::Exact;
using orx_test::Taken;

int Sign(int value) { return (value > 0) - (value < 0); }

// ---- what both classes of 8-bit text have in common ---------------------------------------------

template <class String>
class ByteString : public testing::Test {};
using ByteStrings = testing::Types<ORXAString, ORXCString>;
TYPED_TEST_SUITE(ByteString, ByteStrings);

TYPED_TEST(ByteString, ConcateAppendsAndReturnsItsBuffer) {
  char text[8] = "ab";
  EXPECT_EQ(TypeParam::Concate(text, "cd"), text);
  EXPECT_STREQ(text, "abcd");
}

TYPED_TEST(ByteString, ConcateAppendsAtMostTheGivenCount) {
  char text[8] = "ab";
  EXPECT_EQ(TypeParam::Concate(text, "cdef", 2), text);
  EXPECT_STREQ(text, "abcd");
  TypeParam::Concate(text, "e", 100);
  EXPECT_STREQ(text, "abcde");
}

TYPED_TEST(ByteString, CopyCopiesTheTerminatorToo) {
  char text[8] = "xxxxxxx";
  EXPECT_EQ(TypeParam::Copy(text, "ab"), text);
  EXPECT_EQ(std::string(text, 8), std::string("ab\0xxxx\0", 8));
}

TYPED_TEST(ByteString, CopyWithACountPadsWithZeros) {
  char text[8] = "xxxxxxx";
  EXPECT_EQ(TypeParam::Copy(text, "ab", 4), text);
  EXPECT_EQ(std::string(text, 8), std::string("ab\0\0xxx\0", 8));
  TypeParam::Copy(text, "cdef", 2);
  EXPECT_EQ(std::string(text, 8), std::string("cd\0\0xxx\0", 8));
}

TYPED_TEST(ByteString, DiffComparesBytesAsUnsigned) {
  EXPECT_EQ(TypeParam::Diff("abc", "abc"), 0);
  EXPECT_LT(TypeParam::Diff("abc", "abd"), 0);
  EXPECT_GT(TypeParam::Diff("\xE9", "z"), 0);
  EXPECT_GT(TypeParam::Diff("a", "A"), 0);
}

TYPED_TEST(ByteString, DiffComparesAtMostTheGivenCount) {
  EXPECT_EQ(TypeParam::Diff("abc", "abd", 2), 0);
  EXPECT_LT(TypeParam::Diff("abc", "abd", 3), 0);
  EXPECT_EQ(TypeParam::Diff("abc", "xyz", 0), 0);
}

TYPED_TEST(ByteString, LengthCountsBytes) {
  EXPECT_EQ(TypeParam::Length(""), 0u);
  EXPECT_EQ(TypeParam::Length("a\xC3\xA9"), 3u);
}

TYPED_TEST(ByteString, IntegerReadsTheLeadingDecimalNumber) {
  EXPECT_EQ(TypeParam::Integer("42"), 42);
  EXPECT_EQ(TypeParam::Integer(" -7x"), -7);
  EXPECT_EQ(TypeParam::Integer("0x1F"), 0);
  EXPECT_EQ(TypeParam::Integer("010"), 10);
  EXPECT_EQ(TypeParam::Integer(""), 0);
}

TYPED_TEST(ByteString, PrintFormatsIntoItsBuffer) {
  char text[32];
  EXPECT_EQ(TypeParam::Print(text, "%s-%04d", "ab", 7), 7);
  EXPECT_STREQ(text, "ab-0007");
}

TYPED_TEST(ByteString, CharFindsTheFirstPlace) {
  const char text[] = "a.b.c";
  EXPECT_EQ(TypeParam::Char(text, '.'), text + 1);
  EXPECT_EQ(TypeParam::Char(text, '\0'), text + 5);
  EXPECT_EQ(TypeParam::Char(text, 'x'), nullptr);
}

TYPED_TEST(ByteString, CharRevFindsTheLastPlaceTheTerminatorIncluded) {
  const char text[] = "a.b.c";
  EXPECT_EQ(TypeParam::CharRev(text, '.'), text + 3);
  EXPECT_EQ(TypeParam::CharRev(text, 'a'), text);
  EXPECT_EQ(TypeParam::CharRev(text, '\0'), text + 5);
  EXPECT_EQ(TypeParam::CharRev(Exact("a.b").get(), 'x'), nullptr);
  EXPECT_EQ(TypeParam::CharRev(Exact("").get(), 'x'), nullptr);
  const char high[] = "a\xE9";
  EXPECT_EQ(TypeParam::CharRev(high, 0xE9), high + 1);
}

TYPED_TEST(ByteString, LocateStrFindsAPart) {
  const char text[] = "one two";
  EXPECT_EQ(TypeParam::LocateStr(text, "two"), text + 4);
  EXPECT_EQ(TypeParam::LocateStr(text, "Two"), nullptr);
  EXPECT_EQ(TypeParam::LocateStr(text, ""), text);
}

TYPED_TEST(ByteString, DupCopyCopies) {
  EXPECT_EQ(Taken(TypeParam::DupCopy(Exact("abc").get())), "abc");
  EXPECT_EQ(Taken(TypeParam::DupCopy("")), "");
  EXPECT_EQ(TypeParam::DupCopy(nullptr), nullptr);
}

// ---- what only one of them has ------------------------------------------------------------------

TEST(ORXAString, DiffCaseIgnoresTheCaseOfLetters) {
  EXPECT_EQ(ORXAString::DiffCase("JPG", "jpg"), 0);
  EXPECT_LT(ORXAString::DiffCase("JPG", "mpo"), 0);
  EXPECT_EQ(ORXAString::DiffCase("JPEG", "jpg", 2), 0);
  EXPECT_LT(ORXAString::DiffCase("JPEG", "jpg", 3), 0);
}

TEST(ORXAString, ReadsNumbers) {
  EXPECT_EQ(ORXAString::Ulong("4000000000x"), 4000000000ul);
  EXPECT_EQ(ORXAString::Long("-12"), -12);
  EXPECT_EQ(ORXAString::Double("2.5x"), 2.5);
}

TEST(ORXAString, TellsWhereANumberEndsAndTakesItsBase) {
  const char text[] = "ff-1.5e1z";
  char* end = nullptr;
  EXPECT_EQ(ORXAString::Long(text, &end, 16), 255);
  EXPECT_EQ(end, text + 2);
  EXPECT_EQ(ORXAString::Double(end, &end), -15.0);
  EXPECT_EQ(end, text + 8);
}

TEST(ORXAString, LocateiStrIgnoresTheCaseOfLetters) {
  const char text[] = "one Two";
  EXPECT_EQ(ORXAString::LocateiStr(text, "tWO"), text + 4);
  EXPECT_EQ(ORXAString::LocateiStr(text, "twos"), nullptr);
}

// ---- ORXUString, 8-bit --------------------------------------------------------------------------

TEST(ORXUString, DiffCaseIgnoresTheCaseOfLetters) {
  EXPECT_EQ(ORXUString::DiffCase("JPG", "jpg"), 0);
  EXPECT_GT(ORXUString::DiffCase("mpo", "JPG"), 0);
  EXPECT_EQ(ORXUString::DiffCase("JPEG", "jpg", 2), 0);
}

TEST(ORXUString, ReadsNumbers) {
  char* end = nullptr;
  const char text[] = "077 1.5";
  EXPECT_EQ(ORXUString::Long(text, &end, 8), 63);
  EXPECT_EQ(end, text + 3);
  EXPECT_EQ(ORXUString::Double(end, nullptr), 1.5);
}

TEST(ORXUString, LocateStrFindsAPart) {
  const char text[] = "one two";
  EXPECT_EQ(ORXUString::LocateStr(text, "two"), text + 4);
  EXPECT_EQ(ORXUString::LocateStr(text, "TWO"), nullptr);
}

TEST(ORXUString, LocateiStrFindsAPartWhateverTheCase) {
  const char text[] = ".JPG,.jpeg";
  EXPECT_EQ(ORXUString::LocateiStr(text, ".jpg"), text);
  EXPECT_EQ(ORXUString::LocateiStr(text, ".JPEG"), text + 5);
  EXPECT_EQ(ORXUString::LocateiStr(text, ""), text);
  EXPECT_EQ(ORXUString::LocateiStr(Exact("jpg").get(), "jpgs"), nullptr);
  EXPECT_EQ(ORXUString::LocateiStr(Exact("").get(), "x"), nullptr);
}

TEST(ORXUString, TolowerAndToupperChangeAsciiLettersAlone) {
  for (int c = -200; c < 70000; ++c) {
    ASSERT_EQ(ORXUString::Tolower(c), c >= 'A' && c <= 'Z' ? c + 32 : c);
    ASSERT_EQ(ORXUString::Toupper(c), c >= 'a' && c <= 'z' ? c - 32 : c);
  }
}

TEST(ORXUString, DupCopyCopies) { EXPECT_EQ(Taken(ORXUString::DupCopy("abc")), "abc"); }

TEST(ORXUString, SearchAcceptPosCountsWhatIsInTheSet) {
  EXPECT_EQ(ORXUString::SearchAcceptPos("aabbc", "ab"), 4u);
  EXPECT_EQ(ORXUString::SearchAcceptPos("xaab", "ab"), 0u);
  EXPECT_EQ(ORXUString::SearchAcceptPos("abab", "ab"), 4u);
  EXPECT_EQ(ORXUString::SearchAcceptPos("ab", ""), 0u);
}

TEST(ORXUString, SearchNoRejectPosCountsWhatIsNotInTheSet) {
  EXPECT_EQ(ORXUString::SearchNoRejectPos("path?x", "?&"), 4u);
  EXPECT_EQ(ORXUString::SearchNoRejectPos("?x", "?&"), 0u);
  EXPECT_EQ(ORXUString::SearchNoRejectPos("path", "?&"), 4u);
  EXPECT_EQ(ORXUString::SearchNoRejectPos("path", ""), 4u);
}

// ---- ORXUString, 16-bit -------------------------------------------------------------------------

using Units = std::vector<unsigned short>;

// A terminated copy on the heap without a unit to spare.
std::unique_ptr<unsigned short[]> Wide(const Units& units) {
  auto copy = std::make_unique<unsigned short[]>(units.size() + 1);
  std::copy(units.begin(), units.end(), copy.get());
  return copy;
}

Units UnitsOf(const unsigned short* text) { return Units(text, text + ORXUString::Length(text)); }

const Units kAbc = {'a', 'b', 'c'};

TEST(ORXUStringWide, LengthCountsUnits) {
  EXPECT_EQ(ORXUString::Length(Wide({}).get()), 0u);
  EXPECT_EQ(ORXUString::Length(Wide({'a', 0xAC00, 0x0100}).get()), 3u);
}

TEST(ORXUStringWide, CopyCopiesTheTerminatorToo) {
  const auto to = std::make_unique<unsigned short[]>(4);
  EXPECT_EQ(ORXUString::Copy(to.get(), Wide(kAbc).get()), to.get());
  EXPECT_EQ(UnitsOf(to.get()), kAbc);
}

TEST(ORXUStringWide, CopyWithACountPadsWithZeros) {
  unsigned short to[] = {9, 9, 9, 9, 9};
  EXPECT_EQ(ORXUString::Copy(to, Wide({'a'}).get(), 4), to);
  EXPECT_EQ(Units(to, to + 5), (Units{'a', 0, 0, 0, 9}));
  ORXUString::Copy(to, Wide(kAbc).get(), 2);
  EXPECT_EQ(Units(to, to + 5), (Units{'a', 'b', 0, 0, 9}));
}

TEST(ORXUStringWide, ConcateAppends) {
  const auto to = std::make_unique<unsigned short[]>(6);
  to[0] = 'x';
  EXPECT_EQ(ORXUString::Concate(to.get(), Wide(kAbc).get()), to.get());
  EXPECT_EQ(UnitsOf(to.get()), (Units{'x', 'a', 'b', 'c'}));
  ORXUString::Concate(to.get(), Wide(kAbc).get(), 1);
  EXPECT_EQ(UnitsOf(to.get()), (Units{'x', 'a', 'b', 'c', 'a'}));
}

TEST(ORXUStringWide, ConcateEndsTheTextWhateverStoodThere) {
  unsigned short to[] = {'x', 0, 9, 9, 9, 9};
  ORXUString::Concate(to, Wide(kAbc).get(), 2);
  EXPECT_EQ(Units(to, to + 6), (Units{'x', 'a', 'b', 0, 9, 9}));
}

TEST(ORXUStringWide, ConcateWithACountStopsAtTheTerminator) {
  const auto to = std::make_unique<unsigned short[]>(4);
  ORXUString::Concate(to.get(), Wide(kAbc).get(), 100);
  EXPECT_EQ(UnitsOf(to.get()), kAbc);
  ORXUString::Concate(to.get(), Wide(kAbc).get(), 0);
  EXPECT_EQ(UnitsOf(to.get()), kAbc);
}

TEST(ORXUStringWide, DiffComparesUnits) {
  const auto abc = Wide(kAbc), abd = Wide({'a', 'b', 'd'}), ab = Wide({'a', 'b'});
  EXPECT_EQ(ORXUString::Diff(abc.get(), Wide(kAbc).get()), 0);
  EXPECT_EQ(Sign(ORXUString::Diff(abc.get(), abd.get())), -1);
  EXPECT_EQ(Sign(ORXUString::Diff(abc.get(), ab.get())), 1);
  EXPECT_EQ(Sign(ORXUString::Diff(Wide({0xFFFF}).get(), Wide({1}).get())), 1);
}

TEST(ORXUStringWide, DiffComparesAtMostTheGivenCount) {
  const auto abc = Wide(kAbc), abd = Wide({'a', 'b', 'd'}), ab = Wide({'a', 'b'});
  EXPECT_EQ(ORXUString::Diff(abc.get(), abd.get(), 2), 0);
  EXPECT_EQ(Sign(ORXUString::Diff(abc.get(), abd.get(), 3)), -1);
  EXPECT_EQ(ORXUString::Diff(ab.get(), Wide({'a', 'b'}).get(), 100), 0);
  EXPECT_EQ(ORXUString::Diff(abc.get(), abd.get(), 0), 0);
}

TEST(ORXUStringWide, CharFindsTheFirstPlace) {
  const auto text = Wide({'a', 0xAC00, 'b', 0xAC00});
  EXPECT_EQ(ORXUString::Char(text.get(), 0xAC00), text.get() + 1);
  EXPECT_EQ(ORXUString::Char(text.get(), 0), text.get() + 4);
  EXPECT_EQ(ORXUString::Char(text.get(), 'x'), nullptr);
}

TEST(ORXUStringWide, CharRevFindsTheLastPlaceTheTerminatorIncluded) {
  const auto text = Wide({'a', 0xAC00, 'b', 0xAC00});
  for (const auto find : {ORXUString::CharRev, ORXUString::CharRevW}) {
    EXPECT_EQ(find(text.get(), 0xAC00), text.get() + 3);
    EXPECT_EQ(find(text.get(), 'a'), text.get());
    EXPECT_EQ(find(text.get(), 0), text.get() + 4);
    EXPECT_EQ(find(text.get(), 'x'), nullptr);
  }
}

TEST(ORXUStringWide, DupCopyWCopies) {
  unsigned short* copy = ORXUString::DupCopyW(Wide(kAbc).get());
  EXPECT_EQ(UnitsOf(copy), kAbc);
  ORXMemory::Free(copy);
}

TEST(ORXUStringWide, SearchesForSpans) {
  const auto text = Wide({'a', 'b', 0xAC00, 'a'});
  const auto set = Wide({'b', 'a'}), other = Wide({0xAC00});
  EXPECT_EQ(ORXUString::SearchAcceptPos(text.get(), set.get()), 2u);
  EXPECT_EQ(ORXUString::SearchNoRejectPos(text.get(), other.get()), 2u);
  EXPECT_EQ(ORXUString::SearchNoRejectPos(text.get(), Wide({'z'}).get()), 4u);
  EXPECT_EQ(ORXUString::SearchAcceptPos(text.get(), Wide({'b', 'a', 0xAC00}).get()), 4u);
}

TEST(ORXUStringWide, PlaceholdersAnswerZero) {
  const auto text = Wide({'1', '2'}), other = Wide({'x'});
  EXPECT_EQ(ORXUString::DiffCaseW(text.get(), other.get()), 0);
  EXPECT_EQ(ORXUString::LocateStrW(text.get(), text.get()), nullptr);
  EXPECT_EQ(ORXUString::IntergerW(text.get()), 0);
  EXPECT_EQ(ORXUString::LongW(text.get()), 0);
  EXPECT_EQ(ORXUString::DoubleW(text.get()), 0.0);
}

// ---- ORXMemory ----------------------------------------------------------------------------------

TEST(ORXMemory, MallocIsNullForNoBytes) { EXPECT_EQ(ORXMemory::Malloc(0), nullptr); }

TEST(ORXMemory, GivesBlocksThatFreeTakesBack) {
  void* block = ORXMemory::Malloc(16);
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(ORXMemory::Set(block, 0xAB, 16), block);
  EXPECT_EQ(static_cast<unsigned char*>(block)[15], 0xAB);
  ORXMemory::Free(block);
  ORXMemory::Free(nullptr);
}

TEST(ORXMemory, CopiesMovesAndCompares) {
  char text[] = "abcdef";
  EXPECT_EQ(ORXMemory::Copy(text + 3, "xyz", 3), text + 3);
  EXPECT_STREQ(text, "abcxyz");
  EXPECT_EQ(ORXMemory::Move(text + 1, text, 5), text + 1);
  EXPECT_STREQ(text, "aabcxy");
  EXPECT_EQ(ORXMemory::Compare("ab\0c", "ab\0c", 4), 0);
  EXPECT_LT(ORXMemory::Compare("ab\0c", "ab\0d", 4), 0);
}

}  // namespace

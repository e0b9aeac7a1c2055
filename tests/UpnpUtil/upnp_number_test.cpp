#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <string>

#include "UpnpUtil/upnp_util.h"
#include "support/Text.h"

namespace {

using orx_test::Exact;

std::string HexText(long v) {
  const auto text = std::make_unique<char[]>(9);
  longToHexString(v, text.get());
  return text.get();
}

TEST(Atoui, ReadsTheLeadingDigits) {
  EXPECT_EQ(upnp_atoui("123"), 123u);
  EXPECT_EQ(upnp_atoui("007x9"), 7u);
  EXPECT_EQ(upnp_atoui("4294967295"), UINT_MAX);
}

TEST(Atoui, IsZeroWithoutALeadingDigit) {
  EXPECT_EQ(upnp_atoui(nullptr), 0u);
  EXPECT_EQ(upnp_atoui(""), 0u);
  EXPECT_EQ(upnp_atoui(" 5"), 0u);
  EXPECT_EQ(upnp_atoui("-5"), 0u);
  EXPECT_EQ(upnp_atoui("x5"), 0u);
}

TEST(Atoui, KeepsTheLow32BitsOfALongerNumber) { EXPECT_EQ(upnp_atoui("4294967301"), 5u); }

TEST(HexcharToI, KnowsEveryDigitAndNothingElse) {
  for (int c = CHAR_MIN; c <= CHAR_MAX; ++c) {
    SCOPED_TRACE(c);
    int expected = 0;
    if (c >= '0' && c <= '9') expected = c - '0';
    if (c >= 'a' && c <= 'f') expected = c - 'a' + 10;
    if (c >= 'A' && c <= 'F') expected = c - 'A' + 10;
    EXPECT_EQ(hexchar_to_i(static_cast<char>(c)), expected);
  }
}

TEST(HexStringToNumber, StopsAtTheFirstNonDigit) {
  EXPECT_EQ(hexStringToNumber("1g2", 3), 1u);
  EXPECT_EQ(hexStringToNumber("g12", 3), 0u);
}

TEST(HexStringToNumber, TakesAtMostTheGivenDigits) {
  EXPECT_EQ(hexStringToNumber("aBcD", 2), 0xabu);
  EXPECT_EQ(hexStringToNumber("aBcD", 4), 0xabcdu);
  EXPECT_EQ(hexStringToNumber("aBcD", 0), 0u);
}

TEST(HexStringToNumber, StopsAtTheTerminator) {
  EXPECT_EQ(hexStringToNumber(Exact("12").get(), 8), 0x12u);
  EXPECT_EQ(hexStringToNumber(Exact("").get(), 8), 0u);
  EXPECT_EQ(hexStringToNumber(nullptr, 8), 0u);
}

TEST(HexStringToLong, ReadsEightDigits) {
  EXPECT_EQ(hexStringToLong("000000ff"), 255u);
  EXPECT_EQ(hexStringToLong("FFFFFFFF0"), 0xFFFFFFFFu);
  EXPECT_EQ(hexStringToLong("1f"), 31u);
  EXPECT_EQ(hexStringToLong(nullptr), 0u);
}

TEST(LongToHexString, WritesEightLowerCaseDigits) {
  EXPECT_EQ(HexText(255), "000000ff");
  EXPECT_EQ(HexText(0), "00000000");
  EXPECT_EQ(HexText(0x7ABCDEF0), "7abcdef0");
}

TEST(LongToHexString, TakesTheLow32Bits) {
  EXPECT_EQ(HexText(-1), "ffffffff");
  EXPECT_EQ(HexText(LONG_MIN), sizeof(long) > 4 ? "00000000" : "80000000");
}

}  // namespace

#include "Range.h"

#include <gmock/gmock.h>

namespace {

using namespace orxserve;

void ExpectPart(const char* header, uint64_t first, uint64_t length) {
  const ByteRange range = ParseRange(header, 1000);
  EXPECT_EQ(range.kind, ByteRange::Kind::kPart) << header;
  EXPECT_EQ(range.first, first) << header;
  EXPECT_EQ(range.length, length) << header;
}

TEST(ParseRange, TakesOneRange) {
  ExpectPart("bytes=0-0", 0, 1);
  ExpectPart("bytes=100-", 100, 900);
  ExpectPart("bytes=100-199", 100, 100);
  ExpectPart(" Bytes= 999 - 5000 ", 999, 1);
  ExpectPart("bytes=0-18446744073709551615", 0, 1000);
}
TEST(ParseRange, CountsASuffixFromTheEnd) {
  ExpectPart("bytes=-1", 999, 1);
  ExpectPart("bytes=-5000", 0, 1000);
}
TEST(ParseRange, CannotBeSatisfiedPastTheEnd) {
  for (const char* header : {"bytes=1000-", "bytes=5000-6000", "bytes=-0"})
    EXPECT_EQ(ParseRange(header, 1000).kind, ByteRange::Kind::kUnsatisfiable) << header;
  EXPECT_EQ(ParseRange("bytes=0-", 0).kind, ByteRange::Kind::kUnsatisfiable);
}
TEST(ParseRange, PassesOverWhatItDoesNotUnderstand) {
  for (const char* header :
       {"", "bytes", "bytes=", "bytes=-", "bytes=x-1", "bytes=1-x", "lines=0-1", "bytes=5-2",
        "bytes=0-1,3-4", "bytes=99999999999999999999-"})
    EXPECT_EQ(ParseRange(header, 1000).kind, ByteRange::Kind::kWhole) << header;
}

}  // namespace

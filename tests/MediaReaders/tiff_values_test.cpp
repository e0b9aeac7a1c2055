#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <vector>

#include "MediaReaders/exif_reader.h"
#include "OSAL/TextPtr.h"
#include "support/JpegBuilder.h"

namespace {

using namespace orx_test;

// A block on the heap that is exactly as long as it says.
class Block {
 public:
  explicit Block(const std::string& bytes) : bytes_(bytes.begin(), bytes.end()) {}
  const unsigned char* data() const { return bytes_.data(); }
  unsigned length() const { return static_cast<unsigned>(bytes_.size()); }
  int Int(int type, unsigned count, unsigned value) const {
    return exif_get_int(data(), length(), type, count, value);
  }
  std::string Text(int type, unsigned count, unsigned value) const {
    const orx::TextPtr text(exif_get_string(data(), length(), type, count, value));
    return text != nullptr ? text.get() : "(null)";
  }

 private:
  std::vector<unsigned char> bytes_;
};

Block Motorola(size_t size = 32) { return Block("MM" + std::string(size - 2, '\0')); }

TEST(GetInt, ReadsBothByteOrders) {
  const unsigned char bytes[] = {0x81, 0x02, 0x03, 0x84};
  EXPECT_EQ(get_int16(bytes, 1), 0x8102u);
  EXPECT_EQ(get_int16(bytes, 0), 0x0281u);
  EXPECT_EQ(get_int32(bytes, 1), 0x81020384u);
  EXPECT_EQ(get_int32(bytes, 0), 0x84030281u);
}

TEST(GetInt, IsBigEndianOnlyForTheFlagOne) {
  const unsigned char bytes[] = {1, 2, 3, 4};
  EXPECT_EQ(get_int16(bytes, 2), 0x0201u);
}

TEST(CheckType, TakesAValueThatLiesInTheEntryWhateverItsOffset) {
  EXPECT_EQ(check_type("BYTE", 0, UINT_MAX, 4, 1), 1);
  EXPECT_EQ(check_type("SHORT", 10, 4000, 2, 2), 1);
  EXPECT_EQ(check_type("LONG/SLONG", 10, 4000, 0, 4), 1);
}

TEST(CheckType, RejectsAValueThatEndsExactlyAtTheEndOfTheBlock) {
  EXPECT_EQ(check_type("ASCII/UNDEFINED", 100, 89, 10, 1), 1);
  EXPECT_EQ(check_type("ASCII/UNDEFINED", 100, 90, 10, 1), 0);
  EXPECT_EQ(check_type("ASCII/UNDEFINED", 100, 91, 10, 1), 0);
  EXPECT_EQ(check_type("ASCII/UNDEFINED", 100, 100, 10, 1), 0);
}

TEST(CheckType, DoesNotWrapOnLargeNumbers) {
  EXPECT_EQ(check_type("LONG/SLONG", 100, 10, 0x40000001, 4), 0);
  EXPECT_EQ(check_type("ASCII/UNDEFINED", 100, UINT_MAX - 4, 10, 1), 0);
  EXPECT_EQ(check_type("ASCII/UNDEFINED", 100, 10, UINT_MAX, 1), 0);
  EXPECT_EQ(check_type("ASCII/UNDEFINED", UINT_MAX, UINT_MAX, UINT_MAX, UINT_MAX), 0);
}

TEST(ExifGetInt, ShiftsBytesDownByTheirCount) {
  const Block block = Motorola();
  EXPECT_EQ(block.Int(kByte, 1, 0x81020304), 0x81);
  EXPECT_EQ(block.Int(kByte, 2, 0x81020304), 0x8102);
  EXPECT_EQ(block.Int(kByte, 3, 0x81020304), 0x810203);
  EXPECT_EQ(block.Int(kByte, 4, 0x01020304), 0x01020304);
  EXPECT_EQ(block.Int(kByte, 4, 0xFFFFFFFF), -1);
}

TEST(ExifGetInt, IsZeroForAnyOtherNumberOfBytes) {
  const Block block = Motorola();
  EXPECT_EQ(block.Int(kByte, 0, 0x01020304), 0);
  EXPECT_EQ(block.Int(kByte, 5, 3), 0);
  EXPECT_EQ(block.Int(kByte, UINT_MAX, 3), 0);
}

TEST(ExifGetInt, TakesTheHighHalfOfOneShortAndTheWholeOfTwo) {
  const Block block = Motorola();
  EXPECT_EQ(block.Int(kShort, 1, 0xFFFE0304), 0xFFFE);
  EXPECT_EQ(block.Int(kShort, 2, 0x00060001), 0x00060001);
  EXPECT_EQ(block.Int(kShort, 0, 0x00060001), 0);
  EXPECT_EQ(block.Int(kShort, 3, 4), 0);
}

TEST(ExifGetInt, FindsNothingInALittleEndianShort) {
  const Block block("II*" + std::string(29, '\0'));
  EXPECT_EQ(block.Int(kShort, 1, 6), 0);  // the bytes 06 00 00 00
}

TEST(ExifGetInt, TakesOneLongAsItIs) {
  const Block block = Motorola();
  for (const int type : {kLong, kSLong}) {
    EXPECT_EQ(block.Int(type, 1, 1234567), 1234567);
    EXPECT_EQ(block.Int(type, 1, 0xFFFFFFFE), -2);
    EXPECT_EQ(block.Int(type, 0, 7), 0);
    EXPECT_EQ(block.Int(type, 2, 7), 0);
  }
}

TEST(ExifGetInt, DividesRationalsInMotorolaOrderInEitherBlock) {
  for (const char* header : {"MM\0*", "II*\0"}) {
    const Block block(std::string(header, 4) + Bytes32(720, TiffOrder::kBig) +
                      Bytes32(10, TiffOrder::kBig));
    EXPECT_EQ(block.Int(kRational, 1, 4), 72);
    EXPECT_EQ(block.Int(kSRational, 1, 4), 72);
  }
}

TEST(ExifGetInt, DividesRationalsWithTheirSigns) {
  const Block block(Bytes32(0xFFFFFFF9, TiffOrder::kBig) + Bytes32(2, TiffOrder::kBig));
  EXPECT_EQ(block.Int(kSRational, 1, 0), -3);  // -7 / 2
  EXPECT_EQ(block.Int(kRational, 1, 0), -3);
}

TEST(ExifGetInt, DividesTheLargestNegativeNumberByMinusOne) {
  const Block block(Bytes32(0x80000000, TiffOrder::kBig) + Bytes32(0xFFFFFFFF, TiffOrder::kBig));
  EXPECT_EQ(block.Int(kSRational, 1, 0), INT_MIN);  // the low 32 bits of 2147483648
}

TEST(ExifGetInt, IsZeroForADenominatorOfZero) {
  const Block block(Bytes32(72, TiffOrder::kBig) + Bytes32(0, TiffOrder::kBig));
  EXPECT_EQ(block.Int(kRational, 1, 0), 0);
}

TEST(ExifGetInt, ReadsARationalUpToTheVeryEndOfTheBlockAndNoFurther) {
  const Block block(std::string(4, '\0') + Bytes32(72, TiffOrder::kBig) +
                    Bytes32(1, TiffOrder::kBig));
  EXPECT_EQ(block.Int(kRational, 1, 4), 72);
  EXPECT_EQ(block.Int(kRational, 1, 5), 0);
  EXPECT_EQ(block.Int(kRational, 1, 12), 0);
  EXPECT_EQ(block.Int(kRational, 1, UINT_MAX), 0);
}

TEST(ExifGetInt, TakesOneRationalOnly) {
  const Block block(Bytes32(72, TiffOrder::kBig) + Bytes32(1, TiffOrder::kBig));
  EXPECT_EQ(block.Int(kRational, 0, 0), 0);
  EXPECT_EQ(block.Int(kRational, 2, 0), 0);
}

TEST(ExifGetInt, IsZeroForEveryOtherType) {
  const Block block = Motorola();
  for (const int type : {-1, 0, 2, 6, 7, 8, 11, 12, 13, 129, 65535})
    EXPECT_EQ(block.Int(type, 1, 0x01010101), 0) << type;
}

TEST(ExifGetString, CopiesATextOfTheBlockAndEndsIt) {
  const Block block("MM\0*0123456789");
  EXPECT_EQ(block.Text(kAscii, 5, 4), "(null)");  // the header literal ends at its zero byte
  const Block whole(std::string("MM\0*0123456789", 14));
  EXPECT_EQ(whole.Text(kAscii, 5, 4), "01234");
  EXPECT_EQ(whole.Text(kUndefined, 9, 4), "012345678");
}

TEST(ExifGetString, RejectsATextThatEndsExactlyAtTheEndOfTheBlock) {
  const Block block(std::string("MM\0*0123456789", 14));
  EXPECT_EQ(block.Text(kAscii, 9, 4), "012345678");
  EXPECT_EQ(block.Text(kAscii, 10, 4), "(null)");
  EXPECT_EQ(block.Text(kAscii, 5, 9), "(null)");
  EXPECT_EQ(block.Text(kAscii, UINT_MAX, 4), "(null)");
  EXPECT_EQ(block.Text(kAscii, 5, UINT_MAX), "(null)");
}

TEST(ExifGetString, TakesAShortTextFromTheFieldInFileOrder) {
  const std::string big("MM\0*", 4), little("II*\0", 4);
  EXPECT_EQ(Block(big).Text(kAscii, 4, 0x41424344), "ABCD");
  EXPECT_EQ(Block(big).Text(kAscii, 2, 0x41424344), "AB");
  EXPECT_EQ(Block(little).Text(kAscii, 4, 0x44434241), "ABCD");
  EXPECT_EQ(Block(little).Text(kUndefined, 1, 0x44434241), "A");
}

TEST(ExifGetString, EndsATextOfFourCharactersThatBringsNoTerminator) {
  const orx::TextPtr text(exif_get_string(Motorola().data(), 32, kAscii, 4, 0x41424344));
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(strlen(text.get()), 4u);
}

TEST(ExifGetString, IsNullForNoCharactersAndForOtherTypes) {
  const Block block = Motorola();
  EXPECT_EQ(block.Text(kAscii, 0, 8), "(null)");
  for (const int type : {0, 1, 3, 4, 5, 6, 8, 9, 10, 11})
    EXPECT_EQ(block.Text(type, 4, 0x41424344), "(null)") << type;
}

}  // namespace

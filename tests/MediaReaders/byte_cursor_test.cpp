#include "MediaReaders/byte_cursor.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using orx::ByteCursor;

const std::vector<uint8_t> kCount = {1, 2, 3, 4, 5, 6, 7, 8};

ByteCursor Counting(ByteCursor::Order order = ByteCursor::Order::kBig) {
  return {kCount.data(), kCount.size(), order};
}

TEST(ByteCursor, ReadsBigEndianNumbersFrontToBack) {
  ByteCursor cursor = Counting();
  EXPECT_EQ(cursor.U8(), 0x01u);
  EXPECT_EQ(cursor.U16(), 0x0203u);
  EXPECT_EQ(cursor.U32(), 0x04050607u);
  EXPECT_EQ(cursor.remaining(), 1u);
  EXPECT_EQ(Counting().U64(), 0x0102030405060708u);
}

TEST(ByteCursor, ReadsLittleEndianNumbers) {
  ByteCursor cursor = Counting(ByteCursor::Order::kLittle);
  EXPECT_EQ(cursor.U16(), 0x0201u);
  EXPECT_EQ(cursor.U32(), 0x06050403u);
  EXPECT_EQ(Counting(ByteCursor::Order::kLittle).U64(), 0x0807060504030201u);
}

TEST(ByteCursor, KeepsItsOrderInChildren) {
  ByteCursor cursor = Counting(ByteCursor::Order::kLittle);
  EXPECT_EQ(cursor.At(2).U16(), 0x0403u);
  EXPECT_EQ(cursor.Take(2).U16(), 0x0201u);
}

TEST(ByteCursor, FailsForGoodWhenAReadDoesNotFit) {
  ByteCursor cursor = Counting();
  cursor.Skip(5);
  EXPECT_EQ(cursor.U32(), 0u);
  EXPECT_FALSE(cursor.ok());
  EXPECT_EQ(cursor.position(), 5u);
  EXPECT_EQ(cursor.U8(), 0u);
  EXPECT_EQ(cursor.remaining(), 0u);
}

TEST(ByteCursor, ReadsTheLastByteExactly) {
  ByteCursor cursor = Counting();
  cursor.Skip(4);
  EXPECT_EQ(cursor.U32(), 0x05060708u);
  EXPECT_TRUE(cursor.ok());
  EXPECT_EQ(cursor.remaining(), 0u);
}

TEST(ByteCursor, GivesAChildThatEndsWhereItWasCut) {
  ByteCursor cursor = Counting();
  ByteCursor child = cursor.Take(2);
  EXPECT_EQ(cursor.U8(), 3u);
  EXPECT_EQ(child.U16(), 0x0102u);
  EXPECT_EQ(child.U8(), 0u);
  EXPECT_FALSE(child.ok());
  EXPECT_TRUE(cursor.ok());
}

TEST(ByteCursor, CountsOffsetsFromTheStartOfItsBlock) {
  ByteCursor cursor = Counting();
  cursor.Skip(6);
  EXPECT_EQ(cursor.At(1).U8(), 2u);
  EXPECT_EQ(cursor.At(1).At(1).U8(), 3u);
}

TEST(ByteCursor, GivesAFailedChildForAnOffsetPastTheEnd) {
  EXPECT_TRUE(Counting().At(8).ok());
  EXPECT_EQ(Counting().At(8).remaining(), 0u);
  EXPECT_FALSE(Counting().At(9).ok());
  EXPECT_FALSE(Counting().At(UINT64_MAX).ok());
}

TEST(ByteCursor, RefusesACountThatWouldWrap) {
  ByteCursor cursor = Counting();
  cursor.Skip(4);
  EXPECT_FALSE(cursor.Take(UINT64_MAX).ok());
  EXPECT_FALSE(cursor.ok());
}

TEST(ByteCursor, GivesTextAsItStands) {
  ByteCursor cursor("moov!", 5);
  EXPECT_EQ(cursor.Text(4), "moov");
  EXPECT_EQ(cursor.Text(2), "");
  EXPECT_FALSE(cursor.ok());
}

TEST(ByteCursor, HoldsNothingWhenItIsEmpty) {
  ByteCursor cursor;
  EXPECT_TRUE(cursor.ok());
  EXPECT_EQ(cursor.Text(0), "");
  EXPECT_EQ(cursor.U8(), 0u);
  EXPECT_FALSE(cursor.ok());
}

}  // namespace

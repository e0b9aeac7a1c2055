#include "UpnpUtil/upnp_string.h"

#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <string>

#include "support/Text.h"

namespace {

using orx_test::Exact;
using orx_test::ExactBytes;
using String = std::unique_ptr<st_upnp_string, void (*)(st_upnp_string*)>;

String Create(const char* text, int capacity) {
  return {upnp_string_create(text, capacity), upnp_string_free};
}

std::string Text(const String& s) {
  EXPECT_EQ(s->buffer[s->length], '\0');
  return std::string(s->buffer, static_cast<size_t>(s->length));
}

TEST(StringCreate, HoldsACopyOfTheTextInTheGivenRoom) {
  const String s = Create("abc", 16);
  EXPECT_EQ(Text(s), "abc");
  EXPECT_EQ(s->length, 3);
  EXPECT_EQ(s->capacity, 16);
}

TEST(StringCreate, IsEmptyForANullText) {
  const String s = Create(nullptr, 4);
  EXPECT_EQ(Text(s), "");
  EXPECT_EQ(s->capacity, 4);
}

TEST(StringCreate, GrowsWhenTheTextNeedsMoreRoom) {
  const String s = Create("abcdef", 2);
  EXPECT_EQ(Text(s), "abcdef");
  EXPECT_EQ(s->capacity, 7);
}

TEST(StringCreate, TakesACapacityOfZero) {
  const String empty = Create(nullptr, 0);
  EXPECT_EQ(Text(empty), "");
  upnp_string_empty(empty.get());
  EXPECT_EQ(empty->capacity, 0);
  const String full = Create("a", 0);
  EXPECT_EQ(Text(full), "a");
  EXPECT_EQ(full->capacity, 2);
}

TEST(StringCreate, IsNullForANegativeCapacity) {
  EXPECT_EQ(upnp_string_create("a", -1), nullptr);
  EXPECT_EQ(upnp_string_create("a", INT_MIN), nullptr);
}

TEST(StringConcat, AppendsInPlaceWhileTheTerminatorFits) {
  const String s = Create("abc", 8);
  const char* before = s->buffer;
  EXPECT_EQ(upnp_string_concat(s.get(), "defg"), s.get());
  EXPECT_EQ(Text(s), "abcdefg");
  EXPECT_EQ(s->buffer, before);
  EXPECT_EQ(s->capacity, 8);
}

TEST(StringConcat, DoublesTheRoomWhenTheTerminatorWouldNotFit) {
  const String s = Create("abcd", 8);
  upnp_string_concat(s.get(), "efgh");
  EXPECT_EQ(Text(s), "abcdefgh");
  EXPECT_EQ(s->capacity, 16);
}

TEST(StringConcat, GrowsFrom256To512WhenAnAppendReaches256Bytes) {
  const String s = Create(std::string(200, 'a').c_str(), 256);
  upnp_string_concat(s.get(), std::string(55, 'b').c_str());
  EXPECT_EQ(s->capacity, 256);
  upnp_string_concat(s.get(), "c");
  EXPECT_EQ(s->capacity, 512);
  EXPECT_EQ(Text(s), std::string(200, 'a') + std::string(55, 'b') + "c");
}

TEST(StringConcat, TakesWhatIsNeededWhenThatIsMoreThanTwice) {
  const String s = Create("ab", 4);
  upnp_string_concat(s.get(), "123456");
  EXPECT_EQ(s->capacity, 9);
  EXPECT_EQ(Text(s), "ab123456");
}

TEST(StringConcat, TakesTwiceTheRoomWhenExactlyThatIsNeeded) {
  const String s = Create("ab", 4);
  upnp_string_concat(s.get(), "12345");
  EXPECT_EQ(s->capacity, 8);
  EXPECT_EQ(Text(s), "ab12345");
}

TEST(StringConcat, CreatesARecordOf256BytesForNull) {
  const String s(upnp_string_concat(nullptr, "abc"), upnp_string_free);
  EXPECT_EQ(Text(s), "abc");
  EXPECT_EQ(s->capacity, 256);
}

TEST(StringConcat, LeavesTheRecordForANullText) {
  const String s = Create("abc", 8);
  EXPECT_EQ(upnp_string_concat(s.get(), nullptr), s.get());
  EXPECT_EQ(Text(s), "abc");
}

TEST(StringConcat, AppendsItsOwnText) {
  const String s = Create("abc", 8);
  upnp_string_concat(s.get(), s->buffer);
  EXPECT_EQ(Text(s), "abcabc");
}

TEST(StringConcat, LeavesARecordWithANegativeLength) {
  char buffer[8] = "abc";
  st_upnp_string s = {-1, 8, buffer};
  EXPECT_EQ(upnp_string_concat(&s, "x"), &s);
  EXPECT_EQ(upnp_string_add(&s, "x", 1), &s);
  EXPECT_EQ(upnp_string_concat_and_convert(&s, "x", 1), &s);
  EXPECT_EQ(s.length, -1);
  EXPECT_STREQ(buffer, "abc");
}

TEST(StringAdd, AppendsBytesThatMayBeZero) {
  const String s = Create("ab", 4);
  EXPECT_EQ(upnp_string_add(s.get(), ExactBytes(std::string("\0x\0", 3)).get(), 3), s.get());
  EXPECT_EQ(Text(s), std::string("ab\0x\0", 5));
  EXPECT_EQ(s->capacity, 8);
  upnp_string_concat(s.get(), "c");
  EXPECT_EQ(Text(s), std::string("ab\0x\0c", 6));
}

TEST(StringAdd, GrowsByTheSameRule) {
  const String s = Create(nullptr, 256);
  upnp_string_add(s.get(), std::string(255, 'a').c_str(), 255);
  EXPECT_EQ(s->capacity, 256);
  upnp_string_add(s.get(), "b", 1);
  EXPECT_EQ(s->capacity, 512);
  upnp_string_add(s.get(), std::string(1000, 'c').c_str(), 1000);
  EXPECT_EQ(s->capacity, 1257);
}

TEST(StringAdd, LeavesTheRecordForNothing) {
  const String s = Create("abc", 8);
  EXPECT_EQ(upnp_string_add(s.get(), "x", 0), s.get());
  EXPECT_EQ(upnp_string_add(s.get(), "x", -1), s.get());
  EXPECT_EQ(upnp_string_add(s.get(), nullptr, 1), s.get());
  EXPECT_EQ(Text(s), "abc");
}

TEST(StringAdd, CreatesARecordOf256BytesForNull) {
  const String s(upnp_string_add(nullptr, "abc", 2), upnp_string_free);
  EXPECT_EQ(Text(s), "ab");
  EXPECT_EQ(s->capacity, 256);
  const String empty(upnp_string_add(nullptr, "abc", 0), upnp_string_free);
  EXPECT_EQ(Text(empty), "");
}

TEST(StringConcatAndConvert, AppendsUtf8OrLatin1) {
  const String s = Create(nullptr, 64);
  EXPECT_EQ(upnp_string_concat_and_convert(s.get(), "\xE9", 1), s.get());
  EXPECT_EQ(Text(s), "\xC3\xA9");
  upnp_string_concat_and_convert(s.get(), "\xC3\xA9", 0);
  EXPECT_EQ(Text(s), "\xC3\xA9\xE9");
}

TEST(StringConcatAndConvert, KeepsRoomForTwiceTheText) {
  const String s = Create("ab", 13);
  upnp_string_concat_and_convert(s.get(), "12345", 1);  // 13 > 2 + 10
  EXPECT_EQ(s->capacity, 13);
  const String t = Create("ab", 12);
  upnp_string_concat_and_convert(t.get(), "12345", 1);  // 12 is not
  EXPECT_EQ(t->capacity, 24);
  EXPECT_EQ(Text(t), "ab12345");
}

TEST(StringConcatAndConvert, TakesRoomForTwiceTheTextWhenTwiceTheRoomIsTooSmall) {
  const String s = Create("ab", 4);
  upnp_string_concat_and_convert(s.get(), "123456", 1);  // 8 is not larger than 2 + 6
  EXPECT_EQ(s->capacity, 15);
  EXPECT_EQ(Text(s), "ab123456");
  const String t = Create("ab", 4);
  upnp_string_concat_and_convert(t.get(), "12345", 1);  // 8 is larger than 2 + 5
  EXPECT_EQ(t->capacity, 8);
  EXPECT_EQ(Text(t), "ab12345");
}

TEST(StringConcatAndConvert, CreatesARecordOf256BytesForNull) {
  const String s(upnp_string_concat_and_convert(nullptr, "\xE9", 1), upnp_string_free);
  EXPECT_EQ(Text(s), "\xC3\xA9");
  EXPECT_EQ(s->capacity, 256);
}

TEST(StringConcatAndConvert, LeavesTheRecordForANullText) {
  const String s = Create("abc", 8);
  EXPECT_EQ(upnp_string_concat_and_convert(s.get(), nullptr, 1), s.get());
  EXPECT_EQ(Text(s), "abc");
}

TEST(StringEmpty, KeepsTheRoom) {
  const String s = Create("abc", 8);
  upnp_string_empty(s.get());
  EXPECT_EQ(Text(s), "");
  EXPECT_EQ(s->length, 0);
  EXPECT_EQ(s->capacity, 8);
  upnp_string_empty(nullptr);
}

TEST(StringFree, IgnoresNull) { upnp_string_free(nullptr); }

}  // namespace

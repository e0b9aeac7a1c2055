#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <string>

#include "UpnpUtil/GmtNameClock.h"
#include "UpnpUtil/upnp_util.h"
#include "support/Text.h"
#include "support/TimeZone.h"

namespace {

std::string DurationText(long ms) { return orx_test::Taken(upnp_duration_to_string(ms)); }

std::string FormattedTime(long ms) {
  char text[64];
  const int length = upnp_format_time(ms, text);
  EXPECT_EQ(length, static_cast<int>(std::string(text).size()));
  return text;
}

std::string GmtDate(long seconds, int n = 32) {
  char text[32] = "untouched";
  upnp_date_convertToGMT(&seconds, text, n);
  return text;
}

TEST(DurationToString, ShowsMillisecondsWhenThereAreSome) {
  EXPECT_EQ(DurationText(3723004), "1:02:03.004");
}

TEST(DurationToString, LeavesOutMillisecondsOfZero) { EXPECT_EQ(DurationText(3723000), "1:02:03"); }

TEST(DurationToString, WritesHoursWithoutLeadingZerosOrLimit) {
  EXPECT_EQ(DurationText(0), "0:00:00");
  EXPECT_EQ(DurationText(1), "0:00:00.001");
  EXPECT_EQ(DurationText(360000000), "100:00:00");
}

TEST(DurationToString, WritesTheLargestDuration) {
  EXPECT_EQ(DurationText(INT_MAX), "596:31:23.647");
  EXPECT_NE(DurationText(LONG_MIN), "");
}

TEST(FormatTime, DropsMillisecondsAndPadsHours) {
  EXPECT_EQ(FormattedTime(3723004), "01:02:03");
  EXPECT_EQ(FormattedTime(3723999), "01:02:03");
  EXPECT_EQ(FormattedTime(0), "00:00:00");
  EXPECT_EQ(FormattedTime(360000000), "100:00:00");
}

TEST(FormatTime, WritesNothingIntoNull) { EXPECT_EQ(upnp_format_time(1, nullptr), 0); }

TEST(ConvertTimeToLong, AddsHoursMinutesAndSeconds) {
  EXPECT_EQ(upnp_convert_time_to_long("1:02:03"), 3723000);
}

TEST(ConvertTimeToLong, IgnoresMillisecondsAfterADot) {
  EXPECT_EQ(upnp_convert_time_to_long("1:02:03.500"), 3723000);
}

TEST(ConvertTimeToLong, TakesMillisecondsAfterAThirdColon) {
  EXPECT_EQ(upnp_convert_time_to_long("1:02:03:500"), 3723500);
  EXPECT_EQ(upnp_convert_time_to_long("1:02:03:500:9"), 3723500);
}

TEST(ConvertTimeToLong, CountsMissingPartsAsZero) {
  EXPECT_EQ(upnp_convert_time_to_long(nullptr), 0);
  EXPECT_EQ(upnp_convert_time_to_long(""), 0);
  EXPECT_EQ(upnp_convert_time_to_long("2"), 7200000);
  EXPECT_EQ(upnp_convert_time_to_long("2:"), 7200000);
  EXPECT_EQ(upnp_convert_time_to_long("2:30"), 9000000);
  EXPECT_EQ(upnp_convert_time_to_long("::7"), 7000);
  EXPECT_EQ(upnp_convert_time_to_long(":::7"), 7);
}

TEST(ConvertTimeToLong, StopsAtTheLargestValue) {
  EXPECT_EQ(upnp_convert_time_to_long("99999999999999999999:59:59"), LONG_MAX);
  EXPECT_EQ(upnp_convert_time_to_long("-99999999999999999999"), LONG_MIN);
}

TEST(ConvertTimeToLong, ReadsBackADurationTextWithoutItsMilliseconds) {
  EXPECT_EQ(upnp_convert_time_to_long(DurationText(3723004).c_str()), 3723000);
}

TEST(ConvertToGmt, WritesTheUtcDate) {
  const orx_test::TimeZone zone("XYZ-14");  // where it is the next day by ten o'clock UTC
  EXPECT_EQ(GmtDate(0), "1970-01-01");
  EXPECT_EQ(GmtDate(86399), "1970-01-01");
  EXPECT_EQ(GmtDate(951782399), "2000-02-28");
  EXPECT_EQ(GmtDate(951782400), "2000-02-29");
  EXPECT_EQ(GmtDate(2147483647), "2038-01-19");
  EXPECT_EQ(GmtDate(-1), "1969-12-31");
}

TEST(ConvertToGmt, WritesAtMostTheGivenBytes) {
  EXPECT_EQ(GmtDate(0, 11), "1970-01-01");
  EXPECT_EQ(GmtDate(0, 5), "1970");
  EXPECT_EQ(GmtDate(0, 1), "");
  EXPECT_EQ(GmtDate(0, 0), "untouched");
  EXPECT_EQ(GmtDate(0, -1), "untouched");
}

constexpr long long kLastDate = 67768036191676799;  // of a calendar with a 32-bit year

TEST(ConvertToGmt, WritesTheLastDateThereIs) {
  if (sizeof(long) < 8) GTEST_SKIP() << "a 32-bit time does not reach it";
  EXPECT_EQ(GmtDate(static_cast<long>(kLastDate)), "2147485547-12-31");
}

TEST(ConvertToGmt, WritesNothingForATimeWithoutADate) {
  if (sizeof(long) < 8) GTEST_SKIP() << "every 32-bit time has a date";
  EXPECT_EQ(GmtDate(static_cast<long>(kLastDate + 1)), "untouched");
  EXPECT_EQ(GmtDate(LONG_MAX), "untouched");
}

TEST(ConvertToGmt, WritesNothingForANullTime) {
  char text[32] = "untouched";
  upnp_date_convertToGMT(nullptr, text, sizeof text);
  EXPECT_STREQ(text, "untouched");
}

std::string NameAt(orx::GmtNameClock* clock, time_t seconds, long nanoseconds = 0) {
  char text[32] = "untouched";
  EXPECT_TRUE(clock->Format({seconds, nanoseconds}, text, sizeof text));
  return text;
}

constexpr time_t kNoon = 1795262400;  // 2026-11-21 12:00:00 UTC

TEST(GmtNameClock, WritesTheDigitsOfTheTimeToMilliseconds) {
  orx::GmtNameClock clock;
  EXPECT_EQ(NameAt(&clock, kNoon, 123999999), "20261121120000123");
}

TEST(GmtNameClock, CountsOnFromTheKeptDate) {
  orx::GmtNameClock clock;
  NameAt(&clock, kNoon);
  EXPECT_EQ(NameAt(&clock, kNoon + 3661, 5000000), "20261121130101005");
  EXPECT_EQ(NameAt(&clock, kNoon + 43199), "20261121235959000");
}

TEST(GmtNameClock, TakesANewDateAtMidnight) {
  orx::GmtNameClock clock;
  NameAt(&clock, kNoon);
  EXPECT_EQ(NameAt(&clock, kNoon + 43200), "20261122000000000");
  EXPECT_EQ(NameAt(&clock, kNoon + 43201), "20261122000001000");
}

TEST(GmtNameClock, KeepsTheDateOfAClockThatWasPutBack) {
  orx::GmtNameClock clock;
  NameAt(&clock, kNoon);
  EXPECT_EQ(NameAt(&clock, kNoon - 43200), "20261121000000000");
  EXPECT_EQ(NameAt(&clock, kNoon - 43201), "202611210000-1000");
  EXPECT_EQ(NameAt(&clock, kNoon - 90061), "20261121-13-1-1000");
}

TEST(GmtNameClock, HasADateOnTheFirstDayOf1970) {
  orx::GmtNameClock clock;
  EXPECT_EQ(NameAt(&clock, 61), "19700101000101000");
}

TEST(GmtNameClock, WritesTheLastDateThereIs) {
  if (sizeof(time_t) < 8) GTEST_SKIP() << "a 32-bit time does not reach it";
  orx::GmtNameClock clock;
  EXPECT_EQ(NameAt(&clock, static_cast<time_t>(kLastDate)), "21474855471231235959000");
}

TEST(GmtNameClock, WritesNothingForATimeWithoutADate) {
  if (sizeof(time_t) < 8) GTEST_SKIP() << "every 32-bit time has a date";
  orx::GmtNameClock clock;
  char text[32] = "untouched";
  EXPECT_FALSE(clock.Format({static_cast<time_t>(LLONG_MAX), 0}, text, sizeof text));
  EXPECT_STREQ(text, "untouched");
}

TEST(GetGmtForName, WritesSeventeenDigitsThatNeverRunBackwards) {
  char first[32], second[32];
  upnp_date_getGMT_forName(first, sizeof first);
  upnp_date_getGMT_forName(second, sizeof second);
  EXPECT_EQ(std::string(first).size(), 17u);
  EXPECT_EQ(std::string(first).find_first_not_of("0123456789"), std::string::npos);
  EXPECT_LE(std::string(first), std::string(second));
}

TEST(GetGmtForName, WritesAtMostTheGivenBytes) {
  char text[32] = "untouched";
  upnp_date_getGMT_forName(text, 0);
  EXPECT_STREQ(text, "untouched");
  upnp_date_getGMT_forName(text, 5);
  EXPECT_EQ(std::string(text).size(), 4u);
}

}  // namespace

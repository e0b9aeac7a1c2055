#include "OSAL/ORXLog.h"

#include <gtest/gtest.h>

#include <string>

#include "support/FakePlatform.h"

namespace {

using orx_test::FakePlatform;

TEST(ORXLog, InfoLineHasColourPrefixSuffixAndCallSite) {
  FakePlatform& platform = FakePlatform::Reset();
  ORX_LOG_INFO("value %d", 5);
  ASSERT_EQ(platform.log.size(), 1u);
  EXPECT_EQ(platform.log[0].buffer, "\x1b[mvalue 5\x1b[m\n");
  EXPECT_EQ(platform.log[0].logId, 3);
  EXPECT_EQ(platform.log[0].priority, 4);
  EXPECT_EQ(platform.log[0].tag, "DLNA");
  EXPECT_EQ(platform.log[0].source, "ORXLog_test.cpp");
  EXPECT_EQ(platform.log[0].function, "TestBody");
  EXPECT_EQ(platform.log[0].line, __LINE__ - 8);
}

TEST(ORXLog, ErrorLineIsRedAndCopiedToStandardError) {
  FakePlatform& platform = FakePlatform::Reset();
  testing::internal::CaptureStderr();
  ORX_LOG_ERROR("bad");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "[DLNA      ] \x1b[31mbad\x1b[m\n");
  ASSERT_EQ(platform.log.size(), 1u);
  EXPECT_EQ(platform.log[0].buffer, "\x1b[31mbad\x1b[m\n");
  EXPECT_EQ(platform.log[0].priority, 6);
}

TEST(ORXLog, InfoLineIsNotCopiedToStandardError) {
  FakePlatform::Reset();
  testing::internal::CaptureStderr();
  ORX_LOG_INFO("good");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(ORXLog, MessageWithAndWithoutTrailingNewlineGivesTheSameLine) {
  FakePlatform& platform = FakePlatform::Reset();
  ORX_LOG_INFO("same");
  ORX_LOG_INFO("same\n");
  ASSERT_EQ(platform.log.size(), 2u);
  EXPECT_EQ(platform.log[0].buffer, platform.log[1].buffer);
}

TEST(ORXLog, OnlyOneTrailingNewlineIsDropped) {
  FakePlatform& platform = FakePlatform::Reset();
  ORX_LOG_INFO("two\n\n");
  EXPECT_EQ(platform.log.at(0).message, "two\n");
}

TEST(ORXLog, InfoMessageIsCutAt247Bytes) {
  FakePlatform& platform = FakePlatform::Reset();
  ORX_LOG_INFO("%s", std::string(400, 'a').c_str());
  EXPECT_EQ(platform.log.at(0).buffer, "\x1b[m" + std::string(247, 'a') + "\x1b[m\n");
}

TEST(ORXLog, ErrorMessageIsCutAt245Bytes) {
  FakePlatform& platform = FakePlatform::Reset();
  testing::internal::CaptureStderr();
  ORX_LOG_ERROR("%s", std::string(400, 'a').c_str());
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(platform.log.at(0).buffer, "\x1b[31m" + std::string(245, 'a') + "\x1b[m\n");
}

TEST(ORXLog, NewlineIsDroppedAfterTheCut) {
  FakePlatform& platform = FakePlatform::Reset();
  ORX_LOG_INFO("%s\ntail", std::string(246, 'a').c_str());
  EXPECT_EQ(platform.log.at(0).message, std::string(246, 'a'));
}

TEST(ORXLog, TimingLineBeginsWithTheMonotonicClockUnderItsOwnTag) {
  FakePlatform& platform = FakePlatform::Reset();
  ORX_LOG_TIME(">>>> FILE_URI start");
  ASSERT_EQ(platform.log.size(), 1u);
  EXPECT_EQ(platform.log[0].tag, "DLNA_TIME");
  EXPECT_EQ(platform.log[0].priority, 4);
  long seconds = -1, nanoseconds = -1;
  int rest = 0;
  ASSERT_EQ(sscanf(platform.log[0].buffer.c_str(), "[%5ld.%09ld]%n", &seconds, &nanoseconds, &rest),
            2);
  EXPECT_EQ(platform.log[0].buffer.substr(static_cast<size_t>(rest)),
            "\x1b[m>>>> FILE_URI start\x1b[m\n");
}

TEST(ORXLog, TimingTextIsCutAt250Bytes) {
  FakePlatform& platform = FakePlatform::Reset();
  ORX_LOG_TIME(std::string(400, 'a').c_str());
  const std::string& buffer = platform.log.at(0).buffer;
  EXPECT_EQ(buffer.size(), 250u + 4u);
  EXPECT_EQ(buffer.substr(240), std::string(10, 'a') + "\x1b[m\n");
}

TEST(ORXLog, TimingLineDropsATrailingNewline) {
  FakePlatform& platform = FakePlatform::Reset();
  ORX_LOG_TIME("stop\n");
  const std::string& buffer = platform.log.at(0).buffer;
  EXPECT_EQ(buffer.substr(buffer.find(']') + 1), "\x1b[mstop\x1b[m\n");
}

TEST(ORXLog, TimingLineIsNotCopiedToStandardError) {
  FakePlatform::Reset();
  testing::internal::CaptureStderr();
  ORX_LOG_TIME("start");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(ORXLog, TakesAnEmptyMessageAndOneThatIsANewlineAlone) {
  FakePlatform& platform = FakePlatform::Reset();
  ORX_LOG_INFO("%s", "");
  ORX_LOG_INFO("\n");
  EXPECT_EQ(platform.log.at(0).buffer, "\x1b[m\x1b[m\n");
  EXPECT_EQ(platform.log.at(1).buffer, "\x1b[m\x1b[m\n");
}

TEST(ORXLog, NamesTheSourceFileWithoutItsFolders) {
  EXPECT_STREQ(orx::SourceName("/a/b.c/Scanner.cpp"), "Scanner.cpp");
  EXPECT_STREQ(orx::SourceName("Scanner.cpp"), "Scanner.cpp");
  EXPECT_STREQ(orx::SourceName(""), "");
}

}  // namespace

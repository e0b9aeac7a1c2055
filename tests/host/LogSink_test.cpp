#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <vector>

#include "OSAL/ORXLog.h"
#include "Platform/CameraPlatform.h"
#include "host/HostPlatform.h"

namespace {

struct Line {
  int id, priority;
  std::string tag, text;
};

class LogSink : public testing::Test {
 protected:
  void SetUp() override {
    HostPlatform::SetLogSink(
        [this](int id, int priority, const std::string& tag, const std::string& line) {
          lines_.push_back({id, priority, tag, line});
        });
  }
  void TearDown() override { HostPlatform::SetLogSink(nullptr); }

  std::vector<Line> lines_;
};

TEST_F(LogSink, ReceivesTheFinishedLine) {
  __dlog_print(3, 4, "DLNA", "%s: %s(%d) > %s", "file.cpp", "Function", 7, "message\n");
  ASSERT_EQ(lines_.size(), 1u);
  EXPECT_EQ(lines_[0].id, 3);
  EXPECT_EQ(lines_[0].priority, 4);
  EXPECT_EQ(lines_[0].tag, "DLNA");
  EXPECT_EQ(lines_[0].text, "file.cpp: Function(7) > message\n");
}

TEST_F(LogSink, ReceivesWhatTheLibraryLogs) {
  ORX_LOG_INFO("Scanning [%s]", "/card");
  ASSERT_EQ(lines_.size(), 1u);
  EXPECT_EQ(lines_[0].id, 3);
  EXPECT_EQ(lines_[0].priority, 4);
  EXPECT_NE(lines_[0].text.find("> \x1b[mScanning [/card]\x1b[m\n"), std::string::npos);
}

TEST_F(LogSink, ReceivesLongLinesWhole) {
  const std::string text(100000, 'x');
  __dlog_print(3, 4, "DLNA", "%s", text.c_str());
  ASSERT_EQ(lines_.size(), 1u);
  EXPECT_EQ(lines_[0].text, text);
}

TEST_F(LogSink, ReceivesEmptyLinesAndAMissingTag) {
  __dlog_print(1, 4, nullptr, "%s", "");
  ASSERT_EQ(lines_.size(), 1u);
  EXPECT_EQ(lines_[0].tag, "");
  EXPECT_EQ(lines_[0].text, "");
}

TEST_F(LogSink, ReceivesTheLinesOfAllThreadsOneAfterAnother) {
  std::vector<std::thread> threads;
  for (int t = 0; t < 8; ++t)
    threads.emplace_back([] {
      for (int i = 0; i < 200; ++i) __dlog_print(3, 4, "DLNA", "%d", i);
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(lines_.size(), 1600u);
}

TEST_F(LogSink, MayLogAndSetAnotherSink) {
  int inner = 0;
  HostPlatform::SetLogSink([&](int, int, const std::string&, const std::string& line) {
    if (line != "outer") return;
    __dlog_print(3, 4, "DLNA", "%s", "inner");
    HostPlatform::SetLogSink([&](int, int, const std::string&, const std::string&) { ++inner; });
  });
  __dlog_print(3, 4, "DLNA", "%s", "outer");
  __dlog_print(3, 4, "DLNA", "%s", "after");
  EXPECT_EQ(inner, 1);
}

TEST_F(LogSink, KeepsItsExceptionsToItself) {
  HostPlatform::SetLogSink(
      [](int, int, const std::string&, const std::string&) { throw std::runtime_error("full"); });
  EXPECT_EQ(__dlog_print(3, 4, "DLNA", "%s", "x"), -1);
}

TEST(DefaultLogSink, WritesNothingBelowErrors) {
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  __dlog_print(7, 4, "HOST", "%s", "all is well\n");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(DefaultLogSink, WritesErrorsToStandardError) {
  testing::internal::CaptureStderr();
  __dlog_print(7, 6, "HOST", "%s", "no card");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "[HOST      ] no card\n");
}

TEST(DefaultLogSink, LeavesTheLibrarysErrorsToTheLibrary) {
  testing::internal::CaptureStderr();
  ORX_LOG_ERROR("Error : %s", "OpenDB fail");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "[DLNA      ] \x1b[31mError : OpenDB fail\x1b[m\n");
}

}  // namespace

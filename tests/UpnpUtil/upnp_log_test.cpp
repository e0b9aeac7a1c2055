#include "UpnpUtil/upnp_log.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <thread>

#include "support/TempDir.h"

namespace {

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

constexpr char kInitLine[] = "***** LOG INIT *****\n";

std::string ContentOf(const std::string& path) {
  std::ostringstream content;
  content << std::ifstream(path, std::ios::binary).rdbuf();
  return content.str();
}

// Logs into a file of the test's own; off and on standard output afterwards.
class FileLog : public testing::Test {
 protected:
  ~FileLog() override {
    upnp_log_exit();
    upnp_log_init(nullptr);
    upnp_log_set_mode(0);
  }

  void Open(unsigned mask) {
    upnp_log_init(path_.c_str());
    upnp_log_set_mode(mask);
  }

  // What was written after the first line of the file.
  std::string Written() const {
    const std::string content = ContentOf(path_);
    EXPECT_EQ(content.compare(0, sizeof kInitLine - 1, kInitLine), 0) << content;
    return content.substr(sizeof kInitLine - 1);
  }

  const orx_test::TempDir directory_;
  const std::string path_ = directory_.Path("server.log");
};

TEST_F(FileLog, BeginsTheFileWithItsFirstLine) {
  Open(1);
  upnp_log_exit();
  EXPECT_EQ(ContentOf(path_), kInitLine);
}

TEST_F(FileLog, AppendsToAFileThatExists) {
  directory_.Write("server.log", "old\n");
  Open(1);
  upnp_log_exit();
  EXPECT_EQ(ContentOf(path_), std::string("old\n") + kInitLine);
}

TEST_F(FileLog, NeverWaitsForTheReaderOfAFifo) {
  ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
  Open(1);
  upnp_log_clear();  // nobody reads: there is no file
  const int reader = open(path_.c_str(), O_RDONLY | O_NONBLOCK);
  upnp_log_clear();
  upnp_log_message(0, 1, "text");
  char text[16] = {};
  EXPECT_EQ(read(reader, text, sizeof text), 11);
  EXPECT_STREQ(text, "SYSTEM:text");
  close(reader);
}

TEST_F(FileLog, LosesNoLineForASlowReader) {
  ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
  Open(1);  // holds both ends, so the reader has to be told where the log ends
  const int reader = open(path_.c_str(), O_RDONLY);
  const std::string line(99, 'x');
  std::string arrived;
  std::thread reading([&] {
    char block[1000];
    while (arrived.find("end") == std::string::npos) {
      usleep(50);
      arrived.append(block, static_cast<size_t>(read(reader, block, sizeof block)));
    }
  });
  for (int i = 0; i < 3000; ++i) upnp_log_message(0, 0, "%s\n", line.c_str());
  upnp_log_message(0, 0, "end");
  reading.join();
  close(reader);
  EXPECT_EQ(arrived.size(), sizeof kInitLine - 1 + 3000 * 100 + 3);
}

TEST_F(FileLog, KnowsItsFileName) {
  Open(1);
  EXPECT_STREQ(upnp_log_get_filename(), path_.c_str());
  upnp_log_exit();
  EXPECT_STREQ(upnp_log_get_filename(), path_.c_str());
  upnp_log_init(nullptr);
  EXPECT_EQ(upnp_log_get_filename(), nullptr);
}

TEST_F(FileLog, KeepsAtMost1023CharactersOfItsFileName) {
  const std::string name = "/nowhere/" + std::string(2000, 'x');
  upnp_log_init(name.c_str());
  EXPECT_EQ(upnp_log_get_filename(), name.substr(0, 1023));
}

TEST_F(FileLog, HasNoFileNameForAnEmptyPath) {
  upnp_log_init("");
  EXPECT_EQ(upnp_log_get_filename(), nullptr);
}

TEST_F(FileLog, WritesToStandardOutputWithoutAFile) {
  upnp_log_init(nullptr);
  upnp_log_set_mode(1);
  CaptureStdout();
  upnp_log_message(0, 1, "up %d\n", 5);
  EXPECT_EQ(GetCapturedStdout(), "SYSTEM:up 5\n");
}

TEST_F(FileLog, WritesToStandardOutputWhenTheFileCannotBeOpened) {
  CaptureStdout();
  upnp_log_init(directory_.Path("missing/server.log").c_str());
  upnp_log_set_mode(1);
  upnp_log_message(0, 1, "up\n");
  EXPECT_EQ(GetCapturedStdout(), "SYSTEM:up\n");
  EXPECT_EQ(upnp_log_get_filename(), directory_.Path("missing/server.log"));
}

TEST_F(FileLog, LeavesAnEarlierStreamOpenWhenOpenedAgain) {
  Open(1);
  upnp_log_message(0, 1, "first\n");
  const std::string second = directory_.Path("second.log");
  upnp_log_init(second.c_str());
  upnp_log_message(0, 1, "second\n");
  EXPECT_EQ(Written(), "SYSTEM:first\n");
  EXPECT_EQ(ContentOf(second), std::string(kInitLine) + "SYSTEM:second\n");
}

TEST_F(FileLog, WritesNothingInMode0) {
  Open(0);
  for (int level = 0; level <= 3; ++level) upnp_log_message(level, 1, "text\n");
  upnp_log_dump(2, 1, "data", 4);
  upnp_log_exit();
  EXPECT_EQ(Written(), "");
}

TEST_F(FileLog, IsEnabledWhenEveryBitIs) {
  upnp_log_set_mode(5);
  EXPECT_EQ(upnp_log_enabled(1), 1);
  EXPECT_EQ(upnp_log_enabled(4), 1);
  EXPECT_EQ(upnp_log_enabled(5), 1);
  EXPECT_EQ(upnp_log_enabled(2), 0);
  EXPECT_EQ(upnp_log_enabled(7), 0);
}

TEST_F(FileLog, IsEnabledForNoBitsInAnyMode) {
  for (const unsigned mask : {0u, 1u, 0xFFFFFFFFu}) {
    upnp_log_set_mode(mask);
    EXPECT_EQ(upnp_log_enabled(0), 1);
  }
}

TEST_F(FileLog, WritesThePrefixOfEveryCategory) {
  Open(0x1FF);
  for (unsigned category = 1; category <= 256; category *= 2) upnp_log_message(0, category, "m\n");
  EXPECT_EQ(Written(),
            "SYSTEM:m\nSSDP:m\nDB:m\nHTTP:m\nCLIENT-DB:m\nEVENTING:m\nXML:m\nPLUGIN:m\nSCAN:m\n");
}

TEST_F(FileLog, WritesNoPrefixForSeveralOrUnknownCategories) {
  Open(0xFFFFFFFF);
  upnp_log_message(0, 3, "both\n");
  upnp_log_message(0, 512, "unknown\n");
  upnp_log_message(0, 0, "none\n");
  EXPECT_EQ(Written(), "both\nunknown\nnone\n");
}

TEST_F(FileLog, PassesSeveralCategoriesOnlyWhenAllAreOn) {
  Open(1);
  upnp_log_message(0, 3, "both\n");
  EXPECT_EQ(Written(), "");
  upnp_log_set_mode(3);
  upnp_log_message(0, 3, "both\n");
  EXPECT_EQ(Written(), "both\n");
}

TEST_F(FileLog, AppliesTheMaskToLevel0Alone) {
  Open(0x100);
  upnp_log_message(0, 1, "hidden\n");
  upnp_log_message(1, 1, "a\n");
  upnp_log_message(2, 1, "b\n");
  upnp_log_message(7, 1, "c\n");
  upnp_log_message(-1, 1, "d\n");
  EXPECT_EQ(Written(), "[Problem]SYSTEM:a\n[ERROR]SYSTEM:b\nSYSTEM:c\nSYSTEM:d\n");
}

TEST_F(FileLog, WritesTheSeverityThenTheCategoryThenTheMessage) {
  Open(0x100);
  upnp_log_message(2, 1, "disk %s", "full");
  EXPECT_EQ(Written(), "[ERROR]SYSTEM:disk full");
}

TEST_F(FileLog, RepeatsACriticalMessageOnStandardOutput) {
  Open(0x100);
  CaptureStdout();
  upnp_log_message(3, 4, "lost %d of %s\n", 7, "eight");
  EXPECT_EQ(GetCapturedStdout(), "!!! CRITICAL ERROR!!!\nlost 7 of eight\n\n");
  EXPECT_EQ(Written(), "DB:lost 7 of eight\n");
}

TEST_F(FileLog, CutsACriticalMessageOnlyOnStandardOutput) {
  Open(0x100);
  const std::string text(5000, 'x');
  CaptureStdout();
  upnp_log_message(3, 512, "%s", text.c_str());
  EXPECT_EQ(GetCapturedStdout(), "!!! CRITICAL ERROR!!!\n" + text.substr(0, 1023) + "\n");
  EXPECT_EQ(Written(), text);
}

TEST_F(FileLog, IsFlushedAfterEveryMessage) {
  Open(1);
  upnp_log_message(0, 1, "now");
  EXPECT_EQ(Written(), "SYSTEM:now");
}

constexpr char kDumpHeader[] =
    "      00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F "
    "\n      ================================================\n";

TEST_F(FileLog, DumpsSixteenBytesALine) {
  Open(8);
  upnp_log_dump(0, 8, "ABCDEFGHIJKLMNOPqrst", 20);
  EXPECT_EQ(Written(), std::string("HTTP:DATA DUMP (20 Bytes) :\n") + kDumpHeader +
                           "0000| 41 : ABCDEFGHIJKLMNOP\n"
                           "0010| 71 : qrst            \n\n");
}

TEST_F(FileLog, DumpsWholeLinesWithoutAnEmptyOneBehindThem) {
  Open(8);
  upnp_log_dump(2, 1, "ABCDEFGHIJKLMNOP", 16);
  EXPECT_EQ(Written(), std::string("[ERROR]SYSTEM:DATA DUMP (16 Bytes) :\n") + kDumpHeader +
                           "0000| 41 : ABCDEFGHIJKLMNOP\n\n");
}

TEST_F(FileLog, DumpsOffsetsOfMoreThanFourDigits) {
  Open(8);
  const std::string data(0x10001, 'z');
  upnp_log_dump(0, 8, data.data(), static_cast<int>(data.size()));
  const std::string end = "10000| 7A : z               \n\n";
  const std::string written = Written();
  EXPECT_EQ(written.substr(written.size() - end.size()), end);
  EXPECT_NE(written.find("\nABC0| 7A : zzzzzzzzzzzzzzzz\n"), std::string::npos);
}

TEST_F(FileLog, DumpsOnlyTheHeadOfNothing) {
  Open(8);
  upnp_log_dump(0, 8, "", 0);
  EXPECT_EQ(Written(), std::string("HTTP:DATA DUMP (0 Bytes) :\n") + kDumpHeader + "\n");
}

TEST_F(FileLog, ReadsNothingForANegativeLength) {
  Open(8);
  upnp_log_dump(0, 8, "", -20);
  EXPECT_EQ(Written(), std::string("HTTP:DATA DUMP (-20 Bytes) :\n") + kDumpHeader + "\n");
}

TEST_F(FileLog, DumpsNothingForNullOrADisabledCategory) {
  Open(8);
  upnp_log_dump(2, 8, nullptr, 4);
  upnp_log_dump(0, 1, "data", 4);
  upnp_log_exit();
  EXPECT_EQ(Written(), "");
}

TEST_F(FileLog, IsEmptiedByClear) {
  Open(1);
  upnp_log_message(0, 1, "old\n");
  upnp_log_clear();
  EXPECT_EQ(ContentOf(path_), "");
  upnp_log_message(0, 1, "new\n");
  EXPECT_EQ(ContentOf(path_), "SYSTEM:new\n");
}

TEST_F(FileLog, WritesToStandardOutputWhenClearCannotOpenTheFileAgain) {
  const std::string folder = directory_.MakeDir("gone");
  const std::string path = folder + "/server.log";
  upnp_log_init(path.c_str());
  upnp_log_set_mode(1);
  ASSERT_EQ(unlink(path.c_str()), 0);
  ASSERT_EQ(rmdir(folder.c_str()), 0);
  upnp_log_clear();
  CaptureStdout();
  upnp_log_message(0, 1, "up\n");
  EXPECT_EQ(GetCapturedStdout(), "SYSTEM:up\n");
}

TEST_F(FileLog, WritesToStandardOutputAfterExit) {
  Open(1);
  upnp_log_exit();
  CaptureStdout();
  upnp_log_message(0, 1, "late\n");
  EXPECT_EQ(GetCapturedStdout(), "SYSTEM:late\n");
  EXPECT_EQ(Written(), "");
}

TEST_F(FileLog, NeverClosesStandardOutput) {
  Open(1);
  upnp_log_exit();
  upnp_log_exit();
  upnp_log_clear();
  CaptureStdout();
  fputs("still open", stdout);
  EXPECT_EQ(GetCapturedStdout(), "still open");
}

TEST_F(FileLog, LeavesStandardOutputInUseWithoutAFileName) {
  upnp_log_init(nullptr);
  upnp_log_set_mode(1);
  CaptureStdout();
  upnp_log_clear();
  upnp_log_exit();
  upnp_log_message(0, 1, "up\n");
  EXPECT_EQ(GetCapturedStdout(), "SYSTEM:up\n");
}

std::string DumpLine(const std::string& bytes, int count, unsigned size = 69) {
  const auto data = std::make_unique<unsigned char[]>(bytes.size());
  memcpy(data.get(), bytes.data(), bytes.size());
  const auto line = std::make_unique<char[]>(size);
  EXPECT_EQ(Hex_dump_line(line.get(), data.get(), count, size), line.get());
  return line.get();
}

TEST(HexDumpLine, ShowsTheFirstValueAndTheTextOfTheLine) {
  EXPECT_EQ(DumpLine("ABCDEFGHIJKLMNOP", 16), "41 : ABCDEFGHIJKLMNOP\n");
  EXPECT_EQ(DumpLine("\x0f"
                     "bc",
                     3),
            "0F : .bc             \n");
}

TEST(HexDumpLine, ShowsADotForWhatIsNotPrintable) {
  EXPECT_EQ(DumpLine(std::string("\0\x1f\x7f\x80\xff ~", 7), 7), "00 : ..... ~         \n");
}

TEST(HexDumpLine, IsBlankForNoBytes) {
  EXPECT_EQ(DumpLine("", 0), std::string(48, ' ') + " : " + std::string(16, ' ') + "\n");
  EXPECT_EQ(DumpLine("", -1), DumpLine("", 0));
}

TEST(HexDumpLine, ShowsAtMostSixteenBytes) {
  EXPECT_EQ(DumpLine("ABCDEFGHIJKLMNOP", 17), "41 : ABCDEFGHIJKLMNOP\n");
}

TEST(HexDumpLine, IsCutAtTheGivenSize) {
  EXPECT_EQ(DumpLine("AB", 2, 7), "41 : A");
  EXPECT_EQ(DumpLine("AB", 2, 1), "");
}

}  // namespace

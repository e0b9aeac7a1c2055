// Sizes and times of files that need more than 32 bits, from the file to its rows.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "support/JpegBuilder.h"
#include "support/Mp4Builder.h"
#include "support/ScannerFixture.h"
#include "support/TimeZone.h"

namespace {

using orx_test::MakeJpeg;
using orx_test::Rows;
using orx_test::SmallFilm;
using orx_test::SmallSong;

constexpr long long kSize = (1LL << 32) + 77;
constexpr long long kTime = 2211854706;  // 2040-02-03 04:05:06 UTC

class WideNumbersTest : public orx_test::ScannerTest {
 protected:
  // Adds a hole behind the content.
  std::string WriteLarge(const std::string& name, const std::string& content) const {
    const std::string path = Write(name, content);
    EXPECT_EQ(truncate64(path.c_str(), kSize), 0);
    return path;
  }
  // Whether the file system can keep that time.
  static bool DateLate(const std::string& path) {
    const timespec times[] = {{static_cast<time_t>(kTime), 0}, {static_cast<time_t>(kTime), 0}};
    struct stat64 status = {};
    return utimensat(AT_FDCWD, path.c_str(), times, 0) == 0 && stat64(path.c_str(), &status) == 0 &&
           status.st_mtime == kTime;
  }
  int QuietScan() const {
    testing::internal::CaptureStderr();
    const int status = Scan();
    testing::internal::GetCapturedStderr();
    return status;
  }
  const orx_test::TimeZone zone_{"UTC"};
};

TEST_F(WideNumbersTest, RecordsTheWholeSizeOfFilesOfMoreThan4GiB) {
  WriteLarge("a.jpg", MakeJpeg());
  WriteLarge("b.mp4", SmallFilm());
  WriteLarge("c.m4a", SmallSong());
  QuietScan();
  const std::string size = std::to_string(kSize);
  for (const char* table : {"ImageTable", "VideoTable", "AudioTable"})
    EXPECT_EQ(Select(std::string("select size from ") + table), (Rows{{size}})) << table;
}

TEST_F(WideNumbersTest, RecordsFilesOfMoreThan4GiBAnewOnARescan) {
  WriteLarge("b.mp4", SmallFilm());
  QuietScan();
  EXPECT_EQ(QuietScan(), 1);
  EXPECT_EQ(Cell("select size from VideoTable"), std::to_string(kSize));
}

// None of them holds a date of its own.
TEST_F(WideNumbersTest, RecordsTheDayOfFilesDatedAfterJanuary2038) {
  for (const std::string& path : {Write("a.jpg", MakeJpeg(640, 480, "")),
                                  Write("b.mp4", SmallFilm()), Write("c.m4a", SmallSong())})
    if (!DateLate(path)) GTEST_SKIP() << "the file system does not keep such a time";
  QuietScan();
  for (const char* table : {"ImageTable", "VideoTable", "AudioTable"})
    EXPECT_EQ(Select(std::string("select date from ") + table), (Rows{{"2040-02-03"}})) << table;
}

TEST_F(WideNumbersTest, KeepsFilesDatedAfterJanuary2038OnARescan) {
  for (const std::string& path : {Write("a.jpg", MakeJpeg()), Write("b.mp4", SmallFilm())})
    if (!DateLate(path)) GTEST_SKIP() << "the file system does not keep such a time";
  QuietScan();
  const Rows before = Select("select id, FullPath from ObjectTable order by id");
  EXPECT_EQ(QuietScan(), 0);
  EXPECT_EQ(Select("select id, FullPath from ObjectTable order by id"), before);
}

}  // namespace

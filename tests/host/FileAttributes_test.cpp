#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utime.h>

#include <cstring>
#include <filesystem>

#include "Platform/CameraPlatform.h"
#include "host/MultiPictureFile.h"
#include "support/TempDir.h"

namespace {

using orx_test::PlainJpeg;
using orx_test::TempDir;

const std::string kCard = ORXSCAN_SAMPLE_CARD;

int PictureAttributes(const std::string& path, sFileAttribute* out) {
  memset(out, 0x5A, sizeof *out);
  std::string writable = path;
  return QUILWifi_getFileAttribute(writable.data(), out);
}

int FilmAttributes(const std::string& path, sVideoAttribute* out) {
  memset(out, 0x5A, sizeof *out);
  std::string writable = path;
  return QUILWifi_getVideoAttribute(writable.data(), out);
}

TEST(PictureAttributes, ComeFromTheExifData) {
  const std::string path = kCard + "/DCIM/100ORXSC/ORXA0001.JPG";
  sFileAttribute out;
  ASSERT_NE(PictureAttributes(path, &out), 0);
  EXPECT_EQ(out.nFileSize, static_cast<long long>(std::filesystem::file_size(path)));
  EXPECT_EQ(out.nWidth, 640);
  EXPECT_EQ(out.nHeight, 480);
  EXPECT_STREQ(out.szDate, "2026-03-14");
}

TEST(PictureAttributes, OfAPictureWithoutExifDataComeFromItsFrameAndTheFileSystem) {
  const TempDir dir;
  const std::string path = dir.Write("plain.jpg", PlainJpeg(320, 200));
  const utimbuf times = {0, 1000000000};  // 2001-09-09 UTC
  ASSERT_EQ(utime(path.c_str(), &times), 0);
  sFileAttribute out;
  ASSERT_NE(PictureAttributes(path, &out), 0);
  EXPECT_EQ(out.nFileSize, static_cast<long long>(PlainJpeg(320, 200).size()));
  EXPECT_EQ(out.nWidth, 320);
  EXPECT_EQ(out.nHeight, 200);
  EXPECT_STREQ(out.szDate, "2001-09-09");
}

TEST(PictureAttributes, OfWhatIsNoPictureAreZeroAndAFailure) {
  const TempDir dir;
  sFileAttribute out;
  const sFileAttribute zero = {};
  for (const std::string& path : {dir.Write("text.jpg", "plain text"), dir.Write("empty.jpg", ""),
                                  dir.Path("missing.jpg"), dir.path(), std::string("/dev/null")}) {
    EXPECT_EQ(PictureAttributes(path, &out), 0) << path;
    EXPECT_EQ(memcmp(&out, &zero, sizeof out), 0) << path;
  }
  EXPECT_EQ(QUILWifi_getFileAttribute(nullptr, &out), 0);
  char path[] = "/tmp/x";
  EXPECT_EQ(QUILWifi_getFileAttribute(path, nullptr), 0);
}

TEST(FilmAttributes, ComeFromTheBoxes) {
  const std::string path = kCard + "/DCIM/101ORXSC/ORXA0001.MP4";
  sVideoAttribute out;
  ASSERT_NE(FilmAttributes(path, &out), 0);
  EXPECT_EQ(out.nFileSize, static_cast<long long>(std::filesystem::file_size(path)));
  EXPECT_EQ(out.nWidth, 320);
  EXPECT_EQ(out.nHeight, 240);
  EXPECT_GT(out.nDuration, 0);
  EXPECT_GT(out.dFrameRate, 0);
  EXPECT_EQ(strlen(out.szDate), 10u);
}

TEST(FilmAttributes, OfWhatIsNoFilmAreZeroAndAFailure) {
  const TempDir dir;
  sVideoAttribute out;
  const sVideoAttribute zero = {};
  for (const std::string& path :
       {dir.Write("text.mp4", "plain text, long enough for a header"), dir.Write("empty.mp4", ""),
        dir.Path("missing.mp4"), dir.path()}) {
    EXPECT_EQ(FilmAttributes(path, &out), 0) << path;
    EXPECT_EQ(memcmp(&out, &zero, sizeof out), 0) << path;
  }
  EXPECT_EQ(QUILWifi_getVideoAttribute(nullptr, &out), 0);
  char path[] = "/tmp/x";
  EXPECT_EQ(QUILWifi_getVideoAttribute(path, nullptr), 0);
}

TEST(FileSize, IsThatOfAFileInBytes) {
  const TempDir dir;
  EXPECT_EQ(ORXGetFileSize(dir.Write("five", "12345").c_str()), 5);
}

TEST(FileSize, PassesFourGigabytes) {
  const TempDir dir;
  const std::string path = dir.Write("large", "");
  ASSERT_EQ(truncate64(path.c_str(), 5LL << 30), 0);
  EXPECT_EQ(ORXGetFileSize(path.c_str()), 5LL << 30);
}

TEST(FileSize, IsZeroForWhatIsNoFile) {
  EXPECT_EQ(ORXGetFileSize("/nonexistent"), 0);
  EXPECT_EQ(ORXGetFileSize("/tmp"), 0);
  EXPECT_EQ(ORXGetFileSize(nullptr), 0);
}

}  // namespace

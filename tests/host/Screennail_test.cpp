#include <gtest/gtest.h>

#include <ostream>

#include "Platform/CameraPlatform.h"
#include "host/MultiPictureFile.h"
#include "support/TempDir.h"

namespace {

using orx_test::JpegSegment;
using orx_test::MultiPictureFile;
using orx_test::PlainJpeg;
using orx_test::TempDir;

constexpr uint32_t kVga = 0x010001;
constexpr uint32_t kFullHd = 0x010002;

struct Screennail {
  int result = 0, width = -1, height = -1, offset = -1, length = -1;
};

Screennail Find(const std::string& path) {
  Screennail s;
  std::string writable = path;
  s.result =
      QUILWifi_getJpegScreennailInfo(writable.data(), &s.width, &s.height, &s.offset, &s.length);
  return s;
}

Screennail FindIn(const std::string& content) {
  const TempDir dir;
  return Find(dir.Write("picture.jpg", content));
}

void ExpectNone(const Screennail& s) {
  EXPECT_NE(s.result, 1);
  EXPECT_EQ(s.width, 0);
  EXPECT_EQ(s.height, 0);
  EXPECT_EQ(s.offset, 0);
  EXPECT_EQ(s.length, 0);
}

MultiPictureFile WithPreview(uint32_t attribute = kVga) {
  MultiPictureFile file;
  file.entries = {{attribute, PlainJpeg(640, 480)}};
  return file;
}

TEST(Screennail, IsTheLargeThumbnailThatTheIndexNames) {
  const std::string content = WithPreview().Build();
  const Screennail s = FindIn(content);
  EXPECT_EQ(s.result, 1);
  EXPECT_EQ(s.width, 640);
  EXPECT_EQ(s.height, 480);
  EXPECT_EQ(content.substr(static_cast<size_t>(s.offset), static_cast<size_t>(s.length)),
            PlainJpeg(640, 480));
}

TEST(Screennail, IsFoundThroughABigEndianIndex) {
  MultiPictureFile file = WithPreview(kFullHd);
  file.big = true;
  EXPECT_EQ(FindIn(file.Build()).width, 640);
}

TEST(Screennail, IsFoundBehindOtherSegments) {
  MultiPictureFile file = WithPreview();
  file.before = JpegSegment(0xE0, "JFIF") + JpegSegment(0xE1, "Exif") + JpegSegment(0xE2, "ICC") +
                JpegSegment(0xE2, "MPE and more") + "\xFF\xFF\xFF\x01" + JpegSegment(0xFE, "");
  EXPECT_EQ(FindIn(file.Build()).width, 640);
}

TEST(Screennail, IsTheFirstOfSeveralLargeThumbnails) {
  MultiPictureFile file;
  file.entries = {{0x020002, PlainJpeg(1600, 1200)},
                  {kFullHd, PlainJpeg(1920, 1080)},
                  {kVga, PlainJpeg(640, 480)}};
  EXPECT_EQ(FindIn(file.Build()).width, 1920);
}

TEST(Screennail, IsTakenWhateverTheFlagsOfItsEntry) {
  EXPECT_EQ(FindIn(WithPreview(0x80000000u | kVga).Build()).width, 640);
}

TEST(Screennail, IsTheNextOneWhenTheFirstIsNoPicture) {
  MultiPictureFile file;
  file.entries = {{kVga, "this is no JPEG at all"}, {kFullHd, PlainJpeg(1920, 1080)}};
  EXPECT_EQ(FindIn(file.Build()).width, 1920);
}

TEST(Screennail, IsNotAFurtherPicture) {
  ExpectNone(FindIn(WithPreview(0x020001).Build()));  // panorama
  ExpectNone(FindIn(WithPreview(0x020002).Build()));  // disparity
  ExpectNone(FindIn(WithPreview(0x010003).Build()));  // no code of the standard
}

TEST(Screennail, IsNotAnImageOfAnotherFormat) {
  ExpectNone(FindIn(WithPreview(0x01000000u | kVga).Build()));
}

TEST(Screennail, IsNotThere) {
  ExpectNone(FindIn(PlainJpeg(640, 480)));
  ExpectNone(FindIn(""));
  ExpectNone(FindIn("plain text"));
  ExpectNone(Find("/nonexistent/picture.jpg"));
  ExpectNone(Find("/tmp"));
}

TEST(Screennail, IsNotLookedForWithoutAPathOrAPlaceForTheAnswer) {
  char path[] = "/tmp/x.jpg";
  int n = 0;
  EXPECT_EQ(QUILWifi_getJpegScreennailInfo(nullptr, &n, &n, &n, &n), 0);
  EXPECT_EQ(QUILWifi_getJpegScreennailInfo(path, nullptr, &n, &n, &n), 0);
  EXPECT_EQ(QUILWifi_getJpegScreennailInfo(path, &n, nullptr, &n, &n), 0);
  EXPECT_EQ(QUILWifi_getJpegScreennailInfo(path, &n, &n, nullptr, &n), 0);
  EXPECT_EQ(QUILWifi_getJpegScreennailInfo(path, &n, &n, &n, nullptr), 0);
}

TEST(Screennail, IsRefusedWhenItDoesNotLieInTheFile) {
  MultiPictureFile longer = WithPreview();
  longer.entries[0].lengthChange = 1;
  ExpectNone(FindIn(longer.Build()));
  MultiPictureFile further = WithPreview();
  further.entries[0].offsetChange = 1 << 20;
  ExpectNone(FindIn(further.Build()));
  MultiPictureFile huge = WithPreview();
  huge.entries[0].offsetChange = 0xFFFFFF00;
  ExpectNone(FindIn(huge.Build()));
  MultiPictureFile empty = WithPreview();
  empty.entries[0].lengthChange = -static_cast<int64_t>(PlainJpeg(640, 480).size());
  ExpectNone(FindIn(empty.Build()));
}

TEST(Screennail, IsRefusedWhenItIsThePictureItself) {
  MultiPictureFile file;
  file.entries = {{kVga, "x"}};
  const std::string honest = file.Build();
  // Offset 0 stands for the start of the file, which no preview has.
  const size_t header = 2 + 4 + 4;
  file.entries[0].offsetChange = -static_cast<int64_t>(honest.size() - 1 - header);
  ExpectNone(FindIn(file.Build()));
}

TEST(Screennail, IsNotReadFromATableLongerThanTheIndex) {
  MultiPictureFile file = WithPreview();
  file.tableLengthChange = 16;
  ExpectNone(FindIn(file.Build()));
}

TEST(Screennail, IsFoundInNoTruncationOfTheFile) {
  const std::string whole = WithPreview().Build();
  const TempDir dir;
  for (size_t size = 0; size < whole.size(); ++size) {
    SCOPED_TRACE(size);
    ExpectNone(Find(dir.Write("picture.jpg", whole.substr(0, size))));
  }
}

TEST(Screennail, LiesInTheFileWhateverByteIsChanged) {
  const std::string whole = WithPreview().Build();
  const TempDir dir;
  for (size_t i = 0; i < whole.size(); ++i) {
    for (const char change : {'\x01', '\x80', '\xFF'}) {
      std::string content = whole;
      content[i] = static_cast<char>(content[i] ^ change);
      const Screennail s = Find(dir.Write("picture.jpg", content));
      if (s.result != 1) continue;
      EXPECT_GT(s.width, 0);
      EXPECT_GT(s.height, 0);
      EXPECT_GT(s.length, 0);
      EXPECT_LE(static_cast<size_t>(s.offset) + static_cast<size_t>(s.length), whole.size());
    }
  }
}

TEST(Screennail, IsGivenUpWhenTheSegmentsNeverEnd) {
  MultiPictureFile file = WithPreview();
  for (int i = 0; i < 5000; ++i) file.before += JpegSegment(0xE5, "");
  ExpectNone(FindIn(file.Build()));
}

TEST(Screennail, IsFoundOnTheSampleCard) {
  const std::string card = ORXSCAN_SAMPLE_CARD;
  const Screennail s = Find(card + "/DCIM/100ORXSC/ORXA0003.JPG");
  EXPECT_EQ(s.result, 1);
  EXPECT_EQ(s.width, 640);
  EXPECT_EQ(s.height, 480);
  ExpectNone(Find(card + "/DCIM/100ORXSC/ORXA0001.JPG"));
  ExpectNone(Find(card + "/DCIM/100ORXSC/ORXA0004.MPO"));
}

}  // namespace

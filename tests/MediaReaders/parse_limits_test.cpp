// Just below, at and past each limit on the work for one file.
#include "MediaReaders/parse_limits.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "MediaReaders/exif_reader.h"
#include "MediaReaders/jpeg_segments.h"
#include "support/JpegBuilder.h"
#include "support/Mp4Builder.h"
#include "support/Mp4Reading.h"

namespace {

using namespace orx_test;

std::string Repeated(const std::string& text, long long count) {
  std::string all;
  for (long long i = 0; i < count; ++i) all += text;
  return all;
}

// Whether the frame header behind `between` is found.
bool FindsFrameBehind(const std::string& between) {
  const OpenedFile file(StartOfImage() + between + FrameHeader(640, 480));
  int width = 0, height = 0;
  const bool found = exif_get_jpeg_size(file.get(), file.get()->size, &width, &height, 0) == 0;
  EXPECT_EQ(width, found ? 640 : 0);
  return found;
}

TEST(JpegLimit, IsASegmentPastTheMost) {
  const std::string segment = Segment(0xE2, "");
  EXPECT_TRUE(FindsFrameBehind(Repeated(segment, orx::kMaxJpegSegments - 1)));
  EXPECT_TRUE(FindsFrameBehind(Repeated(segment, orx::kMaxJpegSegments)));
  EXPECT_FALSE(FindsFrameBehind(Repeated(segment, orx::kMaxJpegSegments + 1)));
}

TEST(JpegLimit, IsAByteBetweenSegmentsPastTheMost) {
  EXPECT_TRUE(FindsFrameBehind(Zeros(orx::kMaxJpegGaps - 1)));
  EXPECT_TRUE(FindsFrameBehind(Zeros(orx::kMaxJpegGaps)));
  EXPECT_FALSE(FindsFrameBehind(Zeros(orx::kMaxJpegGaps + 1)));
}

TEST(JpegLimit, CountsTheBytesOfAllGaps) {
  const std::string gap = Zeros(orx::kMaxJpegGaps / 2), segment = Segment(0xE2, "");
  EXPECT_TRUE(FindsFrameBehind(gap + segment + gap));
  EXPECT_FALSE(FindsFrameBehind(gap + segment + gap + Zeros(1)));
}

TEST(JpegLimit, EndsTheSearchForTheThumbnail) {
  const auto find = [](long long distance) {
    const OpenedFile file(Zeros(static_cast<size_t>(3 + distance)) + StartOfImage() + Zeros(100));
    return orx::FindStartOfImage(file.get(), 3);
  };
  EXPECT_EQ(find(0), 3);
  EXPECT_EQ(find(16 * 1024 - 1), 3 + 16 * 1024 - 1);  // across two blocks
  EXPECT_EQ(find(16 * 1024), 3 + 16 * 1024);
  EXPECT_EQ(find(orx::kMaxThumbnailSearch - 2), 3 + orx::kMaxThumbnailSearch - 2);
  EXPECT_EQ(find(orx::kMaxThumbnailSearch - 1), -1);
}

TEST(ThumbnailSearch, FindsAMarkerAtEveryPlaceOfABlock) {
  for (size_t place = 0; place < 600; ++place) {
    SCOPED_TRACE(place);
    const OpenedFile file(std::string(place, '\xFF') + StartOfImage());
    EXPECT_EQ(orx::FindStartOfImage(file.get(), 0), static_cast<long long>(place));
  }
}

// Whether the handler behind `boxes` is read.
bool FindsSoundBehind(const std::string& boxes) {
  return Mp4Reading(boxes + Hdlr("soun"))->HasAudio != 0;
}

TEST(Mp4Limit, IsABoxPastTheMost) {
  const std::string box = Box("free", "");
  EXPECT_TRUE(FindsSoundBehind(Repeated(box, orx::kMaxBoxes - 2)));
  EXPECT_TRUE(FindsSoundBehind(Repeated(box, orx::kMaxBoxes - 1)));
  EXPECT_FALSE(FindsSoundBehind(Repeated(box, orx::kMaxBoxes)));
}

TEST(Mp4Limit, CountsBoxesOf64BitSizeAndContainersToo) {
  EXPECT_TRUE(FindsSoundBehind(Repeated(LargeBox("free", ""), orx::kMaxBoxes - 1)));
  EXPECT_FALSE(FindsSoundBehind(Repeated(LargeBox("free", ""), orx::kMaxBoxes)));
  EXPECT_TRUE(FindsSoundBehind(Repeated(Box("moov", ""), orx::kMaxBoxes - 1)));
  EXPECT_FALSE(FindsSoundBehind(Box("moov", Repeated(Box("moov", ""), orx::kMaxBoxes - 1))));
}

TEST(Mp4Limit, IsADistantBoxPastTheMost) {
  const std::string near = Box("free", Zeros(orx::kDistantBox - 8));
  const std::string distant = Box("free", Zeros(orx::kDistantBox - 7));
  EXPECT_TRUE(FindsSoundBehind(Repeated(near, orx::kMaxDistantBoxes + 1)));
  EXPECT_TRUE(FindsSoundBehind(Repeated(distant, orx::kMaxDistantBoxes)));
  EXPECT_FALSE(FindsSoundBehind(Repeated(distant, orx::kMaxDistantBoxes + 1)));
}

TEST(Mp4Limit, LeavesWhatWasFoundBefore) {
  const Mp4Reading film(MakeMp4() + Repeated(Box("free", ""), orx::kMaxBoxes) + Hdlr("text"));
  EXPECT_EQ(film.result(), 1);
  EXPECT_EQ(film->VideoFrameCount, 150);
  EXPECT_STREQ(film->DurationText, "0:00:10");
}

TEST(Mp4Limit, LetsTheTableOfALongFilmBeReadWhole) {
  constexpr uint32_t kPictures = 10 * 60 * 60 * 60;  // ten hours, 60 a second
  const Mp4Reading film(
      Hdlr("vide") +
      Box("stbl", Stsd(Avc1(320, 240, 66, 10)) + Stsz(0, std::vector<uint32_t>(kPictures, 100))));
  EXPECT_EQ(film->VideoFrameCount, static_cast<int>(kPictures));
  EXPECT_EQ(film->VideoByteTotal, static_cast<int>(kPictures * 100));
}

TEST(Mp4Limit, EndsATableOfAnyLength) {
  const uint32_t entries = static_cast<uint32_t>(orx::kMaxBoxBytes / 4) + 1000;
  const std::string description = Stsd(Avc1(320, 240, 66, 10));
  const Mp4Reading film(Hdlr("vide") +
                        Box("stbl", description + Stsz(0, std::vector<uint32_t>(entries, 1))) +
                        Hdlr("soun"));
  EXPECT_EQ(film->VideoFrameCount, static_cast<int>(entries));
  EXPECT_LE(film->VideoByteTotal, orx::kMaxBoxBytes / 4);
  EXPECT_GT(film->VideoByteTotal, orx::kMaxBoxBytes / 4 - 1000);
  EXPECT_EQ(film->HasAudio, 0);  // as if the file ended in the table
}

TEST(Mp4Limit, LeavesOutATextPastTheLongest) {
  const std::string longest(orx::kMaxTextSize, 't');
  EXPECT_EQ(Mp4Reading(Ilst(TextItem("\251nam", longest)))->Title, longest);
  EXPECT_EQ(Mp4Reading(Ilst(TextItem("\251nam", longest + "t")))->Title, nullptr);
}

TEST(Mp4Limit, CountsTheBrandsSearchedForEachSoundEntry) {
  const std::string file = Ftyp("isom", std::string(60000, 'b')) +
                           Repeated(Stsd(Mp4a()), orx::kMaxBoxBytes / 60000 + 10) + Hdlr("soun");
  const Mp4Reading sound(file);
  EXPECT_EQ(sound.result(), 0);
  EXPECT_GT(sound->Channels, 0);
}

}  // namespace

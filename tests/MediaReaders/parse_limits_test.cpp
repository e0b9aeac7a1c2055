// Just below, at and past each limit on the work for one file.
#include "MediaReaders/parse_limits.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/types.h>
#include <unistd.h>

#include <climits>
#include <string>
#include <vector>

#include "MediaReaders/exif_reader.h"
#include "MediaReaders/jpeg_segments.h"
#include "support/JpegBuilder.h"
#include "support/MemoryFile.h"
#include "support/Mp4Builder.h"
#include "support/Mp4Reading.h"

namespace {
long long bytesRead = 0, reads = 0;  // from files, by the library
}

extern "C" {
// NOLINTBEGIN: the names are the linker's
ssize_t __real_pread64(int descriptor, void* to, size_t size, off64_t at);

ssize_t __wrap_pread64(int descriptor, void* to, size_t size, off64_t at) {
  const ssize_t count = __real_pread64(descriptor, to, size, at);
  ++reads;
  bytesRead += count;
  return count;
}
// NOLINTEND
}

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

// ---- both readers, one after the other ----

class SparseFile {
 public:
  ~SparseFile() { close(descriptor_); }
  SparseFile() = default;
  SparseFile(const SparseFile&) = delete;
  SparseFile& operator=(const SparseFile&) = delete;

  const char* path() const { return file_.path(); }
  void Write(long long at, const std::string& bytes) const {
    ASSERT_EQ(pwrite64(descriptor_, bytes.data(), bytes.size(), at),
              static_cast<ssize_t>(bytes.size()));
  }
  // `count` pieces, each at the start of `stride` bytes; returns where these end.
  long long Scatter(long long at, const std::string& piece, long long stride, int count) const {
    for (int i = 0; i < count; ++i, at += stride) Write(at, piece);
    return at;
  }

 private:
  MemoryFile file_;
  int descriptor_ = open64(file_.path(), O_WRONLY | O_CLOEXEC);
};

// The first bytes of a picture are a box of 4.3 GB, so that a file may be a picture and a film.
// One without extension is tried as both, and each reader may go up to all its limits.
TEST(LimitsTogether, LetAPictureThatIsAFilmCostAHundredMegabytesOfReading) {
  const std::string start =
      StartOfImage() + ExifSegment(TiffBuilder().Long(513, 70).Long(514, 0x7FFFFFFF).Build());
  const SparseFile file;
  file.Write(0, start);
  const long long size = static_cast<long long>(start.size());
  long long end = file.Scatter(size, std::string("\xFF\xE2\x40\0", 4), 16386, 2040);
  file.Write(end, StartOfImage());
  file.Scatter(end + 2, "\xFF\xE2\xFF\xFF", 65537, 3000);
  end = file.Scatter(0xFFD8FFE1, BoxOfSize(16384, "mvhd", Mvhd(1, 3, 1).substr(8)), 16384,
                     orx::kMaxDistantBoxes - 8);
  const std::string table = BoxOfSize(0x3FFFFFF0, "stbl", Stsd(Avc1(640, 480, 66, 30))) +
                            BoxOfSize(0x3FFFF000, "stsz", U32(0) + U32(0) + U32(0xFFFFFFFF));
  file.Write(end, table);
  file.Write(end + 0x3FFFFFF0, Zeros(1));

  reads = bytesRead = 0;
  mp4_metadata_t film = {};
  EXPECT_EQ(m4a_get_metadata(file.path(), &film), 0);
  EXPECT_EQ(film.VideoFrameCount, INT_MAX);  // the walk came to the table
  m4a_free_metadata(&film);
  int length = 0;
  EXPECT_EQ(exif_get_metadata(file.path(), nullptr, nullptr, nullptr, nullptr, &length, nullptr,
                              nullptr, nullptr, nullptr, nullptr, nullptr),
            1);
  EXPECT_EQ(length, 0x7FFFFFFF);
  EXPECT_GT(reads, 0);
  EXPECT_LE(reads, 7000);
  EXPECT_LE(bytesRead, 110 << 20);
}

}  // namespace

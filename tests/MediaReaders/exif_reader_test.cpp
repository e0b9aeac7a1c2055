#include "MediaReaders/exif_reader.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <utime.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "OSAL/TextPtr.h"
#include "support/JpegBuilder.h"
#include "support/TempDir.h"

namespace {

using namespace orx_test;

constexpr long kFileTime = 1700000000;  // 2023-11-14 22:13:20 UTC
constexpr uint16_t kExifPointer = 34665;

std::string TextOf(const char* text) { return text != nullptr ? text : "(null)"; }

// The results of exif_get_metadata.
struct Metadata {
  int ok = -1;
  long long size = -1;
  int width = -1, height = -1, orientation = -1;
  int thumbOffset = -1, thumbLength = -1, thumbWidth = -1, thumbHeight = -1;
  long fileTime = -1;
  std::string date, description;
};

// A record of exif_get_metadata_orig or of a walk, which releases its texts.
struct Record {
  ~Record() {
    exif_free_metadata(&data);
    free(data.UserComment);
  }
  ExifData data = {};
};

class ExifReader : public testing::TestWithParam<TiffOrder> {
 protected:
  std::string Write(const std::string& content) const {
    const std::string path = directory_.Write("a.jpg", content);
    const utimbuf times = {kFileTime, kFileTime};
    utime(path.c_str(), &times);
    return path;
  }

  Metadata Read(const std::string& content) const { return ReadPath(Write(content).c_str()); }

  static Metadata ReadPath(const char* path) {
    Metadata m;
    char date[] = "date", description[] = "description";
    char *dateText = date, *descriptionText = description;
    m.ok = exif_get_metadata(path, &m.size, &m.width, &m.height, &m.thumbOffset, &m.thumbLength,
                             &m.thumbWidth, &m.thumbHeight, &m.orientation, &dateText, &m.fileTime,
                             &descriptionText);
    m.date = TextOf(dateText);
    m.description = TextOf(descriptionText);
    free(dateText);
    free(descriptionText);
    return m;
  }

  int ReadRecord(const std::string& content, Record* record) const {
    return exif_get_metadata_orig(Write(content).c_str(), &record->data);
  }

  TiffBuilder Tiff() const { return TiffBuilder(GetParam()); }

  TempDir directory_;
};

INSTANTIATE_TEST_SUITE_P(Intel, ExifReader, testing::Values(TiffOrder::kLittle));
INSTANTIATE_TEST_SUITE_P(Motorola, ExifReader, testing::Values(TiffOrder::kBig));

// A picture with this TIFF block and a frame header of 640x480.
std::string Picture(const std::string& tiff) {
  return StartOfImage() + ExifSegment(tiff) + FrameHeader(640, 480) + EndOfImage();
}
// The same without a frame header.
std::string Frameless(const std::string& tiff) {
  return StartOfImage() + ExifSegment(tiff) + std::string(32, '\0');
}

void ExpectNothing(const Metadata& m) {
  EXPECT_EQ(m.ok, 0);
  EXPECT_EQ(m.size, 0);
  EXPECT_EQ(m.width, 0);
  EXPECT_EQ(m.height, 0);
  EXPECT_EQ(m.orientation, 0);
  EXPECT_EQ(m.thumbOffset, 0);
  EXPECT_EQ(m.thumbLength, 0);
  EXPECT_EQ(m.thumbWidth, 0);
  EXPECT_EQ(m.thumbHeight, 0);
  EXPECT_EQ(m.fileTime, 0);
  EXPECT_EQ(m.date, "(null)");
  EXPECT_EQ(m.description, "(null)");
}

// ---- Whole files ----

TEST_P(ExifReader, ReadsACameraFile) {
  const std::string file = JpegBuilder()
                               .Size(4000, 3000)
                               .Order(GetParam())
                               .Description("A red bridge")
                               .Thumbnail(160, 120)
                               .Build();
  const Metadata m = Read(file);
  EXPECT_EQ(m.ok, 1);
  EXPECT_EQ(m.size, static_cast<long long>(file.size()));
  EXPECT_EQ(m.width, 4000);
  EXPECT_EQ(m.height, 3000);
  EXPECT_EQ(m.date, "2026-11-21");
  EXPECT_EQ(m.description, "A red bridge");
  EXPECT_EQ(m.fileTime, kFileTime);
  EXPECT_EQ(m.thumbOffset, static_cast<int>(file.find("\xFF\xD8", 2)));
  EXPECT_EQ(m.thumbLength, 104);
  EXPECT_EQ(m.thumbWidth, 160);
  EXPECT_EQ(m.thumbHeight, 120);
}

TEST_P(ExifReader, ReadsAFileWithAJfifSegmentBeforeTheExifSegment) {
  const Metadata m = Read(JpegBuilder().Order(GetParam()).Jfif().Thumbnail(160, 120).Build());
  EXPECT_EQ(m.ok, 1);
  EXPECT_EQ(m.width, 640);
  EXPECT_EQ(m.thumbWidth, 160);
}

TEST_P(ExifReader, RefusesAFileWithTwoJfifSegments) {
  std::string file = JpegBuilder().Order(GetParam()).Jfif().Build();
  file.insert(2, JfifSegment());
  ExpectNothing(Read(file));
}

TEST_P(ExifReader, RefusesWhatIsNoPictureWithAnExifBlock) {
  ExpectNothing(Read(JpegBuilder().NoExif().Build()));
  ExpectNothing(Read("no picture at all, but longer than a header"));
  ExpectNothing(Read("x"));
  ExpectNothing(Read(""));
}

TEST_P(ExifReader, RefusesWhatIsNoFile) {
  ExpectNothing(ReadPath(nullptr));
  ExpectNothing(ReadPath(directory_.Path("missing.jpg").c_str()));
  ExpectNothing(ReadPath(directory_.path().c_str()));
  const std::string fifo = directory_.Path("fifo.jpg");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  ExpectNothing(ReadPath(fifo.c_str()));
}

TEST_P(ExifReader, LeavesOutTheResultsThatAreNotWanted) {
  const std::string path = Write(Picture(Tiff().Text(270, "text").Build()));
  EXPECT_EQ(exif_get_metadata(path.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                              nullptr, nullptr, nullptr, nullptr, nullptr),
            1);
}

TEST_P(ExifReader, TakesWhatAPictureThatIsCutShortStillHolds) {
  const std::string whole = JpegBuilder()
                                .Order(GetParam())
                                .Description("A red bridge")
                                .Thumbnail(160, 120)
                                .Padding(4)
                                .Build();
  const size_t tiff = whole.find("Exif") + 6;
  const size_t frame = whole.rfind("\xFF\xC0") + 9;
  for (size_t size = 0; size < whole.size(); ++size) {
    SCOPED_TRACE(size);
    const Metadata m = Read(whole.substr(0, size));
    // The block is filled with zeros: a header of three or four bytes is the least that is needed.
    const bool header = size >= tiff + (GetParam() == TiffOrder::kBig ? 2 : 3);
    EXPECT_EQ(m.ok, header ? 1 : 0);
    if (!header) ExpectNothing(m);
    EXPECT_EQ(m.width, size >= frame ? 640 : 0);
    EXPECT_EQ(m.height, size >= frame ? 480 : 0);
  }
}

TEST_P(ExifReader, TakesTheSizeFromTheExifTagsOnlyWithoutAFrameHeader) {
  const std::string tiff = Tiff().Long(kExifPointer, 8).Long(40962, 1920).Long(40963, 1080).Build();
  Metadata m = Read(Picture(tiff));
  EXPECT_EQ(m.width, 640);
  EXPECT_EQ(m.height, 480);
  m = Read(Frameless(tiff));
  EXPECT_EQ(m.ok, 1);
  EXPECT_EQ(m.width, 1920);
  EXPECT_EQ(m.height, 1080);
}

TEST_P(ExifReader, HasNoSizeWithoutAFrameHeaderAndTags) {
  const Metadata m = Read(Frameless(Tiff().Text(270, "text").Build()));
  EXPECT_EQ(m.ok, 1);
  EXPECT_EQ(m.width, 0);
  EXPECT_EQ(m.height, 0);
}

// ---- The TIFF header ----

TEST_P(ExifReader, AsksForTheHeaderOfTheTiffBlock) {
  const auto with = [this](const std::string& header) {
    return Read(Picture(Tiff().Header(header).FirstIfd(0).Build())).ok;
  };
  EXPECT_EQ(with(std::string("II*\0", 4)), 1);
  EXPECT_EQ(with(std::string("MM\0*", 4)), 1);
  EXPECT_EQ(with(std::string("MM\0\0", 4)), 1);  // only the zero is looked at
  EXPECT_EQ(with(std::string("MM\0X", 4)), 1);
  EXPECT_EQ(with(std::string("II*\1", 4)), 0);
  EXPECT_EQ(with(std::string("II\0*", 4)), 0);
  EXPECT_EQ(with("MM*\1"), 0);
  EXPECT_EQ(with(std::string("MI*\0", 4)), 0);
}

TEST_P(ExifReader, RefusesAFirstDirectoryPastTheEndOfTheBlock) {
  const std::string tiff = Tiff().Text(270, "text").Build();
  const auto length = static_cast<uint32_t>(tiff.size() + 8);  // as the segment has it
  EXPECT_EQ(Read(Picture(Tiff().FirstIfd(length).Text(270, "text").Build())).ok, 1);
  EXPECT_EQ(Read(Picture(Tiff().FirstIfd(length + 1).Text(270, "text").Build())).ok, 0);
  EXPECT_EQ(Read(Picture(Tiff().FirstIfd(UINT_MAX).Text(270, "text").Build())).ok, 0);
}

TEST_P(ExifReader, TakesABlockWithoutADirectory) {
  const Metadata m = Read(Picture(Tiff().FirstIfd(0).Text(270, "text").Build()));
  EXPECT_EQ(m.ok, 1);
  EXPECT_EQ(m.description, "(null)");
  EXPECT_EQ(m.date, "2023-11-14");
  EXPECT_EQ(m.width, 640);
}

TEST_P(ExifReader, DoesNotTakeTheHeaderForADirectory) {
  // Read as a directory at 0, the block would have its second entry at 14: a description.
  const uint32_t tagAndType = GetParam() == TiffOrder::kBig ? 0x010E0002 : 0x0002010E;
  TiffBuilder tiff = Tiff();
  tiff.FirstIfd(0).Entry(1, 1, tagAndType, 4).Entry(0x4141, 0x4141, 0, 0);
  EXPECT_EQ(Read(Picture(tiff.Build())).description, "(null)");
}

TEST_P(ExifReader, TakesADirectoryInsideTheHeader) {
  // In Intel order the offset 4, read as a directory at 4, announces four entries from 6 on; in
  // Motorola order at 6, the offset 6 announces six from 8 on.
  const bool big = GetParam() == TiffOrder::kBig;
  const uint32_t offset = big ? 6 : 4;
  std::string tiff = (big ? std::string("MM\0*", 4) : std::string("II*\0", 4)) +
                     Bytes32(offset, GetParam()) + (big ? "" : std::string(10, '\0'));
  tiff += Bytes16(270, GetParam()) + Bytes16(2, GetParam()) + Bytes32(4, GetParam()) +
          std::string("abc\0", 4) + std::string(80, '\0');
  EXPECT_EQ(Read(Picture(tiff)).description, "abc");
}

// ---- Tags ----

TEST_P(ExifReader, TakesTheTagsOfTheMainDirectory) {
  Record record;
  const std::string rational = Bytes32(300, TiffOrder::kBig) + Bytes32(2, TiffOrder::kBig);
  ASSERT_EQ(ReadRecord(Picture(Tiff()
                                   .Text(270, "description")
                                   .Long(274, 6)
                                   .Data(282, kRational, 1, rational)
                                   .Data(283, kSRational, 1, rational)
                                   .Text(305, "software")
                                   .Text(306, "2026:11:21 09:34:26")
                                   .Long(513, 70000)
                                   .Long(514, 80000)
                                   .Build()),
                       &record),
            1);
  EXPECT_EQ(TextOf(record.data.Description), "description");
  EXPECT_EQ(record.data.Orientation, 6);
  EXPECT_EQ(record.data.XResolution, 150);
  EXPECT_EQ(record.data.YResolution, 150);
  EXPECT_EQ(TextOf(record.data.Software), "software");
  EXPECT_EQ(TextOf(record.data.DateTime), "2026:11:21 09:34:26");
  EXPECT_EQ(record.data.ThumbnailOffset, 70000);
  EXPECT_EQ(record.data.ThumbnailLength, 80000);
}

TEST_P(ExifReader, LeavesWhatItDoesNotFillAtZero) {
  Record record;
  memset(static_cast<void*>(&record.data), 0x5A, sizeof record.data);
  ASSERT_EQ(ReadRecord(Picture(Tiff().Text(270, "description").Build()), &record), 1);
  EXPECT_EQ(record.data.Reserved, 0);
  EXPECT_EQ(record.data.ReservedText1, nullptr);
  EXPECT_EQ(record.data.ReservedText2, nullptr);
  EXPECT_EQ(record.data.ReservedText3, nullptr);
  EXPECT_EQ(record.data.ReservedText4, nullptr);
  EXPECT_EQ(record.data.UserComment, nullptr);
  EXPECT_EQ(record.data.FileTime, kFileTime);
}

TEST_P(ExifReader, ZeroesTheRecordOnFailure) {
  Record record;
  memset(static_cast<void*>(&record.data), 0x5A, sizeof record.data);
  EXPECT_EQ(exif_get_metadata_orig(nullptr, &record.data), 0);
  EXPECT_EQ(record.data.FileSize, 0);
  EXPECT_EQ(record.data.Description, nullptr);
  EXPECT_EQ(exif_get_metadata_orig(Write(Picture(Tiff().Build())).c_str(), nullptr), 0);
  EXPECT_EQ(ReadRecord("", &record), 0);
}

TEST_P(ExifReader, KeepsTheFirstOfSeveralTexts) {
  Record record;
  ASSERT_EQ(ReadRecord(Picture(Tiff()
                                   .Text(270, "first description")
                                   .Text(270, "second")
                                   .Text(305, "first software")
                                   .Text(305, "second")
                                   .Text(306, "2001:01:01 00:00:00")
                                   .Text(306, "2002:02:02 00:00:00")
                                   .Long(274, 3)
                                   .Long(274, 5)
                                   .Build()),
                       &record),
            1);
  EXPECT_EQ(TextOf(record.data.Description), "first description");
  EXPECT_EQ(TextOf(record.data.Software), "first software");
  EXPECT_EQ(TextOf(record.data.DateTime), "2001:01:01 00:00:00");
  EXPECT_EQ(record.data.Orientation, 5);  // the last of several numbers
}

TEST_P(ExifReader, TakesAShortTextFromItsEntry) {
  EXPECT_EQ(Read(Picture(Tiff().Text(270, "abc").Build())).description, "abc");
  EXPECT_EQ(Read(Picture(Tiff().Text(270, "").Build())).description, "");
}

TEST_P(ExifReader, PassesOverATextThatLiesOutsideTheBlock) {
  const Metadata m =
      Read(Picture(Tiff().Entry(270, kAscii, 40, 0x7FFFFFFF).Text(306, "2026:11:21").Build()));
  EXPECT_EQ(m.description, "(null)");
  EXPECT_EQ(m.date, "2026-11-21");
}

TEST_P(ExifReader, SeesTheOrientationOfAMotorolaBlockOnly) {
  const Metadata m = Read(Picture(Tiff().Short(274, 6).Build()));
  EXPECT_EQ(m.orientation, GetParam() == TiffOrder::kBig ? 6 : 0);
}

TEST_P(ExifReader, TakesExifTagsOnlyWhenTheExifPointerWasSeen) {
  TiffBuilder without = Tiff(), with = Tiff();
  without.Text(36867, "2001:02:03 04:05:06");
  with.Text(36867, "2001:02:03 04:05:06").Long(kExifPointer, 1);
  EXPECT_EQ(Read(Picture(without.Build())).date, "2023-11-14");
  EXPECT_EQ(Read(Picture(with.Build())).date, "2001-02-03");
}

TEST_P(ExifReader, SeesNoExifPointerInAZero) {
  TiffBuilder tiff = Tiff();
  tiff.Text(36867, "2001:02:03 04:05:06").Long(kExifPointer, 0);
  EXPECT_EQ(Read(Picture(tiff.Build())).date, "2023-11-14");
}

TEST_P(ExifReader, LooksForExifTagsInTheChainFromEightOnAndNotWhereThePointerLeads) {
  // The third directory is reached by the pointer alone.
  TiffBuilder tiff = Tiff();
  tiff.Long(kExifPointer, 44).NextIfd().Long(259, 6).Link(0).NextIfd();
  tiff.Text(36867, "2001:02:03 04:05:06");
  EXPECT_EQ(Read(Picture(tiff.Build())).date, "2023-11-14");
  TiffBuilder linked = Tiff();
  linked.Long(kExifPointer, 44).NextIfd().Text(36867, "2001:02:03 04:05:06");
  EXPECT_EQ(Read(Picture(linked.Build())).date, "2001-02-03");
}

TEST_P(ExifReader, BeginsTheExifChainAtEightWhereverTheMainDirectoryIs) {
  TiffBuilder tiff = Tiff();
  tiff.FirstIfd(26).Text(36867, "2001:02:03 04:05:06").Link(0).NextIfd().Long(kExifPointer, 999);
  EXPECT_EQ(Read(Picture(tiff.Build())).date, "2001-02-03");
}

TEST_P(ExifReader, TakesNoTagFromTheGpsAndInteroperabilityDirectories) {
  for (const uint16_t pointer : {uint16_t{34853}, uint16_t{40965}}) {
    TiffBuilder tiff = Tiff();
    tiff.Long(kExifPointer, 8).Long(pointer, 38).Link(0).NextIfd();
    tiff.Text(270, "text").Text(36867, "2001:02:03 04:05:06");
    const Metadata m = Read(Picture(tiff.Build()));
    EXPECT_EQ(m.ok, 1);
    EXPECT_EQ(m.description, "(null)");
    EXPECT_EQ(m.date, "2023-11-14");
  }
}

TEST_P(ExifReader, EndsWhenADirectoryLinksToItself) {
  TiffBuilder tiff = Tiff();
  tiff.Long(kExifPointer, 8).Text(306, "2026:11:21 09:34:26").Link(8);
  EXPECT_EQ(Read(Picture(tiff.Build())).date, "2026-11-21");
}

// ---- UserComment ----

class UserComment : public ExifReader {
 protected:
  std::string Comment(const TiffBuilder& tiff) const {
    Record record;
    EXPECT_EQ(ReadRecord(Picture(tiff.Build()), &record), 1);
    return TextOf(record.data.UserComment);
  }
  TiffBuilder With(uint16_t type, const std::string& value) const {
    TiffBuilder tiff = Tiff();
    tiff.Long(kExifPointer, 8).Data(37510, type, static_cast<uint32_t>(value.size()), value);
    return tiff;
  }
  const std::string code_ = std::string("ASCII\0\0\0", 8);
};

INSTANTIATE_TEST_SUITE_P(BothOrders, UserComment,
                         testing::Values(TiffOrder::kLittle, TiffOrder::kBig));

TEST_P(UserComment, FollowsItsCode) {
  EXPECT_EQ(Comment(With(kUndefined, code_ + "a comment")), "a comment");
  EXPECT_EQ(Comment(With(kUndefined, code_ + "a")), "a");
}

TEST_P(UserComment, IsTakenInAsciiOnly) {
  EXPECT_EQ(Comment(With(kUndefined, std::string("UNICODE\0text", 12))), "(null)");
  EXPECT_EQ(Comment(With(kUndefined, "ASCII   text")), "(null)");
  EXPECT_EQ(Comment(With(kAscii, code_ + "text")), "(null)");
}

TEST_P(UserComment, IsNotTakenWithoutACharacter) {
  EXPECT_EQ(Comment(With(kUndefined, code_)), "(null)");
  EXPECT_EQ(Comment(With(kUndefined, "ASC")), "(null)");
}

TEST_P(UserComment, IsTheFirstOne) {
  TiffBuilder tiff = With(kUndefined, code_ + "first");
  tiff.Data(37510, kUndefined, 14, code_ + "second");
  EXPECT_EQ(Comment(tiff), "first");
}

TEST_P(UserComment, MustEndBeforeTheEndOfTheBlock) {
  const std::string tiff = With(kUndefined, code_ + "a comment").Build();
  for (size_t size = tiff.size() - 20; size <= tiff.size(); ++size) {
    const std::vector<unsigned char> block(tiff.begin(), tiff.begin() + static_cast<long>(size));
    Record record;
    exif_ifd_pointers_t pointers = {};
    do_exif_section(block.data(), static_cast<unsigned>(size), 8,
                    GetParam() == TiffOrder::kBig ? 1 : 0, &record.data, &pointers);
    EXPECT_EQ(record.data.UserComment, nullptr) << size;  // the whole block ends with it
  }
  EXPECT_EQ(Comment(With(kUndefined, code_ + "a comment")), "a comment");
}

TEST_P(UserComment, IsNotLeftBehindWhenOnlyTheOtherResultsAreWanted) {
  const Metadata m = Read(Picture(With(kUndefined, code_ + "a comment").Build()));
  EXPECT_EQ(m.ok, 1);  // the leak checker sees the rest
}

// ---- Thumbnail ----

TEST_P(ExifReader, FailsForAThumbnailOfOneByte) {
  TiffBuilder tiff = Tiff();
  ExpectNothing(Read(Picture(tiff.Text(270, "text").Long(513, 100).Long(514, 1).Build())));
  for (const uint32_t length : {0u, 2u})
    EXPECT_EQ(Read(Picture(Tiff().Long(513, 100).Long(514, length).Build())).ok, 1);
}

TEST_P(ExifReader, FindsNoThumbnailWithoutAnOffset) {
  const Metadata m = Read(Picture(Tiff().Long(514, 500).Build()));
  EXPECT_EQ(m.ok, 1);
  EXPECT_EQ(m.thumbOffset, 0);
  EXPECT_EQ(m.thumbLength, 500);
  EXPECT_EQ(m.thumbWidth, 0);
}

TEST_P(ExifReader, TakesTheFirstPictureBehindTheThumbnailOffset) {
  // Nothing but the main picture's own start: the thumbnail follows the end of it.
  const std::string main = Picture(Tiff().Long(513, 3).Long(514, 200).Build());
  const std::string inner = StartOfImage() + FrameHeader(160, 120) + EndOfImage();
  const Metadata m = Read(main + "\xFF" + inner);
  EXPECT_EQ(m.thumbOffset, static_cast<int>(main.size() + 1));
  EXPECT_EQ(m.thumbLength, 200);
  EXPECT_EQ(m.thumbWidth, 160);
  EXPECT_EQ(m.thumbHeight, 120);
}

TEST_P(ExifReader, KeepsTheTagsWhenNoPictureFollowsTheThumbnailOffset) {
  for (const uint32_t offset : {3u, 100000u, 0x7FFFFFFFu, 0xFFFFFFF0u}) {
    const Metadata m = Read(Picture(Tiff().Long(513, offset).Long(514, 200).Build()));
    EXPECT_EQ(m.ok, 1);
    EXPECT_EQ(m.thumbOffset, static_cast<int>(offset));
    EXPECT_EQ(m.thumbLength, 200);
    EXPECT_EQ(m.thumbWidth, 0);
    EXPECT_EQ(m.thumbHeight, 0);
  }
}

TEST_P(ExifReader, FindsNoThumbnailSizePastTheThumbnailLength) {
  const std::string main = Picture(Tiff().Long(513, 3).Long(514, 20).Build());
  const std::string inner = StartOfImage() + JfifSegment() + FrameHeader(160, 120) + EndOfImage();
  EXPECT_EQ(Read(main + inner).thumbWidth, 0);  // the JFIF segment ends at 22
  const std::string nearly = Picture(Tiff().Long(513, 3).Long(514, 21).Build());
  EXPECT_EQ(Read(nearly + inner).thumbWidth, 0);
  const std::string longer = Picture(Tiff().Long(513, 3).Long(514, 22).Build());
  EXPECT_EQ(Read(longer + inner).thumbWidth, 160);
}

TEST_P(ExifReader, CountsWithANegativeThumbnailLength) {
  const std::string main = Picture(Tiff().Long(513, 3).Long(514, 0xFFFFFF00).Build());
  const std::string inner = StartOfImage() + JfifSegment() + FrameHeader(160, 120);
  const Metadata m = Read(main + inner);
  EXPECT_EQ(m.thumbOffset, static_cast<int>(main.size()));
  EXPECT_EQ(m.thumbLength, -256);
  EXPECT_EQ(m.thumbWidth, 0);
}

// The thumbnail's place from the Exif tags of a block that is `length` bytes long.
class ThumbnailTags : public ExifReader {
 protected:
  ExifData Walk(const TiffBuilder& builder, size_t length, int offset = 0) const {
    const std::string tiff = builder.Build();
    std::vector<unsigned char> block(length);
    std::copy(tiff.begin(), tiff.end(), block.begin());
    ExifData data = {};
    data.ThumbnailOffset = offset;
    exif_ifd_pointers_t pointers = {};
    do_exif_section(block.data(), static_cast<unsigned>(length), 8,
                    GetParam() == TiffOrder::kBig ? 1 : 0, &data, &pointers);
    return data;
  }
};

INSTANTIATE_TEST_SUITE_P(BothOrders, ThumbnailTags,
                         testing::Values(TiffOrder::kLittle, TiffOrder::kBig));

TEST_P(ThumbnailTags, GiveAnOffsetBelowTheLengthOfTheBlock) {
  EXPECT_EQ(Walk(Tiff().Long(513, 199), 200).ThumbnailOffset, 199);
  EXPECT_EQ(Walk(Tiff().Long(513, 200), 200, 7).ThumbnailOffset, 7);
  EXPECT_EQ(Walk(Tiff().Long(513, 0xFFFFFFFF), 200, 7).ThumbnailOffset, 7);
  EXPECT_EQ(Walk(Tiff().Long(513, 0), 200, 7).ThumbnailOffset, 0);
}

TEST_P(ThumbnailTags, CutTheLengthAtTheEndOfTheBlock) {
  EXPECT_EQ(Walk(Tiff().Long(513, 150).Long(514, 49), 200).ThumbnailLength, 49);
  EXPECT_EQ(Walk(Tiff().Long(513, 150).Long(514, 51), 200).ThumbnailLength, 50);
  EXPECT_EQ(Walk(Tiff().Long(514, 5000), 200).ThumbnailLength, 200);
}

TEST_P(ThumbnailTags, GiveNoLengthThatIsNotPositive) {
  EXPECT_EQ(Walk(Tiff().Long(514, 0), 200).ThumbnailLength, 0);
  EXPECT_EQ(Walk(Tiff().Long(514, 0xFFFFFFFF), 200).ThumbnailLength, 0);
  EXPECT_EQ(Walk(Tiff().Long(514, 10), 200, 200).ThumbnailLength, 0);
  EXPECT_EQ(Walk(Tiff().Long(514, 10), 200, 5000).ThumbnailLength, 0);
}

TEST_P(ThumbnailTags, DoNotWrapBehindANegativeOffset) {
  EXPECT_EQ(Walk(Tiff().Long(514, 10), 200, INT_MIN).ThumbnailLength, 10);
}

TEST_P(ExifReader, CutsTheThumbnailOfTheMainDirectoryAtTheEndOfTheBlock) {
  // The main directory is walked a second time for the Exif tags.
  const std::string tiff = Tiff().Long(513, 20).Long(514, 5000).Long(kExifPointer, 8).Build();
  Record record;
  ASSERT_EQ(ReadRecord(Picture(tiff), &record), 1);
  EXPECT_EQ(record.data.ThumbnailOffset, 20);
  EXPECT_EQ(record.data.ThumbnailLength, static_cast<int>(tiff.size()) + 8 - 20);
}

// ---- Date ----

class PictureDate : public ExifReader {
 protected:
  std::string Date(const std::string& original, const std::string& modified) const {
    TiffBuilder tiff = Tiff();
    tiff.Long(kExifPointer, 8);
    if (!original.empty()) tiff.Text(36867, original);
    if (!modified.empty()) tiff.Text(306, modified);
    return Read(Picture(tiff.Build())).date;
  }
};

INSTANTIATE_TEST_SUITE_P(BothOrders, PictureDate,
                         testing::Values(TiffOrder::kLittle, TiffOrder::kBig));

TEST_P(PictureDate, IsTheOriginalDateFirst) {
  EXPECT_EQ(Date("2001:02:03 04:05:06", "2026:11:21 09:34:26"), "2001-02-03");
}

TEST_P(PictureDate, IsTheModificationDateWhenTheClockWasNeverSet) {
  EXPECT_EQ(Date("0000:00:00 00:00:00", "2026:11:21 09:34:26"), "2026-11-21");
  EXPECT_EQ(Date("1930:12:31 00:00:00", "2026:11:21 09:34:26"), "2026-11-21");
  EXPECT_EQ(Date("1931:01:01 00:00:00", "2026:11:21 09:34:26"), "1931-01-01");
  EXPECT_EQ(Date("    :  :  ", "2026:11:21 09:34:26"), "2026-11-21");
}

TEST_P(PictureDate, IsTheDayOfTheFileWithoutAUsableDate) {
  EXPECT_EQ(Date("", ""), "2023-11-14");
  EXPECT_EQ(Date("0000:00:00 00:00:00", "0000:00:00 00:00:00"), "2023-11-14");
  EXPECT_EQ(Date("unknown", "unknown"), "2023-11-14");
}

TEST_P(PictureDate, HasDashesInTheFifthAndEighthPlaceWhateverStoodThere) {
  EXPECT_EQ(Date("20010203040506", ""), "2001-20-04");
  EXPECT_EQ(Date("2001/02/03", ""), "2001-02-03");
}

TEST_P(PictureDate, IsKeptWhenItIsShort) {
  EXPECT_EQ(Date("2001:02:0", ""), "2001-02-0");
  EXPECT_EQ(Date("2001:02", ""), "2001-02");
  EXPECT_EQ(Date("2001:", ""), "2001-");
  EXPECT_EQ(Date("2001", ""), "2001");
}

TEST_P(PictureDate, DoesNotWrapInALongNumber) {
  EXPECT_EQ(Date("99999999999999999999999999", ""), "9999-99-99");
}

TEST_P(PictureDate, LeavesTheModificationDateOfTheRecordAsItStands) {
  Record record;
  ASSERT_EQ(ReadRecord(Picture(Tiff().Text(306, "2026:11:21 09:34:26").Build()), &record), 1);
  EXPECT_EQ(TextOf(record.data.Date), "2026-11-21");
  EXPECT_EQ(TextOf(record.data.DateTime), "2026:11:21 09:34:26");
}

// ---- Single operations ----

TEST_P(ExifReader, ReleasesAllTextsButTheUserComment) {
  ExifData data = {};
  for (char** text :
       {&data.Description, &data.ReservedText1, &data.ReservedText2, &data.Date, &data.DateTime,
        &data.Software, &data.ReservedText3, &data.ReservedText4, &data.UserComment})
    *text = strdup("text");
  exif_free_metadata(&data);
  EXPECT_EQ(data.Description, nullptr);
  EXPECT_EQ(data.ReservedText4, nullptr);
  EXPECT_STREQ(data.UserComment, "text");
  free(data.UserComment);
  exif_free_metadata(nullptr);
}

TEST_P(ExifReader, HandlesOneEntryByItself) {
  const int order = GetParam() == TiffOrder::kBig ? 1 : 0;
  const std::string tiff = Tiff().Long(274, 6).Long(40962, 1920).Build();
  const std::vector<unsigned char> block(tiff.begin(), tiff.end());
  const auto length = static_cast<unsigned>(block.size());
  ExifData data = {};
  exif_ifd_pointers_t pointers = {};
  do_tiff_IFD(block.data(), length, 10, order, &data, &pointers);
  do_exif_IFD(block.data(), length, 22, order, &data, &pointers);
  EXPECT_EQ(data.Orientation, 6);
  EXPECT_EQ(data.Width, 1920);
}

TEST_P(ExifReader, NotesThePointersOfTheDirectories) {
  const int order = GetParam() == TiffOrder::kBig ? 1 : 0;
  const std::string tiff = Tiff().Long(34665, 100).Long(34853, 200).Long(40965, 300).Build();
  const std::vector<unsigned char> block(tiff.begin(), tiff.end());
  const auto length = static_cast<unsigned>(block.size());
  ExifData data = {};
  exif_ifd_pointers_t pointers = {};
  do_tiff_section(block.data(), length, 8, order, &data, &pointers);
  EXPECT_EQ(pointers.Exif, 100u);
  EXPECT_EQ(pointers.Gps, 200u);
  EXPECT_EQ(pointers.Interop, 0u);
  do_exif_section(block.data(), length, 8, order, &data, &pointers);
  EXPECT_EQ(pointers.Interop, 300u);
}

TEST_P(ExifReader, TakesNothingFromGpsAndInteroperabilityEntries) {
  const int order = GetParam() == TiffOrder::kBig ? 1 : 0;
  const std::string tiff = Tiff().Long(274, 6).Long(40962, 1920).Build();
  const std::vector<unsigned char> block(tiff.begin(), tiff.end());
  const auto length = static_cast<unsigned>(block.size());
  ExifData data = {};
  exif_ifd_pointers_t pointers = {};
  for (const auto walk : {do_gps_section, do_interop_section})
    walk(block.data(), length, 8, order, &data, &pointers);
  for (const auto handle : {do_gps_IFD, do_interop_IFD})
    handle(block.data(), length, 10, order, &data, &pointers);
  EXPECT_EQ(data.Orientation, 0);
  EXPECT_EQ(data.Width, 0);
}

TEST_P(ExifReader, WalksNothingWithoutABlockOrARecord) {
  const unsigned char block[64] = {};
  ExifData data = {};
  exif_ifd_pointers_t pointers = {};
  for (const auto walk : {do_tiff_section, do_exif_section, do_tiff_IFD, do_exif_IFD}) {
    walk(nullptr, 64, 8, 1, &data, &pointers);
    walk(block, 64, 8, 1, nullptr, &pointers);
    walk(block, 64, 8, 1, &data, nullptr);
  }
  EXPECT_EQ(data.Orientation, 0);
}

// ---- Damage ----

TEST_P(ExifReader, KeepsItsResultsInBoundsWhateverByteIsChanged) {
  const std::string whole = JpegBuilder()
                                .Order(GetParam())
                                .Description("A red bridge")
                                .Thumbnail(160, 120)
                                .Padding(4)
                                .Build();
  for (size_t i = 0; i < whole.size(); ++i)
    for (const char value : {'\x00', '\x01', '\x7F', '\x80', '\xFF'}) {
      std::string changed = whole;
      changed[i] = value;
      const Metadata m = Read(changed);
      if (m.ok == 0) {
        ExpectNothing(m);
        continue;
      }
      EXPECT_LE(m.date.size(), 10u);
      if (m.description != "(null)") {
        EXPECT_LT(m.description.size(), whole.size());
      }
    }
}

}  // namespace

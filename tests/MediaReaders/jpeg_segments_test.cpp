#include "MediaReaders/jpeg_segments.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "MediaReaders/exif_reader.h"
#include "support/JpegBuilder.h"
#include "support/TempDir.h"

namespace {

using namespace orx_test;

struct CloseFile {
  void operator()(st_UPNP_FILE* file) const { upnp_file_close(file); }
};
using FilePtr = std::unique_ptr<st_UPNP_FILE, CloseFile>;

class JpegSegments : public testing::Test {
 protected:
  FilePtr Open(const std::string& content) const {
    return FilePtr(upnp_file_open_read(directory_.Write("a.jpg", content).c_str()));
  }

  // The size that is found, as text; "none" when -1 is returned.
  std::string Size(const std::string& content, long long limit, long start = 0) const {
    const FilePtr file = Open(content);
    int width = -5, height = -7;
    const int result = exif_get_jpeg_size(file.get(), limit, &width, &height, start);
    if (result != 0) {
      EXPECT_EQ(result, -1);
      EXPECT_EQ(width, -5);
      EXPECT_EQ(height, -7);
      return "none";
    }
    return std::to_string(width) + "x" + std::to_string(height);
  }
  std::string Size(const std::string& content) const {
    return Size(content, static_cast<long long>(content.size()));
  }

  // The block that is found; "none" when there is none.
  std::string Exif(const std::string& content) const {
    const FilePtr file = Open(content);
    orx::ExifBlock block;
    if (!orx::ReadExifBlock(file.get(), &block)) return "none";
    return {block.bytes.get(), block.bytes.get() + block.length};
  }

  TempDir directory_;
};

std::string WithFrame(const std::string& segments) {
  return StartOfImage() + segments + FrameHeader(640, 480) + EndOfImage();
}

TEST_F(JpegSegments, FindTheSizeInTheFrameHeader) {
  EXPECT_EQ(Size(WithFrame("")), "640x480");
  EXPECT_EQ(Size(WithFrame(JfifSegment() + Segment(0xDB, std::string(65, '\1')))), "640x480");
}

TEST_F(JpegSegments, TakeEveryStartOfFrameMarker) {
  for (const int marker :
       {0xC0, 0xC1, 0xC2, 0xC3, 0xC5, 0xC6, 0xC7, 0xC9, 0xCA, 0xCB, 0xCD, 0xCE, 0xCF}) {
    const std::string file =
        StartOfImage() + FrameHeader(12, 34, static_cast<uint8_t>(marker)) + EndOfImage();
    EXPECT_EQ(Size(file), "12x34") << marker;
  }
}

TEST_F(JpegSegments, PassOverTheTablesBetweenTheFrameMarkers) {
  for (const int marker : {0xC4, 0xC8, 0xCC, 0xBF, 0xD0})
    EXPECT_EQ(Size(WithFrame(FrameHeader(12, 34, static_cast<uint8_t>(marker)))), "640x480")
        << marker;
}

TEST_F(JpegSegments, HaveNoSizeWithoutAStartOfImage) {
  EXPECT_EQ(Size(""), "none");
  EXPECT_EQ(Size("\xFF"), "none");
  EXPECT_EQ(Size("\xFF\xD8"), "none");
  EXPECT_EQ(Size("\xFF\xD9" + FrameHeader(640, 480)), "none");
  EXPECT_EQ(Size("\xFE\xD8" + FrameHeader(640, 480)), "none");
}

TEST_F(JpegSegments, SkipGarbageBeforeAMarker) {
  EXPECT_EQ(Size(WithFrame(std::string(300, 'x'))), "640x480");
}

TEST_F(JpegSegments, HaveNoSizeAfterAMarkerOfZero) {
  EXPECT_EQ(Size(WithFrame(std::string("\xFF\0\0\2", 4))), "none");
}

TEST_F(JpegSegments, TakeAFillByteForAMarker) {
  // FF FF C0 00 ...: the marker FF with the length C000.
  EXPECT_EQ(Size(WithFrame("\xFF")), "none");
}

TEST_F(JpegSegments, HaveNoSizeWhenASegmentEndsPastTheLimit) {
  const std::string segment = Segment(0xDB, std::string(8, '\1'));
  const std::string file = WithFrame(segment);
  // Behind the length field at 6, the length of 10 is added.
  EXPECT_EQ(Size(file, 16), "640x480");
  EXPECT_EQ(Size(file, 15), "none");
  EXPECT_EQ(Size(file, -1), "none");
}

TEST_F(JpegSegments, DoNotHoldTheFrameHeaderItselfAgainstTheLimit) {
  EXPECT_EQ(Size(WithFrame(""), 0), "640x480");
}

TEST_F(JpegSegments, HaveNoSizeWhenTheFileEndsWithASegment) {
  EXPECT_EQ(Size(StartOfImage() + JfifSegment(), 1000), "none");
  EXPECT_EQ(Size(StartOfImage() + JfifSegment() + "\xFF", 1000), "none");
}

TEST_F(JpegSegments, GetAheadOnLengthsBelowTwo) {
  for (const int length : {0, 1}) {
    const std::string segment = SegmentOfLength(0xDB, static_cast<uint16_t>(length), "");
    std::string many;
    for (int i = 0; i < 1000; ++i) many += segment;
    EXPECT_EQ(Size(WithFrame(many)), "640x480") << length;
  }
}

TEST_F(JpegSegments, FindTheSizeOfAPictureInsideTheFile) {
  const std::string inner = StartOfImage() + FrameHeader(160, 120) + EndOfImage();
  EXPECT_EQ(Size("0123456789" + inner, 1000, 10), "160x120");
  EXPECT_EQ(Size("0123456789" + inner, 1000, 9), "none");
  EXPECT_EQ(Size("0123456789" + inner, 1000, 1000), "none");
  EXPECT_EQ(Size("0123456789" + inner, 1000, -1), "none");
}

TEST_F(JpegSegments, HaveNoSizeInAnyFileCutBeforeTheEndOfItsFrameHeader) {
  const std::string file = WithFrame(JfifSegment());
  const size_t needed = file.size() - 2 - 4;  // up to the width
  for (size_t size = 0; size <= file.size(); ++size)
    EXPECT_EQ(Size(file.substr(0, size), static_cast<long long>(file.size())),
              size < needed ? "none" : "640x480")
        << size;
}

TEST_F(JpegSegments, AskForAFileAndForResults) {
  int width = 0, height = 0;
  EXPECT_EQ(exif_get_jpeg_size(nullptr, 100, &width, &height, 0), -1);
  const FilePtr file = Open(WithFrame(""));
  EXPECT_EQ(exif_get_jpeg_size(file.get(), 100, nullptr, &height, 0), -1);
  EXPECT_EQ(exif_get_jpeg_size(file.get(), 100, &width, nullptr, 0), -1);
}

const std::string kTiff = "MM*and so on";
const std::string kExif = ExifSegment(kTiff);

TEST_F(JpegSegments, LeadToTheExifBlockBehindTheStartOfImage) {
  const std::string block = Exif(StartOfImage() + kExif + "01234567890");
  // As long as the segment says, which counts the eight bytes before the block too.
  EXPECT_EQ(block, kTiff + "01234567");
}

TEST_F(JpegSegments, FillTheBlockWithZerosWhereTheFileEnds) {
  EXPECT_EQ(Exif(StartOfImage() + kExif), kTiff + std::string(8, '\0'));
  const std::string cut = StartOfImage() + kExif.substr(0, 10);
  EXPECT_EQ(Exif(cut), std::string(kTiff.size() + 8, '\0'));
}

TEST_F(JpegSegments, LeadToTheExifBlockBehindOneApp0OrCommentSegment) {
  EXPECT_EQ(Exif(StartOfImage() + JfifSegment() + kExif).substr(0, kTiff.size()), kTiff);
  EXPECT_EQ(Exif(StartOfImage() + Segment(0xFE, "hello") + kExif).substr(0, kTiff.size()), kTiff);
}

TEST_F(JpegSegments, LeadBackwardsOutOfAShortSegment) {
  for (const char* text : {"", "1", "12345"})
    EXPECT_EQ(Exif(StartOfImage() + Segment(0xFE, text) + kExif).substr(0, kTiff.size()), kTiff);
}

TEST_F(JpegSegments, DoNotLeadPastASecondApp0Segment) {
  EXPECT_EQ(Exif(StartOfImage() + JfifSegment() + JfifSegment() + kExif), "none");
  EXPECT_EQ(Exif(StartOfImage() + JfifSegment() + Segment(0xFE, "a") + kExif), "none");
}

TEST_F(JpegSegments, LeadToTheExifBlockBehindOneApp13Segment) {
  const std::string app13 = Segment(0xED, "Photoshop 3.0");
  EXPECT_EQ(Exif(StartOfImage() + app13 + kExif).substr(0, kTiff.size()), kTiff);
  EXPECT_EQ(Exif(StartOfImage() + JfifSegment() + app13 + kExif).substr(0, kTiff.size()), kTiff);
  EXPECT_EQ(Exif(StartOfImage() + app13 + app13 + kExif), "none");
  EXPECT_EQ(Exif(StartOfImage() + app13 + JfifSegment() + kExif), "none");
}

TEST_F(JpegSegments, DoNotLeadPastAnyOtherSegment) {
  EXPECT_EQ(Exif(StartOfImage() + Segment(0xDB, std::string(65, '\1')) + kExif), "none");
  EXPECT_EQ(Exif(StartOfImage() + Segment(0xE1, "http://ns.adobe.com/xap/1.0/") + kExif), "none");
  EXPECT_EQ(Exif(StartOfImage() + Segment(0xE2, kExif) + kExif), "none");
}

TEST_F(JpegSegments, AskForTheIdentifierOfTheExifBlock) {
  const auto with = [](const std::string& identifier) {
    return StartOfImage() + Segment(0xE1, identifier + kTiff);
  };
  EXPECT_NE(Exif(with(std::string("Exif\0\0", 6))), "none");
  EXPECT_EQ(Exif(with(std::string("Exif\0\1", 6))), "none");
  EXPECT_EQ(Exif(with(std::string("Exif\xFF\0", 6))), "none");
  EXPECT_EQ(Exif(with(std::string("exif\0\0", 6))), "none");
}

TEST_F(JpegSegments, AskForAMarkerBehindASkippedSegment) {
  const std::string longer = SegmentOfLength(0xE0, 17, std::string(14, 'j'));  // one byte too long
  EXPECT_EQ(Exif(StartOfImage() + longer + kExif), "none");
  EXPECT_EQ(Exif(StartOfImage() + JfifSegment()), "none");
  EXPECT_EQ(Exif(StartOfImage() + JfifSegment() + kExif.substr(0, 9)), "none");
}

TEST_F(JpegSegments, RefuseAnExifSegmentShorterThanTwelve) {
  const std::string identifier("Exif\0\0", 6);
  const auto with = [&](uint16_t length) {
    return Exif(StartOfImage() + SegmentOfLength(0xE1, length, identifier + kTiff));
  };
  EXPECT_EQ(with(0), "none");
  EXPECT_EQ(with(11), "none");
  EXPECT_EQ(with(12), kTiff.substr(0, 12));
}

TEST_F(JpegSegments, TakeTheLongestExifSegment) {
  const std::string identifier("Exif\0\0", 6);
  const std::string file =
      StartOfImage() + SegmentOfLength(0xE1, 65535, identifier + std::string(65527, 't'));
  EXPECT_EQ(Exif(file), std::string(65527, 't') + std::string(8, '\0'));
}

TEST_F(JpegSegments, HaveNoExifBlockWithoutAStartOfImage) {
  EXPECT_EQ(Exif(""), "none");
  EXPECT_EQ(Exif("\xFF\xD8"), "none");
  EXPECT_EQ(Exif("\xFF\xD9" + kExif), "none");
  EXPECT_EQ(Exif("\xFF\xD8\xFE" + kExif.substr(1)), "none");
}

TEST_F(JpegSegments, FindTheNextStartOfImage) {
  const auto find = [this](const std::string& content, long long from) {
    const FilePtr file = Open(content);
    return orx::FindStartOfImage(file.get(), from);
  };
  EXPECT_EQ(find("\xFF\xD8", 0), 0);
  EXPECT_EQ(find("ab\xFF\xFF\xD8", 0), 3);
  EXPECT_EQ(find("\xFF\xD8--\xFF\xD8", 1), 4);
  EXPECT_EQ(find("\xFF\xD8--\xFF", 1), -1);
  EXPECT_EQ(find("\xFF\xD8", 2), -1);
  EXPECT_EQ(find("\xFF\xD8", 100), -1);
  EXPECT_EQ(find("\xFF\xD8", -1), -1);
  for (const size_t at : {4094u, 4095u, 4096u, 4097u, 40000u})
    EXPECT_EQ(find(std::string(at, 'x') + "\xFF\xD8", 0), static_cast<long long>(at));
}

}  // namespace

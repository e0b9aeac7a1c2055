// Pictures of the tests: TIFF blocks entry by entry, JPEG segments, and whole camera-like files.
//
//   directory.Write("100PHOTO/IMGA0001.JPG", JpegBuilder().Size(640, 480).Build());
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orx_test {

// ---- TIFF ----

enum class TiffOrder { kLittle, kBig };

enum TiffType : uint16_t {
  kByte = 1,
  kAscii = 2,
  kShort = 3,
  kLong = 4,
  kRational = 5,
  kSByte = 6,
  kUndefined = 7,
  kSShort = 8,
  kSLong = 9,
  kSRational = 10
};

std::string Bytes16(uint32_t value, TiffOrder order);
std::string Bytes32(uint32_t value, TiffOrder order);

// A TIFF block.  The directories stand one behind the other from offset 8 on, each linked to the
// next; values that do not fit into their entry follow behind them all.
class TiffBuilder {
 public:
  explicit TiffBuilder(TiffOrder order = TiffOrder::kBig);

  TiffBuilder& Header(const std::string& four);  // in place of "II*\0" or "MM\0*"
  TiffBuilder& FirstIfd(uint32_t offset);        // written into the header in place of 8

  // Entries belong to the directory begun last; the first one is there from the start.
  TiffBuilder& NextIfd();
  TiffBuilder& IfdAt(uint32_t offset);  // moves the current directory there; only forwards
  TiffBuilder& Link(uint32_t link);     // in place of the offset of the next directory
  TiffBuilder& Count(uint16_t count);   // in place of the number of entries

  // `value` is the value field as a number; `field` its four bytes.
  TiffBuilder& Entry(uint16_t tag, uint16_t type, uint32_t count, uint32_t value);
  TiffBuilder& RawEntry(uint16_t tag, uint16_t type, uint32_t count, const std::string& field);
  TiffBuilder& Short(uint16_t tag, uint16_t value);  // left-aligned in the field, as TIFF has it
  TiffBuilder& Long(uint16_t tag, uint32_t value);
  TiffBuilder& Text(uint16_t tag, const std::string& text);  // its terminator is added and counted
  TiffBuilder& Data(uint16_t tag, uint16_t type, uint32_t count, const std::string& bytes);
  // Two entries, 513 and 514, for a picture that is appended to the block.
  TiffBuilder& Thumbnail(const std::string& jpeg);

  std::string Build() const;

 private:
  struct EntryRecord {
    uint16_t tag, type;
    uint32_t count;
    std::string field;    // four bytes, unless `outside`
    std::string outside;  // bytes kept behind the directories
    bool isOutside;
  };
  struct Directory {
    std::vector<EntryRecord> entries;
    long long offset = -1, link = -1, count = -1;  // -1: as it comes
  };

  TiffOrder order_;
  std::string header_;
  uint32_t firstIfd_ = 8;
  std::vector<Directory> directories_;
};

// ---- JPEG ----

std::string StartOfImage();
std::string EndOfImage();
std::string Segment(uint8_t marker, const std::string& payload);  // with its length
// A segment whose length field says something else.
std::string SegmentOfLength(uint8_t marker, uint16_t length, const std::string& payload);
std::string JfifSegment();
std::string FrameHeader(int width, int height, uint8_t marker = 0xC0);
std::string ExifSegment(const std::string& tiff);

// A picture as a camera writes it.
class JpegBuilder {
 public:
  JpegBuilder& Size(int width, int height);
  JpegBuilder& Order(TiffOrder order);
  JpegBuilder& Date(const std::string& date);      // "2026:11:21 09:34:26"; empty: no date tag
  JpegBuilder& Description(const std::string& s);  // none by default
  JpegBuilder& Orientation(int orientation);
  JpegBuilder& Thumbnail(int width, int height);  // none by default
  JpegBuilder& Jfif();                            // an APP0 segment before the EXIF segment
  JpegBuilder& NoExif();                          // a plain JFIF file, which is no medium
  JpegBuilder& Padding(size_t bytes);             // of image data

  std::string Build() const;

 private:
  std::string Tiff() const;

  int width_ = 640, height_ = 480;
  TiffOrder order_ = TiffOrder::kLittle;
  std::string date_ = "2026:11:21 09:34:26", description_;
  int orientation_ = 1;
  int thumbnailWidth_ = 0, thumbnailHeight_ = 0;
  bool jfif_ = false, exif_ = true;
  size_t padding_ = 64;
};

// A picture that a scan takes, in one call.
std::string MakeJpeg(int width = 640, int height = 480,
                     const std::string& date = "2026:11:21 09:34:26");

}  // namespace orx_test

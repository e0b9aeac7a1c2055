#include "support/JpegBuilder.h"

namespace orx_test {
namespace {

char Byte(uint32_t value) { return static_cast<char>(static_cast<uint8_t>(value)); }

void PadTo(size_t size, std::string* text) {
  if (text->size() < size) text->resize(size, '\0');
}

// The smallest thing with a frame header.
std::string TinyJpeg(int width, int height) {
  return StartOfImage() + Segment(0xDB, std::string(65, '\1')) + FrameHeader(width, height) +
         Segment(0xDA, std::string("\1\1\0\0\x3F\0", 6)) + std::string(8, '\x55') + EndOfImage();
}

}  // namespace

std::string Bytes16(uint32_t value, TiffOrder order) {
  const char high = Byte(value >> 8), low = Byte(value);
  return order == TiffOrder::kBig ? std::string{high, low} : std::string{low, high};
}

std::string Bytes32(uint32_t value, TiffOrder order) {
  const std::string high = Bytes16(value >> 16, order), low = Bytes16(value, order);
  return order == TiffOrder::kBig ? high + low : low + high;
}

TiffBuilder::TiffBuilder(TiffOrder order)
    : order_(order),
      header_(order == TiffOrder::kBig ? std::string("MM\0*", 4) : std::string("II*\0", 4)),
      directories_(1) {}

TiffBuilder& TiffBuilder::Header(const std::string& four) {
  header_ = four;
  return *this;
}

TiffBuilder& TiffBuilder::FirstIfd(uint32_t offset) {
  firstIfd_ = offset;
  return *this;
}

TiffBuilder& TiffBuilder::NextIfd() {
  directories_.emplace_back();
  return *this;
}

TiffBuilder& TiffBuilder::IfdAt(uint32_t offset) {
  directories_.back().offset = offset;
  return *this;
}

TiffBuilder& TiffBuilder::Link(uint32_t link) {
  directories_.back().link = link;
  return *this;
}

TiffBuilder& TiffBuilder::Count(uint16_t count) {
  directories_.back().count = count;
  return *this;
}

TiffBuilder& TiffBuilder::Entry(uint16_t tag, uint16_t type, uint32_t count, uint32_t value) {
  return RawEntry(tag, type, count, Bytes32(value, order_));
}

TiffBuilder& TiffBuilder::RawEntry(uint16_t tag, uint16_t type, uint32_t count,
                                   const std::string& field) {
  std::string four = field;
  four.resize(4, '\0');
  directories_.back().entries.push_back({tag, type, count, four, "", false});
  return *this;
}

TiffBuilder& TiffBuilder::Short(uint16_t tag, uint16_t value) {
  return RawEntry(tag, kShort, 1, Bytes16(value, order_));
}

TiffBuilder& TiffBuilder::Long(uint16_t tag, uint32_t value) { return Entry(tag, kLong, 1, value); }

TiffBuilder& TiffBuilder::Text(uint16_t tag, const std::string& text) {
  const std::string whole = text + '\0';
  return Data(tag, kAscii, static_cast<uint32_t>(whole.size()), whole);
}

TiffBuilder& TiffBuilder::Data(uint16_t tag, uint16_t type, uint32_t count,
                               const std::string& bytes) {
  if (bytes.size() <= 4) return RawEntry(tag, type, count, bytes);
  directories_.back().entries.push_back({tag, type, count, "", bytes, true});
  return *this;
}

TiffBuilder& TiffBuilder::Thumbnail(const std::string& jpeg) {
  directories_.back().entries.push_back({513, kLong, 1, "", jpeg, true});
  return Long(514, static_cast<uint32_t>(jpeg.size()));
}

std::string TiffBuilder::Build() const {
  std::vector<size_t> starts;
  size_t end = 8;
  for (const Directory& directory : directories_) {
    if (directory.offset >= 0) end = static_cast<size_t>(directory.offset);
    starts.push_back(end);
    end += 2 + 12 * directory.entries.size() + 4;
  }

  std::string block = header_ + Bytes32(firstIfd_, order_), outside;
  for (size_t i = 0; i < directories_.size(); ++i) {
    const Directory& directory = directories_[i];
    PadTo(starts[i], &block);
    const size_t count = directory.entries.size();
    block += Bytes16(static_cast<uint32_t>(directory.count < 0 ? static_cast<long long>(count)
                                                               : directory.count),
                     order_);
    for (const EntryRecord& entry : directory.entries) {
      block +=
          Bytes16(entry.tag, order_) + Bytes16(entry.type, order_) + Bytes32(entry.count, order_);
      block += entry.isOutside ? Bytes32(static_cast<uint32_t>(end + outside.size()), order_)
                               : entry.field;
      outside += entry.outside;
    }
    const size_t next = i + 1 < directories_.size() ? starts[i + 1] : 0;
    block += Bytes32(
        directory.link < 0 ? static_cast<uint32_t>(next) : static_cast<uint32_t>(directory.link),
        order_);
  }
  return block + outside;
}

std::string StartOfImage() { return "\xFF\xD8"; }

std::string EndOfImage() { return "\xFF\xD9"; }

std::string SegmentOfLength(uint8_t marker, uint16_t length, const std::string& payload) {
  return std::string{'\xFF', Byte(marker)} + Bytes16(length, TiffOrder::kBig) + payload;
}

std::string Segment(uint8_t marker, const std::string& payload) {
  return SegmentOfLength(marker, static_cast<uint16_t>(payload.size() + 2), payload);
}

std::string JfifSegment() { return Segment(0xE0, std::string("JFIF\0\1\1\0\0\1\0\1\0\0", 14)); }

std::string FrameHeader(int width, int height, uint8_t marker) {
  return Segment(marker, "\x08" + Bytes16(static_cast<uint32_t>(height), TiffOrder::kBig) +
                             Bytes16(static_cast<uint32_t>(width), TiffOrder::kBig) +
                             std::string("\1\1\x11\0", 4));
}

std::string ExifSegment(const std::string& tiff) {
  return Segment(0xE1, std::string("Exif\0\0", 6) + tiff);
}

JpegBuilder& JpegBuilder::Size(int width, int height) {
  width_ = width;
  height_ = height;
  return *this;
}

JpegBuilder& JpegBuilder::Order(TiffOrder order) {
  order_ = order;
  return *this;
}

JpegBuilder& JpegBuilder::Date(const std::string& date) {
  date_ = date;
  return *this;
}

JpegBuilder& JpegBuilder::Description(const std::string& s) {
  description_ = s;
  return *this;
}

JpegBuilder& JpegBuilder::Orientation(int orientation) {
  orientation_ = orientation;
  return *this;
}

JpegBuilder& JpegBuilder::Thumbnail(int width, int height) {
  thumbnailWidth_ = width;
  thumbnailHeight_ = height;
  return *this;
}

JpegBuilder& JpegBuilder::Jfif() {
  jfif_ = true;
  return *this;
}

JpegBuilder& JpegBuilder::NoExif() {
  exif_ = false;
  return *this;
}

JpegBuilder& JpegBuilder::Padding(size_t bytes) {
  padding_ = bytes;
  return *this;
}

std::string JpegBuilder::Tiff() const {
  TiffBuilder tiff(order_);
  if (!description_.empty()) tiff.Text(270, description_);
  tiff.Short(274, static_cast<uint16_t>(orientation_));
  if (!date_.empty()) tiff.Text(306, date_);
  tiff.Long(34665, 8);  // says that there is more to read than the first directory
  if (thumbnailWidth_ > 0)
    tiff.NextIfd().Short(259, 6).Thumbnail(TinyJpeg(thumbnailWidth_, thumbnailHeight_));
  return tiff.Build();
}

std::string JpegBuilder::Build() const {
  std::string file = StartOfImage();
  if (jfif_ || !exif_) file += JfifSegment();
  if (exif_) file += ExifSegment(Tiff());
  file += TinyJpeg(width_, height_).substr(2);  // without its start of image
  file.insert(file.size() - 2, padding_, '\x2A');
  return file;
}

std::string MakeJpeg(int width, int height, const std::string& date) {
  return JpegBuilder().Size(width, height).Date(date).Build();
}

}  // namespace orx_test

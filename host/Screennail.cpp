// The screen-size preview of a picture: the large thumbnail that its multi-picture index names
// (CIPA DC-007, in an APP2 segment that begins with "MPF").  Nothing that the file says is trusted.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <string_view>
#include <vector>

#include "MediaReaders/byte_cursor.h"
#include "MediaReaders/exif_reader.h"
#include "Platform/CameraPlatform.h"
#include "UpnpUtil/upnp_file.h"

namespace {

using orx::ByteCursor;

constexpr uint8_t kStartOfImage = 0xD8;
constexpr uint8_t kEndOfImage = 0xD9;
constexpr uint8_t kStartOfScan = 0xDA;
constexpr uint8_t kApp2 = 0xE2;
constexpr int kMaxSegments = 1024;   // before the image data; no camera writes a hundred
constexpr int kMaxFillBytes = 4096;  // in front of one marker; usually there are none
constexpr size_t kMaxPreviews = 4;   // that are looked at; a picture has one or two

constexpr char kMpfIdentifier[] = "MPF";  // with its terminator, four bytes
constexpr uint16_t kMpEntryTag = 0xB002;  // the table of images
constexpr uint16_t kUndefinedType = 7;    // its TIFF type
constexpr size_t kMpEntrySize = 16;
constexpr uint32_t kTypeCodeMask = 0x00FFFFFF;
constexpr uint32_t kFormatMask = 0x07000000;  // zero: JPEG
constexpr uint32_t kLargeThumbnailVga = 0x010001;
constexpr uint32_t kLargeThumbnailFullHd = 0x010002;

struct CloseFile {
  void operator()(st_UPNP_FILE* file) const { upnp_file_close(file); }
};
using File = std::unique_ptr<st_UPNP_FILE, CloseFile>;

struct Segment {
  uint8_t marker = 0;
  long long payload = 0;  // position in the file
  int length = 0;         // of the payload, in bytes
};

// The multi-picture index and where its offsets count from.
struct MpIndex {
  std::vector<char> bytes;
  long long position = 0;
};

struct Image {
  long long offset = 0;  // in the file
  uint32_t length = 0;   // bytes
};

bool ReadExactly(st_UPNP_FILE* file, void* buffer, int length) {
  return upnp_file_read(file, buffer, length) == length;
}

bool StandsAlone(uint8_t marker) { return marker == 0x01 || (marker >= 0xD0 && marker <= 0xD7); }

// Reads the header of the segment at the file's position; false at the image data and where there
// is no segment.
bool NextSegment(st_UPNP_FILE* file, Segment* segment) {
  uint8_t byte = 0;
  if (!ReadExactly(file, &byte, 1) || byte != 0xFF) return false;
  for (int n = 0; byte == 0xFF; ++n)
    if (n > kMaxFillBytes || !ReadExactly(file, &byte, 1)) return false;
  if (byte == 0 || byte == kStartOfImage || byte == kEndOfImage || byte == kStartOfScan)
    return false;
  *segment = {byte, file->position, 0};
  if (StandsAlone(byte)) return true;
  uint8_t length[2];
  if (!ReadExactly(file, length, sizeof length)) return false;
  const int total = length[0] << 8 | length[1];
  if (total < 2) return false;
  segment->payload = file->position;
  segment->length = total - 2;
  return true;
}

// Reads the index out of an APP2 segment; false when it holds something else.
bool ReadMpIndex(st_UPNP_FILE* file, const Segment& segment, MpIndex* index) {
  constexpr int kIdentifier = sizeof kMpfIdentifier;
  char identifier[kIdentifier];
  if (segment.marker != kApp2 || segment.length <= kIdentifier ||
      !ReadExactly(file, identifier, kIdentifier) ||
      memcmp(identifier, kMpfIdentifier, kIdentifier) != 0)
    return false;
  index->bytes.resize(static_cast<size_t>(segment.length - kIdentifier));
  index->position = segment.payload + kIdentifier;
  return ReadExactly(file, index->bytes.data(), segment.length - kIdentifier);
}

// The index of the first "MPF" segment before the image data.
bool FindMpIndex(st_UPNP_FILE* file, MpIndex* index) {
  uint8_t start[2];
  if (!ReadExactly(file, start, sizeof start) || start[0] != 0xFF || start[1] != kStartOfImage)
    return false;
  Segment segment;
  for (int n = 0; n < kMaxSegments && NextSegment(file, &segment); ++n) {
    if (ReadMpIndex(file, segment, index)) return true;
    if (upnp_file_seek(file, segment.payload + segment.length, SEEK_SET) < 0) return false;
  }
  return false;
}

// The table of images, an empty block when the index has none.
ByteCursor MpEntries(const MpIndex& index) {
  const std::string_view start(index.bytes.data(), index.bytes.size() < 4 ? 0 : 4);
  const bool little = start == std::string_view("II*\0", 4);
  if (!little && start != std::string_view("MM\0*", 4)) return {};
  const ByteCursor block(index.bytes.data(), index.bytes.size(),
                         little ? ByteCursor::Order::kLittle : ByteCursor::Order::kBig);
  ByteCursor directory = block.At(block.At(4).U32());
  const unsigned count = directory.U16();
  for (unsigned i = 0; i < count && directory.ok(); ++i) {
    const uint16_t tag = directory.U16();
    const uint16_t type = directory.U16();
    const uint32_t length = directory.U32();
    const uint32_t offset = directory.U32();
    if (directory.ok() && tag == kMpEntryTag && type == kUndefinedType && length >= kMpEntrySize)
      return block.At(offset).Take(length);
  }
  return {};
}

bool IsLargeThumbnail(uint32_t attribute) {
  const uint32_t code = attribute & kTypeCodeMask;
  return (attribute & kFormatMask) == 0 &&
         (code == kLargeThumbnailVga || code == kLargeThumbnailFullHd);
}

// Lies within the file, behind the index, and at a place that an int can tell.
bool IsPlaceable(const Image& image, long long fileSize) {
  return image.length > 0 && image.offset <= std::numeric_limits<int>::max() &&
         image.offset + image.length <= fileSize &&
         image.length <= static_cast<uint32_t>(std::numeric_limits<int>::max());
}

std::vector<Image> LargeThumbnails(const MpIndex& index, long long fileSize) {
  std::vector<Image> images;
  ByteCursor entries = MpEntries(index);
  while (entries.remaining() >= kMpEntrySize && images.size() < kMaxPreviews) {
    const uint32_t attribute = entries.U32();
    const uint32_t length = entries.U32();
    const uint32_t offset = entries.U32();
    entries.Skip(4);  // numbers of dependent images
    const Image image{index.position + offset, length};
    // Offset 0 is the first image, the picture itself.
    if (offset != 0 && IsLargeThumbnail(attribute) && IsPlaceable(image, fileSize))
      images.push_back(image);
  }
  return images;
}

}  // namespace

int QUILWifi_getJpegScreennailInfo(char* path, int* width, int* height, int* offset, int* length) {
  if (width == nullptr || height == nullptr || offset == nullptr || length == nullptr) return 0;
  *width = *height = *offset = *length = 0;
  const File file(upnp_file_open_read(path));
  MpIndex index;
  if (file == nullptr || !FindMpIndex(file.get(), &index)) return 0;
  for (const Image& image : LargeThumbnails(index, file->size)) {
    int w = 0, h = 0;
    if (exif_get_jpeg_size(file.get(), image.offset + image.length, &w, &h,
                           static_cast<long>(image.offset)) != 0 ||
        w <= 0 || h <= 0)
      continue;
    *width = w;
    *height = h;
    *offset = static_cast<int>(image.offset);
    *length = static_cast<int>(image.length);
    return 1;
  }
  return 0;
}

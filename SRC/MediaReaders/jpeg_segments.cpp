#include "MediaReaders/jpeg_segments.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "MediaReaders/byte_cursor.h"
#include "MediaReaders/exif_reader.h"
#include "MediaReaders/parse_limits.h"

namespace orx {
namespace {

enum Marker : uint8_t {
  kStartOfFrame0 = 0xC0,
  kHuffmanTables = 0xC4,
  kJpegExtension = 0xC8,
  kArithmeticTables = 0xCC,
  kStartOfFrame15 = 0xCF,
  kStartOfImage = 0xD8,
  kApp0 = 0xE0,
  kApp1 = 0xE1,
  kApp13 = 0xED,
  kComment = 0xFE,
  kMarkerPrefix = 0xFF
};

constexpr int kStartOfImageSize = 2;
constexpr std::string_view kExifIdentifier("Exif\0\0", 6);
constexpr unsigned kShortestExifSegment = 12;

// The first ten bytes of a segment.
struct SegmentHead {
  static constexpr int kSize = 10;

  unsigned prefix, marker, length;
  uint8_t identifier[6];
};

bool ReadExactly(st_UPNP_FILE* file, void* bytes, int count) {
  return upnp_file_read(file, bytes, count) == count;
}

bool ReadStartOfImage(st_UPNP_FILE* file) {
  uint8_t bytes[kStartOfImageSize];
  return ReadExactly(file, bytes, kStartOfImageSize) && bytes[0] == kMarkerPrefix &&
         bytes[1] == kStartOfImage;
}

bool ReadSegmentHead(st_UPNP_FILE* file, SegmentHead* head) {
  uint8_t bytes[SegmentHead::kSize];
  if (!ReadExactly(file, bytes, SegmentHead::kSize)) return false;
  ByteCursor cursor(bytes, sizeof bytes);
  head->prefix = cursor.U8();
  head->marker = cursor.U8();
  head->length = cursor.U16();
  memcpy(head->identifier, cursor.Text(sizeof head->identifier).data(), sizeof head->identifier);
  return head->prefix == kMarkerPrefix;
}

// From behind the head of one segment to behind the head of the next.
bool PassSegment(st_UPNP_FILE* file, SegmentHead* head) {
  const int behindLength = SegmentHead::kSize - 2;
  return upnp_file_seek(file, static_cast<long long>(head->length) - behindLength, SEEK_CUR) >= 0 &&
         ReadSegmentHead(file, head);
}

bool IsExifSegment(const SegmentHead& head) {
  return head.marker == kApp1 &&
         memcmp(head.identifier, kExifIdentifier.data(), sizeof head.identifier) == 0;
}

bool IsFrameHeader(uint8_t marker) {
  return marker >= kStartOfFrame0 && marker <= kStartOfFrame15 && marker != kHuffmanTables &&
         marker != kJpegExtension && marker != kArithmeticTables;
}

// Moves the handle behind the next marker prefix; false at the end of the file and where `gaps`,
// the bytes that may be passed on the way, are used up.
bool PassMarkerPrefix(st_UPNP_FILE* file, long long* gaps) {
  uint8_t bytes[64];
  while (*gaps >= 0) {
    const int count = upnp_file_read(file, bytes, sizeof bytes);
    if (count <= 0) return false;
    const void* found = memchr(bytes, kMarkerPrefix, static_cast<size_t>(count));
    if (found == nullptr) {
      *gaps -= count;
      continue;
    }
    const auto passed = static_cast<const uint8_t*>(found) - bytes;
    *gaps -= passed;
    return *gaps >= 0 && upnp_file_seek(file, passed + 1 - count, SEEK_CUR) >= 0;
  }
  return false;
}

bool IsStartOfImage(const uint8_t* bytes) {
  return (bytes[0] == kMarkerPrefix) & (bytes[1] == kStartOfImage);
}

// The index of the first start-of-image marker in `size` bytes, -1 when there is none.  A stretch
// is asked as a whole first, which compilers turn into a few instructions.
int IndexOfStartOfImage(const uint8_t* bytes, int size) {
  constexpr int kStretch = 256;
  int start = 0;
  for (; start + kStretch < size; start += kStretch) {
    unsigned found = 0;
    for (int i = start; i < start + kStretch; ++i) found |= IsStartOfImage(bytes + i) ? 1u : 0u;
    if (found != 0) break;
  }
  for (int i = start; i + 1 < size; ++i)
    if (IsStartOfImage(bytes + i)) return i;
  return -1;
}

// Reads a frame header from its precision byte on.
bool ReadFrameHeader(st_UPNP_FILE* file, int* width, int* height) {
  uint8_t bytes[5];
  if (!ReadExactly(file, bytes, sizeof bytes)) return false;
  ByteCursor cursor(bytes, sizeof bytes);
  cursor.Skip(1);  // sample precision
  *height = cursor.U16();
  *width = cursor.U16();
  return true;
}

}  // namespace

bool ReadExifBlock(st_UPNP_FILE* file, ExifBlock* block) {
  SegmentHead head = {};
  if (upnp_file_seek(file, 0, SEEK_SET) != 0 || !ReadStartOfImage(file) ||
      !ReadSegmentHead(file, &head))
    return false;
  if ((head.marker == kApp0 || head.marker == kComment) && !PassSegment(file, &head)) return false;
  if (head.marker == kApp13 && !PassSegment(file, &head)) return false;
  if (!IsExifSegment(head) || head.length < kShortestExifSegment) return false;
  block->bytes.reset(new uint8_t[head.length]);  // not zeroed: nearly always all of it is read
  block->length = head.length;
  const int count =
      std::max(0, upnp_file_read(file, block->bytes.get(), static_cast<int>(head.length)));
  memset(block->bytes.get() + count, 0, head.length - static_cast<unsigned>(count));
  return true;
}

bool ReadFrameSize(st_UPNP_FILE* file, long long start, long long limit, int* width, int* height) {
  if (upnp_file_seek(file, start, SEEK_SET) != start || !ReadStartOfImage(file)) return false;
  // A length below 2 moves back by less than was read of the segment, so every round gets ahead.
  long long gaps = kMaxJpegGaps;
  for (int segments = 0; segments <= kMaxJpegSegments && !upnp_file_eof(file); ++segments) {
    uint8_t bytes[3];
    if (!PassMarkerPrefix(file, &gaps) || !ReadExactly(file, bytes, sizeof bytes)) return false;
    ByteCursor cursor(bytes, sizeof bytes);
    const uint8_t marker = cursor.U8();
    const unsigned length = cursor.U16();
    if (marker == 0) return false;
    if (IsFrameHeader(marker)) return ReadFrameHeader(file, width, height);
    if (file->position + length > limit) return false;
    if (upnp_file_seek(file, static_cast<long long>(length) - 2, SEEK_CUR) < 0) return false;
  }
  return false;
}

long long FindStartOfImage(st_UPNP_FILE* file, long long position) {
  if (upnp_file_seek(file, position, SEEK_SET) != position) return -1;
  constexpr int kOverlap = 1;  // a marker may lie across two blocks
  uint8_t bytes[kOverlap + 4 * 1024];
  bytes[0] = 0;
  long long size = 256;  // most begin within the first few bytes
  for (long long passed = 0; passed < kMaxThumbnailSearch;) {
    const int count = upnp_file_read(file, bytes + kOverlap, static_cast<int>(size));
    if (count <= 0) return -1;
    const int found = IndexOfStartOfImage(bytes, kOverlap + count);
    if (found >= 0) return position + passed + found - kOverlap;
    passed += count;
    bytes[0] = bytes[count];
    size = std::min<long long>(sizeof bytes - kOverlap, kMaxThumbnailSearch - passed);
  }
  return -1;
}

}  // namespace orx

int exif_get_jpeg_size(st_UPNP_FILE* file, long long limit, int* width, int* height, long start) {
  if (file == nullptr || width == nullptr || height == nullptr) return -1;
  return orx::ReadFrameSize(file, start, limit, width, height) ? 0 : -1;
}

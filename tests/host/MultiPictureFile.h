// Builds JPEG files with a multi-picture index (CIPA DC-007), sound or not.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orx_test {

// Numbers in either byte order.
struct Bytes {
  bool big = false;
  std::string text;

  Bytes& Number(uint64_t value, int size) {
    for (int i = 0; i < size; ++i) {
      const int shift = 8 * (big ? size - 1 - i : i);
      text += static_cast<char>(value >> shift & 0xFF);
    }
    return *this;
  }
  Bytes& U16(uint64_t value) { return Number(value, 2); }
  Bytes& U32(uint64_t value) { return Number(value, 4); }
};

inline std::string JpegSegment(uint8_t marker, const std::string& payload) {
  Bytes out{true, {}};
  out.U16(0xFF00u | marker).U16(payload.size() + 2);
  return out.text + payload;
}

// A JPEG of the given size in pixels that ends after its frame header and a little scan data.
inline std::string PlainJpeg(unsigned width, unsigned height) {
  Bytes frame{true, {}};
  frame.Number(8, 1).U16(height).U16(width).Number(1, 1).Number(1, 1).Number(0x11, 1).Number(0, 1);
  return "\xFF\xD8" + JpegSegment(0xC0, frame.text) +
         JpegSegment(0xDA, std::string("\1\1\0\0\x3F\0", 6)) + "scan\xFF\xD9";
}

// The picture comes first and holds the index; the further images follow it.
struct MultiPictureFile {
  struct Entry {
    uint32_t attribute;
    std::string image;
    int64_t lengthChange = 0;  // lies about the image's length and place
    int64_t offsetChange = 0;
  };

  bool big = false;
  std::string before;  // segments between the start of the picture and its index
  std::vector<Entry> entries;
  uint32_t tableLengthChange = 0;

  std::string Build() const {
    const std::string start = "\xFF\xD8" + before;
    const std::string rest = PlainJpeg(1600, 1200).substr(2);
    const size_t count = entries.size() + 1;
    const size_t table = 8 + 2 + 2 * 12 + 4;
    const size_t header = start.size() + 4 + 4;  // where the offsets count from
    const size_t first = header + table + 16 * count + rest.size();

    Bytes index{big, big ? std::string("MM\0*", 4) : std::string("II*\0", 4)};
    index.U32(8).U16(2);
    index.U16(0xB001).U16(4).U32(1).U32(count);
    index.U16(0xB002).U16(7).U32(16 * count + tableLengthChange).U32(table);
    index.U32(0);
    index.U32(0x030000).U32(first).U32(0).U32(0);
    size_t position = first;
    std::string images;
    for (const Entry& entry : entries) {
      index.U32(entry.attribute);
      index.U32(
          static_cast<uint64_t>(static_cast<int64_t>(entry.image.size()) + entry.lengthChange));
      index.U32(
          static_cast<uint64_t>(static_cast<int64_t>(position - header) + entry.offsetChange));
      index.U32(0);
      images += entry.image;
      position += entry.image.size();
    }
    return start + JpegSegment(0xE2, std::string("MPF\0", 4) + index.text) + rest + images;
  }
};

}  // namespace orx_test

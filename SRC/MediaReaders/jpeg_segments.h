// The outer structure of a JPEG file: markers, the frame header, the way to the EXIF block.
#pragma once

#include <cstdint>
#include <memory>

#include "UpnpUtil/upnp_file.h"

namespace orx {

struct ExifBlock {
  std::unique_ptr<uint8_t[]> bytes;
  unsigned length = 0;
};

// Reads the TIFF block of the file's EXIF segment, which may stand behind one APP0 or COM segment
// and one APP13 segment.  The block is as long as the segment says, its last bytes belong to what
// follows the segment, and it is zero where the file ends earlier.  False when there is none.
bool ReadExifBlock(st_UPNP_FILE* file, ExifBlock* block);

// Finds the size in pixels of the JPEG at position `start`.  False, and nothing is stored, when
// no frame header is found before position `limit` or within the limits of parse_limits.h.
bool ReadFrameSize(st_UPNP_FILE* file, long long start, long long limit, int* width, int* height);

// The position of the first start-of-image marker from `position` on, -1 when there is none
// within the limit of parse_limits.h.
long long FindStartOfImage(st_UPNP_FILE* file, long long position);

}  // namespace orx

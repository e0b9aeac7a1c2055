// How much work one file may make.  A file is read from a stranger's card, so each loop over what
// it says has an end that does not depend on the file.
//
// No camera, phone or editor comes near these numbers; below them nothing is left out.  Behind them
// a reader goes on as if the file ended there: what was found before stays.  Together they keep the
// worst file below 50 ms and 4 MB on a PC, which bench/worst_bench.cpp measures.
#pragma once

#include <cstddef>

namespace orx {

// ---- JPEG ----

// Segments in front of one frame header.  A picture of 60 MB that is nothing but metadata has less
// than a thousand.
constexpr int kMaxJpegSegments = 1024;
// Bytes in front of one frame header that belong to no segment.  There should be none.
constexpr long long kMaxJpegGaps = 1024 * 1024;
// Bytes behind the place that the directory names in which the thumbnail is looked for.  It is
// off by the length of what stands in front of the TIFF block, at most 128 KB.
constexpr long long kMaxThumbnailSearch = 32 * 1024 * 1024;

// ---- MP4 ----

// Boxes inside one another.  Ten are usual.
constexpr int kMaxBoxDepth = 64;
// Boxes of a file whose headers are read.  A film has some thirty and thirty more a track.  Only a
// film in fragments has as many; its tracks and titles stand in front of the fragments.
constexpr int kMaxBoxes = 16 * 1024;
// Those of them that cost a read of their own, being far behind the box before them.
constexpr int kMaxDistantBoxes = 2 * 1024;
constexpr long long kDistantBox = 1024;  // bytes between their headers, at least
// Bytes that are read or searched inside boxes.  The table of sizes of a film of ten hours with 60
// pictures a second has less than 9 MB.
constexpr long long kMaxBoxBytes = 10 * 1024 * 1024;
// Bytes of one text, such as a title.  A longer one is left out.
constexpr long long kMaxTextSize = 64 * 1024;

}  // namespace orx

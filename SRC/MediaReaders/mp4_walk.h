// The walk over the boxes of an ISO base media file (ISO/IEC 14496-12): sizes, limits, the counter
// of bytes.  What a box holds is the business of its reader (mp4_boxes).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "MediaReaders/byte_cursor.h"
#include "MediaReaders/mp4_reader.h"
#include "MediaReaders/parse_limits.h"

namespace orx {

// A type code as the big-endian number that it is in the file.
constexpr uint32_t FourCc(const char (&code)[5]) {
  uint32_t type = 0;
  for (int i = 0; i < 4; ++i) type = type << 8 | static_cast<uint8_t>(code[i]);
  return type;
}

// One box whose header has been read.  It lies whole in the file, and begins in the box around it.
struct Mp4Box {
  uint32_t type;
  long long payload;  // file position of the first byte behind the header
  long long end;      // file position of the first byte behind the box
  long long payloadSize() const { return end - payload; }
};

class Mp4Walk;
using Mp4BoxReader = void (*)(Mp4Walk& walk, const Mp4Box& box);
// The reader of boxes of `type` inside a box of type `parent` (0 for the file); null: pass it over.
using Mp4ReaderLookup = Mp4BoxReader (*)(uint32_t type, uint32_t parent);

// Walks the boxes of one file, front to back, and calls their readers.
//
// A box that does not fit into the file ends the one around it: what was read stays, and the walk
// goes on behind that.  One that only reaches behind the box around it is read whole, and the walk
// goes on behind it.  Each byte is passed once, nothing is read that a reader does not ask for, and
// no more is kept in memory than one text.  A walk that reaches one of the limits in parse_limits.h
// ends.  Neither `file` nor `meta` is owned.
class Mp4Walk {
 public:
  Mp4Walk(st_UPNP_FILE* file, mp4_metadata_t* meta, Mp4ReaderLookup lookup);

  // Reads the boxes that begin before the file position `limit`, or the end of the file.
  void Run(long long limit);

  // For the readers.  A reader may leave the position anywhere inside its box.
  mp4_metadata_t& meta() const { return *meta_; }
  // Walks the boxes inside `box`, behind the first `skip` bytes of its payload.
  void Enter(const Mp4Box& box, long long skip = 0);
  // The header of the next box before `end`.  False: there is none, or none that fits.
  bool NextBox(long long end, Mp4Box* box);
  void SkipTo(long long position);  // a file position; the counter moves with it, either way
  // The walk goes on behind `box`, also where it reaches behind those around it.
  void Claim(const Mp4Box& box);
  // Up to 128 bytes from the position on, as far as `box` and the file reach; good until the next
  // call.
  ByteCursor Head(const Mp4Box& box);
  // Up to `size` bytes from the position on, as far as `box` and the file reach; the count is
  // returned.
  size_t Read(const Mp4Box& box, void* to, size_t size);
  // The rest of the box.  Empty when it is larger than a text may be, or the file ends in it.
  std::string ReadRest(const Mp4Box& box);

  // For a reader that searches `bytes` more of what it has: how many it may; the walk ends when
  // that is less.
  long long Spend(long long bytes);

  // Whether the current "stbl" describes pictures.
  bool SampleTableIsVideo() const { return sampleTableIsVideo_; }
  void MarkSampleTable(bool isVideo) { sampleTableIsVideo_ = isVideo; }

 private:
  void WalkLevel(long long end, uint32_t parent);
  bool MayVisitBox(long long header);  // at that file position
  bool PassOverLargeBox();             // its size of 64 bits stands at the position

  st_UPNP_FILE* file_;
  mp4_metadata_t* meta_;
  Mp4ReaderLookup lookup_;
  long long fileEnd_ = 0;
  long long behind_ = 0;  // file position behind all boxes that were left, and those claimed
  bool sampleTableIsVideo_ = false;
  int depth_ = 0;       // boxes around the current one
  bool ended_ = false;  // a box that runs to the end of the file was met
  int boxesLeft_ = kMaxBoxes;
  int distantBoxesLeft_ = kMaxDistantBoxes;
  long long bytesLeft_ = kMaxBoxBytes;
  long long lastHeader_ = 0;  // file position of the box before
  std::array<uint8_t, 128> head_;
};

}  // namespace orx

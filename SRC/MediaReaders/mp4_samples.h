// Sample entries of a track (ISO/IEC 14496-12 "stsd"): AVC pictures and MPEG-4 sound.
#pragma once

#include <string_view>

#include "MediaReaders/mp4_reader.h"

namespace orx {

// The checks for a sample entry of any length.  One too short for a field that is read is not
// accepted: nothing is taken from it, but for the bit rate, sampling rate and channel count of a
// sound entry, each of which is where it lies in the entry.  `entry` begins with the entry's own
// size field.
bool AcceptAvc1Entry(std::string_view entry, mp4_metadata_t* meta);
bool AcceptMp4aEntry(std::string_view entry, mp4_metadata_t* meta);

}  // namespace orx

// Sample entries of a track (ISO/IEC 14496-12 "stsd"): AVC pictures and MPEG-4 sound.
#pragma once

#include <string_view>

#include "MediaReaders/mp4_reader.h"

namespace orx {

// The checks for a sample entry of any length: an entry too short for a field that is read is not
// accepted and leaves the record as it is.  `entry` begins with the entry's own size field.
bool AcceptAvc1Entry(std::string_view entry, mp4_metadata_t* meta);
bool AcceptMp4aEntry(std::string_view entry, mp4_metadata_t* meta);

}  // namespace orx

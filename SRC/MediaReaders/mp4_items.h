// Metadata items of MP4 files: the children of "ilst".
#pragma once

#include "MediaReaders/mp4_walk.h"

namespace orx {

void ReadTextItem(Mp4Walk& walk, const Mp4Box& item);     // title, artist, album, genre, year
void ReadTrackNumber(Mp4Walk& walk, const Mp4Box& item);  // "trkn"
void ReadCoverArt(Mp4Walk& walk, const Mp4Box& item);     // "covr"

}  // namespace orx

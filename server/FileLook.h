// The looks into the file system that describing an item takes.
#pragma once

#include <array>
#include <string>

#include "Catalogue.h"
#include "StateStore.h"

namespace orxserve {

class FileLook {
 public:
  virtual ~FileLook() = default;
  // Which of the pieces begin as a JPEG does, and how large the cover is.
  virtual PieceFacts Pieces(const std::string& path,
                            const std::array<PiecePlace, kPieceCount>& places) const;
  // The file of subtitles beside a film, empty when there is none.
  virtual std::string Captions(const std::string& path) const;
};

// The dimensions in a JPEG's frame header, 0 when `head`, its first bytes, does not reach it.
ImageSize JpegSize(std::string_view head);

}  // namespace orxserve

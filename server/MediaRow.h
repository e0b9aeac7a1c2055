// A picture, sound or film as the media database describes it.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "Catalogue.h"

namespace orxserve {

struct MediaRow {
  std::string path;
  Kind kind = Kind::kPicture;
  uint64_t size = 0;      // bytes
  uint32_t date = 0;      // 20261121, 0 when not known
  std::string mimeType;   // corrected
  std::string profile;    // empty when none is certain
  uint32_t duration = 0;  // milliseconds
  uint32_t width = 0;     // pixels
  uint32_t height = 0;
  uint32_t bitRate = 0;    // bits a second
  uint32_t frequency = 0;  // samples a second
  uint32_t channels = 0;
  std::string description;
  std::string artist;
  std::string album;
  int64_t sortNumber = -1;  // of the camera's order; -1: none
  std::array<PiecePlace, kPieceCount> pieces;
};

// Texts of the database turned into values; what is empty or makes no sense becomes 0 or "".
uint32_t ParseDate(std::string_view text);      // "2026-11-21"
uint32_t ParseDuration(std::string_view text);  // "1:02:03", or milliseconds
std::string KnownText(std::string_view text);   // the database's blank means: not known

// What a file of this name really is.  The database calls raw pictures JPEG, for one.
std::string CorrectedMimeType(Kind kind, std::string_view path, std::string_view recorded);
// The profile as the server may claim it.
std::string CertainProfile(std::string_view mimeType, std::string_view recorded);

// Where the cover art lies that the database records by the end of its box.
PiecePlace CoverPlace(uint64_t recordedOffset, uint64_t recordedLength);

}  // namespace orxserve

#include "FileLook.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "MediaFile.h"

namespace orxserve {
namespace {

constexpr size_t kHead = 65536;  // bytes of a cover that are looked through for its dimensions

unsigned At(std::string_view bytes, size_t place) {
  return static_cast<unsigned char>(bytes[place]);
}
unsigned Pair(std::string_view bytes, size_t place) {
  return At(bytes, place) << 8 | At(bytes, place + 1);
}

// Frame headers are the markers C0 to CF without those of tables and extensions.
bool IsFrame(unsigned marker) {
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

bool IsRegular(const std::string& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

ImageSize JpegSize(std::string_view head) {
  size_t at = 2;
  while (at + 9 <= head.size() && At(head, at) == 0xFF) {
    const unsigned marker = At(head, at + 1);
    if (marker == 0xFF) {  // filling
      ++at;
      continue;
    }
    if (IsFrame(marker))
      return {static_cast<uint16_t>(Pair(head, at + 7)), static_cast<uint16_t>(Pair(head, at + 5))};
    at += 2 + std::max(Pair(head, at + 2), 2U);
  }
  return {};
}

PieceFacts FileLook::Pieces(const std::string& path,
                            const std::array<PiecePlace, kPieceCount>& places) const {
  PieceFacts facts;
  const auto isThere = [](const PiecePlace& place) { return place.length != 0; };
  if (std::none_of(places.begin(), places.end(), isThere)) return facts;
  const MediaFile file = MediaFile::Open(path);
  if (!file.isOpen()) return facts;
  for (size_t i = 0; i < places.size(); ++i)
    if (isThere(places[i]) && file.HasJpegAt(places[i]))
      facts.sound = static_cast<uint8_t>(facts.sound | 1U << i);
  constexpr auto kCover = static_cast<size_t>(Piece::kCover);
  if ((facts.sound & 1U << kCover) != 0) {
    const size_t length = std::min<size_t>(places[kCover].length, kHead);
    facts.cover = JpegSize(file.Read(places[kCover].offset, length));
  }
  return facts;
}

std::string FileLook::Captions(const std::string& path) const {
  const size_t dot = path.rfind('.');
  if (dot == std::string::npos || path.find('/', dot) != std::string::npos) return "";
  for (const char* extension : {".srt", ".SRT"}) {
    std::string beside = path.substr(0, dot) + extension;
    if (IsRegular(beside)) return beside;
  }
  return "";
}

}  // namespace orxserve

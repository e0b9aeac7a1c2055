#include "Corpus.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <vector>

#include "support/JpegBuilder.h"
#include "support/Mp4Builder.h"

namespace orx_bench {
namespace {

using orx_test::TiffBuilder;
using orx_test::TiffOrder;

enum class Kind { kPicture, kFilmIndexInFront, kFilmIndexAtEnd, kMobileFilm, kSound, kOther };

constexpr uint32_t kScatter = 37;        // prime to 100: mixes the kinds
constexpr uint32_t kLargePeriod = 1000;  // of a thousand files, two films are long ones
constexpr uint32_t kLargeFilms[] = {5, 16};
constexpr uint64_t kLargeHole = 1 << 30;  // bytes
constexpr uint32_t kFirstDcfFolder = 100;
constexpr uint32_t kDcfFolders = 900;

// Numbers that look random and are the same everywhere.
class Random {
 public:
  explicit Random(uint32_t seed) : state_(seed * 2654435761u + 12345u) {}
  uint32_t Below(uint32_t limit) {
    state_ = state_ * 1664525u + 1013904223u;
    return static_cast<uint32_t>((uint64_t{state_} * limit) >> 32);
  }
  std::string Bytes(size_t count) {  // without 0xFF, which begins a marker
    std::string bytes(count, '\0');
    for (char& byte : bytes) byte = static_cast<char>(Below(255));
    return bytes;
  }

 private:
  uint32_t state_;
};

Kind KindOf(uint32_t index) {
  const uint32_t place = index % 100 * kScatter % 100;
  if (place < 85) return Kind::kPicture;
  if (place < 90) return Kind::kFilmIndexInFront;
  if (place < 95) return Kind::kFilmIndexAtEnd;
  if (place < 97) return Kind::kMobileFilm;
  return place < 99 ? Kind::kSound : Kind::kOther;
}

bool IsLargeFilm(uint32_t index) {
  return std::find(std::begin(kLargeFilms), std::end(kLargeFilms), index % kLargePeriod) !=
         std::end(kLargeFilms);
}

std::string PathOf(uint32_t index, uint32_t filesPerFolder, const char* extension) {
  const uint32_t folder = index / filesPerFolder;
  char path[64];
  snprintf(path, sizeof path, "DCIM/%03uP%04u/ORXA%04u.%s", kFirstDcfFolder + folder % kDcfFolders,
           folder / kDcfFolders, index % filesPerFolder + 1, extension);
  return path;
}

std::string Thumbnail(Random* random, bool tiny) {
  return orx_test::StartOfImage() +
         orx_test::Segment(0xDB, std::string(65, '\x10')) +  // quantization table
         orx_test::FrameHeader(160, 120) + random->Bytes(tiny ? 64 : 1500 + random->Below(3000)) +
         orx_test::EndOfImage();
}

// The movie box of ten seconds of AVC at 15 frames a second with AAC sound, every frame of its own
// size.
std::string MovieBox(Random* random) {
  constexpr uint32_t kTimescale = 1000000, kDuration = 10000000;
  std::vector<uint32_t> frames(150), packets(430);
  for (uint32_t& size : frames) size = 800 + random->Below(400);
  for (uint32_t& size : packets) size = 300 + random->Below(100);
  const std::string video =
      orx_test::Track("vide", orx_test::Tkhd(320, 240), orx_test::Mdhd(kTimescale, kDuration),
                      orx_test::Stsd(orx_test::Avc1(320, 240, 66, 10)), orx_test::Stsz(0, frames));
  const std::string sound =
      orx_test::Track("soun", orx_test::Tkhd(0, 0), orx_test::Mdhd(kTimescale, kDuration),
                      orx_test::Stsd(orx_test::Mp4a()), orx_test::Stsz(0, packets));
  return orx_test::Box("moov", orx_test::Mvhd(0, kTimescale, kDuration) + video + sound);
}

// A film with a hole in its media data.
CorpusFile FilmParts(uint32_t seed, bool indexInFront, const std::string& brand, uint64_t hole) {
  Random random(seed);
  const std::string type = orx_test::Ftyp(brand, brand + "isom");
  const std::string movie = MovieBox(&random);
  const std::string media = random.Bytes(1000 + random.Below(6000));
  const std::string header = orx_test::BoxOfSize(8 + media.size() + hole, "mdat", media);
  CorpusFile file;
  file.head = indexInFront ? type + movie + header : type + header;
  file.hole = hole;
  file.tail = indexInFront ? "" : movie;
  return file;
}

}  // namespace

std::string Picture(uint32_t seed, bool tiny) {
  static constexpr struct {
    int width, height;
  } kSizes[] = {{640, 480}, {1024, 768}, {1920, 1080}, {4000, 3000}, {5472, 3648}};
  Random random(seed);
  char date[32];
  snprintf(date, sizeof date, "2026:%02u:%02u %02u:%02u:%02u", 1 + random.Below(12),
           1 + random.Below(28), random.Below(24), random.Below(60), random.Below(60));
  const std::string makerNote = random.Bytes(tiny ? 32 : 200 + random.Below(4000));
  TiffBuilder tiff(random.Below(2) == 0 ? TiffOrder::kLittle : TiffOrder::kBig);
  tiff.Text(270, "a picture of the corpus")
      .Text(271, "ORX")
      .Text(272, "ORX-1")
      .Short(274, 1)
      .Long(282, 72)
      .Long(283, 72)
      .Text(305, "1.0")
      .Text(306, date)
      .Long(34665, 8)
      .Data(37500, orx_test::kUndefined, static_cast<uint32_t>(makerNote.size()), makerNote);
  tiff.NextIfd().Short(259, 6).Thumbnail(Thumbnail(&random, tiny));
  const auto& size = kSizes[random.Below(std::size(kSizes))];
  return orx_test::StartOfImage() + orx_test::ExifSegment(tiff.Build()) +
         orx_test::Segment(0xDB, std::string(130, '\x10')) +
         orx_test::FrameHeader(size.width, size.height) +
         random.Bytes(tiny ? 64 + random.Below(64) : 1000 + random.Below(9000)) +
         orx_test::EndOfImage();
}

std::string Film(uint32_t seed, bool indexInFront) {
  const CorpusFile parts = FilmParts(seed, indexInFront, "mp42", 0);
  return parts.head + parts.tail;
}

std::string Sound(uint32_t seed) {
  Random random(seed);
  return orx_test::Adts() + random.Bytes(1000 + random.Below(3000));
}

CorpusFile MakeCorpusFile(uint32_t index, uint32_t version, const CorpusShape& shape) {
  const uint64_t hole = !shape.tiny && IsLargeFilm(index) ? kLargeHole : 0;
  const char* extension = "JPG";
  CorpusFile file;
  switch (KindOf(index)) {
    case Kind::kPicture:
      file.head = Picture(index, shape.tiny);
      break;
    case Kind::kFilmIndexInFront:
    case Kind::kFilmIndexAtEnd:
      extension = "MP4";
      file = FilmParts(index, KindOf(index) == Kind::kFilmIndexInFront, "mp42", hole);
      break;
    case Kind::kMobileFilm:
      extension = "3GP";
      file = FilmParts(index, true, "3gp4", 0);
      break;
    case Kind::kSound:
      extension = "AAC";
      file.head = Sound(index);
      break;
    case Kind::kOther:
      extension = "TXT";
      file.head = "no medium\n";
      break;
  }
  if (version > 0) file.tail += orx_test::Box("free", std::string(version, '\0'));
  file.path = PathOf(index, shape.filesPerFolder, extension);
  return file;
}

}  // namespace orx_bench

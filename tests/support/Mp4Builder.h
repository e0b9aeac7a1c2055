// Makes MP4 and AAC files in memory: whole small films and sound files in one call, or box by box.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace orx_test {

// Big-endian numbers.
std::string U8(unsigned value);
std::string U16(unsigned value);
std::string U32(uint64_t value);
std::string U64(uint64_t value);
std::string Zeros(size_t count);

// A box around its payload (one or more boxes or numbers run together).  Type codes have four
// bytes: "\251nam".
std::string Box(const std::string& type, const std::string& payload);
// The same with version and flags in front of the payload.
std::string FullBox(const std::string& type, unsigned version, const std::string& payload);
// With the size as a 64-bit number behind the type.
std::string LargeBox(const std::string& type, const std::string& payload);
// With any size, right or wrong.
std::string BoxOfSize(uint64_t size, const std::string& type, const std::string& payload);

// The boxes that the reader takes something from.
std::string Ftyp(const std::string& brand, const std::string& compatible);
std::string Mvhd(unsigned version, uint32_t timescale, uint64_t duration);
std::string Mdhd(uint32_t timescale, uint32_t duration, const std::string& language = "und");
std::string Tkhd(uint32_t width, uint32_t height);  // whole pixels
std::string Hdlr(const std::string& handler);
std::string Stsz(uint32_t sampleSize, const std::vector<uint32_t>& sizes);
std::string Stsd(const std::string& sampleEntry);
std::string Avc1(unsigned width, unsigned height, unsigned profileIdc, unsigned levelIdc);

struct AacEntry {
  unsigned channels = 2;
  unsigned sampleRate = 44100;
  uint32_t averageBitrate = 128000;
  unsigned objectType = 64;     // object type indication; 64 MPEG-4 audio
  unsigned audioObject = 2;     // of the AudioSpecificConfig; 2 AAC-LC
  unsigned configLength = 2;    // of the AudioSpecificConfig
  bool longDescriptors = true;  // four-byte descriptor lengths, as files with brand "mp42" have
};
std::string Mp4a(const AacEntry& entry = {});

std::string DataBox(const std::string& value, unsigned kind = 1);
std::string TextItem(const std::string& type, const std::string& value);  // "\251nam", ...
std::string Ilst(const std::string& items);  // inside "udta" and "meta"
// A track with its media and sample table boxes.
std::string Track(const std::string& handler, const std::string& trackHeader,
                  const std::string& mediaHeader, const std::string& sampleDescription,
                  const std::string& sampleSizes);

// A whole small file.  The defaults give ten seconds of AVC Baseline level 1.0 at 320x240, 150
// frames, with AAC-LC stereo: profile "AVC_MP4_BL_CIF15_AAC_520".
struct Mp4File {
  std::string brand = "mp42";
  std::string compatible = "isommp42";
  bool video = true;
  bool audio = true;
  uint32_t timescale = 1000000;  // large, so that the rounding of the reader does not show
  uint32_t duration = 10000000;  // in timescale units
  unsigned width = 320, height = 240;
  unsigned profileIdc = 66, levelIdc = 10;
  uint32_t frames = 150, frameSize = 1000;  // every frame that many bytes
  AacEntry sound;
  std::string title, artist, album, genre, year;  // no item when empty
  int track = 0;                                  // likewise when 0
  std::string cover;                              // likewise
};
std::string MakeMp4(const Mp4File& file = {});

// The one-call forms: a film with sound, and a sound file ("M4A").
std::string SmallFilm();
std::string SmallSong();

// An ADTS header of AAC-LC (profile 1) with zeros behind it, 64 bytes in all.
std::string Adts(unsigned profile = 1, unsigned frequencyIndex = 4, unsigned channels = 2);

}  // namespace orx_test

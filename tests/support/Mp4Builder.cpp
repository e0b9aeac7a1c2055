#include "support/Mp4Builder.h"

#include <utility>

namespace orx_test {
namespace {

std::string BigEndian(uint64_t value, unsigned bytes) {
  std::string text;
  for (unsigned i = bytes; i-- > 0;) text += static_cast<char>(value >> (8 * i) & 0xFF);
  return text;
}

// A descriptor of the ES descriptor's kind (ISO/IEC 14496-1); long lengths are 0x80 0x80 0x80 n.
std::string Descriptor(unsigned tag, bool longLength, const std::string& content) {
  const std::string padding = longLength ? "\x80\x80\x80" : "";
  return U8(tag) + padding + U8(static_cast<unsigned>(content.size())) + content;
}

std::string Unity() {  // transformation matrix
  return U32(0x10000) + Zeros(12) + U32(0x10000) + Zeros(12) + U32(0x40000000);
}

std::string VideoTrack(const Mp4File& file) {
  return Track("vide", Tkhd(file.width, file.height), Mdhd(file.timescale, file.duration),
               Stsd(Avc1(file.width, file.height, file.profileIdc, file.levelIdc)),
               Stsz(0, std::vector<uint32_t>(file.frames, file.frameSize)));
}

std::string SoundTrack(const Mp4File& file) {
  return Track("soun", Tkhd(0, 0), Mdhd(file.timescale, file.duration), Stsd(Mp4a(file.sound)),
               Stsz(0, {100, 100, 100}));
}

std::string Items(const Mp4File& file) {
  std::string items;
  const std::pair<const char*, const std::string*> texts[] = {// \251 is the copyright sign
                                                              {"\251nam", &file.title},
                                                              {"\251ART", &file.artist},
                                                              {"\251alb", &file.album},
                                                              {"\251gen", &file.genre},
                                                              {"\251day", &file.year}};
  for (const auto& [type, value] : texts)
    if (!value->empty()) items += TextItem(type, *value);
  if (file.track != 0)
    items += Box("trkn", DataBox(U32(static_cast<unsigned>(file.track)) + Zeros(4), 0));
  if (!file.cover.empty()) items += Box("covr", DataBox(file.cover, 13));
  return items;
}

}  // namespace

std::string U8(unsigned value) { return BigEndian(value, 1); }
std::string U16(unsigned value) { return BigEndian(value, 2); }
std::string U32(uint64_t value) { return BigEndian(value, 4); }
std::string U64(uint64_t value) { return BigEndian(value, 8); }
std::string Zeros(size_t count) { return std::string(count, '\0'); }

std::string BoxOfSize(uint64_t size, const std::string& type, const std::string& payload) {
  return U32(size) + type + payload;
}

std::string Box(const std::string& type, const std::string& payload) {
  return BoxOfSize(8 + payload.size(), type, payload);
}

std::string FullBox(const std::string& type, unsigned version, const std::string& payload) {
  return Box(type, U8(version) + Zeros(3) + payload);
}

std::string LargeBox(const std::string& type, const std::string& payload) {
  return BoxOfSize(1, type, U64(16 + payload.size()) + payload);
}

std::string Ftyp(const std::string& brand, const std::string& compatible) {
  return Box("ftyp", brand + U32(0) + compatible);
}

std::string Mvhd(unsigned version, uint32_t timescale, uint64_t duration) {
  const std::string times = version == 1 ? Zeros(16) + U32(timescale) + U64(duration)
                                         : Zeros(8) + U32(timescale) + U32(duration);
  const std::string rest = U32(0x10000) + U16(0x100) + Zeros(10) + Unity() + Zeros(24) + U32(3);
  return FullBox("mvhd", version, times + rest);
}

std::string Mdhd(uint32_t timescale, uint32_t duration, const std::string& language) {
  unsigned code = 0;
  for (const char letter : language) code = code << 5 | (static_cast<unsigned>(letter) - 0x60);
  return FullBox("mdhd", 0, Zeros(8) + U32(timescale) + U32(duration) + U16(code) + U16(0));
}

std::string Tkhd(uint32_t width, uint32_t height) {
  return FullBox("tkhd", 0,
                 Zeros(8) + U32(1) + Zeros(24) + Unity() + U32(uint64_t{width} << 16) +
                     U32(uint64_t{height} << 16));
}

std::string Hdlr(const std::string& handler) {
  return FullBox("hdlr", 0, U32(0) + handler + Zeros(12) + Zeros(1));
}

std::string Stsz(uint32_t sampleSize, const std::vector<uint32_t>& sizes) {
  std::string table;
  if (sampleSize == 0)
    for (const uint32_t size : sizes) table += U32(size);
  return FullBox("stsz", 0, U32(sampleSize) + U32(sizes.size()) + table);
}

std::string Stsd(const std::string& sampleEntry) {
  return FullBox("stsd", 0, U32(1) + sampleEntry);
}

std::string Avc1(unsigned width, unsigned height, unsigned profileIdc, unsigned levelIdc) {
  const std::string sps = U8(0x67) + U8(profileIdc) + U8(0) + U8(levelIdc) + U8(0x80);
  const std::string pps = U8(0x68) + U8(0x80);
  const std::string avcc = Box("avcC", U8(1) + U8(profileIdc) + U8(0) + U8(levelIdc) + U8(0xFF) +
                                           U8(0xE1) + U16(static_cast<unsigned>(sps.size())) + sps +
                                           U8(1) + U16(static_cast<unsigned>(pps.size())) + pps);
  return Box("avc1", Zeros(6) + U16(1) + Zeros(16) + U16(width) + U16(height) + U32(0x480000) +
                         U32(0x480000) + Zeros(4) + U16(1) + Zeros(32) + U16(24) + U16(0xFFFF) +
                         avcc);
}

std::string Mp4a(const AacEntry& entry) {
  const bool wide = entry.longDescriptors;
  std::string config = U8(entry.audioObject << 3 | 2) + U8(0x10) + Zeros(8);
  config.resize(entry.configLength == 0 ? 1 : entry.configLength);
  const std::string specific =
      U8(5) + (wide ? "\x80\x80\x80" : "") + U8(entry.configLength) + config;
  const std::string decoder =
      Descriptor(4, wide,
                 U8(entry.objectType) + U8(0x15) + Zeros(3) + U32(entry.averageBitrate) +
                     U32(entry.averageBitrate) + specific);
  const std::string esds = FullBox(
      "esds", 0, Descriptor(3, wide, U16(1) + U8(0) + decoder + Descriptor(6, wide, U8(2))));
  return Box("mp4a", Zeros(6) + U16(1) + Zeros(8) + U16(entry.channels) + U16(16) + Zeros(4) +
                         U16(entry.sampleRate) + U16(0) + esds);
}

std::string DataBox(const std::string& value, unsigned kind) {
  return Box("data", U32(kind) + U32(0) + value);
}

std::string TextItem(const std::string& type, const std::string& value) {
  return Box(type, DataBox(value));
}

std::string Ilst(const std::string& items) {
  return Box("udta", FullBox("meta", 0, Hdlr("mdir") + Box("ilst", items)));
}

std::string Track(const std::string& handler, const std::string& trackHeader,
                  const std::string& mediaHeader, const std::string& sampleDescription,
                  const std::string& sampleSizes) {
  const std::string references =
      Box("dinf", FullBox("dref", 0, U32(1) + Box("url ", U8(0) + Zeros(2) + U8(1))));
  const std::string table =
      Box("stbl", sampleDescription + FullBox("stts", 0, U32(0)) + FullBox("stsc", 0, U32(0)) +
                      sampleSizes + FullBox("stco", 0, U32(0)));
  const std::string kind =
      handler == "vide" ? FullBox("vmhd", 0, Zeros(8)) : FullBox("smhd", 0, Zeros(4));
  return Box("trak", trackHeader + Box("mdia", mediaHeader + Hdlr(handler) +
                                                   Box("minf", kind + references + table)));
}

std::string MakeMp4(const Mp4File& file) {
  std::string movie = Mvhd(0, file.timescale, file.duration);
  if (file.video) movie += VideoTrack(file);
  if (file.audio) movie += SoundTrack(file);
  const std::string items = Items(file);
  if (!items.empty()) movie += Ilst(items);
  return Ftyp(file.brand, file.compatible) + Box("moov", movie) + Box("mdat", Zeros(16));
}

std::string SmallFilm() { return MakeMp4(); }

std::string SmallSong() {
  Mp4File song;
  song.brand = "M4A ";
  song.compatible = "M4A mp42isom";
  song.video = false;
  return MakeMp4(song);
}

std::string Adts(unsigned profile, unsigned frequencyIndex, unsigned channels) {
  std::string header = U16(0xFFF1);
  header += U16(profile << 14 | frequencyIndex << 10 | channels << 6);
  return header + Zeros(60);
}

}  // namespace orx_test

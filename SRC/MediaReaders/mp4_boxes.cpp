#include "MediaReaders/mp4_boxes.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

#include "MediaReaders/mp4_items.h"
#include "MediaReaders/mp4_samples.h"
#include "OSAL/Fault.h"
#include "UpnpUtil/upnp_util.h"

namespace orx {
namespace {

constexpr int kContainerMp4 = 1, kContainer3gp4 = 4, kContainer3gp6 = 6;

template <typename Number>
int LimitedToInt(Number number) {
  constexpr int kMost = std::numeric_limits<int>::max();
  return number < static_cast<Number>(kMost) ? static_cast<int>(number) : kMost;
}

void ReplaceText(char*& text, char* replacement) {
  free(text);
  text = replacement;
}

// ---- "ftyp" ----

// 0 when the major brand is none of those that stand for a container.
int ContainerOfBrand(std::string brand) {
  for (char& c : brand)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  if (brand == "3gp4") return kContainer3gp4;
  if (brand == "3gp6") return kContainer3gp6;
  const std::string family = brand.substr(0, 3);
  return family == "mp4" || family == "m4a" ? kContainerMp4 : 0;
}

void ReadFileType(Mp4Walk& walk, const Mp4Box& box) {
  mp4_metadata_t& meta = walk.meta();
  const std::string payload = walk.ReadRest(box);
  if (payload.size() < 4) return;
  if (const int container = ContainerOfBrand(payload.substr(0, 4)); container != 0)
    meta.ContainerCode = container;
  if (payload.size() < 8) return;  // major brand and version
  ReplaceText(meta.CompatibleBrands, orx::Noted(strdup(payload.c_str() + 8), __func__));
  if (meta.CompatibleBrands != nullptr && (strstr(meta.CompatibleBrands, "mp42") != nullptr ||
                                           strstr(meta.CompatibleBrands, "avc1") != nullptr))
    meta.ContainerCode = kContainerMp4;
}

// ---- durations: "mvhd", "mdhd" ----

// Half a thousand is added in time-scale units, before the division.  A time scale of 0 says
// nothing of the duration, so an earlier number stays and the text is that of 0.
void StoreDuration(uint32_t timescale, uint64_t duration, mp4_metadata_t* meta) {
  constexpr uint64_t kMost = std::numeric_limits<uint64_t>::max();
  constexpr uint64_t kMostSeconds = std::numeric_limits<long>::max() / 1000;  // 32 bits on cameras
  uint64_t ms = 0;
  if (timescale != 0) {
    const uint64_t rounded = duration > kMost - 500 ? kMost : duration + 500;
    meta->VideoDurationMs = static_cast<double>(rounded) / timescale * 1000.0;
    ms = std::min(rounded / timescale, kMostSeconds) * 1000;
  }
  ReplaceText(meta->DurationText, upnp_duration_to_string(static_cast<long>(ms)));
}

void ReadMovieHeader(Mp4Walk& walk, const Mp4Box& box) {
  ByteCursor body = walk.Head(box);
  const bool wide = body.U8() == 1;  // version 1: dates and duration of 64 bits
  body.Skip(wide ? 3 + 16 : 3 + 8);  // flags, dates
  const uint32_t timescale = body.U32();
  const uint64_t duration = wide ? body.U64() : body.U32();
  if (body.ok()) StoreDuration(timescale, duration, &walk.meta());
}

// Read in the layout of version 0, whatever the version.
void ReadMediaHeader(Mp4Walk& walk, const Mp4Box& box) {
  ByteCursor body = walk.Head(box);
  body.Skip(12);  // version, flags, dates
  const uint32_t timescale = body.U32();
  const uint32_t duration = body.U32();
  if (body.ok()) StoreDuration(timescale, duration, &walk.meta());
  const unsigned language = body.U16();  // three letters of five bits
  if (!body.ok()) return;
  for (unsigned i = 0; i < 3; ++i)
    walk.meta().Language[i] = static_cast<char>((language >> (10 - 5 * i) & 0x1F) + 0x60);
}

// ---- tracks: "tkhd", "hdlr" ----

void ReadTrackHeader(Mp4Walk& walk, const Mp4Box& box) {
  ByteCursor size = walk.Head(box).At(76);
  const uint32_t width = size.U32();
  const uint32_t height = size.U32();
  if (width == 0 || height == 0) return;
  walk.meta().TrackWidth = static_cast<int>(width);
  walk.meta().TrackHeight = static_cast<int>(height);
}

void ReadHandler(Mp4Walk& walk, const Mp4Box& box) {
  switch (walk.Head(box).At(8).U32()) {
    case FourCc("vide"):
      walk.meta().HasVideo = 1;
      break;
    case FourCc("soun"):
      walk.meta().HasAudio = 1;
      break;
    default:
      break;
  }
}

// ---- sample tables: "stbl", "stsd", "stsz" ----

void ReadSampleTable(Mp4Walk& walk, const Mp4Box& box) {
  walk.MarkSampleTable(false);
  walk.Enter(box);
}

// A sound entry is read as the brands say, so the brands are searched for each.
bool MaySearchBrands(Mp4Walk& walk) {
  const char* brands = walk.meta().CompatibleBrands;
  const auto size = brands != nullptr ? static_cast<long long>(strlen(brands)) : 0;
  return walk.Spend(size) == size;
}

// Only the first entry is looked at.
void ReadSampleDescription(Mp4Walk& walk, const Mp4Box& box) {
  const ByteCursor entry = walk.Head(box).At(8);  // version, flags, count
  ByteCursor header = entry;
  const uint32_t size = header.U32();
  const uint32_t type = header.U32();
  if (!header.ok()) return;
  const std::string_view bytes = ByteCursor(entry).Text(std::min<uint64_t>(size, entry.size()));
  switch (type) {
    case FourCc("avc1"):
      if (AcceptAvc1Entry(bytes, &walk.meta())) walk.MarkSampleTable(true);
      break;
    case FourCc("mp4v"):
    case FourCc("s263"):
      walk.MarkSampleTable(true);
      break;
    case FourCc("mp4a"):
      if (!MaySearchBrands(walk)) return;
      AcceptMp4aEntry(bytes, &walk.meta());
      walk.MarkSampleTable(false);
      break;
    default:
      break;
  }
}

// Of the whole numbers in `bytes`.  Not through a ByteCursor, as a film has millions of them.
uint64_t SumOfNumbers(std::string_view bytes) {
  const auto at = [bytes](size_t i) { return uint32_t{static_cast<uint8_t>(bytes[i])}; };
  uint64_t sum = 0;
  for (size_t i = 0; i + 4 <= bytes.size(); i += 4)
    sum += at(i) << 24 | at(i + 1) << 16 | at(i + 2) << 8 | at(i + 3);
  return sum;
}

// The sum of up to `count` entries, as many as box and file hold.
uint64_t SumOfSampleSizes(Mp4Walk& walk, const Mp4Box& box, uint32_t count) {
  uint8_t block[4096];
  uint64_t sum = 0;
  while (count > 0) {
    const size_t wanted =
        static_cast<size_t>(std::min<uint64_t>(sizeof block, uint64_t{count} * 4));
    const size_t size = walk.Read(box, block, wanted);
    if (size < 4) break;
    sum += SumOfNumbers({reinterpret_cast<const char*>(block), size});
    count -= static_cast<uint32_t>(size / 4);
  }
  return sum;
}

void ReadSampleSizes(Mp4Walk& walk, const Mp4Box& box) {
  if (!walk.SampleTableIsVideo()) return;
  uint8_t header[12];
  ByteCursor fields(header, walk.Read(box, header, sizeof header));
  fields.Skip(4);  // version, flags
  const uint32_t sampleSize = fields.U32();
  const uint32_t count = fields.U32();
  if (!fields.ok()) return;
  mp4_metadata_t& meta = walk.meta();
  // One size for all samples is taken for the total as it is.
  const uint64_t total = sampleSize != 0 ? sampleSize : SumOfSampleSizes(walk, box, count);
  meta.VideoByteTotal = LimitedToInt(total);
  meta.VideoFrameCount = LimitedToInt(count);
  if (meta.VideoDurationMs > 0) {
    constexpr uint64_t kMost = std::numeric_limits<uint64_t>::max();
    const uint64_t scaled = total > kMost / 8000 ? kMost : total * 8000;
    meta.VideoBitrate = LimitedToInt(static_cast<double>(scaled) / meta.VideoDurationMs);
  }
}

// ---- boxes that hold boxes ----

void ReadContainer(Mp4Walk& walk, const Mp4Box& box) { walk.Enter(box); }
void ReadMeta(Mp4Walk& walk, const Mp4Box& box) { walk.Enter(box, 4); }  // version, flags

// ---- the table ----

constexpr uint32_t kAnywhere = 0;
constexpr uint32_t kItemList = FourCc("ilst");

struct BoxRule {
  uint32_t type;
  Mp4BoxReader read;
  uint32_t parent = kAnywhere;  // the box that this one must stand in
};

constexpr BoxRule kBoxRules[] = {
    {FourCc("ftyp"), ReadFileType},
    {FourCc("mvhd"), ReadMovieHeader},
    {FourCc("tkhd"), ReadTrackHeader},
    {FourCc("mdhd"), ReadMediaHeader},
    {FourCc("hdlr"), ReadHandler},
    {FourCc("stsd"), ReadSampleDescription},
    {FourCc("stsz"), ReadSampleSizes},
    {FourCc("moov"), ReadContainer},
    {FourCc("trak"), ReadContainer},
    {FourCc("edts"), ReadContainer},
    {FourCc("mdia"), ReadContainer},
    {FourCc("minf"), ReadContainer},
    {FourCc("dinf"), ReadContainer},
    {FourCc("mvex"), ReadContainer},
    {FourCc("moof"), ReadContainer},
    {FourCc("traf"), ReadContainer},
    {FourCc("mfra"), ReadContainer},
    {FourCc("udta"), ReadContainer},
    {FourCc("stbl"), ReadSampleTable},
    {FourCc("meta"), ReadMeta},
    {FourCc("ilst"), ReadContainer},
    {FourCc("\251nam"), ReadTextItem, kItemList},
    {FourCc("\251ART"), ReadTextItem, kItemList},
    {FourCc("\251alb"), ReadTextItem, kItemList},
    {FourCc("\251gen"), ReadTextItem, kItemList},
    {FourCc("\251day"), ReadTextItem, kItemList},
    {FourCc("trkn"), ReadTrackNumber, kItemList},
    {FourCc("covr"), ReadCoverArt, kItemList},
};

}  // namespace

Mp4BoxReader FindBoxReader(uint32_t type, uint32_t parent) {
  for (const BoxRule& rule : kBoxRules)
    if (rule.type == type && (rule.parent == kAnywhere || rule.parent == parent)) return rule.read;
  return nullptr;
}

}  // namespace orx

#include "MediaReaders/mp4_samples.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>

#include "MediaReaders/byte_cursor.h"

namespace {

using orx::ByteCursor;

constexpr int kAvc = 2;
constexpr int kBaseline = 6, kMain = 5;
constexpr int kAacLc = 1, kHeAac = 3, kAacLtp = 15;

// The checks get a pointer behind the fields that all sample entries share: size, type, reserved
// bytes, data reference.
constexpr size_t kCommonFields = 16;

// ---- AVC: the fields, counted from there ----
constexpr size_t kPictureSize = 16;
constexpr size_t kProfileIdc = 79;  // in the "avcC" box, which is the first inside the entry
constexpr size_t kLevelIdc = 81;
constexpr size_t kAvc1Size = kLevelIdc + 1;
constexpr int kLevels[] = {10, 11, 12, 13, 20, 21, 22, 30, 31, 32, 40, 41, 42, 50, 51};

// ---- MPEG-4 sound ----
constexpr size_t kChannelCount = 8;
constexpr size_t kSampleRate = 16;  // the whole part of a fixed-point number

// Where the fields of the ES descriptor stand.  Writers of "mp42" files give each descriptor a
// length of four bytes, others of one.
struct EsdsLayout {
  size_t objectType, averageBitrate, configLength, config;
  size_t end() const { return config + 1; }
};
constexpr EsdsLayout kLongLengths = {45, 54, 62, 63};
constexpr EsdsLayout kShortLengths = {39, 48, 53, 54};

const EsdsLayout& LayoutOf(const mp4_metadata_t& meta) {
  const bool mp42 =
      meta.CompatibleBrands != nullptr && strstr(meta.CompatibleBrands, "mp42") != nullptr;
  return mp42 ? kLongLengths : kShortLengths;
}

// Object type indications other than MPEG-4 audio that are accepted; of what the sound is, only
// that of MPEG-2 AAC is known.
struct ObjectType {
  unsigned indication;
  int audioType;
};
constexpr ObjectType kObjectTypes[] = {{102, kAacLc}, {103, kAacLc}, {104, kAacLc}, {105, 0},
                                       {107, 0},      {224, 0},      {225, 0},      {227, 0},
                                       {228, 0},      {229, 0},      {230, 0}};

bool AcceptObjectType(unsigned indication, mp4_metadata_t* meta) {
  const auto* found =
      std::find_if(std::begin(kObjectTypes), std::end(kObjectTypes),
                   [&](const ObjectType& type) { return type.indication == indication; });
  if (found == std::end(kObjectTypes)) return false;
  if (found->audioType != 0) meta->AudioType = found->audioType;
  return true;
}

// The AudioSpecificConfig of MPEG-4 audio, of which the length and the first byte are given.
bool AcceptAudioConfig(unsigned length, unsigned firstByte, mp4_metadata_t* meta) {
  if (length < 2) return false;
  switch (firstByte >> 3) {  // audio object type
    case 2:
      meta->AudioType = kAacLc;
      return true;
    case 4:
      meta->AudioType = kAacLtp;
      return true;
    case 5:
      meta->AudioType = kHeAac;
      return true;
    default:
      return false;
  }
}

// The numbers of a sound entry, those that lie in it; some phones end the entry early.
void TakeSoundNumbers(const ByteCursor& fields, const EsdsLayout& layout, mp4_metadata_t* meta) {
  ByteCursor field = fields.At(layout.averageBitrate);
  const uint64_t bitrate = uint64_t{field.U32()} + 500;
  if (field.ok())
    meta->AudioBitrate =
        static_cast<int>(std::min<uint64_t>(bitrate, std::numeric_limits<int>::max()));
  field = fields.At(kSampleRate);
  const int sampleRate = field.U16();
  if (field.ok()) meta->SampleRate = sampleRate;
  field = fields.At(kChannelCount);
  const int channels = field.U16();
  if (field.ok()) meta->Channels = channels;
}

bool CheckMp4a(const ByteCursor& fields, const EsdsLayout& layout, mp4_metadata_t* meta) {
  TakeSoundNumbers(fields, layout, meta);
  if (fields.size() < layout.end()) return false;
  const unsigned objectType = fields.At(layout.objectType).U8();
  if (objectType != 64) return AcceptObjectType(objectType, meta);
  return AcceptAudioConfig(fields.At(layout.configLength).U8(), fields.At(layout.config).U8(),
                           meta);
}

}  // namespace

int mp4_check_avc1_header(const char* entry, mp4_metadata_t* meta) {
  if (entry == nullptr || meta == nullptr) return -1;
  const ByteCursor fields(entry, kAvc1Size);
  ByteCursor size = fields.At(kPictureSize);
  meta->Width = size.U16();
  meta->Height = size.U16();
  meta->VideoCodec = kAvc;
  const unsigned profile = fields.At(kProfileIdc).U8();
  if (profile != 66 && profile != 77) return -1;
  meta->AvcProfile = profile == 66 ? kBaseline : kMain;
  const int level = fields.At(kLevelIdc).U8();
  meta->AvcLevel = level / 10.0;
  return std::find(std::begin(kLevels), std::end(kLevels), level) != std::end(kLevels) ? 0 : -1;
}

int mp4_check_mp4a_header(const char* entry, mp4_metadata_t* meta) {
  if (entry == nullptr || meta == nullptr) return -1;
  const EsdsLayout& layout = LayoutOf(*meta);
  return CheckMp4a(ByteCursor(entry, layout.end()), layout, meta) ? 0 : -1;
}

namespace orx {

bool AcceptAvc1Entry(std::string_view entry, mp4_metadata_t* meta) {
  return entry.size() >= kCommonFields + kAvc1Size &&
         mp4_check_avc1_header(entry.data() + kCommonFields, meta) == 0;
}

bool AcceptMp4aEntry(std::string_view entry, mp4_metadata_t* meta) {
  const ByteCursor fields = ByteCursor(entry.data(), entry.size()).At(kCommonFields);
  return fields.ok() && CheckMp4a(fields, LayoutOf(*meta), meta);
}

}  // namespace orx

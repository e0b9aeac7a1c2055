#include "support/RecordBuilder.h"

#include <climits>

namespace orx_test {
namespace {

class TextMaker {
 public:
  explicit TextMaker(const RecordValues& values) : values_(values) {}
  // The text of one field; null when all are missing.
  const char* operator()(const char* field) {
    if (values_.missing) return nullptr;
    text_ = std::string(field) + values_.text;
    return text_.c_str();
  }

 private:
  const RecordValues& values_;
  std::string text_;
};

void FillCommon(MediaMetaData* record, unsigned type, const RecordValues& values) {
  TextMaker text(values);
  record->SetType(type);
  record->SetFullPath(text("/mnt/mmc/DCIM/100PHOTO/file"));
  record->SetURI(text("/orx00010"));
  record->SetEXT(text("JPG"));
  record->SetTitle(text("title"));
  record->SetMimeType(text("image/jpeg"));
  record->SetDate(text("2026-11-21"));
  record->SetDirectoryID(text("0"));
  record->SetDLNAProfile(text("JPEG_SM"));
  record->SetSortIndex(text("0010007"));
  record->SetSize(values.size);
}

void FillSound(AudioMetaData* record, const RecordValues& values) {
  TextMaker text(values);
  record->SetArtist(text("artist"));
  record->SetDuration(text("0:01:02.003"));
  record->SetAlbumTitle(text("album"));
  record->SetAlbumArtist(text("album artist"));
  const int n = values.number;
  record->SetNumChannel(n + 1);
  record->SetBitrate(n + 2);
  record->SetFrequency(n + 3);
  record->SetAlbumArtOffset(n + 4);
  record->SetAlbumArtLength(n + 5);
  if (values.missing) {
    record->SetNumChannel(0);
    record->SetBitrate(0);
    record->SetFrequency(0);
    record->SetAlbumArtOffset(0);
    record->SetAlbumArtLength(0);
  }
}

}  // namespace

std::vector<RecordValues> OrdinaryValues() {
  std::vector<RecordValues> kinds;
  kinds.push_back({"plain", false, "", 123456, 10, 29.97, 4000000, true});
  kinds.push_back({"missing", true, "", 0, 0, 0, 0, false});
  kinds.push_back({"missing with sound", true, "", 0, 0, 0, 0, true});
  kinds.push_back({"percent", false, " 100% %s %d %n", 1, 1, 30.0, 1, false});
  kinds.push_back({"UTF-8", false, " \xed\x95\x9c\xea\xb8\x80 \xe3\x81\x82", 5000000000, 100, 59.94,
                   LONG_MAX, true});
  kinds.push_back({"invalid UTF-8", false, "\xff\xfe\x80(", 0, -100, 0.0000001, -1, true});
  kinds.push_back({"negative", false, " -", -1, -1000, -2.5, LONG_MIN, true});
  kinds.push_back({"limits", false, " ", LLONG_MAX, INT_MAX - 20, 1e300, 0, true});
  kinds.push_back(
      {"long", false, std::string(700, 'x'), LLONG_MIN, INT_MIN, 23.976023976, 1, true});
  kinds.push_back({"SQL", false, "; drop table ObjectTable; --", 7, 7, 7, 7, true});
  return kinds;
}

std::unique_ptr<ImageMetaData> MakeImage(const RecordValues& values) {
  auto image = std::make_unique<ImageMetaData>();
  FillCommon(image.get(), 1, values);
  if (values.missing) return image;
  TextMaker text(values);
  image->SetDescription(text("description"));
  const int n = values.number;
  image->SetHeight(n + 1);
  image->SetWidth(n + 2);
  image->SetThumbnailOffset(n + 3);
  image->SetThumbnailLength(n + 4);
  image->SetThumbnailHeight(n + 5);
  image->SetThumbnailWidth(n + 6);
  image->SetScreennailOffset(n + 7);
  image->SetScreennailLength(n + 8);
  image->SetScreennailHeight(n + 9);
  image->SetScreennailWidth(n + 10);
  return image;
}

std::unique_ptr<AudioMetaData> MakeAudio(const RecordValues& values) {
  auto audio = std::make_unique<AudioMetaData>();
  FillCommon(audio.get(), 2, values);
  FillSound(audio.get(), values);
  return audio;
}

std::unique_ptr<VideoMetaData> MakeVideo(const RecordValues& values) {
  auto video = std::make_unique<VideoMetaData>();
  FillCommon(video.get(), 3, values);
  if (values.soundTrack) {
    video->SetAudioData(new AudioMetaData);
    FillSound(video->GetAudioData(), values);
  }
  if (values.missing) return video;
  TextMaker text(values);
  video->SetDuration(text("1:02:03"));
  video->SetVideoFrameRate(values.real);
  video->SetVideoLevel(values.real / 2);
  video->SetVideoBitrate(values.bitrate);
  const int n = values.number;
  video->SetHeight(n + 1);
  video->SetWidth(n + 2);
  video->SetAlbumArtOffset(n + 3);
  video->SetAlbumArtLength(n + 4);
  video->SetThumbnailOffset(n + 5);
  video->SetThumbnailLength(n + 6);
  video->SetThumbnailHeight(n + 7);
  video->SetThumbnailWidth(n + 8);
  return video;
}

std::unique_ptr<MediaMetaData> MakePlain(unsigned type, const RecordValues& values) {
  auto record = std::make_unique<MediaMetaData>();
  FillCommon(record.get(), type, values);
  return record;
}

std::unique_ptr<MediaMetaData> MakeRecord(unsigned type, const RecordValues& values) {
  if (type == 1) return MakeImage(values);
  if (type == 2) return MakeAudio(values);
  if (type == 3) return MakeVideo(values);
  return MakePlain(type, values);
}

std::unique_ptr<ImageMetaData> MakeImageAt(const std::string& path) {
  auto image = std::make_unique<ImageMetaData>();
  image->SetType(1);
  image->SetFullPath(path.c_str());
  return image;
}

}  // namespace orx_test

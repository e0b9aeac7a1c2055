#include "FileScanner/FileParser_MP4.h"

#include <cstring>
#include <memory>
#include <string>

#include "FileScanner/AudioMetaData.h"
#include "FileScanner/ExtensionList.h"
#include "FileScanner/FileInfomation.h"
#include "FileScanner/VideoMetaData.h"
#include "MediaReaders/dlna_profiles.h"
#include "OSAL/Fault.h"
#include "OSAL/ORXCString.h"
#include "OSAL/ORXLog.h"
#include "OSAL/StringUtiltiy.h"
#include "OSAL/TextPtr.h"
#include "Platform/CameraPlatform.h"

namespace {

constexpr char kOwnExtensions[] = "m4a, adts, m4b, mp4, 3gp, aac, ac3, m4v, mov, avi";
constexpr char kNoProfile[] = "*";
constexpr char kCertifiedProfile[] = "AVC_MP4_BL_CIF15_AAC_520";
constexpr unsigned kAudio = 2, kVideo = 3;  // types of the records

// What a reading gave, released at the end.
struct Reading {
  mp4_metadata_t meta = {};
  Reading() = default;
  ~Reading() { m4a_free_metadata(&meta); }
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;
};

MediaMetaData* WithExtension(MediaMetaData* record, const FileInfomation* file) {
  if (record != nullptr)
    record->SetEXT(orx::TextPtr(StringUtiltiy::GetUtf8FromTChar(file->GetExtension())).get());
  return record;
}

// ---- MIME types ----

// Extensions, searched by substring and case, and the type of the files that have them.
struct MimeRule {
  const char* extensions;
  const char* type;
};
constexpr MimeRule kVideoTypes[] = {
    {"mp4, 3gp, mov", "video/mp4"}, {"m4v", "video/x-m4v"}, {"avi", "video/x-avi"}};
constexpr MimeRule kPlatformVideoTypes[] = {{"avi", "video/x-avi"}};
constexpr MimeRule kAudioTypes[] = {{"aac, 3gp.a", "audio/mp4"},
                                    {"ac3", "audio/x-ac3"},
                                    {"m4a, mp4.a, 3gp.a, m4b", "audio/mp4"},
                                    {"adts", "audio/vnd.dlna.adts"}};

template <size_t kCount>
const char* MimeType(const MimeRule (&rules)[kCount], const char* ext, const char* otherwise) {
  if (ext == nullptr) return otherwise;
  for (const MimeRule& rule : rules)
    if (ORXCString::LocateStr(rule.extensions, ext) != nullptr) return rule.type;
  return otherwise;
}

// ---- DLNA profiles ----

mp4_dlna_prop_t PropertiesOf(const mp4_metadata_t& meta) {
  return {meta.VideoId, meta.TableAudioCode, meta.ContainerCode, meta.AudioProfileId};
}

bool InCertification() { return ORXGetDlnaCertificationState() != 0; }

const char* VideoProfileOf(const mp4_metadata_t& meta) {
  if (InCertification()) return kCertifiedProfile;
  const char* name = orx::FindVideoProfile(PropertiesOf(meta));
  return name != nullptr ? name : kNoProfile;
}

const char* AudioProfileOf(const mp4_metadata_t& meta) {
  if (const char* name = orx::FindAudioProfile(PropertiesOf(meta)); name != nullptr) return name;
  return InCertification() ? kCertifiedProfile : kNoProfile;
}

// ---- records ----

// What films and sound files have in common.
void FillCommon(const char* path, const mp4_metadata_t& meta, MediaMetaData* record) {
  record->SetFullPath(path);
  record->SetTitle(orx::TextPtr(MediaMetaData::GetTitleFromFullPath(path)).get());
  record->SetDate(meta.Date);
  record->SetSize(meta.FileSize);
}

void FillSound(const mp4_metadata_t& meta, AudioMetaData* record) {
  record->SetArtist(meta.Artist);
  record->SetAlbumTitle(meta.AlbumTitle);
  record->SetTrackNumber(meta.TrackNumber);
  record->SetNumChannel(meta.Channels);
  record->SetBitrate(meta.AudioBitrate);
  record->SetFrequency(meta.SampleRate);
}

std::unique_ptr<MediaMetaData> MakeVideo(const char* path, const char* ext,
                                         const mp4_metadata_t& meta) {
  auto record = std::make_unique<VideoMetaData>();
  FillCommon(path, meta, record.get());
  record->SetSortIndex(orx::TextPtr(MediaMetaData::GetSortIndexFromFullPath(path)).get());
  record->SetType(kVideo);
  record->SetMimeType(MimeType(kVideoTypes, ext, "video/mp4"));
  record->SetHeight(meta.Height);
  record->SetWidth(meta.Width);
  record->SetVideoFrameRate(meta.FrameRate);
  record->SetVideoBitrate(meta.VideoBitrate);
  record->SetVideoLevel(meta.AvcLevel);
  record->SetDuration(meta.DurationText);
  record->SetAlbumArtOffset(meta.CoverArtOffset);
  record->SetAlbumArtLength(meta.CoverArtLength);
  auto sound = std::make_unique<AudioMetaData>();
  FillSound(meta, sound.get());
  record->SetAudioData(sound.release());
  record->SetDLNAProfile(VideoProfileOf(meta));
  return record;
}

std::unique_ptr<MediaMetaData> MakeAudio(const char* path, const char* ext,
                                         const mp4_metadata_t& meta) {
  auto record = std::make_unique<AudioMetaData>();
  FillCommon(path, meta, record.get());
  FillSound(meta, record.get());
  record->SetType(kAudio);
  record->SetMimeType(MimeType(kAudioTypes, ext, "audio/mp4"));
  record->SetDuration(meta.DurationText);
  record->SetAlbumArtOffset(meta.CoverArtOffset);
  record->SetAlbumArtLength(meta.CoverArtLength);
  record->SetDLNAProfile(AudioProfileOf(meta));
  return record;
}

// Size, date, dimensions, duration and frame rate of the film at `path`, as far as the platform
// knows them.
void TakePlatformAttributes(char* path, VideoMetaData* record) {
  sVideoAttribute attributes = {};
  if (QUILWifi_getVideoAttribute(path, &attributes) == 0) {
    ORX_LOG_ERROR("[FileParser_MP4::__ExtractMetadata2] QUILWifi_getVideoAttribute Error!!!");
    attributes = {};
  }
  const size_t dateLength = strnlen(attributes.szDate, sizeof attributes.szDate);
  record->SetDate(std::string(attributes.szDate, dateLength).c_str());
  record->SetSize(attributes.nFileSize);
  record->SetHeight(attributes.nHeight);
  record->SetWidth(attributes.nWidth);
  record->SetDuration(std::to_string(attributes.nDuration).c_str());  // milliseconds
  record->SetVideoFrameRate(attributes.dFrameRate);
}

}  // namespace

FileParser_MP4::~FileParser_MP4() = default;

MediaMetaData* FileParser_MP4::ParseFIle(const FileInfomation* file) {
  if (file == nullptr || orx::BelongsToAnotherParser(kOwnExtensions, file->GetExtension()))
    return nullptr;
  const bool listed = orx::ListHasExtension(kOwnExtensions, file->GetExtension());
  return orx::Guarded(__func__, static_cast<MediaMetaData*>(nullptr), [&] {
    const std::string ext = orx::LowerCaseExtension(file->GetExtension());
    return WithExtension(__ExtractMetadata(file->GetFullFileName(), listed ? ext.c_str() : nullptr),
                         file);
  });
}

MediaMetaData* FileParser_MP4::ParseFIle2(const FileInfomation* file) {
  if (file == nullptr || orx::BelongsToAnotherParser(kOwnExtensions, file->GetExtension()))
    return nullptr;
  if (!orx::ListHasExtension(kOwnExtensions, file->GetExtension())) {
    ORX_LOG_ERROR("[%s]!!!! Error !!!! Extension is NULL \n", "ParseFIle2");
    return nullptr;
  }
  return orx::Guarded(__func__, static_cast<MediaMetaData*>(nullptr), [&] {
    const std::string ext = orx::LowerCaseExtension(file->GetExtension());
    return WithExtension(
        __ExtractMetadata2(file->GetFullFileName(), ext.c_str(), file->GetDcfIndex(),
                           file->GetSortIndex(), file->GetFileType()),
        file);
  });
}

MediaMetaData* FileParser_MP4::__ExtractMetadata(const char* path, const char* ext) try {
  const orx::FaultWatch watch;
  const orx::TextPtr utf8(StringUtiltiy::GetUtf8FromTChar(path));
  if (utf8 == nullptr) return nullptr;
  ORX_LOG_INFO("[FileParser_MP4::__ExtractMetadata] Parsing [%s]", utf8.get());
  Reading reading;
  if (m4a_get_metadata(utf8.get(), &reading.meta) == 0) {
    ORX_LOG_INFO("[FileParser_MP4::__ExtractMetadata] Parsing [%s] failed", utf8.get());
    return nullptr;
  }
  const auto make = reading.meta.HasVideo != 0 ? MakeVideo : MakeAudio;
  std::unique_ptr<MediaMetaData> record = make(utf8.get(), ext, reading.meta);
  ORX_LOG_INFO("[%s] Parse Success", utf8.get());
  return record.release();
} catch (const std::exception&) {
  orx::NoteOutOfMemory(__func__);
  return nullptr;
}

// The platform knows films only, so the record is one whatever the extension.
MediaMetaData* FileParser_MP4::__ExtractMetadata2(const char* path, const char* ext,
                                                  int /*dcfIndex*/, int sortIndex,
                                                  int /*fileType*/) try {
  const orx::FaultWatch watch;
  const orx::TextPtr utf8(StringUtiltiy::GetUtf8FromTChar(path));
  if (utf8 == nullptr) return nullptr;
  ORX_LOG_INFO("[FileParser_MP4::__ExtractMetadata] Parsing [%s]", utf8.get());
  auto record = std::make_unique<VideoMetaData>();
  TakePlatformAttributes(utf8.get(), record.get());
  const orx::TextPtr name(StringUtiltiy::GetUtf8FromMultiByteStr(utf8.get()));
  record->SetFullPath(utf8.get());
  record->SetTitle(orx::TextPtr(MediaMetaData::GetTitleFromFullPath(name.get())).get());
  record->SetSortIndex(std::to_string(sortIndex).c_str());
  record->SetType(kVideo);
  record->SetMimeType(MimeType(kPlatformVideoTypes, ext, "video/mp4"));
  record->SetDLNAProfile(InCertification() ? kCertifiedProfile : kNoProfile);
  ORX_LOG_INFO("[%s] Parse Success", utf8.get());
  return record.release();
} catch (const std::exception&) {
  orx::NoteOutOfMemory(__func__);
  return nullptr;
}

char* FileParser_MP4::__GetMp4Profile(mp4_dlna_prop_t prop) {
  return ORXCString::DupCopy(orx::FindVideoProfile(prop));
}

char* FileParser_MP4::__GetMp4aProfile(mp4_dlna_prop_t prop) {
  return ORXCString::DupCopy(orx::FindAudioProfile(prop));
}

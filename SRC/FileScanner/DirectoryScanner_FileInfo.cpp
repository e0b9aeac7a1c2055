// Single files: their display records, and records built from the platform's attributes.
#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <new>
#include <string>

#include "FileScanner/AudioMetaData.h"
#include "FileScanner/DirectoryScanner.h"
#include "FileScanner/FileInfomation.h"
#include "FileScanner/FileParserFramework.h"
#include "FileScanner/ImageMetaData.h"
#include "FileScanner/JpegProfile.h"
#include "FileScanner/MediaFileInfos.h"
#include "FileScanner/PlatformRecord.h"
#include "FileScanner/VideoMetaData.h"
#include "OSAL/Fault.h"
#include "OSAL/FileOpening.h"
#include "OSAL/LocalTimeScope.h"
#include "OSAL/ORXAString.h"
#include "OSAL/ORXCString.h"
#include "OSAL/ORXLog.h"
#include "OSAL/ORXMemory.h"
#include "OSAL/TextPtr.h"
#include "OSAL/UniqueValueGenerator.h"
#include "Platform/CameraPlatform.h"

namespace {

constexpr unsigned kImage = 1;

constexpr size_t kDateBytes = 12;  // "2026-11-21" and a year of five digits

// The preview of a picture that the platform serves: a size, and marks instead of byte positions.
constexpr int kServedThumbnailWidth = 160;
constexpr int kServedThumbnailHeight = 120;
constexpr int kServedByPlatform = 1;

const char* OrEmpty(const char* text) { return text != nullptr ? text : ""; }

template <size_t kSize>
std::string FieldText(const char (&field)[kSize]) {
  return std::string(field, strnlen(field, kSize));
}

template <typename Record>
void SetServedThumbnail(Record* record) {
  record->SetThumbnailWidth(kServedThumbnailWidth);
  record->SetThumbnailHeight(kServedThumbnailHeight);
  record->SetThumbnailLength(kServedByPlatform);
  record->SetThumbnailOffset(kServedByPlatform);
}

void SetServedPreviews(ImageMetaData* record) {
  SetServedThumbnail(record);
  record->SetScreennailLength(kServedByPlatform);
  record->SetScreennailOffset(kServedByPlatform);
}

void SetTitleFromPath(MediaMetaData* record, const char* path) {
  const orx::TextPtr title(MediaMetaData::GetTitleFromFullPath(path));
  record->SetTitle(title.get());
}

std::string Resolution(int width, int height) {
  return std::to_string(width) + "x" + std::to_string(height);
}

// Rates that no film has, from a damaged file, count as unknown.
std::string WholeFrames(double frameRate) {
  const bool plausible = frameRate > 0 && frameRate < 1e9;
  return std::to_string(plausible ? static_cast<long>(frameRate) : 0);
}

char* NewText(const std::string& text) { return ORXCString::DupCopy(text.c_str()); }

unsigned LeadingNumber(const char* text) {
  return text != nullptr ? static_cast<unsigned>(ORXAString::Long(text)) : 0;
}

// How the server describes the item's resource in a protocolInfo's fourth field.
std::string AdditionalInfo(const char* profile) {
  if (profile == nullptr || strcmp(profile, "*") == 0) return "DLNA.ORG_OP=01";
  return std::string("DLNA.ORG_PN=") + profile + ";DLNA.ORG_OP=01";
}

struct FreeDisplayInfo {
  void operator()(MediaFileDisplayInfo* info) const { FreeMediaFileDisplayInfo(info); }
};
using DisplayInfoPtr = std::unique_ptr<MediaFileDisplayInfo, FreeDisplayInfo>;

DisplayInfoPtr NewDisplayInfo() {
  DisplayInfoPtr info(new (std::nothrow) MediaFileDisplayInfo());
  if (info != nullptr) info->Res = new (std::nothrow) MediaFileDisplayRes();
  if (info == nullptr || info->Res == nullptr) return nullptr;
  return info;
}

// The fields of one kind of medium.  False for a record of no known kind.
bool FillKindOfMedium(const MediaMetaData* record, MediaFileDisplayInfo* info) {
  MediaFileDisplayRes* res = info->Res;
  if (const auto* image = dynamic_cast<const ImageMetaData*>(record)) {
    res->Resolution = NewText(Resolution(image->GetWidth(), image->GetHeight()));
  } else if (const auto* audio = dynamic_cast<const AudioMetaData*>(record)) {
    info->Duration = LeadingNumber(audio->GetDuration());
    info->Artist = ORXCString::DupCopy(audio->GetArtist());
    info->AlbumTitle = ORXCString::DupCopy(audio->GetAlbumTitle());
    res->BitRate = NewText(std::to_string(audio->GetBitrate()));
  } else if (const auto* video = dynamic_cast<const VideoMetaData*>(record)) {
    info->Duration = LeadingNumber(video->GetDuration());
    res->FrameRate = NewText(WholeFrames(video->GetVideoFrameRate()));
  } else {
    return false;
  }
  return true;
}

const orx::PictureRule kDescribedPictures = {&MRCP_JPEG_Extension,
                                             [](DirectoryScanner* scanner, const char* path) {
                                               return scanner->__ExtractImageMetadata(path);
                                             }};

// False for a record of no known kind.
bool FillMediaFileInfos(const MediaMetaData* record, const char* fullPath, MediaFileInfos* infos) {
  infos->setFilePath(fullPath);
  infos->setTitle(record->GetTitle());
  infos->setDate(record->GetDate());
  infos->setMimeType(record->GetMimeType());
  infos->setFileSize(std::to_string(record->GetSize()).c_str());
  infos->setDlnaProfile(record->GetDLNAProfile());
  infos->setObjectType(static_cast<int>(record->GetType()));
  if (const auto* image = dynamic_cast<const ImageMetaData*>(record)) {
    infos->setResolution(Resolution(image->GetWidth(), image->GetHeight()).c_str());
  } else if (const auto* video = dynamic_cast<const VideoMetaData*>(record)) {
    infos->setDuration(LeadingNumber(video->GetDuration()));
    infos->setBitRate(WholeFrames(video->GetVideoFrameRate()).c_str());
    infos->setResolution(Resolution(video->GetWidth(), video->GetHeight()).c_str());
  } else {
    return false;
  }
  return true;
}

}  // namespace

void FreeMediaFileDisplayInfo(MediaFileDisplayInfo* info) {
  if (info == nullptr) return;
  if (MediaFileDisplayRes* res = info->Res; res != nullptr) {
    for (char* text : {res->Protocol, res->MimeType, res->Size, res->Resolution, res->FrameRate,
                       res->BitRate, res->AdditionalInfo})
      ORXMemory::Free(text);
    delete res;
  }
  for (char* text : {info->Title, info->Date, info->Artist, info->AlbumTitle})
    ORXMemory::Free(text);
  delete info;
}

MediaFileDisplayInfo* DirectoryScanner::ParseAndGetFileInfo(const char* fullPath) try {
  const orx::FaultWatch watch;
  const orx::LocalTimeScope zone;
  if (fullPath == nullptr) {
    ORX_LOG_INFO("pMedia File Path Not Found [%s]", "");
    return nullptr;
  }
  const std::string path(fullPath);
  const size_t slash = path.rfind('/');
  if (slash == std::string::npos) {
    ORX_LOG_INFO("[DirectoryScanner::ParseAndGetFileInfo] pTmpStr is NULL!!!");
    return nullptr;
  }
  if (slash + 1 == path.size()) {
    ORX_LOG_INFO("pMedia File Path Name [%s] Not Found File Name", fullPath);
    return nullptr;
  }
  std::unique_ptr<MediaMetaData> record;
  if (FileParserFramework* parsers = _GetFMParserFramework(); parsers != nullptr) {
    const FileInfomation file(path.substr(0, slash).c_str(), path.c_str() + slash + 1, fullPath);
    record.reset(parsers->HandleFile(&file));
  }
  if (record == nullptr) return nullptr;

  DisplayInfoPtr info = NewDisplayInfo();
  if (info == nullptr) {
    ORX_LOG_INFO("[ExtractMetadata] Memory Alocation failed. [%s]", fullPath);
    return nullptr;
  }
  info->Title = ORXCString::DupCopy(record->GetTitle());
  info->Date = ORXCString::DupCopy(record->GetDate());
  info->ObjectType = static_cast<int>(record->GetType());
  info->Res->Protocol = NewText("http");
  info->Res->MimeType = ORXCString::DupCopy(record->GetMimeType());
  info->Res->Size = NewText(std::to_string(record->GetSize()));
  info->Res->AdditionalInfo = NewText(AdditionalInfo(record->GetDLNAProfile()));
  if (!FillKindOfMedium(record.get(), info.get())) {
    ORX_LOG_INFO("[ORXMediaPaser::ExtractMetadata] Invalid Content Type!!! %s", fullPath);
    return nullptr;
  }
  return info.release();
} catch (const std::exception&) {
  orx::NoteOutOfMemory(__func__);
  return nullptr;
}

MediaFileInfos* DirectoryScanner::ParseAndGetMediaFileInfo(const char* fullPath) try {
  const orx::FaultWatch watch;
  const orx::LocalTimeScope zone;
  const orx::TextPtr name(_GetFileNameFromFullPathMA(fullPath));
  const char* dot = name != nullptr ? strrchr(name.get(), '.') : nullptr;
  if (dot == nullptr) {
    ORX_LOG_INFO(
        "\n[DirectoryScanner::ParseAndGetMediaFileInfo] [%s] is not a valid file with extension "
        "\n",
        OrEmpty(fullPath));
    return nullptr;
  }
  bool supported = false;
  const std::unique_ptr<MediaMetaData> record =
      orx::PlatformRecord(this, kDescribedPictures, dot + 1, fullPath, &supported);
  if (!supported) {
    ORX_LOG_INFO("[DirectoryScanner::ParseAndGetMediaFileInfo]  [%s] Extension not supported",
                 name.get());
    return nullptr;
  }
  if (record == nullptr) {
    ORX_LOG_INFO("[DirectoryScanner::ParseAndGetMediaFileInfo] Media file [%s] parsing failed.\n",
                 name.get());
    return nullptr;
  }
  MediaFileInfos* infos = MediaFileInfos::GetInstance();
  if (infos == nullptr) {
    ORX_LOG_INFO("[DirectoryScanner::ParseAndGetMediaFileInfo] Memory Alocation failed. [%s]",
                 fullPath);
    return nullptr;
  }
  if (!FillMediaFileInfos(record.get(), fullPath, infos)) {
    ORX_LOG_INFO("[DirectoryScanner::ParseAndGetMediaFileInfo] Invalid Content Type!!! %s",
                 fullPath);
    return nullptr;
  }
  ORX_LOG_INFO("[DirectoryScanner::ParseAndGetMediaFileInfo] Filled All Details to FileInfo");
  return infos;
} catch (const std::exception&) {
  orx::NoteOutOfMemory(__func__);
  return nullptr;
}

int DirectoryScanner::__ExtractFileSizeAndDateFromName(const char* path, long long* size,
                                                       char* date) {
  if (size == nullptr || date == nullptr) return 0;
  const orx::OpenedFile file(path);
  if (file.lostStatus()) {
    ORX_LOG_ERROR("[DirectoryScanner::__ExtractFileSizeAndDateFromName] Fstat failed [%s]\n", path);
    return 0;
  }
  if (!file.ok()) {
    ORX_LOG_ERROR(
        "[DirectoryScanner::__ExtractFileSizeAndDateFromName] Cannot Open the File  [%s]\n",
        OrEmpty(path));
    return 0;
  }
  *size = file.status().st_size;
  const time_t modified = file.status().st_mtime;
  if (modified == -1) {
    ORX_LOG_ERROR("[DirectoryScanner::__ExtractFileSizeAndDateFromName] Failed to get the date\n");
    return 0;
  }
  const orx::LocalTimeScope zone;
  struct tm local = {};
  if (localtime_r(&modified, &local) == nullptr) {
    ORX_LOG_ERROR("[DirectoryScanner::__ExtractFileSizeAndDateFromName] gtm == NULL \n");
    return 0;
  }
  if (strftime(date, kDateBytes, "%Y-%m-%d", &local) == 0) date[0] = '\0';
  return 1;
}

ImageMetaData* DirectoryScanner::__ExtractImageMetadata() {
  return orx::Guarded(__func__, static_cast<ImageMetaData*>(nullptr), [&]() -> ImageMetaData* {
    auto record = std::make_unique<ImageMetaData>();
    UniqueValueGenerator* names = &orx::Existing(UniqueValueGenerator::GetInstance());
    const orx::TextPtr thumbnail(names->GetUniqueThumbnailURIMA("jpg"));
    record->SetThumbnailURI(thumbnail.get());
    const orx::TextPtr screennail(names->GetUniqueScreennailURIMA("jpg"));
    record->SetScreennailURI(screennail.get());
    SetServedPreviews(record.get());
    return record.release();
  });
}

ImageMetaData* DirectoryScanner::__ExtractImageMetadata(const char* path) try {
  const orx::FaultWatch watch;
  if (path == nullptr) return nullptr;
  auto record = std::make_unique<ImageMetaData>();
  ORX_LOG_INFO("[DirectoryScanner::__ExtractImageMetadata] Parsing [%s]\n", path);
  sFileAttribute attributes = {};
  if (QUILWifi_getFileAttribute(const_cast<char*>(path), &attributes) == 0) {
    ORX_LOG_ERROR("[FileParser_JPEG::__ExtractMetadata2] UILWifi_getFileAttribute Error!!!");
    attributes = {};
    attributes.nFileSize = ORXGetFileSize(path);
    ORXCString::Copy(attributes.szDate, "0000-00-00");
  }
  record->SetDate(FieldText(attributes.szDate).c_str());
  record->SetSize(attributes.nFileSize);
  record->SetHeight(attributes.nHeight);
  record->SetWidth(attributes.nWidth);
  const char* profile = orx::JpegProfile(attributes.nHeight, attributes.nWidth);
  record->SetDLNAProfile(profile != nullptr ? profile : "*");
  record->SetType(kImage);
  record->SetMimeType("image/jpeg");
  SetTitleFromPath(record.get(), path);
  SetServedPreviews(record.get());
  return record.release();
} catch (const std::exception&) {
  orx::NoteOutOfMemory(__func__);
  return nullptr;
}

VideoMetaData* DirectoryScanner::__ExtractVideoMetadata(const char* path) try {
  const orx::FaultWatch watch;
  if (path == nullptr) return nullptr;
  sVideoAttribute attributes = {};
  if (QUILWifi_getVideoAttribute(const_cast<char*>(path), &attributes) == 0) {
    ORX_LOG_INFO("[DirectoryScanner::__ExtractVideoMetadata] QUILWifi_getVideoAttribute Error!!!");
    attributes = {};
  }
  auto record = std::make_unique<VideoMetaData>();
  const orx::TextPtr thumbnail(
      orx::Existing(UniqueValueGenerator::GetInstance()).GetUniqueVideoThumbnailURIMA("jpg"));
  record->SetThumbnailURI(thumbnail.get());
  record->SetDate(FieldText(attributes.szDate).c_str());
  record->SetSize(attributes.nFileSize);
  record->SetDuration(std::to_string(attributes.nDuration).c_str());
  record->SetWidth(attributes.nWidth);
  record->SetHeight(attributes.nHeight);
  record->SetVideoFrameRate(attributes.dFrameRate);
  SetTitleFromPath(record.get(), path);
  SetServedThumbnail(record.get());
  return record.release();
} catch (const std::exception&) {
  orx::NoteOutOfMemory(__func__);
  return nullptr;
}

char* DirectoryScanner::__GetJPEGProfile(int height, int width) {
  return orx::NewJpegProfile(height, width);
}

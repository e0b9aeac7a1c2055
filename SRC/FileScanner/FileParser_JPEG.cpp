#include "FileScanner/FileParser_JPEG.h"

#include <cstring>
#include <memory>
#include <string>

#include "FileScanner/ExtensionList.h"
#include "FileScanner/FileInfomation.h"
#include "FileScanner/ImageMetaData.h"
#include "FileScanner/JpegProfile.h"
#include "MediaReaders/exif_reader.h"
#include "OSAL/Fault.h"
#include "OSAL/ORXLog.h"
#include "OSAL/StringUtiltiy.h"
#include "OSAL/TextPtr.h"
#include "Platform/CameraPlatform.h"

namespace {

using ImagePtr = std::unique_ptr<ImageMetaData>;

constexpr char kOwnExtensions[] = "jpg, jpeg, mpo, krz";
constexpr char kMimeType[] = "image/jpeg";
constexpr char kNoProfile[] = "*";
constexpr char kNoDate[] = "0000-00-00";
constexpr unsigned kImage = 1;              // type of the record
constexpr int kModeWithoutScreennails = 6;  // of sharing
constexpr int kScreennailFound = 1;

// The file is a picture, or may be one: it has no extension or one that nobody knows.
bool IsMine(const FileInfomation* file) {
  return file != nullptr && !orx::BelongsToAnotherParser(kOwnExtensions, file->GetExtension());
}

MediaMetaData* WithExtension(ImageMetaData* record, const FileInfomation* file) {
  if (record != nullptr)
    record->SetEXT(orx::TextPtr(StringUtiltiy::GetUtf8FromTChar(file->GetExtension())).get());
  return record;
}

// Looks for the screen-size preview; in the sharing mode that does without, the platform is not
// asked.
void TakeScreennail(char* path, ImageMetaData* record) {
  if (GetTandemixMode() == kModeWithoutScreennails) return;
  int width = 0, height = 0, offset = 0, length = 0;
  ORX_LOG_INFO("input => strFileName = %s \n", path);
  const int result = QUILWifi_getJpegScreennailInfo(path, &width, &height, &offset, &length);
  ORX_LOG_INFO(
      "output retVal = %d, nScreenWidth = %d, nScreenHeight = %d, nScreenOffset = 0x%x, "
      "nScreenLen = %d \n",
      result, width, height, static_cast<unsigned>(offset), length);
  if (result != kScreennailFound) {
    ORX_LOG_INFO("[__ExtractMetadata] NPL_GetJPEGScreennailInfo Fail!! \n");
    return;
  }
  record->SetScreennailLength(length);
  record->SetScreennailOffset(offset);
  record->SetScreennailWidth(width);
  record->SetScreennailHeight(height);
}

void SetProfile(ImageMetaData* record) {
  const char* profile = orx::JpegProfile(record->GetHeight(), record->GetWidth());
  record->SetDLNAProfile(profile != nullptr ? profile : kNoProfile);
}

// The size, the date and, when the platform knows them, the dimensions of the picture at `path`.
void TakePlatformAttributes(char* path, ImageMetaData* record) {
  sFileAttribute attributes = {};
  if (QUILWifi_getFileAttribute(path, &attributes) == 0) {
    ORX_LOG_ERROR("[FileParser_JPEG::__ExtractMetadata2] UILWifi_getFileAttribute Error!!!");
    attributes = {};
    attributes.nFileSize = ORXGetFileSize(path);
    memcpy(attributes.szDate, kNoDate, sizeof kNoDate);
  }
  const size_t dateLength = strnlen(attributes.szDate, sizeof attributes.szDate);
  record->SetDate(std::string(attributes.szDate, dateLength).c_str());
  record->SetSize(attributes.nFileSize);
  record->SetHeight(attributes.nHeight);
  record->SetWidth(attributes.nWidth);
}

}  // namespace

FileParser_JPEG::~FileParser_JPEG() = default;

MediaMetaData* FileParser_JPEG::ParseFIle(const FileInfomation* file) {
  if (!IsMine(file)) return nullptr;
  return WithExtension(__ExtractMetadata(file->GetFullFileName()), file);
}

MediaMetaData* FileParser_JPEG::ParseFIle2(const FileInfomation* file) {
  if (!IsMine(file)) return nullptr;
  return WithExtension(__ExtractMetadata2(file->GetFullFileName(), file->GetDcfIndex(),
                                          file->GetSortIndex(), file->GetFileType()),
                       file);
}

ImageMetaData* FileParser_JPEG::__ExtractMetadata(const char* path) try {
  const orx::FaultWatch watch;
  const orx::TextPtr utf8(StringUtiltiy::GetUtf8FromTChar(path));
  if (utf8 == nullptr) return nullptr;
  ORX_LOG_INFO("[FileParser_JPEG::__ExtractMetadata] Parsing [%s]", utf8.get());

  long long size = 0;
  int width = 0, height = 0, orientation = 0;
  int thumbOffset = 0, thumbLength = 0, thumbWidth = 0, thumbHeight = 0;
  long fileTime = 0;
  char *dateText = nullptr, *descriptionText = nullptr;
  const int parsed =
      exif_get_metadata(utf8.get(), &size, &width, &height, &thumbOffset, &thumbLength, &thumbWidth,
                        &thumbHeight, &orientation, &dateText, &fileTime, &descriptionText);
  const orx::TextPtr date(dateText), description(descriptionText);
  if (!parsed) {
    ORX_LOG_INFO("[FileParser_JPEG::__ExtractMetadata] Parsing [%s] failed", utf8.get());
    return nullptr;
  }

  ImagePtr record(new ImageMetaData);
  const orx::TextPtr name(StringUtiltiy::GetUtf8FromMultiByteStr(utf8.get()));
  record->SetFullPath(utf8.get());
  record->SetTitle(orx::TextPtr(MediaMetaData::GetTitleFromFullPath(name.get())).get());
  record->SetSortIndex(orx::TextPtr(MediaMetaData::GetSortIndexFromFullPath(name.get())).get());
  record->SetDate(date.get());
  record->SetSize(size);
  record->SetType(kImage);
  record->SetMimeType(kMimeType);
  record->SetDescription(description.get());
  record->SetHeight(height);
  record->SetWidth(width);
  record->SetThumbnailLength(thumbLength);
  record->SetThumbnailOffset(thumbOffset);
  record->SetThumbnailWidth(thumbWidth);
  record->SetThumbnailHeight(thumbHeight);
  TakeScreennail(utf8.get(), record.get());
  SetProfile(record.get());
  ORX_LOG_INFO("[%s] Parse Success", utf8.get());
  return record.release();
} catch (const std::exception&) {
  orx::NoteOutOfMemory(__func__);
  return nullptr;
}

ImageMetaData* FileParser_JPEG::__ExtractMetadata2(const char* path, int /*dcfIndex*/,
                                                   int sortIndex, int /*fileType*/) try {
  const orx::FaultWatch watch;
  const orx::TextPtr utf8(StringUtiltiy::GetUtf8FromTChar(path));
  if (utf8 == nullptr) return nullptr;
  ORX_LOG_INFO("[FileParser_JPEG::__ExtractMetadata] Parsing [%s]\n", utf8.get());

  ImagePtr record(new ImageMetaData);
  TakePlatformAttributes(utf8.get(), record.get());
  const orx::TextPtr name(StringUtiltiy::GetUtf8FromMultiByteStr(utf8.get()));
  record->SetFullPath(utf8.get());
  record->SetTitle(orx::TextPtr(MediaMetaData::GetTitleFromFullPath(name.get())).get());
  record->SetSortIndex(std::to_string(sortIndex).c_str());
  record->SetType(kImage);
  record->SetMimeType(kMimeType);
  SetProfile(record.get());
  ORX_LOG_INFO("[%s] Parse Success\n", utf8.get());
  return record.release();
} catch (const std::exception&) {
  orx::NoteOutOfMemory(__func__);
  return nullptr;
}

char* FileParser_JPEG::__GetJPEGProfile(int height, int width) {
  return orx::NewJpegProfile(height, width);
}

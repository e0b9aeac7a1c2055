#include "FileScanner/PlatformRecord.h"

#include <string>

#include "FileScanner/DirectoryScanner.h"
#include "FileScanner/ExtensionList.h"
#include "FileScanner/ImageMetaData.h"
#include "FileScanner/VideoMetaData.h"

namespace orx {
namespace {

constexpr unsigned kVideo = 3;

std::unique_ptr<MediaMetaData> FilmRecord(DirectoryScanner* scanner, const char* path) {
  std::unique_ptr<MediaMetaData> record(scanner->__ExtractVideoMetadata(path));
  if (record == nullptr) return nullptr;
  record->SetMimeType("video/mp4");
  record->SetType(kVideo);
  record->SetDLNAProfile("*");
  return record;
}

}  // namespace

std::unique_ptr<MediaMetaData> PlatformRecord(DirectoryScanner* scanner,
                                              const PictureRule& pictures, const char* extension,
                                              const char* path, bool* supported) {
  const std::string lower = LowerCaseExtension(extension);
  *supported = true;
  if (ListHasExtension(*pictures.extensions, lower.c_str()))
    return std::unique_ptr<MediaMetaData>(pictures.newRecord(scanner, path));
  if (ListHasExtension(MP4_Extension, lower.c_str())) return FilmRecord(scanner, path);
  *supported = false;
  return nullptr;
}

}  // namespace orx

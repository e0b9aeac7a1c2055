// The parser of still pictures: JPEG, and MPO and raw files with a JPEG's structure (Exif 2.3).
#pragma once

#include "FileScanner/FileParser.h"
#include "Platform/Export.h"

class ImageMetaData;

class ORX_API FileParser_JPEG : public FileParser {
 public:
  ~FileParser_JPEG() override;

  MediaMetaData* ParseFIle(const FileInfomation* file) override;
  MediaMetaData* ParseFIle2(const FileInfomation* file) override;

  // New records, owned by the caller; null on failure.  The first reads the file, the second takes
  // the platform's attributes (`dcfIndex` and `fileType` are not used).
  ImageMetaData* __ExtractMetadata(const char* path);
  ImageMetaData* __ExtractMetadata2(const char* path, int dcfIndex, int sortIndex, int fileType);

  // The DLNA profile for a size in pixels: "JPEG_SM" up to 640x480, "JPEG_MED" up to 1024x768,
  // "JPEG_LRG"; null when either is 0.  A new text, released with ORXMemory::Free.
  char* __GetJPEGProfile(int height, int width);
};

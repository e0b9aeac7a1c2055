// The parser of films and sound: MP4, 3GPP, QuickTime, M4A/M4B (ISO/IEC 14496-12), AAC in ADTS
// framing, AC-3.
#pragma once

#include "FileScanner/FileParser.h"
#include "MediaReaders/mp4_reader.h"
#include "Platform/Export.h"

class ORX_API FileParser_MP4 : public FileParser {
 public:
  ~FileParser_MP4() override;

  MediaMetaData* ParseFIle(const FileInfomation* file) override;
  MediaMetaData* ParseFIle2(const FileInfomation* file) override;

  // New records (VideoMetaData or AudioMetaData), owned by the caller; null on failure.  `ext` is
  // the lower-case extension, null when it is unknown.  The first reads the file, the second takes
  // the platform's attributes (`dcfIndex` and `fileType` are not used).
  MediaMetaData* __ExtractMetadata(const char* path, const char* ext);
  MediaMetaData* __ExtractMetadata2(const char* path, const char* ext, int dcfIndex, int sortIndex,
                                    int fileType);

  // DLNA profile names of a film and of a sound file; new texts, released with ORXMemory::Free;
  // null when no profile fits.
  char* __GetMp4Profile(mp4_dlna_prop_t prop);
  char* __GetMp4aProfile(mp4_dlna_prop_t prop);
};

// The records of files that are not parsed: what they are follows from the extension, what is known
// of them comes from the platform.
#pragma once

#include <memory>

class DirectoryScanner;
class ImageMetaData;
class MediaMetaData;

namespace orx {

// Which files are pictures, and how the record of one is made.
struct PictureRule {
  const char* const* extensions;  // the list, as it is when the rule is applied
  ImageMetaData* (*newRecord)(DirectoryScanner* scanner, const char* path);
};

// A new record for the file at `path`, a picture by `pictures` or else a film; null when it is
// neither, and then `supported` is false, or when the record cannot be made.
std::unique_ptr<MediaMetaData> PlatformRecord(DirectoryScanner* scanner,
                                              const PictureRule& pictures, const char* extension,
                                              const char* path, bool* supported);

}  // namespace orx

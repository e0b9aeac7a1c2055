// Metadata records for the tests of the database, filled with values of every kind.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "FileScanner/AudioMetaData.h"
#include "FileScanner/ImageMetaData.h"
#include "FileScanner/VideoMetaData.h"

namespace orx_test {

// The values of a record's fields: texts are made from `text`, and a number differs from field to
// field by adding its place to `number`.
struct RecordValues {
  const char* name;         // of the kind
  bool missing = false;     // no text is set, every number is 0
  std::string text;         // put into every text
  long long size = 0;       // bytes
  int number = 0;           // base of the numbers
  double real = 0;          // frame rate; the level is half of it
  long bitrate = 0;         // of a film
  bool soundTrack = false;  // of a film
};

// Kinds of values that every statement takes, whichever quote it uses.
std::vector<RecordValues> OrdinaryValues();

// Records of type 1, 2 and 3, and a plain record of any type, without an id.
std::unique_ptr<ImageMetaData> MakeImage(const RecordValues& values);
std::unique_ptr<AudioMetaData> MakeAudio(const RecordValues& values);
std::unique_ptr<VideoMetaData> MakeVideo(const RecordValues& values);
std::unique_ptr<MediaMetaData> MakePlain(unsigned type, const RecordValues& values);

// A record of the class that belongs to the type, plain for 0 and above 3.
std::unique_ptr<MediaMetaData> MakeRecord(unsigned type, const RecordValues& values);

// A picture with nothing but a type and a path.
std::unique_ptr<ImageMetaData> MakeImageAt(const std::string& path);

// A missing text as it is written.
inline const char* OrBlank(const char* text) { return text != nullptr ? text : " "; }

}  // namespace orx_test

// Makes records of every kind and reads them back: what the headers define inline needs what the
// library exports.
#include <cstdio>
#include <cstring>

#include "FileScanner/AudioMetaData.h"
#include "FileScanner/FileInfomation.h"
#include "FileScanner/FileParserFramework.h"
#include "FileScanner/FileParser_JPEG.h"
#include "FileScanner/FileParser_MP4.h"
#include "FileScanner/ImageMetaData.h"
#include "FileScanner/MediaFileInfos.h"
#include "FileScanner/MediaRes.h"
#include "FileScanner/MultimediaQueryMgr.h"
#include "FileScanner/VideoMetaData.h"
#include "OSAL/ORXFSHandler.h"
#include "OSAL/ORXLog.h"

namespace {

class OwnParser : public FileParser {
 public:
  MediaMetaData* ParseFIle(const FileInfomation* file) override {
    auto* record = new ImageMetaData;
    record->SetTitle(file->GetFileName());
    return record;
  }
  MediaMetaData* ParseFIle2(const FileInfomation*) override { return nullptr; }
};

int failures = 0;

void Expect(const char* text, const char* expected) {
  if (text != nullptr && strcmp(text, expected) == 0) return;
  printf("expected %s, found %s\n", expected, text != nullptr ? text : "nothing");
  ++failures;
}

}  // namespace

int main() {
  const FileInfomation file("/a", "b.jpg", "/a/b.jpg");
  Expect(file.GetExtension(), "jpg");

  VideoMetaData video;
  auto* track = new AudioMetaData;
  track->SetArtist("artist");
  video.SetAudioData(track);
  Expect(video.GetAudioData()->GetArtist(), "artist");

  OwnParser parser;
  MediaMetaData* record = parser.Parse(&file);
  Expect(record->GetTitle(), "b.jpg");
  Expect(dynamic_cast<ImageMetaData*>(record) != nullptr ? "a picture" : "no picture", "a picture");
  delete record;

  MediaFileInfos::GetInstance()->setTitle("title");
  Expect(MediaFileInfos::GetInstance()->getTitle(), "title");
  MediaFileInfos::DestroyInstance();

  FileParserFramework framework;
  Expect(framework._GetFirstFileParser() != nullptr ? "a parser" : "no parser", "a parser");
  FileParser_MP4 mp4;
  FileParser_JPEG jpeg;
  Expect(mp4.SetNextParser(&jpeg) == &jpeg ? "the next" : "another", "the next");

  const MediaRes resource;
  const MediaOptionalRes optionalResource;
  Expect(resource.getPszTitle() == nullptr && optionalResource.getPszDate() == nullptr ? "empty"
                                                                                       : "filled",
         "empty");
  const MultimediaQueryMgr query;
  const ORXFSHandler folder;
  ORX_LOG_INFO("%d rows", query.nRows);
  return failures == 0 ? 0 : 1;
}

// The chain of parsers: MP4 first, then JPEG.  It owns its parsers.
#pragma once

#include <vector>

#include "Platform/Export.h"

class FileInfomation;
class FileParser;
class MediaMetaData;

class ORX_API FileParserFramework {
 public:
  FileParserFramework();
  ~FileParserFramework();
  FileParserFramework(const FileParserFramework&) = delete;
  FileParserFramework& operator=(const FileParserFramework&) = delete;

  // A new record from the first parser that takes the file, owned by the caller; null when none
  // does, when `file` is null and when there is no parser.  HandleFile reads the file itself,
  // HandleFile2 asks the platform.
  MediaMetaData* HandleFile(const FileInfomation* file);
  MediaMetaData* HandleFile2(const FileInfomation* file);

  void _InitializeParsers();
  void _AddFileParser(FileParser* parser);       // takes it over; null is ignored
  void _SetFirstFileParser(FileParser* parser);  // null is ignored
  FileParser* _GetFirstFileParser() const { return FirstFileParser; }
  void _TerminateParsers();
  void _ClearFileParserList();  // deletes every parser; the first one stays set

 private:
  bool CanParse(const FileInfomation* file) const;

  std::vector<FileParser*> parsers_;
  FileParser* FirstFileParser = nullptr;
  bool firstParserDeleted_ = false;
};

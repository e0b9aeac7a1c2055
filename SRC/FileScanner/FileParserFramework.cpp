#include "FileScanner/FileParserFramework.h"

#include "FileScanner/FileParser.h"
#include "FileScanner/FileParser_JPEG.h"
#include "FileScanner/FileParser_MP4.h"

FileParserFramework::FileParserFramework() { _InitializeParsers(); }

FileParserFramework::~FileParserFramework() {
  _TerminateParsers();
  FirstFileParser = nullptr;
}

bool FileParserFramework::CanParse(const FileInfomation* file) const {
  return file != nullptr && FirstFileParser != nullptr && !firstParserDeleted_;
}

MediaMetaData* FileParserFramework::HandleFile(const FileInfomation* file) {
  return CanParse(file) ? FirstFileParser->Parse(file) : nullptr;
}

MediaMetaData* FileParserFramework::HandleFile2(const FileInfomation* file) {
  return CanParse(file) ? FirstFileParser->Parse2(file) : nullptr;
}

void FileParserFramework::_InitializeParsers() {
  auto* mp4 = new FileParser_MP4;
  auto* jpeg = new FileParser_JPEG;
  _AddFileParser(mp4);
  _AddFileParser(jpeg);
  _SetFirstFileParser(mp4);
  mp4->SetNextParser(jpeg);
}

void FileParserFramework::_AddFileParser(FileParser* parser) {
  if (parser != nullptr) parsers_.push_back(parser);
}

void FileParserFramework::_SetFirstFileParser(FileParser* parser) {
  if (parser == nullptr) return;
  FirstFileParser = parser;
  firstParserDeleted_ = false;
}

void FileParserFramework::_TerminateParsers() { _ClearFileParserList(); }

void FileParserFramework::_ClearFileParserList() {
  for (FileParser* parser : parsers_) {
    if (parser == FirstFileParser) firstParserDeleted_ = true;
    delete parser;
  }
  parsers_.clear();
}

#include "FileScanner/FileParserFramework.h"

#include <memory>

#include "FileScanner/FileParser.h"
#include "FileScanner/FileParser_JPEG.h"
#include "FileScanner/FileParser_MP4.h"
#include "OSAL/Fault.h"

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
  parsers_.reserve(parsers_.size() + 2);  // what is made below has its place
  auto mp4 = std::make_unique<FileParser_MP4>();
  auto jpeg = std::make_unique<FileParser_JPEG>();
  mp4->SetNextParser(jpeg.get());
  _SetFirstFileParser(mp4.get());
  _AddFileParser(mp4.release());
  _AddFileParser(jpeg.release());
}

void FileParserFramework::_AddFileParser(FileParser* parser) {
  if (parser == nullptr) return;
  if (!orx::Guarded(__func__, [&] { parsers_.push_back(parser); })) delete parser;
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

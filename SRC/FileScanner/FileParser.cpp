#include "FileScanner/FileParser.h"

FileParser::~FileParser() = default;

FileParser* FileParser::SetNextParser(FileParser* next) {
  NextParser = next;
  return next;
}

MediaMetaData* FileParser::WalkChain(Operation parse, const FileInfomation* file) {
  for (FileParser* parser = this; parser != nullptr; parser = parser->GetNextParser())
    if (MediaMetaData* record = (parser->*parse)(file); record != nullptr) return record;
  return nullptr;
}

MediaMetaData* FileParser::Parse(const FileInfomation* file) {
  return WalkChain(&FileParser::ParseFIle, file);
}

MediaMetaData* FileParser::Parse2(const FileInfomation* file) {
  return WalkChain(&FileParser::ParseFIle2, file);
}

// One link of the chain of parsers: turns a file into a metadata record, or declines it.
#pragma once

#include "Platform/Export.h"

class FileInfomation;
class MediaMetaData;

class ORX_API FileParser {
 public:
  FileParser() = default;
  virtual ~FileParser();
  FileParser(const FileParser&) = delete;
  FileParser& operator=(const FileParser&) = delete;

  // A new record, owned by the caller; null when the file is not this parser's or cannot be read.
  virtual MediaMetaData* ParseFIle(const FileInfomation* file) = 0;   // reads the file itself
  virtual MediaMetaData* ParseFIle2(const FileInfomation* file) = 0;  // asks the platform

  FileParser* SetNextParser(FileParser* next);  // not owned; returned
  FileParser* GetNextParser() const { return NextParser; }

  // The record of the first parser, from this one on, that returns one; null when none does.
  MediaMetaData* Parse(const FileInfomation* file);
  MediaMetaData* Parse2(const FileInfomation* file);

 private:
  using Operation = MediaMetaData* (FileParser::*)(const FileInfomation*);
  MediaMetaData* WalkChain(Operation parse, const FileInfomation* file);

  FileParser* NextParser = nullptr;
};

// One file that a scan found, as it is handed to the parsers.
//
// Made on the heap or the stack for one parser call.  Texts are copies; getters lend them and give
// null for what is not set.
#pragma once

#include <cstdio>

#include "FileScanner/OwnedText.h"
#include "Platform/Export.h"

class ORX_API FileInfomation {
 public:
  FileInfomation(const char* dir, const char* name, const char* fullPath);
  // With the numbers of a shared file: its place in the platform's list, its sort number, its type.
  FileInfomation(const char* dir, const char* name, const char* fullPath, int dcfIndex,
                 int sortIndex, int fileType);
  ~FileInfomation() = default;
  FileInfomation(const FileInfomation&) = delete;
  FileInfomation& operator=(const FileInfomation&) = delete;

  void SetFileName(const char* name) { fileName_.Set(name); }
  void SetFullFileName(const char* path) { fullFileName_.Set(path); }
  void SetDirPath(const char* path) { dirPath_.Set(path); }
  // Keeps what follows the last "." of `name`; a name without "." changes nothing.
  void SetExtension(const char* name);
  void SetLocalTime(FILE* file);  // does nothing: a file's local time is not kept
  void SetDcfIndex(int index) { dcfIndex_ = index; }
  void SetSortIndex(int index) { sortIndex_ = index; }
  void SetFileType(int type) { fileType_ = type; }

  char* GetExtension() const { return extension_.Get(); }        // without the dot
  char* GetFileName() const { return fileName_.Get(); }          // the bare name
  char* GetFullFileName() const { return fullFileName_.Get(); }  // directory, separator and name
  char* GetFilePath() const { return dirPath_.Get(); }           // the directory
  char* GetLocalTime() const { return localTime_.Get(); }        // always null
  int GetDcfIndex() const { return dcfIndex_; }
  int GetSortIndex() const { return sortIndex_; }
  int GetFileType() const { return fileType_; }

 private:
  orx::OwnedText extension_;
  orx::OwnedText fileName_;
  orx::OwnedText fullFileName_;
  orx::OwnedText dirPath_;
  orx::OwnedText localTime_;
  int dcfIndex_ = 0;
  int sortIndex_ = 0;
  int fileType_ = 0;
};

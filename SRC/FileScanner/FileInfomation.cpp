#include "FileScanner/FileInfomation.h"

#include <cstring>

FileInfomation::FileInfomation(const char* dir, const char* name, const char* fullPath) {
  SetDirPath(dir);
  SetFullFileName(fullPath);
  SetFileName(name);
  SetExtension(GetFileName());
  SetLocalTime(nullptr);
}

FileInfomation::FileInfomation(const char* dir, const char* name, const char* fullPath,
                               int dcfIndex, int sortIndex, int fileType)
    : FileInfomation(dir, name, fullPath) {
  SetDcfIndex(dcfIndex);
  SetSortIndex(sortIndex);
  SetFileType(fileType);
}

void FileInfomation::SetExtension(const char* name) {
  if (name == nullptr) return;
  const char* dot = strrchr(name, '.');
  if (dot != nullptr) extension_.Set(dot + 1);
}

void FileInfomation::SetLocalTime(FILE* /*file*/) {}

// The display fields of one parsed file, for the server to read back.
//
// One instance in the process, filled by DirectoryScanner::ParseAndGetMediaFileInfo; the server
// destroys it before the next file.  Setters store a copy and ignore null; getters lend the text.
#pragma once

#include "FileScanner/OwnedText.h"
#include "Platform/Export.h"

class ORX_API MediaFileInfos {
 public:
  static MediaFileInfos* GetInstance();  // created on first use
  static void DestroyInstance();         // harmless when there is none

  void setFilePath(const char* text) { filePath_.Set(text); }
  char* getFilePath() const { return filePath_.Get(); }
  void setTitle(const char* text) { title_.Set(text); }
  char* getTitle() const { return title_.Get(); }
  void setDate(const char* text) { date_.Set(text); }
  char* getDate() const { return date_.Get(); }
  void setMimeType(const char* text) { mimeType_.Set(text); }
  char* getMimeType() const { return mimeType_.Get(); }
  void setDlnaProfile(const char* text) { dlnaProfile_.Set(text); }
  char* getDlnaProfile() const { return dlnaProfile_.Get(); }
  void setBitRate(const char* text) { bitRate_.Set(text); }
  char* getBitRate() const { return bitRate_.Get(); }
  void setResolution(const char* text) { resolution_.Set(text); }
  char* getResolution() const { return resolution_.Get(); }
  void setFileSize(const char* text) { fileSize_.Set(text); }
  char* getFileSize() const { return fileSize_.Get(); }  // bytes, as decimal text
  void setObjectType(int type) { objectType_ = type; }
  int getObjectType() const { return objectType_; }  // 1 image, 3 video
  void setDuration(unsigned int duration) { duration_ = duration; }
  unsigned int getDuration() const { return duration_; }  // milliseconds

  static MediaFileInfos* mpThisInstance;

 private:
  MediaFileInfos() = default;
  ~MediaFileInfos() = default;

  orx::OwnedText filePath_;
  orx::OwnedText title_;
  orx::OwnedText date_;
  orx::OwnedText mimeType_;
  orx::OwnedText dlnaProfile_;
  orx::OwnedText bitRate_;
  orx::OwnedText resolution_;
  orx::OwnedText fileSize_;
  int objectType_ = 0;
  unsigned int duration_ = 0;
};

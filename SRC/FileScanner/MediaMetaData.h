// What is known of one media file, on its way from a parser to the database.
//
// Texts are terminated UTF-8.  A setter stores a copy and ignores null; a getter lends the stored
// text, null when there is none.  A text that a setter supersedes stays readable until the record
// is destroyed; only SetDate releases the earlier value.  A record belongs to whoever received it
// and is deleted through the virtual destructor.
#pragma once

#include "FileScanner/OwnedText.h"
#include "Platform/Export.h"

class MediaOptionalRes;
class MediaRes;

class ORX_API MediaMetaData {
 public:
  MediaMetaData() = default;
  virtual ~MediaMetaData();
  MediaMetaData(const MediaMetaData&) = delete;
  MediaMetaData& operator=(const MediaMetaData&) = delete;

  unsigned int GetType() const { return Type_; }
  void SetType(unsigned int value) { Type_ = value; }
  char* GetUniqueID() const { return UniqueID_.Get(); }
  void SetUniqueID(const char* text) { UniqueID_.Set(text); }
  void ClearUniqueID() { UniqueID_.Clear(); }  // of a row that was undone; gives up the text
  char* GetFullPath() const { return FullPath_.Get(); }
  void SetFullPath(const char* text) { FullPath_.Set(text); }
  char* GetURI() const { return URI_.Get(); }
  void SetURI(const char* text) { URI_.Set(text); }
  char* GetEXT() const { return EXT_.Get(); }
  void SetEXT(const char* text) { EXT_.Set(text); }
  char* GetTitle() const { return Title_.Get(); }
  void SetTitle(const char* text) { Title_.Set(text); }
  char* GetMimeType() const { return MimeType_.Get(); }
  void SetMimeType(const char* text) { MimeType_.Set(text); }
  char* GetDate() const { return Date_.Get(); }
  void SetDate(const char* text) { Date_.Replace(text); }  // gives up the earlier date
  long long GetSize() const { return Size_; }
  void SetSize(long long value) { Size_ = value; }
  char* GetDirectoryID() const { return DirectoryID_.Get(); }
  void SetDirectoryID(const char* text) { DirectoryID_.Set(text); }
  char* GetDLNAProfile() const { return DLNAProfile_.Get(); }
  void SetDLNAProfile(const char* text) { DLNAProfile_.Set(text); }
  char* GetSortIndex() const { return SortIndex_.Get(); }
  void SetSortIndex(const char* text) { SortIndex_.Set(text); }

  // The file name of `path` without its last extension, "No Title" when that is empty; the whole
  // path when it has no '/'.  A new text, released with ORXMemory::Free; null for null.
  static char* GetTitleFromFullPath(const char* path);

  // The DCF sort key of `path`: the first three characters of the last folder's name, then the file
  // name from its fifth character up to its last extension: "1000001" for
  // ".../100PHOTO/IMGA0001.JPG".  A path without '/' is returned as it is, one with a single '/' as
  // what stands before it.  Null when either number is empty or too long (4 and 5 characters).
  // A new text, released with ORXMemory::Free.
  static char* GetSortIndexFromFullPath(const char* path);

 private:
  unsigned int Type_ = 0;       // 0 container or not set, 1 image, 2 audio, 3 video
  orx::OwnedText UniqueID_;     // id of the row in the database
  orx::OwnedText FullPath_;     // absolute path of the file
  orx::OwnedText URI_;          // resource name under which the server publishes the file
  orx::OwnedText EXT_;          // extension as found, in UTF-8
  orx::OwnedText Title_;        // display title
  orx::OwnedText MimeType_;     // e.g. "image/jpeg"
  orx::OwnedText Date_;         // e.g. "2026-11-21"
  long long Size_ = 0;          // bytes
  orx::OwnedText DirectoryID_;  // id of the row of the containing directory
  MediaRes* Res_ = nullptr;     // owned; nothing in the library fills it
  MediaOptionalRes* OptionalRes_ = nullptr;  // likewise
  orx::OwnedText DLNAProfile_;               // profile name, "*" when none applies
  orx::OwnedText SortIndex_;                 // DCF sort key: folder number, then file number
};

// A media file as a database names it, read where the database says that something is.
#pragma once

#include <string>

namespace orxscan {

class MediaFile {
 public:
  // Opens a regular file; anything else counts as not there.
  explicit MediaFile(const std::string& path);
  ~MediaFile();
  MediaFile(const MediaFile&) = delete;
  MediaFile& operator=(const MediaFile&) = delete;

  // Where the open file is, with no link on the way; empty when that cannot be told.
  std::string Place() const;

  bool present() const { return present_; }           // there is such a regular file
  bool readable() const { return descriptor_ >= 0; }  // and it could be opened
  long long size() const { return size_; }            // bytes, 0 when not present

  // Whether the bytes are inside the file; never for a negative place or none at all.
  bool Holds(long long offset, long long length) const;
  // The bytes; fewer, or none, when they are not inside the file or cannot be read.
  std::string Read(long long offset, long long length) const;

 private:
  int descriptor_ = -1;
  bool present_ = false;
  long long size_ = 0;
};

}  // namespace orxscan

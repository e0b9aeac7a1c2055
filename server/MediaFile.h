// A file of the card, opened with care: whatever its name stands for by now, only a regular file is
// opened, and opening never waits.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

#include "Catalogue.h"

namespace orxserve {

class MediaFile {
 public:
  static MediaFile Open(const std::string& path);  // not open when it is no regular file
  ~MediaFile();
  MediaFile(MediaFile&& other) noexcept;
  MediaFile& operator=(MediaFile&&) = delete;

  bool isOpen() const { return descriptor_ >= 0; }
  uint64_t size() const { return size_; }
  // A validator in the form of HTTP: changes whenever the file does.
  std::string EntityTag() const;
  time_t changed() const { return changed_.tv_sec; }

  std::string Read(uint64_t offset, size_t length) const;  // less at the end of the file
  bool HasJpegAt(const PiecePlace& place) const;           // wholly inside, beginning as one does
  int Release();                                           // the descriptor, now the caller's

 private:
  explicit MediaFile(int descriptor) : descriptor_(descriptor) {}
  int descriptor_;
  uint64_t size_ = 0;
  uint64_t inode_ = 0;
  timespec changed_{};
};

}  // namespace orxserve

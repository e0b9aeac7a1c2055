#include "MediaFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <utility>

#include "Hash.h"

namespace orxserve {

MediaFile MediaFile::Open(const std::string& path) {
  MediaFile file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat status = {};
  if (!file.isOpen()) return file;
  if (fstat(file.descriptor_, &status) != 0 || !S_ISREG(status.st_mode)) {
    close(std::exchange(file.descriptor_, -1));
    return file;
  }
  file.size_ = static_cast<uint64_t>(status.st_size);
  file.inode_ = status.st_ino;
  file.changed_ = status.st_mtim;
  return file;
}

MediaFile::MediaFile(MediaFile&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)),
      size_(other.size_),
      inode_(other.inode_),
      changed_(other.changed_) {}

MediaFile::~MediaFile() {
  if (isOpen()) close(descriptor_);
}

std::string MediaFile::EntityTag() const {
  Hash hash;
  hash.Add(size_).Add(inode_).Add(static_cast<uint64_t>(changed_.tv_sec));
  hash.Add(static_cast<uint64_t>(changed_.tv_nsec));
  constexpr char kDigits[] = "0123456789abcdef";
  std::string tag = "\"";
  for (int shift = 60; shift >= 0; shift -= 4) tag += kDigits[hash.value() >> shift & 15];
  return tag + '"';
}

std::string MediaFile::Read(uint64_t offset, size_t length) const {
  std::string bytes(length, '\0');
  const ssize_t count = pread(descriptor_, bytes.data(), length, static_cast<off_t>(offset));
  bytes.resize(count < 0 ? 0 : static_cast<size_t>(count));
  return bytes;
}

bool MediaFile::HasJpegAt(const PiecePlace& place) const {
  if (place.length < 4 || place.offset > size_ || place.length > size_ - place.offset) return false;
  std::array<unsigned char, 2> start{};
  const auto offset = static_cast<off_t>(place.offset);
  return pread(descriptor_, start.data(), start.size(), offset) == 2 && start[0] == 0xFF &&
         start[1] == 0xD8;
}

int MediaFile::Release() { return std::exchange(descriptor_, -1); }

}  // namespace orxserve

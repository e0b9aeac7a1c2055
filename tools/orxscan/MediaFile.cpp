#include "MediaFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>

namespace orxscan {

MediaFile::MediaFile(const std::string& path) {
  struct stat64 status = {};
  if (stat64(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return;
  present_ = true;
  size_ = static_cast<long long>(status.st_size);
  descriptor_ = open64(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  // Another file may have taken its place since.
  if (descriptor_ >= 0 && (fstat64(descriptor_, &status) != 0 || !S_ISREG(status.st_mode))) {
    close(descriptor_);
    descriptor_ = -1;
  }
}

MediaFile::~MediaFile() {
  if (descriptor_ >= 0) close(descriptor_);
}

std::string MediaFile::Place() const {
  std::array<char, PATH_MAX> place;
  const std::string link = "/proc/self/fd/" + std::to_string(descriptor_);
  const ssize_t length = readable() ? readlink(link.c_str(), place.data(), place.size()) : -1;
  const bool whole = length > 0 && static_cast<size_t>(length) < place.size();
  return whole ? std::string(place.data(), static_cast<size_t>(length)) : "";
}

bool MediaFile::Holds(long long offset, long long length) const {
  return offset >= 0 && length > 0 && offset < size_ && length <= size_ - offset;
}

std::string MediaFile::Read(long long offset, long long length) const {
  if (!readable() || !Holds(offset, length)) return "";
  std::string bytes(static_cast<size_t>(length), '\0');
  size_t filled = 0;
  while (filled < bytes.size()) {
    const ssize_t count = pread64(descriptor_, &bytes[filled], bytes.size() - filled,
                                  static_cast<off64_t>(offset) + static_cast<off64_t>(filled));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    filled += static_cast<size_t>(count);
  }
  bytes.resize(filled);
  return bytes;
}

}  // namespace orxscan

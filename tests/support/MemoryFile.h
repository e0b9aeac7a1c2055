// A file that never reaches a disk, for tests that read thousands of them.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace orx_test {

class MemoryFile {
 public:
  explicit MemoryFile(const std::string& content = "") : descriptor_(memfd_create("orxscan", 0)) {
    if (descriptor_ < 0) {
      perror("memfd_create");
      abort();
    }
    path_ = "/proc/self/fd/" + std::to_string(descriptor_);
    Set(content);
  }
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  // Replaces the content.
  void Set(const std::string& content) const {
    if (ftruncate(descriptor_, 0) != 0 || pwrite(descriptor_, content.data(), content.size(), 0) !=
                                              static_cast<ssize_t>(content.size()))
      abort();
  }
  const char* path() const { return path_.c_str(); }

 private:
  int descriptor_;
  std::string path_;
};

}  // namespace orx_test

// A directory of a test's own, removed with everything in it at the end.
#pragma once

#include <string>

namespace orx_test {

class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::string& path() const { return path_; }
  std::string Path(const std::string& name) const { return path_ + "/" + name; }
  // Writes a file and returns its path; folders in `name` are made as needed.
  std::string Write(const std::string& name, const std::string& content) const;
  std::string MakeDir(const std::string& name) const;  // and returns its path

 private:
  std::string path_;
};

}  // namespace orx_test

// A database while it is made: it stands beside its place and moves there when it is complete.
#pragma once

#include <string>

namespace orx {

class UnfinishedFile {
 public:
  explicit UnfinishedFile(const char* finalPath);  // removes what an earlier making left
  ~UnfinishedFile();                               // removes what is still unfinished
  UnfinishedFile(const UnfinishedFile&) = delete;
  UnfinishedFile& operator=(const UnfinishedFile&) = delete;

  const char* path() const { return path_.c_str(); }
  bool Finish() const;  // false, and logged, when the file cannot be moved

 private:
  std::string finalPath_;
  std::string path_;
  std::string journal_;
};

}  // namespace orx

// A file that appears under its name when it is complete, and not at all when it cannot be.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace orxscan {

class NewFile {
 public:
  // Begins the file, under another name in the same folder.  Throws a Failure that begins with
  // `kind` and the name.  A signal that ends the command removes the file, too.
  NewFile(const char* kind, const std::string& path);
  ~NewFile();  // removes what was not finished
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  void Write(std::string_view text);
  void Finish();  // gives it its name, replacing an earlier file; both throw a Failure

 private:
  [[noreturn]] void Fail(int error) const;

  const char* kind_;
  std::string path_;
  std::string unfinished_;
  FILE* file_ = nullptr;
};

}  // namespace orxscan

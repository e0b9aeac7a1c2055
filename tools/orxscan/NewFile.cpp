#include "NewFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "Output.h"

namespace orxscan {
namespace {

// What a new file may be for others; asking for it means setting it.
mode_t UsualMode() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

}  // namespace

NewFile::NewFile(const char* kind, const std::string& path)
    : kind_(kind), path_(path), unfinished_(path + ".XXXXXX") {
  const int descriptor = mkostemp(&unfinished_[0], O_CLOEXEC);
  if (descriptor < 0) {
    unfinished_.clear();
    Fail(errno);
  }
  fchmod(descriptor, UsualMode());
  file_ = fdopen(descriptor, "w");
  if (file_ != nullptr) return;
  const int error = errno;
  close(descriptor);
  unlink(unfinished_.c_str());
  Fail(error);
}

NewFile::~NewFile() {
  if (file_ != nullptr) fclose(file_);
  if (!unfinished_.empty()) unlink(unfinished_.c_str());
}

void NewFile::Write(std::string_view text) {
  if (fwrite(text.data(), 1, text.size(), file_) != text.size()) Fail(errno);
}

void NewFile::Finish() {
  FILE* const file = file_;
  file_ = nullptr;
  if (fclose(file) != 0 || rename(unfinished_.c_str(), path_.c_str()) != 0) Fail(errno);
  unfinished_.clear();
}

void NewFile::Fail(int error) const {
  throw Failure("{} {}: {}", kind_, Quoted(path_), strerror(error));
}

}  // namespace orxscan

#include "OSAL/FileOpening.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "OSAL/Fault.h"
#include "OSAL/GuardedFiles.h"

namespace orx {

bool MayBeRead(const struct stat64& status) noexcept {
  return S_ISREG(status.st_mode) || S_ISDIR(status.st_mode);
}

OpenedFile::OpenedFile(const char* path) noexcept {
  if (path == nullptr) return;
  if (stat64(path, &status_) != 0) {
    NoteOpenError("stat", path, errno);
    status_ = {};
    return;
  }
  if (!MayBeRead(status_) || IsGuarded(status_)) return;
  descriptor_ = open64(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (descriptor_ < 0) {
    NoteOpenError("open", path, errno);
    return;
  }
  // Something else may stand there by now.
  lostStatus_ = fstat64(descriptor_, &status_) != 0;
  if (lostStatus_) NoteSystemError("fstat", path, errno);
  if (!lostStatus_ && IsGuarded(status_)) Park(Release());
  if (lostStatus_ || !MayBeRead(status_)) Close();
}

int OpenedFile::Release() noexcept {
  const int descriptor = descriptor_;
  descriptor_ = -1;
  return descriptor;
}

void OpenedFile::Close() noexcept {
  if (descriptor_ >= 0) close(descriptor_);
  descriptor_ = -1;
}

void LetBlock(int descriptor) noexcept {
  const int flags = fcntl(descriptor, F_GETFL);
  if (flags >= 0) fcntl(descriptor, F_SETFL, flags & ~O_NONBLOCK);
}

}  // namespace orx

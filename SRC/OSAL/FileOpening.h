// Opens files and folders for reading: the one place of the library that does.
//
// What is opened is known to be a file or a folder first.  Opening alone does harm elsewhere: it
// starts a watchdog, sets a terminal's lines, or makes the writer of a FIFO lose its data.  Opening
// never blocks.  Guarded files are not opened.
#pragma once

#include <sys/stat.h>

namespace orx {

// Whether what has this status has bytes, or names, to read: no FIFO, socket or device.
bool MayBeRead(const struct stat64& status) noexcept;

// A file or folder that is open for reading, until the object ends.  What the machine fails to
// answer is noted.
class OpenedFile {
 public:
  explicit OpenedFile(const char* path) noexcept;
  ~OpenedFile() { Close(); }
  OpenedFile(const OpenedFile&) = delete;
  OpenedFile& operator=(const OpenedFile&) = delete;

  // Whether it is open and its status is known.
  bool ok() const noexcept { return descriptor_ >= 0; }
  // Whether it could be opened, but its status not be read then.
  bool lostStatus() const noexcept { return lostStatus_; }
  int descriptor() const noexcept { return descriptor_; }  // -1 when it is not open
  int Release() noexcept;  // the descriptor, which the caller closes from now on
  // The open file's.  Of one that did not open: that of its path; all zero when unknown.
  const struct stat64& status() const noexcept { return status_; }

 private:
  void Close() noexcept;

  int descriptor_ = -1;
  bool lostStatus_ = false;
  struct stat64 status_ = {};
};

// Lets reads and writes of a descriptor that was opened with O_NONBLOCK wait again.
void LetBlock(int descriptor) noexcept;

}  // namespace orx

// One reading of a file that is given as text.
#pragma once

#include <string>

#include "MediaReaders/mp4_reader.h"
#include "support/MemoryFile.h"

namespace orx_test {

class Mp4Reading {
 public:
  explicit Mp4Reading(const std::string& content)
      : file_(content), result_(m4a_get_metadata(file_.path(), &meta_)) {}
  ~Mp4Reading() { m4a_free_metadata(&meta_); }
  Mp4Reading(const Mp4Reading&) = delete;
  Mp4Reading& operator=(const Mp4Reading&) = delete;

  int result() const { return result_; }
  const mp4_metadata_t* operator->() const { return &meta_; }
  const mp4_metadata_t& meta() const { return meta_; }

 private:
  MemoryFile file_;
  mp4_metadata_t meta_;
  int result_;
};

// An open handle of a file that is given as text.
class OpenedFile {
 public:
  explicit OpenedFile(const std::string& content)
      : file_(content), handle_(upnp_file_open_read(file_.path())) {}
  ~OpenedFile() { upnp_file_close(handle_); }
  OpenedFile(const OpenedFile&) = delete;
  OpenedFile& operator=(const OpenedFile&) = delete;

  st_UPNP_FILE* get() const { return handle_; }

 private:
  MemoryFile file_;
  st_UPNP_FILE* handle_;
};

}  // namespace orx_test

// The progress line of a scan: "12 of 340 files  /card/DCIM/100ORXSC".
#pragma once

#include <chrono>
#include <string>

#include "Library.h"

namespace orxscan {

// Follows a scan by what the library logs, or by being told.  Draws on the descriptor of standard
// output, and only when that is a terminal.
class Progress {
 public:
  // `found` files are below the folder, `known` of them are in the database already.
  Progress(bool wanted, const std::string& folder, size_t found, size_t known);

  bool active() const { return active_; }
  void Follow(const LogLine& line);
  void FileAdded();  // for a scan whose log does not tell
  void Finish();     // takes the line away

 private:
  void FileEnded();
  void Draw();
  void Write(const std::string& line);

  bool active_;
  std::string folder_;
  size_t found_;
  size_t done_;
  std::string current_;  // the file being parsed, empty between files
  size_t drawn_ = 0;     // columns of the line on the terminal
  std::chrono::steady_clock::time_point lastDraw_;
};

}  // namespace orxscan

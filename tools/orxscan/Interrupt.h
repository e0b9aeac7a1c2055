// Ctrl-C (and a request to terminate) while a scan runs.
#pragma once

#include <csignal>

class DirectoryScanner;

namespace orxscan {

// While it lives, the first SIGINT or SIGTERM cancels the scanner's scan; a second one ends the
// process as it would without this.
class CancelOnSignal {
 public:
  explicit CancelOnSignal(DirectoryScanner* scanner);
  ~CancelOnSignal();
  CancelOnSignal(const CancelOnSignal&) = delete;
  CancelOnSignal& operator=(const CancelOnSignal&) = delete;

 private:
  struct sigaction oldInterrupt_, oldTerminate_;
};

}  // namespace orxscan

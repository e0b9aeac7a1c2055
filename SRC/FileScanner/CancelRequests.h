// What the host asked to stop, for whoever waits on another thread than the scan's.
#pragma once

#include <atomic>

namespace orx {

// Follow the cancel flags of the scanner and of the database manager, whose objects may go at any
// moment.
struct CancelRequests {
  static inline std::atomic<bool> ofScanner{false};
  static inline std::atomic<bool> ofDatabase{false};
  static bool Any() { return ofScanner || ofDatabase; }
};

}  // namespace orx

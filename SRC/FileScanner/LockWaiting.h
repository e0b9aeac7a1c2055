// Waiting for the locks of other connections to the same database.
#pragma once

#include <sqlite3.h>

#include <chrono>

namespace orx {

// Makes the statements of one connection wait while another one reads or writes: up to five
// seconds, or until the host asks to stop.  When a wait has lasted its whole time, the statements
// behind it do not wait again until one has got what it needed.
class LockWaiting {
 public:
  using StopAsked = bool (*)();
  constexpr explicit LockWaiting(StopAsked stopAsked) : stopAsked_(stopAsked) {}

  // The object has to outlive the connection.
  void Install(sqlite3* connection);
  void NoteSuccess() { exhausted_ = false; }  // of a statement

 private:
  using Clock = std::chrono::steady_clock;
  static int Handler(void* self, int tries);
  int WaitAgain(int tries);

  StopAsked stopAsked_;
  Clock::time_point end_;
  bool exhausted_ = false;
};

// The same for a connection that may be used on any thread; it ends at orx::CancelRequests.
void WaitForLocks(sqlite3* connection);

}  // namespace orx

#include "FileScanner/LockWaiting.h"

#include <algorithm>
#include <ctime>

#include "FileScanner/CancelRequests.h"

namespace orx {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kLongestWait{5000};
constexpr milliseconds kLongestPause{20};  // a request to stop is seen behind each

void Pause(milliseconds time) {
  const timespec length = {static_cast<time_t>(time.count() / 1000),
                           static_cast<long>(time.count() % 1000) * 1000000};
  nanosleep(&length, nullptr);
}

milliseconds PauseAfter(int tries) { return std::min(milliseconds(1 + tries), kLongestPause); }

}  // namespace

void LockWaiting::Install(sqlite3* connection) {
  exhausted_ = false;
  sqlite3_busy_handler(connection, Handler, this);
}

int LockWaiting::Handler(void* self, int tries) {
  return static_cast<LockWaiting*>(self)->WaitAgain(tries);
}

// 1 when the statement is to try once more.
int LockWaiting::WaitAgain(int tries) {
  if (exhausted_ || stopAsked_()) return 0;
  const Clock::time_point now = Clock::now();
  if (tries == 0) end_ = now + kLongestWait;
  exhausted_ = now >= end_;
  if (exhausted_) return 0;
  Pause(PauseAfter(tries));
  return 1;
}

// Keeps no state, so that any thread may wait: the tries tell how long it has been.
void WaitForLocks(sqlite3* connection) {
  sqlite3_busy_handler(
      connection,
      [](void*, int tries) {
        milliseconds waited{0};
        for (int i = 0; i < tries; ++i) waited += PauseAfter(i);
        if (waited >= kLongestWait || CancelRequests::Any()) return 0;
        Pause(PauseAfter(tries));
        return 1;
      },
      nullptr);
}

}  // namespace orx

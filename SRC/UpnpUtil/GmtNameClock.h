// The clock behind upnp_date_getGMT_forName: UTC times as digits, without a date conversion on
// every call.
#pragma once

#include <ctime>

namespace orx {

// Keeps one broken-down date and adds the seconds since then, until the day is over.  A clock that
// is put back keeps the date too, and its times count below zero.
class GmtNameClock {
 public:
  // Writes `now` as "20261121093426123" (to milliseconds), at most `size` bytes.  False, with
  // nothing written, when `now` has no date.
  bool Format(const timespec& now, char* dst, size_t size);

 private:
  bool Refresh(time_t now);

  struct tm date_ = {};         // its time of day is that of the last call
  long long secondsOfDay_ = 0;  // at `moment_`
  long long moment_ = 0;        // seconds since 1970
  bool filled_ = false;
};

}  // namespace orx

// The local time zone of a test, put back at its end.
#pragma once

#include <cstdlib>
#include <ctime>
#include <string>

namespace orx_test {

class TimeZone {
 public:
  explicit TimeZone(const char* zone) {
    const char* before = getenv("TZ");
    known_ = before != nullptr;
    before_ = known_ ? before : "";
    setenv("TZ", zone, 1);
    tzset();
  }
  ~TimeZone() {
    if (known_)
      setenv("TZ", before_.c_str(), 1);
    else
      unsetenv("TZ");
    tzset();
  }
  TimeZone(const TimeZone&) = delete;
  TimeZone& operator=(const TimeZone&) = delete;

 private:
  bool known_ = false;
  std::string before_;
};

}  // namespace orx_test

// Tells whether anybody opened a file since the watch began.
#pragma once

#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <string>

namespace orx_test {

class OpenWatch {
 public:
  explicit OpenWatch(const std::string& path) : events_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    EXPECT_GE(inotify_add_watch(events_, path.c_str(), IN_OPEN), 0);
  }
  ~OpenWatch() { close(events_); }
  OpenWatch(const OpenWatch&) = delete;
  OpenWatch& operator=(const OpenWatch&) = delete;

  bool Opened() const {
    inotify_event event = {};
    return read(events_, &event, sizeof event) > 0;
  }

 private:
  int events_;
};

}  // namespace orx_test

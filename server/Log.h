// What the server tells its user: lines on standard error, or in a file with the time.
#pragma once

#include <fmt/format.h>

#include <mutex>
#include <string>

#include "Net.h"

namespace orxserve {

class Log {
 public:
  // `file` is added to; empty: standard error.  Throws a Failure.
  explicit Log(const std::string& file = "", bool verbose = false);

  template <typename... Arguments>
  void Info(fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    Write(fmt::format(format, std::forward<Arguments>(arguments)...));
  }
  template <typename... Arguments>
  void Error(fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    Write("error: " + fmt::format(format, std::forward<Arguments>(arguments)...));
  }
  template <typename... Arguments>
  void Detail(fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    if (verbose_) Write(fmt::format(format, std::forward<Arguments>(arguments)...));
  }

 private:
  void Write(const std::string& line);

  std::mutex mutex_;
  Descriptor file_;
  bool timed_;
  bool verbose_;
};

}  // namespace orxserve

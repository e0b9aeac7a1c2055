// Runs a program and keeps what it says.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace orx_test {

// Whether the tests, and the programs that they run, are built with AddressSanitizer.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif
#else
constexpr bool kSanitized = false;
#endif

struct ProcessResult {
  int status = -1;     // exit status, or 128 + the signal that ended it
  std::string output;  // standard output; on a terminal, everything
  std::string errors;  // standard error
};

// With pipes for its output.  `environment` adds "NAME=value" entries; `prepare` runs in the new
// process before the program starts.
ProcessResult RunProcess(const std::vector<std::string>& arguments,
                         const std::vector<std::string>& environment = {},
                         const std::function<void()>& prepare = nullptr);

// On a terminal of its own.  `onOutput` is called with all output so far, each time there is more;
// it may send the process a signal, or write to the terminal as a user types.
struct Terminal {
  int process;
  int descriptor;
};
ProcessResult RunOnTerminal(
    const std::vector<std::string>& arguments,
    const std::function<void(const std::string& output, Terminal)>& onOutput = nullptr);

}  // namespace orx_test

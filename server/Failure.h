// What ends the program, or a step of it, with one sentence for the user.
#pragma once

#include <fmt/format.h>

#include <stdexcept>
#include <utility>

namespace orxserve {

class Failure : public std::runtime_error {
 public:
  template <typename... Arguments>
  explicit Failure(fmt::format_string<Arguments...> format, Arguments&&... arguments)
      : std::runtime_error(fmt::format(format, std::forward<Arguments>(arguments)...)) {}
};

}  // namespace orxserve

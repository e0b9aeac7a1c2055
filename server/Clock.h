// Seconds on a clock that only goes forward.
#pragma once

#include <chrono>

namespace orxserve {

inline double Now() {
  const auto time = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration<double>(time).count();
}

}  // namespace orxserve

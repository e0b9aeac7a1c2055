// The day of a moment, in UTC, also where `long` has 32 bits and the moment has not.
#pragma once

#include <cstddef>
#include <ctime>

namespace orx {

// Writes "2026-11-21", at most `size` bytes; nothing when the moment has no date.
void WriteGmtDay(time_t time, char* dst, size_t size);

}  // namespace orx

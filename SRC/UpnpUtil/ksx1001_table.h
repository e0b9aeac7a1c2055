// The KS X 1001 character grid: 94 columns, rows from 0xA1 upward, row by row.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orx {

constexpr size_t kKsx1001Columns = 94;
constexpr size_t kKsx1001Positions = 8743;

// The Unicode value of each position; 0 where the cell is empty.
extern const uint16_t kKsx1001Table[kKsx1001Positions];

// The positions that are not empty, ordered by their Unicode value, then by position.
extern const uint16_t kKsx1001ByCode[];
extern const size_t kKsx1001Assigned;

}  // namespace orx

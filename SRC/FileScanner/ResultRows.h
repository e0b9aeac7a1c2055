// The rows of one query, kept while other queries run.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "OSAL/ORXAString.h"

namespace orx {

struct ResultRows {
  bool ok = false;  // false when the query failed; then there are no rows
  int rows = 0;
  int columns = 0;
  std::vector<std::string> cells;  // row after row

  // A cell of the table; `row` and `column` lie inside it.
  const char* Text(int row, int column) const {
    return cells[static_cast<size_t>(row) * static_cast<size_t>(columns) +
                 static_cast<size_t>(column)]
        .c_str();
  }
  int Integer(int row, int column) const { return ORXAString::Integer(Text(row, column)); }
  // A file size in bytes.  What does not fit is the largest size, on every machine as on one whose
  // long has 32 bits.
  uint32_t Size(int row, int column) const {
    return static_cast<uint32_t>(
        std::min<unsigned long>(ORXAString::Ulong(Text(row, column)), UINT32_MAX));
  }
};

}  // namespace orx

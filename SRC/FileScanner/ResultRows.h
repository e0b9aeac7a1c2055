// The rows of one query, kept while other queries run.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "OSAL/ORXAString.h"

namespace orx {

// The cells are packed, as a whole folder or table may be held here.
class ResultRows {
 public:
  bool ok = false;  // false when the query failed; then there are no rows
  int rows = 0;
  int columns = 0;

  void AddCell(const char* text) {
    starts_.push_back(texts_.size());
    texts_.append(text) += '\0';
  }
  // The cells, row after row; `index` is less than their number.
  size_t CellCount() const { return starts_.size(); }
  const char* Cell(size_t index) const { return texts_.c_str() + starts_[index]; }
  // A cell of the table; `row` and `column` lie inside it.
  const char* Text(int row, int column) const {
    return Cell(static_cast<size_t>(row) * static_cast<size_t>(columns) +
                static_cast<size_t>(column));
  }
  int Integer(int row, int column) const { return ORXAString::Integer(Text(row, column)); }
  // A file size in bytes.  What does not fit is the largest size, on every machine as on one whose
  // long has 32 bits.
  uint32_t Size(int row, int column) const {
    return static_cast<uint32_t>(
        std::min<unsigned long>(ORXAString::Ulong(Text(row, column)), UINT32_MAX));
  }
  // The same of a size that is read as a signed number.
  uint32_t SignedSize(int row, int column) const {
    const long size = strtol(Text(row, column), nullptr, 10);
    return static_cast<uint32_t>(std::min<long long>(size, UINT32_MAX));
  }

 private:
  std::string texts_;           // a terminator behind each
  std::vector<size_t> starts_;  // of the cells
};

}  // namespace orx

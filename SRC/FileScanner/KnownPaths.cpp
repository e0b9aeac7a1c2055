#include "FileScanner/KnownPaths.h"

#include <algorithm>
#include <cstring>

namespace orx {

bool KnownPaths::Contains(const char* path) {
  if (path == nullptr || count_ <= 0) return false;
  const int next = cursor_ < count_ ? cursor_ + 1 : 1;
  if (rows_[next] != nullptr && strcmp(rows_[next], path) == 0) {
    cursor_ = next;
    return true;
  }
  if (!indexed_) {
    index_.reserve(static_cast<size_t>(count_));
    for (int i = 1; i <= count_; ++i)
      if (rows_[i] != nullptr) index_.emplace_back(rows_[i]);
    std::sort(index_.begin(), index_.end());
    indexed_ = true;
  }
  const bool found = std::binary_search(index_.begin(), index_.end(), std::string_view(path));
  if (found) cursor_ = next;  // one entry was left out of order; go on behind it
  return found;
}

}  // namespace orx

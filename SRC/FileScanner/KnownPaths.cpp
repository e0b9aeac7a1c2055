#include "FileScanner/KnownPaths.h"

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
      if (rows_[i] != nullptr) index_.insert(rows_[i]);
    indexed_ = true;
  }
  const bool found = index_.count(path) != 0;
  if (found) cursor_ = next;  // one entry was left out of order; go on behind it
  return found;
}

}  // namespace orx

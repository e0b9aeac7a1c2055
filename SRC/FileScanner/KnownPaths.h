// The paths that the database already has under one directory.
#pragma once

#include <string_view>
#include <vector>

namespace orx {

// Answers "is this path registered?" over a one-column result table of SQLite's, whose entry 0 is
// the header.  Directory listings and database rows mostly come in the same order, so the entry
// behind the last hit is tried first; only when that fails is the whole table indexed, once.  The
// table outlives the object.
class KnownPaths {
 public:
  KnownPaths(char** rows, int count) : rows_(rows), count_(rows != nullptr ? count : 0) {}

  bool Contains(const char* path);

 private:
  char** rows_;
  int count_;
  int cursor_ = 0;  // the entry of the last hit, 0 at the start and behind the end
  bool indexed_ = false;
  std::vector<std::string_view> index_;  // sorted: a set takes three times the memory
};

}  // namespace orx

#include "FileScanner/KnownPaths.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// A one-column result table: a header and the given paths.
class Table {
 public:
  explicit Table(std::vector<std::string> paths) : cells_(std::move(paths)) {
    cells_.insert(cells_.begin(), "FullPath");
    for (std::string& cell : cells_) rows_.push_back(cell.data());
  }
  char** rows() { return rows_.data(); }
  int count() const { return static_cast<int>(rows_.size()) - 1; }

 private:
  std::vector<std::string> cells_;
  std::vector<char*> rows_;
};

TEST(KnownPaths, FindsEveryPathInTableOrder) {
  Table table({"a", "b", "c"});
  orx::KnownPaths known(table.rows(), table.count());
  for (const char* path : {"a", "b", "c"}) EXPECT_TRUE(known.Contains(path)) << path;
}

TEST(KnownPaths, FindsEveryPathInAnyOrderAndAgain) {
  Table table({"a", "b", "c", "d"});
  orx::KnownPaths known(table.rows(), table.count());
  for (const char* path : {"d", "a", "a", "c", "b", "d", "c"})
    EXPECT_TRUE(known.Contains(path)) << path;
}

TEST(KnownPaths, KnowsNoOtherPathAndNotTheHeader) {
  Table table({"a", "b"});
  orx::KnownPaths known(table.rows(), table.count());
  EXPECT_FALSE(known.Contains("FullPath"));
  EXPECT_FALSE(known.Contains("A"));
  EXPECT_FALSE(known.Contains(""));
  EXPECT_FALSE(known.Contains(nullptr));
  EXPECT_TRUE(known.Contains("a"));
}

TEST(KnownPaths, AnEmptyOrMissingTableKnowsNothing) {
  Table table({});
  EXPECT_FALSE(orx::KnownPaths(table.rows(), 0).Contains("FullPath"));
  EXPECT_FALSE(orx::KnownPaths(nullptr, 3).Contains("a"));
}

TEST(KnownPaths, TakesDuplicatesAndNullCellsInItsStride) {
  Table table({"a", "a", "b"});
  table.rows()[2] = nullptr;
  orx::KnownPaths known(table.rows(), table.count());
  EXPECT_TRUE(known.Contains("a"));
  EXPECT_TRUE(known.Contains("b"));
  EXPECT_TRUE(known.Contains("a"));
}

}  // namespace

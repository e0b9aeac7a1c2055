// An open media database of a test's own, and a second connection that looks at what is in it.
#pragma once

#include <string>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
#include "support/FakePlatform.h"
#include "support/TempDir.h"

namespace orx_test {

// All rows of `sql`, cells as text, NULL as "NULL".
using Rows = std::vector<std::vector<std::string>>;

// Opens the file at `path` on a connection of its own for one query.
Rows Select(const std::string& path, const std::string& sql);

// Resets the fake platform, sets the sharing mode, and opens a new database with its layout.
class TestDatabase {
 public:
  explicit TestDatabase(int sharingMode = 0);
  ~TestDatabase();

  DataBaseMgr* manager() const { return DataBaseMgr::GetInstance(); }
  DataBaseMgr* operator->() const { return manager(); }
  const std::string& path() const { return path_; }
  Rows Select(const std::string& sql) const { return orx_test::Select(path_, sql); }
  std::string Cell(const std::string& sql) const;  // the only cell of the result
  void AllowTriggers() const;                      // of the test's own
  void Run(const std::string& sql) const;          // fails the test when the statement fails

 private:
  TempDir directory_;
  std::string path_;
};

}  // namespace orx_test

// A scanner with the default profile list, a folder to scan and the path of a database.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DirectoryScanner.h"
#include "support/FakePlatform.h"
#include "support/TempDir.h"
#include "support/TestDatabase.h"

namespace orx_test {

class ScannerTest : public testing::Test {
 protected:
  ScannerTest() {
    FakePlatform::Reset();
    DataBaseMgr::DestroyInstance();
    DirectoryScanner::DestroyInstance();
    card_ = temp_.MakeDir("card");
    db_ = temp_.Path("media.db");
    scanner()->SetDlnaProfiles(pProfiles);
  }
  ~ScannerTest() override {
    DirectoryScanner::DestroyInstance();
    DataBaseMgr::DestroyInstance();
  }

  static DirectoryScanner* scanner() { return DirectoryScanner::GetInstance(); }
  static FakePlatform& platform() { return FakePlatform::Get(); }
  std::string InCard(const std::string& name) const { return card_ + "/" + name; }
  std::string Write(const std::string& name, const std::string& content) const {
    return temp_.Write("card/" + name, content);
  }
  // Scans the card and returns the status.
  int Scan() const {
    int status = 0;
    scanner()->ScanDir(card_.c_str(), db_.c_str(), &status);
    return status;
  }
  // Opens the database and leaves it open for the operations of a test.
  DataBaseMgr* Open() const {
    EXPECT_EQ(DataBaseMgr::GetInstance()->OpenDB(db_.c_str()), 1);
    return DataBaseMgr::GetInstance();
  }
  Rows Select(const std::string& sql) const { return orx_test::Select(db_, sql); }
  // The first column of all rows.
  std::vector<std::string> Column(const std::string& sql) const {
    std::vector<std::string> cells;
    for (const auto& row : Select(sql)) cells.push_back(row.at(0));
    return cells;
  }
  std::string Cell(const std::string& sql) const {
    const Rows rows = Select(sql);
    return rows.size() == 1 ? rows[0].at(0) : "(" + std::to_string(rows.size()) + " rows)";
  }

  TempDir temp_;
  std::string card_;
  std::string db_;
};

}  // namespace orx_test

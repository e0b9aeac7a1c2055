// Cards to scan, and what a database says about them.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fuzz/support/QuietPlatform.h"
#include "support/TempDir.h"

namespace orx_test {

// The programs run a short version of these tests, and all of it with ORXSCAN_SOAK set.
bool IsSoak();

// The four ways to scan a card: the tree, or the list of shared files in one of three layouts.
enum class ScanKind { kFolder, kFull, kObjectOnly, kBackup };
const char* NameOf(ScanKind kind);
constexpr ScanKind kScanKinds[] = {ScanKind::kFolder, ScanKind::kFull, ScanKind::kObjectOnly,
                                   ScanKind::kBackup};

// A folder of media and a database.  Each test has its own.
class CardTest : public testing::Test {
 protected:
  explicit CardTest(ScanKind kind = ScanKind::kFolder);
  ~CardTest() override;

  std::string Write(const std::string& name, const std::string& content) const;
  std::string InCard(const std::string& name) const { return card_ + "/" + name; }
  void WriteSmallCard() const;  // five media in three folders, and something else
  // Takes a file and a folder away, changes a file and adds one.
  void ChangeSmallCard() const;
  // With a scanner of its own; the status, which is `status` before.
  int Scan(int status = 0) const;
  // The platform as it is for the kind of scan, sharing what is on the card.
  QuietPlatform& ResetPlatform() const;
  void ForgetList() const;  // of shared files, which some scans keep for the next

  // The database, whose integrity is checked, in words that two databases of the same card have in
  // common: the rows of all tables by path, each with its parent's path instead of its id and the
  // kind of its resource names instead of the names.
  std::vector<std::string> Contents() const;
  std::string DatabaseBytes() const;  // empty when there is none
  void RestoreDatabase(const std::string& bytes) const;

  ScanKind kind_;
  TempDir temp_;
  std::string card_;
  std::string db_;
};

// What one of the two has and the other has not, line by line.
std::string Difference(const std::vector<std::string>& found,
                       const std::vector<std::string>& expected);

}  // namespace orx_test

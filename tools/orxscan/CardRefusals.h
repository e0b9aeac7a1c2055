// Why shared files of a card are not in the database after a scan.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "CardScan.h"
#include "Refusal.h"

namespace orxscan {

// Used after the scan, while the library's list of shared files is there.
class CardRefusals {
 public:
  // `errors` are those of the scan.
  CardRefusals(DirectoryScanner* scanner, ScanMode scan, int sharingMode, LibraryErrors errors);

  // The shared files that are not among `registered`, each with its reason.
  LeftOut Of(const std::vector<std::string>& shared, const std::set<std::string>& registered) const;

 private:
  // `index` is the file's place among the shared ones.
  Reason WhyLeftOut(const std::string& uri, size_t index) const;
  bool KindIsShared(const std::string& uri) const;
  bool ScanTakesKind(const std::string& uri) const;

  DirectoryScanner* scanner_;
  ScanMode scan_;
  int sharingMode_;
  LibraryErrors errors_;
  std::set<std::string> listed_;  // by the scan that keeps a list of its own
};

}  // namespace orxscan

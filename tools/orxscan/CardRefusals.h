// Why shared files of a card are not in the database after a scan.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "CardScan.h"
#include "Refusal.h"

namespace orxscan {

// Used after the scan, within a QuietLibrary, while the library's list of shared files is there.
class CardRefusals {
 public:
  // `errors` are those of the scan.
  CardRefusals(DirectoryScanner* scanner, ScanMode scan, int sharingMode,
               const std::vector<std::string>& errors);

  // The shared files that are not among `registered`, each with its reason.  `untaken` counts those
  // that the database did not take.
  std::vector<Refusal> Of(const std::vector<std::string>& shared,
                          const std::set<std::string>& registered, size_t* untaken) const;

 private:
  // `index` is the file's place among the shared ones; empty when there is no reason.
  std::string Reason(const std::string& uri, size_t index) const;
  bool KindIsShared(const std::string& uri) const;
  bool ScanTakesKind(const std::string& uri) const;

  DirectoryScanner* scanner_;
  ScanMode scan_;
  int sharingMode_;
  bool insertFailed_ = false;
  std::set<std::string> listed_;  // by the scan that keeps a list of its own
};

}  // namespace orxscan

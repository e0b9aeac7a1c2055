// What a scan has changed, as a table for people and as JSON for programs.
#pragma once

#include <array>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "MediaDatabase.h"
#include "Refusal.h"

namespace orxscan {

struct Change {
  size_t added = 0;
  size_t removed = 0;
  size_t total = 0;  // in the database after the scan
};

struct ScanSummary {
  std::string folder;
  std::string database;
  bool cancelled = false;
  double seconds = 0;
  size_t filesFound = 0;
  std::array<Change, 4> changes = {};  // by class: folders, pictures, sounds, films
  LeftOut leftOut;                     // after a cancelled scan, what it could not read alone
  std::vector<ProfileCount> profiles;

  // Counts the rows that came and went; a row is the same when id, class and path are.
  void Compare(const std::vector<ObjectRow>& before, const std::vector<ObjectRow>& after);
  void Print() const;
  nlohmann::ordered_json Json() const;
};

// Prints the summary, or nothing when `quiet`, and returns the exit status.  Tells what is missing,
// and throws a Failure then unless the scan was cancelled.
int Report(const ScanSummary& summary, bool json, bool quiet);

}  // namespace orxscan

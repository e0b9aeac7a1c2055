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
  std::vector<Refusal> refused;        // empty after a cancelled scan
  size_t untaken = 0;                  // of those refused: the database did not take them
  std::vector<ProfileCount> profiles;

  // Counts the rows that came and went; a row is the same when id, class and path are.
  void Compare(const std::vector<ObjectRow>& before, const std::vector<ObjectRow>& after);
  void Print() const;
  nlohmann::ordered_json Json() const;
};

// Prints the summary, or nothing when `quiet`, and returns the exit status.  Throws a Failure when
// the database did not take a file.
int Report(const ScanSummary& summary, bool json, bool quiet);

}  // namespace orxscan

// Why a file is not in the database.
#pragma once

#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "FolderTree.h"

class DirectoryScanner;

namespace orxscan {

struct Refusal {
  std::string path;
  std::string reason;
};

// Why the scanner refuses the file at `path`; empty when it has no reason.  Asks the library's own
// parsers and profile filter, whose output should be silenced.
std::string ReasonToRefuse(DirectoryScanner* scanner, const std::string& path);

// The files that are not among `registered`, each with its reason.  `unexplained` counts those for
// which the scanner has none: the database did not take them.
std::vector<Refusal> Refusals(DirectoryScanner* scanner, const std::vector<FoundFile>& files,
                              const std::set<std::string>& registered, size_t* unexplained);

// As a list under a heading, cut when it is long; nothing when there are none.
void PrintRefusals(const std::vector<Refusal>& refused);
nlohmann::ordered_json RefusalsAsJson(const std::vector<Refusal>& refused);

}  // namespace orxscan

// Why a file is not in the database.
#pragma once

#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "FolderTree.h"

class DirectoryScanner;

namespace orxscan {

class LibraryErrors;
class QuietLibrary;

struct Refusal {
  std::string path;
  std::string reason;
};

// What a scan has left out.  What is refused does not belong in the database; what is missing does,
// as far as anybody can tell: it could not be read, or it was not taken.
struct LeftOut {
  std::vector<Refusal> refused;
  std::vector<Refusal> missing;
};

// Why a file is not in the database; no text: there is no reason.
struct Reason {
  std::string text;
  bool missing = false;  // the file could not be read
};

// Why the scanner refuses the file at `path`.  Asks the library's own parsers and profile filter,
// which `library` keeps silent.
Reason ReasonToRefuse(DirectoryScanner* scanner, const std::string& path,
                      const QuietLibrary& library);
// The same for a file that is not in the database after a scan with these errors; the text says
// what is known, and is never empty.
Reason WithScanErrors(Reason reason, const std::string& path, const LibraryErrors& errors);

// The files that are not among `registered`, each with its reason, and what the walk could not
// read.  `errors` are those of the scan.
LeftOut FilesLeftOut(DirectoryScanner* scanner, const FolderTree& tree,
                     const std::set<std::string>& registered, const LibraryErrors& errors);

// What the errors of a scan name beyond what is missing already.
void AddFailures(const LibraryErrors& errors, std::vector<Refusal>* missing);

// As a list under a heading, cut when it is long; nothing when there are none.
void PrintRefusals(const std::vector<Refusal>& refused);
// A line each on standard error, cut when they are many.
void TellMissing(const std::vector<Refusal>& missing);
nlohmann::ordered_json RefusalsAsJson(const std::vector<Refusal>& refused);

}  // namespace orxscan

// The files below a folder, found by the same rules as a scan finds them.
#pragma once

#include <string>
#include <vector>

namespace orxscan {

struct FoundFile {
  std::string path;
  bool reachable;  // false: a scan passes it over, because its path is too long
};

// Every file below `root` that a scan looks at or has to pass over, in the order of the walk;
// folders whose path is too long stand for all that is in them.  The files of the database at
// `databasePath` are left out.
std::vector<FoundFile> FilesBelow(const std::string& root, const std::string& databasePath);

}  // namespace orxscan

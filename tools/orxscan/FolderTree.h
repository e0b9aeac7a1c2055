// The files below a folder, found by the same rules as a scan finds them.
#pragma once

#include <string>
#include <vector>

namespace orxscan {

struct FoundFile {
  std::string path;
  bool reachable;  // false: a scan passes it over, because its path is too long
};

// A folder, or an entry of one, that cannot be looked into.
struct UnreadEntry {
  std::string path;
  std::string reason;
};

struct FolderTree {
  std::vector<FoundFile> files;  // in the order of the walk
  std::vector<UnreadEntry> unread;
};

// Every file below `root` that a scan looks at or has to pass over; folders whose path is too long
// stand for all that is in them.  The files of the database at `databasePath` are left out.
FolderTree TreeBelow(const std::string& root, const std::string& databasePath);

}  // namespace orxscan

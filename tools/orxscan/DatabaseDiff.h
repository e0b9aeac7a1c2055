// What is different between two media databases: the model of `orxscan diff`.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "DatabaseFile.h"

namespace orxscan {

struct FieldChange {
  std::string
      field;  // a column's name; "parent" for the parent folder's path, "medium" for its row
  std::string before;
  std::string after;
};

// An item or a folder, known by its path.
struct ObjectDiff {
  std::string path;
  int mediaClass;        // 0 folder, 1 picture, 2 sound, 3 film; the later one
  std::string idBefore;  // empty when it was added
  std::string idAfter;   // empty when it was removed
  bool registeredAnew;   // its id or the numbers in its resource names are others
  std::vector<FieldChange> changes;
};

// Every list is in the order of the paths, byte by byte.
struct DatabaseDiff {
  std::vector<ObjectDiff> added;
  std::vector<ObjectDiff> removed;
  std::vector<ObjectDiff> changed;         // what is recorded of them; perhaps registered anew, too
  std::vector<ObjectDiff> registeredAnew;  // and nothing else changed
  size_t same = 0;
  std::vector<std::string> notCompared;  // columns that only one of the two has

  bool SameContent() const { return added.empty() && removed.empty() && changed.empty(); }
};

// Objects are matched by FullPath.  Ids and the numbers in resource names count upwards over a
// database's life, so they are no content: an object in which they differ was registered anew.
// Throws a Failure when a database cannot be read.
DatabaseDiff Compare(const DatabaseFile& before, const DatabaseFile& after);

}  // namespace orxscan

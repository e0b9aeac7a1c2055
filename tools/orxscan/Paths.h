// What the user names on the command line, checked before the library touches anything.
#pragma once

#include <string>
#include <vector>

namespace orxscan {

// The canonical path of a readable folder, without a slash at its end.  Throws a Failure.
std::string CheckedFolder(const std::string& path);
// The canonical path of a readable regular file.  Throws a Failure.
std::string CheckedFile(const std::string& path);
// The whole text of a file that holds a list of protocolInfo entries.  Throws a Failure.
std::string ReadProfiles(const std::string& path);

// The lines of a text file that holds a list, without line ends; blank lines are left out.
struct ListLine {
  size_t number;  // from 1
  std::string text;
};
std::vector<ListLine> ReadList(const std::string& path);  // throws a Failure

}  // namespace orxscan

// What stands at the path of a database, before SQLite opens it.
#pragma once

#include <string>

namespace orx {

// What SQLite keeps beside a database.
constexpr const char* kSideFiles[] = {"-journal", "-wal", "-shm"};

enum class DatabasePath {
  kSpecial,  // no file: SQLite's own kinds of name
  kMissing,
  kFile,     // a regular file, or one that only its opening can tell about
  kRefused,  // it, or a file beside it that SQLite would open, has no bytes: a FIFO, a device ...
};
DatabasePath LookAtDatabase(const char* path);

// Where opening `path` makes a file: behind its links, also those that lead nowhere.
std::string BehindLinks(const std::string& path);

// The folder of the file, "." for a name without one.
std::string FolderOf(const std::string& path);

// Writes the folder of the file to the disk, as far as it can be opened.  False when that fails.
bool SyncFolderOf(const std::string& path);

}  // namespace orx

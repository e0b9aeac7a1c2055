// The library as the command uses it: kept silent, its errors collected, its settings put back.
#pragma once

#include <cstdio>
#include <functional>
#include <memory>
#include <string>

#include "LibraryErrors.h"

class DataBaseMgr;

namespace orxscan {

struct LogLine {
  bool error;
  std::string function;  // that logged it
  std::string message;   // without colours; cut by the library after 245 characters
};

// While it lives, what the library prints is dropped and what it logs goes to `listener`.
//
// The library prints to standard output and standard error on its own account.  The streams are
// exchanged, not the descriptors, so that a crash report still reaches the terminal.
class QuietLibrary {
 public:
  explicit QuietLibrary(std::function<void(const LogLine&)> listener = nullptr);
  ~QuietLibrary();
  QuietLibrary(const QuietLibrary&) = delete;
  QuietLibrary& operator=(const QuietLibrary&) = delete;

  const LibraryErrors& errors() const { return errors_; }

 private:
  void Receive(int priority, const std::string& line) noexcept;

  std::function<void(const LogLine&)> listener_;
  LibraryErrors errors_;
  FILE* nowhere_;
  FILE* standardOutput_;
  FILE* standardError_;
};

// The manager with the existing database open, within a QuietLibrary.  Throws a Failure.
DataBaseMgr* OpenDatabase(const std::string& path, const std::string& name);

// Destroys the scanner, its lists and the database manager at its end, however that is reached.
class LibraryInstances {
 public:
  LibraryInstances() = default;
  ~LibraryInstances();
  LibraryInstances(const LibraryInstances&) = delete;
  LibraryInstances& operator=(const LibraryInstances&) = delete;
};

}  // namespace orxscan

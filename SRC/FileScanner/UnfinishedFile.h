// A database while it is made: it stands beside its place and moves there when it is complete.
//
// Whoever makes a database holds a lock file, so of several makers one makes it and the others wait
// for it.  What a killed maker left is removed by the next; other files of the same names are left
// alone, and others are taken instead.
#pragma once

#include <string>

namespace orx {

class UnfinishedFile {
 public:
  explicit UnfinishedFile(const std::string& finalPath) : finalPath_(finalPath) {}
  ~UnfinishedFile() { Discard(); }
  UnfinishedFile(const UnfinishedFile&) = delete;
  UnfinishedFile& operator=(const UnfinishedFile&) = delete;

  enum class Start {
    kBegun,    // it is to be made at path()
    kThere,    // somebody has made it meanwhile
    kLocked,   // somebody makes it and comes to no end, or `cancelled` says so
    kRefused,  // no file can be made there
  };
  // Waits for another maker.
  Start Begin(bool (*cancelled)());

  const char* path() const { return path_.c_str(); }
  // Moves the closed file to its place, unless somebody has put another there; what an earlier
  // database left beside the place goes.  False, and logged, when there is no database then.
  bool Finish();

 private:
  enum class Lock { kHeld, kTaken, kForeign, kNone };
  Start TryBegin();
  Lock TakeLock();
  void Discard() noexcept;
  bool Complain(const char* what) const;
  bool RemoveOldSideFiles() const;

  std::string finalPath_;
  std::string lockPath_;
  std::string path_;
  std::string journal_;
  int lock_ = -1;  // -1 while nothing is made
  bool begun_ = false;
};

}  // namespace orx

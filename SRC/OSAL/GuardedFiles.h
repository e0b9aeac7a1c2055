// Files that the process must not open and close beside SQLite: the open databases with their
// journals.
//
// Closing any descriptor of a file drops all the locks that the process holds on it, SQLite's too;
// another program could then write into the database in the middle of a transaction.  A scan meets
// such files under any name, through links as well, so they are told by device and inode.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <ctime>
#include <string>

namespace orx {

// A database that is open, from Hold to Release; to be released behind its closing.
class GuardedDatabase {
 public:
  GuardedDatabase() = default;
  ~GuardedDatabase() { Release(); }
  GuardedDatabase(const GuardedDatabase&) = delete;
  GuardedDatabase& operator=(const GuardedDatabase&) = delete;

  void Hold(const char* path) noexcept;  // instead of what was held before; null is no file
  void Release() noexcept;

 private:
  friend class GuardedFiles;

  struct Identity {
    dev_t device;
    ino_t inode;  // 0 where there is no file
  };
  static constexpr int kFiles = 4;  // the database, "-journal", "-wal", "-shm"

  void LookAgain() noexcept;
  bool Has(const struct stat64& status) const noexcept;

  std::string path_;
  Identity files_[kFiles] = {};
  time_t since_ = 0;
  bool held_ = false;
  GuardedDatabase* next_ = nullptr;
};

// Whether `status` is that of a guarded file.  From any thread; costs nothing while no database is
// open.
bool IsGuarded(const struct stat64& status) noexcept;

// Takes a descriptor of a guarded file that was opened all the same: it is closed when the
// database is.
void Park(int descriptor) noexcept;

}  // namespace orx

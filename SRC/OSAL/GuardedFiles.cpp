#include "OSAL/GuardedFiles.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <iterator>
#include <mutex>
#include <new>

#include "OSAL/Fault.h"

namespace orx {
namespace {

struct ParkedDescriptor {
  int descriptor;
  struct stat64 status;
  ParkedDescriptor* next;
};

std::mutex mutex;  // guards what follows
GuardedDatabase* databases = nullptr;
ParkedDescriptor* parked = nullptr;

std::atomic<int> held{0};  // databases

// The system's clock as it stands in the times of files.
time_t Now() {
  struct timespec now = {};
  clock_gettime(CLOCK_REALTIME_COARSE, &now);
  return now.tv_sec;
}

}  // namespace

// The list of the databases; under the mutex.
class GuardedFiles {
 public:
  static bool Have(const struct stat64& status) noexcept {
    for (GuardedDatabase* database = databases; database != nullptr; database = database->next_)
      if (Has(database, status)) return true;
    return false;
  }
  static void Add(GuardedDatabase* database) noexcept {
    database->next_ = databases;
    databases = database;
    ++held;
  }
  static void Remove(GuardedDatabase* database) noexcept {
    GuardedDatabase** at = &databases;
    while (*at != database) at = &(*at)->next_;
    *at = database->next_;
    --held;
  }
  static void CloseUnguarded() noexcept {
    for (ParkedDescriptor** at = &parked; *at != nullptr;) {
      ParkedDescriptor* one = *at;
      if (Have(one->status)) {
        at = &one->next;
        continue;
      }
      *at = one->next;
      close(one->descriptor);
      delete one;
    }
  }

 private:
  // Journals come into being with the first write: a file as young as that may be one.
  static bool Has(GuardedDatabase* database, const struct stat64& status) noexcept {
    if (database->Has(status)) return true;
    if (status.st_ctime < database->since_) return false;
    database->LookAgain();
    return database->Has(status);
  }
};

void GuardedDatabase::Hold(const char* path) noexcept {
  if (path == nullptr || *path == '\0') return Release();
  if (held_ && path_ != path) Release();
  const std::lock_guard<std::mutex> lock(mutex);
  if (!held_) {
    path_.clear();
    Guarded(__func__, [&] { path_ = path; });
    since_ = Now();
    held_ = true;
    GuardedFiles::Add(this);
  }
  LookAgain();
}

void GuardedDatabase::Release() noexcept {
  if (!held_) return;
  const std::lock_guard<std::mutex> lock(mutex);
  GuardedFiles::Remove(this);
  held_ = false;
  std::fill(std::begin(files_), std::end(files_), Identity{});
  GuardedFiles::CloseUnguarded();
}

// What is gone or cannot be looked at stays known as it was, and so does the database, which is
// open.
void GuardedDatabase::LookAgain() noexcept {
  static constexpr const char* kEndings[kFiles] = {"", "-journal", "-wal", "-shm"};
  if (path_.empty()) return;
  Guarded(__func__, [&] {
    for (int i = 0; i < kFiles; ++i) {
      struct stat64 status = {};
      if (i == 0 && files_[i].inode != 0) continue;
      if (stat64((path_ + kEndings[i]).c_str(), &status) == 0)
        files_[i] = {status.st_dev, status.st_ino};
    }
  });
}

bool GuardedDatabase::Has(const struct stat64& status) const noexcept {
  return std::any_of(std::begin(files_), std::end(files_), [&](const Identity& file) {
    return file.inode != 0 && file.inode == status.st_ino && file.device == status.st_dev;
  });
}

bool IsGuarded(const struct stat64& status) noexcept {
  if (held == 0) return false;
  const std::lock_guard<std::mutex> lock(mutex);
  return GuardedFiles::Have(status);
}

// Without memory it stays open for good, which does no harm.
void Park(int descriptor) noexcept {
  struct stat64 status = {};
  const std::lock_guard<std::mutex> lock(mutex);
  if (fstat64(descriptor, &status) != 0) return;
  auto* one = new (std::nothrow) ParkedDescriptor{descriptor, status, parked};
  if (one != nullptr) parked = one;
}

}  // namespace orx

#include "FileScanner/UnfinishedFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <thread>

#include "FileScanner/DatabasePath.h"
#include "OSAL/ORXLog.h"

namespace orx {
namespace {

constexpr int kNames = 100;  // tried, while the first are somebody else's
constexpr std::chrono::milliseconds kPatience{5000};
constexpr std::chrono::milliseconds kPause{10};
constexpr size_t kLongestKnownName = 100;

// FNV-1a
uint64_t Hash(const std::string& text) {
  uint64_t hash = 0xcbf29ce484222325;
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
  return hash;
}

// Beside the final path, hidden, and no longer than the system allows.
std::string NameBeside(const std::string& finalPath, int number) {
  const std::string name = finalPath.substr(finalPath.rfind('/') + 1);
  char hash[24] = "";
  if (name.size() > kLongestKnownName)
    snprintf(hash, sizeof hash, "~%016llx", static_cast<unsigned long long>(Hash(name)));
  const std::string folder = finalPath.substr(0, finalPath.size() - name.size());
  return folder + "." + name.substr(0, kLongestKnownName) + hash + ".orxscan-new" +
         (number > 0 ? std::to_string(number) : "");
}

bool Exists(const std::string& path) {
  struct stat64 status = {};
  return lstat64(path.c_str(), &status) == 0 || errno != ENOENT;
}

bool IsSameFile(const struct stat64& a, const struct stat64& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

constexpr size_t kStart = 8;  // bytes of a file
using FileStart = std::array<unsigned char, kStart>;
constexpr FileStart kDatabaseStart = {'S', 'Q', 'L', 'i', 't', 'e', ' ', 'f'};
constexpr FileStart kJournalStart = {0xd9, 0xd5, 0x05, 0xf9, 0x20, 0xa1, 0x63, 0xd7};

// Whether `found` is `whole` as far as it was written before a kill, and zero behind that.
bool IsWrittenSoFar(const FileStart& found, const FileStart& whole) {
  const auto written = std::mismatch(found.begin(), found.end(), whole.begin()).first;
  return std::all_of(written, found.end(), [](unsigned char c) { return c == 0; });
}

// Whether the file begins as one of SQLite's does.
bool BeginsLikeSqlites(const char* path) {
  FileStart found = {};
  const int descriptor = open64(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (descriptor < 0) return false;
  const bool known = pread64(descriptor, found.data(), found.size(), 0) >= 0;
  close(descriptor);
  return known && (IsWrittenSoFar(found, kDatabaseStart) || IsWrittenSoFar(found, kJournalStart));
}

// Removes what a killed maker left at `path`.  False when something else is there.
bool RemoveLeftover(const std::string& path) {
  struct stat64 status = {};
  if (lstat64(path.c_str(), &status) != 0) return errno == ENOENT;
  if (!S_ISREG(status.st_mode) || !BeginsLikeSqlites(path.c_str())) return false;
  return unlink(path.c_str()) == 0;
}

// Never puts one file in the place of another.  0, or what went wrong.
int MoveToFreePlace(const char* from, const char* to) {
  if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return errno;
  // The file system does not know how; links do not replace either.
  if (link(from, to) == 0) return unlink(from) == 0 ? 0 : errno;
  if (errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS) return errno;
  if (Exists(to)) return EEXIST;  // all makers wait for each other
  return rename(from, to) == 0 ? 0 : errno;
}

// Both kinds of lock belong to the open file, not to the process: another connection of this one is
// another maker.  0, EWOULDBLOCK, or what went wrong.
int LockWholeFile(int descriptor) {
  if (flock(descriptor, LOCK_EX | LOCK_NB) == 0) return 0;
  if (errno == EWOULDBLOCK) return EWOULDBLOCK;
  struct flock whole = {};
  whole.l_type = F_WRLCK;
  whole.l_whence = SEEK_SET;
  if (fcntl(descriptor, F_OFD_SETLK, &whole) == 0) return 0;
  return errno == EACCES ? EWOULDBLOCK : errno;
}

bool SyncFile(const char* path) {
  const int descriptor = open64(path, O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return false;
  const int error = fsync(descriptor) == 0 ? 0 : errno;
  close(descriptor);
  errno = error;
  return error == 0 || error == EINVAL;
}

}  // namespace

UnfinishedFile::Start UnfinishedFile::Begin(bool (*cancelled)()) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  for (;;) {
    const Start start = TryBegin();
    if (start != Start::kLocked || cancelled()) return start;
    if (std::chrono::steady_clock::now() >= end) return start;
    std::this_thread::sleep_for(kPause);
  }
}

UnfinishedFile::Start UnfinishedFile::TryBegin() {
  for (int number = 0; number < kNames; ++number) {
    path_ = NameBeside(finalPath_, number);
    journal_ = path_ + "-journal";
    lockPath_ = path_ + "-lock";
    const Lock taken = TakeLock();
    if (taken == Lock::kForeign) continue;
    if (taken == Lock::kTaken) return Start::kLocked;
    if (taken == Lock::kNone) return Start::kRefused;
    if (Exists(finalPath_)) {
      Discard();
      return Start::kThere;
    }
    begun_ = RemoveLeftover(path_) && RemoveLeftover(journal_);
    if (begun_) return Start::kBegun;
    Discard();
  }
  return Start::kRefused;
}

// The lock goes with its holder, however that ends; the empty file that carries it may stay.
UnfinishedFile::Lock UnfinishedFile::TakeLock() {
  struct stat64 there = {};
  const bool exists = lstat64(lockPath_.c_str(), &there) == 0;
  if (exists && (!S_ISREG(there.st_mode) || there.st_size != 0)) return Lock::kForeign;
  constexpr int kFlags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  const int descriptor = open64(lockPath_.c_str(), kFlags, 0666);
  if (descriptor < 0) return exists ? Lock::kForeign : Lock::kNone;
  struct stat64 opened = {};
  const int lockError = LockWholeFile(descriptor);
  // Its last holder may have removed it in between.
  const bool gone = lstat64(lockPath_.c_str(), &there) != 0 || fstat64(descriptor, &opened) != 0 ||
                    !IsSameFile(there, opened);
  if (lockError != 0 || gone) {
    close(descriptor);
    return lockError == 0 || lockError == EWOULDBLOCK ? Lock::kTaken : Lock::kNone;
  }
  lock_ = descriptor;
  return Lock::kHeld;
}

void UnfinishedFile::Discard() noexcept {
  if (lock_ < 0) return;
  if (begun_) {
    unlink(path_.c_str());
    unlink(journal_.c_str());
  }
  begun_ = false;
  unlink(lockPath_.c_str());
  close(lock_);
  lock_ = -1;
}

bool UnfinishedFile::Complain(const char* what) const {
  ORX_LOG_ERROR("Error : [%s] cannot be %s, errno %d", path_.c_str(), what, errno);
  return false;
}

// A journal that an earlier database left would be played into the new one.  That they are gone has
// to reach the disk before the new file does.
bool UnfinishedFile::RemoveOldSideFiles() const {
  bool removed = false;
  for (const char* ending : kSideFiles) {
    if (Exists(finalPath_)) return true;  // they are its own
    if (unlink((finalPath_ + ending).c_str()) == 0)
      removed = true;
    else if (errno != ENOENT && errno != ENAMETOOLONG)
      return Complain("moved to its place");
  }
  return !removed || SyncFolderOf(finalPath_);
}

bool UnfinishedFile::Finish() {
  if (!SyncFile(path())) return Complain("synced");
  if (!RemoveOldSideFiles()) return false;
  const int error = MoveToFreePlace(path(), finalPath_.c_str());
  if (error != 0 && error != EEXIST) {
    errno = error;
    return Complain("moved to its place");
  }
  if (error == 0) SyncFolderOf(finalPath_);
  Discard();
  return true;
}

}  // namespace orx

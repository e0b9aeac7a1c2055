#include "OSAL/ORXFSHandler.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "OSAL/Fault.h"
#include "OSAL/FileOpening.h"
#include "OSAL/LocalTimeScope.h"
#include "OSAL/ORXLog.h"

namespace {

void CopyBounded(char* to, size_t size, const char* text) {
  const size_t length = strnlen(text, size - 1);
  memcpy(to, text, length);
  to[length] = '\0';
}

void SetTime(time_t when, ORXFSHandler::PTFile* entry) {
  const orx::LocalTimeScope zone;
  struct tm local = {};
  if (localtime_r(&when, &local) == nullptr) return;
  entry->year = local.tm_year + 1900;
  entry->month = local.tm_mon + 1;
  entry->day = local.tm_mday;
  entry->hour = local.tm_hour;
  entry->minute = local.tm_min;
  entry->second = local.tm_sec;
}

// Sizes are kept in 32 bits: a larger file is never one that was recorded.
bool HasSize(const struct stat64& status, uint64_t size) {
  const auto actual = static_cast<uint64_t>(status.st_size);
  return actual <= UINT32_MAX && actual == size;
}

}  // namespace

ORXFSHandler::ORXFSHandler() : path_{}, directory_(nullptr) {}

ORXFSHandler::~ORXFSHandler() {
  if (directory_ != nullptr) closedir(directory_);
}

int ORXFSHandler::OpenDir(const char* path) {
  if (path == nullptr) return 0;
  DIR* opened = opendir(path);
  if (opened == nullptr) {
    orx::NoteOpenError("opendir", path, errno);
    return 0;
  }
  if (directory_ != nullptr) closedir(directory_);
  directory_ = opened;
  CopyBounded(path_, sizeof path_, path);
  return 1;
}

int ORXFSHandler::CloseDir() {
  if (directory_ == nullptr || closedir(directory_) != 0) return 0;
  directory_ = nullptr;
  path_[0] = '\0';
  return 1;
}

int ORXFSHandler::Read(PTFile* entry) {
  if (directory_ == nullptr || entry == nullptr) return 0;
  struct dirent64* found = nullptr;
  do {
    errno = 0;
    found = readdir64(directory_);
  } while (found != nullptr && found->d_name[0] == '.');
  if (found == nullptr) {
    if (errno != 0) orx::NoteSystemError("readdir", path_, errno);
    return 0;
  }
  CopyBounded(entry->name, sizeof entry->name, found->d_name);

  struct stat64 status = {};
  // Below the open directory, which spares the system the way down to it.  Where the stored path
  // had to be cut, the cut path counts.
  const bool cut = strlen(path_) + 1 == sizeof path_;
  if (cut || fstatat64(dirfd(directory_), entry->name, &status, 0) != 0) {
    int error = errno;
    char full[sizeof path_ + sizeof entry->name + 1];
    snprintf(full, sizeof full, "%s/%s", path_, entry->name);
    if (cut) error = stat64(full, &status) == 0 ? 0 : errno;
    if (error != 0) {
      orx::NoteOpenError("stat", full, error);
      return 1;
    }
  }
  entry->type = S_ISDIR(status.st_mode) ? 0 : 1;
  entry->size = static_cast<uint32_t>(status.st_size);
  SetTime(status.st_mtime, entry);
  return 1;
}

int ORXFSHandler::CreateDir(const char* path) {
  struct stat64 status = {};
  if (path == nullptr || stat64(path, &status) == 0) return 0;
  return mkdir(path, 0777) == 0 ? 1 : 0;
}

int ORXFSHandler::Remove(const char* path) {
  return path != nullptr && IsDirectory(path) && rmdir(path) == 0 ? 1 : 0;
}

bool ORXFSHandler::IsDirectory(const char* path) {
  struct stat64 status = {};
  return path != nullptr && stat64(path, &status) == 0 && S_ISDIR(status.st_mode);
}

bool ORXFSHandler::IsValidFile(const char* path) { return orx::OpenedFile(path).ok(); }

bool ORXFSHandler::IsValidFile(const char* path, unsigned int size) {
  const orx::OpenedFile file(path);
  return file.ok() && HasSize(file.status(), size);
}

bool ORXFSHandler::IsValidFile(const char* path, unsigned long size) {
  const orx::OpenedFile file(path);
  if (!file.ok()) return false;
  if (static_cast<uint64_t>(file.status().st_size) != size)
    ORX_LOG_INFO("[ORXFSHandler::IsValidFile] file[%s] size different! db[%lu] stat[%lld]", path,
                 size, static_cast<long long>(file.status().st_size));
  return HasSize(file.status(), size);
}

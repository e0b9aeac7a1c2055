#include "FileScanner/DatabasePath.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "OSAL/ORXLog.h"

namespace orx {
namespace {

constexpr int kMaxLinks = 40;  // the system's own limit

bool IsSpecial(const char* path) {
  return *path == '\0' || strcmp(path, ":memory:") == 0 || strncmp(path, "file:", 5) == 0;
}

// The text of a link; empty when it is none.
std::string LinkText(const std::string& path) {
  std::string text(PATH_MAX, '\0');
  const ssize_t length = readlink(path.c_str(), text.data(), text.size());
  text.resize(length > 0 ? static_cast<size_t>(length) : 0);
  return text;
}

// A name that is too long for the system is no file.  SQLite makes no links of these names, and
// would write where one leads.
bool IsHarmless(const std::string& sideFile) {
  struct stat64 status = {};
  if (lstat64(sideFile.c_str(), &status) == 0) return S_ISREG(status.st_mode);
  return errno == ENOENT || errno == ENAMETOOLONG;
}

bool HasHarmlessSideFiles(const char* path) {
  const std::string place = BehindLinks(path);
  for (const char* ending : kSideFiles)
    if (!IsHarmless(place + ending)) return false;
  return true;
}

}  // namespace

DatabasePath LookAtDatabase(const char* path) {
  if (IsSpecial(path)) return DatabasePath::kSpecial;
  struct stat64 status = {};
  if (stat64(path, &status) == 0) {
    const bool file = S_ISREG(status.st_mode) && HasHarmlessSideFiles(path);
    return file ? DatabasePath::kFile : DatabasePath::kRefused;
  }
  if (errno != ENOENT) return DatabasePath::kFile;
  return HasHarmlessSideFiles(path) ? DatabasePath::kMissing : DatabasePath::kRefused;
}

std::string BehindLinks(const std::string& path) {
  std::string place = path;
  for (int links = 0; links < kMaxLinks; ++links) {
    const std::string text = LinkText(place);
    if (text.empty()) break;
    const std::string folder = FolderOf(place).append("/");
    place = text[0] == '/' ? text : folder + text;
  }
  return place;
}

std::string FolderOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

bool SyncFolderOf(const std::string& path) {
  const std::string folder = FolderOf(path);
  const int descriptor = open64(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return errno == EACCES;  // it may be written, but not read
  const int error = fsync(descriptor) == 0 ? 0 : errno;
  close(descriptor);
  if (error == 0 || error == EINVAL) return true;  // a file system that has no need of it
  ORX_LOG_ERROR("Error : folder [%s] cannot be synced, errno %d", folder.c_str(), error);
  return false;
}

}  // namespace orx

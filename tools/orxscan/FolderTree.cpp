#include "FolderTree.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <memory>
#include <utility>

#include "Output.h"

namespace orxscan {
namespace {

constexpr size_t kLongestFolder = 510;  // characters of a folder's path
constexpr size_t kLongestFile = 511;    // of a file's

constexpr int kMostLinkVisits = 1000;  // of the links that lead to one folder

using Identity = std::pair<dev_t, ino64_t>;

struct CloseDirectory {
  void operator()(DIR* directory) const { closedir(directory); }
};

struct Entry {
  std::string path;
  bool folder;
};

class Walk {
 public:
  explicit Walk(const std::string& databasePath) : database_(databasePath) {}

  void Folder(const std::string& path) {
    struct stat64 status = {};
    if (stat64(path.c_str(), &status) != 0) return AddUnread(path, errno);
    const Identity folder(status.st_dev, status.st_ino);
    if (std::find(above_.begin(), above_.end(), folder) != above_.end()) return;
    if (IsLink(path) && ++linkVisits_[folder] > kMostLinkVisits) return;
    if (path.size() > kLongestFolder) {
      tree_.files.push_back({path, false});
      return;
    }
    above_.push_back(folder);
    for (const Entry& entry : Entries(path)) Take(entry);
    above_.pop_back();
  }

  FolderTree TakeTree() { return std::move(tree_); }

 private:
  void Take(const Entry& entry) {
    const bool reachable = entry.path.size() <= kLongestFile;
    if (entry.folder && reachable) {
      Folder(entry.path);
    } else if (entry.folder || !IsDatabase(entry.path)) {
      tree_.files.push_back({entry.path, reachable});
    }
  }

  // Read to the end before any of them is entered: a deep tree takes one descriptor.
  std::vector<Entry> Entries(const std::string& path) {
    std::vector<Entry> entries;
    const std::unique_ptr<DIR, CloseDirectory> directory(opendir(path.c_str()));
    if (directory == nullptr) {
      AddUnread(path, errno);
      return entries;
    }
    bool closed = false;  // the folder may be listed and not entered: said once
    errno = 0;
    for (const dirent64* found = nullptr; (found = readdir64(directory.get())) != nullptr;
         errno = 0) {
      if (found->d_name[0] == '.') continue;
      const std::string full = path + (path.back() == '/' ? "" : "/") + found->d_name;
      struct stat64 status = {};
      if (fstatat64(dirfd(directory.get()), found->d_name, &status, 0) == 0) {
        entries.push_back({full, S_ISDIR(status.st_mode)});
      } else if (errno == EACCES && IsThere(directory.get(), found->d_name)) {
        AddUnread(full, EACCES);
      } else if (errno != EACCES) {
        AddUnread(full, errno);
      } else if (!std::exchange(closed, true)) {
        AddUnread(path, EACCES);
      }
    }
    if (errno != 0) AddUnread(path, errno);
    return entries;
  }

  // False in a folder that may not be entered; a link that leads into one is there.
  static bool IsThere(DIR* directory, const char* name) {
    struct stat64 status = {};
    const bool there = fstatat64(dirfd(directory), name, &status, AT_SYMLINK_NOFOLLOW) == 0;
    errno = EACCES;
    return there;
  }

  // What is gone by now, and links that lead nowhere, are nothing that could be read.
  void AddUnread(const std::string& path, int error) {
    if (error == ENOENT || error == ENOTDIR || error == ELOOP || error == ENAMETOOLONG) return;
    tree_.unread.push_back({path, fmt::format("cannot be read: {}", strerror(error))});
  }

  static bool IsLink(const std::string& path) {
    struct stat64 status = {};
    return lstat64(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
  }

  bool IsDatabase(const std::string& path) const {
    return path == database_ || path == database_ + "-journal" || path == database_ + "-wal" ||
           path == database_ + "-shm";
  }

  std::string database_;
  std::vector<Identity> above_;
  std::map<Identity, int> linkVisits_;
  FolderTree tree_;
};

}  // namespace

FolderTree TreeBelow(const std::string& root, const std::string& databasePath) {
  Walk walk(databasePath);
  walk.Folder(root);
  return walk.TakeTree();
}

}  // namespace orxscan

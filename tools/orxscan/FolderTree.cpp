#include "FolderTree.h"

#include <sys/stat.h>

#include <algorithm>
#include <map>
#include <memory>
#include <utility>

#include "OSAL/ORXFSHandler.h"

namespace orxscan {
namespace {

constexpr size_t kLongestFolder = 510;  // characters of a folder's path
constexpr size_t kLongestFile = 511;    // of a file's

enum EntryType { kFolder = 0, kFile = 1, kUnknown = -1 };

constexpr int kMostLinkVisits = 8;  // of the links that lead to one folder

using Identity = std::pair<dev_t, ino64_t>;

class Walk {
 public:
  explicit Walk(const std::string& databasePath) : database_(databasePath) {}

  void Folder(const std::string& path) {
    struct stat64 status = {};
    if (stat64(path.c_str(), &status) != 0) return;
    const Identity folder(status.st_dev, status.st_ino);
    if (std::find(above_.begin(), above_.end(), folder) != above_.end()) return;
    if (IsLink(path) && ++linkVisits_[folder] > kMostLinkVisits) return;
    if (path.size() > kLongestFolder) {
      files_.push_back({path, false});
      return;
    }
    above_.push_back(folder);
    Entries(path);
    above_.pop_back();
  }

  std::vector<FoundFile> TakeFiles() { return std::move(files_); }

 private:
  void Entries(const std::string& path) {
    ORXFSHandler handler;
    if (handler.OpenDir(path.c_str()) == 0) return;
    const auto entry = std::make_unique<ORXFSHandler::PTFile>();
    for (entry->type = kUnknown; handler.Read(entry.get()) != 0; entry->type = kUnknown) {
      const std::string full = path + (path.back() == '/' ? "" : "/") + entry->name;
      const bool reachable = full.size() <= kLongestFile;
      if (entry->type == kFolder && reachable) {
        Folder(full);
      } else if (entry->type == kFolder || (entry->type == kFile && !IsDatabase(full))) {
        files_.push_back({full, reachable});
      }
    }
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
  std::vector<FoundFile> files_;
};

}  // namespace

std::vector<FoundFile> FilesBelow(const std::string& root, const std::string& databasePath) {
  Walk walk(databasePath);
  walk.Folder(root);
  return walk.TakeFiles();
}

}  // namespace orxscan

#include "Watch.h"

#include <dirent.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

namespace orxserve {
namespace {

constexpr uint32_t kChanges = IN_CLOSE_WRITE | IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO |
                              IN_DELETE_SELF | IN_MOVE_SELF;
constexpr size_t kMostFolders = 16384;
constexpr unsigned kDeepest = 64;

struct CloseFolder {
  void operator()(DIR* folder) const { closedir(folder); }
};

}  // namespace

Watch::Watch(const std::string& folder, std::vector<std::string> own)
    : notices_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)), own_(std::move(own)) {
  complete_ = static_cast<bool>(notices_);
  if (notices_) Add(folder, 0);
}

void Watch::Add(const std::string& folder, unsigned depth) {
  const int watch = folders_.size() >= kMostFolders || depth > kDeepest
                        ? -1
                        : inotify_add_watch(notices_.get(), folder.c_str(),
                                            kChanges | IN_ONLYDIR | IN_EXCL_UNLINK);
  if (watch < 0) {
    complete_ = false;
    return;
  }
  folders_[watch] = folder;
  const std::unique_ptr<DIR, CloseFolder> opened(opendir(folder.c_str()));
  if (opened == nullptr) return;
  while (const dirent* entry = readdir(opened.get())) {
    if (entry->d_name[0] == '.') continue;
    if (entry->d_type == DT_DIR || entry->d_type == DT_UNKNOWN) {
      const bool whole = complete_;
      Add(folder + "/" + entry->d_name, depth + 1);
      if (entry->d_type == DT_UNKNOWN) complete_ = whole;  // it may have been a file
    }
  }
}

bool Watch::IsPassedOver(std::string_view name) const {
  return name.substr(0, 1) == "." ||
         std::any_of(own_.begin(), own_.end(),
                     [&](const std::string& own) { return name.substr(0, own.size()) == own; });
}

bool Watch::Take() {
  alignas(inotify_event) std::array<char, 16384> buffer{};
  bool changed = false;
  for (;;) {
    const ssize_t size = read(notices_.get(), buffer.data(), buffer.size());
    if (size <= 0) return changed;
    for (size_t at = 0; at + sizeof(inotify_event) <= static_cast<size_t>(size);) {
      inotify_event event{};
      memcpy(&event, buffer.data() + at, sizeof event);
      const char* const name = buffer.data() + at + sizeof event;
      at += sizeof event + event.len;
      const auto folder = folders_.find(event.wd);
      if ((event.mask & IN_IGNORED) != 0) {
        if (folder != folders_.end()) folders_.erase(folder);
        continue;
      }
      const bool isFolder = (event.mask & IN_ISDIR) != 0;
      const bool begun = (event.mask & IN_CREATE) != 0 && !isFolder;  // its end is told later
      if (event.len != 0 && IsPassedOver(name)) continue;
      changed = changed || !begun;
      if (isFolder && (event.mask & (IN_CREATE | IN_MOVED_TO)) != 0 && folder != folders_.end())
        Add(std::string(folder->second) + "/" + name, 0);
    }
  }
}

}  // namespace orxserve

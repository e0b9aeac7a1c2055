// Notices changes below a folder (inotify).
#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>

#include "Net.h"

namespace orxserve {

class Watch {
 public:
  explicit Watch(const std::string& folder);  // with all that is below it

  int descriptor() const { return notices_.get(); }  // readable when something changed
  // Takes what is there; true when a scan may find something new.  Folders that came are watched.
  bool Take();
  bool complete() const { return complete_; }  // or some folders could not be watched

 private:
  void Add(const std::string& folder, unsigned depth);

  Descriptor notices_;
  std::unordered_map<int, std::string> folders_;  // by watch
  bool complete_ = true;
};

}  // namespace orxserve

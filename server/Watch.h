// Notices changes below a folder (inotify).
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Net.h"

namespace orxserve {

class Watch {
 public:
  // With all that is below it.  Names that begin with one of `own` are passed over: files that the
  // server itself writes.
  explicit Watch(const std::string& folder, std::vector<std::string> own = {});

  int descriptor() const { return notices_.get(); }  // readable when something changed
  // Takes what is there; true when a scan may find something new.  Folders that came are watched.
  bool Take();
  bool complete() const { return complete_; }  // or some folders could not be watched

 private:
  void Add(const std::string& folder, unsigned depth);
  bool IsPassedOver(std::string_view name) const;

  Descriptor notices_;
  std::vector<std::string> own_;
  std::unordered_map<int, std::string> folders_;  // by watch
  bool complete_ = true;
};

}  // namespace orxserve

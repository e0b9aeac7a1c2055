#include "SheetFolders.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "CardMount.h"

namespace orxscan {
namespace {

bool LiesBelow(const std::string& path, const std::string& folder) {
  const bool slash = !folder.empty() && folder.back() == '/';
  return !folder.empty() && path.size() > folder.size() &&
         path.compare(0, folder.size(), folder) == 0 && (slash || path[folder.size()] == '/');
}

// Without links; empty when it is not there.
std::string Place(const std::string& path) {
  std::error_code error;
  const std::filesystem::path place = std::filesystem::canonical(path, error);
  return error ? "" : place.string();
}

// "/home/me/.." leads out of what it begins with.
bool GoesUp(const std::string& path) { return (path + "/").find("/../") != std::string::npos; }

std::string Home() {
  const char* named = getenv("HOME");
  if (named == nullptr || *named != '/') {
    const passwd* user = getpwuid(getuid());
    named = user != nullptr ? user->pw_dir : nullptr;
  }
  return named != nullptr ? Place(named) : "";
}

bool IsPlausible(const std::string& place, const std::string& home) {
  return place != "/" && (home.empty() || (place != home && !LiesBelow(home, place)));
}

}  // namespace

SheetFolders SheetFolders::Anywhere() {
  SheetFolders folders;
  folders.anywhere_ = true;
  return folders;
}

SheetFolders SheetFolders::Below(const std::string& folder) {
  SheetFolders folders;
  folders.byPlaceAlone_ = true;
  folders.folders_.push_back({folder, Place(folder)});
  return folders;
}

SheetFolders SheetFolders::OfDatabase(const std::vector<std::string>& roots,
                                      const std::string& card) {
  SheetFolders folders;
  const std::string home = Home();
  for (const std::string& root : roots) {
    const bool onCard = !card.empty() && (root == kCardPath || LiesBelow(root, kCardPath));
    const std::string place = onCard ? card : Place(root);
    if (GoesUp(root) || root.empty() || root[0] != '/' || (!onCard && !IsPlausible(place, home)))
      folders.refused_.push_back(root);
    else
      folders.folders_.push_back({root, place});
  }
  return folders;
}

bool SheetFolders::Names(const std::string& path) const {
  if (anywhere_ || byPlaceAlone_) return true;
  return !GoesUp(path) && std::any_of(folders_.begin(), folders_.end(), [&](const Folder& folder) {
    return LiesBelow(path, folder.name);
  });
}

bool SheetFolders::Holds(const std::string& path, const std::string& place) const {
  if (anywhere_) return true;
  return std::any_of(folders_.begin(), folders_.end(), [&](const Folder& folder) {
    return LiesBelow(place, folder.place) && (byPlaceAlone_ || LiesBelow(path, folder.name));
  });
}

}  // namespace orxscan

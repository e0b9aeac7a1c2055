// Which files a page may show something of.
//
// A database may come from a stranger and name any file of the machine.  Only files below the
// folder that was scanned are looked at, links followed: neither the name nor a link leads out of
// it.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace orxscan {

class SheetFolders {
 public:
  // Every file.
  static SheetFolders Anywhere();
  // Those below the folder, which the user named.
  static SheetFolders Below(const std::string& folder);
  // Those below the folders that the database names as scanned, where these are plausible: never
  // the root of the file system, the user's home or a folder above it.  Databases made from a card
  // name its files below /mnt/mmc; `card` is where these are, empty for /mnt/mmc itself.
  static SheetFolders OfDatabase(const std::vector<std::string>& roots, const std::string& card);

  // Whether the recorded path is in one of the folders by its name alone.
  bool Names(const std::string& path) const;
  // And whether the file that was found there, at `place`, still is.
  bool Holds(const std::string& path, const std::string& place) const;
  // Those of the database that are not plausible.
  const std::vector<std::string>& refused() const { return refused_; }

 private:
  struct Folder {
    std::string name;   // as recorded
    std::string place;  // without links; empty: it is not there
  };
  bool anywhere_ = false;
  bool byPlaceAlone_ = false;
  std::vector<Folder> folders_;
  std::vector<std::string> refused_;
};

}  // namespace orxscan

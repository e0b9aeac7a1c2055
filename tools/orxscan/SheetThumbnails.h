// The pictures embedded in media files, cut out as they are: checked, and put where the page finds
// them.
#pragma once

#include <set>
#include <string>

#include "MediaFile.h"
#include "SheetFolders.h"
#include "SheetItems.h"

namespace orxscan {

constexpr long long kLargestThumbnail = 1 << 20;  // bytes; a longer one is not read
constexpr long long kLargestPage = 256LL << 20;   // bytes of thumbnails in one page

class SheetThumbnails {
 public:
  // Thumbnails go into the page, or into the folder `beside` when it is given.  Databases made from
  // a card name its files below /mnt/mmc; `card` is where these are, empty for /mnt/mmc itself.
  // Files outside `folders` are left alone.
  SheetThumbnails(std::string beside, std::string card, SheetFolders folders);

  // Looks at the item's file, adds the marks that result, and writes the thumbnail when it goes
  // beside the page.  Returns whether the item has a thumbnail to show.  Throws a Failure.
  bool Examine(SheetItem* item);
  // The bytes of a thumbnail that goes into the page.
  std::string Cut(const SheetItem& item) const;

  bool beside() const { return !beside_.empty(); }
  long long count() const { return count_; }
  long long bytes() const { return bytes_; }
  // Removes thumbnails that an earlier page had and this one has not.
  void RemoveOld() const;

 private:
  std::string Where(const std::string& path) const;
  // Whether the place is one that a thumbnail may be taken from; adds a mark when it is not.
  bool IsUsable(const MediaFile& file, SheetItem* item) const;
  void PrepareFolder() const;

  std::string beside_;
  std::string card_;
  SheetFolders folders_;
  std::set<std::string> names_;
  long long count_ = 0;
  long long bytes_ = 0;
};

}  // namespace orxscan

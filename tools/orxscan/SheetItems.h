// The folders and items of a database, of any layout, as a sheet shows them.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "DatabaseFile.h"

namespace orxscan {

// What stands out about an item or a folder.  The names are those of the marks in the page.
enum class Mark {
  kAdded,
  kRemoved,
  kChanged,
  kElsewhere,
  kGone,
  kUnreadable,
  kSizeDiffers,
  kThumbnailOutside,
  kThumbnailNoPicture,
  kThumbnailTooLarge,
  kThumbnailLeftOut,
  kNoMediaRow,
  kNoObjectRow,
  kStale,
  kBackup
};

// Where the database says that a picture is inside the media file; no length: there is none.
struct PicturePlace {
  long long offset = 0;
  long long length = 0;
  long long width = 0;
  long long height = 0;
};

enum class ShareState { kNotRecorded, kHidden, kShared };

struct SheetItem {
  long long id = 0;
  int mediaClass = 0;  // 1 picture, 2 sound, 3 film
  std::string path;
  std::string folderId;  // as recorded; empty when it is not
  std::string title;     // this and the texts below: empty when nothing is recorded
  std::string date;
  std::string mimeType;
  std::string profile;
  std::string duration;
  std::string sortIndex;
  long long size = -1;  // bytes; -1: not recorded
  long long width = 0;
  long long height = 0;
  ShareState share = ShareState::kNotRecorded;
  PicturePlace thumbnail;     // of a sound, its cover art
  bool hasThumbnail = false;  // it can be shown
  std::string thumbnailName;  // the file beside the page that it was written to
  std::vector<std::pair<std::string, std::string>> details;  // label and value, in order
  std::vector<Mark> marks;

  bool Has(Mark mark) const;
};

struct SheetFolder {
  long long id = 0;
  std::string path;
  std::vector<Mark> marks;
  std::vector<SheetItem> items;

  bool Has(Mark mark) const;
};

struct SheetRows {
  std::vector<SheetFolder> folders;  // without items
  std::vector<std::string> roots;    // the folders that were scanned: those in no other
  std::vector<SheetItem> items;
};

// All of the database, in no particular order.  Throws a Failure.
SheetRows ReadSheetRows(const DatabaseFile& database);

// Items in their folders: folders by path, each above those inside it; in a folder first the items
// with a sort number, by that number, then the others by name.
std::vector<SheetFolder> InDisplayOrder(SheetRows rows);

// The last part of a path.
std::string FileName(const std::string& path);

}  // namespace orxscan

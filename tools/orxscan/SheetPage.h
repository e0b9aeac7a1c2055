// Writes the page of `orxscan sheet`.
#pragma once

#include <string>
#include <vector>

#include "NewFile.h"
#include "SheetItems.h"
#include "SheetThumbnails.h"

namespace orxscan {

struct Sheet {
  std::string database;              // the name of its file
  std::string before;                // that of the database it is compared with, empty without one
  std::string layout;                // which tables it has
  std::string besideAs;              // the folder of the thumbnails as the page names it
  std::vector<SheetFolder> folders;  // in display order, thumbnails examined
};

// What every page begins with: how a page of ours is known.
extern const char kSheetSignature[];

void WriteSheet(const Sheet& sheet, const SheetThumbnails& thumbnails, NewFile* page);

// The words for a mark in the page and in the command's summary.
const char* MarkLabel(Mark mark);

}  // namespace orxscan

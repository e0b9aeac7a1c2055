#include "CardScan.h"

#include <cstring>

#include "CardMount.h"
#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DirectoryScanner.h"
#include "Library.h"
#include "MediaDatabase.h"
#include "Progress.h"
#include "Sqlite.h"
#include "host/HostPlatform.h"

namespace orxscan {
namespace {

// Follows the rows of the files: these scans log only some of the files that they take.
class RowWatch {
 public:
  RowWatch(Progress* progress, Layout layout) : progress_(progress), layout_(layout) {}

  // The library opens its connection after the scan has begun, and closes it before the end.
  void Start() {
    if (DataBaseMgr::ppDataBase != nullptr)
      sqlite3_update_hook(DataBaseMgr::ppDataBase, RowChanged, this);
  }

 private:
  static void RowChanged(void* self, int what, const char*, const char* table, sqlite3_int64) {
    auto* watch = static_cast<RowWatch*>(self);
    const bool object = strcmp(table, "ObjectTable") == 0;
    if (what == SQLITE_INSERT && object != (watch->layout_ == Layout::kFull))
      watch->progress_->FileAdded();
  }

  Progress* progress_;
  Layout layout_;
};

bool IsBeforeThePurge(const LogLine& line) {
  return line.message.find("] Before Invalidate") != std::string::npos;
}

}  // namespace

Layout LayoutFor(ScanMode scan, int sharingMode) {
  if (scan == ScanMode::kFull) return Layout::kFull;
  return sharingMode == kBackupMode ? Layout::kBackup : Layout::kObjectOnly;
}

// In the backup layout and the full one the scan makes the tables that it writes.
void MakeCardDatabase(const MediaDatabase& database, Layout layout) {
  if (layout != Layout::kObjectOnly) return;
  const QuietLibrary library;
  HostPlatform::SetSharingMode(kObjectOnlyMode);
  DataBaseMgr::GetInstance()->OpenDB(database.path().c_str());
  DataBaseMgr::DestroyInstance();
  database.CheckWritten(library.errors());
}

LibraryErrors RunCardScan(DirectoryScanner* scanner, ScanMode mode, Layout layout,
                          const MediaDatabase& database, Progress* progress) {
  RowWatch watch(progress, layout);
  const auto listen = [&](const LogLine& line) {
    if (IsBeforeThePurge(line)) watch.Start();
  };
  LibraryErrors errors;
  {
    const QuietLibrary library(progress->active() ? listen : std::function<void(const LogLine&)>());
    const auto scan = mode == ScanMode::kXq       ? &DirectoryScanner::scanXQDcf
                      : mode == ScanMode::kBackup ? &DirectoryScanner::scanAutoBackupDcf
                                                  : &DirectoryScanner::scanDcf;
    int changed = 0;
    (scanner->*scan)(kCardDcimPath, database.path().c_str(), &changed);
    errors = library.errors();
  }
  progress->Finish();
  database.CheckWritten(errors);
  return errors;
}

}  // namespace orxscan

// The scans of a card's shared files, as the command runs them.
#pragma once

#include "DatabaseFile.h"
#include "LibraryErrors.h"

class DirectoryScanner;

namespace orxscan {

class MediaDatabase;
class Progress;

// The sharing modes whose databases have an object table alone.
constexpr int kBackupMode = 6;
constexpr int kObjectOnlyMode = 8;

enum class ScanMode { kFull, kBackup, kXq };

// The tables that the scan writes in a sharing mode.
Layout LayoutFor(ScanMode scan, int sharingMode);

// Makes the database where the sharing mode would make other tables than the scan writes; otherwise
// the scan makes it.  Throws a Failure.
void MakeCardDatabase(const MediaDatabase& database, Layout layout);

// Scans the card that is mounted and returns the library's errors.  Throws a Failure when the
// database could not be written.
LibraryErrors RunCardScan(DirectoryScanner* scanner, ScanMode mode, Layout layout,
                          const MediaDatabase& database, Progress* progress);

}  // namespace orxscan

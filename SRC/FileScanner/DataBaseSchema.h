// The tables of the media database, column by column, in their three layouts.
#pragma once

#include "FileScanner/DataBaseMgr.h"

namespace orx {

struct TableLayout {
  const char* name;
  int count;
  const TableColumn* columns;
};

// The sharing modes that select a layout with an object table alone.
constexpr int kBackupMode = 6;
constexpr int kObjectOnlyMode = 8;

// Values of the class column.
constexpr int kContainerClass = 0;  // a directory
constexpr int kImageClass = 1;
constexpr int kAudioClass = 2;
constexpr int kVideoClass = 3;
int MediaClassOf(const MediaMetaData& record);  // the record's type, as the column holds it

extern const TableLayout kObjectTable;            // every other mode, beside the tables below
extern const TableLayout kObjectTableObjectOnly;  // kObjectOnlyMode
extern const TableLayout kObjectTableBackup;      // kBackupMode
extern const TableLayout kContainerTable;
extern const TableLayout kAudioTable;
extern const TableLayout kVideoTable;
extern const TableLayout kImageTable;

}  // namespace orx

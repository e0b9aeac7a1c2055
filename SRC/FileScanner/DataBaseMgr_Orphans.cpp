// Rows that have lost the row of their folder.
//
// A purge removes a folder's row before the rows below it.  When it is stopped in between, or the
// folder could not be read for a while, the rows below stay behind, and no purge finds them again:
// they all go down from the containers.
#include <string>
#include <unordered_set>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DataBaseSchema.h"
#include "FileScanner/ResultRows.h"
#include "FileScanner/SqlStatement.h"
#include "FileScanner/WriteTransaction.h"
#include "OSAL/Fault.h"

using orx::ResultRows;
using orx::SqlStatement;

namespace {

// The parents of all rows, one after the other by way of the index, so that the cost grows with the
// folders and not with the files; of these the ones without a row, and what they have below the
// directory.
#define ORX_SELECT_ORPHANS(columns)                                                \
  "with recursive Parent(id) as (select min(parentID) from ObjectTable union all " \
  "select (select min(parentID) from ObjectTable where parentID > Parent.id) "     \
  "from Parent where Parent.id is not null) select " columns                       \
  " from ObjectTable where parentID in (select id from Parent "                    \
  "where trim(id) not in ('', '0') and not exists "                                \
  "(select 1 from ObjectTable as Container where Container.id = Parent.id)) "      \
  "and +FullPath > \"%s\" and +FullPath < \"%s\""
constexpr char kCountOrphans[] = ORX_SELECT_ORPHANS("count(*)");
constexpr char kSelectOrphans[] = ORX_SELECT_ORPHANS("id, class");
#undef ORX_SELECT_ORPHANS

SqlStatement BelowDirectory(const char* pattern, std::string directory) {
  if (directory.back() != '/') directory += '/';
  std::string behind = directory;
  ++behind.back();
  return SqlStatement(pattern).Text(directory).Text(behind);
}

bool IsInATable(int mediaClass) {
  return mediaClass >= orx::kContainerClass && mediaClass <= orx::kVideoClass;
}

}  // namespace

// Removes the rows below the directory whose container has no row, and what hangs below them; the
// walk of the scan registers anew what is there.
void DataBaseMgr::MendOrphans(const char* directoryPath, bool hasMediaTables) {
  if (directoryPath == nullptr || *directoryPath == '\0') return;
  if (isNew_ && sqlite3_total_changes(ppDataBase) == 0) return;  // it has no rows yet
  orx::Guarded(__func__, [&] {
    const ResultRows count = Fetch(BelowDirectory(kCountOrphans, directoryPath));
    if (count.rows == 0 || count.Integer(0, 0) == 0) return;
    const SqlStatement select = BelowDirectory(kSelectOrphans, directoryPath);
    std::unordered_set<std::string> seen;
    // Each container that goes leaves new ones.
    while (RemoveOrphans(Fetch(select), hasMediaTables, &seen)) {
    }
  });
}

// False when there was none that had not been seen before, or the scan is to end.
bool DataBaseMgr::RemoveOrphans(const ResultRows& orphans, bool hasMediaTables,
                                std::unordered_set<std::string>* seen) {
  bool found = false;
  for (int row = 0; row < orphans.rows; ++row) {
    if (Cancelled() || GivenUp()) return false;
    const char* id = orphans.Text(row, 0);
    if (!seen->insert(id).second) continue;
    found = true;
    const int mediaClass = orphans.Integer(row, 1);
    if (hasMediaTables && IsInATable(mediaClass)) {
      RemoveIdFromTables(id, mediaClass);
    } else {
      RemoveIdFromObjectTable(id);
    }
  }
  return found;
}

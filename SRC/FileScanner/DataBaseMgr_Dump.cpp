// Whole tables written to the log.
#include <cstddef>
#include <string>

#include "FileScanner/DataBaseGuard.h"
#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/SqlConnection.h"
#include "FileScanner/SqlStatement.h"
#include "OSAL/ORXLog.h"

namespace {

void LogCells(char** cells, int count) {
  for (int i = 0; i < count; ++i) ORX_LOG_INFO("%s    ", cells[i] != nullptr ? cells[i] : "");
}

}  // namespace

// The names of the columns, then every row after an empty line.
void DataBaseMgr::ExecAndPrint(const char* sql) {
  char** cells = nullptr;
  int rows = 0;
  int columns = 0;
  nLastResult = SQLITE_MISUSE;
  if (sql != nullptr && ppDataBase != nullptr)
    nLastResult = sqlite3_get_table(ppDataBase, sql, &cells, &rows, &columns, nullptr);
  const orx::RawTable table(cells);
  vcol_head.clear();  // only now: the text may be a cell of the last result
  vdata.clear();
  if (nLastResult != SQLITE_OK || table == nullptr) return;

  LogCells(cells, columns);
  ORX_LOG_INFO("\n");
  for (int row = 1; row <= rows; ++row) {
    ORX_LOG_INFO("\n\n");
    LogCells(cells + static_cast<ptrdiff_t>(row) * columns, columns);
  }
}

void DataBaseMgr::DisplayDatabase() {
  ExecAndPrint("Select * from ObjectTable");
  ExecAndPrint("Select * from ImageTable");
  ExecAndPrint("Select * from AudioTable");
  ExecAndPrint("Select * from VideoTable");
}

void DataBaseMgr::DisplayTable(const char* tableName) {
  ORX_LOG_INFO("\n");
  if (orx::IsPlainIdentifier(tableName))
    Guard(this).Run(__func__,
                    [&] { ExecAndPrint((std::string("Select * from ") + tableName).c_str()); });
}

// Cancels scans from a second thread, as a host does; ThreadSanitizer ends the program when that is
// not clean.
#include <atomic>
#include <cstdio>
#include <string>
#include <thread>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DcfFileInfoVector.h"
#include "FileScanner/DirectoryScanner.h"
#include "fuzz/support/QuietPlatform.h"
#include "support/JpegBuilder.h"
#include "support/TempDir.h"

namespace {

// Relaxed where they can be, so that nothing but the cancel flags stands between the threads; the
// manager outlives the call that cancels it.
std::atomic<long> lines{0};
std::atomic<bool> cancelled{false};
std::atomic<bool> over{false};
long cancelAt = 0;

// Holds the scan at the line of the cancel, since the manager is gone when it ends.
void Wait(const char* /*line*/) {
  if (lines.fetch_add(1, std::memory_order_relaxed) + 1 != cancelAt) return;
  while (!cancelled.load(std::memory_order_acquire)) std::this_thread::yield();
}

void Cancel(DirectoryScanner* scanner, DataBaseMgr* database, DcfFileInfoVector* list) {
  while (lines.load(std::memory_order_relaxed) < cancelAt) {
    if (over.load(std::memory_order_relaxed)) return;  // the scan never came to that line
    std::this_thread::yield();
  }
  scanner->CancelScanDirectory();
  database->CancelInvalidateAllItems();
  list->CancelInvalidateAllItems();
  cancelled.store(true, std::memory_order_release);
}

// The rows that a scan, cancelled at a line, leaves.
int CancelledScan(const std::string& card, const std::string& db, long line) {
  cancelAt = line;
  lines = 0;
  cancelled = over = false;
  DirectoryScanner* scanner = DirectoryScanner::GetInstance();
  scanner->SetDlnaProfiles(pProfiles);
  std::thread other(Cancel, scanner, DataBaseMgr::GetInstance(), DcfFileInfoVector::GetInstance());
  int status = 0;
  scanner->ScanDir(card.c_str(), db.c_str(), &status);
  over = true;
  other.join();
  DirectoryScanner::DestroyInstance();
  DcfFileInfoVector::DestroyInstance();

  DataBaseMgr* database = DataBaseMgr::GetInstance();
  database->OpenDB(db.c_str());
  database->ExecSqlStatment("select id from ObjectTable");
  const int rows = database->nRows;
  DataBaseMgr::DestroyInstance();
  return rows;
}

}  // namespace

int main() {
  constexpr int kFiles = 60;
  const orx_test::TempDir directory;
  for (int file = 0; file < kFiles; ++file)
    directory.Write("card/IMGA" + std::to_string(1000 + file) + ".JPG", orx_test::MakeJpeg());
  orx_test::QuietPlatform::Get().onLine = Wait;
  int before = 0;
  for (long line = 12; line < 200; line += 20) {
    const int rows = CancelledScan(directory.Path("card"), directory.Path("media.db"), line);
    printf("cancelled at line %ld: %d rows\n", line, rows);
    if (rows < before || rows > 1 + kFiles) return 1;  // the folder has a row, too
    before = rows;
  }
  return 0;
}

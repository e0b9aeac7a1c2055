// Cancels scans from a second thread, as a host does, also while they wait for somebody's lock;
// ThreadSanitizer ends the program when that is not clean.
#include <sqlite3.h>
#include <sys/stat.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DcfFileInfoVector.h"
#include "FileScanner/DirectoryScanner.h"
#include "FileScanner/MultimediaQueryMgr.h"
#include "fuzz/support/QuietPlatform.h"
#include "support/CardMount.h"
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

using Scan = void (DirectoryScanner::*)(const char* dir, const char* db, int* status);

// The rows that a scan, cancelled at a line, leaves.
int CancelledScan(Scan scan, const std::string& card, const std::string& db, long line) {
  cancelAt = line;
  lines = 0;
  cancelled = over = false;
  DirectoryScanner* scanner = DirectoryScanner::GetInstance();
  scanner->SetDlnaProfiles(pProfiles);
  std::thread other(Cancel, scanner, DataBaseMgr::GetInstance(), DcfFileInfoVector::GetInstance());
  int status = 0;
  (scanner->*scan)(card.c_str(), db.c_str(), &status);
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

constexpr int kFiles = 60;

// Each scan, cancelled a little later than the one before, adds to the rows.
bool RowsGrow(const char* name, Scan scan, const std::string& card, const std::string& db) {
  int before = 0;
  for (long line = 12; line < 200; line += 20) {
    const int rows = CancelledScan(scan, card, db, line);
    printf("%s cancelled at line %ld: %d rows\n", name, line, rows);
    if (rows < before || rows > 2 + kFiles) return false;  // the folders have rows, too
    before = rows;
  }
  return before > 0;
}

int SharedFile(int index, char** uri) {
  static char text[64];
  snprintf(text, sizeof text, "/mnt/mmc/DCIM/100PHOTO/IMGA%d.JPG", 1000 + kFiles - 1 - index);
  *uri = text;
  return 0;
}

long long SizeOfFile(const char* path) {
  struct stat status = {};
  return stat(path, &status) == 0 ? status.st_size : 0;
}

bool CardScansAreClean(const orx_test::TempDir& directory) {
  orx_test::QuietPlatform& platform = orx_test::QuietPlatform::Get();
  platform.fileCount = kFiles;
  platform.uri = SharedFile;
  platform.sizeOf = SizeOfFile;
  platform.attributesSucceed = true;
  for (int file = 0; file < kFiles; ++file)
    orx_test::CardMount::Write("100PHOTO/IMGA" + std::to_string(1000 + file) + ".JPG",
                               orx_test::MakeJpeg());
  const char* const card = "/mnt/mmc/DCIM";
  const bool full =
      RowsGrow("full scan", &DirectoryScanner::scanDcf, card, directory.Path("full.db"));
  platform.sharingMode = 8;
  const bool objectOnly =
      RowsGrow("object-only scan", &DirectoryScanner::scanXQDcf, card, directory.Path("object.db"));
  platform.sharingMode = 6;
  const bool backup = RowsGrow("backup scan", &DirectoryScanner::scanAutoBackupDcf, card,
                               directory.Path("backup.db"));
  return full && objectOnly && backup;
}

// A scan and a query on another thread, both of which wait for a lock until the host cancels: the
// scan is undone, the query answers that it failed.
bool WaitsAreClean(const std::string& card, const std::string& db) {
  sqlite3* other = nullptr;
  sqlite3_open(db.c_str(), &other);
  sqlite3_exec(other, "begin exclusive", nullptr, nullptr, nullptr);
  DirectoryScanner* scanner = DirectoryScanner::GetInstance();
  scanner->SetDlnaProfiles(pProfiles);
  std::atomic<int> answered{-1};
  std::thread query([&] {
    MultimediaQueryMgr manager;
    manager.ConnectDB(db.c_str());
    answered = manager.ExecSqlStatment("select id from ObjectTable");
    manager.DisconnectDB();
  });
  std::thread cancel([scanner] {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    scanner->CancelScanDirectory();
  });
  int status = 7;
  scanner->ScanDir(card.c_str(), db.c_str(), &status);
  query.join();
  cancel.join();
  sqlite3_close(other);
  DirectoryScanner::DestroyInstance();
  printf("cancelled waits: query %d, status %d\n", answered.load(), status);
  return answered == 0 && status == 7;
}

}  // namespace

int main() {
  orx_test::CardMount::Enter();
  const orx_test::TempDir directory;
  for (int file = 0; file < kFiles; ++file)
    directory.Write("card/IMGA" + std::to_string(1000 + file) + ".JPG", orx_test::MakeJpeg());
  orx_test::QuietPlatform::Get().onLine = Wait;
  if (!RowsGrow("folder scan", &DirectoryScanner::ScanDir, directory.Path("card"),
                directory.Path("media.db")) ||
      !WaitsAreClean(directory.Path("card"), directory.Path("media.db")))
    return 1;
  if (!orx_test::CardMount::Problem().empty()) {
    printf("scans of shared files are left out: %s\n", orx_test::CardMount::Problem().c_str());
    return 0;
  }
  return CardScansAreClean(directory) ? 0 : 1;
}

// Scans a folder into a database and prints what the folder holds.
#include <sqlite3.h>

#include <cstdio>

#include "FileScanner/DirectoryScanner.h"
#include "host/HostPlatform.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    fprintf(stderr, "usage: %s FOLDER DATABASE\n", argv[0]);
    return 2;
  }
  // A camera supplies the platform functions itself; on a PC, the host library does.
  HostPlatform::SetSharingMode(0);

  DirectoryScanner* scanner = DirectoryScanner::GetInstance();
  scanner->SetDlnaProfiles(pProfiles);
  scanner->ScanDir(argv[1], argv[2], nullptr);  // another thread may CancelScanDirectory()
  DirectoryScanner::DestroyInstance();

  sqlite3* database = nullptr;
  if (sqlite3_open_v2(argv[2], &database, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) return 1;
  auto print = [](void*, int, char** cell, char**) {
    return printf("%s  %s\n", cell[0], cell[1]) < 0 ? 1 : 0;
  };
  sqlite3_exec(database, "select FullPath, DLNAProfile from ImageTable", print, nullptr, nullptr);
  sqlite3_exec(database, "select FullPath, DLNAProfile from VideoTable", print, nullptr, nullptr);
  sqlite3_close(database);
  return 0;
}

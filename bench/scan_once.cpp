// One scan with the library on a platform that says nothing, and what it cost.
//
// usage: scan_once DIRECTORY DATABASE
#include <cstdio>

#include "FileScanner/DirectoryScanner.h"
#include "Usage.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    fprintf(stderr, "usage: scan_once DIRECTORY DATABASE\n");
    return 2;
  }
  const orx_bench::Usage usage;
  DirectoryScanner* scanner = DirectoryScanner::GetInstance();
  scanner->SetDlnaProfiles(pProfiles);
  int changed = 0;
  scanner->ScanDir(argv[1], argv[2], &changed);
  DirectoryScanner::DestroyInstance();
  usage.Print();
  return 0;
}

// The calls of a server in their order, with fixed paths: one scan, then two single files.
//
// Run it where "./media.db" may be written.  The platform functions come from the host library.
#include "FileScanner/DirectoryScanner.h"

namespace {

constexpr char kDatabase[] = "./media.db";

void Scan(const char* folder) {
  DirectoryScanner* scanner = DirectoryScanner::GetInstance();
  scanner->SetDlnaProfiles(pProfiles);
  int status = 0;
  scanner->ScanDir(folder, kDatabase, &status);
  DirectoryScanner::DestroyInstance();
}

void Register(const char* file, const char* parent) {
  DirectoryScanner* scanner = DirectoryScanner::GetInstance();
  scanner->SetDlnaProfiles(pProfiles);
  scanner->ParseAndRegisterFile(kDatabase, file, parent);
  DirectoryScanner::DestroyInstance();
}

int __main() {
  Scan("/root/DLNA2.0/Share");
  Register("C:/DLNA_Contents/TC_7_3_26_4_Test_907", "0");
  Register("C:/DLNA_Contents/B-I-JPEG_SM-EXIF1.jpg", nullptr);
  return 0;
}

}  // namespace

int main() { return __main(); }

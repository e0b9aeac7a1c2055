// One file through the whole chain, into a database in memory.  The first byte chooses the
// extension, the rest is the file.
#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DirectoryScanner.h"
#include "FileScanner/MediaFileInfos.h"
#include "fuzz/support/ByteSource.h"
#include "fuzz/support/Mutators.h"
#include "fuzz/support/QuietPlatform.h"
#include "support/TempDir.h"

namespace {

constexpr const char* kExtensions[] = {"JPG", "mp4", "3gp", "aac", "MPO", "m4a", "mov", "adts"};

void Register(const std::string& path) {
  DirectoryScanner* scanner = DirectoryScanner::GetInstance();
  scanner->SetDlnaProfiles(pProfiles);
  DataBaseMgr* database = DataBaseMgr::GetInstance();
  if (database->CreateDbmsSystem(":memory:") == 0) abort();
  scanner->ParseAndRegisterFile("unused", path.c_str(), nullptr);  // closes the database
  FreeMediaFileDisplayInfo(scanner->ParseAndGetFileInfo(path.c_str()));
  scanner->ParseAndGetMediaFileInfo(path.c_str());
  MediaFileInfos::DestroyInstance();
  DirectoryScanner::DestroyInstance();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const orx_test::TempDir directory;
  orx_test::ByteSource source(data, size);
  auto& platform = orx_test::QuietPlatform::Reset();
  const uint8_t kind = source.Byte();
  platform.certificationState = kind >> 7;
  const std::string name = std::string("input.") + kExtensions[kind % 8];
  const std::string path = directory.Write(name, source.Rest());
  Register(path);
  remove(path.c_str());
  return 0;
}

#ifdef ORXSCAN_FUZZ
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t room, unsigned seed) {
  if (size < 2) return LLVMFuzzerMutate(data, size, room);
  const auto mutate = seed % 2 == 0 ? orx_test::MutateTiff : orx_test::MutateBoxes;
  return 1 + mutate(data + 1, size - 1, room - 1, seed / 2);
}
#endif

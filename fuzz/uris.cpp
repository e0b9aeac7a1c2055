// What the platform says: the URIs and types of the shared files, their attributes, and the scans
// that work from them.
#include <cstring>
#include <string>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DcfFileInfoVector.h"
#include "FileScanner/DirectoryScanner.h"
#include "fuzz/support/ByteSource.h"
#include "fuzz/support/QuietPlatform.h"

namespace {

constexpr const char* kEndings[] = {"", ".JPG", ".MP4", ".MPO", ".KRZ", ".AVI", ".ARW", "JPG"};
constexpr const char* kFolders[] = {"100PHOTO", "101PHOTO", "999A_B_C"};

std::vector<std::string> uris;
std::vector<char> lent;  // the text that was handed out last
uint8_t types = 0;

int Uri(int index, char** uri) {
  if (uris.empty()) return -1;
  const std::string& text = uris[static_cast<size_t>(index) % uris.size()];
  if (text.size() == 1) return -static_cast<int>(static_cast<unsigned char>(text[0]));
  lent.assign(text.c_str(), text.c_str() + text.size() + 1);
  *uri = lent.data();
  return 0;
}

int FileType(const char* uri) { return types == 0 ? 1 : static_cast<int>(strlen(uri)) % types - 1; }

std::string NextUri(orx_test::ByteSource* source) {
  const int kind = source->Byte();
  if (kind % 4 == 0) return source->Text();
  std::string number = std::to_string(10000 + source->Byte()).substr(1);
  return std::string("/mnt/mmc/DCIM/") + kFolders[kind / 4 % 3] + "/IMGA" + number +
         kEndings[kind / 16 % 8];
}

template <size_t kSize>
void Fill(char (&field)[kSize], const std::string& text) {
  memcpy(field, text.data(), text.size() < kSize ? text.size() : kSize);
}

// A list far longer than the limit, from the same few files again and again, as it grows.
void ReadLongList(uint8_t growth) {
  DcfFileInfoVector* list = DcfFileInfoVector::GetInstance();
  for (const int count : {growth * 9, growth * 9 + 1, 1000, 1000 + growth, 2500, 3, -growth}) {
    orx_test::QuietPlatform::Get().fileCount = count;
    list->addToDCFInfoVector();
    list->isInDirFileNumVector(growth);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  orx_test::ByteSource source(data, size);
  auto& platform = orx_test::QuietPlatform::Reset();
  const uint8_t scan = source.Byte();
  platform.sharingMode = source.Byte() % 16;
  types = source.Byte();
  platform.attributesSucceed = scan & 4;
  platform.fileSize = static_cast<long long>(source.Number());
  platform.fileAttribute.nFileSize = platform.videoAttribute.nFileSize = platform.fileSize;
  platform.videoAttribute.nDuration = static_cast<int>(source.Number());
  const uint64_t rate = source.Number();
  memcpy(&platform.videoAttribute.dFrameRate, &rate, sizeof rate);
  const std::string date = source.Take(20);
  Fill(platform.fileAttribute.szDate, date);
  Fill(platform.videoAttribute.szDate, date);
  uris.clear();
  while (!source.empty() && uris.size() < 64) uris.push_back(NextUri(&source));
  platform.uri = Uri;
  platform.fileType = FileType;

  if (scan & 8) ReadLongList(types);
  DirectoryScanner* scanner = DirectoryScanner::GetInstance();
  scanner->SetDlnaProfiles(pProfiles);
  for (int round = 0; round < 3; ++round) {
    platform.fileCount = static_cast<int>(uris.size()) * round / 2;
    DataBaseMgr* database = DataBaseMgr::GetInstance();
    database->CreateDbmsSystem(":memory:");
    int status = 0;
    if (scan % 3 == 0) scanner->scanDcf("/", "unused", &status);  // the scans close the database
    if (scan % 3 == 1) scanner->scanXQDcf("/", "unused", &status);
    if (scan % 3 == 2) scanner->scanAutoBackupDcf("/", "unused", &status);
  }
  DirectoryScanner::DestroyInstance();
  DataBaseMgr::DestroyInstance();
  DcfFileInfoVector::DestroyInstance();
  return 0;
}

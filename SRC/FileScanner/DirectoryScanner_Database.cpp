// What the scanner forwards to the database manager.
#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DirectoryScanner.h"
#include "OSAL/StringUtiltiy.h"
#include "OSAL/TextPtr.h"

namespace {

DataBaseMgr* Database() { return DataBaseMgr::GetInstance(); }

orx::TextPtr Utf8(const char* path) { return orx::TextPtr(StringUtiltiy::GetUtf8FromTChar(path)); }

}  // namespace

void DirectoryScanner::InvalidateAllItems(const char* dir) {
  Database()->InvalidateAllItemsInDB(Utf8(dir).get());
}

void DirectoryScanner::DeleteInvalidItems(int* status) {
  Database()->DeleteInvalidatedItemInDB(status);
}

void DirectoryScanner::DeleteInvalidItems(const char* dir) {
  Database()->DeleteInvalidItemsInDB(Utf8(dir).get());
}

void DirectoryScanner::deleteInvalidItemsDcf(const char* dir) {
  Database()->deleteInvalidItemsInDBDcf(Utf8(dir).get());
}

void DirectoryScanner::deleteInvalidItemsFromBackupDcf(const char* dir) {
  Database()->deleteInvalidItemsFromAutoBackupDB(Utf8(dir).get());
}

void DirectoryScanner::deleteInvalidItemsDcfInfo(const char* dir) {
  Database()->deleteInvalidItemsInDBDcfVector(Utf8(dir).get());
}

bool DirectoryScanner::IsInDB(const char* path) { return Database()->IsInDB(path); }

int DirectoryScanner::ValidateItem(const char* path) {
  return Database()->ValidateItemInDB(Utf8(path).get());
}

void DirectoryScanner::RemoveDirFromDB(const char* dir, int* status) {
  Database()->RemoveDIRfromDB(dir, status);
}

void DirectoryScanner::RemoveDirFromObjectTableinDB(const char* dir) {
  Database()->RemoveDIRfromObjTableInDB(dir);
}

char* DirectoryScanner::GetDirUniqueId(const char* dir) {
  return Database()->GetUniqueIdForPath(dir);
}

int DirectoryScanner::GetArrayOfFullPath(const char* parentId, char*** rows, int* count) {
  return Database()->GetArrayOfFullPathInDB(parentId, rows, count);
}

void DirectoryScanner::InsertItem(MediaMetaData* record) { Database()->InsertMetaData(record); }

void DirectoryScanner::InsertItem2(MediaMetaData* record) { Database()->InsertMetaData2(record); }

void DirectoryScanner::InsertItemInObjectTable(MediaMetaData* record) {
  Database()->InsertMetaDataToObjTable(record);
}

void DirectoryScanner::DeleteItem(const char* path) { Database()->DeleteItemFromDB(path); }

int DirectoryScanner::IsValid(const char* /*path*/) { return 0; }

void DirectoryScanner::InvalidateDirectory(const char* dbPath, const char* dir, int* status) {
  DataBaseMgr* database = Database();
  if (database == nullptr || database->OpenDB(dbPath) == 0) return;
  InvalidateAllItems(dir);
  DeleteInvalidItems(status);
}

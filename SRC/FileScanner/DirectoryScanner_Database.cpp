// What the scanner forwards to the database manager.
#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DirectoryScanner.h"
#include "OSAL/StringUtiltiy.h"
#include "OSAL/TextPtr.h"

namespace {

// Calls an operation of the manager; answers `failure` when there is no memory for one.
template <typename Result, typename Operation>
Result Ask(Result failure, Operation&& operation) {
  DataBaseMgr* database = DataBaseMgr::GetInstance();
  return database != nullptr ? operation(database) : failure;
}

template <typename Operation>
void Tell(Operation&& operation) {
  if (DataBaseMgr* database = DataBaseMgr::GetInstance(); database != nullptr) operation(database);
}

orx::TextPtr Utf8(const char* path) { return orx::TextPtr(StringUtiltiy::GetUtf8FromTChar(path)); }

}  // namespace

void DirectoryScanner::InvalidateAllItems(const char* dir) {
  Tell([&](DataBaseMgr* database) { database->InvalidateAllItemsInDB(Utf8(dir).get()); });
}

void DirectoryScanner::DeleteInvalidItems(int* status) {
  Tell([&](DataBaseMgr* database) { database->DeleteInvalidatedItemInDB(status); });
}

void DirectoryScanner::DeleteInvalidItems(const char* dir) {
  Tell([&](DataBaseMgr* database) { database->DeleteInvalidItemsInDB(Utf8(dir).get()); });
}

void DirectoryScanner::deleteInvalidItemsDcf(const char* dir) {
  Tell([&](DataBaseMgr* database) { database->deleteInvalidItemsInDBDcf(Utf8(dir).get()); });
}

void DirectoryScanner::deleteInvalidItemsFromBackupDcf(const char* dir) {
  Tell([&](DataBaseMgr* database) {
    database->deleteInvalidItemsFromAutoBackupDB(Utf8(dir).get());
  });
}

void DirectoryScanner::deleteInvalidItemsDcfInfo(const char* dir) {
  Tell([&](DataBaseMgr* database) { database->deleteInvalidItemsInDBDcfVector(Utf8(dir).get()); });
}

bool DirectoryScanner::IsInDB(const char* path) {
  return Ask(false, [&](DataBaseMgr* database) { return database->IsInDB(path); });
}

int DirectoryScanner::ValidateItem(const char* path) {
  return Ask(0,
             [&](DataBaseMgr* database) { return database->ValidateItemInDB(Utf8(path).get()); });
}

void DirectoryScanner::RemoveDirFromDB(const char* dir, int* status) {
  Tell([&](DataBaseMgr* database) { database->RemoveDIRfromDB(dir, status); });
}

void DirectoryScanner::RemoveDirFromObjectTableinDB(const char* dir) {
  Tell([&](DataBaseMgr* database) { database->RemoveDIRfromObjTableInDB(dir); });
}

char* DirectoryScanner::GetDirUniqueId(const char* dir) {
  return Ask(static_cast<char*>(nullptr),
             [&](DataBaseMgr* database) { return database->GetUniqueIdForPath(dir); });
}

int DirectoryScanner::GetArrayOfFullPath(const char* parentId, char*** rows, int* count) {
  return Ask(SQLITE_NOMEM, [&](DataBaseMgr* database) {
    return database->GetArrayOfFullPathInDB(parentId, rows, count);
  });
}

void DirectoryScanner::InsertItem(MediaMetaData* record) {
  Tell([&](DataBaseMgr* database) { database->InsertMetaData(record); });
}

void DirectoryScanner::InsertItem2(MediaMetaData* record) {
  Tell([&](DataBaseMgr* database) { database->InsertMetaData2(record); });
}

void DirectoryScanner::InsertItemInObjectTable(MediaMetaData* record) {
  Tell([&](DataBaseMgr* database) { database->InsertMetaDataToObjTable(record); });
}

void DirectoryScanner::DeleteItem(const char* path) {
  Tell([&](DataBaseMgr* database) { database->DeleteItemFromDB(path); });
}

int DirectoryScanner::IsValid(const char* /*path*/) { return 0; }

void DirectoryScanner::InvalidateDirectory(const char* dbPath, const char* dir, int* status) {
  DataBaseMgr* database = DataBaseMgr::GetInstance();
  if (database == nullptr || database->OpenDB(dbPath) == 0) return;
  InvalidateAllItems(dir);
  DeleteInvalidItems(status);
}

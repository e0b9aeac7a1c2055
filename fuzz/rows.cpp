// A database of the stranger's own: every lookup, purge and dump over rows whose cells, and columns
// if need be, are the input's.
#include <sqlite3.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DcfFileInfoVector.h"
#include "FileScanner/DirectoryScanner.h"
#include "FileScanner/ImageMetaData.h"
#include "OSAL/ORXMemory.h"
#include "fuzz/support/ByteSource.h"
#include "fuzz/support/QuietPlatform.h"

namespace {

using orx_test::ByteSource;

constexpr const char* kTables[] = {"ObjectTable", "ImageTable", "AudioTable", "VideoTable",
                                   "ContainerTable"};
constexpr const char* kPaths[] = {"/", "/tmp", "/dev/null", "/nowhere/a.JPG", "/nowhere", ""};

// One cell: a small number, any number, a path of the list, any text, a blob or nothing.
void Bind(sqlite3_stmt* insert, int parameter, ByteSource* source) {
  const int kind = source->Byte();
  switch (kind % 8) {
    case 0:
    case 1:
    case 2:
      sqlite3_bind_int(insert, parameter, source->Byte() % 8);
      break;
    case 3:
      sqlite3_bind_int64(insert, parameter, static_cast<sqlite3_int64>(source->Number()));
      break;
    case 4:
      sqlite3_bind_text(insert, parameter, kPaths[source->Byte() % 6], -1, SQLITE_STATIC);
      break;
    case 5:
    case 6: {
      const std::string text = source->Text();
      const int length = static_cast<int>(text.size());
      if (kind % 8 == 5)
        sqlite3_bind_text(insert, parameter, text.data(), length, SQLITE_TRANSIENT);
      else
        sqlite3_bind_blob(insert, parameter, text.data(), length, SQLITE_TRANSIENT);
      break;
    }
    default:
      sqlite3_bind_null(insert, parameter);
  }
}

int Columns(const char* table) {
  sqlite3_stmt* all = nullptr;
  const std::string sql = std::string("select * from ") + table;
  sqlite3_prepare_v2(DataBaseMgr::ppDataBase, sql.c_str(), -1, &all, nullptr);
  const int count = all != nullptr ? sqlite3_column_count(all) : 0;
  sqlite3_finalize(all);
  return count;
}

void InsertRow(ByteSource* source) {
  const char* table = kTables[source->Byte() % 5];
  const int columns = Columns(table);
  if (columns == 0) return;
  std::string sql = std::string("insert or ignore into ") + table + " values (?";
  for (int i = 1; i < columns; ++i) sql += ",?";
  sql += ")";
  sqlite3_stmt* insert = nullptr;
  sqlite3_prepare_v2(DataBaseMgr::ppDataBase, sql.c_str(), -1, &insert, nullptr);
  for (int i = 1; i <= columns; ++i) Bind(insert, i, source);
  sqlite3_step(insert);
  sqlite3_finalize(insert);
}

void LookUp(DataBaseMgr* database, const char* path, const char* column) {
  ORXMemory::Free(database->GetImageElementForPathFromObjTable(path, column));
  ORXMemory::Free(database->GetVideoElementForPathFromObjTable(path, column));
  ORXMemory::Free(database->GetClassElementForPath(path, column));
  ORXMemory::Free(database->GetImageElementForPath(path, column));
  ORXMemory::Free(database->GetVideoElementForPath(path, column));
  ORXMemory::Free(database->GetImageDLNAProfileForPath(path));
  ORXMemory::Free(database->GetAudioDLNAProfileForPath(path));
  ORXMemory::Free(database->GetVideoDLNAProfileForPath(path));
  ORXMemory::Free(database->GetClassForPath(path));
  ORXMemory::Free(database->GetParentIdForPath(path));
  ORXMemory::Free(database->GetUniqueIdForPath(path));
  database->IsInDB(path);
  database->NeedToDeleteDB(path);
  char** rows = nullptr;
  int count = 0;
  database->GetArrayOfFullPathInDB(path, &rows, &count);
  sqlite3_free_table(rows);
}

void ListForBackup(DataBaseMgr* database) {
  int count = 0;
  BackupClassElement* head = nullptr;
  database->GetClassElementListForBackup(&count, &head);
  while (head != nullptr) {
    BackupClassElement* next = head->pNext;
    free(head);
    head = next;
  }
}

void Change(DataBaseMgr* database, const std::string& text, const char* path, int what) {
  ImageMetaData record;
  record.SetFullPath(path);
  record.SetType(static_cast<unsigned>(what % 5));
  int found = 0;
  char* shared[] = {const_cast<char*>(path), nullptr};
  switch (what % 16) {
    case 0:
      database->InvalidateAllItemsInDB(path);
      return;
    case 1:
      return database->DeleteInvalidatedItemInDB(&found);
    case 2:
      return database->DeleteInvalidItemsInDB(path);
    case 3:
      return database->deleteInvalidItemsInDBDcf(path);
    case 4:
      return database->deleteInvalidItemsFromAutoBackupDB(path);
    case 5:
      return database->deleteInvalidItemsInDBDcfVector(path);
    case 6:
      return database->RemoveDIRfromDB(path, &found);
    case 7:
      return database->RemoveDIRfromObjTableInDB(path);
    case 8:
      return database->DeleteItemFromDB(path);
    case 9:
      return database->DeleteItemFromDBWithId(text.c_str());
    case 10:
      database->RemoveIdFromTables(text.c_str(), what >> 4);
      return;
    case 11:
      database->UpdateShareStatus(what & 16 ? shared : nullptr, what >> 5);
      return;
    case 12:
      database->UpdateDBForNewItem(&record, text.c_str());
      return;
    case 13:
      return database->InsertMetaData(&record);
    case 14:
      return database->InsertMetaDataToObjTable(&record);
    default:
      return database->DropTable(text.c_str());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  ByteSource source(data, size);
  auto& platform = orx_test::QuietPlatform::Reset();
  const int modes[] = {0, 1, 6, 8};
  platform.sharingMode = modes[source.Byte() % 4];
  DataBaseMgr* database = DataBaseMgr::GetInstance();
  if (database->CreateDbmsSystem(":memory:") == 0) abort();
  for (int rows = source.Byte() % 12; rows > 0; --rows) InsertRow(&source);

  for (int steps = 0; steps < 8 && !source.empty(); ++steps) {
    const int what = source.Byte();
    const std::string text = source.Text();
    const std::string path = what & 128 ? kPaths[text.size() % 6] : text;
    Change(database, text, path.c_str(), what & 127);
    LookUp(database, path.c_str(), what & 64 ? "FullPath" : text.c_str());
    ListForBackup(database);
  }
  database->NeedToDeleteDBforSorting();
  database->DisplayDatabase();
  DataBaseMgr::DestroyInstance();
  DcfFileInfoVector::DestroyInstance();
  return 0;
}

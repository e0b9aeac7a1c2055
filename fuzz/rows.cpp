// A database of the stranger's own: every lookup, purge and dump over rows whose cells, and columns
// if need be, are the input's.
#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <type_traits>
#include <vector>

#include "FileScanner/AudioMetaData.h"
#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DcfFileInfoVector.h"
#include "FileScanner/DirectoryScanner.h"
#include "FileScanner/ImageMetaData.h"
#include "FileScanner/VideoMetaData.h"
#include "OSAL/ORXMemory.h"
#include "fuzz/support/ByteSource.h"
#include "fuzz/support/QuietPlatform.h"

namespace {

using orx_test::ByteSource;

constexpr const char* kTables[] = {"ObjectTable", "ImageTable", "AudioTable", "VideoTable",
                                   "ContainerTable"};
// "/proc/version" is a file of no bytes that can be opened.
constexpr const char* kPaths[] = {"/",        "/tmp", "/dev/null", "/nowhere/a.JPG",
                                  "/nowhere", "",     "/proc",     "/proc/version"};

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
      sqlite3_bind_text(insert, parameter, kPaths[source->Byte() % 8], -1, SQLITE_STATIC);
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

std::vector<std::string> Columns(const char* table) {
  sqlite3_stmt* all = nullptr;
  const std::string sql = std::string("select * from ") + table;
  sqlite3_prepare_v2(DataBaseMgr::ppDataBase, sql.c_str(), -1, &all, nullptr);
  std::vector<std::string> names;
  for (int i = 0; i < sqlite3_column_count(all); ++i) names.push_back(sqlite3_column_name(all, i));
  sqlite3_finalize(all);
  return names;
}

// One byte for a cell that the lookups and walks go by, so that rows of several tables fit
// together.
void BindFitting(sqlite3_stmt* insert, int parameter, const std::string& column,
                 ByteSource* source) {
  const int value = source->Byte();
  if (column == "FullPath")
    sqlite3_bind_text(insert, parameter, kPaths[value % 8], -1, SQLITE_STATIC);
  else if (column == "class")
    sqlite3_bind_int(insert, parameter, value % 5);
  else if (column == "size")
    sqlite3_bind_int(insert, parameter, value & 1 ? value : 0);
  else
    sqlite3_bind_int(insert, parameter, value % 8);
}

void InsertRow(ByteSource* source) {
  const int what = source->Byte();
  const char* table = kTables[what % 5];
  const std::vector<std::string> columns = Columns(table);
  if (columns.empty()) return;
  std::string sql = std::string("insert or ignore into ") + table + " values (?";
  for (size_t i = 1; i < columns.size(); ++i) sql += ",?";
  sql += ")";
  sqlite3_stmt* insert = nullptr;
  sqlite3_prepare_v2(DataBaseMgr::ppDataBase, sql.c_str(), -1, &insert, nullptr);
  for (int i = 0; i < static_cast<int>(columns.size()); ++i) {
    if (what & 128)
      BindFitting(insert, i + 1, columns[static_cast<size_t>(i)], source);
    else
      Bind(insert, i + 1, source);
  }
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

// The purges compare the rows with the platform's list of shared files.
int ListedUri(int index, char** uri) {
  static char text[64];
  snprintf(text, sizeof text, "/mnt/mmc/DCIM/100PHOTO/IMGA%04d.JPG", index);
  *uri = text;
  return 0;
}

// What a scanner asks, with the paths of a folder at hand.
void Ask(const char* path, const std::string& other) {
  DirectoryScanner* scanner = DirectoryScanner::GetInstance();
  ORXMemory::Free(scanner->GetDirUniqueId(path));
  scanner->ValidateItem(path);
  char** rows = nullptr;
  int count = 0;
  if (scanner->GetArrayOfFullPath(other.c_str(), &rows, &count) == SQLITE_OK) {
    int cursor = 0;
    scanner->IsInArray(path, rows, count, &cursor);
    scanner->IsInArray(path, rows, count, &cursor);
  }
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

// A record of the input's own, as an updated or a new row.
template <typename Record>
void ChangeRecord(DataBaseMgr* database, const std::string& text, const char* path, int what) {
  Record record;
  record.SetType(static_cast<unsigned>(what % 5));
  record.SetFullPath(path);
  record.SetUniqueID(text.c_str());
  record.SetTitle(text.c_str());
  record.SetEXT(text.c_str());
  record.SetSortIndex(path);
  if constexpr (std::is_same_v<Record, VideoMetaData>)
    if (text.size() % 2 == 1) record.SetAudioData(new AudioMetaData);
  switch (what / 5 % 6) {
    case 0:
      database->UpdateDBForNewItem(&record, text.c_str());
      return;
    case 1:
      return database->InsertMetaData(&record);
    case 2:
      return database->InsertMetaData2(&record);
    case 3:
      return database->InsertMetaDataToObjTable(&record);
    case 4:
      return database->InsertXQMediaInObjectTable(&record);
    default:
      return database->InsertAutoBackupMediaInObjectTable(&record);
  }
}

void Purge(DataBaseMgr* database, const char* path, int what) {
  int found = 0;
  switch (what % 8) {
    case 0:
      database->InvalidateAllItemsInDB(path);
      return database->DeleteInvalidatedItemInDB(&found);
    case 1:
      return database->DeleteInvalidatedItemInDB(&found);
    case 2:
      return database->DeleteInvalidItemsInDB(path);
    case 3:
      database->addFileUriToTable();
      return database->deleteInvalidItemsInDBDcf(path);
    case 4:
      database->addFileUriToTable();
      return database->deleteInvalidItemsFromAutoBackupDB(path);
    case 5:
      DcfFileInfoVector::GetInstance()->addToDCFInfoVector();
      return database->deleteInvalidItemsInDBDcfVector(path);
    case 6:
      return database->RemoveDIRfromDB(path, &found);
    default:
      return database->RemoveDIRfromObjTableInDB(path);
  }
}

void Remove(DataBaseMgr* database, const std::string& text, const char* path, int what) {
  char* shared[] = {const_cast<char*>(path), nullptr};
  switch (what % 8) {
    case 0:
      return database->DeleteItemFromDB(path);
    case 1:
      return database->DeleteItemFromDBWithId(text.c_str());
    case 2:
      database->RemoveIdFromTables(text.c_str(), what / 8);
      return;
    case 3:
      return database->RemoveIdFromObjectTable(text.c_str());
    case 4:
    case 5:
      database->UpdateShareStatus(what % 8 == 4 ? shared : nullptr, what / 8);
      return;
    case 6:
      return database->DropTable(text.c_str());
    default:
      return database->DisplayTable(text.c_str());
  }
}

void Change(DataBaseMgr* database, const std::string& text, const char* path, int what) {
  const int detail = what / 5;
  switch (what % 5) {
    case 0:
      return Purge(database, path, detail);
    case 1:
      return Remove(database, text, path, detail);
    case 2:
      return ChangeRecord<ImageMetaData>(database, text, path, detail);
    case 3:
      return ChangeRecord<AudioMetaData>(database, text, path, detail);
    default:
      return ChangeRecord<VideoMetaData>(database, text, path, detail);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  ByteSource source(data, size);
  auto& platform = orx_test::QuietPlatform::Reset();
  const int modes[] = {0, 1, 6, 8};
  platform.sharingMode = modes[source.Byte() % 4];
  DataBaseMgr* database = DataBaseMgr::GetInstance();
  platform.fileCount = 8;
  platform.uri = ListedUri;
  if (database->CreateDbmsSystem(":memory:") == 0) abort();
  for (int rows = source.Byte() % 12; rows > 0; --rows) InsertRow(&source);

  for (int steps = 0; steps < 8 && !source.empty(); ++steps) {
    const int what = source.Byte();
    const std::string text = source.Text();
    const std::string path = what & 128 ? kPaths[text.size() % 8] : text;
    Change(database, text, path.c_str(), what & 127);
    LookUp(database, path.c_str(), what & 64 ? "FullPath" : text.c_str());
    Ask(path.c_str(), text);
    ListForBackup(database);
  }
  database->NeedToDeleteDBforSorting();
  database->DisplayDatabase();
  DirectoryScanner::DestroyInstance();
  DataBaseMgr::DestroyInstance();
  DcfFileInfoVector::DestroyInstance();
  return 0;
}

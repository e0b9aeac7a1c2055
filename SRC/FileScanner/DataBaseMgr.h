// The one owner of the media database (SQLite 3).
//
// One instance in the process, used from the scanner's thread; only CancelInvalidateAllItems may be
// called from another.  Operations answer 1 for success and 0 for failure unless they say
// otherwise; a failing statement is logged with its text, a failing query is silent.  A text that
// holds the quote which delimits it in its statement makes that statement fail; no value ever acts
// as SQL. Queries leave their result in the class-wide `vdata`, row after row; whoever ran the
// query reads it and empties it.  New texts are released with ORXMemory::Free.
#pragma once

#include <sqlite3.h>

#include <atomic>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "FileScanner/DcfFileInfoVector.h"
#include "OSAL/StringUtiltiy.h"
#include "Platform/Export.h"

class AudioMetaData;
class ImageMetaData;
class MediaMetaData;
class VideoMetaData;

namespace orx {
struct QueryResult;
class CompiledStatement;
class LockWaiting;
class ResultRows;
class ScanTransaction;
class SqlStatement;
class StatementCache;
class WritePair;
class WriteTransaction;
struct Writing;
}  // namespace orx

// One column of a table: the size counts for VARCHAR only.
struct TableColumn {
  char szName[30];
  char szType[10];
  int nSize;
  char szConstraint[16];
};

// One file of the backup list; made with malloc, freed by the caller with free.
struct BackupClassElement {
  char szTitle[128];
  char szFullPath[256];
  BackupClassElement* pNext;  // null in the last one
};

// The statement that creates a table of `count` columns; null when memory runs out.
ORX_API char* GetCreatTblSqlStmt(const char* tableName, int count, const TableColumn* columns);

// "1", "2", ... : a counter of the process, never reset.
ORX_API char* GetUniqueId();

class ORX_API DataBaseMgr {
 public:
  static DataBaseMgr* GetInstance();  // created on first use
  static void DestroyInstance();      // closes the database; harmless when there is no instance

  DataBaseMgr();
  ~DataBaseMgr();
  DataBaseMgr(const DataBaseMgr&) = delete;
  DataBaseMgr& operator=(const DataBaseMgr&) = delete;

  // ---- Connection and schema (DataBaseMgr.cpp, DataBaseMgr_Open.cpp) ----
  // Opens the database, or creates it with the tables that the sharing mode selects.  An open
  // connection is kept, whatever file it belongs to.
  int OpenDB(const char* fileName);
  int CreateDbmsSystem(const char* fileName);  // all the tables come into being, or no file
  int CreateDB(const char* fileName);
  void CreateTables();
  int ExecSqlStatmentNoValueReturn(const char* sql);
  int ExecSqlStatment(const char* sql);  // fills vdata, vcol_head, nLastResult, nRows, nColumns
  void DropTable(const TChar* tableName);
  int DestroyTables();
  // Whether the database holds a row outside `directoryPath` and is to be deleted by the host.
  bool NeedToDeleteDB(const char* directoryPath);
  // 1 when the database has the sorting columns, 0 when it is from before them and is to be
  // deleted.
  int NeedToDeleteDBforSorting();
  void CancelInvalidateAllItems();  // from any thread; stays set until the instance is destroyed
  void InsertDIRintoDB(const char* directoryPath);  // does nothing
  void SetPath();                                   // does nothing

  bool getIsDbExists() const { return isDbExists; }
  void setIsDbExists(bool exists) { isDbExists = exists; }
  sqlite3** getPpDataBase();
  void setPpDataBase(sqlite3** handle);
  char* getPszDbName() const { return pszDbName; }
  void setPszDbName(char* name) { pszDbName = name; }  // not copied, not owned
  char* getPszDirectoryPath() const { return pszDirectoryPath; }
  void setPszDirectoryPath(char* path) { pszDirectoryPath = path; }  // not copied, not owned
  static void setMpThisInstance(DataBaseMgr* instance) { mpThisInstance = instance; }

  // ---- Media tables (DataBaseMgr_MediaTables.cpp) ----
  void InsertMetaData(MediaMetaData* record);
  void InsertMetaData2(MediaMetaData* record);  // names previews after the record's sort index
  int InsertMediaContainer(const MediaMetaData* record);
  int InsertPhotoMetaData(const MediaMetaData* record);
  int InsertPhotoMetaData2(const MediaMetaData* record);
  int InsertAudioMetaData(const MediaMetaData* record);
  int InsertVideoMetaData(const MediaMetaData* record);
  int UpdateImageMetaData(const MediaMetaData* record, const char* id);
  int UpdateAudioMetaData(const MediaMetaData* record, const char* id);
  int UpdateVideoMetaData(const MediaMetaData* record, const char* id);
  int UpdateDBForNewItem(MediaMetaData* record, const TChar* id);  // 1 updated, 0 not

  // ---- Object table (DataBaseMgr_ObjectTable.cpp) ----
  void InsertMetaDataToObjTable(MediaMetaData* record);
  void InsertXQMediaInObjectTable(MediaMetaData* record);
  void InsertAutoBackupMediaInObjectTable(MediaMetaData* record);
  void InsertMediaInObjTbl(MediaMetaData* record);
  int ValidateItemInDB(const char* fullPath);
  bool IsInDB(const TChar* fullPath);  // leaves vdata filled
  void DeleteItemFromDB(const char* fullPath);
  void DeleteItemFromDBWithId(const TChar* id);
  int RemoveIdFromTables(const char* id, int mediaClass);
  void RemoveIdFromObjectTable(const char* id);
  void RemoveDIRfromObjTableInDB(const char* directoryPath);
  void RemoveDIRfromDB(const char* directoryPath, int* foundStale);  // sets it to 1, as below

  // ---- Lookups (DataBaseMgr_Lookups.cpp): a new text, or null when no row has the path ----
  TChar* GetImageElementForPathFromObjTable(const char* path, const char* column);
  TChar* GetVideoElementForPathFromObjTable(const char* path, const char* column);
  TChar* GetClassElementForPath(const char* path, const char* column);
  TChar* GetImageElementForPath(const char* path, const char* column);
  TChar* GetVideoElementForPath(const char* path, const char* column);
  TChar* GetImageDLNAProfileForPath(const char* path);
  TChar* GetAudioDLNAProfileForPath(const char* path);
  TChar* GetVideoDLNAProfileForPath(const char* path);
  TChar* GetClassForPath(const char* path);
  TChar* GetParentIdForPath(const char* path);
  TChar* GetUniqueIdForPath(const char* path);
  // The paths under a directory: a result table of SQLite's with one column and a header row, freed
  // with sqlite3_free_table.  Returns SQLite's result code.
  int GetArrayOfFullPathInDB(const char* parentId, char*** rows, int* count);
  // The part of `path` after its last '/', "No Title" when that is empty; a new text.
  static TChar* GetTitleFromFullPath(const char* path);

  // ---- Sharing and backup (DataBaseMgr_Share.cpp) ----
  // The files that are no backup yet, in descending path order, at most 1000.  1: `head` is the
  // first of `count` elements; 0: none, or memory ran out.
  int GetClassElementListForBackup(int* count, BackupClassElement** head);
  // Shares the listed files and hides all others; a null list shares all.  `paths` ends with null.
  int UpdateShareStatus(char** paths, int mode);

  // ---- Reconciliation (DataBaseMgr_Reconcile.cpp, DataBaseMgr_DcfPurge.cpp) ----
  void InvalidateAllItemsInDB(const char* directoryPath);
  void DeleteInvalidatedItemInDB(int* foundStale);  // sets it to 1 when a stale row was found
  void DeleteInvalidItemsInDB(const char* directoryPath);
  void deleteInvalidItemsInDBDcf(const char* directoryPath);
  void deleteInvalidItemsFromAutoBackupDB(const char* directoryPath);
  void deleteInvalidItemsInDBDcfVector(const char* directoryPath);

  // ---- Shared-file list (DataBaseMgr_SharedFiles.cpp) ----
  int addFileUriToTable();
  int supportFileCheck(const char* extension, const char* uri, DLNA_FILE_TYPE* type);
  bool duplicateFileCheck(const char* extension, const char* uri, DLNA_FILE_TYPE* type);
  DLNA_FILE_TYPE convertFileType(int platformType);
  int isInDirFileNumVector(int number);
  int getDirNumVectorSize() const;
  int getDirFileNumVectorSize() const;
  int getFileTypeVectorSize() const;
  int getDBndexVectorSize() const;
  int getDirNameVectorSize() const;
  int getFilePathVectorSize() const;
  // -1 for an index outside the list.
  int getDirNumVectorAt(int index) const;
  int getDirFileNumVectorAt(int index) const;
  int getFileTypeVectorAt(int index) const;
  int getDBIndexVectorAt(int index) const;
  // Throw std::out_of_range for an index outside the list.
  std::string& getDirNameVectorAt(int index);
  std::string& getFilePathVectorAt(int index);

  // ---- Diagnostic dump (DataBaseMgr_Dump.cpp) ----
  void ExecAndPrint(const char* sql);
  void DisplayDatabase();
  void DisplayTable(const char* tableName);

  static DataBaseMgr* mpThisInstance;
  static sqlite3* ppDataBase;                 // null when no database is open
  static std::vector<std::string> vdata;      // cells of the last query, row-major, no header
  static std::vector<std::string> vcol_head;  // its column names
  static char** result;

  bool isDbExists = false;
  char* pszDbName = nullptr;
  char* pszDirectoryPath = nullptr;
  int nLastResult = 0;  // SQLite's result code of the last query
  int nRows = 0;
  int nColumns = 0;
  std::atomic<int> bInvalidateAllItemsCancelFlag{0};

 private:
  friend class orx::ScanTransaction;
  friend class orx::WritePair;
  friend class orx::WriteTransaction;

  // What a failure means for what is being written (DataBaseMgr_Failures.cpp).
  bool GivenUp() const;        // no write is run any more
  void FailWriting(int code);  // the machine failed
  void NoteFailedWrite(int code, const std::string& sql);
  void NoteFailedQuery(int code, const std::string& sql);
  bool GiveUpReadLock(int code);  // true when the statement may be tried again
  void ReopenPair();
  bool MetDamage(const orx::SqlStatement& statement) const;  // in an earlier run of the scan
  bool MetDamage(const std::string& sql) const;
  void RunAgain(int code, const std::string& without);
  void NoteDamagedItem(const MediaMetaData& record);  // if its statements have met damage
  bool IsLeftOut(const MediaMetaData& record) const;  // because of that; logged
  class Guard;
  void OutOfMemory(const char* where);  // logged; what is being written is given up

  // Run a statement built from the library's own text and bound values (DataBaseMgr.cpp).
  int Run(const orx::SqlStatement& statement);
  // The cells go into vdata, and all members that a query fills are filled.
  int Query(const orx::SqlStatement& statement);
  // The cells go to the caller; of the members only nLastResult changes.
  orx::ResultRows Fetch(const orx::SqlStatement& statement);
  int RunAccepted(const orx::SqlStatement& statement);
  int Execute(const orx::SqlStatement& statement);
  template <typename AddRow>
  int Read(const orx::SqlStatement& statement, const orx::QueryResult& to, const AddRow& addRow);
  template <typename AddRow>
  int ReadAccepted(const orx::SqlStatement& statement, const AddRow& addRow);
  orx::CompiledStatement Compile(const orx::SqlStatement& statement, int* code);
  int Exec(const char* sql, int* code = nullptr);
  void LogFailedStatement(const char* sql, int code, const char* message);
  void LogRefusedStatement(const std::string& printed, const std::string& reason);
  orx::QueryResult Result();  // the members that a query fills
  int Connect(const char* fileName,
              int flags);  // SQLite's code; without a connection after a failure
  void CloseDatabase();
  static orx::LockWaiting& Waiting();         // of the class-wide connection
  enum class InsertKind { kPlain, kShared };  // shared files' previews carry their sort index
  void InsertInBothTables(MediaMetaData* record, InsertKind kind);
  int InsertInMediaTable(const MediaMetaData* record, InsertKind kind);
  static void LogInsertionFailed(const MediaMetaData& record, InsertKind kind);
  int OpenLogged(const char* fileName, int flags);  // instead of what is open
  int MakeDatabase(const char* fileName);           // makes it beside its place and opens it
  int InsertObject(const orx::SqlStatement& insert, MediaMetaData* record);
  void AdoptId(MediaMetaData* record);
  void MendOrphans(const char* directoryPath, bool hasMediaTables);
  bool RemoveOrphans(const orx::ResultRows& orphans, bool hasMediaTables,
                     std::unordered_set<std::string>* seen);
  // What one reading of the platform's list carries from file to file.
  struct SharedFileWalk {
    std::string directoryName;  // of the last entry
    int unsupported = 0;        // files left out so far
    int companions = 0;         // files listed beside another so far
  };
  void AddSharedFile(int index, char* uri, SharedFileWalk* walk);

  bool Cancelled() const { return bInvalidateAllItemsCancelFlag != 0; }
  TChar* FirstCell(const orx::SqlStatement& statement);
  std::string ContainerIdForPath(const char* path);  // empty when there is none

  // The walks behind the reconciliation.
  class InvalidateWalk;
  class PurgeWalk;
  class DcfPurge;

  std::unique_ptr<orx::StatementCache> statements_;  // of the scan that is running
  std::unique_ptr<orx::Writing> writing_;
  bool isNew_ = false;  // the database was made by this connection's opening

  // The shared files of the DCF scans, one element a file, except the folder names (one a run).
  std::vector<int> vDirNum;
  std::vector<int> vDirFileNum;
  std::vector<DLNA_FILE_TYPE> vFileType;
  std::vector<int> vDBIndex;
  std::vector<std::string> vDirName;
  std::vector<std::string> vFilePath;
};

// The entry of the library: brings a media database in line with a directory tree.
//
// One instance in the process, used on one thread; only CancelScanDirectory may be called from
// another.  A scan opens the database, works in one transaction and closes the database again; it
// waits up to five seconds for other connections to the database, less after a cancel.  The caller
// sets `*status` to 0 or passes null; a scan sets it to 1 when it added the top folder or a file
// (ScanDir: a file directly in it), not when it removed rows or added some further below.  When the
// machine fails (memory, disk, a lock), the scan is undone and `*status` stays as it was.
// Paths are terminated UTF-8; new texts are released with ORXMemory::Free.
#pragma once

#include <atomic>
#include <map>
#include <utility>
#include <vector>

#include "FileScanner/OwnedText.h"
#include "Platform/Export.h"

class FileParserFramework;
class ImageMetaData;
class MediaFileInfos;
class MediaMetaData;
class ORXFSHandler;
class VideoMetaData;

// The default list of protocolInfo entries that a server is able to serve.
extern ORX_API const char* pProfiles;

// Lower-case extensions, searched case-insensitively and by substring.
extern ORX_API const char* All_Supported_Extensions;
extern ORX_API const char* MP4_Extension;
extern ORX_API const char* PC_JPEG_Extension;
extern ORX_API const char* MRCP_JPEG_Extension;
extern ORX_API const char* JPEG_Extension;

// How a file is served; texts that do not apply are null.
struct MediaFileDisplayRes {
  char* Protocol;  // "http"
  char* MimeType;
  char* Size;            // bytes
  char* Resolution;      // "640x480" (images)
  char* FrameRate;       // whole frames per second (video)
  char* BitRate;         // bits per second (audio)
  char* AdditionalInfo;  // "DLNA.ORG_PN=JPEG_SM;DLNA.ORG_OP=01"
};

// The display fields of one file; texts that do not apply are null.
struct MediaFileDisplayInfo {
  char* Title;
  char* Date;
  int ObjectType;     // 1 image, 2 audio, 3 video
  unsigned Duration;  // the leading number of the duration text
  char* Artist;
  char* AlbumTitle;
  MediaFileDisplayRes* Res;
};

// Releases a record of DirectoryScanner::ParseAndGetFileInfo; null is harmless.
ORX_API void FreeMediaFileDisplayInfo(MediaFileDisplayInfo* info);

class ORX_API DirectoryScanner {
 public:
  static DirectoryScanner* GetInstance();  // created on first use
  static void DestroyInstance();           // harmless when there is none

  DirectoryScanner();
  ~DirectoryScanner();
  DirectoryScanner(const DirectoryScanner&) = delete;
  DirectoryScanner& operator=(const DirectoryScanner&) = delete;

  // ---- Configuration and profile filter (DirectoryScanner.cpp) ----
  void SetDlnaProfiles(const char* list);  // copied; null is ignored
  void CancelScanDirectory();              // from any thread; stays set until DestroyInstance
  bool GetCancelFlag();
  int _IsProfileSupported(const char* profile);
  // 1 when the server can serve the item, as its own profile or, by its MIME type, as "*"; then the
  // item carries that profile.
  int CheckMediaFileForDLNAContent(MediaMetaData* item);
  FileParserFramework* _GetFMParserFramework() const { return pFMParserFramework; }
  void _SetFMParserFramework(FileParserFramework* framework) { pFMParserFramework = framework; }
  void _CleanUpRelations();

  // ---- Directory scan (DirectoryScanner_Scan.cpp) ----
  void ScanDir(const char* dir, const char* dbPath, int* status);
  void _ScanDir(const char* dir, const char* parentId, int* status);
  // Insert a container row and return its id, null when it was not inserted.
  char* AddDirToDB(const char* path, const char* parentId);
  char* AddDirToObjTableInDB(const char* path, const char* parentId);
  // A copy of the path when it holds a '/', else null.
  char* _GetDirPathFromFullPathMA(const char* path);
  // Joins the two into `out`, which holds 512 bytes.  0, and an empty text, when they do not fit.
  int _GetFullPathOfFile(char* out, const char* dir, const char* name);
  char* _GetFileNameFromFullPathMA(const char* path);  // null when it holds no '/'
  // Searches entries 1 to `count`, from behind `*cursor` and round; moves the cursor to a hit.
  int IsInArray(const char* path, char** rows, int count, int* cursor);

  // ---- Forwarded to the database manager (DirectoryScanner_Database.cpp) ----
  void InvalidateAllItems(const char* dir);
  void DeleteInvalidItems(int* status);
  void DeleteInvalidItems(const char* dir);
  void deleteInvalidItemsDcf(const char* dir);
  void deleteInvalidItemsFromBackupDcf(const char* dir);
  void deleteInvalidItemsDcfInfo(const char* dir);
  bool IsInDB(const char* path);
  int ValidateItem(const char* path);
  void RemoveDirFromDB(const char* dir, int* status);
  void RemoveDirFromObjectTableinDB(const char* dir);
  char* GetDirUniqueId(const char* dir);
  int GetArrayOfFullPath(const char* parentId, char*** rows, int* count);
  void InsertItem(MediaMetaData* record);
  void InsertItem2(MediaMetaData* record);
  void InsertItemInObjectTable(MediaMetaData* record);
  void DeleteItem(const char* path);
  int IsValid(const char* path);  // always 0
  void InvalidateDirectory(const char* dbPath, const char* dir, int* status);

  // ---- File registration (DirectoryScanner_Register.cpp): 1 registered, 0 not ----
  int HandleFile(const char* dir, const char* parentId, const char* name, const char* fullPath);
  int HandleFile2(const char* dir, const char* parentId, const char* name, const char* fullPath,
                  int dcfIndex, int sortIndex, int fileType);
  int HandleFileXQ(const char* dir, const char* parentId, const char* name, const char* fullPath,
                   int dcfIndex, int sortIndex, int fileType);
  int HandleFileAutoBackup(const char* dir, const char* parentId, const char* name,
                           const char* fullPath, int dcfIndex, int sortIndex, int fileType);
  // Parses one file and writes it into the database, under the id `parent` that a client was given
  // or, when that is null, as a new item.  The item's type (1 image, 2 audio, 3 video), or -1.
  int ParseAndRegisterFile(const char* dbPath, const char* fullPath, const char* parent);

  // ---- Single files (DirectoryScanner_FileInfo.cpp) ----
  // Null on failure; released with FreeMediaFileDisplayInfo.
  MediaFileDisplayInfo* ParseAndGetFileInfo(const char* fullPath);
  // The filled singleton, null on failure.
  MediaFileInfos* ParseAndGetMediaFileInfo(const char* fullPath);
  // Size in bytes and date ("2026-11-21", into at least 12 bytes) from the file system.
  int __ExtractFileSizeAndDateFromName(const char* path, long long* size, char* date);
  // New records from the platform's attributes, owned by the caller.
  ImageMetaData* __ExtractImageMetadata();
  ImageMetaData* __ExtractImageMetadata(const char* path);
  VideoMetaData* __ExtractVideoMetadata(const char* path);
  char* __GetJPEGProfile(int height, int width);  // a new text, or null when either is 0

  // ---- Scans of the shared files (DirectoryScanner_Dcf.cpp) ----
  void scanDcf(const char* dir, const char* dbPath, int* status);
  void scanXQDcf(const char* dir, const char* dbPath, int* status);
  void scanAutoBackupDcf(const char* dir, const char* dbPath, int* status);
  void _scanDirDcf(const char* dir, const char* parentId, int* status);
  void _scanDirXQDcf(const char* dir, const char* parentId, int* status);
  void _scanDirAutoBackupDcf(const char* dir, const char* parentId, int* status);
  char* _handleDirDcf(const char* dirPath, const char* parentId);
  char* _handleDirXQDcf(const char* dirPath, const char* parentId);
  char* _handleDirAutoBackupDcf(const char* dirPath, const char* parentId);

  FileParserFramework* pFMParserFramework;  // owned
  std::atomic<bool> bDirectoryScanCancelFlag;
  char* pSupportedProfiles;  // points into profileLists_, null when none was set

  static DirectoryScanner* singleInstance;

 private:
  using DirectoryIdentity = std::pair<unsigned long long, unsigned long long>;  // device, inode

  // Notes a directory as open while its walk lasts, and tells whether it was open already, for a
  // link can lead back to a directory above it, and whether links have led to it too often.
  class OpenDirectoryMark {
   public:
    OpenDirectoryMark(DirectoryScanner* scanner, const char* dir);
    ~OpenDirectoryMark();
    OpenDirectoryMark(const OpenDirectoryMark&) = delete;
    OpenDirectoryMark& operator=(const OpenDirectoryMark&) = delete;
    bool isOwnAncestor() const { return isOwnAncestor_; }
    bool isLinkedTooOften() const { return isLinkedTooOften_; }

   private:
    bool CountLink(const char* dir, const DirectoryIdentity& identity);

    DirectoryScanner* scanner_;
    bool isOwnAncestor_ = false;
    bool isLinkedTooOften_ = false;
    bool added_ = false;
  };

  class DcfScan;  // the scans of the shared files, one walk for the three modes

  using AddDirectory = char* (DirectoryScanner::*)(const char* path, const char* parentId);
  char* FindOrAddDirectory(const char* dir, const char* parentId, AddDirectory add, int* status);
  bool Stopped() const;  // by a cancel, or because nothing can be written
  static int LastQuery();
  static bool LeavesUnanswered(const char* dir, int code);
  void ScanEntries(ORXFSHandler* handler, const char* dir, const char* id, int* status);

  orx::OwnedText profileLists_;
  std::vector<DirectoryIdentity> openDirectories_;  // from the scan's root to where it stands
  std::map<DirectoryIdentity, int> linkVisits_;     // of this scan, by where the links lead
};

// The scans of a card's shared files: the list comes from the platform, the tree is not walked.
//
// One walk serves three modes.  A mode says where the list comes from, which rows are written and
// removed, how a file is registered, and what is logged.
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DcfFileInfoVector.h"
#include "FileScanner/DcfUri.h"
#include "FileScanner/DirectoryScanner.h"
#include "FileScanner/KnownPaths.h"
#include "FileScanner/SqlConnection.h"
#include "FileScanner/WriteTransaction.h"
#include "OSAL/Fault.h"
#include "OSAL/LocalTimeScope.h"
#include "OSAL/ORXFSHandler.h"
#include "OSAL/ORXLog.h"
#include "OSAL/StringUtiltiy.h"
#include "OSAL/TextPtr.h"

namespace {

constexpr char kCardMount[] = "/mnt/mmc";
constexpr char kDcfRoot[] = "/mnt/mmc/DCIM/";
constexpr size_t kLongestDirectory = 510;  // characters
constexpr size_t kBannerLength = 45;
constexpr size_t kLongBannerLength = 70;
constexpr char kMissingText[] = " ";  // what the database has where a record had no text

const char* OrEmpty(const char* text) { return text != nullptr ? text : ""; }

// A file as its list has it.
struct ListedFile {
  const std::string& path;  // below the mount
  int platformIndex;
  int sortNumber;
  int type;
};

// Where a mode finds its list of shared files.
struct ListSource {
  void (*acquire)();
  int (*fill)();
  void (*discard)();
  int (*directoryCount)();
  int (*fileCount)();
  const std::string& (*directoryName)(int index);
  ListedFile (*file)(int index);
};

// The list that is read anew for every scan.
DataBaseMgr* Manager() { return DataBaseMgr::GetInstance(); }
const ListSource kManagersList = {
    [] {},
    [] { return Manager()->addFileUriToTable(); },
    [] {},
    [] { return Manager()->getDirNameVectorSize(); },
    [] { return Manager()->getFilePathVectorSize(); },
    [](int index) -> const std::string& { return Manager()->getDirNameVectorAt(index); },
    [](int index) {
      return ListedFile{Manager()->getFilePathVectorAt(index), Manager()->getDBIndexVectorAt(index),
                        Manager()->getDirFileNumVectorAt(index),
                        Manager()->getFileTypeVectorAt(index)};
    },
};

// The list that stays from scan to scan and grows; after a failure it is begun anew.
DcfFileInfoVector* KeptList() { return &orx::Existing(DcfFileInfoVector::GetInstance()); }
const ListSource kIncrementalList = {
    [] { KeptList(); },
    [] { return KeptList()->addToDCFInfoVector(); },
    [] { DcfFileInfoVector::DestroyInstance(); },
    [] { return KeptList()->getDirNameVectorSize(); },
    [] { return KeptList()->getFilePathVectorSize(); },
    [](int index) -> const std::string& { return KeptList()->getDirNameVectorAt(index); },
    [](int index) {
      return ListedFile{
          KeptList()->getFilePathVectorAt(index), KeptList()->getDcfIndexVectorAt(index),
          KeptList()->getDirFileNumVectorAt(index), KeptList()->getFileTypeVectorAt(index)};
    },
};

// How a directory that cannot be opened leaves the database: with all that is under it, or its own
// row alone where the layout has no marks to sweep by.
void RemoveTree(DirectoryScanner* scanner, const char* dir, int* status) {
  scanner->RemoveDirFromDB(dir, status);
}
void RemoveRow(DirectoryScanner* scanner, const char* dir, int* /*status*/) {
  scanner->RemoveDirFromObjectTableinDB(dir);
}

}  // namespace

class DirectoryScanner::DcfScan {
 public:
  struct Mode {
    const ListSource& list;
    void (DirectoryScanner::*purge)(const char* dir);
    AddDirectory addDirectory;
    void (*removeDirectory)(DirectoryScanner* scanner, const char* dir, int* status);
    int (DirectoryScanner::*handleFile)(const char* dir, const char* parentId, const char* name,
                                        const char* fullPath, int dcfIndex, int sortIndex,
                                        int fileType);
    bool reportsAddedFiles;
    bool hasMediaTables;

    size_t bannerLength;
    const char* banner;  // before " [directory], to db (database)"
    const char* openFailure;
    const char* listFailure;
    const char* beforePurge;
    const char* scanStart;  // timing labels
    const char* scanStop;
    const char* cancelledBetweenDirectories;
    const char* cancelledBetweenFiles;
  };
  static const Mode kFull, kObjectOnly, kBackup;

  DcfScan(DirectoryScanner* scanner, const Mode& mode) : scanner_(*scanner), mode_(mode) {}

  void Run(const char* dir, const char* dbPath, int* status);
  void Walk(const char* dir, const char* parentId, int* status);
  char* HandleDirectory(const char* dirPath, const char* parentId);

 private:
  void WalkDirectories(const char* rootId, int* status);
  void AddFilesOf(const std::string& directoryName, const char* rootId, int* status);
  bool Cancelled() const { return scanner_.bDirectoryScanCancelFlag; }
  bool Stopped() const { return scanner_.Stopped(); }
  bool FilesLeft() const { return nextFile_ < mode_.list.fileCount(); }

  DirectoryScanner& scanner_;
  const Mode& mode_;
  int nextFile_ = 0;  // in the list
  int added_ = 0;     // files registered
};

const DirectoryScanner::DcfScan::Mode DirectoryScanner::DcfScan::kFull = {
    kManagersList,
    &DirectoryScanner::deleteInvalidItemsDcf,
    &DirectoryScanner::AddDirToDB,
    RemoveTree,
    &DirectoryScanner::HandleFile2,
    false,
    true,
    kBannerLength,
    "Scanning Directory is",
    "Error : OpenDB fail'\n",
    "addFileUriToTable is error.. \n",
    "[DirectoryScanner::ScanDir] Before Invalidate'\n",
    ">> scanDcf Time!! start",
    ">> scanDcf Time!! stop",
    "[DirectoryScanner::_scanDirDcf] ... bDirectoryScanCancelFlag 1",
    "[DirectoryScanner::_scanDirDcf] ... bDirectoryScanCancelFlag 2",
};

const DirectoryScanner::DcfScan::Mode DirectoryScanner::DcfScan::kObjectOnly = {
    kIncrementalList,
    &DirectoryScanner::deleteInvalidItemsDcfInfo,
    &DirectoryScanner::AddDirToObjTableInDB,
    RemoveRow,
    &DirectoryScanner::HandleFileXQ,
    true,
    false,
    kLongBannerLength,
    "[DirectoryScanner::scanXQDcf]Scanning Directory is",
    "[DirectoryScanner::scanXQDcf]Error : OpenDB fail'\n",
    "[DirectoryScanner::scanXQDcf] addToDCFInfoVector is error.. \n",
    "[DirectoryScanner::scanXQDcf] Before Invalidate'\n",
    ">> scanDcf Time!! start",
    ">> scanDcf Time!! stop",
    "[ DirectoryScanner::_scanDirXQDcf] ... bDirectoryScanCancelFlag is set",
    "[DirectoryScanner::_scanDirXQDcf] ... bDirectoryScanCancelFlag 2",
};

// The layout of the backup mode has marks but no media tables.
const DirectoryScanner::DcfScan::Mode DirectoryScanner::DcfScan::kBackup = {
    kManagersList,
    &DirectoryScanner::deleteInvalidItemsFromBackupDcf,
    &DirectoryScanner::AddDirToObjTableInDB,
    RemoveTree,
    &DirectoryScanner::HandleFileAutoBackup,
    false,
    false,
    kBannerLength,
    "Scanning Directory for Autobackup is",
    "[DirectoryScanner::scanAutoBackupDcf]Error : OpenDB fail'\n",
    "[DirectoryScanner::scanAutoBackupDcf]addFileUriToTable is error.. \n",
    "[DirectoryScanner::scanAutoBackupDcf] Before Invalidate'\n",
    ">> _scanAutoBackupDcf Time!! start",
    ">> _scanAutoBackupDcf Time!! stop",
    "[DirectoryScanner::_scanDirAutoBackupDcf] ... bDirectoryScanCancelFlag 1",
    "[DirectoryScanner::_scanDirAutoBackupDcf] ... bDirectoryScanCancelFlag 2",
};

// The database is closed at the end of every scan and opened again by the next one.
void DirectoryScanner::DcfScan::Run(const char* dir, const char* dbPath, int* status) try {
  const orx::LocalTimeScope zone;
  const std::string row(mode_.bannerLength, '=');
  ORX_LOG_INFO("%s", row.c_str());
  ORX_LOG_INFO("%s [%s], to db (%s) \n", mode_.banner, OrEmpty(dir), OrEmpty(dbPath));
  ORX_LOG_INFO("%s", row.c_str());

  mode_.list.acquire();
  DataBaseMgr* database = DataBaseMgr::GetInstance();
  if (database == nullptr) return;
  if (database->OpenDB(dbPath) == 0) {
    ORX_LOG_ERROR("%s", mode_.openFailure);
    DataBaseMgr::DestroyInstance();
    return;
  }
  if (mode_.list.fill() == 0) {
    ORX_LOG_INFO("%s", mode_.listFailure);
    mode_.list.discard();
    DataBaseMgr::DestroyInstance();
    return;
  }

  ORX_LOG_INFO("%s", mode_.beforePurge);
  orx::ScanTransaction::Run(database, status, [&] {
    nextFile_ = added_ = 0;
    orx::ScanTransaction::MendOrphans(database, dir, mode_.hasMediaTables);
    ORX_LOG_TIME(">> Delete Time!! start");
    (scanner_.*mode_.purge)(dir);
    ORX_LOG_TIME(">> Delete Time!! stop");
    if (Stopped()) return;
    ORX_LOG_TIME(mode_.scanStart);
    Walk(dir, nullptr, status);
    ORX_LOG_TIME(mode_.scanStop);
  });
  DataBaseMgr::DestroyInstance();
} catch (const std::exception&) {
  orx::NoteOutOfMemory(__func__);
  DataBaseMgr::DestroyInstance();
}

// Makes the root's row and registers the listed files, directory by directory.
void DirectoryScanner::DcfScan::Walk(const char* dir, const char* parentId, int* status) try {
  ORX_LOG_INFO("[DirectoryScanner::_scanDirDcf] Start Scanning Directories\n");
  if (dir == nullptr) return;

  const orx::FaultWatch watch;
  ORXFSHandler handler;
  if (handler.OpenDir(dir) == 0) {
    if (watch.Seen()) return;
    ORX_LOG_INFO("_scanDirDcf : '%s' : Not Directory\n", dir);
    const orx::TextPtr utf8(StringUtiltiy::GetUtf8FromTChar(dir));
    mode_.removeDirectory(&scanner_, utf8.get(), status);
    return;
  }
  const orx::TextPtr rootId(scanner_.FindOrAddDirectory(dir, parentId, mode_.addDirectory, status));
  if (watch.Seen()) return;
  if (strlen(dir) > kLongestDirectory) {
    ORX_LOG_INFO("\nDirectory path is too big.\n");
    return;
  }
  if (mode_.list.directoryCount() > 0) WalkDirectories(rootId.get(), status);
  handler.CloseDir();
} catch (const std::exception&) {
  orx::NoteOutOfMemory(__func__);
}

void DirectoryScanner::DcfScan::WalkDirectories(const char* rootId, int* status) {
  const int directoryCount = mode_.list.directoryCount();
  for (int directory = 0; directory < directoryCount; ++directory) {
    if (orx::ScanTransaction::GivenUp()) return;
    if (Cancelled()) {
      ORX_LOG_INFO("%s", mode_.cancelledBetweenDirectories);
      break;
    }
    AddFilesOf(mode_.list.directoryName(directory), rootId, status);
    if (FilesLeft() && Cancelled() && !orx::ScanTransaction::GivenUp())
      ORX_LOG_INFO("%s", mode_.cancelledBetweenFiles);
  }
  if (!mode_.reportsAddedFiles) return;
  const int listed = mode_.list.fileCount();
  ORX_LOG_INFO("[DirectoryScanner::_scanDirXQDcf] Add %d files to the DB , from %d \n", added_,
               listed);
  printf("[DirectoryScanner::_scanDirXQDcf] Add %d files to the DB , from %d \n", added_, listed);
}

// Registers the files that stand next in the list, as far as they lie in the directory.
void DirectoryScanner::DcfScan::AddFilesOf(const std::string& directoryName, const char* rootId,
                                           int* status) {
  const orx::FaultWatch watch;
  const std::string dirPath = kDcfRoot + directoryName;
  const orx::TextPtr id(HandleDirectory(dirPath.c_str(), rootId));

  // Files of a directory without a row are registered without a parent; they are found again so.
  char** rows = nullptr;
  int count = 0;
  scanner_.GetArrayOfFullPath(id != nullptr ? id.get() : kMissingText, &rows, &count);
  const orx::RawTable table(rows);
  orx::KnownPaths known(rows, count);
  // Where the machine failed, its files are left to the next scan.
  const bool skipped = LeavesUnanswered(dirPath.c_str(), LastQuery()) || watch.Seen();

  for (; FilesLeft() && !Stopped(); ++nextFile_) {
    const ListedFile file = mode_.list.file(nextFile_);
    if (orx::DirectoryNameInDcfPath(file.path) != directoryName) return;
    const std::string fullPath = kCardMount + file.path;
    if (skipped || known.Contains(fullPath.c_str())) continue;
    const std::string name(orx::FileNameInDcfPath(file.path));
    if ((scanner_.*mode_.handleFile)(dirPath.c_str(), id.get(), name.c_str(), fullPath.c_str(),
                                     file.platformIndex, file.sortNumber, file.type) == 0)
      continue;
    ++added_;
    if (status != nullptr) *status = 1;
  }
}

// The id of a listed directory's row, a new text; null when the directory cannot be opened.
char* DirectoryScanner::DcfScan::HandleDirectory(const char* dirPath, const char* parentId) {
  if (dirPath == nullptr) return nullptr;
  const orx::FaultWatch watch;
  ORXFSHandler handler;
  if (handler.OpenDir(dirPath) == 0) {
    if (watch.Seen()) return nullptr;
    ORX_LOG_INFO("_handleDirDcf : '%s' : Not Directory\n", dirPath);
    mode_.removeDirectory(&scanner_, dirPath, nullptr);
    return nullptr;
  }
  return scanner_.FindOrAddDirectory(dirPath, parentId, mode_.addDirectory, nullptr);
}

void DirectoryScanner::scanDcf(const char* dir, const char* dbPath, int* status) {
  DcfScan(this, DcfScan::kFull).Run(dir, dbPath, status);
}

void DirectoryScanner::scanXQDcf(const char* dir, const char* dbPath, int* status) {
  DcfScan(this, DcfScan::kObjectOnly).Run(dir, dbPath, status);
}

void DirectoryScanner::scanAutoBackupDcf(const char* dir, const char* dbPath, int* status) {
  DcfScan(this, DcfScan::kBackup).Run(dir, dbPath, status);
}

void DirectoryScanner::_scanDirDcf(const char* dir, const char* parentId, int* status) {
  DcfScan(this, DcfScan::kFull).Walk(dir, parentId, status);
}

void DirectoryScanner::_scanDirXQDcf(const char* dir, const char* parentId, int* status) {
  DcfScan(this, DcfScan::kObjectOnly).Walk(dir, parentId, status);
}

void DirectoryScanner::_scanDirAutoBackupDcf(const char* dir, const char* parentId, int* status) {
  DcfScan(this, DcfScan::kBackup).Walk(dir, parentId, status);
}

char* DirectoryScanner::_handleDirDcf(const char* dirPath, const char* parentId) {
  return DcfScan(this, DcfScan::kFull).HandleDirectory(dirPath, parentId);
}

char* DirectoryScanner::_handleDirXQDcf(const char* dirPath, const char* parentId) {
  return DcfScan(this, DcfScan::kObjectOnly).HandleDirectory(dirPath, parentId);
}

char* DirectoryScanner::_handleDirAutoBackupDcf(const char* dirPath, const char* parentId) {
  return DcfScan(this, DcfScan::kBackup).HandleDirectory(dirPath, parentId);
}

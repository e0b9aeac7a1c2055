// The scan of a directory tree.
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DirectoryScanner.h"
#include "FileScanner/KnownPaths.h"
#include "FileScanner/MediaMetaData.h"
#include "FileScanner/SqlConnection.h"
#include "FileScanner/WriteTransaction.h"
#include "OSAL/Fault.h"
#include "OSAL/LocalTimeScope.h"
#include "OSAL/ORXCString.h"
#include "OSAL/ORXFSHandler.h"
#include "OSAL/ORXLog.h"
#include "OSAL/ORXMemory.h"
#include "OSAL/StringUtiltiy.h"
#include "OSAL/TextPtr.h"

namespace {

constexpr size_t kPathSize = 512;          // of the buffer behind _GetFullPathOfFile
constexpr size_t kLongestDirectory = 510;  // characters
constexpr size_t kFileNamePathSize = 520;  // the longest path _GetFileNameFromFullPathMA takes
// How often a scan follows links to the same directory: a few directories with links to each other
// could otherwise be walked on millions of ways.
constexpr int kMostLinkVisits = 1000;
constexpr char kBanner[] = "=============================================";
constexpr char kDirectoryDate[] = "17Nov2008";  // containers carry no date of their own
constexpr char kNoParent[] = "0";
constexpr unsigned kContainer = 0;

enum EntryType { kDirectoryEntry = 0, kFileEntry = 1, kUnknownEntry = -1 };

const char* OrEmpty(const char* text) { return text != nullptr ? text : ""; }

// A record of a directory's row, without its id.
void FillDirectoryRecord(DirectoryScanner* scanner, const char* path, const char* parentId,
                         MediaMetaData* record) {
  record->SetFullPath(path);
  record->SetDate(kDirectoryDate);
  if (parentId != nullptr) {
    record->SetDirectoryID(parentId);
  } else {
    const orx::TextPtr own(scanner->_GetDirPathFromFullPathMA(path));
    const orx::TextPtr id(DataBaseMgr::GetInstance()->GetUniqueIdForPath(own.get()));
    record->SetDirectoryID(id != nullptr ? id.get() : kNoParent);
  }
  record->SetType(kContainer);
}

// The id of the new row, null when there is none.
char* AddDirectoryRow(DirectoryScanner* scanner, const char* path, const char* parentId,
                      void (DataBaseMgr::*insert)(MediaMetaData*)) {
  DataBaseMgr* database = DataBaseMgr::GetInstance();
  if (database == nullptr) return nullptr;
  const orx::FaultWatch watch;
  MediaMetaData record;
  FillDirectoryRecord(scanner, path, parentId, &record);
  if (watch.Seen()) return nullptr;
  (database->*insert)(&record);
  return ORXCString::DupCopy(record.GetUniqueID());
}

}  // namespace

void DirectoryScanner::ScanDir(const char* dir, const char* dbPath, int* status) {
  const orx::LocalTimeScope zone;
  ORX_LOG_INFO("%s", kBanner);
  ORX_LOG_INFO("Scanning Directory is [%s], to db (%s)", OrEmpty(dir), OrEmpty(dbPath));
  ORX_LOG_INFO("%s", kBanner);
  DataBaseMgr* database = DataBaseMgr::GetInstance();
  if (database == nullptr) return;
  if (database->OpenDB(dbPath) == 0) {
    ORX_LOG_ERROR("Error : OpenDB fail");
    DataBaseMgr::DestroyInstance();
    return;
  }
  ORX_LOG_INFO("[DirectoryScanner::ScanDir] Before Invalidate");
  orx::ScanTransaction::Run(database, status, [&] {
    orx::ScanTransaction::MendOrphans(database, dir, true);
    DeleteInvalidItems(dir);
    if (!Stopped()) _ScanDir(dir, nullptr, status);
  });
  DataBaseMgr::DestroyInstance();
}

bool DirectoryScanner::Stopped() const {
  return bDirectoryScanCancelFlag || orx::ScanTransaction::GivenUp();
}

// Where the machine fails, the directory is left as it is, with all that is in it, for the next
// scan.
void DirectoryScanner::_ScanDir(const char* dir, const char* parentId, int* status) try {
  ORX_LOG_INFO("[DirectoryScanner::_ScanDir] Start Scanning Directories");
  if (dir == nullptr) return;

  const orx::FaultWatch watch;
  ORXFSHandler handler;
  if (handler.OpenDir(dir) == 0) {
    if (watch.Seen()) return;
    ORX_LOG_INFO("_ScanDir : '%s' : Not Directory", dir);
    const orx::TextPtr utf8(StringUtiltiy::GetUtf8FromTChar(dir));
    RemoveDirFromDB(utf8.get(), status);
    return;
  }
  const OpenDirectoryMark mark(this, dir);
  if (mark.isOwnAncestor()) {
    ORX_LOG_INFO("[DirectoryScanner::_ScanDir] '%s' leads back to a directory above it", dir);
    return;
  }
  if (mark.isLinkedTooOften()) {
    ORX_LOG_INFO("[DirectoryScanner::_ScanDir] '%s' is one link of many to its directory", dir);
    return;
  }
  const orx::TextPtr id(FindOrAddDirectory(dir, parentId, &DirectoryScanner::AddDirToDB, status));
  if (watch.Seen()) return;
  if (strlen(dir) > kLongestDirectory) {
    ORX_LOG_INFO("[DirectoryScanner::_ScanDir] Directory path is too big");
    return;
  }
  ScanEntries(&handler, dir, id.get(), status);
  handler.CloseDir();
} catch (const std::exception&) {
  orx::NoteOutOfMemory(__func__);
}

// The id of the directory's row, which `add` makes when there is none; null, and a fault is noted,
// when the database does not say.  Where the row is damaged, an index may still have its id.
char* DirectoryScanner::FindOrAddDirectory(const char* dir, const char* parentId, AddDirectory add,
                                           int* status) {
  const orx::TextPtr utf8(StringUtiltiy::GetUtf8FromTChar(dir));
  const bool known = IsInDB(dir) && IsValid(dir) == 0;
  const int answer = LastQuery();
  if (!known && !orx::IsUnanswered(answer)) {
    if (status != nullptr) *status = 1;
    return (this->*add)(utf8.get(), parentId);
  }
  char* id = DataBaseMgr::GetInstance()->GetUniqueIdForPath(utf8.get());
  if (id != nullptr) return id;
  if (LeavesUnanswered(dir, answer) || LeavesUnanswered(dir, LastQuery())) return nullptr;
  return ORXCString::DupCopy(kNoParent);
}

// SQLite's code.
int DirectoryScanner::LastQuery() {
  const DataBaseMgr* database = DataBaseMgr::mpThisInstance;
  return database != nullptr ? database->nLastResult : SQLITE_OK;
}

// Whether a query with this code could not be answered, because the machine fails or the database
// is damaged: the directory that it was about is left to the next scan.
bool DirectoryScanner::LeavesUnanswered(const char* dir, int code) {
  if (!orx::IsUnanswered(code)) return false;
  orx::NoteLeftOut(dir, sqlite3_errstr(code));
  return true;
}

// Registers the files of an open directory that are not known yet and walks its subdirectories.
void DirectoryScanner::ScanEntries(ORXFSHandler* handler, const char* dir, const char* id,
                                   int* status) {
  char** rows = nullptr;
  int count = 0;
  GetArrayOfFullPath(id, &rows, &count);
  const orx::RawTable table(rows);
  const bool leavesFiles = LeavesUnanswered(dir, LastQuery());  // or all would be taken for new
  orx::KnownPaths known(rows, count);

  // Not on the stack: a deep tree has one of these for each level.
  const auto entry = std::make_unique<ORXFSHandler::PTFile>();
  char fullPath[kPathSize];
  for (entry->type = kUnknownEntry; handler->Read(entry.get()) != 0; entry->type = kUnknownEntry) {
    if (Stopped()) break;
    if (entry->type != kFileEntry && entry->type != kDirectoryEntry) continue;
    if (_GetFullPathOfFile(fullPath, dir, entry->name) == 0) {
      ORX_LOG_INFO("[DirectoryScanner::_ScanDir] Path of '%s' is too big", entry->name);
    } else if (entry->type == kDirectoryEntry) {
      ORX_LOG_INFO("[DirectoryScanner::_ScanDir] DIRECTORY '%s'", fullPath);
      _ScanDir(fullPath, id, nullptr);
    } else if (!leavesFiles && !known.Contains(fullPath)) {
      if (HandleFile(dir, id, entry->name, fullPath) != 0 && status != nullptr) *status = 1;
    }
  }
}

DirectoryScanner::OpenDirectoryMark::OpenDirectoryMark(DirectoryScanner* scanner, const char* dir)
    : scanner_(scanner) {
  struct stat64 status = {};
  if (stat64(dir, &status) != 0) {
    orx::NoteOpenError("stat", dir, errno);
    return;
  }
  const DirectoryIdentity identity{static_cast<unsigned long long>(status.st_dev),
                                   static_cast<unsigned long long>(status.st_ino)};
  auto& open = scanner_->openDirectories_;
  if (open.empty()) scanner_->linkVisits_.clear();  // the scan begins here
  isOwnAncestor_ = std::find(open.begin(), open.end(), identity) != open.end();
  isLinkedTooOften_ = !isOwnAncestor_ && !CountLink(dir, identity);
  if (isOwnAncestor_ || isLinkedTooOften_) return;
  open.push_back(identity);
  added_ = true;
}

// False when the directory is reached through a link, and too many have led to it.
bool DirectoryScanner::OpenDirectoryMark::CountLink(const char* dir,
                                                    const DirectoryIdentity& identity) {
  struct stat64 status = {};
  const bool known = lstat64(dir, &status) == 0;
  if (!known) orx::NoteOpenError("lstat", dir, errno);
  if (!known || !S_ISLNK(status.st_mode)) return true;
  return ++scanner_->linkVisits_[identity] <= kMostLinkVisits;
}

DirectoryScanner::OpenDirectoryMark::~OpenDirectoryMark() {
  if (added_) scanner_->openDirectories_.pop_back();
}

char* DirectoryScanner::AddDirToDB(const char* path, const char* parentId) {
  if (path == nullptr) return nullptr;
  return AddDirectoryRow(this, path, parentId, &DataBaseMgr::InsertMetaData);
}

char* DirectoryScanner::AddDirToObjTableInDB(const char* path, const char* parentId) {
  if (path == nullptr) return nullptr;
  return AddDirectoryRow(this, path, parentId, &DataBaseMgr::InsertMetaDataToObjTable);
}

// The path is deliberately not cut: callers look up the id of the directory itself, and one that is
// not in the database yet hangs under "0".
char* DirectoryScanner::_GetDirPathFromFullPathMA(const char* path) {
  if (path == nullptr || strchr(path, '/') == nullptr) return nullptr;
  return ORXCString::DupCopy(path);
}

int DirectoryScanner::_GetFullPathOfFile(char* out, const char* dir, const char* name) {
  if (out == nullptr) return 0;
  out[0] = '\0';
  if (dir == nullptr || name == nullptr) return 0;
  const size_t length = strlen(dir);
  const bool separated = length > 0 && (dir[length - 1] == '/' || dir[length - 1] == '\\');
  const int written = snprintf(out, kPathSize, separated ? "%s%s" : "%s/%s", dir, name);
  if (written >= 0 && static_cast<size_t>(written) < kPathSize) return 1;
  out[0] = '\0';
  return 0;
}

char* DirectoryScanner::_GetFileNameFromFullPathMA(const char* path) {
  if (path == nullptr || strlen(path) >= kFileNamePathSize) return nullptr;
  const char* slash = strrchr(path, '/');
  return slash != nullptr ? ORXCString::DupCopy(slash + 1) : nullptr;
}

int DirectoryScanner::IsInArray(const char* path, char** rows, int count, int* cursor) {
  if (path == nullptr || rows == nullptr || cursor == nullptr || count <= 0) return 0;
  int start = *cursor;
  if (start < 0 || start > count) start = 0;
  // All entries once, beginning behind the cursor; the cursor's own entry comes last.
  for (int step = 1; step <= count; ++step) {
    const int i = (start - 1 + step) % count + 1;
    if (rows[i] == nullptr || strcmp(rows[i], path) != 0) continue;
    *cursor = i == count ? 0 : i;
    return 1;
  }
  return 0;
}

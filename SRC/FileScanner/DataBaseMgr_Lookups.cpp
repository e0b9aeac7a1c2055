// Questions about one path, the paths under a directory, and titles.
#include <cstring>
#include <memory>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/SqlStatement.h"
#include "FileScanner/WriteTransaction.h"
#include "OSAL/Fault.h"
#include "OSAL/ORXCString.h"
#include "OSAL/StringUtiltiy.h"

using orx::SqlStatement;

namespace {

// One column of the first row with a path.
constexpr char kFromObjects[] = "select %s from  ObjectTable where FullPath=\"%s\"";
constexpr char kFromImages[] = "select %s from  ImageTable where FullPath=\"%s\"";
constexpr char kFromAudios[] = "select %s from  AudioTable where FullPath=\"%s\"";
constexpr char kFromVideos[] = "select %s from  VideoTable where FullPath=\"%s\"";

SqlStatement Ask(const char* pattern, const char* column, const char* path) {
  SqlStatement question(pattern);
  question.Name(column).Text(path);
  return question;
}

struct FreeSqliteText {
  void operator()(char* text) const { sqlite3_free(text); }
};

}  // namespace

TChar* DataBaseMgr::FirstCell(const SqlStatement& statement) {
  Query(statement);
  if (vdata.empty()) return nullptr;
  TChar* cell = StringUtiltiy::GetTcharFromChar(vdata[0].c_str());
  vdata.clear();
  return cell;
}

TChar* DataBaseMgr::GetImageElementForPathFromObjTable(const char* path, const char* column) {
  return FirstCell(Ask(kFromObjects, column, path));
}

TChar* DataBaseMgr::GetVideoElementForPathFromObjTable(const char* path, const char* column) {
  return FirstCell(Ask(kFromObjects, column, path));
}

TChar* DataBaseMgr::GetClassElementForPath(const char* path, const char* column) {
  return FirstCell(Ask(kFromObjects, column, path));
}

TChar* DataBaseMgr::GetImageElementForPath(const char* path, const char* column) {
  return FirstCell(Ask(kFromImages, column, path));
}

TChar* DataBaseMgr::GetVideoElementForPath(const char* path, const char* column) {
  return FirstCell(Ask(kFromVideos, column, path));
}

TChar* DataBaseMgr::GetImageDLNAProfileForPath(const char* path) {
  return FirstCell(Ask(kFromImages, "DLNAProfile", path));
}

TChar* DataBaseMgr::GetAudioDLNAProfileForPath(const char* path) {
  return FirstCell(Ask(kFromAudios, "DLNAProfile", path));
}

TChar* DataBaseMgr::GetVideoDLNAProfileForPath(const char* path) {
  return FirstCell(Ask(kFromVideos, "DLNAProfile", path));
}

TChar* DataBaseMgr::GetClassForPath(const char* path) {
  return FirstCell(Ask(kFromObjects, "class", path));
}

TChar* DataBaseMgr::GetParentIdForPath(const char* path) {
  return FirstCell(Ask(kFromObjects, "parentID", path));
}

TChar* DataBaseMgr::GetUniqueIdForPath(const char* path) {
  return FirstCell(Ask(kFromObjects, "id", path));
}

// The one query whose raw result goes to the caller, so its value is quoted instead of bound.
int DataBaseMgr::GetArrayOfFullPathInDB(const char* parentId, char*** rows, int* count) {
  if (rows != nullptr) *rows = nullptr;
  if (count != nullptr) *count = 0;
  nLastResult = SQLITE_MISUSE;
  if (ppDataBase == nullptr || parentId == nullptr || rows == nullptr) return nLastResult;
  nLastResult = SQLITE_ERROR;
  if (writing_->Stopped() || strchr(parentId, '"') != nullptr) return nLastResult;

  const std::unique_ptr<char, FreeSqliteText> sql(
      sqlite3_mprintf("select FullPath from ObjectTable where parentID = %Q", parentId));
  nLastResult = SQLITE_NOMEM;
  if (sql != nullptr && !writing_->damaged.empty() && MetDamage(sql.get())) {
    nLastResult = SQLITE_CORRUPT;
  } else if (sql != nullptr) {
    nLastResult = sqlite3_get_table(ppDataBase, sql.get(), rows, count, nullptr, nullptr);
  }
  if (nLastResult != SQLITE_OK && sql != nullptr)
    orx::Guarded(__func__, [&] { NoteFailedQuery(nLastResult, sql.get()); });
  return nLastResult;
}

TChar* DataBaseMgr::GetTitleFromFullPath(const char* path) {
  if (path == nullptr) return nullptr;
  const char* slash = strrchr(path, '/');
  const char* title = slash != nullptr ? slash + 1 : path;
  return ORXCString::DupCopy(slash != nullptr && *title == '\0' ? "No Title" : title);
}

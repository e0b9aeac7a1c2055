// The files that a backup should consider, and which files are offered to clients.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "FileScanner/DataBaseGuard.h"
#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DataBaseSchema.h"
#include "FileScanner/SqlStatement.h"
#include "OSAL/Fault.h"
#include "OSAL/ORXLog.h"
#include "OSAL/TextPtr.h"

using orx::SqlStatement;

namespace {

constexpr int kMaxBackupElements = 1000;

// Copies as much as fits; the rest of the field is zero.
template <size_t kSize>
void CopyToField(char (&field)[kSize], const char* text) {
  memset(field, 0, kSize);
  memcpy(field, text, std::min(strlen(text), kSize - 1));
}

// Null when memory runs out.
BackupClassElement* NewBackupElement(const char* path) {
  const orx::TextPtr title(DataBaseMgr::GetTitleFromFullPath(path));
  if (title == nullptr) return nullptr;
  auto* element =
      static_cast<BackupClassElement*>(orx::Noted(malloc(sizeof(BackupClassElement)), __func__));
  if (element == nullptr) return nullptr;
  CopyToField(element->szTitle, title.get());
  CopyToField(element->szFullPath, path);
  element->pNext = nullptr;
  return element;
}

// Releases the list and answers that there is none.
int GiveUpList(BackupClassElement** head) {
  while (*head != nullptr) {
    BackupClassElement* next = (*head)->pNext;
    free(*head);
    *head = next;
  }
  return 0;
}

// What offers one file to clients, by its extension; `statement` stays as it is for any other.
void SelectShareStatement(const char* path, const char* extension, SqlStatement* statement) {
  if (strcmp(extension, ".JPG") == 0 || strcmp(extension, ".MPO") == 0) {
    *statement =
        SqlStatement("update ImageTable SET Share = %d WHERE FullPath = '%s'").Int(1).Text(path);
  } else if (strcmp(extension, ".MP4") == 0) {
    *statement =
        SqlStatement("update VideoTable SET Share = '%d' WHERE FullPath = '%s'").Int(1).Text(path);
  } else {
    ORX_LOG_INFO("[UpdateShareStatus] Invalid filetype[%s]", extension);
  }
}

}  // namespace

int DataBaseMgr::GetClassElementListForBackup(int* count, BackupClassElement** head) {
  if (count == nullptr || head == nullptr) return 0;
  const orx::FaultWatch watch;
  ExecSqlStatment(
      "select FullPath from  ObjectTable where class != 0 and IsBackup  != 1  "
      "order by FullPath DESC");
  if (vdata.empty()) return 0;

  *count = 0;
  *head = nullptr;
  ORX_LOG_INFO("NumOfRows : %d, NumOfColumns: %d", nRows, nColumns);
  nRows = std::min(nRows, kMaxBackupElements);
  BackupClassElement** link = head;
  for (int row = 0; row < nRows; ++row) {
    *link = NewBackupElement(vdata[static_cast<size_t>(row)].c_str());
    if (*link == nullptr) return GiveUpList(head);
    link = &(*link)->pNext;
  }
  *count = nRows;
  vdata.clear();
  return 1;
}

int DataBaseMgr::UpdateShareStatus(char** paths, int mode) try {
  if (mode == orx::kObjectOnlyMode) return 1;
  if (paths == nullptr) {
    ORX_LOG_INFO("[UpdateShareStatus] pShareItem is NULL!!");
    if (Run(SqlStatement("update ImageTable SET Share = %d WHERE Share = 0").Int(1)) == 0) return 0;
    return Run(SqlStatement("update VideoTable SET Share = %d WHERE Share = 0").Int(1));
  }

  if (Run(SqlStatement("update ImageTable SET Share = %d WHERE Share = 1").Int(0)) == 0) return 0;
  SqlStatement statement("update VideoTable SET Share = %d WHERE Share = 1");
  statement.Int(0);
  if (Run(statement) == 0) return 0;

  for (; *paths != nullptr; ++paths) {
    if (Cancelled()) {
      ORX_LOG_INFO("break in DeleteInvalidItemsInDB\n");
      break;
    }
    const char* extension = strrchr(*paths, '.');
    if (extension == nullptr) return 0;
    // A file of no known kind runs the statement before it once more, which changes nothing.
    SelectShareStatement(*paths, extension, &statement);
    Run(statement);
  }
  return 1;
} catch (const std::exception&) {
  OutOfMemory(__func__);
  return 0;
}

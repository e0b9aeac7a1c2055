// The rows of the object table: one a file or directory, in the layout of the sharing mode.
#include <string>
#include <utility>
#include <vector>

#include "FileScanner/DataBaseGuard.h"
#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DataBaseSchema.h"
#include "FileScanner/ImageMetaData.h"
#include "FileScanner/PreviewNames.h"
#include "FileScanner/SqlStatement.h"
#include "FileScanner/VideoMetaData.h"
#include "FileScanner/WriteTransaction.h"
#include "OSAL/ORXAString.h"
#include "OSAL/ORXLog.h"
#include "OSAL/TextPtr.h"
#include "Platform/CameraPlatform.h"

namespace {

using orx::SqlStatement;

constexpr int kPresent = 0;      // of the column Valid
constexpr int kNotBackedUp = 0;  // of the column IsBackup

// Each layout has two forms: one leaves the id to SQLite, one brings it along.
constexpr char kInsertObject[] =
    "insert into ObjectTable "
    "(\"class\",\"date\",\"parentID\",\"FullPath\",\"Valid\",\"BackupID\",\"IsBackup\")"
    "\t\t\t\t\t values (%d ,\"%s\",\"%s\",\"%s\", 0, 0,%d);";
constexpr char kInsertObjectWithId[] =
    "insert into ObjectTable values (\"%s\",%d ,\"%s\",\"%s\",\"%s\", 0, 0, %d);";

constexpr char kInsertObjectOnly[] =
    "insert into ObjectTable "
    "(\"Title\",\"class\",\"date\",\"size\",\"parentID\",\"FullPath\",\"uri\",\"Thumbnailuri\","
    "\"Screennailuri\",\"Height\",\"Width\",\"VideoFrameRate\", \"VideoBitrate\",\"SortIndex\")"
    "\t\t\t\t\t values (\"%s\",%d ,\"%s\",%lld ,\"%s\",\"%s\",\"%s\",\"%s\",\"%s\", %d, %d, %f, "
    "%ld,\"%s\");";
constexpr char kInsertObjectOnlyWithId[] =
    "insert into ObjectTable values (\"%s\",\"%s\",%d ,\"%s\",%lld,\"%s\",\"%s\",\"%s\",\"%s\","
    "\"%s\", %d, %d, %f, %ld, \"%s\");";

constexpr char kInsertBackup[] =
    "insert into ObjectTable "
    "(\"Title\",\"class\",\"date\",\"size\",\"parentID\",\"FullPath\",\"MimeType\",\"SortIndex\","
    "\"Valid\",\"BackupID\",\"IsBackup\")"
    "\t\t\t\t\t values (\"%s\",%d ,\"%s\",%lld ,\"%s\",\"%s\",\"%s\",\"%s\", 0, 0,%d);";
constexpr char kInsertBackupWithId[] =
    "insert into ObjectTable values (\"%s\",\"%s\",%d ,\"%s\",%lld,\"%s\",\"%s\",\"%s\",\"%s\", "
    "0, 0, %d);";

constexpr char kDeleteObject[] = "delete from ObjectTable where id=%s";

// By media class: the delete of the row beside that of the object table.
constexpr const char* kDeleteMedium[] = {
    "delete from ContainerTable where id=%s", "delete from ImageTable where id=%s",
    "delete from AudioTable where id=%s", "delete from VideoTable where id=%s"};
constexpr int kMediaClassCount = sizeof kDeleteMedium / sizeof *kDeleteMedium;

// An insert that begins with the record's id, if it has one.
SqlStatement BeginInsert(const MediaMetaData& record, const char* withId, const char* withoutId) {
  if (record.GetUniqueID() == nullptr) return SqlStatement(withoutId);
  SqlStatement insert(withId);
  insert.Text(record.GetUniqueID());
  return insert;
}

// What the layout for shared pictures and films keeps beside the values of every record.
struct Preview {
  const char* thumbnail = nullptr;  // resource name, as is the screennail
  const char* screennail = nullptr;
  int height = 0;
  int width = 0;
  double frameRate = 0;
  long bitrate = 0;
};

Preview NamedPreview(const MediaMetaData& record) {
  Preview preview;
  if (orx::MediaClassOf(record) == orx::kImageClass) {
    orx::NameImageThumbnail(record, orx::NamedAfter::kExtensionAndSortIndex);
    orx::NameImageScreennail(record, orx::NamedAfter::kExtensionAndSortIndex);
    if (const auto* image = dynamic_cast<const ImageMetaData*>(&record)) {
      preview.thumbnail = image->GetThumbnailURI();
      preview.screennail = image->GetScreennailURI();
    }
  } else if (orx::MediaClassOf(record) == orx::kVideoClass) {
    orx::NameVideoThumbnail(record);
    if (const auto* video = dynamic_cast<const VideoMetaData*>(&record)) {
      preview.thumbnail = video->GetThumbnailURI();
      preview.height = video->GetHeight();
      preview.width = video->GetWidth();
      preview.frameRate = video->GetVideoFrameRate();
      preview.bitrate = video->GetVideoBitrate();
    }
  }
  return preview;
}

void AddTitleToPath(SqlStatement* to, const MediaMetaData& record) {
  to->TextOrBlank(record.GetTitle())
      .Int(orx::MediaClassOf(record))
      .TextOrBlank(record.GetDate())
      .Int(record.GetSize())
      .TextOrBlank(record.GetDirectoryID())
      .TextOrBlank(record.GetFullPath());
}

const char* PathOf(const MediaMetaData& record) {
  return record.GetFullPath() != nullptr ? record.GetFullPath() : " ";
}

}  // namespace

void DataBaseMgr::InsertMetaDataToObjTable(MediaMetaData* record) {
  if (record == nullptr) return;
  if (GetTandemixMode() == orx::kBackupMode) {
    InsertAutoBackupMediaInObjectTable(record);
  } else {
    InsertXQMediaInObjectTable(record);
  }
}

void DataBaseMgr::InsertXQMediaInObjectTable(MediaMetaData* record) {
  if (record == nullptr) return;
  const Guard guard(this);
  const Preview preview = NamedPreview(*record);
  SqlStatement insert = BeginInsert(*record, kInsertObjectOnlyWithId, kInsertObjectOnly);
  AddTitleToPath(&insert, *record);
  insert.TextOrBlank(record->GetURI())
      .TextOrBlank(preview.thumbnail)
      .TextOrBlank(preview.screennail)
      .Int(preview.height)
      .Int(preview.width)
      .Real(preview.frameRate)
      .Int(preview.bitrate)
      .TextOrBlank(record->GetSortIndex());
  if (InsertObject(insert, record) == 0)
    ORX_LOG_INFO("[DataBaseMgr::InsertXQMediaInObjectTable] Object insertion [%s] failed",
                 PathOf(*record));
}

void DataBaseMgr::InsertAutoBackupMediaInObjectTable(MediaMetaData* record) {
  if (record == nullptr) return;
  SqlStatement insert = BeginInsert(*record, kInsertBackupWithId, kInsertBackup);
  AddTitleToPath(&insert, *record);
  insert.TextOrBlank(record->GetMimeType()).TextOrBlank(record->GetSortIndex()).Int(kNotBackedUp);
  if (InsertObject(insert, record) == 0)
    ORX_LOG_INFO("[DataBaseMgr::InsertAutoBackupMediaInObjectTable] Object insertion [%s] failed",
                 PathOf(*record));
}

void DataBaseMgr::InsertMediaInObjTbl(MediaMetaData* record) {
  if (record == nullptr) return;
  SqlStatement insert = BeginInsert(*record, kInsertObjectWithId, kInsertObject);
  insert.Int(orx::MediaClassOf(*record))
      .TextOrBlank(record->GetDate())
      .TextOrBlank(record->GetDirectoryID())
      .TextOrBlank(record->GetFullPath())
      .Int(kNotBackedUp);
  if (InsertObject(insert, record) == 0)
    ORX_LOG_INFO("[DataBaseMgr::InsertMediaInObjTbl] Object insertion [%s] failed",
                 PathOf(*record));
}

// Runs the insert of a record, and gives the record the id of its new row when it had none: of
// several rows with its path, the last.  0 only when a record that has an id was not inserted; the
// failure of the other form shows in the record.
int DataBaseMgr::InsertObject(const SqlStatement& insert, MediaMetaData* record) {
  if (IsLeftOut(*record)) return 1;
  const Guard guard(this);
  const bool hasId = record->GetUniqueID() != nullptr;
  const bool inserted = Run(insert) == 1;
  NoteDamagedItem(*record);
  if (hasId) return inserted ? 1 : 0;
  if (inserted) AdoptId(record);
  vdata.clear();
  return 1;
}

// A row whose id cannot be read is of no use, and what belongs to it neither.  A scan that meets
// damage here runs once more.
void DataBaseMgr::AdoptId(MediaMetaData* record) {
  Query(SqlStatement("select id from ObjectTable where FullPath = \"%s\"")
            .TextOrBlank(record->GetFullPath()));
  if (!vdata.empty())
    record->SetUniqueID(vdata[vdata.size() - static_cast<size_t>(nColumns)].c_str());
  const bool alone = writing_->kind == orx::Writing::Kind::kPair;
  if (orx::IsUnanswered(nLastResult) && (alone || !orx::IsDamageCode(nLastResult)))
    FailWriting(nLastResult);
  NoteDamagedItem(*record);
}

int DataBaseMgr::ValidateItemInDB(const char* fullPath) {
  if (fullPath == nullptr) return 0;
  return Run(SqlStatement("update ObjectTable set Valid = %d where FullPath=\"%s\"")
                 .Int(kPresent)
                 .Text(fullPath));
}

bool DataBaseMgr::IsInDB(const TChar* fullPath) {
  Query(SqlStatement("select * from ObjectTable where FullPath=\"%s\"").Text(fullPath));
  return !vdata.empty();
}

void DataBaseMgr::DeleteItemFromDB(const char* fullPath) {
  Query(SqlStatement("select id,class from ObjectTable where FullPath = \"%s\"").Text(fullPath));
  const std::vector<std::string> cells = std::move(vdata);  // hooks may fill it anew
  for (size_t row = 0; row + 1 < cells.size(); row += 2)
    RemoveIdFromTables(cells[row].c_str(), ORXAString::Integer(cells[row + 1].c_str()));
  vdata.clear();
}

void DataBaseMgr::DeleteItemFromDBWithId(const TChar* id) {
  if (id == nullptr) return;
  orx::Guarded(__func__, [this, id] {
    const std::string row(id);  // the caller's text may be a cell of the result, which changes
    Query(SqlStatement("select class from ObjectTable where id = \"%s\"").Text(row));
    if (!vdata.empty()) RemoveIdFromTables(row.c_str(), ORXAString::Integer(vdata[0].c_str()));
    vdata.clear();
  });
}

// A class that no table stands for keeps its row in the object table as well.
int DataBaseMgr::RemoveIdFromTables(const char* id, int mediaClass) {
  if (id == nullptr || mediaClass < 0 || mediaClass >= kMediaClassCount) return 0;
  SqlStatement medium(kDeleteMedium[mediaClass]);
  SqlStatement object(kDeleteObject);
  medium.Id(id);
  object.Id(id);
  orx::WritePair pair(this);
  const int mediumRemoved = Run(medium);
  if (pair.EndAtDamage()) return Run(object);  // each stands alone then
  const int removed = Run(object);
  if (pair.EndAtDamage()) {
    if (mediumRemoved == 1) Run(medium);
    return 0;
  }
  return pair.End() ? removed : 0;
}

void DataBaseMgr::RemoveIdFromObjectTable(const char* id) try {
  if (id == nullptr) return;
  SqlStatement statement(kDeleteObject);
  Run(statement.Id(id));
  ORX_LOG_INFO("[DataBaseMgr::RemoveIdFromObjectTable] %s\n", statement.Printed().c_str());
} catch (const std::exception&) {
  OutOfMemory(__func__);
}

// The rows below the directory stay.
void DataBaseMgr::RemoveDIRfromObjTableInDB(const char* directoryPath) {
  if (directoryPath == nullptr) return;
  ORX_LOG_INFO("[DataBaseMgr::RemoveDIRfromObjTableInDB] Removing %s directory from DB\n",
               directoryPath);
  const orx::TextPtr id(GetUniqueIdForPath(directoryPath));
  RemoveIdFromObjectTable(id.get());
}

void DataBaseMgr::RemoveDIRfromDB(const char* directoryPath, int* foundStale) {
  InvalidateAllItemsInDB(directoryPath);
  DeleteInvalidatedItemInDB(foundStale);
}

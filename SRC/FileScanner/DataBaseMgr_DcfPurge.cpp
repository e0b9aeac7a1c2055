// The three purges of a card's DCF tree: what is gone, has another size or is shared no longer.
//
// They check the folders under the root by opening them, and the items of the whole database by the
// sort numbers of the current list of shared files.  What cannot be checked, because the machine
// fails, is kept.
#include <string>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DataBaseSchema.h"
#include "FileScanner/DcfFileInfoVector.h"
#include "FileScanner/ResultRows.h"
#include "FileScanner/SqlStatement.h"
#include "FileScanner/WriteTransaction.h"
#include "OSAL/Fault.h"
#include "OSAL/ORXAString.h"
#include "OSAL/ORXFSHandler.h"
#include "OSAL/ORXLog.h"

using orx::ResultRows;
using orx::SqlStatement;

namespace {

constexpr int kRootId = 1;

bool IsRoot(const std::string& id) { return ORXAString::Integer(id.c_str()) == kRootId; }

}  // namespace

class DataBaseMgr::DcfPurge {
 public:
  enum class Rows { kMediaTables, kObjectTable };  // where items are found and removed
  using Shared = bool (*)(DataBaseMgr* database, int sortNumber);

  // `operation` is the purge's name in the log.
  DcfPurge(DataBaseMgr* database, const char* operation, Rows rows, Shared shared)
      : database_(*database), operation_(operation), rows_(rows), shared_(shared) {}

  void Run(const char* directoryPath) {
    const std::string id = database_.ContainerIdForPath(directoryPath);
    if (id.empty()) return;
    CheckContainer(directoryPath, id);
    if (IsRoot(id)) {
      CheckFolders(directoryPath, id);
      if (rows_ == Rows::kMediaTables) {
        CheckMediaTables();
      } else {
        CheckObjectTable();
      }
    }
    FinishContainer(directoryPath);
  }

 private:
  // A directory that is gone loses its row; the purge goes on.
  void CheckContainer(const char* path, const std::string& id) {
    const orx::FaultWatch watch;
    if (files_.OpenDir(path) != 0) {
      files_.CloseDir();
    } else if (!watch.Seen()) {
      Remove(id.c_str(), orx::kContainerClass);
    }
    ORX_LOG_TIME(">>>> Time2 start");
  }

  void FinishContainer(const char* path) {
    if (rows_ != Rows::kMediaTables) return;
    LogDirectory(path);
    ORX_LOG_TIME(">>>> Time2 stop");
  }

  void CheckFolders(const char* rootPath, const std::string& rootId) {
    ORX_LOG_TIME(">>>> ObjectTable create start");
    const ResultRows children = database_.Fetch(
        SqlStatement("select class, FullPath, id from ObjectTable where parentID = \"%s\"")
            .Text(rootId));
    LogDirectory(rootPath);
    ORX_LOG_TIME(">>>> ObjectTable create stop");
    for (int row = 0; row < children.rows; ++row) {
      if (database_.writing_->Stopped()) return;
      if (database_.Cancelled()) {
        ORX_LOG_INFO("break in DeleteInvalidItemsInDB\n");
        return;
      }
      if (children.Integer(row, 0) == orx::kContainerClass) {
        CheckFolder(children.Text(row, 1));
      } else {
        ORX_LOG_ERROR("Error : something is wrong\n");
      }
    }
  }

  void CheckFolder(const char* path) {
    const std::string id = database_.ContainerIdForPath(path);
    if (id.empty() || IsRoot(id)) return;  // a root under itself is not walked again
    CheckContainer(path, id);
    FinishContainer(path);
  }

  void CheckMediaTables() {
    ORX_LOG_TIME(">>>> IMAGE Time start");
    ORX_LOG_TIME(">>>> ImageTable1 create start");
    const ResultRows images =
        database_.Fetch(SqlStatement("select id, size, FullPath, SortIndex from ImageTable"));
    ORX_LOG_INFO("ImageTable nRows2 = %d, nCols2 = %d\n", images.rows, images.columns);
    ORX_LOG_TIME(">>>> ImageTable1 create stop");
    ORX_LOG_TIME(">>>> ImageTables2 create start");
    if (!CheckItems(images, orx::kImageClass)) ORX_LOG_INFO("break in DeleteInvalidItemsInDB\n");
    ORX_LOG_TIME(">>>> ImageTables2 create stop");
    ORX_LOG_TIME(">>>>>> IMAGE Time stop");

    ORX_LOG_TIME(">>>>>> VIDEO Time start");
    const ResultRows videos =
        database_.Fetch(SqlStatement("select id, size, FullPath, SortIndex from VideoTable"));
    ORX_LOG_INFO("VideoTable nRows2 = %d, nCols2 = %d\n", videos.rows, videos.columns);
    if (!CheckItems(videos, orx::kVideoClass)) ORX_LOG_INFO("break in DeleteInvalidItemsInDB\n");
    ORX_LOG_TIME(">>>>>> VIDEO Time stop");
  }

  // The labels are those of the media tables, so that one set of measurements fits both layouts.
  void CheckObjectTable() {
    ORX_LOG_TIME(">>>> IMAGE Time start");
    ORX_LOG_TIME(">>>> ImageTable1 create start");
    const ResultRows items = database_.Fetch(
        SqlStatement("select id, size, FullPath, SortIndex from ObjectTable where class != 0"));
    ORX_LOG_INFO(" [DataBaseMgr::%s] Object Table nRows2 = %d, nCols2 = %d\n", operation_,
                 items.rows, items.columns);
    ORX_LOG_TIME(">>>> ImageTable1 create stop");
    ORX_LOG_TIME(">>>> ImageTables2 create start");
    if (!CheckItems(items, orx::kImageClass))
      ORX_LOG_INFO("[DataBaseMgr::%s] Break in DeleteInvalidItemsInDB\n", operation_);
    ORX_LOG_TIME(">>>>>> IMAGE Time stop");
  }

  // False when the walk was cancelled.
  bool CheckItems(const ResultRows& items, int mediaClass) {
    enum Column { kId, kSize, kFullPath, kSortIndex };
    for (int row = 0; row < items.rows; ++row) {
      if (database_.writing_->Stopped()) return true;
      if (database_.Cancelled()) return false;
      const orx::FaultWatch watch;
      const bool kept = shared_(&database_, items.Integer(row, kSortIndex)) &&
                        files_.IsValidFile(items.Text(row, kFullPath),
                                           static_cast<unsigned long>(items.Size(row, kSize)));
      if (!kept && !watch.Seen()) Remove(items.Text(row, kId), mediaClass);
    }
    return true;
  }

  void Remove(const char* id, int mediaClass) {
    if (rows_ == Rows::kMediaTables) {
      database_.RemoveIdFromTables(id, mediaClass);
    } else {
      database_.RemoveIdFromObjectTable(id);
    }
  }

  void LogDirectory(const char* path) {
    ORX_LOG_INFO("[DataBaseMgr::%s] pszDirPath = [%s]", operation_, path);
  }

  DataBaseMgr& database_;
  const char* operation_;
  Rows rows_;
  Shared shared_;
  ORXFSHandler files_;
};

namespace {

bool InManagersList(DataBaseMgr* database, int sortNumber) {
  return database->isInDirFileNumVector(sortNumber) == 1;
}

bool InDcfList(DataBaseMgr* /*database*/, int sortNumber) {
  return orx::Existing(DcfFileInfoVector::GetInstance()).isInDirFileNumVector(sortNumber) == 1;
}

}  // namespace

void DataBaseMgr::deleteInvalidItemsInDBDcf(const char* directoryPath) {
  orx::Guarded(__func__, [&] {
    DcfPurge(this, "deleteInvalidItemsInDBDcf", DcfPurge::Rows::kMediaTables, InManagersList)
        .Run(directoryPath);
  });
}

void DataBaseMgr::deleteInvalidItemsFromAutoBackupDB(const char* directoryPath) {
  orx::Guarded(__func__, [&] {
    DcfPurge(this, "deleteInvalidItemsFromAutoBackupDB", DcfPurge::Rows::kObjectTable,
             InManagersList)
        .Run(directoryPath);
  });
}

void DataBaseMgr::deleteInvalidItemsInDBDcfVector(const char* directoryPath) {
  orx::Guarded(__func__, [&] {
    DcfPurge(this, "deleteInvalidItemsInDBDcfVector", DcfPurge::Rows::kObjectTable, InDcfList)
        .Run(directoryPath);
  });
}

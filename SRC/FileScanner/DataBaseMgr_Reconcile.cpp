// Marking and removing what is stale, and the purge of a directory tree against the file system.
//
// Both walks go down the container rows, whose children name them as their parent.  They keep the
// way down in a list of their own, so that the depth of a tree costs no stack, and walk a container
// once: rows that lead back to a container already walked end there.
#include <cstdint>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DataBaseSchema.h"
#include "FileScanner/ResultRows.h"
#include "FileScanner/SqlStatement.h"
#include "FileScanner/WriteTransaction.h"
#include "OSAL/Fault.h"
#include "OSAL/ORXAString.h"
#include "OSAL/ORXFSHandler.h"
#include "OSAL/ORXLog.h"
#include "OSAL/TextPtr.h"

using orx::ResultRows;
using orx::SqlStatement;

namespace {

// A container of a walk, with its children and the next one to look at.
struct OpenContainer {
  std::string path;
  ResultRows children;
  ResultRows sizes;          // of the children, where one query brought them all
  size_t removedBefore = 0;  // items, when the sizes were asked for
  int next = 0;
};

// The way from the top of a walk down to where it is.
class WayDown {
 public:
  bool empty() const { return open_.empty(); }
  OpenContainer& back() { return open_.back(); }
  void Enter(std::string path, ResultRows children, ResultRows sizes = {}, size_t removed = 0) {
    open_.push_back({std::move(path), std::move(children), std::move(sizes), removed, 0});
  }
  void Leave() { open_.pop_back(); }
  bool FirstVisit(const std::string& id) { return visited_.insert(id).second; }

 private:
  std::vector<OpenContainer> open_;
  std::unordered_set<std::string> visited_;
};

// The part of `path` before its last '/'.
std::string DirectoryPart(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

bool DirectoryOpens(const char* path) {
  ORXFSHandler files;
  return files.OpenDir(path) != 0;
}

}  // namespace

std::string DataBaseMgr::ContainerIdForPath(const char* path) {
  const orx::TextPtr id(GetUniqueIdForPath(path));
  return id != nullptr ? std::string(id.get()) : std::string();
}

// ---- marking -----------------------------------------------------------------------------------

class DataBaseMgr::InvalidateWalk {
 public:
  explicit InvalidateWalk(DataBaseMgr* database) : database_(*database) {}

  void Run(const char* directoryPath) {
    Enter(directoryPath);
    while (!way_.empty()) {
      OpenContainer& here = way_.back();
      if (here.next == here.children.rows || database_.Cancelled()) {
        way_.Leave();
        continue;
      }
      const int row = here.next++;
      const std::string path = here.children.Text(row, kFullPath);
      if (here.children.Integer(row, kClass) == orx::kContainerClass) {
        Enter(path.c_str());
      } else {
        Mark(path.c_str());
      }
    }
  }

 private:
  enum Column { kClass, kFullPath };

  void Mark(const char* path) {
    database_.Run(
        SqlStatement("update ObjectTable set Valid = %d where FullPath=\"%s\"").Int(1).Text(path));
  }

  void Enter(const char* path) {
    Mark(path);
    const std::string id = database_.ContainerIdForPath(path);
    if (id.empty() || !way_.FirstVisit(id)) return;
    ResultRows children = database_.Fetch(
        SqlStatement("select class,FullPath from ObjectTable where parentID = \"%s\"").Text(id));
    if (!children.ok) return;
    ORX_LOG_INFO("InvalidateAllItemsInDB() Start!!!");
    way_.Enter(path, std::move(children));
  }

  DataBaseMgr& database_;
  WayDown way_;
};

void DataBaseMgr::InvalidateAllItemsInDB(const char* directoryPath) {
  if (directoryPath != nullptr)
    orx::Guarded(__func__, [&] { InvalidateWalk(this).Run(directoryPath); });
}

// ---- removing what is marked -------------------------------------------------------------------

void DataBaseMgr::DeleteInvalidatedItemInDB(int* foundStale) {
  // With the number in its text, as SQLite takes the index of the marked rows for that alone.
  Query(SqlStatement("select * from ObjectTable where Valid = 1"));
  if (vdata.empty()) return;
  if (foundStale != nullptr) *foundStale = 1;
  const std::vector<std::string> cells = std::move(vdata);  // hooks may fill it anew
  const size_t columns = static_cast<size_t>(nColumns);
  // The second column is the class in the full layout only; in the backup layout it is the title,
  // and what its leading digits say counts.
  for (size_t id = 0; id + 1 < cells.size() && !Cancelled(); id += columns)
    RemoveIdFromTables(cells[id].c_str(), ORXAString::Integer(cells[id + 1].c_str()));
  vdata.clear();
}

// ---- the purge of a directory tree -------------------------------------------------------------

class DataBaseMgr::PurgeWalk {
 public:
  explicit PurgeWalk(DataBaseMgr* database) : database_(*database) {}

  void Run(const char* directoryPath) {
    Enter(directoryPath);
    while (!way_.empty()) {
      OpenContainer& here = way_.back();
      if (here.next == here.children.rows || database_.writing_->Stopped()) {
        way_.Leave();
      } else if (database_.Cancelled()) {
        ORX_LOG_INFO("[DataBaseMgr::DeleteInvalidItemsInDB] break in DeleteInvalidItemsInDB");
        way_.Leave();
      } else {
        Check(here.next++);
      }
    }
  }

 private:
  enum Column { kClass, kFullPath, kId };

  static constexpr char kImageSize[] = "select size from ImageTable where FullPath = \"%s\"";
  static constexpr char kVideoSize[] = "select size from VideoTable where FullPath = \"%s\"";
  // Both for all children of a container at once, in the order of its children.
  static constexpr char kSizes[] =
      "select case cast(class as integer) when 1 then "
      "(select size from ImageTable where FullPath = Child.FullPath limit 1) when 3 then "
      "(select size from VideoTable where FullPath = Child.FullPath limit 1) end "
      "from ObjectTable as Child where parentID = \"%s\"";

  // A directory that is gone loses its row; what hangs under the row is checked all the same.  What
  // cannot be checked, because the machine fails, is kept.
  void Enter(const char* path) {
    const std::string id = database_.ContainerIdForPath(path);
    if (id.empty() || !way_.FirstVisit(id)) return;
    const orx::FaultWatch watch;
    if (!DirectoryOpens(path) && !watch.Seen())
      database_.RemoveIdFromTables(id.c_str(), orx::kContainerClass);
    ResultRows children = database_.Fetch(
        SqlStatement("select class, FullPath, id from ObjectTable where parentID = \"%s\"")
            .Text(id));
    if (children.rows == 0) return;
    ResultRows sizes =
        HasSizes(children) ? database_.Fetch(SqlStatement(kSizes).Text(id)) : ResultRows();
    way_.Enter(path, std::move(children), std::move(sizes), removed_);
  }

  // Whether the purge knows a size for items of the class.
  static bool HasSize(int mediaClass) {
    return mediaClass == orx::kImageClass || mediaClass == orx::kVideoClass;
  }

  static bool HasSizes(const ResultRows& children) {
    for (int row = 0; row < children.rows; ++row) {
      if (HasSize(children.Integer(row, kClass))) return true;
    }
    return false;
  }

  void Check(int row) {
    const OpenContainer& here = way_.back();
    const std::string path = here.children.Text(row, kFullPath);
    const int mediaClass = here.children.Integer(row, kClass);
    if (mediaClass == orx::kContainerClass) {
      Enter(path.c_str());
      return;
    }
    uint32_t size = 0;
    if (!RecordedSize(row, path, mediaClass, &size)) {
      way_.Leave();  // without the media table nothing in this directory can be checked
      return;
    }
    const orx::FaultWatch watch;
    const bool valid = files_.IsValidFile(path.c_str(), static_cast<unsigned long>(size)) &&
                       DirectoryPart(path) == here.path;
    if (valid || watch.Seen()) return;
    database_.RemoveIdFromTables(here.children.Text(row, kId), mediaClass);
    if (HasSize(mediaClass)) ++removed_;
  }

  // The size in bytes from the media row, 0 when there is none.  False when it cannot be asked for.
  bool RecordedSize(int row, const std::string& path, int mediaClass, uint32_t* size) {
    const ResultRows& sizes = way_.back().sizes;
    if (!HasSize(mediaClass)) return true;
    const bool stale =
        way_.back().removedBefore != removed_;  // a media row that counted may be gone
    if (row >= sizes.rows || stale || path.find('"') != std::string::npos)
      return QueriedSize(path, mediaClass, size);
    *size = SizeOf(sizes, row, mediaClass);
    return true;
  }

  bool QueriedSize(const std::string& path, int mediaClass, uint32_t* size) {
    const ResultRows media = database_.Fetch(
        SqlStatement(mediaClass == orx::kImageClass ? kImageSize : kVideoSize).Text(path));
    if (media.rows > 0) *size = SizeOf(media, 0, mediaClass);
    return media.ok;
  }

  // Sizes of pictures are read as signed numbers.
  static uint32_t SizeOf(const ResultRows& sizes, int row, int mediaClass) {
    return mediaClass == orx::kImageClass ? sizes.SignedSize(row, 0) : sizes.Size(row, 0);
  }

  DataBaseMgr& database_;
  ORXFSHandler files_;
  WayDown way_;
  size_t removed_ = 0;  // items with a size, so far
};

void DataBaseMgr::DeleteInvalidItemsInDB(const char* directoryPath) {
  if (directoryPath != nullptr) orx::Guarded(__func__, [&] { PurgeWalk(this).Run(directoryPath); });
}

// What belongs together in the database comes together or not at all.
#pragma once

#include <optional>

class DataBaseMgr;

namespace orx {

// One transaction of the open database, from making to End or destruction: "BEGIN;", then
// "COMMIT;".
//
// When the machine fails in between (memory, disk or a lock that is not to be had), SQLite may have
// given up what was written so far, and what comes next would hang in the air: the database manager
// runs nothing more then, and the end is "ROLLBACK;".
class WriteTransaction {
 public:
  explicit WriteTransaction(DataBaseMgr* database);
  ~WriteTransaction() { End(); }
  WriteTransaction(const WriteTransaction&) = delete;
  WriteTransaction& operator=(const WriteTransaction&) = delete;

  // Whether the transaction of the current instance is given up.
  static bool Failed() noexcept;
  bool End() noexcept;  // true when all that was written is there to stay

 private:
  friend class WritePair;
  static bool IsOpen(const DataBaseMgr& database) noexcept;  // one of the library's or the host's

  DataBaseMgr* database_;
};

// A WriteTransaction of its own where there is none yet, neither a scan's nor the host's: for the
// rows of one item, which stand in two tables.
class WritePair {
 public:
  explicit WritePair(DataBaseMgr* database);
  bool End() noexcept { return !transaction_ || transaction_->End(); }  // as WriteTransaction's

 private:
  std::optional<WriteTransaction> transaction_;
};

// The removal of a folder in a scan.  Its row goes before the rows below it, and a cancel in
// between would leave those where no later purge looks for them: then Undo brings back what went
// since Begin, as if the cancel had come before.  Outside a scan's transaction it does nothing.
class RevocableRemoval {
 public:
  explicit RevocableRemoval(DataBaseMgr* database) : database_(*database) {}
  ~RevocableRemoval() { End(); }
  RevocableRemoval(const RevocableRemoval&) = delete;
  RevocableRemoval& operator=(const RevocableRemoval&) = delete;

  void Begin() noexcept;  // unless it began already
  void Undo() noexcept;
  void End() noexcept;  // what went is gone

 private:
  DataBaseMgr& database_;
  bool begun_ = false;
};

}  // namespace orx

// What belongs together in the database comes together or not at all.
#pragma once

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
  DataBaseMgr* database_;
};

}  // namespace orx

// A reader of the media database for the host, with a connection of its own.
//
// It never creates a database or a table.  The result vectors are class-wide: two objects must not
// run queries at the same time.  An object connects once; to connect again, make a new one.
#pragma once

#include <sqlite3.h>

#include <string>
#include <vector>

#include "Platform/Export.h"

namespace orx {
class GuardedDatabase;
}  // namespace orx

class ORX_API MultimediaQueryMgr {
 public:
  MultimediaQueryMgr() = default;
  ~MultimediaQueryMgr() = default;  // a held connection is closed by DisconnectDB alone
  MultimediaQueryMgr(const MultimediaQueryMgr&) = delete;
  MultimediaQueryMgr& operator=(const MultimediaQueryMgr&) = delete;

  // 1 connected; 0 when there is no such file, when it cannot be opened, and when the object was
  // connected before.
  int ConnectDB(const char* fileName);
  void DisconnectDB();
  int ExecSqlStatmentNoValueReturn(const char* sql);  // 1 / 0, silent
  int ExecSqlStatment(const char* sql);               // 1 / 0; fills the members and vectors below
  int GetAutoCommit();                                // non-zero when no transaction is open
  int SetAutoCommit();                                // begins a transaction: 1 / 0

  static std::vector<std::string> vdata;      // cells of the last query, row-major, no header
  static std::vector<std::string> vcol_head;  // its column names
  static char** result;

  int nReserved = 0;
  int nLastResult = 0;  // SQLite's result code of the last query
  int nRows = 0;
  int nColumns = 0;

 private:
  bool Connected() const { return connection_ != nullptr && !disconnected_; }

  sqlite3* connection_ = nullptr;
  orx::GuardedDatabase* guarded_ = nullptr;  // as long as the connection is held
  bool disconnected_ = false;  // the object still counts as connected, but nothing runs on it
};

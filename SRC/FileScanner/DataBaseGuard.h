// Memory that runs out inside the database manager: the operation answers its failure value, and
// the transaction around it is given up, since half of what belongs together may be written.
#pragma once

#include "FileScanner/DataBaseMgr.h"
#include "OSAL/Fault.h"

class DataBaseMgr::Guard {
 public:
  explicit Guard(DataBaseMgr* database) : database_(*database) {}
  ~Guard() {
    if (watch_.OutOfMemory()) database_.FailWriting(SQLITE_NOMEM);
  }
  Guard(const Guard&) = delete;
  Guard& operator=(const Guard&) = delete;

  template <typename Result, typename Operation>
  Result Run(const char* where, Result failure, Operation&& operation) const noexcept {
    return orx::Guarded(where, failure, operation);
  }
  template <typename Operation>
  void Run(const char* where, Operation&& operation) const noexcept {
    orx::Guarded(where, operation);
  }

 private:
  DataBaseMgr& database_;
  orx::FaultWatch watch_;
};

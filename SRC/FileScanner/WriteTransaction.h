// What belongs together in the database comes together or not at all.
#pragma once

#include <sqlite3.h>

#include <set>
#include <string>
#include <type_traits>

class DataBaseMgr;

namespace orx {

// What is being written, and how it goes.
struct Writing {
  enum class Kind {
    kNothing,      // statements of the host's, each by itself or in a transaction of its own
    kPair,         // the two rows of one item
    kTransaction,  // a scan, or the tables of a new database
    kStepByStep,   // a scan of a damaged database, without a transaction
  };
  Kind kind = Kind::kNothing;
  int failure = SQLITE_OK;  // of the machine: what is written is undone
  int again = SQLITE_OK;    // the failure for which the scan runs once more
  int changesBefore = 0;    // rows changed through the connection before the transaction

  bool Stopped() const { return kind != Kind::kPair && failure != SQLITE_OK; }

  // What an earlier run of the same scan met damage with: statements, and items by their path.
  std::set<std::string> damaged;
};

// Whether SQLite's code says that the machine failed, and nothing about the statement.
bool IsMachineCode(int code);
bool IsDamageCode(int code);
// Whether a question that ended with the code is open: neither answered nor refused for what it
// says.
inline bool IsUnanswered(int code) {
  return IsMachineCode(code) || IsDamageCode(code) || (code & 0xFF) == SQLITE_AUTH;
}

// A scan of the open database, from BEGIN to COMMIT.
//
// When the machine fails a write in it (memory, disk, a lock that is not to be had), SQLite may
// have given up what was written so far, and what comes next would hang in the air: nothing more is
// run then, and all is undone.  When a statement meets damage, SQLite takes no more writes in the
// transaction: the scan is undone and runs once more, and passes over what met the damage; when
// that does not do, it runs a last time in steps that stand each alone.
class ScanTransaction {
 public:
  // Runs `scan`, which may run several times.  `status`, which may be null, keeps its value when
  // all is undone.
  template <typename Walk>
  static void Run(DataBaseMgr* database, int* status, Walk&& scan) {
    Run(database, status,
        {&scan, [](void* walk) { (*static_cast<std::remove_reference_t<Walk>*>(walk))(); }});
  }
  // Whether the scan of the current instance runs nothing more, so that its walks may end.
  static bool GivenUp();
  // Removes what earlier scans left without its folder, see DataBaseMgr::MendOrphans.
  static void MendOrphans(DataBaseMgr* database, const char* directory, bool hasMediaTables);

 private:
  // Refers to what a scan does, and takes no memory.
  struct Walking {
    void* walk;
    void (*run)(void* walk);
  };
  enum class Outcome { kKept, kUndone, kAgain };
  static void Run(DataBaseMgr* database, int* status, Walking scan);
  static Outcome RunOnce(DataBaseMgr* database, Writing::Kind kind, Walking scan);
  static void Begin(DataBaseMgr* database);
  static Outcome End(DataBaseMgr* database);
  friend class WriteTransaction;
};

// The statements that belong to one item, in two tables.  Where no transaction is open yet, neither
// a scan's nor the host's, they get one of their own; each of them runs even if the one before it
// failed.
class WritePair {
 public:
  explicit WritePair(DataBaseMgr* database);
  ~WritePair() { End(); }
  WritePair(const WritePair&) = delete;
  WritePair& operator=(const WritePair&) = delete;

  // Whether the transaction is this pair's own and met damage; then it is over, and nothing of it
  // is kept.
  bool EndAtDamage();
  bool End();  // true when all that was written is there to stay, as far as this pair decides

 private:
  DataBaseMgr* database_;  // null when there is nothing to end
  Writing::Kind outer_;
};

// All that is written to a new database until End: it is complete then, or not to be used.
class WriteTransaction {
 public:
  explicit WriteTransaction(DataBaseMgr* database);
  ~WriteTransaction() { End(); }
  WriteTransaction(const WriteTransaction&) = delete;
  WriteTransaction& operator=(const WriteTransaction&) = delete;

  bool End();  // true when all that was written is there to stay

 private:
  DataBaseMgr* database_;
};

}  // namespace orx

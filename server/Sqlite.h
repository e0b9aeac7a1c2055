// SQLite as the server uses it: handles that release themselves, failures that are thrown.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace orxserve {

class Statement {
 public:
  Statement(sqlite3* connection, const std::string& sql);  // throws a Failure

  Statement& Bind(int place, std::string_view text);  // places count from 1
  Statement& Bind(int place, int64_t number);
  bool Next();   // false behind the last row, and then begun anew; throws a Failure
  void Run();    // to its end
  void Reset();  // ready to be bound and run again

  std::string_view Text(int column) const;  // until the next call of Next; "" for NULL
  int64_t Number(int column) const;

 private:
  struct Finalize {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };
  std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

class Database {
 public:
  enum class Access { kRead, kWrite, kMake };
  Database(const std::string& path, Access access);  // throws a Failure

  void Execute(const std::string& sql) { Statement(connection_.get(), sql).Run(); }
  Statement Prepare(const std::string& sql) { return Statement(connection_.get(), sql); }

 private:
  struct Close {
    void operator()(sqlite3* connection) const { sqlite3_close(connection); }
  };
  std::unique_ptr<sqlite3, Close> connection_;
};

// Undone at its end unless it was committed.
class Transaction {
 public:
  explicit Transaction(Database* database) : database_(database) { database->Execute("BEGIN"); }
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  void Commit();

 private:
  Database* database_;
};

}  // namespace orxserve

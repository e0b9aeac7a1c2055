// What a scan said and which statements SQLite ran for it, and a second connection beside it.
#pragma once

#include <sqlite3.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace orx_test {

// The lines of the log while it lives.
class ObservedLog {
 public:
  ObservedLog();
  ~ObservedLog();
  ObservedLog(const ObservedLog&) = delete;
  ObservedLog& operator=(const ObservedLog&) = delete;

  const std::vector<std::string>& lines() const { return lines_; }
  // Those in the colour of errors, except that of a directory's second row, which SQLite always
  // turns down.
  std::vector<std::string> Errors() const;
  int Count(const std::string& part) const;  // lines that contain it
  // Called at every line that contains `part`.
  void At(const std::string& part, std::function<void()> action);

 private:
  static void Add(const char* line);

  std::vector<std::string> lines_;
  std::string part_;
  std::function<void()> action_;
};

// The statements that are run through the library's connection, which it opens, with their values.
class ObservedStatements {
 public:
  explicit ObservedStatements(const std::string& db);

  const std::vector<std::string>& all() const { return all_; }
  int Count(const std::string& part) const;

 private:
  static int Add(unsigned kind, void* self, void* statement, void* text);

  std::vector<std::string> all_;
};

// A connection of somebody else's, used on one thread at a time.
class OtherConnection {
 public:
  explicit OtherConnection(const std::string& db);
  ~OtherConnection();
  OtherConnection(const OtherConnection&) = delete;
  OtherConnection& operator=(const OtherConnection&) = delete;

  int Run(const std::string& sql) const;
  void BeginReading();  // leaves a statement open, with its lock
  void EndReading();
  sqlite3* get() const { return connection_; }

 private:
  sqlite3* connection_ = nullptr;
  sqlite3_stmt* reading_ = nullptr;
};

// Does something after a while, on a thread of its own; waits for it at the end.
class After {
 public:
  After(std::chrono::milliseconds time, std::function<void()> action);
  ~After() { thread_.join(); }

 private:
  std::thread thread_;
};

// The time that something takes, in seconds.
double Seconds(const std::function<void()>& action);

}  // namespace orx_test

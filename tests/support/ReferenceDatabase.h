// A second database with the tables of the one under test, written with SQL text alone, so that a
// test can say what a row has to look like, value by value and type by type.
#pragma once

#include <sqlite3.h>

#include <string>

#include "support/TestDatabase.h"

namespace orx_test {

// The rows of a table in key order, each cell as "type value".
Rows TypedRows(sqlite3* connection, const std::string& table);

class ReferenceDatabase {
 public:
  explicit ReferenceDatabase(const TestDatabase& model);
  ~ReferenceDatabase();
  ReferenceDatabase(const ReferenceDatabase&) = delete;
  ReferenceDatabase& operator=(const ReferenceDatabase&) = delete;

  // Prints the statement and runs it; returns the printed text.
  std::string Exec(const char* format, ...) __attribute__((format(printf, 2, 3)));
  Rows Table(const std::string& name) const { return TypedRows(connection_, name); }

 private:
  sqlite3* connection_ = nullptr;
};

}  // namespace orx_test

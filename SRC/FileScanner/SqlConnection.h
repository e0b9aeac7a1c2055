// What every connection to the media database has in common: how it is opened, and how the result
// of a query becomes names and cells.
#pragma once

#include <sqlite3.h>

#include <memory>
#include <string>
#include <vector>

namespace orx {

// Opens the file, by default creating it when it is missing; what is no regular file is refused
// without being opened.  Nothing that is stored in the file runs as code: no trigger, no view.
// Returns SQLite's code; after a failure `connection` is null.
int OpenConnection(const char* fileName, sqlite3** connection,
                   int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);

// A result table of SQLite's that releases itself.
struct FreeTable {
  void operator()(char** cells) const { sqlite3_free_table(cells); }
};
using RawTable = std::unique_ptr<char*, FreeTable>;

// Where a query leaves its result.
struct QueryResult {
  int* code;  // SQLite's
  int* rows;
  int* columns;
  // Null where they are not wanted.
  std::vector<std::string>* names;  // of the columns; empty when there is no row
  std::vector<std::string>* cells;  // row after row; NULL is the empty text
};

// Empties the result and leaves `code` in it.
void ClearResult(const QueryResult& result, int code);

// Runs `sql` and fills the result: 1, or 0 with an empty result when it fails.  A null text or
// connection counts as a failing statement.
int FetchTable(sqlite3* connection, const char* sql, const QueryResult& result);

}  // namespace orx

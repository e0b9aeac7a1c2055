#include "support/TestDatabase.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

namespace orx_test {

Rows Select(const std::string& path, const std::string& sql) {
  Rows rows;
  sqlite3* connection = nullptr;
  sqlite3_stmt* statement = nullptr;
  EXPECT_EQ(sqlite3_open_v2(path.c_str(), &connection, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
  EXPECT_EQ(sqlite3_prepare_v2(connection, sql.c_str(), -1, &statement, nullptr), SQLITE_OK)
      << sqlite3_errmsg(connection) << " in " << sql;
  while (statement != nullptr && sqlite3_step(statement) == SQLITE_ROW) {
    std::vector<std::string> row;
    for (int i = 0; i < sqlite3_column_count(statement); ++i) {
      const auto* cell = reinterpret_cast<const char*>(sqlite3_column_text(statement, i));
      row.emplace_back(cell != nullptr ? cell : "NULL");
    }
    rows.push_back(row);
  }
  sqlite3_finalize(statement);
  sqlite3_close(connection);
  return rows;
}

TestDatabase::TestDatabase(int sharingMode) {
  FakePlatform::Reset().sharingMode = sharingMode;
  DataBaseMgr::DestroyInstance();
  path_ = directory_.Path("media.db");
  EXPECT_EQ(manager()->OpenDB(path_.c_str()), 1);
  FakePlatform::Get().log.clear();
}

TestDatabase::~TestDatabase() { DataBaseMgr::DestroyInstance(); }

std::string TestDatabase::Cell(const std::string& sql) const {
  const Rows rows = Select(sql);
  EXPECT_EQ(rows.size(), 1u) << sql;
  if (rows.size() != 1 || rows[0].size() != 1) return "(no single cell)";
  return rows[0][0];
}

void TestDatabase::AllowTriggers() const {
  EXPECT_EQ(sqlite3_db_config(DataBaseMgr::ppDataBase, SQLITE_DBCONFIG_ENABLE_TRIGGER, 1, nullptr),
            SQLITE_OK);
}

void TestDatabase::Run(const std::string& sql) const {
  char* message = nullptr;
  EXPECT_EQ(sqlite3_exec(DataBaseMgr::ppDataBase, sql.c_str(), nullptr, nullptr, &message),
            SQLITE_OK)
      << sql << ": " << (message != nullptr ? message : "");
  sqlite3_free(message);
}

}  // namespace orx_test

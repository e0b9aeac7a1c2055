#include "support/ReferenceDatabase.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <vector>

namespace orx_test {
namespace {

std::string TypeName(int type) {
  switch (type) {
    case SQLITE_INTEGER:
      return "integer";
    case SQLITE_FLOAT:
      return "real";
    case SQLITE_TEXT:
      return "text";
    case SQLITE_BLOB:
      return "blob";
    default:
      return "null";
  }
}

}  // namespace

Rows TypedRows(sqlite3* connection, const std::string& table) {
  Rows rows;
  sqlite3_stmt* statement = nullptr;
  const std::string sql = "select * from " + table + " order by id";
  EXPECT_EQ(sqlite3_prepare_v2(connection, sql.c_str(), -1, &statement, nullptr), SQLITE_OK)
      << sqlite3_errmsg(connection);
  while (statement != nullptr && sqlite3_step(statement) == SQLITE_ROW) {
    std::vector<std::string> row;
    for (int i = 0; i < sqlite3_column_count(statement); ++i) {
      const std::string type = TypeName(sqlite3_column_type(statement, i));
      const auto* cell = reinterpret_cast<const char*>(sqlite3_column_text(statement, i));
      row.push_back(type + " " + (cell != nullptr ? cell : ""));
    }
    rows.push_back(row);
  }
  sqlite3_finalize(statement);
  return rows;
}

ReferenceDatabase::ReferenceDatabase(const TestDatabase& model) {
  EXPECT_EQ(sqlite3_open(":memory:", &connection_), SQLITE_OK);
  sqlite3_db_config(connection_, SQLITE_DBCONFIG_DQS_DML, 1, nullptr);
  for (const auto& row : model.Select("select sql from sqlite_master where type = 'table'"))
    Exec("%s", row[0].c_str());
}

ReferenceDatabase::~ReferenceDatabase() { sqlite3_close(connection_); }

std::string ReferenceDatabase::Exec(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  va_list again;
  va_copy(again, arguments);
  const int length = vsnprintf(nullptr, 0, format, arguments);
  va_end(arguments);
  std::vector<char> sql(static_cast<size_t>(length) + 1);
  vsnprintf(sql.data(), sql.size(), format, again);
  va_end(again);
  EXPECT_EQ(sqlite3_exec(connection_, sql.data(), nullptr, nullptr, nullptr), SQLITE_OK)
      << sqlite3_errmsg(connection_) << " in " << sql.data();
  return sql.data();
}

}  // namespace orx_test

#include "Sqlite.h"

#include "Failure.h"

namespace orxserve {
namespace {

constexpr int kPatience = 5000;  // milliseconds to wait for another program

}  // namespace

Statement::Statement(sqlite3* connection, const std::string& sql) {
  sqlite3_stmt* raw = nullptr;
  if (sqlite3_prepare_v2(connection, sql.c_str(), -1, &raw, nullptr) != SQLITE_OK)
    throw Failure("{}", sqlite3_errmsg(connection));
  statement_.reset(raw);
}

Statement& Statement::Bind(int place, std::string_view text) {
  sqlite3_bind_blob(statement_.get(), place, text.data(), static_cast<int>(text.size()),
                    SQLITE_TRANSIENT);
  return *this;
}

Statement& Statement::Bind(int place, int64_t number) {
  sqlite3_bind_int64(statement_.get(), place, number);
  return *this;
}

bool Statement::Next() {
  const int code = sqlite3_step(statement_.get());
  if (code == SQLITE_ROW) return true;
  const std::string problem = sqlite3_errmsg(sqlite3_db_handle(statement_.get()));
  sqlite3_reset(statement_.get());
  if (code != SQLITE_DONE) throw Failure("{}", problem);
  return false;
}

void Statement::Run() {
  while (Next()) {
  }
}

void Statement::Reset() { sqlite3_reset(statement_.get()); }

std::string_view Statement::Text(int column) const {
  const auto* text = static_cast<const char*>(sqlite3_column_blob(statement_.get(), column));
  if (text == nullptr) return {};
  return {text, static_cast<size_t>(sqlite3_column_bytes(statement_.get(), column))};
}

int64_t Statement::Number(int column) const {
  return sqlite3_column_int64(statement_.get(), column);
}

Database::Database(const std::string& path, Access access) {
  const int flags = access == Access::kRead    ? SQLITE_OPEN_READONLY
                    : access == Access::kWrite ? SQLITE_OPEN_READWRITE
                                               : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
  sqlite3* raw = nullptr;
  const int code = sqlite3_open_v2(path.c_str(), &raw, flags | SQLITE_OPEN_NOMUTEX, nullptr);
  connection_.reset(raw);
  if (code != SQLITE_OK) throw Failure("database {}: {}", path, sqlite3_errstr(code));
  sqlite3_busy_timeout(raw, kPatience);
}

Transaction::~Transaction() {
  if (database_ == nullptr) return;
  try {
    database_->Execute("ROLLBACK");
  } catch (const Failure&) {
    // Undone already, by the failure that ended it.
  }
}

void Transaction::Commit() {
  database_->Execute("COMMIT");
  database_ = nullptr;
}

}  // namespace orxserve

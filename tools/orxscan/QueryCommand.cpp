// orxscan query DB SQL
#include <algorithm>
#include <iterator>
#include <memory>

#include "Commands.h"
#include "DatabaseFile.h"
#include "FileScanner/MultimediaQueryMgr.h"
#include "Output.h"
#include "TextTable.h"

namespace orxscan {
namespace {

struct Options {
  std::string database;
  std::string sql;
  bool json = false;
};

// Pragmas that tell something and change nothing.
constexpr const char* kPragmasWithArgument[] = {
    "table_info",  "table_xinfo",     "table_list",  "index_list",      "index_info",
    "index_xinfo", "integrity_check", "quick_check", "foreign_key_list"};
constexpr const char* kPragmasWithout[] = {"application_id", "collation_list", "compile_options",
                                           "database_list",  "encoding",       "freelist_count",
                                           "journal_mode",   "page_count",     "page_size",
                                           "schema_version", "user_version"};

template <size_t kCount>
bool IsOneOf(const char* name, const char* const (&list)[kCount]) {
  return std::any_of(std::begin(list), std::end(list),
                     [&](const char* entry) { return sqlite3_stricmp(name, entry) == 0; });
}

// SQLite asks for every action of a statement while it compiles it.
int AllowReading(void*, int action, const char* first, const char* second, const char*,
                 const char*) {
  switch (action) {
    case SQLITE_SELECT:
    case SQLITE_READ:
    case SQLITE_RECURSIVE:
      return SQLITE_OK;
    case SQLITE_FUNCTION:
      return sqlite3_stricmp(second, "load_extension") == 0 ? SQLITE_DENY : SQLITE_OK;
    case SQLITE_PRAGMA:
      return IsOneOf(first, kPragmasWithArgument) ||
                     (second == nullptr && IsOneOf(first, kPragmasWithout))
                 ? SQLITE_OK
                 : SQLITE_DENY;
    default:
      return SQLITE_DENY;
  }
}

Statement Compile(sqlite3* connection, const char* sql, const char** rest) {
  sqlite3_stmt* raw = nullptr;
  const int code = sqlite3_prepare_v2(connection, sql, -1, &raw, rest);
  Statement statement(raw);
  if (code == SQLITE_AUTH) throw Failure("the statement is refused: query only reads");
  if (code != SQLITE_OK) throw Failure("the statement is refused: {}", sqlite3_errmsg(connection));
  return statement;
}

// Compiles the statement, on a connection that cannot write.  Throws a Failure when it is not one
// statement that only reads.
Statement CheckedStatement(sqlite3* connection, const std::string& sql) {
  sqlite3_db_config(connection, SQLITE_DBCONFIG_DQS_DML, 1, nullptr);  // as the library does
  sqlite3_set_authorizer(connection, AllowReading, nullptr);
  const char* rest = sql.c_str();
  Statement statement;
  while (*rest != '\0') {  // comments and semicolons compile to nothing
    Statement next = Compile(connection, rest, &rest);
    if (next == nullptr) continue;
    if (statement != nullptr) throw Failure("query runs one statement, not several");
    statement = std::move(next);
  }
  if (statement == nullptr) throw Failure("there is no statement to run");
  if (sqlite3_stmt_readonly(statement.get()) == 0)
    throw Failure("the statement is refused: query only reads");
  return statement;
}

// The library's reader, disconnected at the end.
struct Reader {
  MultimediaQueryMgr manager;
  Reader() = default;
  ~Reader() { manager.DisconnectDB(); }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;
};

using Rows = std::vector<std::vector<std::string>>;

Rows RowsOf(const MultimediaQueryMgr& manager) {
  Rows rows;
  const auto width = static_cast<std::ptrdiff_t>(manager.nColumns);
  for (auto cell = MultimediaQueryMgr::vdata.begin();
       width > 0 && MultimediaQueryMgr::vdata.end() - cell >= width; cell += width)
    rows.emplace_back(cell, cell + width);
  return rows;
}

void Print(const std::vector<std::string>& names, const Rows& rows) {
  if (rows.empty()) {
    fmt::print("no rows\n");
    return;
  }
  TextTable table(names);
  for (const auto& row : rows) table.Measure(row);
  table.PrintHead();
  for (const auto& row : rows) table.PrintRow(row);
}

int Query(const Options& options) {
  const DatabaseFile database(options.database);
  const Statement checked = CheckedStatement(database.connection(), options.sql);

  Reader reader;
  if (reader.manager.ConnectDB(database.path().c_str()) != 1)
    throw Failure("database {} cannot be opened", database.name());
  if (reader.manager.ExecSqlStatment(options.sql.c_str()) != 1) {
    while (database.Next(checked)) {  // the reader does not tell why; this fails in the same way
    }
    throw Failure("database {}: {}", database.name(), sqlite3_errstr(reader.manager.nLastResult));
  }
  const std::vector<std::string> names = ColumnNames(checked.get());
  const Rows rows = RowsOf(reader.manager);
  if (options.json) {
    PrintJson({{"columns", names}, {"rows", rows}});
  } else {
    Print(names, rows);
  }
  return kDone;
}

}  // namespace

Command AddQueryCommand(CLI::App* parent) {
  const auto options = std::make_shared<Options>();
  CLI::App* app = parent->add_subcommand("query", "Ask a database a question in SQL");
  app->add_option("DB", options->database, "the database")->required();
  app->add_option("SQL", options->sql, "one statement; it may only read")->required();
  app->add_flag("--json", options->json, "print the answer as JSON, every cell as a text");
  app->footer("Example: orxscan query media.db \"SELECT Title, size FROM ImageTable\"");
  return {app, [options] { return Query(*options); }};
}

}  // namespace orxscan

// orxscan query DB SQL
#include <algorithm>
#include <iterator>
#include <memory>

#include "Commands.h"
#include "DatabaseFile.h"
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

// An answer may be endless and a cell may be made as large as SQLite can count, so both take no
// more than this.
constexpr int kLargestCell = 16 << 20;           // bytes
constexpr long long kLargestHeap = 256LL << 20;  // bytes that SQLite may use
// The widths of the columns are those of the first rows: so many, or so many bytes of them.
constexpr size_t kMeasuredRows = 1000;
constexpr size_t kMeasuredBytes = 1 << 20;

// The rows of the answer, one after another.
class Answer {
 public:
  Answer(const DatabaseFile& database, Statement statement)
      : database_(database), statement_(std::move(statement)) {}

  std::vector<std::string> Names() const { return ColumnNames(statement_.get()); }
  // False behind the last row.  Throws a Failure.
  bool Next(std::vector<std::string>* cells) {
    if (sqlite3_column_count(statement_.get()) == 0 || !database_.Next(statement_)) return false;
    cells->resize(static_cast<size_t>(sqlite3_column_count(statement_.get())));
    for (size_t i = 0; i < cells->size(); ++i)
      (*cells)[i] = CellText(statement_.get(), static_cast<int>(i));
    return true;
  }

 private:
  const DatabaseFile& database_;
  Statement statement_;
};

size_t Bytes(const std::vector<std::string>& cells) {
  size_t bytes = 0;
  for (const std::string& cell : cells) bytes += cell.size();
  return bytes;
}

void Print(Answer* answer) {
  TextTable table(answer->Names());
  std::vector<std::vector<std::string>> measured;
  size_t bytes = 0;
  std::vector<std::string> row;
  bool more = true;
  while (measured.size() < kMeasuredRows && bytes < kMeasuredBytes && (more = answer->Next(&row))) {
    table.Measure(row);
    bytes += Bytes(row);
    measured.push_back(row);
  }
  if (measured.empty()) {
    fmt::print("no rows\n");
    return;
  }
  table.PrintHead();
  for (const auto& cells : measured) table.PrintRow(cells);
  while (more && (more = answer->Next(&row))) table.PrintRow(row);
}

// One row a line, as they come.
void PrintAsJson(Answer* answer) {
  std::vector<std::string> row;
  bool more = answer->Next(&row);  // before anything is printed: it may fail
  fmt::print("{{\n  \"columns\": {},\n  \"rows\": [", JsonText(answer->Names()));
  const char* separator = "\n";
  for (; more; more = answer->Next(&row)) {
    fmt::print("{}    {}", separator, JsonText(row));
    separator = ",\n";
  }
  fmt::print("{}]\n}}\n", separator[0] == ',' ? "\n  " : "");
}

int Query(const Options& options) {
  sqlite3_hard_heap_limit64(kLargestHeap);
  const DatabaseFile database(options.database);
  sqlite3_limit(database.connection(), SQLITE_LIMIT_LENGTH, kLargestCell);
  Answer answer(database, CheckedStatement(database.connection(), options.sql));
  if (options.json) {
    PrintAsJson(&answer);
  } else {
    Print(&answer);
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

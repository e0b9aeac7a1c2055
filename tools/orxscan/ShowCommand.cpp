// orxscan show DB [TABLE]
#include <cstdint>
#include <memory>

#include "Commands.h"
#include "DatabaseFile.h"
#include "Output.h"
#include "TextTable.h"

namespace orxscan {
namespace {

using Json = nlohmann::ordered_json;

struct Options {
  std::string database;
  std::string table;  // empty: all
  long long limit = -1;
  bool json = false;
};

std::string SelectRows(const std::string& table, long long limit) {
  return "SELECT * FROM " + QuotedIdentifier(table) + " LIMIT " + std::to_string(limit);
}

std::vector<std::string> Cells(const Statement& row) {
  std::vector<std::string> cells(static_cast<size_t>(sqlite3_column_count(row.get())));
  for (size_t i = 0; i < cells.size(); ++i) cells[i] = CellText(row.get(), static_cast<int>(i));
  return cells;
}

Json Value(const Statement& row, int column) {
  switch (sqlite3_column_type(row.get(), column)) {
    case SQLITE_INTEGER:
      return static_cast<int64_t>(sqlite3_column_int64(row.get(), column));
    case SQLITE_FLOAT:
      return sqlite3_column_double(row.get(), column);
    case SQLITE_NULL:
      return nullptr;
    default:
      return CellText(row.get(), column);
  }
}

void PrintTable(const DatabaseFile& database, const std::string& table, long long limit) {
  const std::string name = Printable(table);
  const long long count = database.Number("SELECT count(*) FROM " + QuotedIdentifier(table));
  if (count == 0) {
    fmt::print("{}: no rows\n", name);
    return;
  }
  fmt::print("{}: {} {}\n", name, count, count == 1 ? "row" : "rows");
  const Statement rows = database.Select(SelectRows(table, limit));
  TextTable text(ColumnNames(rows.get()));
  while (database.Next(rows)) text.Measure(Cells(rows));
  sqlite3_reset(rows.get());
  text.PrintHead();
  while (database.Next(rows)) text.PrintRow(Cells(rows));
  if (limit >= 0 && limit < count) fmt::print("  and {} more\n", count - limit);
}

// One row a line, as they come: a table may be long.
void PrintTableAsJson(const DatabaseFile& database, const std::string& table, long long limit) {
  fmt::print("  {}: [", JsonText(table));
  const Statement rows = database.Select(SelectRows(table, limit));
  const std::vector<std::string> names = ColumnNames(rows.get());
  const char* separator = "\n";
  for (; database.Next(rows); separator = ",\n") {
    Json row = Json::object();
    for (size_t i = 0; i < names.size(); ++i) row[names[i]] = Value(rows, static_cast<int>(i));
    fmt::print("{}    {}", separator, JsonText(row));
  }
  fmt::print("{}]", separator[0] == ',' ? "\n  " : "");
}

int Show(const Options& options) {
  const DatabaseFile database(options.database);
  std::vector<std::string> tables = database.Tables();
  if (!options.table.empty()) tables = {database.Require(options.table)};
  const Statement snapshot = database.Select("BEGIN");  // the table stays as it was measured
  database.Next(snapshot);

  if (options.json) fmt::print("{{\n");
  for (size_t i = 0; i < tables.size(); ++i) {
    if (i > 0) fmt::print("{}", options.json ? ",\n" : "\n");
    if (options.json) {
      PrintTableAsJson(database, tables[i], options.limit);
    } else {
      PrintTable(database, tables[i], options.limit);
    }
  }
  if (options.json) fmt::print("\n}}\n");
  return kDone;
}

}  // namespace

Command AddShowCommand(CLI::App* parent) {
  const auto options = std::make_shared<Options>();
  CLI::App* app = parent->add_subcommand("show", "Show the tables of a database");
  app->add_option("DB", options->database, "the database")->required();
  app->add_option("TABLE", options->table, "one table alone, such as ImageTable");
  app->add_option("--limit", options->limit, "show no more than N rows of a table")
      ->type_name("N")
      ->check(CLI::NonNegativeNumber);
  app->add_flag("--json", options->json, "print them as JSON");
  app->footer("Example: orxscan show media.db ImageTable --limit 10");
  return {app, [options] { return Show(*options); }};
}

}  // namespace orxscan

// orxscan check DB [DIR]
#include <filesystem>
#include <memory>
#include <optional>

#include "Commands.h"
#include "DatabaseFile.h"
#include "FileScanner/DataBaseMgr.h"
#include "Library.h"
#include "Output.h"
#include "Paths.h"

namespace orxscan {
namespace {

constexpr size_t kMostPrinted = 100;  // problems of one kind; --json has them all

struct Options {
  std::string database;
  std::string folder;  // empty: not asked
  bool json = false;
};

// By class: the table of its media.
struct Medium {
  int mediaClass;
  const char* table;
};
constexpr Medium kMedia[] = {{1, "ImageTable"}, {2, "AudioTable"}, {3, "VideoTable"}};

struct Findings {
  std::string folder;
  std::optional<bool> ofFolder;  // the database holds nothing outside the folder
  std::optional<bool> sortable;  // it has the sorting columns
  std::vector<std::string> damage;
  std::vector<std::string> mismatches;  // rows without their counterpart

  bool good() const {
    return ofFolder.value_or(true) && sortable.value_or(true) && damage.empty() &&
           mismatches.empty();
  }
};

// The folder as a scan stores it.  A card's folder need not be there: it was mounted for the scan.
std::string StoredFolder(const std::string& folder) {
  std::error_code error;
  const bool exists = std::filesystem::exists(folder, error);
  std::string path = exists || folder.empty() || folder[0] != '/'
                         ? CheckedFolder(folder)
                         : std::filesystem::path(folder).lexically_normal().string();
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  if (path.find('\'') != std::string::npos)
    throw Failure("folder {}: a path with a single quote in it cannot be looked up", Quoted(path));
  return path;
}

void AskTheLibrary(const DatabaseFile& file, Findings* findings) {
  const LibraryInstances instances;
  const QuietLibrary library;
  DataBaseMgr* database = OpenDatabase(file.path(), file.name());
  if (!findings->folder.empty())
    findings->ofFolder = !database->NeedToDeleteDB(findings->folder.c_str());
  if (file.layout() == Layout::kFull)
    findings->sortable = database->NeedToDeleteDBforSorting() == 1;
}

std::vector<std::string> Damage(const DatabaseFile& database) {
  std::vector<std::string> damage;
  const Statement line = database.Select("PRAGMA integrity_check");
  int code = SQLITE_OK;
  while ((code = sqlite3_step(line.get())) == SQLITE_ROW) damage.push_back(CellText(line.get(), 0));
  if (code == SQLITE_CORRUPT || code == SQLITE_NOTADB) {  // the check itself could not go on
    damage.emplace_back(sqlite3_errmsg(database.connection()));
  } else if (code != SQLITE_DONE) {
    throw Failure("database {}: {}", database.name(), sqlite3_errmsg(database.connection()));
  }
  if (damage.size() == 1 && damage[0] == "ok") damage.clear();
  return damage;
}

void AddMismatches(const DatabaseFile& database, const std::string& sql, const std::string& table,
                   const std::string& problem, std::vector<std::string>* mismatches) {
  const Statement row = database.Select(sql);
  while (database.Next(row))
    mismatches->push_back(fmt::format("{} row {} {}: {}", table, CellText(row.get(), 0), problem,
                                      CellText(row.get(), 1)));
}

std::vector<std::string> Mismatches(const DatabaseFile& database) {
  std::vector<std::string> mismatches;
  AddMismatches(database, "SELECT id, FullPath FROM ObjectTable WHERE class NOT IN (0, 1, 2, 3)",
                "ObjectTable", "is of no known class", &mismatches);
  if (database.layout() != Layout::kFull) return mismatches;
  for (const Medium& medium : kMedia) {
    AddMismatches(
        database,
        fmt::format("SELECT o.id, o.FullPath FROM ObjectTable AS o WHERE o.class = {} AND "
                    "NOT EXISTS (SELECT 1 FROM {} WHERE id = CAST(o.id AS TEXT))",
                    medium.mediaClass, medium.table),
        "ObjectTable", fmt::format("has no {} row", medium.table), &mismatches);
    AddMismatches(
        database,
        fmt::format("SELECT m.id, m.FullPath FROM {} AS m WHERE NOT EXISTS (SELECT 1 FROM "
                    "ObjectTable AS o WHERE o.id = CAST(m.id AS INTEGER) AND o.class = {})",
                    medium.table, medium.mediaClass),
        medium.table, "has no ObjectTable row", &mismatches);
  }
  return mismatches;
}

void PrintProblems(const char* heading, const char* good,
                   const std::vector<std::string>& problems) {
  if (problems.empty()) {
    fmt::print("{:<10} {}\n", heading, good);
    return;
  }
  fmt::print("{:<10} {} {}\n", heading, problems.size(),
             problems.size() == 1 ? "problem" : "problems");
  for (size_t i = 0; i < problems.size() && i < kMostPrinted; ++i)
    fmt::print("  {}\n", Printable(problems[i]));
  if (problems.size() > kMostPrinted)
    fmt::print("  and {} more (--json lists them all)\n", problems.size() - kMostPrinted);
}

void Print(const DatabaseFile& database, const Findings& findings) {
  fmt::print("{:<10} {}\n", "layout", Described(database.layout()));
  if (findings.ofFolder)
    fmt::print("{:<10} {} {}\n", "folder",
               *findings.ofFolder ? "current: nothing lies outside"
                                  : "to be deleted: something lies outside",
               Printable(findings.folder));
  if (findings.sortable)
    fmt::print(
        "{:<10} {}\n", "sorting",
        *findings.sortable ? "current" : "to be deleted: it is from before the sort numbers");
  PrintProblems("integrity", "ok", findings.damage);
  if (!findings.damage.empty()) return;
  PrintProblems("rows",
                database.layout() == Layout::kFull ? "every medium has its object, and the other "
                                                     "way round"
                                                   : "there are no media tables to compare",
                findings.mismatches);
}

nlohmann::ordered_json AsJson(const DatabaseFile& database, const Findings& findings) {
  nlohmann::ordered_json json;
  json["good"] = findings.good();
  json["layout"] = Described(database.layout());
  if (findings.ofFolder) {
    json["folder"] = findings.folder;
    json["folderCurrent"] = *findings.ofFolder;
  }
  if (findings.sortable) json["sortingCurrent"] = *findings.sortable;
  json["damage"] = findings.damage;
  json["mismatches"] = findings.mismatches;
  return json;
}

int Check(const Options& options) {
  const DatabaseFile database(options.database);
  Findings findings;
  if (!options.folder.empty()) findings.folder = StoredFolder(options.folder);
  findings.damage = Damage(database);
  if (findings.damage.empty()) {  // a damaged file answers nothing else reliably
    AskTheLibrary(database, &findings);
    findings.mismatches = Mismatches(database);
  }
  if (options.json) {
    PrintJson(AsJson(database, findings));
  } else {
    Print(database, findings);
  }
  return findings.good() ? kDone : kFailed;
}

}  // namespace

Command AddCheckCommand(CLI::App* parent) {
  const auto options = std::make_shared<Options>();
  CLI::App* app = parent->add_subcommand(
      "check", "Say whether a database is current, intact and complete; exit status 1 when not");
  app->add_option("DB", options->database, "the database")->required();
  app->add_option("DIR", options->folder, "the folder that it should be of");
  app->add_flag("--json", options->json, "print the findings as JSON");
  app->footer("Example: orxscan check media.db ~/Pictures");
  return {app, [options] { return Check(*options); }};
}

}  // namespace orxscan

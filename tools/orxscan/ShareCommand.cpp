// orxscan share DB [LIST]
#include <algorithm>
#include <iterator>
#include <memory>
#include <set>

#include "Commands.h"
#include "DatabaseFile.h"
#include "FileScanner/DataBaseMgr.h"
#include "Library.h"
#include "MediaDatabase.h"
#include "Output.h"
#include "Paths.h"
#include "Refusal.h"

namespace orxscan {
namespace {

constexpr int kUsualMode = 0;  // any sharing mode whose database has media tables

struct Options {
  std::string database;
  std::string list;  // a file, empty: share all
  bool json = false;
};

// The paths that can be shared: those of a table, by the extension that leads to it.
class Sharable {
 public:
  explicit Sharable(const DatabaseFile& database)
      : images_(PathsOf(database, "ImageTable")), films_(PathsOf(database, "VideoTable")) {}

  // Empty when the entry can be shared.
  std::string WhyNot(const std::string& path) const {
    const size_t dot = path.rfind('.');
    const std::string extension = dot == std::string::npos ? "" : path.substr(dot);
    const bool image = extension == ".JPG" || extension == ".MPO";
    if (!image && extension != ".MP4") return "only .JPG, .MPO and .MP4 files are shared by name";
    if (path.find('\'') != std::string::npos) return "its path has a single quote in it";
    if ((image ? images_ : films_).count(path) == 0) return "not in the database";
    return "";
  }

 private:
  static std::set<std::string> PathsOf(const DatabaseFile& database, const std::string& table) {
    std::set<std::string> paths;
    const Statement row = database.Select("SELECT FullPath FROM " + table);
    while (database.Next(row)) paths.insert(CellText(row.get(), 0));
    return paths;
  }

  std::set<std::string> images_, films_;
};

// Null as the list shares all.
void UpdateShareStatus(const MediaDatabase& file, const std::vector<std::string>* paths) {
  std::vector<char*> list;
  if (paths != nullptr)
    for (const std::string& path : *paths) list.push_back(const_cast<char*>(path.c_str()));
  list.push_back(nullptr);

  const LibraryInstances instances;
  const QuietLibrary library;
  DataBaseMgr* database = OpenDatabase(file.path(), file.name());
  const bool done =
      database->ExecSqlStatmentNoValueReturn("BEGIN;") == 1 &&
      database->UpdateShareStatus(paths != nullptr ? list.data() : nullptr, kUsualMode) == 1 &&
      database->ExecSqlStatmentNoValueReturn("COMMIT;") == 1;
  file.CheckWritten(library.errors());
  if (!done || library.errors().any())  // what was begun is rolled back with the connection
    throw Failure("database {}: the share status could not be set", file.name());
}

int Share(const Options& options) {
  std::vector<std::string> paths;
  std::vector<Refusal> refused;
  {
    const DatabaseFile database(options.database);
    database.Require("ImageTable");
    if (!options.list.empty()) {
      const Sharable sharable(database);
      for (const ListLine& line : ReadList(options.list)) {
        const std::string reason = sharable.WhyNot(line.text);
        if (reason.empty()) {
          paths.push_back(line.text);
        } else {
          refused.push_back({line.text, reason});
        }
      }
    }
  }
  UpdateShareStatus(MediaDatabase(options.database), options.list.empty() ? nullptr : &paths);

  const DatabaseFile database(options.database);
  const auto count = [&](const char* table, const char* condition) {
    return database.Number(std::string("SELECT count(*) FROM ") + table + condition);
  };
  const long long pictures = count("ImageTable", " WHERE Share = 1");
  const long long allPictures = count("ImageTable", "");
  const long long films = count("VideoTable", " WHERE Share = 1");
  const long long allFilms = count("VideoTable", "");
  if (options.json) {
    PrintJson({{"pictures", {{"shared", pictures}, {"total", allPictures}}},
               {"films", {{"shared", films}, {"total", allFilms}}},
               {"refused", RefusalsAsJson(refused)}});
  } else {
    PrintRefusals(refused);
    fmt::print("Shared: {} of {} pictures, {} of {} films\n", pictures, allPictures, films,
               allFilms);
  }
  return kDone;
}

}  // namespace

Command AddShareCommand(CLI::App* parent) {
  const auto options = std::make_shared<Options>();
  CLI::App* app = parent->add_subcommand(
      "share", "Offer the listed pictures and films to clients and hide the others");
  app->add_option("DB", options->database, "the database")->required();
  app->add_option("LIST", options->list, "a file with one full path a line; without it, share all");
  app->add_flag("--json", options->json, "print the outcome as JSON");
  app->footer("Example: orxscan share media.db holiday.txt");
  return {app, [options] { return Share(*options); }};
}

}  // namespace orxscan

// orxscan backup-list DB
#include <cstdlib>
#include <memory>

#include "Commands.h"
#include "DatabaseFile.h"
#include "FileScanner/DataBaseMgr.h"
#include "Library.h"
#include "Output.h"

namespace orxscan {
namespace {

struct Options {
  std::string database;
  bool json = false;
};

struct Candidate {
  std::string title;
  std::string path;
};

std::vector<Candidate> Candidates(const DatabaseFile& file) {
  const LibraryInstances instances;
  const QuietLibrary library;
  DataBaseMgr* database = OpenDatabase(file.path(), file.name());
  int count = 0;
  BackupClassElement* head = nullptr;
  const int found = database->GetClassElementListForBackup(&count, &head);
  std::vector<Candidate> candidates;
  while (head != nullptr) {
    BackupClassElement* const element = head;
    head = element->pNext;
    candidates.push_back({element->szTitle, element->szFullPath});
    free(element);
  }
  if (found != 1 && !candidates.empty()) throw Failure("there is not enough memory");
  return candidates;
}

int BackupList(const Options& options) {
  const DatabaseFile database(options.database);
  if (database.layout() == Layout::kObjectOnly)
    throw Failure("database {} keeps no backup marks: it has {}", database.name(),
                  Described(database.layout()));
  const std::vector<Candidate> candidates = Candidates(database);
  const long long all =
      database.Number("SELECT count(*) FROM ObjectTable WHERE class != 0 AND IsBackup != 1");
  if (options.json) {
    nlohmann::ordered_json files = nlohmann::ordered_json::array();
    for (const Candidate& candidate : candidates)
      files.push_back({{"title", candidate.title}, {"path", candidate.path}});
    PrintJson({{"candidates", all}, {"files", files}});
    return kDone;
  }
  for (const Candidate& candidate : candidates) fmt::print("{}\n", Printable(candidate.path));
  if (all > static_cast<long long>(candidates.size()))
    fmt::print("and {} more, which a backup considers later\n",
               all - static_cast<long long>(candidates.size()));
  if (all == 0) fmt::print("no files to back up\n");
  return kDone;
}

}  // namespace

Command AddBackupListCommand(CLI::App* parent) {
  const auto options = std::make_shared<Options>();
  CLI::App* app = parent->add_subcommand(
      "backup-list", "List the files that a backup should consider, at most 1000");
  app->add_option("DB", options->database, "the database")->required();
  app->add_flag("--json", options->json, "print them as JSON");
  app->footer("Example: orxscan backup-list media.db");
  return {app, [options] { return BackupList(*options); }};
}

}  // namespace orxscan

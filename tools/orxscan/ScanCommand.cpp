// orxscan scan DIR DB
#include <algorithm>
#include <chrono>
#include <memory>
#include <set>

#include "Commands.h"
#include "FileScanner/DirectoryScanner.h"
#include "FolderTree.h"
#include "Interrupt.h"
#include "Library.h"
#include "MediaDatabase.h"
#include "Output.h"
#include "Paths.h"
#include "Progress.h"
#include "Refusal.h"
#include "ScanSummary.h"
#include "host/HostPlatform.h"

namespace orxscan {
namespace {

struct Options {
  std::string folder;
  std::string database;
  std::string profiles;  // a file, empty: the library's list
  bool certification = false;
  bool json = false;
  bool quiet = false;
};

size_t CountKnown(const std::vector<FoundFile>& files, const std::set<std::string>& known) {
  return static_cast<size_t>(std::count_if(files.begin(), files.end(), [&](const FoundFile& file) {
    return known.count(file.path) != 0;
  }));
}

// Runs the scan and returns the library's errors.
LibraryErrors RunScan(DirectoryScanner* scanner, const Options& options, const std::string& folder,
                      const MediaDatabase& database, const std::vector<FoundFile>& files,
                      size_t known) {
  Progress progress(!options.json && !options.quiet, folder, files.size(), known);
  LibraryErrors errors;
  {
    const QuietLibrary library(progress.active()
                                   ? [&](const LogLine& line) { progress.Follow(line); }
                                   : std::function<void(const LogLine&)>());
    int changed = 0;
    scanner->ScanDir(folder.c_str(), database.path().c_str(), &changed);
    errors = library.errors();
  }
  progress.Finish();
  database.CheckWritten(errors);
  return errors;
}

int Scan(const Options& options) {
  const std::string folder = CheckedFolder(options.folder);
  const std::string profiles =
      options.profiles.empty() ? pProfiles : ReadProfiles(options.profiles);
  const MediaDatabase database(options.database);
  const std::vector<ObjectRow> before = database.Objects();
  HostPlatform::SetCertificationState(options.certification ? 1 : 0);

  const LibraryInstances instances;
  DirectoryScanner* scanner = DirectoryScanner::GetInstance();
  scanner->SetDlnaProfiles(profiles.c_str());
  auto interrupt = std::make_unique<CancelOnSignal>(scanner);

  ScanSummary summary;
  summary.folder = folder;
  summary.database = options.database;
  const auto start = std::chrono::steady_clock::now();
  const FolderTree tree = TreeBelow(folder, database.path());
  summary.filesFound = tree.files.size();
  const LibraryErrors errors = RunScan(scanner, options, folder, database, tree.files,
                                       CountKnown(tree.files, PathsOf(before)));
  summary.cancelled = scanner->GetCancelFlag();
  summary.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  interrupt.reset();

  const std::vector<ObjectRow> after = database.Objects();
  summary.Compare(before, after);
  if (!summary.cancelled) summary.leftOut = FilesLeftOut(scanner, tree, PathsOf(after), errors);
  AddFailures(errors, &summary.leftOut.missing);
  summary.profiles = database.Profiles();
  return Report(summary, options.json, options.quiet);
}

}  // namespace

Command AddScanCommand(CLI::App* parent) {
  const auto options = std::make_shared<Options>();
  CLI::App* app = parent->add_subcommand(
      "scan", "Bring a database in line with a folder of pictures, films and sounds");
  app->add_option("DIR", options->folder, "the folder, with all that is below it")->required();
  app->add_option("DB", options->database, "the database; made when it is not there")->required();
  app->add_option("--profiles", options->profiles,
                  "serve the protocolInfo entries in this file instead of the usual ones")
      ->type_name("FILE");
  app->add_flag("--certification", options->certification,
                "scan as a device in DLNA certification does");
  app->add_flag("--json", options->json, "print the summary as JSON");
  app->add_flag("--quiet", options->quiet, "print nothing but errors");
  app->footer("Example: orxscan scan ~/Pictures media.db");
  return {app, [options] { return Scan(*options); }};
}

}  // namespace orxscan

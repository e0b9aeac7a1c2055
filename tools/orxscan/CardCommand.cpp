// orxscan card FOLDER DB
#include <chrono>
#include <cstring>
#include <memory>
#include <set>

#include "CardMount.h"
#include "CardRefusals.h"
#include "CardScan.h"
#include "Commands.h"
#include "FileScanner/DirectoryScanner.h"
#include "Interrupt.h"
#include "Library.h"
#include "MediaDatabase.h"
#include "Output.h"
#include "Paths.h"
#include "Progress.h"
#include "ScanSummary.h"
#include "host/HostPlatform.h"

namespace orxscan {
namespace {

// Where the pieces of a URI stand: "/mnt/mmc/DCIM/100ORXSC/ORXA0001.JPG"
constexpr char kUriStart[] = "/mnt/mmc/DCIM/";
constexpr size_t kFolderAt = sizeof kUriStart - 1;
constexpr size_t kNameAt = kFolderAt + 9;

struct Options {
  std::string folder;
  std::string database;
  std::string list;  // a file, empty: the whole card
  int mode = 0;
  bool backup = false;
  bool xq = false;
  bool json = false;
  bool quiet = false;
};

// The scan that fits the sharing mode unless the user wants another.
ScanMode ScanModeOf(const Options& options) {
  if (options.xq) return ScanMode::kXq;
  if (options.backup) return ScanMode::kBackup;
  if (options.mode == kObjectOnlyMode) return ScanMode::kXq;
  return options.mode == kBackupMode ? ScanMode::kBackup : ScanMode::kFull;
}

bool IsUri(const std::string& text) {
  return text.size() > kNameAt && text.compare(0, kFolderAt, kUriStart) == 0 &&
         text.find('/', kFolderAt) == kNameAt - 1 && text.find('/', kNameAt) == std::string::npos &&
         text.substr(kNameAt) != "." && text.substr(kNameAt) != "..";
}

std::vector<std::string> ReadUris(const std::string& path) {
  std::vector<std::string> uris;
  for (const ListLine& line : ReadList(path)) {
    if (!IsUri(line.text))
      throw Failure("list {}, line {}: {} is no file of a card, such as {}", Quoted(path),
                    line.number, Quoted(line.text), "/mnt/mmc/DCIM/100ORXSC/ORXA0001.JPG");
    uris.push_back(line.text);
  }
  return uris;
}

size_t CountKnown(const std::vector<std::string>& shared, const std::set<std::string>& known) {
  size_t count = 0;
  for (const std::string& uri : shared) count += known.count(uri);
  return count;
}

void ShareFiles(const Options& options, std::vector<std::string> list) {
  if (!options.list.empty()) {
    HostPlatform::SetSharedFiles(std::move(list));
  } else if (!HostPlatform::ShareWholeCard(kCardPath)) {
    throw Failure("folder {}: DCIM cannot be read", Quoted(options.folder));
  }
}

int Card(const Options& options) {
  const std::string folder = CheckedFolder(options.folder);
  CheckedFolder(folder + "/DCIM");
  std::vector<std::string> list;
  if (!options.list.empty()) list = ReadUris(options.list);
  const ScanMode scan = ScanModeOf(options);
  const Layout layout = LayoutFor(scan, options.mode);
  MediaDatabase database(options.database, layout);
  database.SetPath(MountCard(folder, CanonicalDatabasePath(database.path())));
  ShareFiles(options, std::move(list));
  const std::vector<std::string> shared = HostPlatform::SharedFiles();

  const LibraryInstances instances;
  if (!database.existed()) MakeCardDatabase(database, layout);
  HostPlatform::SetSharingMode(options.mode);
  const std::vector<ObjectRow> before = database.Objects();
  DirectoryScanner* scanner = DirectoryScanner::GetInstance();
  scanner->SetDlnaProfiles(pProfiles);
  auto interrupt = std::make_unique<CancelOnSignal>(scanner);

  ScanSummary summary;
  summary.folder = folder;
  summary.database = options.database;
  summary.filesFound = shared.size();
  const auto start = std::chrono::steady_clock::now();
  Progress progress(!options.json && !options.quiet, kCardDcimPath, shared.size(),
                    CountKnown(shared, PathsOf(before)));
  const LibraryErrors errors = RunCardScan(scanner, scan, layout, database, &progress);
  summary.cancelled = scanner->GetCancelFlag();
  summary.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  interrupt.reset();

  const std::vector<ObjectRow> after = database.Objects();
  summary.Compare(before, after);
  if (!summary.cancelled)
    summary.leftOut = CardRefusals(scanner, scan, options.mode, errors).Of(shared, PathsOf(after));
  if (options.list.empty())
    for (const HostPlatform::UnreadEntry& entry : HostPlatform::NotShared())
      summary.leftOut.missing.push_back(
          {entry.path, fmt::format("cannot be read: {}", strerror(entry.error))});
  AddFailures(errors, &summary.leftOut.missing);
  summary.profiles = database.Profiles();
  return Report(summary, options.json, options.quiet);
}

}  // namespace

Command AddCardCommand(CLI::App* parent) {
  const auto options = std::make_shared<Options>();
  CLI::App* app = parent->add_subcommand(
      "card", "Bring a database in line with the shared files of a card, as a camera does");
  app->add_option("FOLDER", options->folder, "the card; it holds a folder DCIM")->required();
  app->add_option("DB", options->database, "the database; made when it is not there")->required();
  app->add_option("--mode", options->mode, "the camera's sharing mode")
      ->type_name("N")
      ->check(CLI::NonNegativeNumber)
      ->required();
  app->add_option("--list", options->list,
                  "share the URIs in this file, newest first, instead of the whole card")
      ->type_name("FILE");
  CLI::Option* backup = app->add_flag("--backup", options->backup,
                                      "scan for a backup whatever the mode (6 does so by itself)");
  app->add_flag("--xq", options->xq,
                "write the object table alone whatever the mode (8 does so by itself)")
      ->excludes(backup);
  app->add_flag("--json", options->json, "print the summary as JSON");
  app->add_flag("--quiet", options->quiet, "print nothing but errors");
  app->footer("Example: orxscan card /media/card media.db --mode 2");
  return {app, [options] { return Card(*options); }};
}

}  // namespace orxscan

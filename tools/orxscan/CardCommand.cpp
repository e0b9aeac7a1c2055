// orxscan card FOLDER DB
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <memory>
#include <set>

#include "CardMount.h"
#include "Commands.h"
#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DcfFileInfoVector.h"
#include "FileScanner/DirectoryScanner.h"
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

constexpr int kBackupMode = 6;
constexpr int kObjectOnlyMode = 8;
constexpr size_t kMostShared = 1000;  // files at a time

// Where the pieces of a URI stand: "/mnt/mmc/DCIM/100ORXSC/ORXA0001.JPG"
constexpr char kUriStart[] = "/mnt/mmc/DCIM/";
constexpr size_t kMountLength = sizeof kCardPath - 1;
constexpr size_t kFolderAt = sizeof kUriStart - 1;
constexpr size_t kNameAt = kFolderAt + 9;
constexpr size_t kExtensionAt = kNameAt + 8;

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

enum class ScanMode { kFull, kBackup, kXq };

// The scan that fits the sharing mode unless the user wants another.
ScanMode ScanModeOf(const Options& options) {
  if (options.xq) return ScanMode::kXq;
  if (options.backup) return ScanMode::kBackup;
  if (options.mode == kObjectOnlyMode) return ScanMode::kXq;
  return options.mode == kBackupMode ? ScanMode::kBackup : ScanMode::kFull;
}

// The tables that the scan writes.
Layout LayoutFor(ScanMode scan, int sharingMode) {
  if (scan == ScanMode::kFull) return Layout::kFull;
  return sharingMode == kBackupMode ? Layout::kBackup : Layout::kObjectOnly;
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

std::string Extension(const std::string& uri) {
  return uri.size() > kExtensionAt ? uri.substr(kExtensionAt) : "";
}

// A database in which a scan finds the tables that it writes, when the sharing mode makes others.
void MakeObjectOnlyDatabase(const MediaDatabase& database) {
  const QuietLibrary library;
  HostPlatform::SetSharingMode(kObjectOnlyMode);
  DataBaseMgr::GetInstance()->OpenDB(database.path().c_str());
  DataBaseMgr::DestroyInstance();
  database.CheckWritten(library.errors());
}

std::set<std::string> Paths(const std::vector<ObjectRow>& rows) {
  std::set<std::string> paths;
  for (const ObjectRow& row : rows) paths.insert(row.path);
  return paths;
}

size_t CountKnown(const std::vector<std::string>& shared, const std::set<std::string>& known) {
  size_t count = 0;
  for (const std::string& uri : shared) count += known.count(uri);
  return count;
}

// Follows the rows of the files: these scans log only some of the files that they take.
class RowWatch {
 public:
  RowWatch(Progress* progress, Layout layout) : progress_(progress), layout_(layout) {}

  // The library opens its connection after the scan has begun, and closes it before the end.
  void Start() {
    if (DataBaseMgr::ppDataBase != nullptr)
      sqlite3_update_hook(DataBaseMgr::ppDataBase, RowChanged, this);
  }

 private:
  static void RowChanged(void* self, int what, const char*, const char* table, sqlite3_int64) {
    auto* watch = static_cast<RowWatch*>(self);
    const bool object = strcmp(table, "ObjectTable") == 0;
    if (what == SQLITE_INSERT && object != (watch->layout_ == Layout::kFull))
      watch->progress_->FileAdded();
  }

  Progress* progress_;
  Layout layout_;
};

bool IsBeforeThePurge(const LogLine& line) {
  return line.message.find("] Before Invalidate") != std::string::npos;
}

// Runs the scan and returns the library's errors.
std::vector<std::string> RunScan(DirectoryScanner* scanner, ScanMode mode, Layout layout,
                                 const MediaDatabase& database, Progress* progress) {
  RowWatch watch(progress, layout);
  const auto listen = [&](const LogLine& line) {
    if (IsBeforeThePurge(line)) watch.Start();
  };
  std::vector<std::string> errors;
  {
    const QuietLibrary library(progress->active() ? listen : std::function<void(const LogLine&)>());
    const auto scan = mode == ScanMode::kXq       ? &DirectoryScanner::scanXQDcf
                      : mode == ScanMode::kBackup ? &DirectoryScanner::scanAutoBackupDcf
                                                  : &DirectoryScanner::scanDcf;
    int changed = 0;
    (scanner->*scan)(kCardDcimPath, database.path().c_str(), &changed);
    errors = library.errors();
  }
  progress->Finish();
  database.CheckWritten(errors);
  return errors;
}

// Why shared files are not in the database after a scan.
class CardRefusals {
 public:
  CardRefusals(DirectoryScanner* scanner, ScanMode scan, int sharingMode,
               const std::vector<std::string>& errors)
      : scanner_(scanner), scan_(scan), sharingMode_(sharingMode) {
    for (const std::string& error : errors)
      if (error.find("query : insert into ") != std::string::npos &&
          error.find("insert into ContainerTable") == std::string::npos)  // never takes a row
        insertFailed_ = true;
    if (scan == ScanMode::kXq) {
      DcfFileInfoVector* list = DcfFileInfoVector::GetInstance();
      for (int i = 0; i < list->getFilePathVectorSize(); ++i)
        listed_.insert(kCardPath + list->getFilePathVectorAt(i));
    }
  }

  // `index` is the file's place among the shared ones.  Sets `untaken` for a file that the database
  // did not take.
  std::string Reason(const std::string& uri, size_t index, bool* untaken) const {
    struct stat64 status = {};
    if (stat64(uri.c_str(), &status) != 0) return strerror(errno);
    if (uri.find('"') != std::string::npos) return "its path has a double quote in it";
    if (!KindIsShared(uri)) return fmt::format("not shared in mode {}", sharingMode_);
    const bool listed = scan_ == ScanMode::kXq ? listed_.count(uri) != 0 : index < kMostShared;
    if (!listed) return fmt::format("not among the {} newest files", kMostShared);
    if (!ScanTakesKind(uri))
      return fmt::format("this scan takes no {} files", Extension(uri).substr(1));
    const std::string reason = ReasonToRefuse(scanner_, uri);
    if (!reason.empty()) return reason;
    *untaken = insertFailed_;
    return insertFailed_ ? "the database did not take it" : "the scan passed it over";
  }

 private:
  bool KindIsShared(const std::string& uri) const {
    const std::string extension = Extension(uri);
    DLNA_FILE_TYPE type = DLNA_FILE_TYPE_NONE;
    const bool photosAlone = sharingMode_ == 2 || sharingMode_ == kObjectOnlyMode;
    if (scan_ == ScanMode::kXq)
      return !photosAlone || DcfFileInfoVector::GetInstance()->supportFileCheck(
                                 extension.c_str(), uri.c_str(), &type) == 1;
    return (!photosAlone && sharingMode_ != 1) ||
           DataBaseMgr::GetInstance()->supportFileCheck(extension.c_str(), uri.c_str(), &type) == 1;
  }

  bool ScanTakesKind(const std::string& uri) const {
    std::string extension = Extension(uri);
    if (scan_ == ScanMode::kFull || extension.size() < 2) return true;
    extension.erase(0, 1);
    for (char& c : extension) c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
    const char* pictures = scan_ == ScanMode::kXq ? JPEG_Extension : PC_JPEG_Extension;
    return strstr(pictures, extension.c_str()) != nullptr ||
           strstr(MP4_Extension, extension.c_str()) != nullptr;
  }

  DirectoryScanner* scanner_;
  ScanMode scan_;
  int sharingMode_;
  bool insertFailed_ = false;
  std::set<std::string> listed_;
};

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
  if (!database.existed() && layout == Layout::kObjectOnly) MakeObjectOnlyDatabase(database);
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
                    CountKnown(shared, Paths(before)));
  const std::vector<std::string> errors = RunScan(scanner, scan, layout, database, &progress);
  summary.cancelled = scanner->GetCancelFlag();
  summary.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  interrupt.reset();

  const std::vector<ObjectRow> after = database.Objects();
  summary.Compare(before, after);
  if (!summary.cancelled) {
    const QuietLibrary library;
    const CardRefusals refusals(scanner, scan, options.mode, errors);
    const std::set<std::string> registered = Paths(after);
    for (size_t i = 0; i < shared.size(); ++i) {
      if (registered.count(shared[i]) != 0) continue;
      bool untaken = false;
      summary.refused.push_back({shared[i], refusals.Reason(shared[i], i, &untaken)});
      if (untaken) ++summary.untaken;
    }
  }
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

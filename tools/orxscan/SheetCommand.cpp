// orxscan sheet DB OUT.html
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>

#include "Commands.h"
#include "DatabaseDiff.h"
#include "DatabaseFile.h"
#include "Html.h"
#include "MediaFile.h"
#include "NewFile.h"
#include "Output.h"
#include "Paths.h"
#include "SheetFolders.h"
#include "SheetItems.h"
#include "SheetPage.h"
#include "SheetThumbnails.h"

namespace orxscan {
namespace {

struct Options {
  std::string database;
  std::string page;
  std::string card;
  std::string before;  // empty: none
  std::string below;   // a folder, empty: those that the database names
  bool anywhere = false;
  bool beside = false;
  bool force = false;
};

bool SameFile(const struct stat64& status, const std::string& path) {
  struct stat64 other = {};
  return stat64(path.c_str(), &other) == 0 && other.st_dev == status.st_dev &&
         other.st_ino == status.st_ino;
}

bool IsSheet(const std::string& path) {
  const auto length = static_cast<long long>(strlen(kSheetSignature));
  return MediaFile(path).Read(0, length) == kSheetSignature;
}

// Where the page goes: what is there already has to be a page as well.  Throws a Failure.
std::string PagePath(const Options& options, const DatabaseFile& database) {
  if (options.page.empty()) throw Failure("the name of the page is empty");
  std::string path = std::filesystem::absolute(options.page).string();
  const std::string name = Quoted(options.page);
  struct stat64 status = {};
  if (stat64(path.c_str(), &status) != 0) {
    if (errno != ENOENT) throw Failure("page {}: {}", name, strerror(errno));
    if (path.back() == '/') throw Failure("page {}: this is the name of a folder", name);
    return path;
  }
  if (S_ISDIR(status.st_mode)) throw Failure("page {} is a folder", name);
  if (!S_ISREG(status.st_mode)) throw Failure("page {} is not a regular file", name);
  if (SameFile(status, database.path())) throw Failure("page {} is the database", name);
  if (!options.before.empty() && SameFile(status, options.before))
    throw Failure("page {} is the earlier database", name);
  if (!options.force && status.st_size != 0 && !IsSheet(path))
    throw Failure("{} is there and not a page of this command; --force replaces it", name);
  std::error_code error;  // behind a link, so that the link stays
  const std::filesystem::path canonical = std::filesystem::canonical(path, error);
  return error ? path : canonical.string();
}

// Marks what was added and changed since the database `before`, and adds what was removed.
void MarkDifferences(const DatabaseFile& before, const DatabaseFile& after, SheetRows* rows) {
  const DatabaseDiff diff = Compare(before, after);
  std::map<std::string, Mark> marks;
  for (const ObjectDiff& object : diff.added) marks.emplace(object.path, Mark::kAdded);
  for (const ObjectDiff& object : diff.changed) marks.emplace(object.path, Mark::kChanged);
  const auto apply = [&marks](auto* marked) {
    const auto found = marks.find(marked->path);
    if (found != marks.end()) marked->marks.insert(marked->marks.begin(), found->second);
  };
  for (SheetFolder& folder : rows->folders) apply(&folder);
  for (SheetItem& item : rows->items) apply(&item);

  std::map<std::string, bool> removed;
  for (const ObjectDiff& object : diff.removed) removed.emplace(object.path, true);
  SheetRows earlier = ReadSheetRows(before);
  for (SheetFolder& folder : earlier.folders) {
    if (removed.count(folder.path) == 0) continue;
    folder.id = 0;  // its id may belong to something else by now
    folder.marks = {Mark::kRemoved};
    rows->folders.push_back(std::move(folder));
  }
  for (SheetItem& item : earlier.items) {
    if (removed.count(item.path) == 0) continue;
    item.folderId.clear();  // found by its path
    item.marks.insert(item.marks.begin(), Mark::kRemoved);
    rows->items.push_back(std::move(item));
  }
}

// The files that the page may show something of.
SheetFolders FoldersOf(const Options& options, const std::vector<std::string>& roots,
                       const std::string& card) {
  if (options.anywhere) return SheetFolders::Anywhere();
  if (!options.below.empty()) return SheetFolders::Below(CheckedFolder(options.below));
  SheetFolders folders = SheetFolders::OfDatabase(roots, card);
  for (const std::string& root : folders.refused())
    Complain(
        fmt::format("the database names {} as the folder that was scanned: its files are left "
                    "out; --below says which folder to show",
                    Quoted(root)));
  return folders;
}

void PrintSummary(const Options& options, const Sheet& sheet, const SheetThumbnails& thumbnails) {
  long long items = 0;
  std::map<Mark, long long> marks;
  for (const SheetFolder& folder : sheet.folders)
    for (const SheetItem& item : folder.items) {
      ++items;
      for (const Mark mark : item.marks) ++marks[mark];
    }
  fmt::print("Wrote {}: {} in {}, {} ({})\n", Printable(options.page),
             Counted(items, "item", "items"),
             Counted(static_cast<long long>(sheet.folders.size()), "folder", "folders"),
             Counted(thumbnails.count(), "thumbnail", "thumbnails"), SizeText(thumbnails.bytes()));
  for (const auto& [mark, count] : marks) fmt::print("  {}: {}\n", MarkLabel(mark), count);
  if (marks.count(Mark::kElsewhere) != 0)
    fmt::print("  --below FOLDER looks at the files below that folder, --anywhere at all\n");
}

int MakeSheet(const Options& options) {
  const DatabaseFile database(options.database);
  const std::string card = options.card.empty() ? "" : CheckedFolder(options.card);
  const std::string path = PagePath(options, database);
  NewFile page("page", path);

  Sheet sheet;
  sheet.database = FileName(database.path());
  sheet.layout = Described(database.layout());
  SheetRows rows = ReadSheetRows(database);
  if (!options.before.empty()) {
    const DatabaseFile before(options.before);
    sheet.before = before.path();
    MarkDifferences(before, database, &rows);
  }
  SheetFolders shown = FoldersOf(options, rows.roots, card);
  sheet.folders = InDisplayOrder(std::move(rows));
  std::string beside;
  if (options.beside) {
    const std::filesystem::path whole(path);
    sheet.besideAs = whole.stem().string() + "_thumbnails";
    beside = (whole.parent_path() / sheet.besideAs).string();
  }
  SheetThumbnails thumbnails(beside, card, std::move(shown));
  for (SheetFolder& folder : sheet.folders)
    for (SheetItem& item : folder.items) item.hasThumbnail = thumbnails.Examine(&item);
  WriteSheet(sheet, thumbnails, &page);
  page.Finish();
  thumbnails.RemoveOld();
  PrintSummary(options, sheet, thumbnails);
  return kDone;
}

}  // namespace

Command AddSheetCommand(CLI::App* parent) {
  const auto options = std::make_shared<Options>();
  CLI::App* app =
      parent->add_subcommand("sheet", "Show what is in a database as a page to look at");
  app->add_option("DB", options->database, "the database")->required();
  app->add_option("OUT.html", options->page,
                  "the page; an earlier page of this command is replaced, no other file")
      ->required();
  app->add_option("--card", options->card,
                  "the card's folder, for a database that names files below /mnt/mmc")
      ->type_name("FOLDER");
  CLI::Option* below =
      app->add_option("--below", options->below,
                      "look at the files below this folder; without it, at those below the folder "
                      "that the database names as scanned, which may not be the home folder or one "
                      "above it")
          ->type_name("FOLDER");
  app->add_flag("--anywhere", options->anywhere,
                "look at every file that the database names, links followed wherever they lead")
      ->excludes(below);
  app->add_option("--before", options->before,
                  "an earlier database: mark what was added, removed and changed since")
      ->type_name("DB");
  app->add_flag("--thumbnails-beside", options->beside,
                "write the thumbnails into the folder OUT_thumbnails, not into the page");
  app->add_flag("--force", options->force,
                "replace whatever file has the name of the page, except one of the databases");
  app->footer("Example: orxscan sheet media.db media.html");
  return {app, [options] { return MakeSheet(*options); }};
}

}  // namespace orxscan

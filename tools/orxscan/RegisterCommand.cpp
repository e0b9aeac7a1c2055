// orxscan register FILE DB
#include <algorithm>
#include <memory>

#include "Commands.h"
#include "FileScanner/DirectoryScanner.h"
#include "Library.h"
#include "MediaDatabase.h"
#include "Output.h"
#include "Paths.h"
#include "Refusal.h"

namespace orxscan {
namespace {

struct Options {
  std::string file;
  std::string database;
  std::string parent;
};

// The item that a client created and that the file is to fill.
ObjectRow ItemToFill(const MediaDatabase& database, const Options& options) {
  const bool number =
      !options.parent.empty() && std::all_of(options.parent.begin(), options.parent.end(),
                                             [](char c) { return c >= '0' && c <= '9'; });
  if (!number) throw Failure("{} is no id: ids are numbers", Quoted(options.parent));
  const std::vector<ObjectRow> rows = database.ObjectsWithId(options.parent);
  if (rows.empty())
    throw Failure("database {} has no item {}", Quoted(options.database), options.parent);
  return rows.front();
}

// Throws a Failure when there is a reason to refuse the file.
void CheckNotRefused(DirectoryScanner* scanner, const Options& options, const std::string& file) {
  const QuietLibrary library;
  const std::string reason = ReasonToRefuse(scanner, file, library).text;
  if (!reason.empty()) throw Failure("{}: {}", Quoted(options.file), reason);
}

// ": disk I/O error", or nothing when no more is known.
std::string WhyNotTaken(const LibraryErrors& errors) {
  if (!errors.failures().empty()) return ": " + errors.failures().begin()->second;
  return errors.outOfMemory() ? ": out of memory" : "";
}

int Register(const Options& options) {
  const std::string file = CheckedFile(options.file);
  const MediaDatabase database(options.database);
  const bool fill = !options.parent.empty();
  if (!fill) {
    const std::vector<ObjectRow> known = database.ObjectsAt(file);
    if (!known.empty()) {
      fmt::print("{} is registered already, as {} {}\n", Printable(file),
                 ClassName(known.front().mediaClass), known.front().id);
      return kDone;
    }
  }
  const ObjectRow item = fill ? ItemToFill(database, options) : ObjectRow{};

  const LibraryInstances instances;
  DirectoryScanner* scanner = DirectoryScanner::GetInstance();
  scanner->SetDlnaProfiles(pProfiles);
  if (!database.existed()) CheckNotRefused(scanner, options, file);  // no database for nothing
  int type = 0;
  LibraryErrors errors;
  {
    const QuietLibrary library;
    type = scanner->ParseAndRegisterFile(database.path().c_str(), file.c_str(),
                                         fill ? options.parent.c_str() : nullptr);
    errors = library.errors();
  }
  database.CheckWritten(errors);
  if (type < 0 || errors.any()) CheckNotRefused(scanner, options, file);
  if (type < 0)
    throw Failure("item {} is a {}, which {} is not", options.parent, ClassName(item.mediaClass),
                  Quoted(options.file));

  const std::vector<ObjectRow> rows =
      fill ? std::vector<ObjectRow>{item} : database.ObjectsAt(file);
  if (rows.empty() || errors.any())
    throw Failure("database {} did not take {}{}", Quoted(options.database), Quoted(options.file),
                  WhyNotTaken(errors));
  fmt::print("Registered {} as {} {}\n", Printable(file), ClassName(type), rows.back().id);
  return kDone;
}

}  // namespace

Command AddRegisterCommand(CLI::App* parent) {
  const auto options = std::make_shared<Options>();
  CLI::App* app = parent->add_subcommand("register", "Add one file to a database");
  app->add_option("FILE", options->file, "the picture, film or sound")->required();
  app->add_option("DB", options->database, "the database; made when it is not there")->required();
  app->add_option("--parent", options->parent,
                  "fill the item of this id, which a client created for the file")
      ->type_name("ID");
  app->footer("Example: orxscan register film.mp4 media.db");
  return {app, [options] { return Register(*options); }};
}

}  // namespace orxscan

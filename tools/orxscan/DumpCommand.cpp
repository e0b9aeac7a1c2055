// orxscan dump DB
#include <cstdio>
#include <memory>

#include "Commands.h"
#include "DatabaseFile.h"
#include "FileScanner/DataBaseMgr.h"
#include "Library.h"
#include "Output.h"

namespace orxscan {
namespace {

// The dump logs one cell a line, and lines of nothing but line ends between rows.
class Dump {
 public:
  explicit Dump(FILE* to) : to_(to) {}

  void Receive(const LogLine& line) {
    if (!wanted_ || line.error) return;
    if (line.message.find_first_not_of('\n') != std::string::npos) {
      fmt::print(to_, "{}", Printable(line.message));
    } else {
      fmt::print(to_, "\n");
    }
  }
  void SetWanted(bool wanted) { wanted_ = wanted; }

 private:
  FILE* to_;
  bool wanted_ = false;
};

int Run(const std::string& path) {
  const DatabaseFile file(path);
  const LibraryInstances instances;
  Dump dump(stdout);  // the stream that the library does not get
  {
    const QuietLibrary library([&](const LogLine& line) { dump.Receive(line); });
    DataBaseMgr* database = OpenDatabase(file.path(), file.name());
    dump.SetWanted(true);
    for (const std::string& table : file.Tables())
      if (table != "ContainerTable") database->DisplayTable(table.c_str());
    dump.SetWanted(false);
  }
  fmt::print("\n");
  return kDone;
}

}  // namespace

Command AddDumpCommand(CLI::App* parent) {
  const auto path = std::make_shared<std::string>();
  CLI::App* app = parent->add_subcommand(
      "dump", "Print the library's diagnostic dump of a database, which cuts long texts");
  app->add_option("DB", *path, "the database")->required();
  app->footer("Example: orxscan dump media.db");
  return {app, [path] { return Run(*path); }};
}

}  // namespace orxscan

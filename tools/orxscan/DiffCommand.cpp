// orxscan diff DB1 DB2
#include <algorithm>
#include <memory>

#include "Commands.h"
#include "DatabaseDiff.h"
#include "DatabaseFile.h"
#include "Output.h"

namespace orxscan {
namespace {

using Json = nlohmann::ordered_json;

constexpr size_t kMostPrinted = 100;  // objects of one list; --json has them all

// As those of diff.
enum DiffStatus { kSame = 0, kDifferent = 1, kTrouble = 2 };

struct Options {
  std::string before;
  std::string after;
  bool contentOnly = false;
  bool json = false;
};

std::string Listed(const std::vector<std::string>& names) {
  std::string list;
  for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
  return list;
}

void PrintObject(const ObjectDiff& object) {
  std::string id;
  if (object.registeredAnew)
    id = object.idBefore == object.idAfter
             ? "  (other resource names)"
             : fmt::format("  (id {} -> {})", object.idBefore, object.idAfter);
  fmt::print("  {:<7}  {}{}\n", ClassName(object.mediaClass), Printable(object.path),
             Printable(id));
  for (const FieldChange& change : object.changes)
    fmt::print("             {}: {} -> {}\n", Printable(change.field), Quoted(change.before),
               Quoted(change.after));
}

void PrintObjects(const char* heading, const std::vector<ObjectDiff>& objects) {
  if (objects.empty()) return;
  fmt::print("{}:\n", heading);
  const size_t printed = std::min(objects.size(), kMostPrinted);
  for (size_t i = 0; i < printed; ++i) PrintObject(objects[i]);
  if (printed < objects.size())
    fmt::print("  and {} more (--json lists them all)\n", objects.size() - printed);
  fmt::print("\n");
}

void Print(const DatabaseFile& before, const DatabaseFile& after, const DatabaseDiff& diff) {
  if (before.layout() != after.layout())
    fmt::print("{} has {}, {} has {}: compared by what both have\n", before.name(),
               Described(before.layout()), after.name(), Described(after.layout()));
  if (!diff.notCompared.empty())
    fmt::print("not compared: {}\n\n", Printable(Listed(diff.notCompared)));
  PrintObjects("Added", diff.added);
  PrintObjects("Removed", diff.removed);
  PrintObjects("Changed", diff.changed);
  PrintObjects("Registered anew", diff.registeredAnew);
  fmt::print("{} added, {} removed, {} changed, {} registered anew, {} the same\n",
             diff.added.size(), diff.removed.size(), diff.changed.size(),
             diff.registeredAnew.size(), diff.same);
}

Json ObjectAsJson(const ObjectDiff& object) {
  Json json = {{"path", object.path}, {"kind", ClassName(object.mediaClass)}};
  if (!object.idBefore.empty()) json["idBefore"] = object.idBefore;
  if (!object.idAfter.empty()) json["idAfter"] = object.idAfter;
  if (object.changes.empty()) return json;
  json["registeredAnew"] = object.registeredAnew;
  json["changes"] = Json::array();
  for (const FieldChange& change : object.changes)
    json["changes"].push_back(
        {{"field", change.field}, {"before", change.before}, {"after", change.after}});
  return json;
}

Json ObjectsAsJson(const std::vector<ObjectDiff>& objects) {
  Json json = Json::array();
  for (const ObjectDiff& object : objects) json.push_back(ObjectAsJson(object));
  return json;
}

int Diff(const Options& options) {
  const DatabaseFile before(options.before);
  const DatabaseFile after(options.after);
  DatabaseDiff diff = Compare(before, after);
  if (options.contentOnly) {
    diff.same += diff.registeredAnew.size();
    diff.registeredAnew.clear();
    for (ObjectDiff& object : diff.changed) object.registeredAnew = false;
  }
  const bool same = diff.SameContent() && diff.registeredAnew.empty();
  if (options.json) {
    PrintJson({{"same", same},
               {"layouts",
                {{"before", Described(before.layout())}, {"after", Described(after.layout())}}},
               {"notCompared", diff.notCompared},
               {"added", ObjectsAsJson(diff.added)},
               {"removed", ObjectsAsJson(diff.removed)},
               {"changed", ObjectsAsJson(diff.changed)},
               {"registeredAnew", ObjectsAsJson(diff.registeredAnew)},
               {"unchanged", diff.same}});
  } else {
    Print(before, after, diff);
  }
  return same ? kSame : kDifferent;
}

}  // namespace

Command AddDiffCommand(CLI::App* parent) {
  const auto options = std::make_shared<Options>();
  CLI::App* app = parent->add_subcommand("diff", "Say what a rescan changed in a database");
  app->add_option("DB1", options->before, "the database as it was")->required();
  app->add_option("DB2", options->after, "the database as it is")->required();
  app->add_flag("--content", options->contentOnly, "leave out what was only registered anew");
  app->add_flag("--json", options->json, "print the differences as JSON");
  app->footer(
      "Files and folders are matched by their full path.  One is registered anew when its id or\n"
      "the numbers in its resource names are others: they count upwards over a database's life.\n"
      "Exit status: 0 the same, 1 different, 2 could not compare.\n\n"
      "Example: orxscan diff yesterday.db media.db");
  return {app, [options] { return Diff(*options); }, kTrouble};
}

}  // namespace orxscan

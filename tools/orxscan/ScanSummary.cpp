#include "ScanSummary.h"

#include <algorithm>
#include <iterator>

#include "Output.h"

namespace orxscan {
namespace {

// In the order in which they are printed.
struct Kind {
  size_t mediaClass;
  const char* name;
};
constexpr Kind kKinds[] = {{0, "folders"}, {1, "pictures"}, {3, "films"}, {2, "sounds"}};

bool IsKnownClass(int mediaClass) { return mediaClass >= 0 && mediaClass < 4; }

void PrintProfiles(const std::vector<ProfileCount>& profiles) {
  if (profiles.empty()) return;
  size_t width = 0;
  for (const ProfileCount& row : profiles) width = std::max(width, Printable(row.profile).size());
  fmt::print("DLNA profiles:\n");
  for (const ProfileCount& row : profiles)
    fmt::print("  {:<{}}  {:<20}  {:>7}\n", Printable(row.profile), width, Printable(row.mimeType),
               row.count);
  fmt::print("\n");
}

}  // namespace

void ScanSummary::Compare(const std::vector<ObjectRow>& before,
                          const std::vector<ObjectRow>& after) {
  std::vector<ObjectRow> added, removed;  // both lists come sorted by id
  std::set_difference(after.begin(), after.end(), before.begin(), before.end(),
                      std::back_inserter(added));
  std::set_difference(before.begin(), before.end(), after.begin(), after.end(),
                      std::back_inserter(removed));
  const auto change = [this](const ObjectRow& row) -> Change* {
    return IsKnownClass(row.mediaClass) ? &changes[static_cast<size_t>(row.mediaClass)] : nullptr;
  };
  for (const ObjectRow& row : added)
    if (Change* c = change(row)) ++c->added;
  for (const ObjectRow& row : removed)
    if (Change* c = change(row)) ++c->removed;
  for (const ObjectRow& row : after)
    if (Change* c = change(row)) ++c->total;
}

void ScanSummary::Print() const {
  PrintRefusals(leftOut.refused);
  PrintProfiles(profiles);
  fmt::print("{} {} into {}: {} files in {}\n\n",
             cancelled ? "Cancelled: scanned part of" : "Scanned", Printable(folder),
             Printable(database), filesFound, Seconds(seconds));
  fmt::print("  {:<10}{:>8}{:>9}{:>13}\n", "", "added", "removed", "in database");
  for (const Kind& kind : kKinds) {
    const Change& c = changes[kind.mediaClass];
    fmt::print("  {:<10}{:>8}{:>9}{:>13}\n", kind.name, c.added, c.removed, c.total);
  }
  if (!cancelled) fmt::print("  {:<10}{:>8}\n", "refused", leftOut.refused.size());
  if (!leftOut.missing.empty()) fmt::print("  {:<10}{:>8}\n", "missing", leftOut.missing.size());
}

nlohmann::ordered_json ScanSummary::Json() const {
  nlohmann::ordered_json json;
  json["folder"] = folder;
  json["database"] = database;
  json["cancelled"] = cancelled;
  json["seconds"] = seconds;
  json["files"] = filesFound;
  for (const Kind& kind : kKinds) {
    const Change& c = changes[kind.mediaClass];
    json[kind.name] = {{"added", c.added}, {"removed", c.removed}, {"total", c.total}};
  }
  json["refused"] = RefusalsAsJson(leftOut.refused);
  json["missing"] = RefusalsAsJson(leftOut.missing);
  json["profiles"] = nlohmann::ordered_json::array();
  for (const ProfileCount& row : profiles)
    json["profiles"].push_back(
        {{"profile", row.profile}, {"mimeType", row.mimeType}, {"count", row.count}});
  return json;
}

int Report(const ScanSummary& summary, bool json, bool quiet) {
  if (json) {
    PrintJson(summary.Json());
  } else if (!quiet) {
    summary.Print();
  }
  FinishOutput();
  TellMissing(summary.leftOut.missing);
  if (summary.cancelled) return kCancelled;
  if (!summary.leftOut.missing.empty())
    throw Failure(
        "database {} is incomplete: {}", Quoted(summary.database),
        summary.leftOut.missing.size() == 1
            ? "one file or folder is missing"
            : fmt::format("{} files and folders are missing", summary.leftOut.missing.size()));
  return kDone;
}

}  // namespace orxscan

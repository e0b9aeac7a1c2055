#include "Card.h"

#include <filesystem>
#include <system_error>

#include "CardMount.h"
#include "Failure.h"

namespace orxserve {
namespace {

namespace fs = std::filesystem;

// A path that is still right when the card hides /mnt.
std::string Lasting(const fs::path& path) {
  std::error_code problem;
  fs::create_directories(path.parent_path(), problem);
  const fs::path folder = fs::canonical(path.parent_path(), problem);
  if (problem) throw Failure("folder {}: {}", path.parent_path().string(), problem.message());
  return (folder / path.filename()).string();
}

}  // namespace

void MountCard(Options* options) {
  if (!fs::is_directory(options->folder + "/DCIM"))
    throw Failure("{} is no card: it holds no folder DCIM", options->folder);
  const std::string state = Lasting(fs::path(options->state) / "state.db");
  const std::string database = Lasting(options->database);
  const std::string shown = orxscan::MountCard(options->folder, database);
  const bool together = fs::path(state).parent_path() == fs::path(database).parent_path();
  if (state.rfind("/mnt/", 0) == 0 && !together)
    throw Failure("choose a --state outside /mnt: the card takes its place");
  options->state = (together ? fs::path(shown) : fs::path(state)).parent_path().string();
  options->database = shown;
  options->folder = orxscan::kCardDcimPath;
}

}  // namespace orxserve

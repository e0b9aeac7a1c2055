// A card's folder where a camera has its card: at "/mnt/mmc".
#pragma once

#include <string>

namespace orxscan {

constexpr char kCardPath[] = "/mnt/mmc";
constexpr char kCardDcimPath[] = "/mnt/mmc/DCIM";

// Shows the folder at "/mnt/mmc" to this process alone, until it ends: the mount lies in a
// namespace of its own, and the machine's own /mnt stays as it is.  Both paths are canonical.
// Returns the path that leads to the database from now on.  Throws a Failure where the machine
// allows no such namespace.
std::string MountCard(const std::string& folder, const std::string& databasePath);

}  // namespace orxscan

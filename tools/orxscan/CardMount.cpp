#include "CardMount.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "Output.h"

namespace orxscan {
namespace {

constexpr char kMountRoot[] = "/mnt";
constexpr char kDatabaseFolder[] = "/mnt/database";  // beside the card, when /mnt hides it

[[noreturn]] void Refuse(const char* action) {
  throw Failure(
      "cannot mount the card at {} in a namespace of its own: {}: {} (run it as root or where "
      "users may make namespaces: kernel.unprivileged_userns_clone=1, "
      "kernel.apparmor_restrict_unprivileged_userns=0; a container needs the capability SYS_ADMIN)",
      kCardPath, action, strerror(errno));
}

// A folder held open, whatever is mounted over its path.
class HeldFolder {
 public:
  explicit HeldFolder(const std::string& path)
      : descriptor_(open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)) {
    if (descriptor_ < 0) throw Failure("folder {}: {}", Quoted(path), strerror(errno));
  }
  ~HeldFolder() { close(descriptor_); }
  HeldFolder(const HeldFolder&) = delete;
  HeldFolder& operator=(const HeldFolder&) = delete;

  // With all that is mounted below it: a user may not look behind a mount.
  void ShowAt(const char* place) const {
    const std::string held = "/proc/self/fd/" + std::to_string(descriptor_);
    if (mkdir(place, 0755) != 0) Refuse("making the place for it");
    if (mount(held.c_str(), place, nullptr, MS_BIND | MS_REC, nullptr) != 0)
      Refuse("mounting the folder");
  }

 private:
  int descriptor_;
};

bool WriteLine(const char* path, const std::string& line) {
  std::ofstream file(path);
  file << line << std::flush;
  return file.good();
}

// A user who may not make a mount namespace may do so in a user namespace, where he stays himself.
void EnterNamespace() {
  if (unshare(CLONE_NEWNS) == 0) return;
  const std::string uid = std::to_string(geteuid());
  const std::string gid = std::to_string(getegid());
  if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) Refuse("unshare");
  WriteLine("/proc/self/setgroups", "deny");  // not there on old systems
  if (!WriteLine("/proc/self/uid_map", uid + " " + uid + " 1") ||
      !WriteLine("/proc/self/gid_map", gid + " " + gid + " 1"))
    Refuse("mapping the user");
}

bool LiesBelow(const std::string& path, const std::string& folder) {
  return path == folder || path.compare(0, folder.size() + 1, folder + "/") == 0;
}

}  // namespace

std::string MountCard(const std::string& folder, const std::string& databasePath) {
  const std::filesystem::path database(databasePath);
  const std::string databaseFolder = database.parent_path().string();
  EnterNamespace();
  if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
    Refuse("making the mounts private");
  // Only folders that were opened in this namespace can be mounted in it.
  const HeldFolder card(folder);
  const HeldFolder databaseParent(databaseFolder);
  if (mount("tmpfs", kMountRoot, "tmpfs", MS_NOSUID | MS_NODEV, "mode=755") != 0)
    Refuse("mounting over /mnt");
  card.ShowAt(kCardPath);
  if (!LiesBelow(databaseFolder, kMountRoot)) return databasePath;
  databaseParent.ShowAt(kDatabaseFolder);
  return std::string(kDatabaseFolder) + "/" + database.filename().string();
}

}  // namespace orxscan

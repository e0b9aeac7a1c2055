#include "support/CardMount.h"

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace orx_test {
namespace {

constexpr char kCard[] = "/mnt/mmc";
constexpr char kDcim[] = "/mnt/mmc/DCIM";
constexpr char kScratch[] = "/mnt/scratch";

std::string problem = "the card was not asked for";

std::string Failed(const char* what) { return std::string(what) + ": " + strerror(errno); }

bool WriteProcFile(const char* path, const std::string& text) {
  std::ofstream file(path);
  file << text;
  file.flush();
  return file.good();
}

// A user who is not root gets a namespace in which he is.
std::string UnshareAsUser() {
  const std::string uid = std::to_string(getuid());
  const std::string gid = std::to_string(getgid());
  if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return Failed("unshare");
  WriteProcFile("/proc/self/setgroups", "deny");
  if (!WriteProcFile("/proc/self/uid_map", "0 " + uid + " 1") ||
      !WriteProcFile("/proc/self/gid_map", "0 " + gid + " 1"))
    return "the user could not be mapped";
  return "";
}

std::string MakeCard() {
  if (geteuid() != 0 || unshare(CLONE_NEWNS) != 0) {
    const std::string refused = UnshareAsUser();
    if (!refused.empty()) return refused;
  }
  if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
    return Failed("making the mounts private");
  if (mount("tmpfs", "/mnt", "tmpfs", 0, "mode=755") != 0) return Failed("mounting over /mnt");
  std::error_code error;
  std::filesystem::create_directories(kDcim, error);
  if (!error) std::filesystem::create_directories(kScratch, error);
  if (error) return "making the card's folder: " + error.message();
  setenv("TMPDIR", kScratch, 1);
  return "";
}

std::string OnCard(const std::string& name) {
  if (!problem.empty()) abort();  // never write below the machine's own /mnt
  return std::string(kDcim) + "/" + name;
}

}  // namespace

void CardMount::Enter() {
  problem = MakeCard();
  if (!problem.empty())
    problem = "no card of its own at " + std::string(kCard) + " (" + problem + ")";
}

const std::string& CardMount::Problem() { return problem; }

void CardMount::Clear() {
  std::filesystem::remove_all(OnCard(""));
  std::filesystem::create_directories(kDcim);
}

void CardMount::Write(const std::string& name, const std::string& content) {
  const std::filesystem::path full = OnCard(name);
  std::filesystem::create_directories(full.parent_path());
  std::ofstream(full, std::ios::binary) << content;
}

void CardMount::Remove(const std::string& name) { std::filesystem::remove_all(OnCard(name)); }

}  // namespace orx_test

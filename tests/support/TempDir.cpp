#include "support/TempDir.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <vector>

namespace orx_test {
namespace {

// Memory where there is some: the tests make many databases, and a disk would sync each of them.
std::filesystem::path Base() {
  const char* memory = "/dev/shm";
  if (getenv("TMPDIR") == nullptr && access(memory, W_OK | X_OK) == 0) return memory;
  return std::filesystem::temp_directory_path();
}

}  // namespace

TempDir::TempDir() {
  std::string pattern = (Base() / "orxscan-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) {
    perror("mkdtemp");
    abort();
  }
  path_ = pattern;
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string TempDir::Write(const std::string& name, const std::string& content) const {
  const std::filesystem::path full = Path(name);
  std::filesystem::create_directories(full.parent_path());
  std::ofstream(full, std::ios::binary) << content;
  return full.string();
}

std::string TempDir::MakeDir(const std::string& name) const {
  std::filesystem::create_directories(Path(name));
  return Path(name);
}

}  // namespace orx_test

#include "support/TempDir.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <vector>

namespace orx_test {

TempDir::TempDir() {
  std::string pattern = (std::filesystem::temp_directory_path() / "orxscan-test-XXXXXX").string();
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

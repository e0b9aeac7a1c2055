#include "Paths.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sstream>

#include "Output.h"

namespace orxscan {
namespace {

constexpr size_t kLargestProfileList = 1 << 20;  // bytes
constexpr size_t kLargestList = 64 << 20;

struct FreeText {
  void operator()(char* text) const { free(text); }
};
struct CloseFile {
  void operator()(FILE* file) const { fclose(file); }
};

std::string Canonical(const char* kind, const std::string& path) {
  if (path.empty()) throw Failure("the name of the {} is empty", kind);
  const std::unique_ptr<char, FreeText> canonical(realpath(path.c_str(), nullptr));
  if (canonical == nullptr) throw Failure("{} {}: {}", kind, Quoted(path), strerror(errno));
  return canonical.get();
}

mode_t Mode(const std::string& path) {
  struct stat64 status = {};
  return stat64(path.c_str(), &status) == 0 ? status.st_mode : 0;
}

// The whole of a text file of at most `largest` bytes; `kind` is what the user takes it for.
std::string ReadText(const std::string& path, size_t largest, const char* kind) {
  const std::unique_ptr<FILE, CloseFile> file(fopen(CheckedFile(path).c_str(), "re"));
  if (file == nullptr) throw Failure("file {}: {}", Quoted(path), strerror(errno));
  std::string text;
  std::array<char, 1 << 16> block;
  for (size_t count = 0; (count = fread(block.data(), 1, block.size(), file.get())) > 0;) {
    text.append(block.data(), count);
    if (text.size() > largest) throw Failure("{} is too large for a {}", Quoted(path), kind);
  }
  if (ferror(file.get()) != 0) throw Failure("file {} cannot be read", Quoted(path));
  if (text.find('\0') != std::string::npos) throw Failure("{} is not a text file", Quoted(path));
  return text;
}

}  // namespace

std::string CheckedFolder(const std::string& path) {
  std::string canonical = Canonical("folder", path);
  if (!S_ISDIR(Mode(canonical))) throw Failure("{} is not a folder", Quoted(path));
  if (DIR* opened = opendir(canonical.c_str())) {
    closedir(opened);
    return canonical;
  }
  throw Failure("folder {}: {}", Quoted(path), strerror(errno));
}

std::string CheckedFile(const std::string& path) {
  std::string canonical = Canonical("file", path);
  const mode_t mode = Mode(canonical);
  if (S_ISDIR(mode)) throw Failure("{} is a folder, not a file", Quoted(path));
  if (!S_ISREG(mode)) throw Failure("{} is not a regular file", Quoted(path));
  if (access(canonical.c_str(), R_OK) != 0)
    throw Failure("file {}: {}", Quoted(path), strerror(errno));
  return canonical;
}

std::string ReadProfiles(const std::string& path) {
  std::string text = ReadText(path, kLargestProfileList, "list of profiles");
  if (text.find_first_not_of(" \t\r\n") == std::string::npos)
    throw Failure("{} holds no profiles", Quoted(path));
  return text;
}

std::vector<ListLine> ReadList(const std::string& path) {
  std::istringstream text(ReadText(path, kLargestList, "list"));
  std::vector<ListLine> lines;
  size_t number = 0;
  for (std::string line; std::getline(text, line);) {
    ++number;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.find_first_not_of(" \t") != std::string::npos) lines.push_back({number, line});
  }
  return lines;
}

}  // namespace orxscan

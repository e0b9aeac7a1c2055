// Writes the files that the measurements scan.
//
// usage: make_corpus DIRECTORY COUNT [--tiny] [--files-per-folder N] [--version N]
//
// With --version N, N above 0, every tenth file is written anew with another size and the rest are
// left alone.  All files get the same time of change.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "Corpus.h"

namespace {

constexpr uint32_t kChangedPeriod = 10;
constexpr time_t kFileTime = 1795255200;  // 21 November 2026, 10:00 UTC

struct Options {
  std::string directory;
  uint32_t count = 0;
  uint32_t version = 0;
  orx_bench::CorpusShape shape;
};

bool ParseNumber(const char* text, uint32_t* number) {
  char* end = nullptr;
  const unsigned long value = strtoul(text, &end, 10);
  if (end == text || *end != '\0' || value > 10000000) return false;
  *number = static_cast<uint32_t>(value);
  return true;
}

bool ParseOptions(int argc, char** argv, Options* options) {
  if (argc < 3 || !ParseNumber(argv[2], &options->count)) return false;
  options->directory = argv[1];
  for (int i = 3; i < argc; ++i) {
    const bool hasValue = i + 1 < argc;
    if (strcmp(argv[i], "--tiny") == 0) {
      options->shape.tiny = true;
    } else if (strcmp(argv[i], "--files-per-folder") == 0 && hasValue) {
      if (!ParseNumber(argv[++i], &options->shape.filesPerFolder)) return false;
    } else if (strcmp(argv[i], "--version") == 0 && hasValue) {
      if (!ParseNumber(argv[++i], &options->version)) return false;
    } else {
      return false;
    }
  }
  return options->shape.filesPerFolder > 0;
}

bool WriteAt(int descriptor, const std::string& bytes, uint64_t position) {
  return pwrite(descriptor, bytes.data(), bytes.size(), static_cast<off_t>(position)) ==
         static_cast<ssize_t>(bytes.size());
}

bool WriteFile(const std::string& path, const orx_bench::CorpusFile& file) {
  const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (descriptor < 0) return false;
  const uint64_t tail = file.head.size() + file.hole;
  const timespec times[2] = {{kFileTime, 0}, {kFileTime, 0}};
  const bool written = WriteAt(descriptor, file.head, 0) &&
                       ftruncate(descriptor, static_cast<off_t>(tail)) == 0 &&
                       WriteAt(descriptor, file.tail, tail) && futimens(descriptor, times) == 0;
  return close(descriptor) == 0 && written;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (!ParseOptions(argc, argv, &options)) {
    fprintf(stderr,
            "usage: make_corpus DIRECTORY COUNT [--tiny] [--files-per-folder N] [--version N]\n");
    return 2;
  }
  std::string folder;
  const uint32_t step = options.version > 0 ? kChangedPeriod : 1;
  for (uint32_t i = 0; i < options.count; i += step) {
    const auto file = orx_bench::MakeCorpusFile(i, options.version, options.shape);
    const std::filesystem::path path = options.directory + "/" + file.path;
    if (path.parent_path() != folder) {
      folder = path.parent_path().string();
      std::error_code error;
      std::filesystem::create_directories(folder, error);
    }
    if (!WriteFile(path.string(), file)) {
      perror(path.c_str());
      return 1;
    }
  }
  return 0;
}

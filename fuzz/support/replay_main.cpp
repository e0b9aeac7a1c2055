// Runs a fuzz target over nothing and over files, for builds without libFuzzer: each argument is a
// file or a folder.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

int replayed = 0;

void Replay(const std::filesystem::path& path) {
  if (std::filesystem::is_directory(path)) {
    for (const auto& entry : std::filesystem::directory_iterator(path)) Replay(entry.path());
    return;
  }
  std::ifstream file(path, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
  ++replayed;
}

}  // namespace

int main(int argc, char** argv) {
  const auto nothing = std::make_unique<uint8_t[]>(0);  // so that reading it shows
  LLVMFuzzerTestOneInput(nothing.get(), 0);
  for (int i = 1; i < argc; ++i)
    if (argv[i][0] != '-') Replay(argv[i]);  // options are libFuzzer's
  fprintf(stderr, "%s: %d inputs\n", argv[0], replayed);
  return replayed > 0 ? 0 : 1;
}

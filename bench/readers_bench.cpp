// The readers of media files alone: one file, read again and again from the page cache.
#include <benchmark/benchmark.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "Corpus.h"
#include "MediaReaders/exif_reader.h"
#include "MediaReaders/mp4_reader.h"
#include "UpnpUtil/upnp_file.h"

namespace {

constexpr uint32_t kSeed = 1;

// A file that lies in memory only.
class MemoryFile {
 public:
  explicit MemoryFile(const std::string& content) : descriptor_(memfd_create("orxscan", 0)) {
    if (pwrite(descriptor_, content.data(), content.size(), 0) !=
        static_cast<ssize_t>(content.size())) {
      perror("memfd_create");
      exit(1);
    }
    path_ = "/proc/self/fd/" + std::to_string(descriptor_);
  }
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  const char* path() const { return path_.c_str(); }

 private:
  int descriptor_;
  std::string path_;
};

// What opening, reading once and closing cost without any reading of metadata.
void OpenAndRead(benchmark::State& state) {
  const MemoryFile file(orx_bench::Picture(kSeed));
  char bytes[16];
  for (auto _ : state) {
    st_UPNP_FILE* handle = upnp_file_open_read(file.path());
    benchmark::DoNotOptimize(upnp_file_read(handle, bytes, sizeof bytes));
    upnp_file_close(handle);
  }
}
BENCHMARK(OpenAndRead);

void ReadPicture(benchmark::State& state, bool tiny) {
  const MemoryFile file(orx_bench::Picture(kSeed, tiny));
  for (auto _ : state) {
    long long size = 0;
    long time = 0;
    int numbers[7] = {};
    char *date = nullptr, *description = nullptr;
    benchmark::DoNotOptimize(exif_get_metadata(file.path(), &size, &numbers[0], &numbers[1],
                                               &numbers[2], &numbers[3], &numbers[4], &numbers[5],
                                               &numbers[6], &date, &time, &description));
    free(date);
    free(description);
  }
}
BENCHMARK_CAPTURE(ReadPicture, camera, false);
BENCHMARK_CAPTURE(ReadPicture, tiny, true);

void ReadMovie(benchmark::State& state, const std::string& content) {
  const MemoryFile file(content);
  for (auto _ : state) {
    mp4_metadata_t meta = {};
    benchmark::DoNotOptimize(m4a_get_metadata(file.path(), &meta));
    m4a_free_metadata(&meta);
  }
}
BENCHMARK_CAPTURE(ReadMovie, index_in_front, orx_bench::Film(kSeed, true));
BENCHMARK_CAPTURE(ReadMovie, index_at_end, orx_bench::Film(kSeed, false));
BENCHMARK_CAPTURE(ReadMovie, adts, orx_bench::Sound(kSeed));

}  // namespace

BENCHMARK_MAIN();
